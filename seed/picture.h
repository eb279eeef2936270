// Real numbers in the fixed pictures of the manual ("-#.#####E-##"), which nearly every response
// value is written in: read eight digits at a time.
#ifndef SEED_PICTURE_H_
#define SEED_PICTURE_H_

#include <bit>
#include <cstddef>
#include <cstdint>

#include "support/digits.h"

namespace tarvik::picture {

// Whether a character can stand for the sign of a number.  Signs follow no pattern, so nothing
// branches on them.
constexpr bool may_be_sign(char c) {
  constexpr std::uint64_t kSigns = 1U << (' ' - ' ') | 1U << ('+' - ' ') | 1U << ('-' - ' ');
  const auto bit = static_cast<unsigned char>(c - ' ');
  return bit < 32 && (kSigns >> bit & 1) != 0;
}

// The power of ten of an exponent "E-##" or "E+##"; one out of all range for any other text.
inline int read_power(const char *text) {
  constexpr int kNone = 1000;
  const auto tens = static_cast<unsigned char>(text[2] - '0');
  const auto ones = static_cast<unsigned char>(text[3] - '0');
  const int size = tens > 9 || ones > 9 || text[0] != 'E' ? kNone : tens * 10 + ones;
  if (text[1] == '-') return -size;
  return text[1] == '+' ? size : kNone;
}

// A number with kSign places for its sign and kDecimals digits after the point.  False for any
// other text, and for exponents that one exact operation does not reach.
template <int kSign, int kDecimals>
bool read(const char *text, double *value) {
  constexpr int kMostPowers = static_cast<int>(kExactPowers.size()) - 1;
  const char *digit = text + kSign;
  // The digit before the point takes its place before the decimals.
  const auto whole = static_cast<unsigned char>(*digit ^ '0');
  const std::uint64_t digits = first_of_eight<kDecimals>(digit + 2) ^ std::uint64_t{whole}
                                                                          << 8 * (7 - kDecimals);
  std::uint64_t mantissa = 0;
  if (!read_eight_digits(digits, &mantissa) || digit[1] != '.') return false;
  if (kSign == 1 && !may_be_sign(*text)) return false;
  const int power = read_power(digit + 2 + kDecimals) - kDecimals;
  if (power < -kMostPowers || power > kMostPowers) return false;
  const auto exact = static_cast<double>(static_cast<std::int64_t>(mantissa));
  const double size = power < 0 ? exact / kExactPowers[static_cast<std::size_t>(-power)]
                                : exact * kExactPowers[static_cast<std::size_t>(power)];
  const bool negative = kSign == 1 && *text == '-';
  *value =
      std::bit_cast<double>(std::bit_cast<std::uint64_t>(size) | std::uint64_t{negative} << 63);
  return true;
}

// Reads numbers of one picture, of which the compiler knows all widths, that stand one after the other, until one is of another form.
// Returns how many were read.
template <int kSign, int kDecimals>
std::int32_t read_run(const char *text, std::int32_t count, double *values) {
  constexpr std::int32_t kWidth = kSign + 2 + kDecimals + 4;
  std::int32_t i = 0;
  for (; i < count && read<kSign, kDecimals>(text, &values[i]); ++i) text += kWidth;
  return i;
}

// Count fields of a width, if that is one of the pictures'.
inline std::int32_t read_fields(const char *text, std::int32_t width, std::int32_t count,
                                double *values) {
  switch (width) {
    case 10: return read_run<0, 4>(text, count, values);
    case 11: return read_run<1, 4>(text, count, values);
    case 12: return read_run<1, 5>(text, count, values);
    case 14: return read_run<1, 7>(text, count, values);
    default: return 0;
  }
}

}  // namespace tarvik::picture

#endif  // SEED_PICTURE_H_
