// The view "stations": a line for each channel epoch, with everything that belongs to it.
#ifndef VIEWS_STATIONS_H_
#define VIEWS_STATIONS_H_

#include <memory>

#include "views/epoch_choice.h"
#include "views/view.h"

namespace tarvik {

// Throws std::invalid_argument for a pattern with a fault.
std::unique_ptr<View> make_stations_view(const ViewOptions &options, const EpochOptions &epochs);

// The first line of its comma-separated values, without LF.
Heading stations_heading();

}  // namespace tarvik

#endif  // VIEWS_STATIONS_H_
