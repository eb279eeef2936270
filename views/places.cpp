#include "views/places.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <string_view>

namespace tarvik {

Place::Place(std::int32_t type, const char *key) {
  const auto *const end = seed_blkdefs + SEED_BLKDEFS_COUNT;
  const SDBlkDef *def =
      std::find_if(seed_blkdefs, end, [&](const SDBlkDef &d) { return d.type == type; });
  assert(def != end);
  fields_ = def->fields;
  while (std::string_view(fields_[position_].key) != key) {
    ++position_;
    assert(position_ < def->nfields);
  }
  field_ = &plan_of(*def).fields[static_cast<std::size_t>(position_)];
}

const char *Place::text(const SDBlk &block) const {
  const SDBlkEntry *entry = in(block);
  return entry == nullptr ? "" : entry->value.s;
}

}  // namespace tarvik
