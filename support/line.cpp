#include "support/line.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tarvik {

namespace {

__extension__ using Wide = unsigned __int128;

consteval std::array<std::uint64_t, 20> make_powers_of_ten() {
  std::array<std::uint64_t, 20> powers = {};
  std::uint64_t power = 1;
  for (std::uint64_t &entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}
constexpr std::array<std::uint64_t, 20> kPowersOfTen = make_powers_of_ten();

int count_digits(std::uint64_t value) {
  // 1233 / 4096 is the logarithm of 2 to base 10: a guess that is right or one too low.
  const int guess = static_cast<int>(std::bit_width(value | 1)) * 1233 >> 12;
  return guess + (value >= kPowersOfTen[static_cast<std::size_t>(guess)] ? 1 : 0);
}

// The lowest digits of value, as many as asked for, with zeros in front.
char *put_last_digits(char *out, std::uint64_t value, int digits) {
  char *end = out + digits;
  char *at = end;
  while (at - out >= 2) {
    at -= 2;
    put_pair(at, value % 100);
    value /= 100;
  }
  if (at != out) *out = static_cast<char>('0' + value % 10);
  return end;
}

// The size of value, and a minus sign at *out if it needs one.
std::uint64_t put_sign(char **out, std::int64_t value) {
  if (value >= 0) return static_cast<std::uint64_t>(value);
  *out = put_char(*out, '-');
  return -static_cast<std::uint64_t>(value);
}

// A double as mantissa * 2^-shift: what is exact in integers needs no library's long division.
struct Binary {
  std::uint64_t mantissa;
  int shift;
};
Binary take_apart(double size) {
  constexpr int kMantissaBits = 52;
  constexpr int kBias = 1023 + kMantissaBits;
  const auto bits = std::bit_cast<std::uint64_t>(size);
  const int exponent = static_cast<int>(bits >> kMantissaBits);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << kMantissaBits) - 1);
  if (exponent == 0) return {fraction, kBias - 1};
  return {fraction | std::uint64_t{1} << kMantissaBits, kBias - exponent};
}

// mantissa * power / 2^shift, rounded to an integer, to the even one when it lies half way.  The
// shift is 10 at least, and the product has less than 74 bits.
std::uint64_t scale(Binary binary, std::uint64_t power) {
  const Wide product = Wide{binary.mantissa} * power;
  const auto low = static_cast<std::uint64_t>(product);
  const auto high = static_cast<std::uint64_t>(product >> 64);
  if (binary.shift < 64) [[likely]] {
    const std::uint64_t whole = high << (64 - binary.shift) | low >> binary.shift;
    const std::uint64_t half = std::uint64_t{1} << (binary.shift - 1);
    const std::uint64_t rest = low & (half * 2 - 1);
    return whole + (rest + (whole & 1) > half ? 1 : 0);
  }
  if (binary.shift > 80) return 0;
  const auto whole = static_cast<std::uint64_t>(product >> binary.shift);
  const Wide rest = product & ((Wide{1} << binary.shift) - 1);
  const Wide half = Wide{1} << (binary.shift - 1);
  return whole + (rest + (whole & 1) > half ? 1 : 0);
}

// A number of millionths.  Its division is by a constant, which compilers turn into a multiplication.
template <typename Number>
char *put_millionths(char *out, Number value) {
  out = put_char(put_integer(out, static_cast<std::int64_t>(value / 1000000)), '.');
  return put_digits<6>(out, static_cast<std::int64_t>(value % 1000000));
}

// A number of 2^43 or more, infinity, or no number.
char *put_large_fixed(char *out, double size, int decimals) {
  constexpr std::size_t kMostBytes = 320;
  return std::to_chars(out, out + kMostBytes, size, std::chars_format::fixed, decimals).ptr;
}

// put_fixed without the sign.
char *put_exact_fixed(char *out, double size, int decimals) {
  const Binary binary = take_apart(size);
  // Below 2^43 the scaled value fits 64 bits.
  if (binary.shift < 10) return put_large_fixed(out, size, decimals);
  const std::uint64_t power = kPowersOfTen[static_cast<std::size_t>(decimals)];
  const std::uint64_t scaled = scale(binary, power);
  if (decimals == 6) return put_millionths(out, scaled);
  out = put_integer(out, static_cast<std::int64_t>(scaled / power));
  if (decimals == 0) return out;
  return put_last_digits(put_char(out, '.'), scaled % power, decimals);
}

// Sixteen bytes, the same with signs, and as two numbers.  One operation on a vector does for all of
// them what a loop would do for one byte at a time.
using HexPiece = unsigned char __attribute__((vector_size(16)));
using SignedPiece = signed char __attribute__((vector_size(16)));
using HexHalves = std::uint64_t __attribute__((vector_size(16)));

char *put_hex_piece(char *out, HexPiece piece) {
  const auto digits = [](HexPiece nibbles) {
    // Nibbles are no negative numbers, and signed ones are compared in one step.
    const auto above_nine = reinterpret_cast<HexPiece>(reinterpret_cast<SignedPiece>(nibbles) > 9);
    return nibbles + '0' + (above_nine & ('a' - '0' - 10));
  };
  const HexPiece high = digits(piece >> 4);
  const HexPiece low = digits(piece & 0xF);
  const HexPiece first =
      __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const HexPiece second = __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                                  13, 29, 14, 30, 15, 31);
  std::memcpy(out, &first, sizeof first);
  std::memcpy(out + sizeof first, &second, sizeof second);
  return out + 2 * sizeof piece;
}

// Eight bytes or fewer as a word; the digits of the others are surplus.
char *put_hex_word(char *out, std::uint64_t word, std::size_t count) {
  put_hex_piece(out, reinterpret_cast<HexPiece>(HexHalves{word, 0}));
  return out + 2 * count;
}

}  // namespace

char *put_large_integer(char *out, std::int64_t value) {
  if (value < 0 || value >= 1000000000) return put_digits(out, value, 1);
  const auto size = static_cast<std::uint32_t>(value);
  const std::uint32_t thousands = size / 1000;
  if (thousands < 1000) return put_triple(put_small_integer(out, thousands), size % 1000);
  out = put_triple(put_small_integer(out, thousands / 1000), thousands % 1000);
  return put_triple(out, size % 1000);
}

char *put_digits(char *out, std::int64_t value, int digits) {
  const std::uint64_t size = put_sign(&out, value);
  const int needed = count_digits(size);
  return put_last_digits(out, size, needed < digits ? digits : needed);
}

char *put_fixed(char *out, double value, int decimals) {
  // Signs follow no pattern: nothing branches on them.
  *out = '-';
  out += std::signbit(value) ? 1 : 0;
  const double size = std::fabs(value);
  constexpr double kMostQuick = 4096.0;
  if (decimals == 6 && size < kMostQuick) [[likely]] {
    // One multiplication tells the nearest millionth, unless the product, which is off by far less
    // than a thousandth, lies half way nearly.
    constexpr double kTooNear = 0.001;
    const double product = size * 1e6;
    const auto whole = static_cast<std::int64_t>(product);
    const double beyond_half = product - static_cast<double>(whole) - 0.5;
    if (std::fabs(beyond_half) > kTooNear) [[likely]] {
      return put_millionths(out, static_cast<std::uint32_t>(whole + (beyond_half > 0 ? 1 : 0)));
    }
  }
  return put_exact_fixed(out, size, decimals);
}

char *put_hex(char *out, const char *bytes, std::size_t count) {
  for (; count >= sizeof(HexPiece); count -= sizeof(HexPiece)) {
    HexPiece piece;
    std::memcpy(&piece, bytes, sizeof piece);
    out = put_hex_piece(out, piece);
    bytes += sizeof piece;
  }
  std::uint64_t word = 0;
  if (count >= sizeof word) {
    std::memcpy(&word, bytes, sizeof word);
    out = put_hex_word(out, word, sizeof word);
    bytes += sizeof word;
    count -= sizeof word;
  }
  if (count == 0) return out;
  word = 0;
  std::memcpy(&word, bytes, count);
  return put_hex_word(out, word, count);
}

}  // namespace tarvik
