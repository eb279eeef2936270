// Decimal digits, eight at a time as one word of which the first character is the lowest byte, and
// powers of ten.
#ifndef SUPPORT_DIGITS_H_
#define SUPPORT_DIGITS_H_

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace tarvik {

// Powers of ten that a double holds exactly.
inline constexpr std::array<double, 23> kExactPowers = {
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Between the order of the machine's bytes and that with the lowest first.
constexpr std::uint64_t lowest_first(std::uint64_t word) {
  return std::endian::native == std::endian::big ? __builtin_bswap64(word) : word;
}

inline std::uint64_t load_eight(const char *text) {
  std::uint64_t word = 0;
  std::memcpy(&word, text, sizeof word);
  return lowest_first(word);
}

inline void store_eight(char *text, std::uint64_t characters) {
  const std::uint64_t word = lowest_first(characters);
  std::memcpy(text, &word, sizeof word);
}

inline constexpr std::uint64_t kEightZeros = 0x3030303030303030;  // "00000000"

// The value of eight digits; false when one is no digit.  Digits are the bytes 0x30 to 0x39: their
// high half is 3, and still 3 with 6 added.  Three multiplications take the place of one a digit.
inline bool read_eight_digits(std::uint64_t text, std::uint64_t *value) {
  constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0;
  if (((text & kHigh) | (((text + 0x0606060606060606) & kHigh) >> 4)) != 0x3333333333333333) {
    return false;
  }
  // Neighbours are joined to pairs, pairs to fours, fours to eight.
  text -= kEightZeros;
  text = text * 10 + (text >> 8);
  constexpr std::uint64_t kPairs = 0x000000FF000000FF;
  *value = ((text & kPairs) * (100 + (std::uint64_t{1000000} << 32)) +
            ((text >> 16) & kPairs) * (1 + (std::uint64_t{10000} << 32))) >>
           32;
  return true;
}

// The first kCount of eight characters, as the last of eight digits after zeros.
template <int kCount>
std::uint64_t first_of_eight(const char *text) {
  static_assert(kCount > 0 && kCount < 8);
  return load_eight(text) << (64 - 8 * kCount) | kEightZeros >> 8 * kCount;
}

}  // namespace tarvik

#endif  // SUPPORT_DIGITS_H_
