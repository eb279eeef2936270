#include "sdblk/output.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/util/run_command.h"

using namespace tarvik;

namespace {

namespace fs = std::filesystem;

std::string contents(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class OutputTest : public testing::Test {
 protected:
  // How many files there are.
  [[nodiscard]] std::ptrdiff_t files() const {
    return std::distance(fs::directory_iterator(scratch_.path()), fs::directory_iterator());
  }

  command::ScratchDirectory scratch_;
};

TEST_F(OutputTest, FileIsThereWhenItIsFinished) {
  const std::string path = scratch_ / "out";
  Output output;
  ASSERT_TRUE(output.open(path));
  EXPECT_TRUE(output.write("a\n"));
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(files(), 1);
  EXPECT_TRUE(output.finish());
  EXPECT_EQ(contents(path), "a\n");
  EXPECT_EQ(files(), 1);
}

TEST_F(OutputTest, FileThatWasThereStaysUntilThen) {
  const std::string path = scratch_.file("out", "before");
  Output output;
  ASSERT_TRUE(output.open(path));
  output.write("after");
  EXPECT_EQ(contents(path), "before");
  EXPECT_TRUE(output.finish());
  EXPECT_EQ(contents(path), "after");
}

TEST_F(OutputTest, OutputThatIsNotFinishedLeavesNothing) {
  const std::string path = scratch_.file("out", "before");
  {
    Output output;
    ASSERT_TRUE(output.open(path));
    output.write("after");
  }
  EXPECT_EQ(contents(path), "before");
  EXPECT_EQ(files(), 1);
}

TEST_F(OutputTest, NothingWrittenMakesAnEmptyFile) {
  Output output;
  ASSERT_TRUE(output.open(scratch_ / "out"));
  EXPECT_TRUE(output.finish());
  EXPECT_TRUE(fs::exists(scratch_ / "out"));
}

TEST_F(OutputTest, ModeIsThatOfANewFile) {
  const std::string path = scratch_ / "out";
  for (const mode_t mask : {022U, 077U}) {
    const mode_t before = umask(mask);
    Output output;
    ASSERT_TRUE(output.open(path));
    EXPECT_TRUE(output.finish());
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
  }
}

TEST_F(OutputTest, NameThatIsTakenIsLeftAlone) {
  const std::string other = ".sdblk-" + std::to_string(getpid()) + "-0.tmp";
  static_cast<void>(scratch_.file(other, "other"));
  Output output;
  ASSERT_TRUE(output.open(scratch_ / "out"));
  output.write("x");
  EXPECT_TRUE(output.finish());
  EXPECT_EQ(contents(scratch_ / other), "other");
  EXPECT_EQ(contents(scratch_ / "out"), "x");
}

TEST_F(OutputTest, LongestNameHasRoom) {
  const std::string path = scratch_ / std::string(255, 'n');
  Output output;
  ASSERT_TRUE(output.open(path));
  EXPECT_TRUE(output.finish());
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(OutputTest, FileThatALinkLeadsToIsReplaced) {
  const std::string path = scratch_.file("file", "before");
  fs::create_symlink("file", scratch_ / "link");
  Output output;
  ASSERT_TRUE(output.open(scratch_ / "link"));
  output.write("after");
  EXPECT_TRUE(output.finish());
  EXPECT_TRUE(fs::is_symlink(scratch_ / "link"));
  EXPECT_EQ(contents(path), "after");
}

TEST_F(OutputTest, DeviceIsWrittenTo) {
  Output output;
  ASSERT_TRUE(output.open("/dev/null"));
  EXPECT_TRUE(output.write("x"));
  EXPECT_TRUE(output.finish());
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputTest, FullDeviceFails) {
  Output output;
  ASSERT_TRUE(output.open("/dev/full"));
  EXPECT_FALSE(output.write("x"));
  EXPECT_FALSE(output.write("y"));
  EXPECT_FALSE(output.finish());
  EXPECT_EQ(output.error(), "/dev/full: No space left on device");
}

TEST_F(OutputTest, FolderThatIsNotThereFails) {
  const std::string path = scratch_ / "none/out";
  Output output;
  EXPECT_FALSE(output.open(path));
  EXPECT_EQ(output.error(), path + ": No such file or directory");
}

TEST_F(OutputTest, FolderFails) {
  Output output;
  EXPECT_FALSE(output.open(scratch_.path()));
  EXPECT_EQ(output.error(), scratch_.path() + ": Is a directory");
  EXPECT_EQ(files(), 0);
}

TEST_F(OutputTest, PlaceThatAFolderTakesMeanwhileFails) {
  const std::string path = scratch_ / "out";
  Output output;
  ASSERT_TRUE(output.open(path));
  fs::create_directory(path);
  EXPECT_FALSE(output.finish());
  EXPECT_EQ(output.error(), path + ": Is a directory");
  EXPECT_EQ(files(), 1);
}

TEST_F(OutputTest, ThreadsDoNotTearWhatTheyWrite) {
  const std::string path = scratch_ / "out";
  Output output;
  ASSERT_TRUE(output.open(path));
  std::vector<std::thread> threads;
  for (const char c : {'a', 'b', 'c', 'd'}) {
    threads.emplace_back([&output, c] {
      for (int i = 0; i < 200; ++i) output.write(std::string(5000, c) + "\n");
    });
  }
  for (std::thread &thread : threads) thread.join();
  ASSERT_TRUE(output.finish());
  std::ifstream file(path);
  int count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    ASSERT_EQ(line, std::string(5000, line.at(0)));
  }
  EXPECT_EQ(count, 800);
}

}  // namespace
