// The response of a channel epoch as StationXML.
#ifndef VIEWS_RESPONSE_XML_H_
#define VIEWS_RESPONSE_XML_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "views/epochs.h"
#include "views/lines.h"
#include "views/xml_values.h"

namespace tarvik {

// Takes the blockettes of a response as they are met and keeps those that will be written; tells at
// once of those that the format cannot take.
class ResponseXml {
 public:
  explicit ResponseXml(const XmlValues &values) : values_(values) {}

  // A block of the role response.  True when the block is kept: it must live, as it is, until the
  // response is written.
  bool add(const SDBlk &block);
  // Writes the element, where there is anything to be written in it.
  void write();

 private:
  // What became of a blockette.
  enum class Fate : std::uint8_t { kept, lost };

  // A stage number.
  struct Stage {
    std::int64_t offset = 0;  // of its first blockette
    std::int32_t filter_type = 0;
    std::vector<const SDBlk *> filter;  // its parts
    const SDBlk *decimation = nullptr;
    const SDBlk *gain = nullptr;
    bool lost_gain = false;
    bool lost_polynomial = false;
    // The blockette that was added last, to find those that go on with it.
    std::int32_t last_type = 0;
    std::int32_t last_from = 0;
    std::string last_head;
    Fate last_fate = Fate::lost;
    // Blockettes 34.
    const SDBlk *first_input = nullptr;
    const SDBlk *last_output = nullptr;
  };

  Fate add(const Response &response);
  Fate add_to_stage(const Response &response, std::int32_t number, Stage *stage);
  Fate add_filter(const Response &response, std::int32_t number, Stage *stage);
  Fate add_single(const Response &response, std::int32_t number, const SDBlk **kept);
  Fate add_sensitivity(const Response &response, Stage *stage);
  bool goes_on(const Response &response, Stage *stage);
  bool can_be_written(const Response &response, const XmlPath &path);
  static bool has_coefficients(const Response &response);

  void open();
  void write_whole(const Stage &stage);
  void write_sensitivity(const SDBlk &gain);
  void write_stage(std::int32_t number, const Stage &stage);
  void write_decimation_and_gain(std::int32_t number, const Stage &stage);
  void lose_beside_polynomial(std::int32_t number, const Stage &stage);
  void write_filter(const XmlPath &path, const Stage &stage);
  void write_single(const char *element, const Response &response);
  void write_heads(const Response &response);

  XmlValues values_;
  std::map<std::int32_t, Stage> stages_;
  bool is_open_ = false;
  TextBuffer head_;
};

}  // namespace tarvik

#endif  // VIEWS_RESPONSE_XML_H_
