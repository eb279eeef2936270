// JSON, put straight into a line: numbers that read back exactly, times, and texts of any bytes.
#ifndef VIEWS_JSON_H_
#define VIEWS_JSON_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "views/lines.h"

namespace tarvik {

// Each writes at out and returns the end of what it wrote; room says how much it needs.

// The shortest digits that read back to the same double: "6.29e8", "-0", "0.05".  A value that is
// not finite is the text "NaN", "Infinity" or "-Infinity".  Throws std::bad_alloc.
inline constexpr std::size_t kRealRoom = 48;
char *put_json_real(char *out, double value);

// A number of more than 2^31, too.
inline constexpr std::size_t kIntegerRoom = 24;

// "2021-03-16T06:15:52.6000Z" with its quotes, from epoch seconds; null for years that do not have
// four digits or are before the first.
inline constexpr std::size_t kTimeRoom = 40;
char *put_json_time(char *out, double epoch);
// The same from microseconds; what is finer than its four decimals is cut off.
char *put_json_tick_time(char *out, std::int64_t microseconds);
// The same with six decimals, from microseconds.
char *put_json_microtime(char *out, std::int64_t microseconds);
// A file's time with nine decimals.
char *put_json_nanotime(char *out, std::int64_t seconds, std::int64_t nanoseconds);

// A text in quotes: bytes that are valid UTF-8 as they are, else every byte as the character of its
// value; only what must be escaped is escaped.
void put_json_text(TextBuffer *out, std::string_view text);
// Writes a text that is ended by a 0 where it is short and nothing in it must be escaped, as nearly
// all are, at out; returns the end, or nullptr for any other.
inline constexpr std::size_t kShortText = 32;
inline constexpr std::size_t kShortTextRoom = kShortText + 3;
char *put_short_json_text(char *out, const char *text);
// A text as a value of its own.
std::string json_text(std::string_view text);
// The same text for other formats: UTF-8, without quotes, nothing escaped.
std::string utf8_text(std::string_view text);

// Whether bytes are well-formed UTF-8.
bool is_utf8(std::string_view text);

// The decimal form that put_json_real writes, for other formats: digits without zeros at the end
// and the power of ten of the first; a finite value.
struct ShortDecimal {
  static constexpr std::size_t kMostDigits = 24;

  bool negative;
  int size;  // of digits; 1 at least
  int exponent;
  char digits[2 * kMostDigits];  // the second half is room for copies of a fixed size
};
ShortDecimal short_decimal(double value);

}  // namespace tarvik

#endif  // VIEWS_JSON_H_
