// Binary values of data records and data blockettes.
#ifndef SEED_BINARY_H_
#define SEED_BINARY_H_

#include <bit>
#include <cstddef>
#include <cstdint>

#include "support/epoch.h"
#include "support/load.h"

namespace tarvik {

inline std::int32_t byte_at(const char *byte) { return std::bit_cast<std::int8_t>(*byte); }
inline std::int32_t ubyte_at(const char *byte) { return static_cast<unsigned char>(*byte); }
inline std::int32_t word_at(const char *bytes, bool big_endian) {
  return static_cast<std::int16_t>(load_u16(bytes, big_endian));
}
inline std::int32_t integer32_at(const char *bytes, bool big_endian) {
  return static_cast<std::int32_t>(load_u32(bytes, big_endian));
}

inline constexpr std::size_t kBinaryTimeSize = 10;

// A SEED binary time: year, day, hour, minute, second, an unused byte, ten-thousandths of a second.
inline double binary_time_at(const char *time, bool big_endian) {
  const double seconds = ubyte_at(time + 6) + 0.0001 * load_u16(time + 8, big_endian);
  return h2e(load_u16(time, big_endian), load_u16(time + 2, big_endian), ubyte_at(time + 4),
             ubyte_at(time + 5), seconds);
}

}  // namespace tarvik

#endif  // SEED_BINARY_H_
