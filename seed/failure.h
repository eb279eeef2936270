// What a function that fails keeps with the volume, beside the messages that it registers.
#ifndef TARVIK_SEED_FAILURE_H_
#define TARVIK_SEED_FAILURE_H_

#include <cstdint>

#include "seed/sdblk.h"

namespace tarvik {

// One call of a public function: made at its start, asked where it fails.
class Attempt {
 public:
  Attempt() noexcept;
  // Keeps the failure of what is read at an offset, of a block.
  void keep(SDBlkVol *vol, std::int64_t offset, std::int64_t block) const noexcept;

 private:
  std::int64_t messages_;  // registered so far on this thread
  std::int64_t refusals_;  // of memory so far on this thread
};

// Says which field a call fails in.  key is a constant.
void note_failed_field(const char *key) noexcept;

}  // namespace tarvik

#endif  // TARVIK_SEED_FAILURE_H_
