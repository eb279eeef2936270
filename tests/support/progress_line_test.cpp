#include "support/progress_line.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <string>

#include "tests/support/child.h"

using namespace tarvik;

namespace {

// What a terminal of a width gets that shows a line and takes it away.
std::string shown(const std::string &line, unsigned short columns) {
  return run_child_on_terminal([&] {
           const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
           ioctl(STDERR_FILENO, TIOCSWINSZ, &size);
           ProgressLine progress(STDERR_FILENO);
           progress.show(line);
           progress.erase();
         })
      .bytes;
}

std::string line_that_went(const std::string &line) { return "\r\033[K" + line + "\r\033[K"; }

TEST(ProgressLine, IsCutBeforeTheLastColumn) {
  EXPECT_EQ(shown("123456789", 9), line_that_went("12345678"));
  EXPECT_EQ(shown("123456789", 10), line_that_went("123456789"));
}

TEST(ProgressLine, LongTextIsCutOnAWideTerminalToo) {
  const std::string text(5000, 'x');
  EXPECT_EQ(shown(text, 4000), line_that_went(text.substr(0, 79)));
}

TEST(TimeLeftText, IsRoundedUp) {
  EXPECT_STREQ(time_left_text(0).data(), "0:00");
  EXPECT_STREQ(time_left_text(59.1).data(), "1:00");
  EXPECT_STREQ(time_left_text(3661).data(), "1:01:01");
}

TEST(TimeLeftText, EndsAtABillionSeconds) {
  EXPECT_STREQ(time_left_text(1e300).data(), "277777:46:40");
}

}  // namespace
