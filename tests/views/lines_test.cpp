#include "views/lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tarvik;

namespace {

// Keeps each write apart.
class Writes : public LineSink {
 public:
  bool write(std::string_view lines) override {
    writes.emplace_back(lines);
    return good;
  }
  std::vector<std::string> writes;
  bool good = true;
};

TEST(TextBuffer, KeepsWhatWasPutWhenItGrows) {
  TextBuffer buffer;
  std::string expected;
  for (int i = 0; i < 100000; ++i) {
    buffer.put("abc");
    buffer.put(',');
    expected += "abc,";
  }
  EXPECT_EQ(buffer.text(), expected);
  EXPECT_EQ(buffer.size(), expected.size());
}

TEST(TextBuffer, TakesATextLargerThanItself) {
  TextBuffer buffer;
  const std::string large(3000000, 'x');
  buffer.put("a");
  buffer.put(large);
  EXPECT_EQ(buffer.text(), "a" + large);
}

TEST(TextBuffer, PutOfATextWithoutBytesIsNothing) {
  TextBuffer buffer;
  buffer.put(std::string_view());
  EXPECT_EQ(buffer.text(), "");
  const TextBuffer nothing;
  buffer.put("a");
  buffer.put(nothing.text());
  EXPECT_EQ(buffer.text(), "a");
}

TEST(TextBuffer, CommitSaysHowMuchOfTheRoomWasUsed) {
  TextBuffer buffer;
  char *out = buffer.reserve(100);
  out[0] = 'a';
  out[1] = 'b';
  buffer.commit(out + 2);
  EXPECT_EQ(buffer.text(), "ab");
}

TEST(TextBuffer, UnputTakesTheLastBytesBack) {
  TextBuffer buffer;
  buffer.put("1,2,");
  buffer.unput(1);
  buffer.put(']');
  EXPECT_EQ(buffer.text(), "1,2]");
}

TEST(TextBuffer, IsEmptyAfterClear) {
  TextBuffer buffer;
  buffer.put("abc");
  buffer.clear();
  EXPECT_EQ(buffer.text(), "");
  buffer.put("d");
  EXPECT_EQ(buffer.text(), "d");
}

TEST(LineBuffer, HandsLinesOnWhenFlushed) {
  Writes sink;
  LineBuffer lines(&sink);
  lines.put("one");
  EXPECT_TRUE(lines.end_line());
  lines.put("two");
  EXPECT_TRUE(lines.end_line());
  EXPECT_TRUE(sink.writes.empty());
  EXPECT_TRUE(lines.flush());
  EXPECT_EQ(sink.writes, std::vector<std::string>{"one\ntwo\n"});
}

TEST(LineBuffer, FlushOfNoLinesWritesNothing) {
  Writes sink;
  LineBuffer lines(&sink);
  EXPECT_TRUE(lines.flush());
  EXPECT_TRUE(sink.writes.empty());
}

TEST(LineBuffer, FlushKeepsALineThatIsNotEnded) {
  Writes sink;
  LineBuffer lines(&sink);
  lines.put("one");
  lines.end_line();
  lines.put("tw");
  lines.flush();
  lines.put("o");
  lines.end_line();
  lines.flush();
  EXPECT_EQ(sink.writes, (std::vector<std::string>{"one\n", "two\n"}));
}

TEST(LineBuffer, LineThatIsDroppedIsNotWritten) {
  Writes sink;
  LineBuffer lines(&sink);
  lines.put("one");
  lines.end_line();
  lines.put("wrong");
  lines.drop_line();
  lines.put("two");
  lines.end_line();
  lines.flush();
  EXPECT_EQ(sink.writes, std::vector<std::string>{"one\ntwo\n"});
}

TEST(LineBuffer, ManyLinesAreHandedOnInWholeOnes) {
  Writes sink;
  LineBuffer lines(&sink);
  std::string expected;
  for (int i = 0; i < 50000; ++i) {
    const std::string line = "line " + std::to_string(i);
    lines.put(line);
    lines.end_line();
    expected += line + '\n';
  }
  lines.flush();
  EXPECT_GT(sink.writes.size(), 2U);
  std::string all;
  for (const std::string &write : sink.writes) {
    EXPECT_EQ(write.back(), '\n');
    all += write;
  }
  EXPECT_EQ(all, expected);
}

TEST(LineBuffer, LongLineIsWrittenWhole) {
  Writes sink;
  LineBuffer lines(&sink);
  const std::string line(1000000, 'x');
  lines.put(line);
  EXPECT_TRUE(lines.end_line());
  EXPECT_EQ(sink.writes, std::vector<std::string>{line + '\n'});
}

TEST(LineBuffer, FailureStays) {
  Writes sink;
  LineBuffer lines(&sink);
  sink.good = false;
  lines.put("one");
  EXPECT_TRUE(lines.end_line());
  EXPECT_FALSE(lines.flush());
  sink.good = true;
  lines.put("two");
  EXPECT_FALSE(lines.end_line());
  EXPECT_FALSE(lines.flush());
  EXPECT_EQ(sink.writes.size(), 1U);
}

}  // namespace
