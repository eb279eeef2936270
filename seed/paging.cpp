#include "seed/paging.h"

#include <sys/mman.h>

namespace tarvik {

void give_back_piece(SDBlkVol *vol) {
  // madvise takes what mmap gave, which was not constant.
  madvise(const_cast<char *>(vol->image) + vol->given_back, kGiveBack, MADV_DONTNEED);  // NOLINT
  vol->given_back += kGiveBack;
}

}  // namespace tarvik
