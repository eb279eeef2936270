// Stations of any number of volumes as one document of StationXML 1.2.
#ifndef VIEWS_STATIONXML_H_
#define VIEWS_STATIONXML_H_

#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <string>

#include "views/epoch_choice.h"
#include "views/lines.h"
#include "views/losses.h"
#include "views/view.h"

namespace tarvik {

// How far down a document goes.
enum class XmlLevel : std::uint8_t { network, station, channel, response };

struct StationXmlOptions {
  EpochOptions epochs;
  XmlLevel level = XmlLevel::response;
  std::string module;       // the program that writes the document
  std::time_t created = 0;  // when
};

// Whom a document tells what, while it is made.
struct StationXmlListener {
  Losses::Tell lose;  // what the format cannot take
  Losses::Tell tell;  // epochs of the same codes and start that differ
  // A volume that cannot be read, or not any more as it was: its name, and why.
  std::function<void(const std::string &name, const std::string &why)> lose_volume;
};

// Takes volumes, one after the other, and remembers where their epochs stand; then writes the
// document, for which they are read once more.  One thread at a time.
class StationXml {
 public:
  // Throws std::invalid_argument for a pattern with a fault, and std::bad_alloc, as all that
  // follows does.
  StationXml(const ViewOptions &options, const StationXmlOptions &document,
             StationXmlListener listener);
  ~StationXml();
  StationXml(const StationXml &) = delete;
  StationXml &operator=(const StationXml &) = delete;

  // Reads a volume; what is unreadable was told.  Its path must lead to it until the document is
  // written.
  Outcome add(const Source &source);

  // Whether there is nothing to be written.
  [[nodiscard]] bool is_empty() const;
  // Writes the document, in pieces of any size.  False when one could not be written.
  bool write(LineSink *sink);

 private:
  class Document;

  std::unique_ptr<Document> document_;
};

}  // namespace tarvik

#endif  // VIEWS_STATIONXML_H_
