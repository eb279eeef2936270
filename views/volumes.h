// The view "volumes": one line a file, what it is and what it holds.
#ifndef VIEWS_VOLUMES_H_
#define VIEWS_VOLUMES_H_

#include <memory>
#include <string>

#include "views/view.h"

namespace tarvik {

std::unique_ptr<View> make_volumes_view(const ViewOptions &options);

// The first line of its comma-separated values, without its LF.
std::string volumes_heading();

}  // namespace tarvik

#endif  // VIEWS_VOLUMES_H_
