// sdblk: writes what is in SEED volumes as data.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <new>
#include <string>

#include "sdblk/messages.h"
#include "sdblk/options.h"
#include "sdblk/run.h"
#include "sdblk/signals.h"
#include "support/write_all.h"

using namespace tarvik;

namespace {

// A stream that was closed gets a descriptor that cannot be used that way, before a file of the run
// can take its place and be written to.
void fill_closed_streams() {
  constexpr std::array kUnfit = {O_WRONLY, O_RDONLY, O_RDONLY};
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // The lowest that is free is the one that is opened.
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", kUnfit[static_cast<std::size_t>(stream)]);
  }
}

Status follow(int argc, char **argv) {
  Options options;
  std::string text;
  switch (parse_options(argc, argv, verbs(), &options, &text)) {
    case Parsed::answer: return answer(text);
    case Parsed::fault: write_all(STDERR_FILENO, text.data(), text.size()); return kWrongUsage;
    case Parsed::options: break;
  }
  return options.schema ? answer(options.verb->schema()) : run(options);
}

}  // namespace

int main(int argc, char **argv) {
  fill_closed_streams();
  catch_ending_signals();
  try {
    return follow(argc, argv);
  } catch (const std::bad_alloc &) {
    complain("out of memory");
    return kFailed;
  }
}
