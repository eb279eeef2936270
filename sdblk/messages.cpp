#include "sdblk/messages.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>

#include "sdblk/progress.h"
#include "support/terminal.h"
#include "support/write_all.h"

namespace tarvik {

namespace {

void write_line(std::string line) {
  line += '\n';
  const ProgressHidden hidden;
  write_all(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

void say(std::string_view text) {
  std::string line(text);
  std::replace(line.begin(), line.end(), '\n', '?');
  line.resize(hide_control_characters(line.data(), line.size()));
  write_line(std::move(line));
}

void complain(std::string_view text) {
  std::string line = "sdblk: ";
  line += text;
  if (isatty(STDERR_FILENO) == 1) line.resize(hide_control_characters(line.data(), line.size()));
  write_line(std::move(line));
}

}  // namespace tarvik
