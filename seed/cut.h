// Cutting a field's text out of the bytes that are still to be decoded.
#ifndef SEED_CUT_H_
#define SEED_CUT_H_

#include <string_view>

#include "seed/cursor.h"
#include "seed/sdblk.h"

namespace tarvik {

// The text of one field, cut as its storage type says; moves past it.
std::string_view extract(const SDBlkFieldDef &field, Cursor *cursor);

}  // namespace tarvik

#endif  // SEED_CUT_H_
