#include "views/mapping_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
// The signal is the guard's to take, not the sanitizer's to report; its library must find the function.
extern "C" __attribute__((visibility("default"))) const char *__asan_default_options();
extern "C" const char *__asan_default_options() { return "handle_sigbus=0"; }
#endif

using namespace tarvik;

namespace {

const std::size_t kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

// A mapping of a file of so many pages that hold nothing but 'x'.
class MappedFile {
 public:
  explicit MappedFile(std::size_t pages) : file_(std::tmpfile()), size_(pages * kPage) {
    const std::string bytes(size_, 'x');
    std::fwrite(bytes.data(), 1, size_, file_);
    std::fflush(file_);
    void *mapping = mmap(nullptr, size_, PROT_READ, MAP_SHARED, fileno(file_), 0);
    if (mapping == MAP_FAILED) std::abort();
    bytes_ = static_cast<const char *>(mapping);
  }
  ~MappedFile() {
    munmap(const_cast<char *>(bytes_), size_);
    std::fclose(file_);
  }
  MappedFile(const MappedFile &) = delete;
  MappedFile &operator=(const MappedFile &) = delete;

  void cut_to(std::size_t size) const {
    if (ftruncate(fileno(file_), static_cast<off_t>(size)) != 0) std::abort();
  }
  [[nodiscard]] char at(std::size_t offset) const {
    return *static_cast<const volatile char *>(bytes_ + offset);
  }
  [[nodiscard]] const char *bytes() const { return bytes_; }
  [[nodiscard]] std::int64_t size() const { return static_cast<std::int64_t>(size_); }

 private:
  std::FILE *file_;
  std::size_t size_;
  const char *bytes_;
};

TEST(MappingGuard, IsNotHitByAFileThatStays) {
  const MappedFile file(2);
  MappingGuard guard;
  guard.guard(file.bytes(), file.size());
  EXPECT_EQ(file.at(2 * kPage - 1), 'x');
  EXPECT_FALSE(guard.was_hit());
}

TEST(MappingGuard, PagesThatAreGoneReadAsZeros) {
  const MappedFile file(4);
  MappingGuard guard;
  guard.guard(file.bytes(), file.size());
  file.cut_to(kPage);
  EXPECT_EQ(file.at(2 * kPage + 7), '\0');
  EXPECT_EQ(file.at(4 * kPage - 1), '\0');
  EXPECT_TRUE(guard.was_hit());
}

TEST(MappingGuard, PagesThatAreThereStay) {
  const MappedFile file(4);
  MappingGuard guard;
  guard.guard(file.bytes(), file.size());
  file.cut_to(2 * kPage);
  EXPECT_EQ(file.at(3 * kPage), '\0');
  EXPECT_EQ(file.at(2 * kPage - 1), 'x');
}

TEST(MappingGuard, ReplacesFromTheTouchedPageToTheLastByte) {
  const MappedFile file(3);
  MappingGuard guard;
  // A size that ends within the last page.
  guard.guard(file.bytes(), file.size() - 100);
  file.cut_to(0);
  EXPECT_EQ(file.at(2 * kPage + 1), '\0');
  EXPECT_EQ(file.at(kPage), '\0');  // by a second fault
  EXPECT_TRUE(guard.was_hit());
}

TEST(MappingGuard, ForgetsTheMappingBefore) {
  const MappedFile file(2);
  const MappedFile other(2);
  MappingGuard guard;
  guard.guard(file.bytes(), file.size());
  file.cut_to(0);
  EXPECT_EQ(file.at(0), '\0');
  guard.guard(other.bytes(), other.size());
  EXPECT_FALSE(guard.was_hit());
}

TEST(MappingGuard, OnlyTheOneWhoseFileShrinksIsHit) {
  const MappedFile file(2);
  const MappedFile other(2);
  MappingGuard guard;
  MappingGuard other_guard;
  guard.guard(file.bytes(), file.size());
  other_guard.guard(other.bytes(), other.size());
  file.cut_to(0);
  EXPECT_EQ(file.at(0), '\0');
  EXPECT_EQ(other.at(0), 'x');
  EXPECT_TRUE(guard.was_hit());
  EXPECT_FALSE(other_guard.was_hit());
}

TEST(MappingGuard, ServesManyThreads) {
  std::vector<std::thread> threads;
  std::atomic<int> hits = 0;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&hits] {
      for (int round = 0; round < 50; ++round) {
        const MappedFile file(2);
        MappingGuard guard;
        guard.guard(file.bytes(), file.size());
        file.cut_to(kPage);
        if (file.at(kPage) == '\0' && file.at(0) == 'x' && guard.was_hit()) ++hits;
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(hits, 8 * 50);
}

// The guard is made in the process that dies, and nothing of it is left elsewhere.
TEST(MappingGuardDeathTest, FaultElsewhereIsLeftToTheSystem) {
  const auto fault = [] {
    const MappedFile guarded(1);
    const MappedFile file(1);
    MappingGuard guard;
    guard.guard(guarded.bytes(), guarded.size());
    file.cut_to(0);
    std::printf("%d", file.at(0));
  };
  EXPECT_EXIT(fault(), testing::KilledBySignal(SIGBUS), "");
}

TEST(MappingGuardDeathTest, FaultAfterReleaseIsLeftToTheSystem) {
  const auto fault = [] {
    const MappedFile file(1);
    MappingGuard guard;
    guard.guard(file.bytes(), file.size());
    guard.release();
    file.cut_to(0);
    std::printf("%d", file.at(0));
  };
  EXPECT_EXIT(fault(), testing::KilledBySignal(SIGBUS), "");
}

TEST(MappingGuardDeathTest, SignalOfAnotherProcessIsLeftToTheSystem) {
  const auto send = [] {
    const MappedFile file(1);
    MappingGuard guard;
    guard.guard(file.bytes(), file.size());
    kill(getpid(), SIGBUS);
  };
  EXPECT_EXIT(send(), testing::KilledBySignal(SIGBUS), "");
}

void exit_with_7(int /*signal*/) { _exit(7); }

// In a process of its own, where no guard has installed the handler yet.
TEST(MappingGuardDeathTest, FaultElsewhereGoesToTheHandlerBefore) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto fault = [] {
    std::signal(SIGBUS, exit_with_7);
    const MappedFile guarded(1);
    const MappedFile file(1);
    MappingGuard guard;
    guard.guard(guarded.bytes(), guarded.size());
    file.cut_to(0);
    std::printf("%d", file.at(0));
  };
  EXPECT_EXIT(fault(), testing::ExitedWithCode(7), "");
}

}  // namespace
