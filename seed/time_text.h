// Times as the listing and the station summary show them.
#ifndef SEED_TIME_TEXT_H_
#define SEED_TIME_TEXT_H_

#include "seed/sdblk.h"
#include "support/line.h"
#include "support/time_text.h"

namespace tarvik {

// "%Y:%j:%T", or NULL for the time of an empty field: at most 32 bytes.
inline char *put_time_or_null(char *out, double epoch) {
  return epoch == SDBLK_NO_TIME ? put_text(out, "NULL") : put_time(out, epoch);
}

}  // namespace tarvik

#endif  // SEED_TIME_TEXT_H_
