#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "seed/sdblk.h"
#include "support/memory.h"

using namespace tarvik;

namespace {

constexpr off_t kSmallestFile = 10;
constexpr std::int32_t kDefaultLength = 4096;

// The size of a file that can be read, or -1 with a message registered.
std::int64_t measure(const char *path) {
  struct stat status = {};
  if (stat(path, &status) < 0) {
    elog_log(1, "parseseed_new: stat(%s) error.\n", path);
    return -1;
  }
  if (status.st_size < kSmallestFile) {
    elog_log(1, "parseseed_new: Nothing in file %s.\n", path);
    return -1;
  }
  if (!S_ISREG(status.st_mode)) {
    elog_log(0, "parseseed_new: %s is not a regular file.\n", path);
    return -1;
  }
  return status.st_size;
}

bool map_file(SDBlkVol *vol, const char *path) {
  const std::int64_t size = measure(path);
  if (size < 0) return false;
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    elog_log(1, "parseseed_new: open(%s) error.\n", path);
    return false;
  }
  void *mapping = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, fd, 0);
  if (mapping == MAP_FAILED) {
    elog_log(1, "parseseed_new: mmap(%s) error.\n", path);
    close(fd);
    return false;
  }
  vol->fd = fd;
  vol->image = static_cast<const char *>(mapping);
  vol->image_size = size;
  return true;
}

bool copy_filename(SDBlkVol *vol, const char *path) {
  const std::size_t size = std::strlen(path);
  vol->filename = memory_copy_text(path, size);
  if (vol->filename != nullptr) return true;
  elog_log(1, "parseseed_new: malloc(filename,%ld) error.\n", static_cast<long>(size + 1));
  return false;
}

bool make_dictionary(SDBlkVol *vol) {
  vol->abbrs = newarr();
  if (vol->abbrs != nullptr) return true;
  elog_log(1, "parseseed_new: malloc(abbrs) error.\n");
  return false;
}

void unmap(SDBlkVol *vol) {
  if (vol->fd < 0) return;
  // munmap takes what mmap gave, which was not constant.
  munmap(const_cast<char *>(vol->image), static_cast<std::size_t>(vol->image_size));  // NOLINT
  close(vol->fd);
}

}  // namespace

SDBlkVol *sdblk_new(const char *filename, const char *buffer, std::int32_t nbytes,
                    std::int32_t logical_length) {
  errno = 0;
  sdblk_blkdefs_init();
  auto *vol = static_cast<SDBlkVol *>(memory_get_zeroed(sizeof(SDBlkVol)));
  if (vol == nullptr) {
    elog_log(1, "parseseed_new: malloc(SDBlkVol:%ld) error.\n",
             static_cast<long>(sizeof(SDBlkVol)));
    return nullptr;
  }
  vol->fd = -1;
  vol->image = buffer;
  vol->image_size = nbytes;
  vol->logical_length = logical_length < 1 ? kDefaultLength : logical_length;
  if (filename != nullptr && (!copy_filename(vol, filename) || !map_file(vol, filename))) {
    sdblk_closevol(vol);
    return nullptr;
  }
  if (!make_dictionary(vol)) {
    sdblk_closevol(vol);
    return nullptr;
  }
  vol->cursor = vol->image;
  return vol;
}

void sdblk_freevol(SDBlkVol *vol) {
  if (vol == nullptr) return;
  memory_free(vol->filename);
  freearr(vol->abbrs, nullptr);
  memory_free(vol);
}

void sdblk_closevol(SDBlkVol *vol) {
  if (vol == nullptr) return;
  freearr(vol->abbrs, sdblk_free);
  vol->abbrs = nullptr;
  unmap(vol);
  sdblk_freevol(vol);
}
