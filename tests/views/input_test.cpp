#include "views/input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

constexpr SDBlkWholeOptions kPlain = {nullptr, nullptr, SDBLK_KEEP_FIRST};

Source source_of(const std::string &path) { return {.name = path, .path = path}; }

bool open_path(Input *input, const std::string &path) {
  return input->open(source_of(path), 4096, kPlain);
}

// Data records of 512 bytes.
std::string records(int count) {
  volume::VolumeWriter writer(512);
  for (int i = 0; i < count; ++i) writer.data({});
  return writer.bytes();
}

// More than is read at once.
constexpr int kMany = 4096;
static_assert(std::int64_t{kMany} * 512 > Input::kReadBytes);

// Reads to the end; the number of blocks.
std::int64_t read_blocks(Input *input) {
  SDBlk *block = nullptr;
  while (sdblk_parseblk(input->volume(), &block) == 0) {
    if (sdblk_unstuffblk(block) < 0) break;
  }
  sdblk_free(block);
  return sdblk_whole_counts(input->volume()).blocks;
}

class InputTest : public testing::Test {
 protected:
  command::ScratchDirectory scratch_;
  Input input_;
};

TEST_F(InputTest, SmallFileIsRead) {
  ASSERT_TRUE(open_path(&input_, scratch_.file("v", records(3))));
  EXPECT_EQ(input_.size(), 3 * 512);
  EXPECT_EQ(input_.volume()->fd, -1);
  EXPECT_EQ(read_blocks(&input_), 3);
  EXPECT_FALSE(input_.changed());
}

TEST_F(InputTest, LargeFileIsMapped) {
  ASSERT_TRUE(open_path(&input_, scratch_.file("v", records(kMany))));
  EXPECT_EQ(input_.size(), kMany * 512);
  EXPECT_GE(input_.volume()->fd, 0);
  EXPECT_EQ(read_blocks(&input_), kMany);
  EXPECT_FALSE(input_.changed());
}

TEST_F(InputTest, LargestThatIsReadAndSmallestThatIsMapped) {
  ASSERT_TRUE(open_path(&input_, scratch_.file("v", std::string(Input::kReadBytes, ' '))));
  EXPECT_EQ(input_.volume()->fd, -1);
  ASSERT_TRUE(open_path(&input_, scratch_.file("w", std::string(Input::kReadBytes + 1, ' '))));
  EXPECT_GE(input_.volume()->fd, 0);
}

TEST_F(InputTest, EmptyFileHasNoBlocks) {
  ASSERT_TRUE(open_path(&input_, scratch_.file("v", "")));
  EXPECT_EQ(input_.size(), 0);
  EXPECT_EQ(read_blocks(&input_), 0);
  EXPECT_FALSE(input_.changed());
}

TEST_F(InputTest, ModifiedHasNanoseconds) {
  for (const int count : {1, kMany}) {
    const std::string path = scratch_.file("v", records(count));
    const std::array<timespec, 2> times = {timespec{1, 2}, timespec{1234567890, 123456789}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times.data(), 0), 0);
    ASSERT_TRUE(open_path(&input_, path));
    EXPECT_EQ(input_.modified().tv_sec, 1234567890);
    EXPECT_EQ(input_.modified().tv_nsec, 123456789);
  }
}

TEST_F(InputTest, RecordLengthIsThatInForce) {
  const Source source = source_of(scratch_.file("v", "000001D " + std::string(600, 'x')));
  ASSERT_TRUE(input_.open(source, 512, kPlain));
  EXPECT_EQ(input_.volume()->logical_length, 512);
}

TEST_F(InputTest, ReportGetsFindings) {
  std::int64_t skipped = 0;
  const SDBlkWholeOptions options = {[](void *context, const SDBlkFinding *finding) {
                                       *static_cast<std::int64_t *>(context) += finding->length;
                                     },
                                     &skipped, SDBLK_KEEP_FIRST};
  ASSERT_TRUE(input_.open(source_of(scratch_.file("v", "no volume")), 4096, options));
  EXPECT_EQ(read_blocks(&input_), 0);
  EXPECT_EQ(skipped, 9);
}

TEST_F(InputTest, FileThatIsNotThereFails) {
  EXPECT_FALSE(open_path(&input_, scratch_ / "none"));
  EXPECT_EQ(input_.error(), "No such file or directory");
  EXPECT_EQ(input_.volume(), nullptr);
}

TEST_F(InputTest, FolderFails) {
  EXPECT_FALSE(open_path(&input_, scratch_.path()));
  EXPECT_EQ(input_.error(), "not a regular file");
}

TEST_F(InputTest, PipeFailsAtOnce) {
  const std::string path = scratch_ / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_FALSE(open_path(&input_, path));
  EXPECT_EQ(input_.error(), "not a regular file");
}

TEST_F(InputTest, FailureRegistersNoMessage) {
  std::string log;
  elog_set_sink([](void *context, const char *bytes,
                   std::size_t size) { static_cast<std::string *>(context)->append(bytes, size); },
                &log);
  EXPECT_FALSE(open_path(&input_, scratch_ / "none"));
  elog_clear_register(1);
  elog_set_sink(nullptr, nullptr);
  EXPECT_EQ(log, "");
}

TEST_F(InputTest, ServesOneFileAfterTheOther) {
  const std::string small = scratch_.file("small", records(2));
  const std::string large = scratch_.file("large", records(kMany));
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(open_path(&input_, small));
    EXPECT_EQ(read_blocks(&input_), 2);
    EXPECT_FALSE(open_path(&input_, scratch_ / "none"));
    ASSERT_TRUE(open_path(&input_, large));
    EXPECT_EQ(read_blocks(&input_), kMany);
    EXPECT_EQ(input_.error(), "");
  }
}

TEST_F(InputTest, OpensADescriptorOfAFileWithoutName) {
  const std::string path = scratch_.file("v", records(3));
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  std::filesystem::remove(path);
  EXPECT_TRUE(open_path(&input_, "/dev/fd/" + std::to_string(descriptor)));
  EXPECT_EQ(read_blocks(&input_), 3);
  close(descriptor);
}

TEST_F(InputTest, MappedFileCutBeforeItIsReadHasChanged) {
  const std::string path = scratch_.file("v", records(kMany));
  ASSERT_TRUE(open_path(&input_, path));
  std::filesystem::resize_file(path, 512 * 1000);
  EXPECT_EQ(read_blocks(&input_), 1000);
  EXPECT_TRUE(input_.changed());
  EXPECT_EQ(input_.error(), "changed while it was read");
}

// No page is gone, but a part of the last.
TEST_F(InputTest, MappedFileCutByLessThanAPageHasChanged) {
  const std::string path = scratch_.file("v", records(kMany));
  ASSERT_TRUE(open_path(&input_, path));
  std::filesystem::resize_file(path, 512 * kMany - 1);
  EXPECT_EQ(read_blocks(&input_), kMany);
  EXPECT_TRUE(input_.changed());
}

TEST_F(InputTest, MappedFileCutAndFilledUpAgainCannotBeReadToItsEnd) {
  const std::string path = scratch_.file("v", records(kMany));
  ASSERT_TRUE(open_path(&input_, path));
  std::filesystem::resize_file(path, 0);
  EXPECT_EQ(read_blocks(&input_), 0);
  std::filesystem::resize_file(path, 512 * kMany);
  EXPECT_TRUE(input_.changed());
  EXPECT_EQ(input_.error(), "cannot be read to its end");
}

TEST_F(InputTest, ChangeIsForgottenWithTheFile) {
  const std::string path = scratch_.file("v", records(kMany));
  ASSERT_TRUE(open_path(&input_, path));
  std::filesystem::resize_file(path, 0);
  read_blocks(&input_);
  ASSERT_TRUE(input_.changed());
  for (const int count : {2, kMany}) {
    ASSERT_TRUE(open_path(&input_, scratch_.file("w", records(count))));
    EXPECT_EQ(read_blocks(&input_), count);
    EXPECT_FALSE(input_.changed());
  }
}

TEST_F(InputTest, FileThatGrowsHasNotChanged) {
  const std::string path = scratch_.file("v", records(kMany));
  ASSERT_TRUE(open_path(&input_, path));
  std::filesystem::resize_file(path, 512 * (kMany + 1));
  EXPECT_EQ(read_blocks(&input_), kMany);
  EXPECT_FALSE(input_.changed());
}

// Another thread cuts and restores the file all the time, of both sizes and in the midst of
// opening.
TEST_F(InputTest, OutlivesAFileThatChangesAllTheTime) {
  for (const int count : {1500, kMany}) {
    const std::string bytes = records(count);
    const std::string path = scratch_.file("v", bytes);
    std::atomic<bool> done = false;
    std::thread changer([&] {
      for (std::size_t size = 0; !done; size = (size + 8192) % bytes.size()) {
        std::filesystem::resize_file(path, size);
        std::filesystem::resize_file(path, bytes.size());
      }
    });
    for (int round = 0; round < 200; ++round) {
      ASSERT_TRUE(open_path(&input_, path));
      EXPECT_LE(read_blocks(&input_), count);
      static_cast<void>(input_.changed());
    }
    done = true;
    changer.join();
  }
}

}  // namespace
