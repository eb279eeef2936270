#include "views/xml_values.h"

#include <array>
#include <string_view>

#include "views/epochs.h"
#include "views/json.h"
#include "views/time_text.h"

namespace tarvik {
namespace {

const Place &unit_name() {
  static const Place place(34, "name");
  return place;
}

}  // namespace

const SDBlk *unit_of(const SDBlk &block, const SDBlkEntry *entry) {
  const SDBlk *unit = entry == nullptr ? nullptr : referred(block, *entry);
  return unit == nullptr || unit_name().value(*unit) == nullptr ? nullptr : unit;
}

std::string XmlValues::text(const SDBlk &block, const SDBlkEntry &entry,
                            const XmlPath &path) const {
  bool left_out = false;
  std::string text = xml_text(entry.value.s, &left_out);
  if (left_out) lose(block, path, "characters that XML forbids are left out");
  return text;
}

std::string XmlValues::time(const SDBlkEntry *entry) {
  if (entry == nullptr) return "";
  std::array<char, kTimeRoom> room;
  const std::string_view json(
      room.data(),
      static_cast<std::size_t>(put_json_time(room.data(), entry->value.d) - room.data()));
  return json.front() == '"' ? std::string(json.substr(1, json.size() - 2)) : "";
}

std::string XmlValues::end_time(const SDBlkEntry *entry) {
  static const Ticks open = *parse_time_text("2100-01-01");
  return entry == nullptr || ticks_of(entry->value.d) >= open ? "" : time(entry);
}

void XmlValues::units(const char *element, const SDBlk &unit, const XmlPath &parent) const {
  static const Place description(34, "descr");
  const XmlPath path = {&parent, element};
  xml_->start(element);
  xml_->element("Name", text(unit, *unit_name().value(unit), {&path, "Name"}));
  const SDBlkEntry *descr = description.value(unit);
  if (descr != nullptr && descr->value.s[0] != '\0') {
    xml_->element("Description", text(unit, *descr, {&path, "Description"}));
  }
  xml_->end();
}

}  // namespace tarvik
