#include "seed/whole/numbers.h"

#include <cstddef>

#include "seed/binary.h"
#include "support/civil.h"
#include "support/parse.h"

namespace tarvik {
namespace {

constexpr std::int64_t kTicks = 10000;  // a second

bool is_sign_character(char c) { return c == '+' || c == '-'; }

// Digits from a position on.
std::size_t digits_at(std::string_view text, std::size_t at) {
  std::size_t end = at;
  while (end < text.size() && is_digit(text[end])) ++end;
  return end - at;
}

bool is_real(std::string_view text) {
  std::size_t at = !text.empty() && is_sign_character(text[0]) ? 1 : 0;
  const std::size_t whole = digits_at(text, at);
  at += whole;
  std::size_t fraction = 0;
  if (at < text.size() && text[at] == '.') {
    fraction = digits_at(text, ++at);
    at += fraction;
  }
  if (whole + fraction == 0) return false;
  if (at == text.size()) return true;
  if (text[at] != 'e' && text[at] != 'E') return false;
  ++at;
  if (at < text.size() && is_sign_character(text[at])) ++at;
  const std::size_t exponent = digits_at(text, at);
  return exponent > 0 && at + exponent == text.size();
}

// Takes the parts of a time text one after the other.
class TimeText {
 public:
  explicit TimeText(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool at_end() const { return rest_.empty(); }
  bool take(char c) {
    if (rest_.empty() || rest_[0] != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  // From least to most digits.
  bool number(std::size_t least, std::size_t most, std::int64_t *value) {
    const std::size_t size = digits_at(rest_, 0);
    if (size < least || size > most) return false;
    *value = 0;
    for (const char c : rest_.substr(0, size)) *value = *value * 10 + (c - '0');
    rest_.remove_prefix(size);
    return true;
  }
  // Any number of digits, as ten-thousandths.
  std::int64_t fraction() {
    const std::size_t size = digits_at(rest_, 0);
    std::int64_t ticks = 0;
    for (std::size_t i = 0; i < 4; ++i) ticks = ticks * 10 + (i < size ? rest_[i] - '0' : 0);
    rest_.remove_prefix(size);
    return ticks;
  }

 private:
  std::string_view rest_;
};

struct Clock {
  std::int64_t year = 0;
  std::int64_t day = 1;
  std::int64_t hour = 0;
  std::int64_t minute = 0;
  std::int64_t second = 0;
  std::int64_t ticks = 0;
};

double epoch_of(const Clock &clock) {
  const std::int64_t days = first_day_of(clock.year) + clock.day - 1;
  const std::int64_t seconds =
      days * kDaySeconds + clock.hour * 3600 + clock.minute * 60 + clock.second;
  return static_cast<double>(seconds * kTicks + clock.ticks) / static_cast<double>(kTicks);
}

// Each part may end the text; "." may come after seconds only.
bool read_clock(TimeText text, Clock *clock) {
  if (!text.number(4, 4, &clock->year)) return false;
  if (text.at_end()) return true;
  if (!text.take(',') || !text.number(1, 3, &clock->day)) return false;
  if (text.at_end()) return true;
  if (!text.take(',') || !text.number(1, 2, &clock->hour)) return false;
  if (text.at_end()) return true;
  if (!text.take(':') || !text.number(1, 2, &clock->minute)) return false;
  if (text.at_end()) return true;
  if (!text.take(':') || !text.number(1, 2, &clock->second)) return false;
  if (text.at_end()) return true;
  if (!text.take('.')) return false;
  clock->ticks = text.fraction();
  return text.at_end();
}

}  // namespace

std::int32_t padded_number(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  std::int32_t value = text.empty() ? -1 : 0;
  for (const char c : text) {
    if (!is_digit(c)) return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

std::int32_t number_in_blanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return padded_number(text);
}

bool read_whole_integer(std::string_view text, std::int32_t *value) {
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && is_sign_character(text[0])) text.remove_prefix(1);
  if (text.empty()) return false;
  constexpr std::int64_t kBeyond = std::int64_t{1} << 32;
  std::int64_t number = 0;
  for (const char c : text) {
    if (!is_digit(c)) return false;
    number = number * 10 + (c - '0');
    if (number > kBeyond) number = kBeyond;
  }
  if (negative) number = -number;
  if (number < INT32_MIN || number > INT32_MAX) return false;
  *value = static_cast<std::int32_t>(number);
  return true;
}

bool read_whole_real(std::string_view text, double *value) {
  if (!is_real(text)) return false;
  *value = read_real(text).value;
  return true;
}

bool read_whole_time(std::string_view text, double *epoch) {
  Clock clock;
  if (!read_clock(TimeText(text), &clock)) return false;
  if (clock.day < 1 || clock.day > 366 || clock.hour > 24 || clock.minute > 59 ||
      clock.second > 60) {
    return false;
  }
  *epoch = epoch_of(clock);
  return true;
}

bool is_whole_binary_time(const char *bytes, bool big_endian) {
  const std::int32_t year = load_u16(bytes, big_endian);
  const std::int32_t day = load_u16(bytes + 2, big_endian);
  return year >= 1 && year <= 9999 && day >= 1 && day <= 366 && ubyte_at(bytes + 4) <= 23 &&
         ubyte_at(bytes + 5) <= 59 && ubyte_at(bytes + 6) <= 60;
}

bool read_whole_binary_time(const char *bytes, bool big_endian, double *epoch) {
  if (!is_whole_binary_time(bytes, big_endian)) return false;
  *epoch = binary_time_at(bytes, big_endian);
  return true;
}

}  // namespace tarvik
