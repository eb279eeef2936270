// What whole reading keeps of a volume.
#ifndef SEED_WHOLE_STATE_H_
#define SEED_WHOLE_STATE_H_

#include <cstdint>

#include "seed/whole.h"
#include "seed/whole/chain.h"
#include "seed/whole/definitions.h"
#include "seed/whole/header.h"

namespace tarvik {

// The record that is being read.
struct Record {
  std::int64_t offset = 0;
  std::int64_t length = 0;
  std::int32_t number = kNoNumber;
  char letter = '\0';
};

}  // namespace tarvik

struct SDBlkWhole {
  explicit SDBlkWhole(const SDBlkWholeOptions &wanted)
      : options(wanted), definitions(wanted.keep != SDBLK_KEEP_NUMBERS) {}

  SDBlkWholeOptions options;
  SDBlkWholeCounts counts = {};
  std::int64_t in_force = 0;                     // the record length
  std::int64_t next = 0;                         // offset at which the next record is looked for
  tarvik::Header header = tarvik::Header::none;  // what stands there, or none where nobody looked
  tarvik::Record record;
  std::int64_t pos = 0;  // in a control record: how far it is read, from its start; else 0
  tarvik::Chain chain;
  tarvik::Definitions definitions;
};

#endif  // SEED_WHOLE_STATE_H_
