#include "cmd/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "support/stream.h"

namespace tarvik {

namespace {

// Bytes from one look at the clock to the next: often enough for a slow disk, and lost among the
// thousands of blocks between two looks on a fast one.
constexpr std::int64_t kLookBytes = std::int64_t{256} * 1024;
constexpr std::chrono::milliseconds kShowEvery{250};
// The ways to end a run from the keyboard or with kill.
constexpr std::array<int, Progress::kSignals> kEndingSignals = {SIGINT, SIGTERM};

// The one that a signal takes from the terminal.
Progress *on_terminal = nullptr;

// The signal has its default effect again; it comes into force when this returns.
void erase_and_end(int signal) {
  on_terminal->erase();
  std::raise(signal);
}

void erase_progress(void *progress) { static_cast<Progress *>(progress)->erase(); }

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
                100 * read / static_cast<double>(size), rate, time_left_text(left).data());
}

Progress::Progress(int descriptor, std::int64_t size, std::chrono::milliseconds delay)
    : line_(descriptor), size_(size) {
  if (!line_.is_on_terminal()) return;
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
  line_.erase();
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
  // The log's buffer is empty on a terminal, so nothing is overtaken.
  line_.show(
      ProgressText(offset, size_, std::chrono::duration<double>(now - start_).count()).view());
}

}  // namespace tarvik
