// Standard input as a file.
#ifndef SDBLK_SPOOL_H_
#define SDBLK_SPOOL_H_

#include <string>

namespace tarvik {

// What standard input holds, in a temporary file without a name (in TMPDIR, else /tmp), which is
// gone when it is closed or the process ends.
class Spool {
 public:
  Spool() = default;
  ~Spool();
  Spool(const Spool &) = delete;
  Spool &operator=(const Spool &) = delete;

  // Reads standard input to its end.  Returns an empty text, or what went wrong.
  std::string fill();
  // Where the file can be opened.
  [[nodiscard]] std::string path() const { return "/dev/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_ = -1;
};

}  // namespace tarvik

#endif  // SDBLK_SPOOL_H_
