// Whole reading: the records of a file, and the blocks in them.
#ifndef SEED_WHOLE_READER_H_
#define SEED_WHOLE_READER_H_

#include "seed/sdblk.h"

namespace tarvik {

// sdblk_parseblk and sdblk_unstuffblk of a volume that is read whole.
int parse_whole(SDBlkVol *vol, SDBlk **blkp);
int unstuff_whole(SDBlkVol *vol, SDBlk *block);

// sdblk_chain.
int chain_whole(SDBlkVol *vol, SDBlk *record, double *start);

// Releases what whole reading keeps of a volume; nullptr does nothing.
void free_whole(SDBlkWhole *whole);

}  // namespace tarvik

#endif  // SEED_WHOLE_READER_H_
