// Binary values of either byte order.
#ifndef SUPPORT_LOAD_H_
#define SUPPORT_LOAD_H_

#include <bit>
#include <cstdint>

namespace tarvik {

// One value at bytes, in the byte order that big_endian says.
inline std::uint16_t load_u16(const char *bytes, bool big_endian) {
  const auto first = static_cast<unsigned char>(bytes[0]);
  const auto second = static_cast<unsigned char>(bytes[1]);
  return static_cast<std::uint16_t>(big_endian ? first << 8 | second : second << 8 | first);
}
inline std::uint32_t load_u32(const char *bytes, bool big_endian) {
  const std::uint32_t first = load_u16(bytes, big_endian);
  const std::uint32_t second = load_u16(bytes + 2, big_endian);
  return big_endian ? first << 16 | second : second << 16 | first;
}
inline float load_float(const char *bytes, bool big_endian) {
  return std::bit_cast<float>(load_u32(bytes, big_endian));
}

}  // namespace tarvik

#endif  // SUPPORT_LOAD_H_
