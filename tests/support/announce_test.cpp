#include "support/announce.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/elog.h"
#include "tests/util/log_capture.h"
#include "tests/util/run_command.h"

namespace {

constexpr char kRelease[] = "Orvalen Release 5.11 Mac OS X 10.15.6 2022-02-22";

std::string executable() { return std::filesystem::read_symlink("/proc/self/exe"); }

// Sets a variable of the environment, or takes it away, as long as it lives.
class Variable {
 public:
  Variable(const char *name, const char *value) : name_(name) {
    const char *before = std::getenv(name);
    had_value_ = before != nullptr;
    if (had_value_) before_ = before;
    set(value);
  }
  ~Variable() { set(had_value_ ? before_.c_str() : nullptr); }
  Variable(const Variable &) = delete;
  Variable &operator=(const Variable &) = delete;

 private:
  void set(const char *value) const {
    if (value == nullptr) {
      unsetenv(name_);
    } else {
      setenv(name_, value, 1);
    }
  }

  const char *name_;
  bool had_value_;
  std::string before_;
};

// A program called tool with two arguments, recorded as long as a test runs.
class Announced : public testing::Test {
 protected:
  Announced() { record({"/opt/bin/tool", "-v", "a b"}); }
  ~Announced() override { elog_init(0, nullptr); }

  void record(std::vector<std::string> arguments) {
    arguments_ = std::move(arguments);
    argv_.clear();
    for (std::string &argument : arguments_) argv_.push_back(argument.data());
    argv_.push_back(nullptr);
    elog_init(static_cast<int>(arguments_.size()), argv_.data());
  }

  static std::string announced(const char *name, const char *extra) {
    const LogCapture capture;
    announce(name, extra);
    return capture.text();
  }
  static std::string banner_text(const char *name, const char *extra) {
    const LogCapture capture;
    banner(name, extra);
    return capture.text();
  }
  static std::string build_id() { return command::build_id_in(announced("x", nullptr), "x"); }

  // The announcement after its name and extra text.
  static std::string rest_of_announcement(std::string_view command_line) {
    return std::string("   ") + kRelease + "  <#>\n   " + build_id() + "  <#>\n" +
           command::time_line(executable()) + std::string(command_line) + "\n";
  }

  std::vector<std::string> arguments_;
  std::vector<char *> argv_;
  Variable root_{"ORVALEN", nullptr};
};

// ---- announce

using Announce = Announced;

TEST_F(Announce, BuildIdentifierHas40HexadecimalDigits) { EXPECT_EQ(build_id().size(), 40U); }

TEST_F(Announce, NameAndExtraComeFirst) {
  EXPECT_EQ(announced("shown", "more"),
            "\nshown more" + rest_of_announcement("/opt/bin/tool -v 'a b'"));
}

TEST_F(Announce, NoExtraLeavesItsPlaceEmpty) {
  const std::string expected = "\nshown " + rest_of_announcement("/opt/bin/tool -v 'a b'");
  EXPECT_EQ(announced("shown", nullptr), expected);
  EXPECT_EQ(announced("shown", ""), expected);
}

TEST_F(Announce, NullNameIsTheRecordedOne) {
  EXPECT_EQ(announced(nullptr, nullptr),
            "\ntool " + rest_of_announcement("/opt/bin/tool -v 'a b'"));
}

TEST_F(Announce, NullNameWithoutARecordIsTheExecutable) {
  elog_init(0, nullptr);
  EXPECT_EQ(announced(nullptr, nullptr), "\n" + executable() + " " + rest_of_announcement(""));
}

TEST_F(Announce, EmptyNameStaysEmpty) {
  EXPECT_EQ(announced("", nullptr), "\n " + rest_of_announcement("/opt/bin/tool -v 'a b'"));
}

TEST_F(Announce, LongExtraIsNotCut) {
  const std::string extra(5000, 'e');
  EXPECT_EQ(announced("shown", extra.c_str()),
            "\nshown " + extra + rest_of_announcement("/opt/bin/tool -v 'a b'"));
}

// ---- announce_str

class AnnounceStr : public Announced {
 protected:
  static std::string head(std::string_view name_and_extra) {
    return "\n" + std::string(name_and_extra) + "   " + kRelease + "  <#>\n   " + build_id() +
           "  <#>\n";
  }

  command::ScratchDirectory directory_;
  Variable path_{"PATH", directory_.path().c_str()};
};

TEST_F(AnnounceStr, TimeIsThatOfTheProgramOnThePath) {
  const std::string path = directory_.file("found", "x");
  const timespec early[2] = {{1000000000, 0}, {1000000000, 0}};  // not that of the executable
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), early, 0), 0);
  // Three blanks before the time, where the announcement that is logged has four.
  EXPECT_EQ(announce_str("found", "more"),
            head("found more") + command::time_line(path).substr(1) + "/opt/bin/tool -v 'a b'");
}

TEST_F(AnnounceStr, ProgramThatIsNotFoundHasNoTime) {
  EXPECT_EQ(announce_str("absent", nullptr), head("absent ") + "/opt/bin/tool -v 'a b'");
}

TEST_F(AnnounceStr, NullNameIsTheRecordedOne) {
  const std::string path = directory_.file("tool", "x");
  EXPECT_EQ(announce_str(nullptr, ""),
            head("tool ") + command::time_line(path).substr(1) + "/opt/bin/tool -v 'a b'");
}

TEST_F(AnnounceStr, NullNameWithoutARecordIsTheExecutable) {
  elog_init(0, nullptr);
  EXPECT_EQ(announce_str(nullptr, nullptr), head(executable() + " "));
}

TEST_F(AnnounceStr, EachCallUsesTheSameBuffer) {
  const char *first = announce_str("one", nullptr);
  const char *second = announce_str("two", nullptr);
  EXPECT_EQ(first, second);
  EXPECT_TRUE(std::string_view(first).starts_with("\ntwo "));
}

TEST_F(AnnounceStr, NothingIsLogged) {
  const LogCapture capture;
  announce_str("name", nullptr);
  EXPECT_EQ(capture.text(), "");
}

TEST_F(AnnounceStr, TextOf1023CharactersFits) {
  const std::size_t others = std::strlen(announce_str("name", ""));
  const std::string extra(1023 - others, 'e');
  EXPECT_EQ(std::strlen(announce_str("name", extra.c_str())), 1023U);
}

TEST_F(AnnounceStr, LongerTextEndsTheProgram) {
  const std::size_t others = std::strlen(announce_str("name", ""));
  const std::string extra(1024 - others, 'e');
  const LogCapture capture;
  const FatalHook hook;
  EXPECT_THROW(announce_str("name", extra.c_str()), Fatal);
  EXPECT_EQ(capture.text(), "announce_str: text of 1025 bytes does not fit the 1024 byte buffer\n");
}

// ---- banner

using Banner = Announced;

TEST_F(Banner, NameAndNoExtra) {
  EXPECT_EQ(banner_text("tarvik", nullptr),
            command::version_banner("tarvik", "", executable(), build_id(), ""));
}

TEST_F(Banner, EmptyExtraIsNone) {
  EXPECT_EQ(banner_text("tarvik", ""),
            command::version_banner("tarvik", "", executable(), build_id(), ""));
}

TEST_F(Banner, ExtraStandsAfterTheName) {
  EXPECT_EQ(banner_text("tarvik", "with more"),
            command::version_banner("tarvik", "with more", executable(), build_id(), ""));
}

TEST_F(Banner, ExtraIsCutAt511Characters) {
  const std::string longest(511, 'e');
  const std::string expected =
      command::version_banner("tarvik", longest, executable(), build_id(), "");
  EXPECT_EQ(banner_text("tarvik", longest.c_str()), expected);
  EXPECT_EQ(banner_text("tarvik", (longest + "f").c_str()), expected);
}

TEST_F(Banner, MissingNameIsTheRecordedOne) {
  const std::string expected = command::version_banner("tool", "", executable(), build_id(), "");
  EXPECT_EQ(banner_text(nullptr, nullptr), expected);
  EXPECT_EQ(banner_text("", nullptr), expected);
}

TEST_F(Banner, MissingNameWithoutARecordIsTheExecutable) {
  elog_init(0, nullptr);
  EXPECT_EQ(banner_text(nullptr, nullptr),
            command::version_banner(executable(), "", executable(), build_id(), ""));
}

TEST_F(Banner, SinkGetsWholeLines) {
  std::vector<std::string> pieces;
  elog_set_sink(
      [](void *context, const char *bytes, std::size_t size) {
        static_cast<std::vector<std::string> *>(context)->emplace_back(bytes, size);
      },
      &pieces);
  banner("tarvik", nullptr);
  elog_set_sink(nullptr, nullptr);
  ASSERT_FALSE(pieces.empty());
  for (const std::string &piece : pieces) EXPECT_TRUE(piece.ends_with('\n')) << piece;
}

TEST_F(Banner, PatchesAreCounted) {
  const command::ScratchDirectory root;
  const Variable variable("ORVALEN", root.path().c_str());
  const auto expected = [](std::string_view patches) {
    return command::version_banner("tarvik", "", executable(), build_id(), patches);
  };
  EXPECT_EQ(banner_text("tarvik", nullptr), expected(""));
  std::filesystem::create_directory(root / "patched");
  EXPECT_EQ(banner_text("tarvik", nullptr), expected(", 0 patches"));
  for (const char *name : {"patched/1", "patched/2", "patched/3"}) {
    static_cast<void>(root.file(name, "x"));
  }
  EXPECT_EQ(banner_text("tarvik", nullptr), expected(", 3 patches"));
}

// ---- patch_count

TEST(PatchCount, UnsetRootGivesNone) {
  const Variable variable("ORVALEN", nullptr);
  EXPECT_EQ(patch_count(), -1);
}

TEST(PatchCount, NoDirectoryGivesNone) {
  const command::ScratchDirectory root;
  const Variable variable("ORVALEN", root.path().c_str());
  EXPECT_EQ(patch_count(), -1);
  static_cast<void>(root.file("patched", "a file"));
  EXPECT_EQ(patch_count(), -1);
}

TEST(PatchCount, EveryEntryCounts) {
  const command::ScratchDirectory root;
  const Variable variable("ORVALEN", root.path().c_str());
  std::filesystem::create_directories(root / "patched/a directory/with another");
  EXPECT_EQ(patch_count(), 1);
  for (const char *name : {"patched/file", "patched/.hidden", "patched/..."}) {
    static_cast<void>(root.file(name, ""));
  }
  EXPECT_EQ(patch_count(), 4);
}

TEST(PatchCount, RootOf1015CharactersFits) {
  const std::string root(1015, 'x');
  const Variable variable("ORVALEN", root.c_str());
  EXPECT_EQ(patch_count(), -1);
}

TEST(PatchCount, LongerRootEndsTheProgram) {
  const std::string root(1016, 'x');
  const Variable variable("ORVALEN", root.c_str());
  EXPECT_EXIT(patch_count(), testing::ExitedWithCode(1),
              "^patch_count: text of 1025 bytes does not fit the 1024 byte buffer\n$");
}

}  // namespace
