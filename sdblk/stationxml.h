// The verb "stationxml".
#ifndef SDBLK_STATIONXML_H_
#define SDBLK_STATIONXML_H_

#include "sdblk/verbs.h"

namespace tarvik {

void declare_stationxml(OptionList *options, Chosen *chosen);

}  // namespace tarvik

#endif  // SDBLK_STATIONXML_H_
