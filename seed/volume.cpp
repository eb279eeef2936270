// Opening and closing volumes.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "seed/open.h"
#include "seed/sdblk.h"
#include "seed/whole/reader.h"
#include "support/elog_impl.h"
#include "support/memory.h"

using namespace tarvik;

namespace {

constexpr const char *kOpener = "parseseed_new";  // what the messages of sdblk_new begin with
constexpr std::int64_t kSmallestFile = 10;
constexpr std::int32_t kDefaultLength = 4096;

// The size of a file that can be read, or -1 with a message registered.
std::int64_t measure(const char *function, const char *path, std::int64_t smallest) {
  struct stat status = {};
  if (stat(path, &status) < 0) {
    elog_log(1, "%s: stat(%s) error.\n", function, path);
    return -1;
  }
  if (status.st_size < smallest) {
    elog_log(1, "%s: Nothing in file %s.\n", function, path);
    return -1;
  }
  if (!S_ISREG(status.st_mode)) {
    elog_log(0, "%s: %s is not a regular file.\n", function, path);
    return -1;
  }
  return status.st_size;
}

bool map_file(const char *function, SDBlkVol *vol, const char *path, std::int64_t smallest) {
  const std::int64_t size = measure(function, path, smallest);
  if (size < 0) return false;
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    elog_log(1, "%s: open(%s) error.\n", function, path);
    return false;
  }
  if (size == 0) {  // there is nothing to map
    close(fd);
    vol->image = vol->cursor = "";
    return true;
  }
  void *mapping = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_SHARED, fd, 0);
  if (mapping == MAP_FAILED) {
    elog_log(1, "%s: mmap(%s) error.\n", function, path);
    close(fd);
    return false;
  }
  vol->fd = fd;
  vol->image = vol->cursor = static_cast<const char *>(mapping);
  vol->image_size = size;
  return true;
}

bool copy_filename(const char *function, SDBlkVol *vol, const char *path) {
  const std::size_t size = std::strlen(path);
  vol->filename = memory_copy_text(path, size);
  if (vol->filename != nullptr) return true;
  elog_log(1, "%s: malloc(filename,%ld) error.\n", function, static_cast<long>(size + 1));
  return false;
}

bool make_dictionary(const char *function, SDBlkVol *vol) {
  vol->abbrs = newarr();
  if (vol->abbrs != nullptr) return true;
  elog_log(1, "%s: malloc(abbrs) error.\n", function);
  return false;
}

SDBlkVol *make_volume(const char *function, std::int32_t record_length) {
  sdblk_blkdefs_init();
  if (!elog_prepare()) return nullptr;  // and no message: it is the log that there is no memory for
  auto *vol = static_cast<SDBlkVol *>(memory_get_zeroed(sizeof(SDBlkVol)));
  if (vol == nullptr) {
    elog_log(1, "%s: malloc(SDBlkVol:%ld) error.\n", function, static_cast<long>(sizeof(SDBlkVol)));
    return nullptr;
  }
  vol->fd = -1;
  vol->logical_length = record_length < 1 ? kDefaultLength : record_length;
  return vol;
}

// A volume of which every part could be had, else nullptr, with what it has released.
SDBlkVol *finish_opening(SDBlkVol *vol, bool complete) {
  if (complete) return vol;
  sdblk_closevol(vol);
  return nullptr;
}

void unmap(SDBlkVol *vol) {
  if (vol->fd < 0) return;
  // munmap takes what mmap gave, which was not constant.
  munmap(const_cast<char *>(vol->image), static_cast<std::size_t>(vol->image_size));  // NOLINT
  close(vol->fd);
}

}  // namespace

namespace tarvik {

SDBlkVol *open_buffer(const char *function, const char *buffer, std::int64_t size,
                      std::int32_t record_length) {
  SDBlkVol *vol = make_volume(function, record_length);
  if (vol == nullptr) return nullptr;
  vol->image = vol->cursor = buffer;
  vol->image_size = size;
  return finish_opening(vol, make_dictionary(function, vol));
}

SDBlkVol *open_file(const char *function, const char *path, std::int32_t record_length,
                    std::int64_t smallest) {
  SDBlkVol *vol = make_volume(function, record_length);
  if (vol == nullptr) return nullptr;
  return finish_opening(vol, copy_filename(function, vol, path) &&
                                 map_file(function, vol, path, smallest) &&
                                 make_dictionary(function, vol));
}

}  // namespace tarvik

SDBlkVol *sdblk_new(const char *filename, const char *buffer, std::int32_t nbytes,
                    std::int32_t logical_length) {
  errno = 0;
  return filename != nullptr ? open_file(kOpener, filename, logical_length, kSmallestFile)
                             : open_buffer(kOpener, buffer, nbytes, logical_length);
}

SDBlkVol *sdblk_open_buffer(const void *bytes, std::int64_t size, std::int32_t record_length) {
  errno = 0;
  const char *buffer = size > 0 ? static_cast<const char *>(bytes) : "";
  return open_buffer("sdblk_open_buffer", buffer, size > 0 ? size : 0, record_length);
}

void sdblk_freevol(SDBlkVol *vol) {
  if (vol == nullptr) return;
  memory_free(vol->filename);
  freearr(vol->abbrs, nullptr);
  free_whole(vol->whole);
  memory_free(vol);
}

void sdblk_closevol(SDBlkVol *vol) {
  if (vol == nullptr) return;
  freearr(vol->abbrs, sdblk_free);
  vol->abbrs = nullptr;
  unmap(vol);
  sdblk_freevol(vol);
}
