// The response of a channel epoch as StationXML.
#ifndef VIEWS_RESPONSE_XML_H_
#define VIEWS_RESPONSE_XML_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "views/epochs.h"
#include "views/lines.h"
#include "views/xml_values.h"

namespace tarvik {

// Takes the blockettes of a response as they are met and keeps those that will be written, of a
// split one the first part; tells at once of those that the format cannot take.
class ResponseXml {
 public:
  // Takes a block of the role response; true for more.
  using Take = std::function<bool(const SDBlk &block)>;
  // Hands out the blocks of the role response again, from the place of one on.
  using ReadAgain = std::function<void(const SDBlkPlace &place, const Take &take)>;

  ResponseXml(const XmlValues &values, ReadAgain read_again)
      : values_(values), read_again_(std::move(read_again)) {}

  // A block of the role response, and its place.  True when the block is kept: it must live, as it
  // is, until the response is written.
  bool add(const SDBlk &block, const SDBlkPlace &place);
  // Writes the element, where there is anything to be written in it.
  void write();

 private:
  // The first blockette of a kind in its stage; further ones are lost, also after one that cannot be
  // written.
  struct First {
    std::int32_t type = 0;         // 0 for none
    const SDBlk *block = nullptr;  // nullptr also for one that cannot be written
    // Where it stands, or the blockette 60 that names it; and how many parts it has.
    SDBlkPlace place = {};
    std::int64_t parts = 1;
  };
  // What was added last to a stage, to find blockettes that go on with it.
  struct Last {
    std::int32_t type = 0;
    std::int32_t from = 0;
    std::string head;
    bool is_kept = false;
  };
  struct Stage {
    std::int64_t offset = 0;  // of its first blockette
    First filter;
    First decimation;
    First gain;
    // The one of these that a type belongs to.
    First *first(std::int32_t type);
    Last last;
    // Blockettes 34.
    const SDBlk *first_input = nullptr;
    const SDBlk *last_output = nullptr;
  };

  bool add(const Response &response, const SDBlkPlace &place);
  First *add_to_stage(const Response &response, std::int32_t number, Stage *stage);
  bool goes_on(const Response &response, Last *last);
  bool can_be_written(const Response &response, const XmlPath &path);
  static bool has_coefficients(const Response &response);

  void open();
  void begin_stage(std::int32_t number);
  void write_sensitivity(const SDBlk &gain);
  void write_stage(std::int32_t number, const Stage &stage);
  void write_polynomial(std::int32_t number, const Stage &stage);
  void write_no_gain(std::int32_t number, const Stage &stage);
  void write_filter(std::int32_t number, const First &filter);
  void each_part(std::int32_t number, const First &filter,
                 const std::function<void(const SDBlk &part)> &take) const;
  void write_single(const First &first);
  void write_heads(const Response &response);

  XmlValues values_;
  ReadAgain read_again_;
  std::map<std::int32_t, Stage> stages_;
  bool is_open_ = false;
  TextBuffer head_;
};

}  // namespace tarvik

#endif  // VIEWS_RESPONSE_XML_H_
