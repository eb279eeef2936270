// What the SEED format fixes, and the decoder's bounds for it.
#ifndef SEED_FORMAT_H_
#define SEED_FORMAT_H_

#include <cstddef>
#include <cstdint>

namespace tarvik {

// Bytes before the fields: of a record (number, type letter, continuation flag), of a control
// blockette (type, length), of a data blockette (type, offset of the next one); and of a data
// record's header with its fixed section.
inline constexpr std::int64_t kHeaderBytes = 8;
inline constexpr std::int64_t kTypeBytes = 3;
inline constexpr std::int64_t kLengthBytes = 4;
inline constexpr std::int64_t kPrefixBytes = kTypeBytes + kLengthBytes;
inline constexpr std::int64_t kLinkBytes = 4;
inline constexpr std::int64_t kDataHeaderBytes = 48;

// The start time in a data record, a binary time.
inline constexpr std::int64_t kStartTime = 20;

// A field's text is shorter than this, and a number is read from at most so many characters of it.
inline constexpr std::int32_t kFieldTextSize = 4096;
inline constexpr std::int32_t kNumberWidth = 80;

// The data-only blockette, which states a data record's length.
inline constexpr std::int32_t kDataOnlyType = 1000;

// The volume identifiers, which state the length of the records in their field 4.
constexpr bool is_volume_identifier(std::int32_t type) {
  return type == 5 || type == 8 || type == 10;
}

// The blockettes of a channel's response.
constexpr bool is_response(std::int32_t type) { return type >= 53 && type <= 62 && type != 59; }

}  // namespace tarvik

#endif  // SEED_FORMAT_H_
