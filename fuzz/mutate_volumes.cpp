// Reads mutated volumes, each in every way that the library offers:
//
//   mutate_volumes RUNS SEED folder-or-volume...
//
// Run n takes one of the volumes (records from somewhere in it, when it is long), changes it a few
// times and reads it, all of it decided by SEED and n.  Runs share a process until one of them
// fails: it crashes, a sanitizer or a broken promise ends it, it takes longer than kSeconds, or its
// batch leaks. The input of a failed run is written to failed-n.seed.  Ends with status 1 when any
// failed.
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/mutator.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FUZZ_FINDS_LEAKS 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define FUZZ_FINDS_LEAKS 1
#endif
#ifdef FUZZ_FINDS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr unsigned kSeconds = 20;
constexpr long kBatch = 500;
constexpr std::size_t kLongest = 65536;  // bytes of one input
constexpr std::size_t kPiece = 256;      // where a piece of a long volume may begin

bool leaks() {
#ifdef FUZZ_FINDS_LEAKS
  return __lsan_do_recoverable_leak_check() != 0;
#else
  return false;
#endif
}

class Inputs {
 public:
  Inputs(unsigned seed, const std::vector<const char *> &paths) : seed_(seed) {
    for (const char *path : paths) add(path);
    if (volumes_.empty()) throw std::runtime_error("no volumes");
  }
  [[nodiscard]] std::size_t count() const { return volumes_.size(); }

  [[nodiscard]] std::string make(long run) const {
    std::seed_seq sequence = {static_cast<unsigned>(run), seed_};
    fuzz::Random random(sequence);
    const std::string &volume = volumes_[random() % volumes_.size()];
    std::size_t start = 0;
    if (volume.size() > kLongest && random() % 4 != 0)
      start = random() % (volume.size() / kPiece) * kPiece;
    std::string bytes = volume.substr(start, kLongest);
    for (auto changes = 1 + random() % 4; changes > 0; --changes)
      fuzz::mutate_volume(&bytes, &random);
    return bytes;
  }

 private:
  void add(const std::filesystem::path &path) {
    if (!std::filesystem::is_directory(path)) return add_file(path);
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(path)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const auto &file : files) add_file(file);
  }

  void add_file(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!bytes.empty()) volumes_.push_back(std::move(bytes));
  }

  unsigned seed_;
  std::vector<std::string> volumes_;
};

// What a child tells its parent, in memory that both see.
struct Progress {
  long next_run = 0;
  unsigned long bytes = 0;
  long blocks = 0;
};

Progress *shared_progress() {
  void *memory =
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
  return new (memory) Progress;
}

// A child's share of the runs.
[[noreturn]] void run_batch(const Inputs &inputs, long end, Progress *progress) {
  fuzz::take_over();
  while (progress->next_run < end) {
    const std::string bytes = inputs.make(progress->next_run);
    alarm(kSeconds);
    progress->blocks += fuzz::exercise_volume(bytes);
    alarm(0);
    progress->bytes += bytes.size();
    ++progress->next_run;
  }
  _exit(leaks() ? 2 : 0);
}

struct Failures {
  long crashes = 0;
  long hangs = 0;
  long leaks = 0;
  [[nodiscard]] bool any() const { return crashes + hangs + leaks > 0; }
};

void keep_input(const Inputs &inputs, long run) {
  const std::string path = "failed-" + std::to_string(run) + ".seed";
  const std::string bytes = inputs.make(run);
  std::ofstream(path, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  std::fprintf(stderr, "run %ld failed: see %s\n", run, path.c_str());
}

void judge(const Inputs &inputs, int status, long end, Progress *progress, Failures *failures) {
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  if (progress->next_run == end) {
    ++failures->leaks;
    std::fprintf(stderr, "runs before %ld leak\n", end);
    return;
  }
  const bool hangs = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM;
  ++(hangs ? failures->hangs : failures->crashes);
  keep_input(inputs, progress->next_run);
  ++progress->next_run;
}

Failures run_all(const Inputs &inputs, long runs, Progress *progress) {
  Failures failures;
  while (progress->next_run < runs) {
    const long end = std::min(runs, (progress->next_run / kBatch + 1) * kBatch);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) run_batch(inputs, end, progress);
    int status = 0;
    waitpid(child, &status, 0);
    judge(inputs, status, end, progress, &failures);
  }
  return failures;
}

int report(long runs, const Inputs &inputs, const Failures &failures, const Progress &progress) {
  rusage usage = {};
  getrusage(RUSAGE_CHILDREN, &usage);
  std::fprintf(stderr,
               "%ld mutated volumes from %zu, %lu bytes, %ld blocks read: %ld crashes, %ld hangs, "
               "%ld leaks; %ld s of CPU, at most %ld KiB\n",
               runs, inputs.count(), progress.bytes, progress.blocks, failures.crashes,
               failures.hangs, failures.leaks,
               static_cast<long>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec), usage.ru_maxrss);
  return failures.any() ? 1 : 0;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 4) {
    std::fputs("usage: mutate_volumes RUNS SEED folder-or-volume...\n", stderr);
    return 1;
  }
  try {
    const long runs = std::strtol(argv[1], nullptr, 10);
    const Inputs inputs(static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)),
                        {argv + 3, argv + argc});
    Progress *progress = shared_progress();
    return report(runs, inputs, run_all(inputs, runs, progress), *progress);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "mutate_volumes: %s\n", error.what());
    return 1;
  }
}
