// Characters and numbers of texts that need not end in a 0 byte, the same in every locale.
#ifndef SUPPORT_PARSE_H_
#define SUPPORT_PARSE_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarvik {

// White space of the "C" locale.
constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_blank(std::string_view text) {
  for (const char c : text) {
    if (!is_space(c)) return false;
  }
  return true;
}

// What fix_strtod reads at the start of a text that need not end in a 0 byte: the value and the
// number of characters taken, 0 when there is no number.
struct RealPrefix {
  double value;
  std::size_t length;
};
RealPrefix read_real(std::string_view text);

// What strtol (base 10) reads: saturated at 64 bits, with the number of characters taken, white
// space and sign included; 0 when there is no number.
struct IntegerPrefix {
  std::int64_t value;
  std::size_t length;
};
IntegerPrefix read_integer(std::string_view text);

}  // namespace tarvik

#endif  // SUPPORT_PARSE_H_
