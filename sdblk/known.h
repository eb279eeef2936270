// The files that an earlier run has read.
#ifndef SDBLK_KNOWN_H_
#define SDBLK_KNOWN_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik {

// Path, size and modification time of files, from the lines of "volumes" that earlier runs wrote.
// Of several lines for a file the last counts; a line "gone" takes its file out.  Other lines, and
// what is no line of ours, are passed over.
class Known {
 public:
  // Reads a list.  Returns 0, or the errno of a list that cannot be read.  Throws std::bad_alloc.
  int read(const std::string &path);

  // Whether a file is as the list says, at the cost of a look at it.  Remembers that it was met.
  // For many threads.
  bool holds(const std::string &path);

  // Calls with the name of each file of the list under the folders that was not met and is no
  // longer there, in the order of the list.
  void for_each_gone(const std::vector<std::string> &folders,
                     const std::function<void(std::string_view name)> &call) const;

 private:
  struct File {
    std::size_t text;  // where its name starts, and after it the time
    std::uint32_t name_size;
    std::uint32_t time_size;
    std::int64_t bytes;  // -1: the file is gone
  };

  void take_line(std::string_view line);
  [[nodiscard]] std::string_view name_of(const File &file) const {
    return std::string_view(texts_).substr(file.text, file.name_size);
  }
  [[nodiscard]] std::string_view time_of(const File &file) const {
    return std::string_view(texts_).substr(file.text + file.name_size, file.time_size);
  }
  [[nodiscard]] std::size_t slot_of(std::string_view name) const;
  File add_texts(std::string_view name, std::string_view time);
  void grow();
  [[nodiscard]] bool is_gone(const File &file, const std::vector<std::string> &folders) const;

  std::string texts_;
  std::vector<File> files_;
  std::vector<std::uint32_t> slots_;  // by hash of the name: 1 + index in files_; half are free
  std::unique_ptr<std::atomic<bool>[]> met_;  // of each file, once the list is read
};

}  // namespace tarvik

#endif  // SDBLK_KNOWN_H_
