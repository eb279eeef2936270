// What all views have in common: one file after the other becomes lines.
#ifndef VIEWS_VIEW_H_
#define VIEWS_VIEW_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "views/lines.h"

namespace tarvik {

// One file to be read.
struct Source {
  std::string name;  // as the lines say it
  std::string path;  // where it is opened; another one for standard input, which is spooled
  bool spooled = false;
  // Where the view tells, for every block, how many bytes of the file it has read; or nullptr.
  std::atomic<std::int64_t> *position = nullptr;
};

enum class Outcome : std::uint8_t {
  read,        // all of it
  damaged,     // all of it, but something was garbage, no prefix, or cut
  unreadable,  // it could not be read, or not to its end; see View::error
  unwritten    // its lines could not be written
};

// Options that every view has.
struct ViewOptions {
  std::int32_t record_length = 4096;  // the length in force at first, bytes
  bool csv = false;                   // comma-separated values, not JSON
};

// Reads files and writes what they hold, a file's lines in order.  One object serves one thread and
// keeps its memory from file to file.
class View {
 public:
  virtual ~View() = default;
  // Writes a file's lines to out.  Throws std::bad_alloc when memory runs out.
  virtual Outcome read(const Source &source, LineBuffer *out) = 0;
  // Why the last file was unreadable: a text for people, without the file's name.
  [[nodiscard]] const std::string &error() const { return error_; }

 protected:
  std::string error_;
};

// The first line of comma-separated values, without its LF; empty for JSON.
using Heading = std::string;

}  // namespace tarvik

#endif  // VIEWS_VIEW_H_
