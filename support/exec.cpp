#include "support/exec.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "support/memory.h"

using namespace tarvik;

namespace {

// directory and name joined, to be freed; the empty directory is the current one.
char *join_path(std::string_view directory, const char *name) {
  const std::size_t name_length = std::strlen(name);
  if (directory.empty()) return memory_copy_text(name, name_length);
  char *path = static_cast<char *>(memory_get(directory.size() + name_length + 2));
  if (path == nullptr) return nullptr;
  std::memcpy(path, directory.data(), directory.size());
  path[directory.size()] = '/';
  std::memcpy(path + directory.size() + 1, name, name_length + 1);
  return path;
}

bool is_readable_file(const char *path) {
  struct stat status = {};
  return stat(path, &status) == 0 && !S_ISDIR(status.st_mode) &&
         faccessat(AT_FDCWD, path, R_OK, AT_EACCESS) == 0;
}

class ExecutablePath {
 public:
  ExecutablePath() noexcept : length_(readlink("/proc/self/exe", path_.data(), path_.size())) {}
  // A path that fills the buffer has been cut.
  [[nodiscard]] const char *text() const {
    return length_ < 1 || static_cast<std::size_t>(length_) == path_.size() ? nullptr
                                                                            : path_.data();
  }

 private:
  std::array<char, 8192> path_ = {};
  ssize_t length_;
};

}  // namespace

const char *getexecname(void) {
  static const ExecutablePath kPath;
  return kPath.text();
}

char *datafile(const char *variable, const char *name) {
  const char *directories = std::getenv(variable);
  while (directories != nullptr) {
    const std::size_t length = std::strcspn(directories, ":");
    char *path = join_path({directories, length}, name);
    if (path == nullptr || is_readable_file(path)) return path;
    memory_free(path);
    directories = directories[length] == ':' ? directories + length + 1 : nullptr;
  }
  return nullptr;
}
