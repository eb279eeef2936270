// Real numbers in the fixed pictures of the manual ("-#.#####E-##"), which nearly every response
// value is written in: read eight digits at a time.
#ifndef SEED_PICTURE_H_
#define SEED_PICTURE_H_

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace picture {

// Powers of ten that a double holds exactly.
inline constexpr std::array<double, 23> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The value of eight digits of which the first is the lowest byte; false when one is no digit.
inline bool eight_digits(std::uint64_t text, std::uint64_t *value) {
  constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0;
  constexpr std::uint64_t kZeros = 0x3030303030303030;
  if (((text & kHigh) | (((text + 0x0606060606060606) & kHigh) >> 4)) != 0x3333333333333333) {
    return false;
  }
  // Neighbours are joined to pairs, pairs to fours, fours to eight.
  text -= kZeros;
  text = text * 10 + (text >> 8);
  constexpr std::uint64_t kPairs = 0x000000FF000000FF;
  *value = ((text & kPairs) * (100 + (std::uint64_t{1000000} << 32)) +
            ((text >> 16) & kPairs) * (1 + (std::uint64_t{10000} << 32))) >>
           32;
  return true;
}

// A number with kSign places for its sign and kDecimals digits behind the point.  False for any
// other text, and for exponents that one exact operation does not reach.
template <int kSign, int kDecimals>
bool read(const char *text, double *value) {
  constexpr int kMostPowers = static_cast<int>(kPowers.size()) - 1;
  if constexpr (std::endian::native != std::endian::little) return false;
  const char *digit = text + kSign;
  const char *exponent = digit + 2 + kDecimals;
  std::uint64_t decimals = 0;
  std::memcpy(&decimals, digit + 2, sizeof decimals);
  decimals = decimals << (64 - 8 * kDecimals) | std::uint64_t{0x3030303030303030} >> 8 * kDecimals;
  std::uint64_t fraction = 0;
  if (!eight_digits(decimals, &fraction)) return false;
  const auto whole = static_cast<unsigned char>(*digit - '0');
  const auto tens = static_cast<unsigned char>(exponent[2] - '0');
  const auto ones = static_cast<unsigned char>(exponent[3] - '0');
  const bool negative = kSign == 1 && *text == '-';
  const bool signs_fit = (kSign == 0 || negative || *text == ' ' || *text == '+') &&
                         (exponent[1] == '+' || exponent[1] == '-');
  if (!signs_fit || whole > 9 || tens > 9 || ones > 9 || digit[1] != '.' || exponent[0] != 'E') {
    return false;
  }
  constexpr auto kScale = static_cast<std::uint64_t>(kPowers[kDecimals]);
  const auto mantissa = static_cast<double>(whole * kScale + fraction);
  const int power = (exponent[1] == '-' ? -(tens * 10 + ones) : tens * 10 + ones) - kDecimals;
  if (power < -kMostPowers || power > kMostPowers) return false;
  const double size = power < 0 ? mantissa / kPowers[static_cast<std::size_t>(-power)]
                                : mantissa * kPowers[static_cast<std::size_t>(power)];
  *value = negative ? -size : size;
  return true;
}

// A field of a width that one of the pictures has.
inline bool read_field(const char *text, std::int32_t width, double *value) {
  switch (width) {
    case 10: return read<0, 4>(text, value);
    case 11: return read<1, 4>(text, value);
    case 12: return read<1, 5>(text, value);
    case 14: return read<1, 7>(text, value);
    default: return false;
  }
}

}  // namespace picture

#endif  // SEED_PICTURE_H_
