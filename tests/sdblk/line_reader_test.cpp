#include "sdblk/line_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "tests/util/run_command.h"

using namespace tarvik;

namespace {

using Lines = std::vector<std::string>;

Lines lines_of(std::string_view bytes, char end) {
  const command::ScratchDirectory scratch;
  const int descriptor = open(scratch.file("list", bytes).c_str(), O_RDONLY | O_CLOEXEC);
  LineReader reader(descriptor, end);
  Lines lines;
  for (std::string_view line; reader.next(&line);) lines.emplace_back(line);
  EXPECT_EQ(reader.error(), 0);
  close(descriptor);
  return lines;
}

TEST(LineReader, LinesEndInTheirEnd) {
  EXPECT_EQ(lines_of("a\nbc\n", '\n'), (Lines{"a", "bc"}));
  EXPECT_EQ(lines_of(std::string_view("a\nb\0c\0", 6), '\0'), (Lines{"a\nb", "c"}));
}

TEST(LineReader, LastLineMayLackItsEnd) { EXPECT_EQ(lines_of("a\nbc", '\n'), (Lines{"a", "bc"})); }

TEST(LineReader, EmptyLinesAreLines) { EXPECT_EQ(lines_of("\na\n\n", '\n'), (Lines{"", "a", ""})); }

TEST(LineReader, EmptyFileHasNoLine) { EXPECT_EQ(lines_of("", '\n'), Lines{}); }

TEST(LineReader, LinesMayBeLongerThanWhatIsReadAtOnce) {
  const std::string a(70000, 'a');
  const std::string b(700000, 'b');
  EXPECT_EQ(lines_of(a + "\nx\n" + b + "\n" + a, '\n'), (Lines{a, "x", b, a}));
}

TEST(LineReader, ManyLinesAreAllThere) {
  std::string bytes;
  Lines want;
  for (int i = 0; i < 50000; ++i) {
    want.push_back("line " + std::to_string(i));
    bytes += want.back() + "\n";
  }
  EXPECT_EQ(lines_of(bytes, '\n'), want);
}

TEST(LineReader, FolderCannotBeRead) {
  const int descriptor = open(".", O_RDONLY | O_CLOEXEC);
  LineReader reader(descriptor, '\n');
  std::string_view line;
  EXPECT_FALSE(reader.next(&line));
  EXPECT_EQ(reader.error(), EISDIR);
  close(descriptor);
}

}  // namespace
