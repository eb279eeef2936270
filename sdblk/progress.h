// How far a run over many files has come, on the terminal.
#ifndef SDBLK_PROGRESS_H_
#define SDBLK_PROGRESS_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sdblk/file_list.h"

namespace tarvik {

struct Amount {
  std::int64_t files = 0;
  std::int64_t bytes = 0;
};

// The line for what is done after a time, of what is to be done: nothing of the latter where that
// is not known.
std::string progress_text(const Amount &done, const Amount *all, double seconds);

// What the workers have done.
class Tally {
 public:
  explicit Tally(std::size_t workers) : positions_(workers) {}

  // Where a worker tells how far it has come in its file, bytes.
  std::atomic<std::int64_t> *position(std::size_t worker) { return &positions_[worker].bytes; }
  // A worker is done with its file.
  void count_file(std::size_t worker);
  [[nodiscard]] Amount done() const;

 private:
  struct alignas(64) Position {
    std::atomic<std::int64_t> bytes = 0;
  };

  std::vector<Position> positions_;
  std::atomic<std::int64_t> files_ = 0;
  std::atomic<std::int64_t> bytes_ = 0;
};

// Shows the line on the terminal of standard error from two seconds on, a few times a second, and
// takes it away at the end.  There is one at a time.
class Progress {
 public:
  // A list of the run's files to be counted beside the run; nullptr where there is none.
  using List = std::function<std::unique_ptr<FileList>()>;

  Progress(const Tally *tally, List list);
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  void show_until_end();
  void count_until(Clock::time_point time, FileList *list);
  bool wait_until(Clock::time_point time);
  void show();

  const Tally *tally_;
  List list_;
  Clock::time_point start_ = Clock::now();
  Amount all_;
  bool counted_ = false;  // all_ is all
  std::mutex mutex_;
  std::condition_variable ended_changed_;
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

// Takes the line away, and keeps it away while one lives.
class ProgressHidden {
 public:
  ProgressHidden();

 private:
  std::unique_lock<std::mutex> lock_;
};

// For the handler of a signal that ends the run.
void erase_progress();

}  // namespace tarvik

#endif  // SDBLK_PROGRESS_H_
