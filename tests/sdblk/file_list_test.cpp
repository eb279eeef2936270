#include "sdblk/file_list.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/util/run_command.h"

using namespace tarvik;

namespace {

using Paths = std::vector<std::string>;

Paths all_of(FileList *list) {
  Paths paths;
  for (FolderWalk::Found found; list->next(&found);) paths.push_back(found.path);
  return paths;
}

class FileListTest : public testing::Test {
 protected:
  FileListTest() {
    std::filesystem::create_directory(scratch_ / "folder");
    static_cast<void>(scratch_.file("folder/a", ""));
    static_cast<void>(scratch_.file("folder/b", ""));
  }
  ~FileListTest() override {
    if (list_ >= 0) close(list_);
  }

  int list_with(std::string_view bytes) {
    list_ = open(scratch_.file("list", bytes).c_str(), O_RDONLY | O_CLOEXEC);
    return list_;
  }

  command::ScratchDirectory scratch_;
  int list_ = -1;
};

TEST_F(FileListTest, FilesComeAsTheyAreNamed) {
  FileList list({"x", "-", "a/../b", ""}, -1, '\n');
  EXPECT_EQ(all_of(&list), (Paths{"x", "-", "a/../b", ""}));
  EXPECT_EQ(list.folders(), Paths{});
}

TEST_F(FileListTest, FolderGivesItsFilesInItsPlace) {
  const std::string folder = scratch_ / "folder";
  FileList list({"x", folder, "y"}, -1, '\n');
  EXPECT_EQ(all_of(&list), (Paths{"x", folder + "/a", folder + "/b", "y"}));
  EXPECT_EQ(list.folders(), Paths{folder});
}

TEST_F(FileListTest, PathIsJoinedToTheFolderAsGiven) {
  const std::string folder = scratch_ / "folder/";
  FileList list({folder}, -1, '\n');
  EXPECT_EQ(all_of(&list), (Paths{folder + "/a", folder + "/b"}));
}

TEST_F(FileListTest, ListFollowsTheNamedFiles) {
  const std::string folder = scratch_ / "folder";
  FileList list({"x"}, list_with("y\n" + folder + "\n\nz w\n"), '\n');
  EXPECT_EQ(all_of(&list), (Paths{"x", "y", folder + "/a", folder + "/b", "z w"}));
  EXPECT_EQ(list.list_error(), 0);
}

TEST_F(FileListTest, ListMayEndItsPathsInNul) {
  FileList list({}, list_with(std::string_view("a\nb\0c\0", 6)), '\0');
  EXPECT_EQ(all_of(&list), (Paths{"a\nb", "c"}));
}

TEST_F(FileListTest, ListThatCannotBeReadIsAnError) {
  list_ = open(scratch_.path().c_str(), O_RDONLY | O_CLOEXEC);
  FileList list({"x"}, list_, '\n');
  EXPECT_EQ(all_of(&list), Paths{"x"});
  EXPECT_EQ(list.list_error(), EISDIR);
}

// The list holds on to a name whose file is gone when its turn comes.
TEST_F(FileListTest, FileThatVanishesIsHandedOut) {
  FileList list({scratch_ / "folder"}, -1, '\n');
  FolderWalk::Found found;
  ASSERT_TRUE(list.next(&found));
  std::filesystem::remove(scratch_ / "folder/b");
  ASSERT_TRUE(list.next(&found));
  EXPECT_EQ(found.path, scratch_ / "folder/b");
}

TEST_F(FileListTest, ThreadsShareTheFiles) {
  Paths want;
  for (int i = 0; i < 2000; ++i) want.push_back("file" + std::to_string(i));
  FileList list(want, -1, '\n');
  std::vector<Paths> got(4);
  std::vector<std::thread> threads;
  for (Paths &paths : got) threads.emplace_back([&list, &paths] { paths = all_of(&list); });
  for (std::thread &thread : threads) thread.join();
  std::multiset<std::string> together;
  for (const Paths &paths : got) together.insert(paths.begin(), paths.end());
  EXPECT_EQ(together, std::multiset<std::string>(want.begin(), want.end()));
}

}  // namespace
