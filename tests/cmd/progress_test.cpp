#include "cmd/progress.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

#include "support/elog.h"
#include "support/output.h"
#include "tests/support/child.h"

using namespace tarvik;

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::int64_t kMiB = 1048576;
constexpr char kErase[] = "\r\033[K";
// What is written for 1 of 4 MiB, whatever the time that it took.  The terminal makes "\r\n" of a
// line end.
constexpr char kQuarter[] = "\r\033\\[Ktarvik:  25\\.0 %  [0-9]+\\.[0-9] MB/s  [0-9:]+ left";

std::size_t count(const std::string &text, const std::string &part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

// What a terminal gets while the function has a progress of 4 MiB that does not wait.
template <typename Function>
std::string shown_by(Function function) {
  return run_child_on_terminal([function] {
           Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0));
           function(&progress);
         })
      .bytes;
}

std::string progress_text(std::int64_t offset, std::int64_t size, double seconds) {
  return std::string(ProgressText(offset, size, seconds).view());
}

// What progress_descriptor answers in a child whose streams run gives it.
template <typename Run>
int descriptor_in(Run run, const Options &options) {
  return run([&options] { _exit(10 + progress_descriptor(options)); }).status - 10;
}

int descriptor_on_terminal(const Options &options) {
  return descriptor_in([](auto function) { return run_child_on_terminal(function); }, options);
}

int descriptor_in_pipe(const Options &options) {
  return descriptor_in([](auto function) { return run_child(function); }, options);
}

TEST(ProgressText, HasShareRateAndTimeLeft) {
  EXPECT_EQ(progress_text(50000000, 200000000, 2.0), "tarvik:  25.0 %  25.0 MB/s  0:06 left");
}

TEST(ProgressText, RoundsTimeLeftUp) {
  EXPECT_EQ(progress_text(200000000, 300000000, 4.5), "tarvik:  66.7 %  44.4 MB/s  0:03 left");
}

TEST(ProgressText, ShowsHours) {
  EXPECT_EQ(progress_text(1000000000, 5000000000, 1000.0),
            "tarvik:  20.0 %  1.0 MB/s  1:06:40 left");
}

TEST(ProgressText, ShowsMinutesFromAMinuteOn) {
  EXPECT_EQ(progress_text(1000000, 60000000, 1.0), "tarvik:   1.7 %  1.0 MB/s  0:59 left");
  EXPECT_EQ(progress_text(1000000, 61000000, 1.0), "tarvik:   1.6 %  1.0 MB/s  1:00 left");
}

TEST(ProgressText, ShowsHoursFromAnHourOn) {
  EXPECT_EQ(progress_text(1000000, 3600000000, 1.0), "tarvik:   0.0 %  1.0 MB/s  59:59 left");
  EXPECT_EQ(progress_text(1000000, 3601000000, 1.0), "tarvik:   0.0 %  1.0 MB/s  1:00:00 left");
}

TEST(ProgressText, LongestFitsItsRoom) {
  // As long as it can be: a rate of seven digits and a time left that is cut at 1e9 seconds.
  EXPECT_EQ(progress_text(1, 4000000000000000000, 1.0),
            "tarvik:   0.0 %  0.0 MB/s  277777:46:40 left");
  EXPECT_EQ(progress_text(4000000000000000000, 4000000000000000000, 0.0),
            "tarvik: 100.0 %  4000000000000000000.0 MB/s  0:00 left");
}

TEST(ProgressText, ShowsNothingLeftAtTheEnd) {
  EXPECT_EQ(progress_text(30000000, 30000000, 3.0), "tarvik: 100.0 %  10.0 MB/s  0:00 left");
}

TEST(Progress, WaitsTwoSecondsUnlessToldOtherwise) {
  EXPECT_EQ(Progress::kDelay, std::chrono::seconds(2));
}

TEST(Progress, IsShownAndGoneAtTheEnd) {
  const std::string bytes = shown_by([](Progress *progress) { progress->at(kMiB); });
  EXPECT_TRUE(std::regex_match(bytes, std::regex(std::string(kQuarter) + "\r\033\\[K"))) << bytes;
}

TEST(Progress, IsNotShownBeforeTheDelay) {
  const ChildResult child = run_child_on_terminal([] {
    Progress progress(STDERR_FILENO, 4 * kMiB, hours(1));
    progress.at(kMiB);
    progress.at(3 * kMiB);
  });
  EXPECT_EQ(child.status, 0);
  EXPECT_EQ(child.bytes, "");
}

TEST(Progress, LeavesTheClockAloneForAFewBytes) {
  EXPECT_EQ(shown_by([](Progress *progress) { progress->at(1000); }), "");
}

TEST(Progress, IsNeverShownInAPipe) {
  const ChildResult child = run_child([] {
    Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0));
    progress.at(kMiB);
  });
  EXPECT_EQ(child.status, 0);
  EXPECT_EQ(child.bytes, "");
}

TEST(Progress, IsNeverShownWithoutDescriptor) {
  const ChildResult child = run_child_on_terminal([] {
    Progress progress(-1, 4 * kMiB, milliseconds(0));
    progress.at(kMiB);
  });
  EXPECT_EQ(child.bytes, "");
}

TEST(Progress, IsRenewedAFewTimesASecond) {
  const std::string bytes = shown_by([](Progress *progress) {
    const auto end = steady_clock::now() + milliseconds(400);
    for (std::int64_t offset = kMiB; steady_clock::now() < end; offset += kMiB / 1024) {
      progress->at(offset);
      usleep(100);
    }
  });
  // At once and a quarter of a second later; a machine that stood still may have had time for more.
  EXPECT_GE(count(bytes, "left"), 2U) << bytes;
  EXPECT_LE(count(bytes, "left"), 4U) << bytes;
}

TEST(Progress, IsCutWhereTheTerminalIsNarrow) {
  const std::string bytes = shown_by([](Progress *progress) {
    const winsize narrow = {.ws_row = 24, .ws_col = 20, .ws_xpixel = 0, .ws_ypixel = 0};
    ioctl(STDERR_FILENO, TIOCSWINSZ, &narrow);
    progress->at(kMiB);
  });
  // 19 columns: one that is filled to its last may run on.
  EXPECT_TRUE(
      std::regex_match(bytes, std::regex("\r\033\\[Ktarvik:  25\\.0 %  [0-9][0-9.]\r\033\\[K")))
      << bytes;
}

TEST(Progress, OnADumbTerminalBlanksTakeItAway) {
  setenv("TERM", "dumb", 1);
  const std::string bytes = shown_by([](Progress *progress) { progress->at(kMiB); });
  unsetenv("TERM");
  std::smatch parts;
  ASSERT_TRUE(std::regex_match(
      bytes, parts, std::regex("\r\r(tarvik:  25\\.0 %  [0-9.]+ MB/s  [0-9:]+ left)\r( +)\r")))
      << bytes;
  EXPECT_EQ(parts[1].length(), parts[2].length());
}

TEST(Progress, GoesWhenTheRunIsEndedFromTheKeyboard) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const ChildResult child = run_child_on_terminal([signal] {
      Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0));
      progress.at(kMiB);
      std::raise(signal);
    });
    EXPECT_EQ(child.status, 1000 + signal);
    EXPECT_TRUE(child.bytes.ends_with(std::string(" left") + kErase)) << child.bytes;
  }
}

TEST(Progress, LeavesASignalThatIsIgnoredAlone) {
  const ChildResult child = run_child_on_terminal([] {
    std::signal(SIGINT, SIG_IGN);
    Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0));
    std::raise(SIGINT);
  });
  EXPECT_EQ(child.status, 0);
}

TEST(Progress, GivesTheSignalsBackAtItsEnd) {
  const ChildResult child = run_child_on_terminal([] {
    { const Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0)); }
    std::raise(SIGINT);
  });
  EXPECT_EQ(child.status, 1000 + SIGINT);
  EXPECT_EQ(child.bytes, "");
}

TEST(Progress, GoesBeforeAMessage) {
  const std::string bytes = shown_by([](Progress *progress) {
    progress->at(kMiB);
    elog_complain(0, "trouble\n");
  });
  EXPECT_TRUE(std::regex_match(bytes, std::regex(std::string(kQuarter) + "\r\033\\[Ktrouble\r\n")))
      << bytes;
}

TEST(Progress, GoesBeforeOutput) {
  const std::string bytes = shown_by([](Progress *progress) {
    progress->at(kMiB);
    output_print("# Us = 0\n");
  });
  EXPECT_TRUE(std::regex_match(bytes, std::regex(std::string(kQuarter) + "\r\033\\[K# Us = 0\r\n")))
      << bytes;
}

TEST(Progress, GoesBeforeTheProgramDies) {
  const ChildResult child = run_child_on_terminal([] {
    Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0));
    progress.at(kMiB);
    elog_die(0, "fatal\n");
  });
  EXPECT_EQ(child.status, 1);
  EXPECT_EQ(child.bytes.substr(child.bytes.rfind(kErase)), "\r\033[Kfatal\r\n");
}

TEST(Progress, IsForgottenAtItsEnd) {
  const ChildResult child = run_child_on_terminal([] {
    {
      Progress progress(STDERR_FILENO, 4 * kMiB, milliseconds(0));
      progress.at(kMiB);
    }
    elog_notify(0, "later\n");
  });
  EXPECT_EQ(child.bytes.substr(child.bytes.rfind(kErase)), "\r\033[Klater\r\n");
  EXPECT_EQ(count(child.bytes, kErase), 2U);
}

TEST(ProgressDescriptor, IsStandardErrorForCounts) {
  EXPECT_EQ(descriptor_on_terminal({}), STDERR_FILENO);
}

TEST(ProgressDescriptor, IsNoneForEitherListing) {
  EXPECT_EQ(descriptor_on_terminal({.verbosity = 1}), -1);
  EXPECT_EQ(descriptor_on_terminal({.verbosity = 2}), -1);
}

TEST(ProgressDescriptor, IsNoneForASummaryOnTheTerminal) {
  EXPECT_EQ(descriptor_on_terminal({.station_summary = true}), -1);
}

TEST(ProgressDescriptor, IsStandardErrorForASummaryElsewhere) {
  EXPECT_EQ(descriptor_in_pipe({.station_summary = true}), STDERR_FILENO);
}

TEST(ProgressDescriptor, IsNoneForASummaryInDetail) {
  EXPECT_EQ(descriptor_in_pipe({.verbosity = 1, .station_summary = true}), -1);
}

}  // namespace
