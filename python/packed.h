// The values of a block's fields as bytes of its own, which outlive the block and its volume.
#ifndef PYTHON_PACKED_H_
#define PYTHON_PACKED_H_

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "seed/whole.h"
#include "views/lines.h"

namespace tarvik {

// Appends the decoded fields of a block, and to referred the numbers of the blocks that define the
// codes in them.  Needs the volume, and no Python.  Throws std::bad_alloc.
void pack_fields(const SDBlk &block, TextBuffer *out, std::vector<std::int64_t> *referred);

// What the fields are in Python: see Block.fields and Block.refs.
struct Unpacked {
  pybind11::dict fields;
  pybind11::dict refs;
};

// Makes objects of packed fields of a definition.  Throws pybind11::value_error for bytes that
// pack_fields has not made.
Unpacked unpack_fields(const SDBlkDef &def, std::string_view packed);

// Bytes that are valid UTF-8 as they are, else every byte as the character of its value.
pybind11::str text_of(std::string_view bytes);

}  // namespace tarvik

#endif  // PYTHON_PACKED_H_
