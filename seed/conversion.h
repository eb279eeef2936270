// What the decoder does with a field's bytes, worked out from the field's kind and format.
#ifndef SEED_CONVERSION_H_
#define SEED_CONVERSION_H_

#include <cstdint>
#include <string_view>

#include "seed/sdblk.h"

namespace tarvik {

enum class Conversion : std::uint8_t {
  text,
  digits,  // decimal integer
  byte,
  ubyte,
  word,
  uword,
  integer32,  // LONG and ULONG: the same 32 bits
  lookup_code,
  real,  // decimal real number
  time,  // SEED time text
  btime,
  ieee_float,
  int_array,
  double_array,
  string_array,
  group_array,
  ref_array,
  nothing,
};

constexpr Conversion conversion_of_integer(std::string_view format) {
  if (format == "BYTE") return Conversion::byte;
  if (format == "UBYTE") return Conversion::ubyte;
  if (format == "WORD") return Conversion::word;
  if (format == "UWORD") return Conversion::uword;
  if (format == "LONG" || format == "ULONG") return Conversion::integer32;
  return Conversion::digits;
}

constexpr Conversion conversion_of_real(std::string_view format) {
  if (format == "TIME") return Conversion::time;
  if (format == "BTIME") return Conversion::btime;
  if (format == "FLOAT") return Conversion::ieee_float;
  return Conversion::real;
}

constexpr Conversion conversion_of(std::int32_t kind, std::string_view format) {
  switch (kind) {
    case SDBLK_INT: return conversion_of_integer(format);
    case SDBLK_ABBR_KEY: return Conversion::lookup_code;
    case SDBLK_DOUBLE: return conversion_of_real(format);
    case SDBLK_STRING: return Conversion::text;
    case SDBLK_INT_ARRAY: return Conversion::int_array;
    case SDBLK_DOUBLE_ARRAY: return Conversion::double_array;
    case SDBLK_STRING_ARRAY: return Conversion::string_array;
    case SDBLK_GROUP_ARRAY: return Conversion::group_array;
    case SDBLK_REF_ARRAY: return Conversion::ref_array;
    default: return Conversion::nothing;
  }
}

}  // namespace tarvik

#endif  // SEED_CONVERSION_H_
