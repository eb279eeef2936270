/* Binary values in storage order to host order.  Each converts count values at *source, most (m) or
 * least (v) significant byte first, to result, and moves *source behind them. */
#ifndef SUPPORT_BYTEORDER_H_
#define SUPPORT_BYTEORDER_H_

#include <stdint.h>

#include "support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

SDBLK_API void mi2hi(const char **source, int32_t *result, int count);
SDBLK_API void vi2hi(const char **source, int32_t *result, int count);
SDBLK_API void umi2hi(const char **source, uint32_t *result, int count);
SDBLK_API void uvi2hi(const char **source, uint32_t *result, int count);
SDBLK_API void ms2hs(const char **source, int16_t *result, int count);
SDBLK_API void vs2hs(const char **source, int16_t *result, int count);
SDBLK_API void ums2hs(const char **source, uint16_t *result, int count);
SDBLK_API void uvs2hs(const char **source, uint16_t *result, int count);
SDBLK_API void mf2hf(const char **source, float *result, int count);
SDBLK_API void vf2hf(const char **source, float *result, int count);

#ifdef __cplusplus
}

#include <bit>
#include <cstdint>

// One value at bytes, in the byte order that big_endian says; the building blocks of the above.
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
#endif

#endif /* SUPPORT_BYTEORDER_H_ */
