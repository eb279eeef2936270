#include "sdblk/segments.h"

#include "views/segments.h"

namespace tarvik {

void declare_segments(OptionList * /*options*/, Chosen *chosen) {
  chosen->make_view = make_segments_view;
}

}  // namespace tarvik
