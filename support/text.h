/* Text utilities, the same in every locale. */
#ifndef SUPPORT_TEXT_H_
#define SUPPORT_TEXT_H_

#include "support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 1 for NULL, the empty text and text of white space only; else 0. */
SDBLK_API int blank(const char *text);
/* Drops one newline at the end of text. */
SDBLK_API void chomp(char *text);
/* strtod of the "C" locale: the same value and the same stopping place (*end unless end is NULL).
 */
SDBLK_API double fix_strtod(const char *text, char **end);

#ifdef __cplusplus
}

#include <cstdint>
#include <string_view>

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
#endif

#endif /* SUPPORT_TEXT_H_ */
