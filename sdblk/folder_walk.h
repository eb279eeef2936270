// The regular files below a folder.
#ifndef SDBLK_FOLDER_WALK_H_
#define SDBLK_FOLDER_WALK_H_

#include <cstddef>
#include <string>
#include <vector>

namespace tarvik {

// Goes through a folder by name in byte order, folders in their turn, and follows no links but the
// one that may lead to the folder itself.  It holds the names of one folder on each level, and no
// descriptors.
class FolderWalk {
 public:
  // What was met: a regular file, or a folder that cannot be listed.
  struct Found {
    std::string path;  // the folder's, "/", and so on
    int error = 0;     // the errno of a folder that cannot be listed; 0 for a file
  };

  // Begins with a folder; nothing must be left of the one before.
  void start(const std::string &folder);
  // The next one; false at the end.  Throws std::bad_alloc.
  bool next(Found *found);

 private:
  enum class Kind : char { file, folder };
  // A folder's entries that are worth a look, by name.
  struct Level {
    std::size_t path_size = 0;         // of the folder's path
    std::string names;                 // of each entry its kind and its name, ended by NUL
    std::vector<std::size_t> entries;  // where they start
    std::size_t next = 0;
  };

  int enter();
  int list(Level *level) const;

  std::string path_;
  std::vector<Level> levels_;
  int error_ = 0;  // of the folder that was started
};

}  // namespace tarvik

#endif  // SDBLK_FOLDER_WALK_H_
