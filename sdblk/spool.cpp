#include "sdblk/spool.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "sdblk/signals.h"
#include "support/write_all.h"

namespace tarvik {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} << 10;

std::string temporary_folder() {
  const char *folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

int make_nameless_file(const std::string &folder) {
#ifdef O_TMPFILE
  const int descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (descriptor >= 0) return descriptor;
#endif
  std::string path = folder + "/sdblk-XXXXXX";
  const SignalsHeld held;
  const int named = mkostemp(path.data(), O_CLOEXEC);
  if (named >= 0) unlink(path.c_str());
  return named;
}

std::string text_of(int error) { return std::generic_category().message(error); }

}  // namespace

Spool::~Spool() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string Spool::fill() {
  const std::string folder = temporary_folder();
  descriptor_ = make_nameless_file(folder);
  if (descriptor_ < 0) return "no temporary file in " + folder + ": " + text_of(errno);
  const auto piece = std::make_unique_for_overwrite<char[]>(kPieceBytes);
  while (true) {
    const ssize_t got = read(STDIN_FILENO, piece.get(), kPieceBytes);
    if (got == 0) return {};
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return text_of(errno);
    const int error = write_all(descriptor_, piece.get(), static_cast<std::size_t>(got));
    if (error != 0) return "no room in " + folder + ": " + text_of(error);
  }
}

}  // namespace tarvik
