// Writing all of some bytes.
#ifndef SUPPORT_WRITE_ALL_H_
#define SUPPORT_WRITE_ALL_H_

#include <cstddef>

namespace tarvik {

// Writes everything, however often it takes, and returns 0, or the errno of the failure.  A signal
// handler may call it.
int write_all(int descriptor, const char *bytes, std::size_t size);

}  // namespace tarvik

#endif  // SUPPORT_WRITE_ALL_H_
