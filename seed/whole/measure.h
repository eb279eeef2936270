// How long a record is, in whole reading.
#ifndef SEED_WHOLE_MEASURE_H_
#define SEED_WHOLE_MEASURE_H_

#include <cstdint>

#include "seed/whole.h"
#include "seed/whole/chain.h"
#include "seed/whole/header.h"

namespace tarvik {

struct Measure {
  std::int64_t length;  // bytes, within the image
  std::int64_t stated;  // what the record says itself, or 0
  bool confirmed;       // by what follows
  bool has_note;
  SDBlkCause note;  // SDBLK_NOTE_LENGTH, _UNCONFIRMED or _CUT
  Header next;      // what stands directly after it, where that was looked at and is a header
};

// The length of the record whose header, of some kind, stands at an offset.  in_force is that of
// the last record whose length was confirmed; chain is for use as it is needed.
Measure measure_record(const Image &image, std::int64_t offset, Header kind, std::int64_t in_force,
                       Chain *chain);

}  // namespace tarvik

#endif  // SEED_WHOLE_MEASURE_H_
