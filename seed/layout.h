// Decoding of definitions of which every field has its place: all are binary, or text of fixed
// width, and none refers to another blockette.  The fixed section of a data record and nearly all
// data blockettes are of the kind.  One look at the length is enough for all fields, and the
// compiler makes code without a loop for each definition from the rows of the catalogue.
#ifndef SEED_LAYOUT_H_
#define SEED_LAYOUT_H_

#include <cstddef>
#include <cstdint>

#include "seed/sdblk.h"
#include "seed/walk.h"
#include "support/arr_impl.h"

namespace tarvik {

struct Layout {
  const SDBlkFieldDef *fields;
  std::int32_t nfields;
  std::int32_t bytes;        // that the fields take in the record
  std::size_t memory;        // bytes that they take decoded: an ArrPair each, then all else
  std::int32_t time_field;   // position of the binary time among the fields, or -1
  std::int32_t time_offset;  // offset of its bytes in the record
  // Decodes the fields into that memory.
  void (*unpack_big)(const char *record, void *memory);
  void (*unpack_little)(const char *record, void *memory);
};

// The layout of a definition, or nullptr.
const Layout *find_layout(const SDBlkDef &def);

// Decodes the fields of a layout, of which all bytes are there, into an array that is empty and has
// a pool.  False when memory runs out.
[[nodiscard]] bool unpack_layout(const Layout &layout, Arr *array, const char *bytes,
                                 bool big_endian);

// Decodes the fields of a definition from a cursor on: by their places where they have some and all
// bytes are there, else one after the other.  0, or -1 with messages registered.
int unpack_fields(Arr **contents, Cursor cursor, const WalkContext &context, const SDBlkDef &def);

}  // namespace tarvik

#endif  // SEED_LAYOUT_H_
