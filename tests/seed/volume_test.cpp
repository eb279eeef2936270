#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include "seed/sdblk.h"
#include "support/memory.h"
#include "tests/util/log_capture.h"
#include "tests/util/without_rights.h"

using namespace tarvik;

namespace {

// A directory of the test's own that every user may look into.
class OpenVolume : public testing::Test {
 protected:
  OpenVolume() {
    std::string name = testing::TempDir() + "volume_test.XXXXXX";
    directory_ = mkdtemp(name.data());
    std::filesystem::permissions(directory_, std::filesystem::perms(0755));
  }
  ~OpenVolume() override { std::filesystem::remove_all(directory_); }

  std::string write_file(const std::string &name, const std::string &bytes) const {
    const std::string path = path_of(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  [[nodiscard]] std::string path_of(const std::string &name) const {
    return (directory_ / name).string();
  }

  // Opens a file that must be refused, and returns what was registered.
  std::string refusal(const std::string &path) {
    LogCapture log;
    SDBlkVol *vol = sdblk_new(path.c_str(), nullptr, 0, 0);
    EXPECT_EQ(vol, nullptr);
    sdblk_closevol(vol);
    EXPECT_EQ(log.text(), "");
    return log.registered();
  }

  std::filesystem::path directory_;
};

// The lowest descriptor that is not in use.
int next_descriptor() {
  const int fd = open("/dev/null", O_RDONLY);
  close(fd);
  return fd;
}

// Lets the process map spare_bytes more than it has, as long as it lives.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(rlim_t spare_bytes) {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    getrlimit(RLIMIT_AS, &before_);
    rlimit limit = before_;
    limit.rlim_cur = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + spare_bytes;
    EXPECT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
  }
  ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &before_); }
  AddressSpaceLimit(const AddressSpaceLimit &) = delete;
  AddressSpaceLimit &operator=(const AddressSpaceLimit &) = delete;

 private:
  rlimit before_ = {};
};

TEST_F(OpenVolume, FileBelowTenBytesIsRefused) {
  for (std::size_t size = 0; size <= 9; ++size) {
    const std::string path = write_file("short", std::string(size, '0'));
    EXPECT_EQ(refusal(path), "parseseed_new: Nothing in file " + path + ".\n") << size;
  }
}

TEST_F(OpenVolume, EarlierSystemErrorDoesNotShowInAMessage) {
  const std::string path = write_file("short", "");
  errno = EIO;
  EXPECT_EQ(refusal(path), "parseseed_new: Nothing in file " + path + ".\n");
}

TEST_F(OpenVolume, FileOfTenBytesIsMapped) {
  std::string path = write_file("ten", "0123456789");
  const std::string original = path;
  SDBlkVol *vol = sdblk_new(path.c_str(), nullptr, 0, 0);
  ASSERT_NE(vol, nullptr);
  path.assign(path.size(), 'x');
  EXPECT_EQ(vol->filename, original);
  EXPECT_EQ(vol->image_size, 10);
  EXPECT_EQ(std::string(vol->image, 10), "0123456789");
  EXPECT_EQ(vol->cursor, vol->image);
  sdblk_closevol(vol);
}

TEST_F(OpenVolume, MissingFileGivesStatMessage) {
  const std::string path = path_of("missing");
  EXPECT_EQ(refusal(path),
            "parseseed_new: stat(" + path + ") error.\n    No such file or directory\n");
}

TEST_F(OpenVolume, UnreadableFileGivesOpenMessage) {
  const std::string path = write_file("secret", "0123456789");
  std::filesystem::permissions(path, std::filesystem::perms::none);
  const WithoutRights without_rights;
  EXPECT_EQ(refusal(path), "parseseed_new: open(" + path + ") error.\n    Permission denied\n");
}

TEST_F(OpenVolume, DirectoryIsNoRegularFile) {
  // Some file systems give an empty directory the size 0, which is another message.
  const std::string path = path_of("directory");
  std::filesystem::create_directory(path);
  std::ofstream(path + "/" + std::string(100, 'n')) << "x";
  EXPECT_EQ(refusal(path), "parseseed_new: " + path + " is not a regular file.\n");
}

TEST_F(OpenVolume, FileThatCannotBeMappedGivesMmapMessage) {
  const std::string path = write_file("sparse", "0123456789");
  std::filesystem::resize_file(path, std::uintmax_t{1} << 31);
  const int descriptor = next_descriptor();
  const AddressSpaceLimit limit(rlim_t{1} << 30);
  EXPECT_EQ(refusal(path),
            "parseseed_new: mmap(" + path + ") error.\n    Cannot allocate memory\n");
  EXPECT_EQ(next_descriptor(), descriptor);
}

TEST_F(OpenVolume, EmptyFileNameGivesStatMessage) {
  EXPECT_EQ(refusal(""), "parseseed_new: stat() error.\n    No such file or directory\n");
}

TEST_F(OpenVolume, FileNameWinsOverBuffer) {
  const std::string path = write_file("file", "from the file");
  const std::string buffer = "from the buffer";
  SDBlkVol *vol = sdblk_new(path.c_str(), buffer.data(), 15, 0);
  ASSERT_NE(vol, nullptr);
  EXPECT_EQ(vol->image_size, 13);
  EXPECT_EQ(std::string(vol->image, 13), "from the file");
  sdblk_closevol(vol);
}

TEST_F(OpenVolume, EachFailedAllocationGivesAMessageAndLeavesNoDescriptor) {
  const std::string path = write_file("file", "0123456789");
  const int descriptor = next_descriptor();
  const std::string first = "parseseed_new: malloc(SDBlkVol:" + std::to_string(sizeof(SDBlkVol)) +
                            ") error.\n    Cannot allocate memory\n";
  LogCapture log;
  for (long n = 1;; ++n) {
    SDBlkVol *vol = nullptr;
    bool failed = false;
    {
      const FailingMemory memory(n);
      vol = sdblk_new(path.c_str(), nullptr, 0, 0);
      failed = FailingMemory::failed();
    }
    EXPECT_EQ(vol == nullptr, failed) << n;
    sdblk_closevol(vol);
    EXPECT_EQ(next_descriptor(), descriptor) << n;
    const std::string text = log.registered();
    if (!failed) {
      EXPECT_EQ(text, "");
      EXPECT_GT(n, 2);
      break;
    }
    EXPECT_EQ(text.find(n == 1 ? first : "parseseed_new: malloc("), 0U) << n;
    EXPECT_TRUE(text.ends_with("error.\n    Cannot allocate memory\n")) << n;
  }
}

TEST_F(OpenVolume, FreeVolLeavesMappingDescriptorAndDictionaryBlocks) {
  const std::string path = write_file("file", "000001V 0110007");
  SDBlkVol *vol = sdblk_new(path.c_str(), nullptr, 0, 0);
  ASSERT_NE(vol, nullptr);
  SDBlk *blk = nullptr;
  ASSERT_EQ(sdblk_parseblk(vol, &blk), 7);
  SDBlk *kept = sdblk_copy(blk);
  sdblk_free(blk);
  ASSERT_EQ(setarr(vol->abbrs, "uid:1", kept), nullptr);
  const char *image = vol->image;
  const int fd = vol->fd;

  sdblk_freevol(vol);
  EXPECT_EQ(std::string(image, 15), "000001V 0110007");
  EXPECT_NE(fcntl(fd, F_GETFD), -1);
  EXPECT_EQ(kept->blockette_type, 11);

  sdblk_free(kept);
  // What mmap gave was not constant.
  EXPECT_EQ(munmap(const_cast<char *>(image), 15), 0);  // NOLINT
  EXPECT_EQ(close(fd), 0);
}

TEST_F(OpenVolume, CloseVolReleasesDescriptorAndDictionaryBlocks) {
  const std::string path = write_file("file", "000001V 0110007");
  const int descriptor = next_descriptor();
  SDBlkVol *vol = sdblk_new(path.c_str(), nullptr, 0, 0);
  ASSERT_NE(vol, nullptr);
  SDBlk *blk = nullptr;
  ASSERT_EQ(sdblk_parseblk(vol, &blk), 7);
  // A block that is not released here would be a leak.
  ASSERT_EQ(setarr(vol->abbrs, "uid:1", sdblk_copy(blk)), nullptr);
  sdblk_free(blk);
  sdblk_closevol(vol);
  EXPECT_EQ(next_descriptor(), descriptor);
}

TEST(OpenBuffer, VolumeStandsAtItsStart) {
  const std::string bytes = "000001V 0110007";
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), 15, 512);
  ASSERT_NE(vol, nullptr);
  EXPECT_EQ(vol->filename, nullptr);
  EXPECT_EQ(vol->image, bytes.data());
  EXPECT_EQ(vol->image_size, 15);
  EXPECT_EQ(vol->cursor, bytes.data());
  EXPECT_EQ(vol->offset, 0);
  EXPECT_EQ(vol->record_pos, 0);
  EXPECT_EQ(vol->logical_length, 512);
  EXPECT_EQ(vol->logical_sequence, 0);
  EXPECT_EQ(vol->nondigits, 0);
  EXPECT_EQ(vol->record_offset, 0);
  EXPECT_EQ(vol->record_type, '\0');
  EXPECT_EQ(vol->continuation, '\0');
  EXPECT_EQ(vol->nblocks, 0);
  EXPECT_EQ(vol->current, nullptr);
  ASSERT_NE(vol->abbrs, nullptr);
  EXPECT_EQ(countarr(vol->abbrs), 0);
  sdblk_closevol(vol);
}

std::int32_t length_in_force(std::int32_t argument) {
  SDBlkVol *vol = sdblk_new(nullptr, "", 0, argument);
  const std::int32_t length = vol->logical_length;
  sdblk_closevol(vol);
  return length;
}

TEST(OpenBuffer, LengthBelowOneGives4096) {
  EXPECT_EQ(length_in_force(0), 4096);
  EXPECT_EQ(length_in_force(-1), 4096);
  EXPECT_EQ(length_in_force(std::numeric_limits<std::int32_t>::min()), 4096);
}

TEST(OpenBuffer, LengthFromOneOnIsTakenAsItStands) {
  EXPECT_EQ(length_in_force(1), 1);
  EXPECT_EQ(length_in_force(4095), 4095);
  EXPECT_EQ(length_in_force(std::numeric_limits<std::int32_t>::max()),
            std::numeric_limits<std::int32_t>::max());
}

TEST(OpenBuffer, NoBytesAreAnEmptyVolume) {
  for (const std::int32_t nbytes : {0, -1, -100}) {
    SDBlkVol *vol = sdblk_new(nullptr, nullptr, nbytes, 0);
    ASSERT_NE(vol, nullptr);
    SDBlk *blk = nullptr;
    EXPECT_EQ(sdblk_parseblk(vol, &blk), 999999999);
    EXPECT_EQ(blk, nullptr);
    sdblk_closevol(vol);
  }
}

TEST(OpenBuffer, FirstVolumeFillsTheCatalogueIndex) {
  sdblk_closevol(sdblk_new(nullptr, "", 0, 0));
  EXPECT_EQ(seed_blkdefs_first, 0);
  ASSERT_NE(seed_blkdefs_index[99], nullptr);
  EXPECT_STREQ(seed_blkdefs_index[99]->id, "DATA");
  EXPECT_EQ(seed_blkdefs_index[999], nullptr);
}

TEST(CloseVolume, NullDoesNothing) {
  LogCapture log;
  sdblk_freevol(nullptr);
  sdblk_closevol(nullptr);
  EXPECT_EQ(log.registered(), "");
}

TEST(CloseVolume, BufferStaysAsItIs) {
  std::string bytes = "000001V 0110007";
  sdblk_freevol(sdblk_new(nullptr, bytes.data(), 15, 0));
  sdblk_closevol(sdblk_new(nullptr, bytes.data(), 15, 0));
  EXPECT_EQ(bytes, "000001V 0110007");
}

}  // namespace
