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

// Text that grows where it is written.  For one thread.  Memory is kept: texts of a steady size
// allocate nothing.  Throws std::bad_alloc.
class TextBuffer {
 public:
  // Room for bytes more; commit says how far it was used.
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
  // Takes bytes back, such as a comma too many.
  void unput(std::size_t bytes) { out_ -= bytes; }

  // What was written since the start or the last clear; it lives until more is written.
  [[nodiscard]] std::string_view text() const { return {begin_, size()}; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(out_ - begin_); }
  void clear() { out_ = begin_; }

 private:
  friend class LineBuffer;

  void grow(std::size_t bytes);

  std::unique_ptr<char[]> storage_;
  char *begin_ = nullptr;
  char *out_ = nullptr;
  char *end_ = nullptr;
};

// Builds lines one after the other and hands them on many at a time, never a part of one.
class LineBuffer : public TextBuffer {
 public:
  explicit LineBuffer(LineSink *sink) : sink_(sink) {}

  // Ends the line.  False when lines could not be written.
  bool end_line();
  // Drops the line that is being built.
  void drop_line() { out_ = begin_ + lines_; }
  // Hands on what is there.  False when lines could not be written.
  bool flush();

 private:
  LineSink *sink_;
  std::size_t lines_ = 0;  // bytes of whole lines at the start
  bool good_ = true;
};

}  // namespace tarvik

#endif  // VIEWS_LINES_H_
