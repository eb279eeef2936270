#include "cmd/progress.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "support/stream.h"

namespace tarvik {

namespace {

// Bytes from one look at the clock to the next: often enough for a slow disk, and lost among the
// thousands of blocks between two looks on a fast one.
constexpr std::int64_t kLookBytes = std::int64_t{256} * 1024;
constexpr std::chrono::milliseconds kShowEvery{250};
constexpr std::string_view kErase = "\r\033[K";

// "4:05", and "1:04:05" from an hour on.
std::string time_text(double seconds) {
  const long whole = std::lround(std::ceil(std::min(seconds, 1e9)));
  const long hours = whole / 3600;
  const long minutes = whole / 60 % 60;
  std::array<char, 40> text = {};
  if (hours > 0) {
    std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", hours, minutes, whole % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%ld:%02ld", minutes, whole % 60);
  }
  return text.data();
}

void erase_progress(void *progress) { static_cast<Progress *>(progress)->erase(); }

}  // namespace

int progress_descriptor(const Options &options) {
  if (options.verbosity > 0) return -1;
  if (options.station_summary && isatty(STDOUT_FILENO) == 1) return -1;
  return STDERR_FILENO;
}

std::string progress_text(std::int64_t offset, std::int64_t size, double seconds) {
  const auto read = static_cast<double>(offset);
  const auto left = static_cast<double>(size - offset);
  std::array<char, 80> text = {};
  std::snprintf(text.data(), text.size(), "tarvik: %5.1f %%  %.1f MB/s  %s left",
                100 * read / static_cast<double>(size), read / std::max(seconds, 1e-6) / 1e6,
                time_text(seconds * left / read).c_str());
  return text.data();
}

Progress::Progress(int descriptor, std::int64_t size, std::chrono::milliseconds delay)
    : descriptor_(descriptor), size_(size) {
  if (isatty(descriptor) != 1) return;
  start_ = Clock::now();
  next_show_ = start_ + delay;
  next_look_ = kLookBytes;
  stream_before_terminal(erase_progress, this);
}

Progress::~Progress() {
  if (next_look_ == std::numeric_limits<std::int64_t>::max()) return;
  stream_before_terminal(nullptr, nullptr);
  erase();
}

void Progress::look(std::int64_t offset) {
  next_look_ = offset + kLookBytes;
  const Clock::time_point now = Clock::now();
  if (now < next_show_) return;
  next_show_ = now + kShowEvery;
  show(progress_text(offset, size_, std::chrono::duration<double>(now - start_).count()));
}

// The log's buffer is empty on a terminal, so nothing is overtaken.
void Progress::show(const std::string &line) {
  const std::string renewed = std::string(kErase) + line;
  shown_ = write(descriptor_, renewed.data(), renewed.size()) > 0;
}

void Progress::erase() {
  if (shown_ && write(descriptor_, kErase.data(), kErase.size()) > 0) shown_ = false;
}

}  // namespace tarvik
