// tarvik: says what is in a SEED volume.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

#include "cmd/options.h"
#include "cmd/run.h"
#include "support/announce.h"
#include "support/elog.h"
#include "support/output.h"

using namespace tarvik;

namespace {

// What could not be written makes the run a failure, however it ended.
void finish_streams() {
  output_flush();
  elog_flush();
  const int error = output_write_error() != 0 ? output_write_error() : elog_write_error();
  if (error == 0) return;
  elog_notify(0, "tarvik: write error: %s\n", std::strerror(error));
  elog_flush();
  _exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char **argv) {
  // A reader that goes away ends the program quietly, also where it was started with the signal
  // off.
  std::signal(SIGPIPE, SIG_DFL);
  std::atexit(finish_streams);
  elog_init(argc, argv);
  announce(argv[0], nullptr);
  if (argc < 2) {
    usage();
    banner("tarvik", nullptr);
    return EXIT_FAILURE;
  }
  Options options;
  if (!parse_options(argc, argv, &options)) return EXIT_FAILURE;
  return run(options);
}
