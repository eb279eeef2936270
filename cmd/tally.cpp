#include "cmd/tally.h"

#include <string_view>

#include "support/output.h"

namespace tarvik {

void Tally::count(const SDBlk &block) {
  if (block.blkdef == nullptr) ++unknown_;
  ++by_type_[static_cast<unsigned char>(block.record_type)];
}

void Tally::print() const {
  output_print("# Us = %ld\n", unknown_);
  for (const char type : std::string_view("VASTDRQM")) {
    output_print("# %cs = %ld\n", type, by_type_[static_cast<unsigned char>(type)]);
  }
}

}  // namespace tarvik
