// The bytes of a file that a view reads.
#ifndef VIEWS_INPUT_H_
#define VIEWS_INPUT_H_

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

#include "seed/whole.h"
#include "views/mapping_guard.h"
#include "views/view.h"

namespace tarvik {

// Opens one file after the other for whole reading.  A file of up to kReadBytes is read at once
// into memory that is kept from file to file, a larger one is mapped.  A file that becomes shorter
// while it is read does no harm: the bytes that are gone read as zeros, and changed tells.
//
// One object serves one thread at a time.
class Input {
 public:
  static constexpr std::int64_t kReadBytes = std::int64_t{1} << 20;

  Input() = default;
  ~Input() { close(); }
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

  // Opens a file, after closing the one before.  record_length is the length in force at first,
  // bytes.  False when it is no regular file, or cannot be opened or read; error says why.  Throws
  // std::bad_alloc.
  bool open(const Source &source, std::int32_t record_length, const SDBlkWholeOptions &options);
  // Closes the volume; its blocks must be released before, or not be used any more.
  void close();

  // The volume, its size in bytes and the time of its last change, as they were when it was opened.
  [[nodiscard]] SDBlkVol *volume() const { return volume_; }
  [[nodiscard]] std::int64_t size() const { return size_; }
  [[nodiscard]] const std::timespec &modified() const { return modified_; }

  // Asked when the volume was read, before it is closed: whether bytes of it were not to be had, so
  // that what was read is not what the file holds.  error then says why.
  [[nodiscard]] bool changed();

  // Why open failed or what changed saw: a text for people, without the file's name.
  [[nodiscard]] const std::string &error() const { return error_; }

 private:
  struct Wanted {
    std::int32_t record_length;
    const SDBlkWholeOptions *options;
  };

  bool open_descriptor(int descriptor, const Source &source, const Wanted &wanted);
  bool read_all(int descriptor, const Wanted &wanted);
  bool map(const Source &source, const Wanted &wanted);
  bool fail();
  [[nodiscard]] bool is_mapped() const { return volume_ != nullptr && volume_->fd >= 0; }

  std::unique_ptr<char[]> buffer_;
  SDBlkVol *volume_ = nullptr;
  std::int64_t size_ = 0;
  std::timespec modified_ = {};
  std::int64_t missing_ = 0;  // bytes that were not there any more when the file was read
  MappingGuard guard_;
  std::string error_;
};

}  // namespace tarvik

#endif  // VIEWS_INPUT_H_
