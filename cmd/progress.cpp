#include "cmd/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/line.h"
#include "support/stream.h"

namespace tarvik {

namespace {

// Bytes from one look at the clock to the next: often enough for a slow disk, and lost among the
// thousands of blocks between two looks on a fast one.
constexpr std::int64_t kLookBytes = std::int64_t{256} * 1024;
constexpr std::chrono::milliseconds kShowEvery{250};
constexpr std::size_t kUsualColumns = 80;
// The ways to end a run from the keyboard or with kill.
constexpr std::array<int, Progress::kSignals> kEndingSignals = {SIGINT, SIGTERM};

// "4:05", and "1:04:05" from an hour on.
std::array<char, 40> time_text(double seconds) {
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

// The one that a signal takes from the terminal.
Progress *on_terminal = nullptr;

// The signal has its default effect again; it comes into force when this returns.
void erase_and_end(int signal) {
  on_terminal->erase();
  std::raise(signal);
}

void erase_progress(void *progress) { static_cast<Progress *>(progress)->erase(); }

// A line that fills the terminal's last column may run on into the next.
std::size_t usable_columns(int descriptor) {
  winsize size = {};
  const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return (known ? size.ws_col : kUsualColumns) - 1;
}

bool terminal_is_dumb() {
  const char *terminal = std::getenv("TERM");
  return terminal != nullptr && std::strcmp(terminal, "dumb") == 0;
}

}  // namespace

int progress_descriptor(const Options &options) {
  if (options.verbosity > 0) return -1;
  if (options.station_summary && isatty(STDOUT_FILENO) == 1) return -1;
  return STDERR_FILENO;
}

ProgressText::ProgressText(std::int64_t offset, std::int64_t size, double seconds) {
  const auto read = static_cast<double>(offset);
  const double rate = read / std::max(seconds, 1e-6) / 1e6;
  const double left = seconds * static_cast<double>(size - offset) / read;
  std::snprintf(text_.data(), text_.size(), "tarvik: %5.1f %%  %.1f MB/s  %s left",
                100 * read / static_cast<double>(size), rate, time_text(left).data());
}

Progress::Progress(int descriptor, std::int64_t size, std::chrono::milliseconds delay)
    : descriptor_(descriptor), size_(size) {
  if (isatty(descriptor) != 1) return;
  dumb_ = terminal_is_dumb();
  start_ = Clock::now();
  next_show_ = start_ + delay;
  next_look_ = kLookBytes;
  stream_before_terminal(erase_progress, this);
  on_terminal = this;
  catch_signals();
}

Progress::~Progress() {
  if (on_terminal != this) return;
  for (std::size_t i = 0; i < kSignals; ++i) sigaction(kEndingSignals[i], &before_[i], nullptr);
  on_terminal = nullptr;
  stream_before_terminal(nullptr, nullptr);
  erase();
}

// A signal that is ignored, as that from the keyboard is in the background, stays so.
void Progress::catch_signals() {
  struct sigaction action = {};
  action.sa_handler = erase_and_end;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (std::size_t i = 0; i < kSignals; ++i) {
    sigaction(kEndingSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler == SIG_DFL) sigaction(kEndingSignals[i], &action, nullptr);
  }
}

void Progress::look(std::int64_t offset) {
  next_look_ = offset + kLookBytes;
  const Clock::time_point now = Clock::now();
  if (now < next_show_) return;
  next_show_ = now + kShowEvery;
  show(ProgressText(offset, size_, std::chrono::duration<double>(now - start_).count()).view());
}

// The log's buffer is empty on a terminal, so nothing is overtaken.
void Progress::show(std::string_view line) {
  line = line.substr(0, usable_columns(descriptor_));
  std::array<char, kMostColumns * 2 + 8> bytes;
  const char *end = put_text(put_erasure(bytes.data()), line);
  shown_ = line.size();
  write_or_forget({bytes.data(), end});
}

void Progress::erase() {
  if (shown_ == 0) return;
  std::array<char, kMostColumns + 8> bytes;
  const char *end = put_erasure(bytes.data());
  shown_ = 0;
  write_or_forget({bytes.data(), end});
}

// A dumb terminal knows no sequence that empties a line.
char *Progress::put_erasure(char *out) const {
  if (!dumb_) return put_text(out, "\r\033[K");
  out = put_char(out, '\r');
  std::memset(out, ' ', shown_);
  return put_char(out + shown_, '\r');
}

void Progress::write_or_forget(std::string_view bytes) {
  if (write(descriptor_, bytes.data(), bytes.size()) < 0) shown_ = 0;
}

}  // namespace tarvik
