// The bytes that are still to be decoded, and cutting a field's text out of them.
#ifndef SEED_CUT_H_
#define SEED_CUT_H_

#include <cstdint>
#include <string_view>

#include "seed/sdblk.h"

namespace tarvik {

struct Feed {
  const char *cursor;
  std::int32_t remaining;
};

// The text of one field, cut as its storage type says, and the bytes after it left in the feed.
std::string_view extract(const SDBlkFieldDef &field, Feed *feed);

}  // namespace tarvik

#endif  // SEED_CUT_H_
