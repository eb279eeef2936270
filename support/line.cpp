#include "support/line.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

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

// A double as mantissa * 2^-shift.
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

// A number of millionths: the division is by a constant.
char *put_millionths(char *out, std::uint64_t value) {
  out = put_char(put_integer(out, static_cast<std::int64_t>(value / 1000000)), '.');
  return put_digits<6>(out, static_cast<std::int64_t>(value % 1000000));
}

// A number of 2^43 or more, infinity, or no number.
char *put_large_fixed(char *out, double size, int decimals) {
  constexpr std::size_t kMostBytes = 320;
  if (std::isnan(size)) return put_text(out, "nan");
  if (std::isinf(size)) return put_text(out, "inf");
  return std::to_chars(out, out + kMostBytes, size, std::chars_format::fixed, decimals).ptr;
}

}  // namespace

char *put_large_integer(char *out, std::int64_t value) {
  if (value < 0 || value >= 10000) return put_digits(out, value, 1);
  const auto size = static_cast<std::uint64_t>(value);
  if (size < 100) return put_pair(out, size);
  if (size >= 1000) return put_pair(put_pair(out, size / 100), size % 100);
  return put_pair(put_char(out, static_cast<char>('0' + size / 100)), size % 100);
}

char *put_digits(char *out, std::int64_t value, int digits) {
  const std::uint64_t size = put_sign(&out, value);
  const int needed = count_digits(size);
  return put_last_digits(out, size, needed < digits ? digits : needed);
}

char *put_fixed(char *out, double value, int decimals) {
  if (std::signbit(value)) out = put_char(out, '-');
  const double size = std::fabs(value);
  const Binary binary = take_apart(size);
  // Below 2^43 the scaled value fits 64 bits.
  if (binary.shift < 10) return put_large_fixed(out, size, decimals);
  const std::uint64_t power = kPowersOfTen[static_cast<std::size_t>(decimals)];
  const std::uint64_t scaled = scale(binary, power);
  if (decimals == 6) return scaled == 0 ? put_text(out, "0.000000") : put_millionths(out, scaled);
  out = put_integer(out, static_cast<std::int64_t>(scaled / power));
  if (decimals == 0) return out;
  return put_last_digits(put_char(out, '.'), scaled % power, decimals);
}

// Plain arithmetic on bytes, which the compiler turns into vectors.
char *put_hex(char *out, const char *bytes, std::size_t count) {
  const auto digit = [](unsigned nibble) {
    return static_cast<char>(nibble + '0' + (nibble > 9 ? 'a' - '0' - 10 : 0));
  };
  for (std::size_t i = 0; i < count; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    out[2 * i] = digit(byte >> 4);
    out[2 * i + 1] = digit(byte & 0xFU);
  }
  return out + 2 * count;
}
