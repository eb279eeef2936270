#include "support/exec.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/memory.h"
#include "tests/util/without_rights.h"

using namespace tarvik;

namespace {

constexpr const char *kVariable = "TARVIK_TEST_SEARCH_PATH";

std::string found(const char *name) {
  char *path = datafile(kVariable, name);
  std::string result = path == nullptr ? "(null)" : path;
  std::free(path);
  return result;
}

class Datafile : public testing::Test {
 protected:
  Datafile() {
    std::string pattern = testing::TempDir() + "datafile_XXXXXX";
    root_ = mkdtemp(pattern.data());
    std::filesystem::create_directories(root_ + "/one/folder");
    std::filesystem::create_directories(root_ + "/two/here");
    std::ofstream(root_ + "/one/both") << "1";
    std::ofstream(root_ + "/two/both") << "2";
    std::ofstream(root_ + "/two/folder") << "2";
    search(root_ + "/none:" + root_ + "/one:" + root_ + "/two");
  }
  ~Datafile() override {
    unsetenv(kVariable);
    std::filesystem::remove_all(root_);
  }
  static void search(const std::string &path) { setenv(kVariable, path.c_str(), 1); }

  std::string root_;
};

TEST(Getexecname, IsTheRunningExecutable) {
  const char *name = getexecname();
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(std::string(name), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST(Getexecname, StaysTheSame) { EXPECT_EQ(getexecname(), getexecname()); }

TEST_F(Datafile, FirstDirectoryWins) { EXPECT_EQ(found("both"), root_ + "/one/both"); }

TEST_F(Datafile, DirectoryIsNoFile) { EXPECT_EQ(found("folder"), root_ + "/two/folder"); }

TEST_F(Datafile, AbsentFileGivesNull) { EXPECT_EQ(found("here"), "(null)"); }

TEST_F(Datafile, UnreadableFileIsPassedOver) {
  std::filesystem::permissions(root_, std::filesystem::perms::all);
  chmod((root_ + "/one/both").c_str(), 0);
  const WithoutRights nobody;
  EXPECT_EQ(found("both"), root_ + "/two/both");
}

TEST_F(Datafile, UnsetVariableGivesNull) {
  unsetenv(kVariable);
  EXPECT_EQ(found("both"), "(null)");
}

TEST_F(Datafile, EmptyDirectoryIsTheCurrentOne) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(root_ + "/two");
  search(root_ + "/none::" + root_ + "/one");
  EXPECT_EQ(found("both"), "both");
  search("");
  EXPECT_EQ(found("both"), "both");
  search(root_ + "/none:");
  EXPECT_EQ(found("both"), "both");
  std::filesystem::current_path(before);
}

TEST_F(Datafile, MemoryExhaustedGivesNull) {
  memory_set_gate([](std::size_t) { return false; });
  EXPECT_EQ(datafile(kVariable, "both"), nullptr);
  memory_set_gate(nullptr);
}

}  // namespace
