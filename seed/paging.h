// Keeping a reader of a long volume small.
#ifndef SEED_PAGING_H_
#define SEED_PAGING_H_

#include <cstdint>

#include "seed/sdblk.h"

namespace tarvik {

// A mapping's pages this far before the reading position are given back, in pieces of this size.
inline constexpr std::int64_t kKeepBehind = std::int64_t{1} << 20;
inline constexpr std::int64_t kGiveBack = std::int64_t{8} << 20;

// Gives a piece back.
void give_back_piece(SDBlkVol *vol);

// Gives pages before the current record back, now and then.  They come back when they are touched.
inline void give_back_pages(SDBlkVol *vol) {
  if (vol->fd < 0 || vol->record_offset - vol->given_back < kKeepBehind + kGiveBack) return;
  give_back_piece(vol);
}

}  // namespace tarvik

#endif  // SEED_PAGING_H_
