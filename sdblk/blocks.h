// The verb "blocks".
#ifndef SDBLK_BLOCKS_H_
#define SDBLK_BLOCKS_H_

#include "sdblk/verbs.h"

namespace tarvik {

void declare_blocks(OptionList *options, Chosen *chosen);

}  // namespace tarvik

#endif  // SDBLK_BLOCKS_H_
