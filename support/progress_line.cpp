#include "support/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/line.h"

namespace tarvik {

namespace {

constexpr std::size_t kUsualColumns = 80;

// A line that fills the terminal's last column may run on into the next; no line is longer than most.
std::size_t usable_columns(int descriptor, std::size_t most) {
  winsize size = {};
  const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return std::min((known ? size.ws_col : kUsualColumns) - 1, most);
}

bool terminal_is_dumb() {
  const char *terminal = std::getenv("TERM");
  return terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
}

}  // namespace

std::array<char, 40> time_left_text(double seconds) {
  const long whole = std::lround(std::ceil(std::min(seconds, 1e9)));
  const long hours = whole / 3600;
  const long minutes = whole / 60 % 60;
  std::array<char, 40> text = {};
  if (hours > 0) {
    std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", hours, minutes, whole % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%ld:%02ld", minutes, whole % 60);
  }
  return text;
}

ProgressLine::ProgressLine(int descriptor)
    : descriptor_(descriptor), on_terminal_(isatty(descriptor) == 1) {
  if (on_terminal_) dumb_ = terminal_is_dumb();
}

void ProgressLine::show(std::string_view line) {
  line = line.substr(0, usable_columns(descriptor_, kMostColumns));
  std::array<char, kMostColumns * 2 + 8> bytes;
  const char *end = put_text(put_erasure(bytes.data()), line);
  shown_ = line.size();
  write_or_forget({bytes.data(), end});
}

void ProgressLine::erase() {
  if (shown_ == 0) return;
  std::array<char, kMostColumns + 8> bytes;
  const char *end = put_erasure(bytes.data());
  shown_ = 0;
  write_or_forget({bytes.data(), end});
}

// A dumb terminal knows no sequence that empties a line.
char *ProgressLine::put_erasure(char *out) const {
  if (!dumb_) return put_text(out, "\r\033[K");
  out = put_char(out, '\r');
  std::memset(out, ' ', shown_);
  return put_char(out + shown_, '\r');
}

void ProgressLine::write_or_forget(std::string_view bytes) {
  if (write(descriptor_, bytes.data(), bytes.size()) < 0) shown_ = 0;
}

}  // namespace tarvik
