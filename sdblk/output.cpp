#include "sdblk/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "sdblk/signals.h"
#include "support/write_all.h"

namespace tarvik {

namespace {

constexpr int kMode = 0666;  // less what the umask takes

// The file that a link leads to is the one to be replaced, not the link.
std::string without_links(const std::string &path) {
  char *resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return path;
  std::string target = resolved;
  std::free(resolved);  // NOLINT(cppcoreguidelines-no-malloc): from realpath
  return target;
}

// A name for a file in the folder of a path that no other process takes.
std::string name_beside(const std::string &path, int attempt) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  return folder + ".sdblk-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
}

}  // namespace

Output::~Output() {
  if (!is_open_) return;
  close(descriptor_);
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  remove_at_end(nullptr);
}

bool Output::open(const std::string &path) {
  name_ = path;
  path_ = path;
  struct stat status = {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode)) return fail(EISDIR);
  if (!exists || S_ISREG(status.st_mode)) return open_temporary();
  descriptor_ = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  is_open_ = descriptor_ >= 0;
  return is_open_ || fail(errno);
}

bool Output::open_temporary() {
  path_ = without_links(path_);
  const SignalsHeld held;
  for (int attempt = 0; attempt < INT_MAX; ++attempt) {
    temporary_ = name_beside(path_, attempt);
    descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    if (descriptor_ >= 0 || errno != EEXIST) break;
  }
  is_open_ = descriptor_ >= 0;
  if (!is_open_) return fail(errno);
  remove_at_end(temporary_.c_str());
  return true;
}

bool Output::is_terminal() const { return isatty(descriptor_) == 1; }

bool Output::write(std::string_view lines) {
  const std::lock_guard lock(mutex_);
  if (!error_.empty()) return false;
  has_written_ = true;
  const int error = write_all(descriptor_, lines.data(), lines.size());
  return error == 0 || fail(error);
}

bool Output::finish() {
  if (!error_.empty()) return false;
  if (!is_open_ && !has_written_) return true;
  is_open_ = false;
  const bool closed = close(descriptor_) == 0;
  const int error = closed ? 0 : errno;
  if (temporary_.empty()) return closed || fail(error);
  const SignalsHeld held;
  const bool placed = closed && std::rename(temporary_.c_str(), path_.c_str()) == 0;
  const int reason = closed ? errno : error;
  if (!placed) unlink(temporary_.c_str());
  remove_at_end(nullptr);
  return placed || fail(reason);
}

bool Output::fail(int error) {
  error_ = name_ + ": " + std::generic_category().message(error);
  return false;
}

}  // namespace tarvik
