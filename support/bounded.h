// The end of a text that does not fit the buffer that must take it.
#ifndef SUPPORT_BOUNDED_H_
#define SUPPORT_BOUNDED_H_

#include <cstddef>

#include "support/elog.h"

namespace tarvik {

// Ends the program unless text_bytes characters and a final 0 fit a buffer of buffer_bytes.
inline void require_fit(const char *function, std::size_t text_bytes, std::size_t buffer_bytes) {
  if (text_bytes < buffer_bytes) [[likely]]
    return;
  elog_die(0, "%s: text of %ld bytes does not fit the %ld byte buffer\n", function,
           static_cast<long>(text_bytes + 1), static_cast<long>(buffer_bytes));
}

}  // namespace tarvik

#endif  // SUPPORT_BOUNDED_H_
