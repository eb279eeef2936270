// Where the lines of a view go.
#ifndef VIEWS_LINES_H_
#define VIEWS_LINES_H_

#include <cstddef>
#include <memory>
#include <string_view>

namespace tarvik {

// Takes whole lines, each ended by LF, of any number at a time.  One sink may serve many threads.
class LineSink {
 public:
  virtual ~LineSink() = default;
  // False when they could not be written; there is no point in writing more then.
  virtual bool write(std::string_view lines) = 0;
};

// Builds lines one after the other and hands them on many at a time, never a part of one.  For one
// thread.  Memory is kept: a steady run of lines allocates nothing.  Throws std::bad_alloc.
class LineBuffer {
 public:
  explicit LineBuffer(LineSink *sink) : sink_(sink) {}

  // Room for bytes more of the line that is being built; commit says how far it was used.
  char *reserve(std::size_t bytes) {
    if (bytes > static_cast<std::size_t>(end_ - out_)) grow(bytes);
    return out_;
  }
  void commit(char *end) { out_ = end; }

  void put(std::string_view text);
  void put(char c) {
    *reserve(1) = c;
    ++out_;
  }
  // Takes bytes of the line that is being built back, such as a comma too many.
  void unput(std::size_t bytes) { out_ -= bytes; }

  // Ends the line.  False when lines could not be written.
  bool end_line();
  // Drops the line that is being built.
  void drop_line() { out_ = begin_ + lines_; }
  // Hands on what is there.  False when lines could not be written.
  bool flush();

 private:
  void grow(std::size_t bytes);

  LineSink *sink_;
  std::unique_ptr<char[]> storage_;
  char *begin_ = nullptr;
  char *out_ = nullptr;
  char *end_ = nullptr;
  std::size_t lines_ = 0;  // bytes of whole lines at the start
  bool good_ = true;
};

}  // namespace tarvik

#endif  // VIEWS_LINES_H_
