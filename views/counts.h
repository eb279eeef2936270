// Blocks, counted by the letter of their record.
#ifndef VIEWS_COUNTS_H_
#define VIEWS_COUNTS_H_

#include <array>
#include <cstdint>

#include "seed/sdblk.h"
#include "views/lines.h"

namespace tarvik {

class BlockCounts {
 public:
  // A block of a type that the catalogue does not have counts as unknown, too.
  void count(const SDBlk &block) {
    if (block.blkdef == nullptr) ++by_letter_['U'];
    ++by_letter_[static_cast<unsigned char>(block.record_type)];
  }
  [[nodiscard]] std::int64_t of(char letter) const {
    return by_letter_[static_cast<unsigned char>(letter)];
  }
  // {"U":0,"V":3,"A":25,"S":57,"T":12,"D":12,"R":8,"Q":8,"M":0}
  void put(TextBuffer *out) const;

 private:
  std::array<std::int64_t, 256> by_letter_ = {};
};

}  // namespace tarvik

#endif  // VIEWS_COUNTS_H_
