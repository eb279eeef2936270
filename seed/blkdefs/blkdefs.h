// What the library works out from the catalogue: its index and its layouts.
#ifndef SEED_BLKDEFS_BLKDEFS_H_
#define SEED_BLKDEFS_BLKDEFS_H_

#include <cstdint>
#include <span>

#include "seed/sdblk.h"

namespace blkdefs {

// Empties every slot, then puts each definition into the slot of its type; the later of two with
// one type stays.  A type without a slot ends the program through elog_die.
void fill_index(std::span<const SDBlkDef> defs,
                std::span<const SDBlkDef *, SEED_BLKDEFS_INDEX_SIZE> slots);

// What the fields of a definition take together when each has its place: all are binary, or text of
// fixed width, and none refers to another blockette.
struct Layout {
  std::int32_t bytes;      // in the record; 0 when some field has no place of its own
  std::int32_t text_room;  // in memory, the texts
};

// The memory that a field's text takes, its 0 byte included; a multiple of eight.
constexpr std::int32_t layout_text_room(std::int32_t width) { return (width + 8) / 8 * 8; }

// The layout of a definition of which every binary field is as wide as its conversion.
constexpr Layout layout_of(const SDBlkDef &def) {
  Layout layout = {0, 0};
  for (std::int32_t i = 0; i < def.nfields; ++i) {
    const SDBlkFieldDef &field = def.fields[i];
    const bool is_text = field.stype == 'A' && field.kind == SDBLK_STRING;
    if ((field.stype != 'B' && !is_text) || field.abbr_key != nullptr) return {0, 0};
    layout.bytes += field.width;
    if (is_text) layout.text_room += layout_text_room(field.width);
  }
  return layout;
}

// The layout of a definition; of one that is not the catalogue's own, one without places.
Layout find_layout(const SDBlkDef &def);

}  // namespace blkdefs

#endif  // SEED_BLKDEFS_BLKDEFS_H_
