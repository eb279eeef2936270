// The view "blocks": every blockette and data record, field by field.
#ifndef VIEWS_BLOCKS_H_
#define VIEWS_BLOCKS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "views/view.h"

namespace tarvik {

struct BlocksOptions {
  bool raw = false;                      // with the bytes
  std::string types;                     // letters of record types; empty: all
  std::vector<std::int32_t> blockettes;  // blockette types; empty: all
};

std::unique_ptr<View> make_blocks_view(const ViewOptions &options, const BlocksOptions &blocks);

}  // namespace tarvik

#endif  // VIEWS_BLOCKS_H_
