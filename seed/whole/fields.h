// Decoding of a block's fields in whole reading: what is there is taken, what is unreadable has no
// value, and nothing fails but memory.
#ifndef SEED_WHOLE_FIELDS_H_
#define SEED_WHOLE_FIELDS_H_

#include <cstdint>

#include "seed/whole/state.h"

namespace tarvik {

// The block whose fields are decoded.
struct FieldsOf {
  SDBlkWhole *whole;
  SDBlk *block;          // the one that holds the fields
  std::int64_t offset;   // of the block that notes are on: a data record's for its blockettes
  std::int64_t number;   // its number
  std::int32_t chained;  // position in the chain of a data record; -1 for no data blockette
  bool notes;            // whether notes are reported and codes registered
};

// Decodes size bytes into the contents of a block that has a definition.  False, with a message
// registered, when memory runs out.
bool decode_fields(const FieldsOf &of, const char *bytes, std::int64_t size);

// The same of a data record's fixed section or a data blockette, of which most have a layout.
bool decode_data_fields(const FieldsOf &of, const char *bytes, std::int64_t size);

}  // namespace tarvik

#endif  // SEED_WHOLE_FIELDS_H_
