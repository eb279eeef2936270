#include "support/byteorder.h"

#include <bit>

#include "support/load.h"

using namespace tarvik;

namespace {

template <typename T>
T load(const char *bytes, bool big_endian) {
  if constexpr (sizeof(T) == 2) {
    return static_cast<T>(load_u16(bytes, big_endian));
  } else {
    return std::bit_cast<T>(load_u32(bytes, big_endian));
  }
}

template <typename T>
void convert(const char **source, T *result, int count, bool big_endian) {
  for (int i = 0; i < count; ++i) {
    result[i] = load<T>(*source, big_endian);
    *source += sizeof(T);
  }
}

}  // namespace

void mi2hi(const char **source, int32_t *result, int count) {
  convert(source, result, count, true);
}
void vi2hi(const char **source, int32_t *result, int count) {
  convert(source, result, count, false);
}
void umi2hi(const char **source, uint32_t *result, int count) {
  convert(source, result, count, true);
}
void uvi2hi(const char **source, uint32_t *result, int count) {
  convert(source, result, count, false);
}
void ms2hs(const char **source, int16_t *result, int count) {
  convert(source, result, count, true);
}
void vs2hs(const char **source, int16_t *result, int count) {
  convert(source, result, count, false);
}
void ums2hs(const char **source, uint16_t *result, int count) {
  convert(source, result, count, true);
}
void uvs2hs(const char **source, uint16_t *result, int count) {
  convert(source, result, count, false);
}
void mf2hf(const char **source, float *result, int count) { convert(source, result, count, true); }
void vf2hf(const char **source, float *result, int count) { convert(source, result, count, false); }
