// The view "segments": one line a continuous stretch of data.
#ifndef VIEWS_SEGMENTS_H_
#define VIEWS_SEGMENTS_H_

#include <memory>
#include <string>

#include "views/view.h"

namespace tarvik {

std::unique_ptr<View> make_segments_view(const ViewOptions &options);

// The first line of its comma-separated values, without its LF.
std::string segments_heading();

}  // namespace tarvik

#endif  // VIEWS_SEGMENTS_H_
