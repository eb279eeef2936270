// Telling a program what was passed over and what could not be taken at its word.
#ifndef SEED_WHOLE_FINDINGS_H_
#define SEED_WHOLE_FINDINGS_H_

#include <cstdint>

#include "seed/whole/state.h"
#include "support/api.h"

namespace tarvik {

// A skip of the bytes from an offset on.
void report_skip(SDBlkWhole *whole, SDBlkCause cause, std::int64_t offset, std::int64_t length);

// A note on a record or, where block is not -1, on a block; field is a path or nullptr.  The
// sentence is made only when somebody takes it.
void report_note(SDBlkWhole *whole, SDBlkCause cause, std::int64_t offset, std::int64_t block,
                 const char *field, const char *format, ...) SDBLK_PRINTF(6, 7);

}  // namespace tarvik

#endif  // SEED_WHOLE_FINDINGS_H_
