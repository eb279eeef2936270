#include "support/parse.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

#include "support/c_locale.h"
#include "support/digits.h"
#include "support/memory.h"

namespace tarvik {

namespace {

// The largest integer below which a double holds every one.
constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

constexpr bool is_decimal(char c) { return is_digit(c); }
constexpr bool is_hexadecimal(char c) {
  return is_digit(c) || (lower(c) >= 'a' && lower(c) <= 'f');
}
constexpr bool is_word(char c) {
  return is_digit(c) || (lower(c) >= 'a' && lower(c) <= 'z') || c == '_';
}

// True when text begins with word (lower case), in letters of either case.
bool begins_with(std::string_view text, std::string_view word) {
  return text.size() >= word.size() &&
         std::equal(word.begin(), word.end(), text.begin(),
                    [](char expected, char c) { return lower(c) == expected; });
}

std::size_t count_space(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && is_space(text[at])) ++at;
  return at;
}

constexpr bool is_sign(char c) { return c == '-' || c == '+'; }

// An exponent: the marker letter, perhaps a sign, and digits; length 0 when one of them is missing.
struct Exponent {
  std::int64_t value;
  std::size_t length;
};
Exponent read_marked_exponent(std::string_view text, char marker) {
  if (text.size() < 2 || lower(text[0]) != marker) return {0, 0};
  const std::size_t first = is_sign(text[1]) ? 2 : 1;
  constexpr std::int64_t kEnough = std::int64_t{1} << 50;  // more changes nothing
  std::int64_t value = 0;
  std::size_t at = first;
  for (; at < text.size() && is_digit(text[at]); ++at) {
    value = std::min(kEnough, value * 10 + (text[at] - '0'));
  }
  if (at == first) return {0, 0};
  return {text[1] == '-' ? -value : value, at};
}

// Characters of the digits at the start of a text, with at most one point among them; 0 when there
// is no digit.
template <bool (*is_one_of_the_digits)(char)>
std::size_t digits_length(std::string_view text) {
  std::size_t digits = 0;
  std::size_t points = 0;
  for (const char c : text) {
    if (is_one_of_the_digits(c)) {
      ++digits;
    } else if (c != '.' || ++points > 1) {
      break;
    }
  }
  return digits == 0 ? 0 : digits + std::min<std::size_t>(points, 1);
}

// The value of a decimal number that lies outside the range of a double: infinite or 0.
double out_of_range_value(std::string_view digits, std::int64_t exponent) {
  const std::size_t significant = digits.find_first_not_of("0.");
  if (significant == std::string_view::npos) return 0.0;
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const auto places = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(significant);
  return places + exponent > 0 ? HUGE_VAL : 0.0;
}

// The value of a decimal number in any number of digits.
double convert_long(std::string_view number, std::string_view digits, std::int64_t exponent) {
  double value = 0.0;
  const std::from_chars_result result =
      std::from_chars(number.data(), number.data() + number.size(), value);
  return result.ec == std::errc{} ? value : out_of_range_value(digits, exponent);
}

// A number from its first digits: exact by one operation as long as both operands are.
bool convert_short(std::string_view digits, std::int64_t exponent, double &value) {
  constexpr std::size_t kMostDigits = 19;  // 64 bits always hold so many
  if (digits.size() > kMostDigits) return false;
  std::uint64_t mantissa = 0;
  std::size_t point = digits.size();
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (digits[i] == '.') {
      point = i;
    } else {
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(digits[i] - '0');
    }
  }
  if (point < digits.size()) exponent -= static_cast<std::int64_t>(digits.size() - point - 1);
  constexpr auto kMostPowers = static_cast<std::int64_t>(kExactPowers.size()) - 1;
  if (mantissa > kExactIntegers || exponent > kMostPowers || exponent < -kMostPowers) return false;
  const auto whole = static_cast<double>(mantissa);
  const double power = kExactPowers[static_cast<std::size_t>(exponent < 0 ? -exponent : exponent)];
  value = exponent < 0 ? whole / power : whole * power;
  return true;
}

RealPrefix read_decimal(std::string_view text) {
  const std::size_t length = digits_length<is_decimal>(text);
  if (length == 0) return {0.0, 0};
  const Exponent exponent = read_marked_exponent(text.substr(length), 'e');
  const std::string_view digits = text.substr(0, length);
  const std::string_view number = text.substr(0, length + exponent.length);
  double value = 0.0;
  if (!convert_short(digits, exponent.value, value)) {
    value = convert_long(number, digits, exponent.value);
  }
  return {value, number.size()};
}

// What strtod makes of a number that takes the whole text; for the forms that are rare.
RealPrefix ask_strtod(std::string_view number) {
  char *copy = memory_copy_text(number.data(), number.size());
  if (copy == nullptr) return {0.0, 0};
  const InCLocale with_a_decimal_point;
  const double value = std::strtod(copy, nullptr);
  memory_free(copy);
  return {value, number.size()};
}

// A number that begins with "0x"; without a digit after that it is the 0 alone.
RealPrefix read_hexadecimal(std::string_view text) {
  constexpr std::size_t kPrefix = 2;
  const std::size_t digits = digits_length<is_hexadecimal>(text.substr(kPrefix));
  if (digits == 0) return {0.0, 1};
  const Exponent exponent = read_marked_exponent(text.substr(kPrefix + digits), 'p');
  return ask_strtod(text.substr(0, kPrefix + digits + exponent.length));
}

// "nan", perhaps with a word in parentheses, which the system turns into the bits of the value.
RealPrefix read_nan(std::string_view text) {
  constexpr std::size_t kName = 3;
  if (text.size() == kName || text[kName] != '(') return ask_strtod(text.substr(0, kName));
  std::size_t at = kName + 1;
  while (at < text.size() && is_word(text[at])) ++at;
  const bool closed = at < text.size() && text[at] == ')';
  return ask_strtod(text.substr(0, closed ? at + 1 : kName));
}

RealPrefix read_unsigned(std::string_view text) {
  if (begins_with(text, "0x")) return read_hexadecimal(text);
  if (begins_with(text, "infinity")) return {HUGE_VAL, 8};
  if (begins_with(text, "inf")) return {HUGE_VAL, 3};
  if (begins_with(text, "nan")) return read_nan(text);
  return read_decimal(text);
}

}  // namespace

RealPrefix read_real(std::string_view text) {
  std::size_t start = count_space(text);
  const bool negative = start < text.size() && text[start] == '-';
  if (start < text.size() && is_sign(text[start])) ++start;
  const RealPrefix real = read_unsigned(text.substr(start));
  if (real.length == 0) return {0.0, 0};
  return {negative ? -real.value : real.value, start + real.length};
}

IntegerPrefix read_integer(std::string_view text) {
  std::size_t at = count_space(text);
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && is_sign(text[at])) ++at;
  const std::size_t first = at;
  // Downwards, where there is one value more.
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  std::int64_t value = 0;
  for (; at < text.size() && is_digit(text[at]); ++at) {
    const std::int64_t digit = text[at] - '0';
    value = value < (kLeast + digit) / 10 ? kLeast : value * 10 - digit;
  }
  if (at == first) return {0, 0};
  if (negative) return {value, at};
  return {value == kLeast ? std::numeric_limits<std::int64_t>::max() : -value, at};
}

}  // namespace tarvik
