#include "views/places.h"

#include <cassert>
#include <cstddef>
#include <string_view>

namespace tarvik {

Place::Place(std::int32_t type, const char *key) {
  const SDBlkDef &def = definition_of(type);
  fields_ = def.fields;
  while (std::string_view(fields_[position_].key) != key) {
    ++position_;
    assert(position_ < def.nfields);
  }
  field_ = &plan_of(def).fields[static_cast<std::size_t>(position_)];
}

const char *Place::text(const SDBlk &block) const {
  const SDBlkEntry *entry = in(block);
  return entry == nullptr ? "" : entry->value.s;
}

}  // namespace tarvik
