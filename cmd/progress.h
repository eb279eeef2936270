// The line on the terminal that says how far a long run has come.
#ifndef CMD_PROGRESS_H_
#define CMD_PROGRESS_H_

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "cmd/options.h"
#include "support/progress_line.h"

namespace tarvik {

// Where a run with these options shows its progress, or -1: a listing, and a summary that goes to
// the terminal, show it themselves.
int progress_descriptor(const Options &options);

// The line for offset of size bytes read in a time, without a line end.
class ProgressText {
 public:
  ProgressText(std::int64_t offset, std::int64_t size, double seconds);
  [[nodiscard]] std::string_view view() const { return text_.data(); }

 private:
  std::array<char, ProgressLine::kMostColumns + 1> text_ = {};
};

// Shows the line, as much of it as fits the terminal, once the run has lasted longer than the
// delay, renews it a few times a second, and takes it away before anything else is written to a
// terminal, at the end, and when the run is ended from the keyboard.  There is one at a time.
class Progress {
 public:
  static constexpr std::chrono::milliseconds kDelay{2000};
  static constexpr std::size_t kSignals = 2;

  // Nothing is ever shown where the descriptor is no terminal, -1 included.
  Progress(int descriptor, std::int64_t size, std::chrono::milliseconds delay = kDelay);
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // Tells how many bytes are read.  Called for every block, it looks at the clock now and then.
  void at(std::int64_t offset) {
    if (offset >= next_look_) look(offset);
  }
  void erase() { line_.erase(); }

 private:
  using Clock = std::chrono::steady_clock;

  void look(std::int64_t offset);
  void catch_signals();

  ProgressLine line_;
  std::int64_t size_;
  std::int64_t next_look_ = std::numeric_limits<std::int64_t>::max();
  Clock::time_point start_;
  Clock::time_point next_show_;
  std::array<struct sigaction, kSignals> before_ = {};
};

}  // namespace tarvik

#endif  // CMD_PROGRESS_H_
