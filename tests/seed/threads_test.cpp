// Volumes read on several threads at the same time: each listing, with its messages, is the one of
// the volume read alone.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "seed/sdblk.h"
#include "seed/whole.h"
#include "support/elog_impl.h"
#include "support/epoch.h"
#include "tests/util/log_capture.h"

namespace {

using namespace tarvik;

constexpr std::size_t kVolumes = 40;
constexpr std::size_t kThreads = 8;

// Opens a volume in memory.
using Opener = SDBlkVol *(*)(const std::string &bytes);

SDBlkVol *open_strict(const std::string &bytes) {
  return sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
}
SDBlkVol *open_whole(const std::string &bytes) {
  return sdblk_open_whole_buffer(bytes.data(), static_cast<std::int64_t>(bytes.size()), 0, nullptr);
}

// The sample, and volumes in which one byte or a few are damaged, so that there are messages, too.
std::vector<std::string> make_volumes() {
  std::ifstream file(TARVIK_SOURCE_DIR "/samples/demo.seed", std::ios::binary);
  const std::string sample{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> volumes(kVolumes, sample);
  for (std::size_t i = 1; i < kVolumes; ++i) {
    for (std::size_t at = 997 * i; at < sample.size(); at += 20011) volumes[i][at] = '*';
  }
  return volumes;
}

void append_lines(void *context, const char *bytes, std::size_t size) {
  static_cast<std::string *>(context)->append(bytes, size);
}

// Reads a volume to its end or to its first fault; what is listed goes to listing, as messages do
// that a fault leaves in the log.
void read_volume(SDBlkVol *vol, std::string *listing) {
  SDBlk *block = nullptr;
  int result = 0;
  try {
    while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
      if (sdblk_unstuffblk(block) < 0) elog_complain(0, "damaged\n");
      sdblk_printblk(block, "", 1);
      sdblk_printblk_to(block, "again: ", 0, append_lines, listing);
    }
    elog_complain(0, "end: %d\n", result);
  } catch (const Fatal &) {
    elog_complain(0, "fatal\n");
  }
  sdblk_free(block);
}

std::string listing_of(const std::string &bytes, Opener open) {
  std::string listing;
  elog_set_sink(append_lines, &listing);
  const FatalHook hook;
  SDBlkVol *vol = open(bytes);
  if (vol != nullptr) read_volume(vol, &listing);
  sdblk_closevol(vol);
  elog_set_sink(nullptr, nullptr);
  return listing;
}

std::vector<std::string> listings_on_threads(const std::vector<std::string> &volumes, Opener open) {
  std::vector<std::string> listings(volumes.size());
  std::atomic<std::size_t> waiting = kThreads;
  const auto work = [&](std::size_t first) {
    // All begin together: the first volume of the process is opened by eight threads.
    --waiting;
    while (waiting > 0) std::this_thread::yield();
    for (std::size_t i = first; i < volumes.size(); i += kThreads) {
      listings[i] = listing_of(volumes[i], open);
    }
  };
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
  for (std::thread &thread : threads) thread.join();
  return listings;
}

void expect_listings_as_alone(Opener open) {
  const std::vector<std::string> volumes = make_volumes();
  const std::vector<std::string> listings = listings_on_threads(volumes, open);
  for (std::size_t i = 0; i < volumes.size(); ++i) {
    EXPECT_TRUE(listings[i] == listing_of(volumes[i], open)) << i;
    EXPECT_NE(listings[i].find("\nagain: 000001: V: B0011"), std::string::npos) << i;
  }
}

TEST(Threads, ListEachVolumeAsWhenItIsReadAlone) { expect_listings_as_alone(open_strict); }

TEST(Threads, ListEachVolumeThatIsReadWholeAsAlone) { expect_listings_as_alone(open_whole); }

TEST(ThreadsLog, EachHasItsRegister) {
  elog_clear_register(0);
  elog_log(0, "of the first\n");
  std::string others;
  std::thread([&others] {
    elog_set_sink(append_lines, &others);
    elog_complain(0, "of the second\n");
  }).join();
  EXPECT_EQ(others, "of the second\n");
  EXPECT_EQ(registered(), "of the first\n");
}

TEST(ThreadsLog, EachHasItsSink) {
  const LogCapture log;
  std::string others;
  std::thread([&others] {
    elog_set_sink(append_lines, &others);
    elog_notify(0, "of the second\n");
  }).join();
  elog_notify(0, "of the first\n");
  EXPECT_EQ(others, "of the second\n");
  EXPECT_EQ(log.text(), "of the first\n");
}

TEST(ThreadsLog, EachHasItsFatalHook) {
  const LogCapture log;
  const FatalHook hook;
  int ended = 0;
  std::thread([&ended] {
    std::string dropped;
    elog_set_sink(append_lines, &dropped);
    elog_set_die([](void *context) { throw context; }, &ended);
    try {
      elog_die(0, "second\n");
    } catch (void *context) {
      *static_cast<int *>(context) = 1;
    }
  }).join();
  EXPECT_EQ(ended, 1);
  EXPECT_THROW(elog_die(0, "first\n"), Fatal);
}

TEST(ThreadsLog, LastLinesAreWrittenWhenTheThreadEnds) {
  std::string lines;
  std::array<int, 2> ends = {};
  ASSERT_EQ(pipe(ends.data()), 0);
  const int standard_error = dup(STDERR_FILENO);
  dup2(ends[1], STDERR_FILENO);
  std::thread([] { elog_notify(0, "not flushed\n"); }).join();
  dup2(standard_error, STDERR_FILENO);
  close(standard_error);
  close(ends[1]);
  std::array<char, 64> bytes = {};
  const ssize_t size = read(ends[0], bytes.data(), bytes.size());
  close(ends[0]);
  EXPECT_EQ(std::string(bytes.data(), static_cast<std::size_t>(size)), "not flushed\n");
}

// The main thread has the static log here, so that the second needs memory for its own.
TEST(ThreadsLog, WithoutMemoryForItNoVolumeIsOpened) {
  ASSERT_TRUE(elog_prepare());
  for (long n = 1; n <= 2; ++n) {
    std::thread([n] {
      const FailingMemory memory(n);
      errno = 0;
      EXPECT_EQ(open_strict("000001V "), nullptr) << n;
      EXPECT_EQ(errno, ENOMEM);
    }).join();
  }
}

TEST(ThreadsLog, WithoutMemoryARegisteredMessageIsLost) {
  ASSERT_TRUE(elog_prepare());
  std::string lines;
  std::thread([&lines] {
    elog_set_sink(append_lines, &lines);
    {
      const FailingMemory memory(1);
      elog_log(0, "lost\n");
    }
    elog_complain(0, "end\n");
  }).join();
  EXPECT_EQ(lines, "end\n");
}

}  // namespace
