// Blocks and volumes in the hands of the fuzz targets.
#ifndef FUZZ_BLOCKS_H_
#define FUZZ_BLOCKS_H_

#include <memory>

#include "fuzz/listing.h"
#include "seed/sdblk.h"

namespace fuzz {

struct CloseVolume {
  void operator()(SDBlkVol *vol) const { sdblk_closevol(vol); }
};
using Volume = std::unique_ptr<SDBlkVol, CloseVolume>;

struct FreeBlock {
  void operator()(SDBlk *block) const { sdblk_free(block); }
};
using Block = std::unique_ptr<SDBlk, FreeBlock>;

// Cuts the next block into *block.  What sdblk_parseblk answers.
int parse(SDBlkVol *vol, Block *block);

// The full listing of a block.
Listing list(const SDBlk &block);

// Whether the parser would hand out the block again and again.
bool stands_still(const SDBlk &block);

// Decodes, lists and copies a block; requires that decoding once more and copying change no line.
// Adds its listing.  False when it cannot be decoded.
bool exercise_block(SDBlk *block, Listing *listing);

}  // namespace fuzz

#endif  // FUZZ_BLOCKS_H_
