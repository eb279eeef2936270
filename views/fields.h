// The fields of a block as a JSON object.
#ifndef VIEWS_FIELDS_H_
#define VIEWS_FIELDS_H_

#include <cstddef>

#include "seed/whole.h"
#include "views/lines.h"
#include "views/plan.h"

namespace tarvik {

// Writes "{...}" with the fields of a block that are there, in the order of the catalogue; plan is
// that of the block's definition.
void put_fields(TextBuffer *out, const SDBlk &block, const Plan &plan);

// Writes the members from one position of the plan to another: "{" before the first of all, a comma
// before the others.
void put_members(TextBuffer *out, const SDBlk &block, const Plan &plan, std::size_t from,
                 std::size_t to);

// Writes ",\"refs\":{...}" with the block numbers of the abbreviations that the fields of a block
// refer to, those in groups left out; nothing where it would be empty.
void put_references(TextBuffer *out, const SDBlk &block, const Plan &plan);

// Writes the value of one field of a block, or null where it has none; field is that of the entry,
// or one of the same form.
void put_value(TextBuffer *out, const SDBlk &block, const SDBlkEntry &entry,
               const Plan::Field &field);

}  // namespace tarvik

#endif  // VIEWS_FIELDS_H_
