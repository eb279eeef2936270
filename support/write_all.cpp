#include "support/write_all.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace tarvik {

int write_all(int descriptor, const char *bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(descriptor, bytes, size);
    if (written >= 0) {
      bytes += written;
      size -= static_cast<std::size_t>(written);
    } else if (errno == EAGAIN) {
      // Somebody made the descriptor non-blocking: wait until it takes more.
      pollfd writable{descriptor, POLLOUT, 0};
      poll(&writable, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace tarvik
