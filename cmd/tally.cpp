#include "cmd/tally.h"

#include "support/output.h"

void Tally::count(const SDBlk &block) {
  if (block.blkdef == nullptr) ++counts_[0];
  const std::size_t place = kLetters.find(block.record_type, 1);
  if (place != std::string_view::npos) ++counts_[place];
}

void Tally::print() const {
  for (std::size_t i = 0; i < kLetters.size(); ++i) {
    output_print("# %cs = %ld\n", kLetters[i], counts_[i]);
  }
}
