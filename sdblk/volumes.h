// The verb "volumes".
#ifndef SDBLK_VOLUMES_H_
#define SDBLK_VOLUMES_H_

#include "sdblk/verbs.h"

namespace tarvik {

void declare_volumes(OptionList *options, Chosen *chosen);

}  // namespace tarvik

#endif  // SDBLK_VOLUMES_H_
