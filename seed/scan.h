// Scanners of SEED's ASCII fields over bounded text; the public ones in sdblk.h stand on these.
#ifndef SEED_SCAN_H_
#define SEED_SCAN_H_

#include <cstdint>
#include <string_view>

#include "seed/sdblk.h"
#include "support/parse.h"

namespace tarvik {

// The text up to its first 0 byte.
inline std::string_view until_zero(std::string_view text) {
  const std::size_t zero = text.find('\0');
  return zero == std::string_view::npos ? text : text.substr(0, zero);
}

// A fixed-width field: up to the first 0 byte, without white space at both ends.
inline std::string_view trimmed_field(std::string_view field) {
  std::size_t end = 0;  // fields are short: a loop beats a search
  while (end < field.size() && field[end] != '\0') ++end;
  std::size_t begin = 0;
  while (begin < end && is_space(field[begin])) ++begin;
  while (end > begin && is_space(field[end - 1])) --end;
  return field.substr(begin, end - begin);
}

// A variable-length field at the start of text: its value, and the characters it takes with its
// "~".
struct VariableField {
  std::string_view value;
  std::size_t consumed;
};
VariableField variable_field(std::string_view text);

// scan_int and scan_double of a text that holds no 0 byte.
int scan_integer(std::string_view text, const char *format, std::int32_t *result);
int scan_real(std::string_view text, double *result);

// scan_time's value.
double seed_time(std::string_view text);

}  // namespace tarvik

#endif  // SEED_SCAN_H_
