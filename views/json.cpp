#include "views/json.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

#include "support/civil.h"
#include "support/digits.h"
#include "support/line.h"

namespace tarvik {
namespace {

// ---- real numbers ----

// Nearly every real number of a volume was written with few digits.  Such a decimal of at most
// fifteen digits is the shortest one for its double, so it is enough to find it: one exact
// operation scales the number to an integer, another one shows that nothing was lost.
constexpr int kFewDigits = 8;
constexpr double kFewest = 1e7;  // numbers of kFewDigits digits begin here
constexpr double kMost = 1e8;

int decimal_exponent(double size) {
  constexpr int kMantissaBits = 52;
  constexpr int kBias = 1023;
  const int exponent =
      static_cast<int>(std::bit_cast<std::uint64_t>(size) >> kMantissaBits) - kBias;
  // log10(2) as a fraction, rounded so that the guess is right or one too low.
  return exponent * 78913 >> 18;
}

double scaled(double value, int power) {
  return power < 0 ? value / kExactPowers[static_cast<std::size_t>(-power)]
                   : value * kExactPowers[static_cast<std::size_t>(power)];
}

// Eight digits, each in a byte, the first in the lowest.  All are split at once: in halves, in
// pairs, in digits.
std::uint64_t eight_digits(std::uint32_t value) {
  const std::uint64_t halves = value / 10000 | std::uint64_t{value % 10000} << 32;
  const std::uint64_t hundreds = halves * 10486 >> 20 & 0x0000007F0000007F;
  const std::uint64_t pairs = hundreds | (halves - hundreds * 100) << 16;
  const std::uint64_t tens = pairs * 103 >> 10 & 0x000F000F000F000F;
  return tens | (pairs - tens * 10) << 8;
}

bool few_digits(double size, ShortDecimal *decimal) {
  int exponent = decimal_exponent(size);
  int power = kFewDigits - 1 - exponent;
  constexpr int kMostPower = static_cast<int>(kExactPowers.size()) - 1;
  if (power - 1 < -kMostPower || power > kMostPower) return false;
  double mantissa = scaled(size, power);
  if (mantissa >= kMost - 0.5) {
    ++exponent;
    mantissa = scaled(size, --power);
  }
  // A call would cost more, and what is rounded wrongly fails the test that follows.
  const auto number =
      static_cast<std::uint32_t>(mantissa + 0.5);  // NOLINT(bugprone-incorrect-roundings)
  if (number < kFewest || number >= kMost || scaled(number, -power) != size) return false;
  const std::uint64_t digits = eight_digits(number);
  store_eight(decimal->digits, digits | kEightZeros);
  decimal->size = kFewDigits - std::countl_zero(digits) / 8;
  decimal->exponent = exponent;
  return true;
}

// Any number, from the digits of "d.ddde-ddd".
void all_digits(double size, ShortDecimal *decimal) {
  std::array<char, 40> text;
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), size, std::chars_format::scientific);
  static_cast<void>(error);
  const char *mark = std::find(text.data(), end, 'e');
  decimal->size = 0;
  for (const char *c = text.data(); c != mark; ++c) {
    if (*c != '.') decimal->digits[decimal->size++] = *c;
  }
  while (decimal->size > 1 && decimal->digits[decimal->size - 1] == '0') --decimal->size;
  const char *sign = mark + 1;
  std::from_chars(*sign == '+' ? sign + 1 : sign, end, decimal->exponent);
}

int length_of_exponent(int exponent) {
  const int size = exponent < 0 ? -exponent : exponent;
  return (exponent < 0 ? 2 : 1) + (size >= 10 ? 1 : 0) + (size >= 100 ? 1 : 0);
}

char *put_exponent(char *out, int exponent) {
  *out = '-';
  out += exponent < 0 ? 1 : 0;
  return put_small_integer(out, static_cast<std::uint64_t>(exponent < 0 ? -exponent : exponent));
}

// Where more of them would be needed, the form with an exponent is shorter.
constexpr int kMostZeros = 8;
char *put_zeros(char *out, int count) {
  std::memset(out, '0', kMostZeros);
  return out + count;
}

// A copy of a fixed size takes no look at the number of digits.
char *put_digits_of(char *out, const ShortDecimal &decimal, int from, int to) {
  std::memcpy(out, decimal.digits + from, ShortDecimal::kMostDigits);
  return out + (to - from);
}

// As "123", "12.3" or "0.0123".
char *put_plain(char *out, const ShortDecimal &decimal) {
  const int whole = decimal.exponent + 1;
  if (whole <= 0) {
    out = put_zeros(put_text(out, "0."), -whole);
    return put_digits_of(out, decimal, 0, decimal.size);
  }
  if (whole >= decimal.size) {
    out = put_digits_of(out, decimal, 0, decimal.size);
    return put_zeros(out, whole - decimal.size);
  }
  out = put_char(put_digits_of(out, decimal, 0, whole), '.');
  return put_digits_of(out, decimal, whole, decimal.size);
}

int length_of_plain(const ShortDecimal &decimal) {
  if (decimal.exponent < 0) return decimal.size + 1 - decimal.exponent;
  if (decimal.exponent + 1 >= decimal.size) return decimal.exponent + 1;
  return decimal.size + 1;
}

char *put_scientific(char *out, const ShortDecimal &decimal) {
  out = put_char(out, decimal.digits[0]);
  if (decimal.size > 1) out = put_digits_of(put_char(out, '.'), decimal, 1, decimal.size);
  return put_exponent(put_char(out, 'e'), decimal.exponent);
}

int length_of_scientific(const ShortDecimal &decimal) {
  return decimal.size + (decimal.size > 1 ? 1 : 0) + 1 + length_of_exponent(decimal.exponent);
}

char *put_real(char *out, double value) {
  if (!std::isfinite(value)) {
    if (std::isnan(value)) return put_text(out, "\"NaN\"");
    return put_text(out, value < 0 ? "\"-Infinity\"" : "\"Infinity\"");
  }
  const ShortDecimal decimal = short_decimal(value);
  if (decimal.negative) out = put_char(out, '-');
  return length_of_plain(decimal) <= length_of_scientific(decimal) ? put_plain(out, decimal)
                                                                   : put_scientific(out, decimal);
}

// The same numbers come again and again: the channels of one make have the same response.  So the
// text of a number is kept until others take its place.
struct RealText {
  double value;  // 0, which is never asked for, where nothing is kept
  std::uint8_t size;
  std::array<char, 23> text;

  char *put(char *out) const {
    std::memcpy(out, text.data(), text.size());
    return out + size;
  }
  void keep(double number, std::string_view its_text) {
    if (its_text.size() > text.size()) return;
    value = number;
    size = static_cast<std::uint8_t>(its_text.size());
    std::memcpy(text.data(), its_text.data(), its_text.size());
  }
};

// The texts of two numbers of one hash, the later one first.
using RealTexts = std::array<RealText, 2>;
constexpr int kRealTextBits = 11;

RealTexts &texts_of(double value) {
  static thread_local const auto texts =
      std::make_unique<RealTexts[]>(std::size_t{1} << kRealTextBits);
  constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;
  return texts[std::bit_cast<std::uint64_t>(value) * kSpread >> (64 - kRealTextBits)];
}

// ---- times ----

constexpr std::int64_t kFirstYear = 1;
constexpr std::int64_t kLastYear = 9999;

constexpr std::int64_t kTicks = 10000;  // a second

struct Date {
  std::int64_t day = INT64_MIN;    // counted from 1970-01-01
  std::array<char, 16> text = {};  // "2021-03-16T"; empty for a year out of range
};

constexpr std::size_t kDateSize = 11;

void make_date(std::int64_t day, Date *date) {
  date->day = day;
  date->text[0] = '\0';
  const CivilYear civil = civil_year(day);
  if (civil.year < kFirstYear || civil.year > kLastYear) return;
  constexpr std::array<int, 12> kMonths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  int day_of_month = civil.day;
  std::size_t month = 0;
  for (;; ++month) {
    const int days = kMonths[month] + (month == 1 && is_leap_year(civil.year) ? 1 : 0);
    if (day_of_month <= days) break;
    day_of_month -= days;
  }
  char *out = put_digits<4>(date->text.data(), civil.year);
  out = put_digits<2>(put_char(out, '-'), static_cast<std::int64_t>(month) + 1);
  out = put_digits<2>(put_char(out, '-'), day_of_month);
  put_char(out, 'T');
}

// Neighbouring times are mostly of one day.
const Date &date_of(std::int64_t day) {
  static constinit thread_local Date date;
  if (date.day != day) make_date(day, &date);
  return date;
}

// std::llround, which is a call, of a number far below 2^63.
std::int64_t rounded(double value) {
  const auto whole = static_cast<std::int64_t>(value);
  const double rest = value - static_cast<double>(whole);
  return whole + (rest >= 0.5 ? 1 : 0) - (rest <= -0.5 ? 1 : 0);
}

// A whole number of seconds, and the fraction as so many digits.
template <int kDecimals>
char *put_moment(char *out, std::int64_t seconds, std::int64_t fraction) {
  const std::int64_t day = floor_div(seconds, kDaySeconds);
  const Date &date = date_of(day);
  if (date.text[0] == '\0') return put_text(out, "null");
  const auto clock = static_cast<std::uint64_t>(seconds - day * kDaySeconds);
  out = put_char(out, '"');
  std::memcpy(out, date.text.data(), kDateSize);
  out = put_pair(out + kDateSize, clock / 3600);
  out = put_pair(put_char(out, ':'), clock / 60 % 60);
  out = put_pair(put_char(out, ':'), clock % 60);
  out = put_digits<kDecimals>(put_char(out, '.'), fraction);
  return put_text(out, "Z\"");
}

// ---- texts ----

// Which bytes stand in a text as they are.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain = {};
  for (std::size_t byte = 0x20; byte < 0x80; ++byte) plain[byte] = byte != '"' && byte != '\\';
  return plain;
}();
bool is_plain(char c) { return kPlain[static_cast<unsigned char>(c)]; }

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The bytes of the well-formed character at the start of a text, or 0.
std::size_t character_size(std::string_view text) {
  const auto at = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
  };
  const unsigned char first = at(0);
  const unsigned char second = at(1);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4 || !is_continuation(second)) return 0;
  if (first < 0xE0) return 2;
  // No longer forms than needed, no surrogates, nothing past U+10FFFF.
  if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F)) return 0;
  if ((first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F)) return 0;
  if (!is_continuation(at(2))) return 0;
  if (first < 0xF0) return 3;
  return is_continuation(at(3)) ? 4 : 0;
}

constexpr std::size_t kMostPerByte = 6;  // "\u001f"

char *put_escaped(char *out, char c) {
  switch (c) {
    case '"': return put_text(out, "\\\"");
    case '\\': return put_text(out, "\\\\");
    case '\b': return put_text(out, "\\b");
    case '\f': return put_text(out, "\\f");
    case '\n': return put_text(out, "\\n");
    case '\r': return put_text(out, "\\r");
    case '\t': return put_text(out, "\\t");
    default: break;
  }
  if (static_cast<unsigned char>(c) >= 0x20) return put_char(out, c);
  constexpr std::string_view kHex = "0123456789abcdef";
  out = put_text(out, c < 0x10 ? "\\u000" : "\\u001");
  return put_char(out, kHex[static_cast<std::size_t>(c) & 15]);
}

bool is_ascii(char c) { return static_cast<unsigned char>(c) < 0x80; }

// The character of a byte of 128 or more.
char *put_latin1(char *out, char c) {
  const auto byte = static_cast<unsigned char>(c);
  out = put_char(out, static_cast<char>(0xC0 | byte >> 6));
  return put_char(out, static_cast<char>(0x80 | (byte & 0x3F)));
}

char *put_any_text(char *out, std::string_view text) {
  if (is_utf8(text)) {
    for (const char c : text) out = put_escaped(out, c);
  } else {
    for (const char c : text) out = is_ascii(c) ? put_escaped(out, c) : put_latin1(out, c);
  }
  return out;
}

}  // namespace

ShortDecimal short_decimal(double value) {
  ShortDecimal decimal;
  decimal.negative = std::signbit(value);
  const double size = std::fabs(value);
  if (size == 0.0) {
    decimal.size = 1;
    decimal.exponent = 0;
    decimal.digits[0] = '0';
    return decimal;
  }
  if (!few_digits(size, &decimal)) all_digits(size, &decimal);
  return decimal;
}

char *put_json_real(char *out, double value) {
  if (value == 0.0) return put_text(out, std::signbit(value) ? "-0" : "0");
  auto &[later, earlier] = texts_of(value);
  if (later.value == value) return later.put(out);
  if (earlier.value == value) return earlier.put(out);
  char *end = put_real(out, value);
  earlier = later;
  later.keep(value, {out, static_cast<std::size_t>(end - out)});
  return end;
}

char *put_json_tick_time(char *out, std::int64_t microseconds) {
  const std::int64_t ticks = floor_div(microseconds, 1000000 / kTicks);
  const std::int64_t seconds = floor_div(ticks, kTicks);
  return put_moment<4>(out, seconds, ticks - seconds * kTicks);
}

char *put_json_time(char *out, double epoch) {
  // Also of what is not finite; no time of a volume is near.
  if (!(std::fabs(epoch) < 1e12)) return put_text(out, "null");
  const std::int64_t ticks = rounded(epoch * static_cast<double>(kTicks));
  const std::int64_t seconds = floor_div(ticks, kTicks);
  return put_moment<4>(out, seconds, ticks - seconds * kTicks);
}

char *put_json_microtime(char *out, std::int64_t microseconds) {
  constexpr std::int64_t kMicro = 1000000;
  const std::int64_t seconds = floor_div(microseconds, kMicro);
  return put_moment<6>(out, seconds, microseconds - seconds * kMicro);
}

char *put_json_nanotime(char *out, std::int64_t seconds, std::int64_t nanoseconds) {
  return put_moment<9>(out, seconds, nanoseconds);
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = character_size(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

void put_json_text(TextBuffer *out, std::string_view text) {
  char *at = out->reserve(kMostPerByte * text.size() + 2);
  *at++ = '"';
  std::size_t plain = 0;
  while (plain < text.size() && is_plain(text[plain])) ++plain;
  if (plain == text.size()) {
    at = put_text(at, text);
  } else {
    at = put_any_text(at, text);
  }
  *at++ = '"';
  out->commit(at);
}

char *put_short_json_text(char *out, const char *text) {
  *out++ = '"';
  const char *end = text + kShortText;
  for (; is_plain(*text); ++text) {
    if (text == end) return nullptr;
    *out++ = *text;
  }
  *out = '"';
  return *text == '\0' ? out + 1 : nullptr;
}

std::string json_text(std::string_view text) {
  std::string json(kMostPerByte * text.size() + 2, '\0');
  json.front() = '"';
  char *end = put_any_text(json.data() + 1, text);
  *end++ = '"';
  json.resize(static_cast<std::size_t>(end - json.data()));
  return json;
}

std::string utf8_text(std::string_view text) {
  if (is_utf8(text)) return std::string(text);
  std::string utf8(2 * text.size(), '\0');
  char *end = utf8.data();
  for (const char c : text) end = is_ascii(c) ? put_char(end, c) : put_latin1(end, c);
  utf8.resize(static_cast<std::size_t>(end - utf8.data()));
  return utf8;
}

}  // namespace tarvik
