// The verb "segments".
#ifndef SDBLK_SEGMENTS_H_
#define SDBLK_SEGMENTS_H_

#include "sdblk/verbs.h"

namespace tarvik {

void declare_segments(OptionList *options, Chosen *chosen);

}  // namespace tarvik

#endif  // SDBLK_SEGMENTS_H_
