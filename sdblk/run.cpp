#include "sdblk/run.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "sdblk/file_list.h"
#include "sdblk/files.h"
#include "sdblk/known.h"
#include "sdblk/messages.h"
#include "sdblk/output.h"
#include "sdblk/progress.h"
#include "sdblk/signals.h"
#include "sdblk/spool.h"
#include "views/json.h"

namespace tarvik {

namespace {

constexpr std::int32_t kMostWorkers = 256;

// What the workers of a run share.
struct Shared {
  Shared(const Options &wanted, int list, std::size_t workers)
      : options(wanted),
        files(wanted.files, list, list_end(wanted)),
        tally(workers),
        input_taken(wanted.files_from == kStandardInput) {}

  const Options &options;
  FileList files;
  Known known;
  Output output;
  Tally tally;
  std::atomic<bool> input_taken;  // standard input is read by somebody
  std::atomic<bool> unreadable = false;
  std::atomic<bool> damaged = false;
  std::atomic<bool> stopped = false;  // there is no point in reading on
  std::atomic<bool> out_of_memory = false;
};

// Reads one file after the other.
class Worker {
 public:
  Worker(Shared *shared, std::size_t number)
      : shared_(shared),
        number_(number),
        lines_(&shared->output),
        view_(shared->options.chosen.make_view(shared->options.view)),
        flushes_(shared->output.is_terminal()) {}

  void work() {
    FolderWalk::Found found;
    while (!shared_->stopped && shared_->files.next(&found)) {
      take(found);
      shared_->tally.count_file(number_);
      if (flushes_ && !lines_.flush()) shared_->stopped = true;
    }
    if (!lines_.flush()) shared_->stopped = true;
  }

 private:
  void take(const FolderWalk::Found &found) {
    if (found.error != 0) {
      say_unreadable(found.path, error_text(found.error));
    } else if (found.path == kStandardInput) {
      read_standard_input();
    } else if (!shared_->known.holds(found.path)) {
      read(plain_source(found.path));
    }
  }

  Source plain_source(const std::string &path) {
    Source source;
    source.name = path;
    source.path = path;
    source.position = shared_->tally.position(number_);
    return source;
  }

  void read_standard_input() {
    if (shared_->input_taken.exchange(true)) {
      say_unreadable(kStandardInput, "standard input is read already");
      return;
    }
    Spool spool;
    const std::string fault = spool.fill();
    if (!fault.empty()) {
      say_unreadable(kStandardInput, fault);
      return;
    }
    Source source = plain_source(kStandardInput);
    source.path = spool.path();
    source.spooled = true;
    read(source);
  }

  void read(const Source &source) {
    switch (view_->read(source, &lines_)) {
      case Outcome::read: break;
      case Outcome::damaged: shared_->damaged = true; break;
      case Outcome::unreadable: say_unreadable(source.name, view_->error()); break;
      case Outcome::unwritten: shared_->stopped = true; break;
    }
  }

  void say_unreadable(const std::string &name, const std::string &text) {
    shared_->unreadable = true;
    if (shared_->options.view.csv) {
      complain(name + ": " + text);
      return;
    }
    lines_.put(R"({"kind":"error","file":)");
    put_json_text(&lines_, name);
    lines_.put(R"(,"text":)");
    put_json_text(&lines_, text);
    lines_.put('}');
    if (!lines_.end_line()) shared_->stopped = true;
  }

  Shared *shared_;
  std::size_t number_;
  LineBuffer lines_;
  std::unique_ptr<View> view_;
  bool flushes_;  // after each file, as somebody looks on
};

// A run that runs out of memory is over.
void work(Shared *shared, std::size_t number) {
  try {
    Worker(shared, number).work();
  } catch (const std::bad_alloc &) {
    shared->out_of_memory = true;
    shared->stopped = true;
  }
}

// Where the system has no room for all of them, fewer threads do the work.
void work_together(Shared *shared, std::size_t workers) {
  std::vector<std::thread> threads;
  try {
    while (threads.size() + 1 < workers) threads.emplace_back(work, shared, threads.size() + 1);
  } catch (const std::system_error &) {
  }
  work(shared, 0);
  for (std::thread &thread : threads) thread.join();
}

bool shows_progress(const Shared &shared) { return !shared.output.is_terminal(); }

void say_gone(Shared *shared) {
  LineBuffer lines(&shared->output);
  shared->known.for_each_gone(shared->files.folders(), [&lines](std::string_view name) {
    lines.put(R"({"kind":"gone","file":)");
    put_json_text(&lines, name);
    lines.put('}');
    lines.end_line();
  });
  lines.flush();
}

Status fail(std::string_view text) {
  complain(text);
  return kFailed;
}

void read_all(Shared *shared, std::size_t workers) {
  const Options &options = shared->options;
  if (options.view.csv) shared->output.write(options.verb->heading() + "\n");
  std::optional<Progress> progress;
  if (shows_progress(*shared)) progress.emplace(&shared->tally, list_to_count(options));
  work_together(shared, workers);
  if (!shared->stopped && shared->files.list_error() == 0) say_gone(shared);
}

Status status_of(Shared *shared) {
  if (shared->out_of_memory) return fail("out of memory");
  const int list_error = shared->files.list_error();
  if (list_error != 0) return fail(shared->options.files_from + ": " + error_text(list_error));
  if (!shared->output.finish()) return fail(shared->output.error());
  if (shared->unreadable) return kFailed;
  return shared->damaged ? kDamaged : kAllRead;
}

}  // namespace

Status run(const Options &options) {
  if (options.chosen.run) return options.chosen.run(options);
  const int list = open_list(options);
  if (list < 0 && !options.files_from.empty()) {
    return fail(options.files_from + ": " + error_text(errno));
  }
  const auto workers = static_cast<std::size_t>(std::min(options.workers, kMostWorkers));
  Shared shared(options, list, std::max(workers, std::size_t{1}));
  if (!options.chosen.known.empty()) {
    const int error = shared.known.read(options.chosen.known);
    if (error != 0) return fail(options.chosen.known + ": " + error_text(error));
  }
  if (!options.output.empty() && !shared.output.open(options.output)) {
    return fail(shared.output.error());
  }
  read_all(&shared, workers);
  return status_of(&shared);
}

Status answer(const std::string &text) {
  Output output;
  output.write(text);
  return output.finish() ? kAllRead : fail(output.error());
}

}  // namespace tarvik
