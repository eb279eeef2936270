// The files that a run reads.
#ifndef SDBLK_FILE_LIST_H_
#define SDBLK_FILE_LIST_H_

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sdblk/folder_walk.h"
#include "sdblk/line_reader.h"

namespace tarvik {

// What stands for standard input.
inline constexpr char kStandardInput[] = "-";

// Hands out one file after the other: those that are named, then those of a list, and in the place
// of a folder the files below it.  For many threads.
class FileList {
 public:
  // list is the descriptor of a list of paths, each ended by end, or -1; it stays open.
  FileList(std::vector<std::string> files, int list, char end);

  // The next file, or a folder that cannot be listed.  False at the end.  Throws std::bad_alloc.
  bool next(FolderWalk::Found *found);

  // Asked at the end: the errno of a list that could not be read, or 0.
  [[nodiscard]] int list_error() const { return list_ ? list_->error() : 0; }
  // Asked at the end: the folders that were named and could be listed.
  [[nodiscard]] const std::vector<std::string> &folders() const { return folders_; }

 private:
  bool next_named(std::string *path);

  std::mutex mutex_;
  std::vector<std::string> files_;
  std::size_t next_file_ = 0;
  std::optional<LineReader> list_;
  FolderWalk walk_;
  std::vector<std::string> folders_;
};

}  // namespace tarvik

#endif  // SDBLK_FILE_LIST_H_
