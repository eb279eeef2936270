// Opening a volume, for both ways of reading.
#ifndef SEED_OPEN_H_
#define SEED_OPEN_H_

#include <cstdint>

#include "seed/sdblk.h"

namespace tarvik {

// A volume from a file of at least smallest bytes, mapped, or from memory; record_length below 1
// stands for the default.  nullptr, with a message registered that function begins, on failure.
SDBlkVol *open_file(const char *function, const char *path, std::int32_t record_length,
                    std::int64_t smallest);
SDBlkVol *open_buffer(const char *function, const char *buffer, std::int64_t size,
                      std::int32_t record_length);

}  // namespace tarvik

#endif  // SEED_OPEN_H_
