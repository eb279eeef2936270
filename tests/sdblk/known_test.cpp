#include "sdblk/known.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/util/run_command.h"

using namespace tarvik;

namespace {

using Names = std::vector<std::string>;

constexpr char kTime[] = "2009-02-13T23:31:30.123456789Z";  // 1234567890.123456789

class KnownTest : public testing::Test {
 protected:
  // A file of three bytes, last changed at kTime.
  [[nodiscard]] std::string make(const std::string &name) const {
    const std::string path = scratch_.file(name, "abc");
    const std::array<timespec, 2> times = {timespec{0, 0}, timespec{1234567890, 123456789}};
    utimensat(AT_FDCWD, path.c_str(), times.data(), 0);
    return path;
  }

  static std::string line(const std::string &name, int bytes = 3, const std::string &time = kTime) {
    return R"({"kind":"volume","file":")" + name + R"(","bytes":)" + std::to_string(bytes) +
           R"(,"modified":")" + time + R"(","content":"data","counts":{"file":"x"}})" + "\n";
  }
  static std::string gone_line(const std::string &name) {
    return R"({"kind":"gone","file":")" + name + "\"}\n";
  }

  void read(const std::string &lines) { ASSERT_EQ(known_.read(scratch_.file("list", lines)), 0); }

  Names gone(const Names &folders) {
    Names names;
    known_.for_each_gone(folders, [&names](std::string_view name) { names.emplace_back(name); });
    return names;
  }

  command::ScratchDirectory scratch_;
  Known known_;
};

TEST_F(KnownTest, HoldsAFileThatIsAsItWas) {
  const std::string path = make("a");
  read(line(path));
  EXPECT_TRUE(known_.holds(path));
}

TEST_F(KnownTest, FileOfAnotherSizeHasChanged) {
  const std::string path = make("a");
  read(line(path, 4));
  EXPECT_FALSE(known_.holds(path));
}

TEST_F(KnownTest, FileOfAnotherTimeHasChanged) {
  const std::string path = make("a");
  read(line(path, 3, "2009-02-13T23:31:30.123456788Z"));
  EXPECT_FALSE(known_.holds(path));
}

TEST_F(KnownTest, FileThatIsNotListedIsNew) {
  read(line(make("a")));
  EXPECT_FALSE(known_.holds(make("b")));
}

TEST_F(KnownTest, WithoutAListNothingIsHeld) { EXPECT_FALSE(known_.holds(make("a"))); }

TEST_F(KnownTest, EmptyListHoldsNothing) {
  read("");
  EXPECT_FALSE(known_.holds(make("a")));
}

TEST_F(KnownTest, LastLineOfAFileCounts) {
  const std::string path = make("a");
  read(line(path, 9) + line(path));
  EXPECT_TRUE(known_.holds(path));
  read(line(path, 9, "2000-01-01T00:00:00.000000000Z"));
  EXPECT_FALSE(known_.holds(path));
}

TEST_F(KnownTest, LineGoneTakesAFileOut) {
  const std::string path = make("a");
  read(line(path) + gone_line(path));
  EXPECT_FALSE(known_.holds(path));
  read(line(path));
  EXPECT_TRUE(known_.holds(path));
}

TEST_F(KnownTest, OtherLinesArePassedOver) {
  const std::string path = make("a");
  read("\nnothing\n{\"kind\":\"error\",\"file\":\"" + path + "\",\"text\":\"x\"}\n" + line(path) +
       "{\"kind\":\"epoch\",\"file\":\"" + path + "\",\"bytes\":9}\n" +
       line(path, 9).substr(0, 40));
  EXPECT_TRUE(known_.holds(path));
}

TEST_F(KnownTest, TimeThatHasNoTextIsNotHeld) {
  const std::string path = make("a");
  read(R"({"kind":"volume","file":")" + path + R"(","bytes":3,"modified":null})");
  EXPECT_FALSE(known_.holds(path));
}

TEST_F(KnownTest, NamesAreComparedAsTheLinesSayThem) {
  const std::string quoted = make("a\"b\\c\n");
  const std::string latin = make("caf\xE9");
  const std::string utf8 = make("na\xC3\xAFve");
  const std::string folder = scratch_.path() + "/";
  read(line(folder + R"(a\"b\\c\n)") + line(folder + "caf\xC3\xA9") + line(utf8));
  EXPECT_TRUE(known_.holds(quoted));
  EXPECT_TRUE(known_.holds(latin));
  EXPECT_TRUE(known_.holds(utf8));
}

TEST_F(KnownTest, ManyFilesAreHeld) {
  std::string lines;
  for (int i = 0; i < 5000; ++i) lines += line(scratch_ / std::to_string(i));
  read(lines);
  for (const int i : {0, 1, 511, 512, 2500, 4999}) {
    EXPECT_TRUE(known_.holds(make(std::to_string(i))));
  }
  EXPECT_FALSE(known_.holds(make("5000")));
}

TEST_F(KnownTest, ListThatIsNotThereIsAnError) {
  EXPECT_EQ(known_.read(scratch_ / "none"), ENOENT);
  EXPECT_EQ(known_.read(scratch_.path()), EISDIR);
}

TEST_F(KnownTest, FileThatWasNotMetAndIsNotThereIsGone) {
  const std::string path = scratch_ / "a";
  read(line(path));
  EXPECT_EQ(gone({scratch_.path()}), Names{path});
}

TEST_F(KnownTest, FilesThatAreGoneComeInTheOrderOfTheList) {
  const Names paths = {scratch_ / "b", scratch_ / "c", scratch_ / "a"};
  read(line(paths[0]) + line(paths[1]) + line(paths[2]) + line(paths[0], 9));
  EXPECT_EQ(gone({scratch_.path()}), paths);
}

TEST_F(KnownTest, OnlyFilesUnderTheFoldersAreGone) {
  read(line(scratch_ / "x/a") + line(scratch_ / "xy/a") + line(scratch_ / "x"));
  EXPECT_EQ(gone({scratch_ / "x"}), Names{scratch_ / "x/a"});
  EXPECT_EQ(gone({}), Names{});
}

TEST_F(KnownTest, FileThatWasMetIsNotGone) {
  const std::string path = make("a");
  read(line(path));
  known_.holds(path);
  std::filesystem::remove(path);
  EXPECT_EQ(gone({scratch_.path()}), Names{});
}

TEST_F(KnownTest, FileThatIsStillThereIsNotGone) {
  const std::string path = make("a");
  read(line(path, 7));
  EXPECT_EQ(gone({scratch_.path()}), Names{});
}

TEST_F(KnownTest, FileInWhosePlaceIsAFolderIsGone) {
  const std::string path = scratch_ / "a";
  std::filesystem::create_directory(path);
  read(line(path));
  EXPECT_EQ(gone({scratch_.path()}), Names{path});
}

TEST_F(KnownTest, FileThatIsListedAsGoneIsNotToldAgain) {
  const std::string path = scratch_ / "a";
  read(line(path) + gone_line(path));
  EXPECT_EQ(gone({scratch_.path()}), Names{});
}

TEST_F(KnownTest, NameOfOtherBytesIsStillThere) {
  static_cast<void>(make("caf\xE9"));
  read(line(scratch_ / "caf\xC3\xA9"));
  EXPECT_EQ(gone({scratch_.path()}), Names{});
}

}  // namespace
