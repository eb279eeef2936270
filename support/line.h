// Lines written fast: text, numbers and hexadecimal put straight where they go, an output buffer
// mostly.
#ifndef SUPPORT_LINE_H_
#define SUPPORT_LINE_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tarvik {

// Each writes at `out`, returns the end of what it wrote, and says how much room it needs.

// Most texts are short: two copies that overlap beat a call.
inline char *put_text(char *out, std::string_view text) {
  const char *from = text.data();
  const std::size_t size = text.size();
  if (size > 16) {
    std::memcpy(out, from, size);
  } else if (size >= 8) {
    std::memcpy(out, from, 8);
    std::memcpy(out + size - 8, from + size - 8, 8);
  } else if (size >= 4) {
    std::memcpy(out, from, 4);
    std::memcpy(out + size - 4, from + size - 4, 4);
  } else if (size > 0) {
    out[0] = from[0];
    out[size / 2] = from[size / 2];
    out[size - 1] = from[size - 1];
  }
  return out + size;
}
inline char *put_char(char *out, char c) {
  *out = c;
  return out + 1;
}
// "%-*s": the text and blanks up to width columns; room for 16 bytes at least.
inline char *put_padded(char *out, std::string_view text, std::size_t width) {
  if (text.size() >= width) return put_text(out, text);
  if (width <= 16) {
    std::memset(out, ' ', 16);
  } else {
    std::memset(out + text.size(), ' ', width - text.size());
  }
  put_text(out, text);
  return out + width;
}
// "000" to "999", each followed by the number of zeros before its first other digit: a look at the
// table takes the place of divisions and of branches on the length.
struct DigitTriples {
  char text[4000];
};
consteval DigitTriples make_digit_triples() {
  DigitTriples triples = {};
  char *text = triples.text;
  for (int i = 0; i < 1000; ++i) {
    *text++ = static_cast<char>('0' + i / 100);
    *text++ = static_cast<char>('0' + i / 10 % 10);
    *text++ = static_cast<char>('0' + i % 10);
    *text++ = static_cast<char>(i >= 100 ? 0 : i >= 10 ? 1 : 2);
  }
  return triples;
}
inline constexpr DigitTriples kDigitTriples = make_digit_triples();

// A number below 1000, and three digits of one.  Room for four bytes.
inline char *put_small_integer(char *out, std::uint64_t value) {
  const char *triple = &kDigitTriples.text[4 * value];
  const auto zeros = static_cast<unsigned char>(triple[3]);
  std::memcpy(out, triple + zeros, 4);
  return out + 3 - zeros;
}
inline char *put_triple(char *out, std::uint64_t value) {
  std::memcpy(out, &kDigitTriples.text[4 * value], 4);
  return out + 3;
}
// Two digits of a number below 100.
inline char *put_pair(char *out, std::uint64_t value) {
  std::memcpy(out, &kDigitTriples.text[4 * value + 1], 2);
  return out + 2;
}
// "%d" and "%ld": at most 20 bytes.  Room for four where they take fewer.
char *put_large_integer(char *out, std::int64_t value);
inline char *put_integer(char *out, std::int64_t value) {
  const auto size = static_cast<std::uint64_t>(value);
  if (size < 10) return put_char(out, static_cast<char>('0' + size));
  return size < 1000 ? put_small_integer(out, size) : put_large_integer(out, value);
}
// "%*.*ld" with as many digits at least (a minus sign comes on top): at most 20 bytes.
char *put_digits(char *out, std::int64_t value, int digits);

// put_digits with a number of digits, nine at most, that is known beforehand.
template <int kDigits>
char *put_digits(char *out, std::int64_t value) {
  static_assert(kDigits <= 9);
  constexpr std::uint64_t kLimit = [] {
    std::uint64_t limit = 1;
    for (int i = 0; i < kDigits; ++i) limit *= 10;
    return limit;
  }();
  if (static_cast<std::uint64_t>(value) >= kLimit) return put_digits(out, value, kDigits);
  auto rest = static_cast<std::uint32_t>(value);
  for (int at = kDigits - 2; at >= 0; at -= 2) {
    put_pair(out + at, rest % 100);
    rest /= 100;
  }
  if (kDigits % 2 == 1) *out = static_cast<char>('0' + rest);
  return out + kDigits;
}
// "%.*f" / "%lf", decimals from 0 to 6, of any double: at most 320 bytes.
char *put_fixed(char *out, double value, int decimals);
// Two lower-case hexadecimal digits a byte: room for kHexSurplus bytes more than they take, of
// which some may be written too.
inline constexpr std::size_t kHexSurplus = 32;
char *put_hex(char *out, const char *bytes, std::size_t count);

}  // namespace tarvik

#endif  // SUPPORT_LINE_H_
