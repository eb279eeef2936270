// What the library says: kept for the program, never written to standard error.
#ifndef PYTHON_LOG_H_
#define PYTHON_LOG_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarvik {

// Becomes sdblk.Error in Python.
struct ReadError {
  std::string text;
  std::optional<std::int64_t> offset;  // from the start of the volume, bytes
  std::vector<std::string> messages;   // of the library, oldest first
  std::string file;                    // the path; empty for a buffer
};

// Thrown where the library would end the program; its messages are in the log.
struct Died {};

// Takes what the library says on this thread as long as it lives.  There is one at a time.
class Log {
 public:
  // Throws std::bad_alloc.
  Log();
  ~Log();
  Log(const Log &) = delete;
  Log &operator=(const Log &) = delete;

  // The lines said so far, registered messages among them; each is handed out once.
  std::vector<std::string> lines();

 private:
  static void keep(void *log, const char *bytes, std::size_t size);

  std::string text_;
};

}  // namespace tarvik

#endif  // PYTHON_LOG_H_
