// Values of blockettes as elements of StationXML.
#ifndef VIEWS_XML_VALUES_H_
#define VIEWS_XML_VALUES_H_

#include <string>

#include "seed/whole.h"
#include "views/losses.h"
#include "views/places.h"
#include "views/xml.h"

namespace tarvik {

// Writes into a document what blocks hold, and tells what is lost.
class XmlValues {
 public:
  XmlValues(Xml *xml, Losses *losses) : xml_(xml), losses_(losses) {}

  [[nodiscard]] Xml &xml() const { return *xml_; }
  void lose(const SDBlk &block, const XmlPath &path, const std::string &text) const {
    lose(block.file_offset, path, text);
  }
  void lose(std::int64_t offset, const XmlPath &path, const std::string &text) const {
    losses_->tell(offset, path, text);
  }

  // A text of a block for the element at a path.
  [[nodiscard]] std::string text(const SDBlk &block, const SDBlkEntry &entry,
                                 const XmlPath &path) const;
  // A time as the format has it; "" for one that it does not have.
  [[nodiscard]] static std::string time(const SDBlkEntry *entry);
  // The same of an end: also "" for one from 2100 on, which stands for an open one.
  [[nodiscard]] static std::string end_time(const SDBlkEntry *entry);
  // Writes an element with the name and the description of a unit (a blockette 34 with a name).
  void units(const char *element, const SDBlk &unit, const XmlPath &parent) const;

 private:
  Xml *xml_;
  Losses *losses_;
};

// Elements of the document.
inline constexpr XmlPath kNetworkPath = {nullptr, "Network"};
inline constexpr XmlPath kStationPath = {&kNetworkPath, "Station"};
inline constexpr XmlPath kChannelPath = {&kStationPath, "Channel"};
inline constexpr XmlPath kResponsePath = {&kChannelPath, "Response"};
inline constexpr XmlPath kStagePath = {&kResponsePath, "Stage"};

// Why a required element cannot be written.
inline constexpr char kNoValue[] = "has no value";

// The unit that a reference stands for, or nullptr where it is not defined or has no name.
const SDBlk *unit_of(const SDBlk &block, const SDBlkEntry *entry);

}  // namespace tarvik

#endif  // VIEWS_XML_VALUES_H_
