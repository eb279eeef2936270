#include "sdblk/spool.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/child.h"
#include "tests/util/run_command.h"

using namespace tarvik;

namespace {

// Runs in a child whose standard input is a file of the bytes, and whose folder for temporary files
// is folder: writes what is wrong, or the spooled bytes.
std::string spooled(const std::string &bytes, const std::string &folder) {
  const command::ScratchDirectory scratch;
  const std::string path = scratch.file("input", bytes);
  return run_child([&] {
           setenv("TMPDIR", folder.c_str(), 1);
           if (std::freopen(path.c_str(), "rb", stdin) == nullptr) std::exit(9);
           Spool spool;
           const std::string fault = spool.fill();
           std::printf("%s", fault.c_str());
           if (!fault.empty()) return;
           std::ifstream file(spool.path(), std::ios::binary);
           const std::string got(std::istreambuf_iterator<char>(file), {});
           std::fwrite(got.data(), 1, got.size(), stdout);
         })
      .bytes;
}

class SpoolTest : public testing::Test {
 protected:
  command::ScratchDirectory scratch_;
};

TEST_F(SpoolTest, HoldsStandardInput) {
  const std::string bytes = std::string(200000, 'x') + std::string(3, '\0') + "end";
  EXPECT_EQ(spooled(bytes, scratch_.path()), bytes);
}

TEST_F(SpoolTest, EmptyInputIsEmpty) { EXPECT_EQ(spooled("", scratch_.path()), ""); }

TEST_F(SpoolTest, LeavesNothing) {
  spooled("bytes", scratch_.path());
  EXPECT_TRUE(std::filesystem::is_empty(scratch_.path()));
}

TEST_F(SpoolTest, FolderThatIsNotThereIsTold) {
  const std::string folder = scratch_ / "none";
  EXPECT_EQ(spooled("bytes", folder),
            "no temporary file in " + folder + ": No such file or directory");
}

TEST_F(SpoolTest, InputThatCannotBeReadIsTold) {
  const ChildResult child = run_child([] {
    // Not closed, for the next descriptor would take its place.
    if (std::freopen("/", "rb", stdin) == nullptr) std::exit(9);
    Spool spool;
    std::printf("%s", spool.fill().c_str());
  });
  EXPECT_EQ(child.bytes, "Is a directory");
}

}  // namespace
