// What a record header looks like in whole reading, and what may stand between records.
#ifndef SEED_WHOLE_HEADER_H_
#define SEED_WHOLE_HEADER_H_

#include <cstdint>

#include "seed/format.h"

namespace tarvik {

// The bytes of a volume.
struct Image {
  const char *bytes;
  std::int64_t size;
};

enum class Header : std::uint8_t { none, control, data };

// The kind of header that stands at an offset from 0 to the image's size.
Header header_at(const Image &image, std::int64_t offset);

// The first offset from from on, before to, at which a header stands; else to, which is not past
// the image's end.
std::int64_t find_header(const Image &image, std::int64_t from, std::int64_t to);

// Whether what stands at an offset can only fill up: no header, but blanks and line ends after at
// most a number.  False at the image's end.
bool is_filler_at(const Image &image, std::int64_t offset);

// Whether bytes are nothing but digits, blanks, NULs, CRs and LFs.
bool is_padding(const char *bytes, std::int64_t size);

inline constexpr std::int32_t kNoNumber = -1;

// The number in the first six bytes of a header, or kNoNumber.
std::int32_t record_number(const char *header);

// Whether a number follows another; kNoNumber follows nothing, and nothing follows it.
bool is_one_above(std::int32_t number, std::int32_t before);

}  // namespace tarvik

#endif  // SEED_WHOLE_HEADER_H_
