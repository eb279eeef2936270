// Where the lines of a run go.
#ifndef SDBLK_OUTPUT_H_
#define SDBLK_OUTPUT_H_

#include <mutex>
#include <string>

#include "views/lines.h"

namespace tarvik {

// Standard output, or a file.  A file is written under a temporary name beside it and takes its
// place when the output is finished; until then, and when it never is, what was there before stays.
// A path that leads to something else than a regular file (a device, a pipe) is written to.
class Output : public LineSink {
 public:
  Output() = default;
  ~Output() override;
  Output(const Output &) = delete;
  Output &operator=(const Output &) = delete;

  // Opens a file for writing, before other threads are started; without it lines go to standard
  // output.  Returns false after a failure.
  bool open(const std::string &path);

  // For many threads.  False from the first failure on.
  bool write(std::string_view lines) override;
  // Ends a run that has written everything.  False when it has not.
  bool finish();

  // What went wrong first, for people: the output and the system's text.
  [[nodiscard]] const std::string &error() const { return error_; }
  [[nodiscard]] bool is_terminal() const;

 private:
  bool open_temporary();
  bool fail(int error);

  std::mutex mutex_;
  std::string name_ = "standard output";  // for messages
  std::string path_;                      // empty for standard output
  std::string temporary_;                 // empty where the path is written to
  int descriptor_ = 1;
  bool is_open_ = false;
  bool has_written_ = false;
  std::string error_;
};

}  // namespace tarvik

#endif  // SDBLK_OUTPUT_H_
