// The abbreviation dictionary of a volume: copies of the blockettes that define lookup codes.
#ifndef SEED_ABBREVIATION_H_
#define SEED_ABBREVIATION_H_

#include <cstdint>

#include "seed/sdblk.h"

namespace tarvik {

// The blockette that defines a code, or nullptr; without a volume there is none.
SDBlk *referenced_block(const SDBlkVol *vol, const char *abbr_key, std::int32_t code);

// Keeps a copy of the blockette that is being decoded under the code that it defines.  0, or -1 with
// messages registered: the code is defined already, or memory ran out.
int define_abbreviation(SDBlkVol *vol, const char *abbr_key, std::int32_t code);

}  // namespace tarvik

#endif  // SEED_ABBREVIATION_H_
