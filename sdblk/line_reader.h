// The lines of a file, one after the other.
#ifndef SDBLK_LINE_READER_H_
#define SDBLK_LINE_READER_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarvik {

class LineReader {
 public:
  // Reads from an open descriptor, which stays open.  Lines end in end; the last may lack it.
  LineReader(int descriptor, char end) : descriptor_(descriptor), end_(end) {}

  // The next line, without its end; it lives until the next call.  False at the end, and when the
  // file cannot be read: then error is the errno.  Throws std::bad_alloc.
  bool next(std::string_view *line);
  [[nodiscard]] int error() const { return error_; }

 private:
  bool fill();

  int descriptor_;
  char end_;
  std::vector<char> bytes_;
  std::size_t at_ = 0;     // of the next line
  std::size_t ready_ = 0;  // bytes that are there
  int error_ = 0;
};

}  // namespace tarvik

#endif  // SDBLK_LINE_READER_H_
