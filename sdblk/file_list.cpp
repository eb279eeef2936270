#include "sdblk/file_list.h"

#include <sys/stat.h>

#include <string_view>
#include <utility>

namespace tarvik {

namespace {

bool is_folder(const std::string &path) {
  struct stat status = {};
  return path != kStandardInput && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

FileList::FileList(std::vector<std::string> files, int list, char end) : files_(std::move(files)) {
  if (list >= 0) list_.emplace(list, end);
}

bool FileList::next(FolderWalk::Found *found) {
  const std::lock_guard lock(mutex_);
  while (!walk_.next(found)) {
    std::string path;
    if (!next_named(&path)) return false;
    if (!is_folder(path)) {
      *found = {std::move(path), 0};
      return true;
    }
    walk_.start(path);
    folders_.push_back(std::move(path));
  }
  return true;
}

// An empty line of a list names nothing.
bool FileList::next_named(std::string *path) {
  if (next_file_ < files_.size()) {
    *path = std::move(files_[next_file_++]);
    return true;
  }
  std::string_view line;
  while (list_ && list_->next(&line)) {
    if (line.empty()) continue;
    *path = line;
    return true;
  }
  return false;
}

}  // namespace tarvik
