// The field walker over bounded bytes, which control blockettes and data records share.
#ifndef SEED_WALK_H_
#define SEED_WALK_H_

#include <cstdint>
#include <string_view>

#include "seed/cut.h"
#include "seed/facts.h"
#include "seed/sdblk.h"
#include "support/arr_impl.h"

namespace tarvik {

// Where and how fields are decoded.
struct WalkContext {
  SDBlkVol *vol;
  bool big_endian;
};

// sdblk_unstuff_sblk; a null element gets an array nested in parent, or one of its own when parent
// is null.
int walk_fields(Arr **arrays, Cursor *cursor, const WalkContext &context, std::int32_t repetitions,
                const FieldList &list, Arr *parent);

// Registers that there is no memory for a field's entry; -1.
int report_no_memory(const SDBlkFieldDef &field);

// Reads an integer field that most likely stands at a position of an entry array.  False, with a
// message registered, when it is not there.
inline bool get_integer(const Arr *contents, std::uint32_t position, const char *key,
                        std::int32_t *value) {
  const auto *entry = static_cast<const SDBlkEntry *>(arr_get_at(contents, position, key));
  if (entry == nullptr) return sdblk_getv(contents, key, value, nullptr) == 0;
  *value = entry->value.i;
  return true;
}

}  // namespace tarvik

#endif  // SEED_WALK_H_
