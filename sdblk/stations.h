// The verb "stations".
#ifndef SDBLK_STATIONS_H_
#define SDBLK_STATIONS_H_

#include "sdblk/verbs.h"

namespace tarvik {

void declare_stations(OptionList *options, Chosen *chosen);

}  // namespace tarvik

#endif  // SDBLK_STATIONS_H_
