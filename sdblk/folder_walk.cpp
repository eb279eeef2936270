#include "sdblk/folder_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace tarvik {

namespace {

struct CloseFolder {
  void operator()(DIR *folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

bool is_dots(const char *name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// DT_REG, DT_DIR or another one; some file systems leave it to a look at the file itself.
int type_of(DIR *folder, const dirent &entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type;
  struct stat status = {};
  if (fstatat(dirfd(folder), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
  if (S_ISREG(status.st_mode)) return DT_REG;
  return S_ISDIR(status.st_mode) ? DT_DIR : DT_UNKNOWN;
}

// The folder that a walk starts at may be a link.
Folder open_folder_at(const std::string &path, bool is_first) {
  const int links = is_first ? 0 : O_NOFOLLOW;
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links);
  if (descriptor < 0) return nullptr;
  Folder folder(fdopendir(descriptor));
  if (folder == nullptr) close(descriptor);
  return folder;
}

}  // namespace

// Returns 0 or an errno.
int FolderWalk::list(Level *level) const {
  const Folder open_folder = open_folder_at(path_, levels_.empty());
  if (open_folder == nullptr) return errno;
  while (true) {
    errno = 0;
    const dirent *entry = readdir(open_folder.get());  // NOLINT(concurrency-mt-unsafe): our own DIR
    if (entry == nullptr) break;
    const int type = is_dots(entry->d_name) ? DT_UNKNOWN : type_of(open_folder.get(), *entry);
    if (type != DT_REG && type != DT_DIR) continue;
    level->entries.push_back(level->names.size());
    level->names += static_cast<char>(type == DT_REG ? Kind::file : Kind::folder);
    level->names += entry->d_name;
    level->names += '\0';
  }
  const int error = errno;
  const char *names = level->names.data();
  std::sort(level->entries.begin(), level->entries.end(), [names](std::size_t a, std::size_t b) {
    return std::strcmp(names + a + 1, names + b + 1) < 0;
  });
  return error;
}

void FolderWalk::start(const std::string &folder) {
  path_ = folder;
  levels_.clear();
  error_ = enter();
}

// Lists the folder at path_.  Returns 0 or an errno; what could be listed is taken all the same.
int FolderWalk::enter() {
  Level level;
  level.path_size = path_.size();
  const int error = list(&level);
  levels_.push_back(std::move(level));
  return error;
}

bool FolderWalk::next(Found *found) {
  if (error_ != 0) {
    *found = {path_, error_};
    error_ = 0;
    return true;
  }
  while (!levels_.empty()) {
    Level &level = levels_.back();
    path_.resize(level.path_size);
    if (level.next == level.entries.size()) {
      levels_.pop_back();
      continue;
    }
    const char *entry = level.names.data() + level.entries[level.next++];
    path_ += '/';
    path_ += entry + 1;
    // Said before the folder is entered, for a further level moves the one that the entry is of.
    const bool is_folder = static_cast<Kind>(*entry) == Kind::folder;
    const int error = is_folder ? enter() : 0;
    if (is_folder && error == 0) continue;
    *found = {path_, error};
    return true;
  }
  return false;
}

}  // namespace tarvik
