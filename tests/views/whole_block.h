// One decoded block of a volume that a test has built.
#ifndef TESTS_VIEWS_WHOLE_BLOCK_H_
#define TESTS_VIEWS_WHOLE_BLOCK_H_

#include <cstdint>
#include <stdexcept>
#include <string>

#include "seed/whole.h"
#include "tests/util/volume_writer.h"

class WholeBlock {
 public:
  // The block of a number, counted from 0; it and those before it are decoded.
  explicit WholeBlock(const volume::VolumeWriter &volume, int number = 0) : bytes_(volume.bytes()) {
    const SDBlkWholeOptions options = {nullptr, nullptr, SDBLK_KEEP_NUMBERS};
    volume_ = sdblk_open_whole_buffer(bytes_.data(), static_cast<std::int64_t>(bytes_.size()), 0,
                                      &options);
    if (volume_ == nullptr) throw std::runtime_error("the volume cannot be opened");
    for (int i = 0; i <= number; ++i) decode_next();
  }
  ~WholeBlock() {
    sdblk_free(block_);
    sdblk_closevol(volume_);
  }
  WholeBlock(const WholeBlock &) = delete;
  WholeBlock &operator=(const WholeBlock &) = delete;

  const SDBlk &operator*() const { return *block_; }

 private:
  void decode_next() {
    const int result = sdblk_parseblk(volume_, &block_);
    if (result < 0 || result == SDBLK_EOF) throw std::runtime_error("there is no further block");
    if (sdblk_unstuffblk(block_) != 0) throw std::runtime_error("the block cannot be decoded");
  }

  std::string bytes_;
  SDBlkVol *volume_ = nullptr;
  SDBlk *block_ = nullptr;
};

#endif  // TESTS_VIEWS_WHOLE_BLOCK_H_
