#include "sdblk/messages.h"

#include <unistd.h>

#include <string>

#include "sdblk/progress.h"
#include "support/terminal.h"
#include "support/write_all.h"

namespace tarvik {

void complain(std::string_view text) {
  std::string line = "sdblk: ";
  line += text;
  if (isatty(STDERR_FILENO) == 1) line.resize(hide_control_characters(line.data(), line.size()));
  line += '\n';
  const ProgressHidden hidden;
  write_all(STDERR_FILENO, line.data(), line.size());
}

}  // namespace tarvik
