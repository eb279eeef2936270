#include "cmd/mapping_guard.h"

#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <string>

#include "support/stream.h"

namespace tarvik {

namespace {

const char *image = nullptr;
std::int64_t image_size = 0;
std::string message;

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
  streams_emergency_write(message.data(), message.size());
  _exit(1);
}

}  // namespace

void guard_mapping(const SDBlkVol &vol) {
  image = vol.image;
  image_size = vol.image_size;
  message = std::string("tarvik: ") + vol.filename + " changed while it was read.\n";
  struct sigaction action = {};
  action.sa_sigaction = end_program;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGBUS, &action, nullptr);
}

}  // namespace tarvik
