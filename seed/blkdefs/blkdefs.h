// The index of the catalogue, apart from the one that the library keeps.
#ifndef SEED_BLKDEFS_BLKDEFS_H_
#define SEED_BLKDEFS_BLKDEFS_H_

#include <span>

#include "seed/sdblk.h"

namespace tarvik::blkdefs {

// Empties every slot, then puts each definition into the slot of its type; the later of two with
// one type stays.  A type without a slot ends the program through elog_die.
void fill_index(std::span<const SDBlkDef> defs,
                std::span<const SDBlkDef *, SEED_BLKDEFS_INDEX_SIZE> slots);

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_BLKDEFS_H_
