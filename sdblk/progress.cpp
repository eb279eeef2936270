#include "sdblk/progress.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <utility>

#include "support/progress_line.h"

namespace tarvik {

namespace {

constexpr std::chrono::seconds kDelay{2};
constexpr std::chrono::milliseconds kShowEvery{250};

std::mutex line_mutex;

ProgressLine &line() {
  static ProgressLine on_standard_error(STDERR_FILENO);
  return on_standard_error;
}

// In the unit of the larger of two amounts.
struct Unit {
  double bytes;
  const char *name;
};
Unit unit_for(std::int64_t bytes) { return bytes < 1000000000 ? Unit{1e6, "MB"} : Unit{1e9, "GB"}; }

}  // namespace

std::string progress_text(const Amount &done, const Amount *all, double seconds) {
  std::array<char, 200> text = {};
  const Unit unit = unit_for(all != nullptr ? all->bytes : done.bytes);
  const double read = static_cast<double>(done.bytes);
  const long long files = done.files;
  if (all == nullptr) {
    std::snprintf(text.data(), text.size(), "sdblk: %lld files, %.1f %s", files, read / unit.bytes,
                  unit.name);
    return text.data();
  }
  const double whole = static_cast<double>(all->bytes);
  const int size = std::snprintf(
      text.data(), text.size(), "sdblk: %lld of %lld files, %.1f of %.1f %s", files,
      static_cast<long long>(all->files), read / unit.bytes, whole / unit.bytes, unit.name);
  std::string line(text.data(), static_cast<std::size_t>(size));
  if (done.bytes == 0) return line;
  const double left = seconds * std::max(whole - read, 0.0) / read;
  return line + ", " + time_left_text(left).data() + " left";
}

void Tally::count_file(std::size_t worker) {
  bytes_ += positions_[worker].bytes.exchange(0, std::memory_order_relaxed);
  ++files_;
}

Amount Tally::done() const {
  Amount done = {files_, bytes_};
  for (const Position &position : positions_) {
    done.bytes += position.bytes.load(std::memory_order_relaxed);
  }
  return done;
}

Progress::Progress(const Tally *tally, List list) : tally_(tally), list_(std::move(list)) {
  if (line().is_on_terminal()) thread_ = std::thread(&Progress::show_until_end, this);
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  ended_changed_.notify_one();
  thread_.join();
  const ProgressHidden gone;
}

void Progress::show_until_end() {
  if (!wait_until(start_ + kDelay)) return;
  const std::unique_ptr<FileList> list = list_ ? list_() : nullptr;
  Clock::time_point next;
  do {
    next = Clock::now() + kShowEvery;
    if (list != nullptr && !counted_) count_until(next, list.get());
    show();
  } while (wait_until(next));
}

// Counts what there is to be done, as far as it comes.
void Progress::count_until(Clock::time_point time, FileList *list) {
  FolderWalk::Found found;
  while (Clock::now() < time && !ended_) {
    if (!list->next(&found)) {
      counted_ = true;
      return;
    }
    struct stat status = {};
    ++all_.files;
    if (stat(found.path.c_str(), &status) == 0) all_.bytes += status.st_size;
  }
}

// False at the end of the run.
bool Progress::wait_until(Clock::time_point time) {
  std::unique_lock lock(mutex_);
  return !ended_changed_.wait_until(lock, time, [this] { return ended_.load(); });
}

void Progress::show() {
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  const std::string text = progress_text(tally_->done(), counted_ ? &all_ : nullptr, seconds);
  const std::lock_guard lock(line_mutex);
  line().show(text);
}

ProgressHidden::ProgressHidden() : lock_(line_mutex) { line().erase(); }

void erase_progress() { line().erase(); }

}  // namespace tarvik
