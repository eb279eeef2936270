#include "cmd/mapping_guard.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "support/line.h"
#include "support/stream.h"

namespace tarvik {

namespace {

const char *image = nullptr;
std::int64_t image_size = 0;
std::array<char, PATH_MAX + 64> message;
std::size_t message_size = 0;

bool lies_in_image(const void *address) {
  const auto *byte = static_cast<const char *>(address);
  return byte >= image && byte < image + image_size;
}

// A fault elsewhere is left to the system, which ends the program when the access is tried again.
void end_program(int signal, siginfo_t *info, void * /*context*/) {
  if (!lies_in_image(info->si_addr)) {
    std::signal(signal, SIG_DFL);
    return;
  }
  streams_emergency_write(message.data(), message_size);
  _exit(1);
}

}  // namespace

void guard_mapping(const SDBlkVol &vol) {
  image = vol.image;
  image_size = vol.image_size;
  char *end = put_text(message.data(), "tarvik: ");
  // It was opened: it is no longer than a path may be.
  end = put_text(end, std::string_view(vol.filename).substr(0, PATH_MAX));
  end = put_text(end, " changed while it was read.\n");
  message_size = static_cast<std::size_t>(end - message.data());
  struct sigaction action = {};
  action.sa_sigaction = end_program;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGBUS, &action, nullptr);
}

}  // namespace tarvik
