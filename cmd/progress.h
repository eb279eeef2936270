// The line on the terminal that says how far a long run has come.
#ifndef CMD_PROGRESS_H_
#define CMD_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>

#include "cmd/options.h"

namespace tarvik {

// Where a run with these options shows its progress, or -1: a listing, and a summary that goes to
// the terminal, show it themselves.
int progress_descriptor(const Options &options);

// The line for offset of size bytes read in a time, without a line end.
std::string progress_text(std::int64_t offset, std::int64_t size, double seconds);

// Shows the line once the run has lasted longer than the delay, renews it a few times a second, and
// takes it away before anything else is written to a terminal and at the end.
class Progress {
 public:
  static constexpr std::chrono::milliseconds kDelay{2000};

  // Nothing is ever shown where the descriptor is no terminal, -1 included.
  Progress(int descriptor, std::int64_t size, std::chrono::milliseconds delay = kDelay);
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // Tells how many bytes are read.  Called for every block, it looks at the clock now and then.
  void at(std::int64_t offset) {
    if (offset >= next_look_) look(offset);
  }
  void erase();

 private:
  using Clock = std::chrono::steady_clock;

  void look(std::int64_t offset);
  void show(const std::string &line);

  int descriptor_;
  std::int64_t size_;
  std::int64_t next_look_ = std::numeric_limits<std::int64_t>::max();
  Clock::time_point start_;
  Clock::time_point next_show_;
  bool shown_ = false;
};

}  // namespace tarvik

#endif  // CMD_PROGRESS_H_
