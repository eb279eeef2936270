// A volume in memory and the block that the parser fills, for tests.
#ifndef TESTS_UTIL_READER_H_
#define TESTS_UTIL_READER_H_

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"

// Reads a volume block by block.  Its image has exactly the bytes given, so that the sanitizers see
// a step after them.
class Reader {
 public:
  explicit Reader(std::string_view bytes, std::int32_t logical_length = 0)
      : image_(bytes.begin(), bytes.end()) {
    // A null buffer would not do for a volume without bytes.
    const char *buffer = image_.empty() ? "" : image_.data();
    vol_ = sdblk_new(nullptr, buffer, static_cast<std::int32_t>(image_.size()), logical_length);
    if (vol_ == nullptr) throw std::runtime_error("sdblk_new failed");
  }
  ~Reader() {
    sdblk_free(blk_);
    sdblk_closevol(vol_);
  }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  // What sdblk_parseblk returns.
  int next() { return sdblk_parseblk(vol_, &blk_); }

  // Whether a block has been made, and the block.
  [[nodiscard]] bool has_block() const { return blk_ != nullptr; }
  [[nodiscard]] SDBlk &blk() const { return *blk_; }
  [[nodiscard]] SDBlkVol &vol() const { return *vol_; }

 private:
  std::vector<char> image_;
  SDBlkVol *vol_ = nullptr;
  SDBlk *blk_ = nullptr;
};

#endif  // TESTS_UTIL_READER_H_
