#include "sdblk/folder_walk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/without_rights.h"

using namespace tarvik;

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

class FolderWalkTest : public testing::Test {
 protected:
  // Makes a file and the folders that it lies in.
  void make(const std::string &name) const {
    fs::create_directories(fs::path(scratch_ / name).parent_path());
    static_cast<void>(scratch_.file(name, "x"));
  }

  // The paths below the folder, without it; a folder that cannot be listed has its errno after it.
  [[nodiscard]] Paths walk() const {
    FolderWalk walk;
    walk.start(scratch_.path());
    Paths paths;
    for (FolderWalk::Found found; walk.next(&found);) {
      const std::string error = found.error == 0 ? "" : " " + std::to_string(found.error);
      paths.push_back(found.path.substr(scratch_.path().size()) + error);
    }
    return paths;
  }

  command::ScratchDirectory scratch_;
};

TEST_F(FolderWalkTest, FilesComeByNameInByteOrder) {
  for (const char *name : {"b", "a", "B", "a.b", "\xC3\xA9", "ab", "\xE9", "10", "9"}) make(name);
  EXPECT_EQ(walk(), (Paths{"/10", "/9", "/B", "/a", "/a.b", "/ab", "/b", "/\xC3\xA9", "/\xE9"}));
}

TEST_F(FolderWalkTest, FoldersComeInTheirTurn) {
  for (const char *name : {"a/z", "a/y/1", "b", "a.x", "c/d/e/f", "a/y/0"}) make(name);
  EXPECT_EQ(walk(), (Paths{"/a/y/0", "/a/y/1", "/a/z", "/a.x", "/b", "/c/d/e/f"}));
}

TEST_F(FolderWalkTest, EmptyFoldersHaveNothing) {
  fs::create_directories(scratch_ / "a/b");
  EXPECT_EQ(walk(), Paths{});
}

TEST_F(FolderWalkTest, HiddenFilesAreFiles) {
  make(".a/.b");
  EXPECT_EQ(walk(), Paths{"/.a/.b"});
}

TEST_F(FolderWalkTest, LinksAreNotFollowed) {
  make("a/file");
  fs::create_symlink("a/file", scratch_ / "link");
  fs::create_symlink("a", scratch_ / "folder");
  fs::create_symlink("..", scratch_ / "a/loop");
  fs::create_symlink("nowhere", scratch_ / "dangling");
  EXPECT_EQ(walk(), Paths{"/a/file"});
}

TEST_F(FolderWalkTest, LinkToTheFolderItselfIsFollowed) {
  make("a/file");
  fs::create_symlink("a", scratch_ / "link");
  FolderWalk walk;
  walk.start(scratch_ / "link");
  FolderWalk::Found found;
  ASSERT_TRUE(walk.next(&found));
  EXPECT_EQ(found.path, scratch_ / "link/file");
  EXPECT_FALSE(walk.next(&found));
}

TEST_F(FolderWalkTest, PipesAreNoFiles) {
  mkfifo((scratch_ / "pipe").c_str(), 0600);
  EXPECT_EQ(walk(), Paths{});
}

TEST_F(FolderWalkTest, FolderThatIsNotThereIsFound) {
  FolderWalk walk;
  walk.start(scratch_ / "none");
  FolderWalk::Found found;
  ASSERT_TRUE(walk.next(&found));
  EXPECT_EQ(found.path, scratch_ / "none");
  EXPECT_EQ(found.error, ENOENT);
  EXPECT_FALSE(walk.next(&found));
}

TEST_F(FolderWalkTest, FolderThatMustNotBeListedIsFoundInItsTurn) {
  for (const char *name : {"a", "b/x", "c"}) make(name);
  fs::permissions(scratch_.path(), fs::perms::all);
  fs::permissions(scratch_ / "b", fs::perms::none);
  Paths found;
  {
    const WithoutRights rights;
    found = walk();
  }
  fs::permissions(scratch_ / "b", fs::perms::all);
  EXPECT_EQ(found, (Paths{"/a", "/b " + std::to_string(EACCES), "/c"}));
}

TEST_F(FolderWalkTest, FolderThatGoesIsFoundWhenItIsReached) {
  for (const char *name : {"a", "b/x", "c"}) make(name);
  FolderWalk walk;
  walk.start(scratch_.path());
  FolderWalk::Found found;
  ASSERT_TRUE(walk.next(&found));
  fs::remove_all(scratch_ / "b");
  ASSERT_TRUE(walk.next(&found));
  EXPECT_EQ(found.path, scratch_ / "b");
  EXPECT_EQ(found.error, ENOENT);
  ASSERT_TRUE(walk.next(&found));
  EXPECT_EQ(found.path, scratch_ / "c");
}

TEST_F(FolderWalkTest, ServesOneFolderAfterTheOther) {
  make("a/1");
  make("b/2");
  FolderWalk walk;
  FolderWalk::Found found;
  for (const char *name : {"a/1", "b/2"}) {
    walk.start(fs::path(scratch_ / name).parent_path());
    ASSERT_TRUE(walk.next(&found));
    EXPECT_EQ(found.path, scratch_ / name);
    EXPECT_FALSE(walk.next(&found));
  }
}

// As deep as a path can be, and one deeper, whose path is too long.
TEST_F(FolderWalkTest, DeepFoldersNeedNoStack) {
  const fs::path start = fs::current_path();
  fs::current_path(scratch_.path());
  const std::string name(40, 'd');
  for (std::size_t length = scratch_.path().size(); length < 4200; length += name.size() + 1) {
    fs::create_directory(name);
    ASSERT_EQ(chdir(name.c_str()), 0);
  }
  fs::current_path(start);
  const Paths found = walk();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_TRUE(found[0].ends_with("/" + name + " " + std::to_string(ENAMETOOLONG)));
}

TEST_F(FolderWalkTest, ManyNamesAreAllThere) {
  Paths want;
  for (int i = 0; i < 3000; ++i) {
    make(std::to_string(10000 + i));
    want.push_back("/" + std::to_string(10000 + i));
  }
  EXPECT_EQ(walk(), want);
}

}  // namespace
