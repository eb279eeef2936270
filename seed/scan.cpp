#include "seed/scan.h"

#include <array>
#include <cstring>

#include "seed/format.h"
#include "support/bounded.h"
#include "support/epoch.h"
#include "support/parse.h"

namespace tarvik {

namespace {

constexpr std::size_t kTextBuffer = 16384;

// The first width characters, up to a 0 byte.  A width beyond the work buffer is fatal.
std::string_view number_field(const char *function, const char *text, std::int64_t width) {
  const auto size = static_cast<std::size_t>(width < 0 ? 0 : width);
  if (size > kNumberWidth) require_fit(function, size, kNumberWidth);
  return {text, strnlen(text, size)};
}

// The value of up to nine decimal digits, or -1 for any other text.
std::int32_t plain_digits(std::string_view text) {
  if (text.empty() || text.size() > 9) return -1;
  std::int32_t value = 0;
  for (const char c : text) {
    if (!is_digit(c)) return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

// Puts "0" for every non-digit that stands under a "#" of the format.
int replace_nondigits(char *text, std::size_t size, const char *format) {
  int replaced = 0;
  for (std::size_t i = 0; i < size && format[i] != '\0'; ++i) {
    if (format[i] != '#' || is_digit(text[i])) continue;
    text[i] = '0';
    ++replaced;
  }
  return replaced;
}

// Reads what sscanf would for "%d" and "%lf" items between fixed characters.
class TimeReader {
 public:
  explicit TimeReader(std::string_view text) : rest_(text) {}

  bool integer(std::int32_t *value) {
    const IntegerPrefix prefix = read_integer(rest_);
    if (prefix.length == 0) return false;
    *value = static_cast<std::int32_t>(prefix.value);
    rest_.remove_prefix(prefix.length);
    return true;
  }

  bool real(double *value) {
    const RealPrefix prefix = read_real(rest_);
    if (prefix.length == 0) return false;
    *value = prefix.value;
    return true;
  }

  bool character(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }

 private:
  std::string_view rest_;
};

// How many of year, day, hour, minute and seconds a time text of some length is read for.
int time_items(std::size_t length) {
  switch (length) {
    case 4: return 1;
    case 8: return 2;
    case 11: return 3;
    case 14: return 4;
    default: return 5;
  }
}

// The characters before the "~" or the 0 byte that ends a text, or all of them.  A record may make
// a reader look for both through its whole length again and again: piece by piece, neither search
// goes far past what the other finds, and both are the C library's, of many bytes at a time.
std::size_t variable_size(std::string_view text) {
  constexpr std::size_t kPiece = 256;
  for (std::size_t at = 0; at < text.size(); at += kPiece) {
    std::string_view piece = text.substr(at, kPiece);
    const std::size_t tilde = piece.find('~');
    piece = piece.substr(0, tilde);
    const std::size_t zero = piece.find('\0');
    if (zero != std::string_view::npos) return at + zero;
    if (tilde != std::string_view::npos) return at + tilde;
  }
  return text.size();
}

}  // namespace

VariableField variable_field(std::string_view text) {
  const std::size_t size = variable_size(text);
  const bool terminated = size < text.size();
  std::string_view value = text.substr(0, size);
  while (!value.empty() && is_space(value.front())) value.remove_prefix(1);
  // Without a terminator the white space at the end belongs to the value.
  while (terminated && !value.empty() && is_space(value.back())) value.remove_suffix(1);
  return {value, size + (terminated && text[size] == '~' ? 1 : 0)};
}

int scan_integer(std::string_view text, const char *format, std::int32_t *result) {
  *result = plain_digits(text);
  if (*result >= 0) return 0;
  std::array<char, kNumberWidth + 1> buffer;
  if (text.size() > kNumberWidth) require_fit("scan_int", text.size(), kNumberWidth);
  std::memcpy(buffer.data(), text.data(), text.size());
  const int replaced =
      format == nullptr ? 0 : replace_nondigits(buffer.data(), text.size(), format);
  const std::string_view digits(buffer.data(), text.size());
  const IntegerPrefix prefix = read_integer(digits);
  *result = static_cast<std::int32_t>(prefix.value);
  if (prefix.length > 0 || is_blank(digits)) return replaced;
  elog_log(0, "scan_int: Failed integer input: '%.*s'\n", static_cast<int>(digits.size()),
           digits.data());
  return -1;
}

int scan_real(std::string_view text, double *result) {
  if (text.size() > kNumberWidth) require_fit("scan_double", text.size(), kNumberWidth);
  const RealPrefix prefix = read_real(text);
  *result = prefix.value;
  if (prefix.length > 0 || is_blank(text)) return 0;
  elog_log(0, "scan_double: Failed double input: '%.*s'\n", static_cast<int>(text.size()),
           text.data());
  return -1;
}

double seed_time(std::string_view text) {
  if (text.empty()) return SDBLK_NO_TIME;
  std::int32_t year = 0;
  std::int32_t day = 0;
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  double seconds = 0.0;
  const int items = time_items(text.size());
  TimeReader reader(text);
  // Reading ends at the first item that is not there; what was not read stays 0.
  static_cast<void>(reader.integer(&year) && items > 1 && reader.character(',') &&
                    reader.integer(&day) && items > 2 && reader.character(',') &&
                    reader.integer(&hour) && items > 3 && reader.character(':') &&
                    reader.integer(&minute) && items > 4 && reader.character(':') &&
                    reader.real(&seconds));
  return h2e(year, day, hour, minute, seconds);
}

}  // namespace tarvik

using namespace tarvik;

int scan_int(const char *text, const char *format, std::int64_t width, std::int32_t *result) {
  return scan_integer(number_field("scan_int", text, width), format, result);
}

int scan_double(const char *text, std::int64_t width, double *result) {
  return scan_real(number_field("scan_double", text, width), result);
}

int scan_time(const char *text, double *result) {
  *result = seed_time(text);
  return 0;
}

int scan_str(const char *text, std::int64_t width, char *result) {
  const auto size = static_cast<std::size_t>(width < 0 ? 0 : width);
  require_fit("scan_str", size, kTextBuffer);
  const std::string_view value = trimmed_field({text, strnlen(text, size)});
  std::memmove(result, value.data(), value.size());
  result[value.size()] = '\0';
  return 0;
}

std::int64_t scan_var_str(const char *text, std::int64_t limit, char *result) {
  result[0] = '\0';
  if (limit < 1) return 0;
  // The value's terminator goes along; nothing after it is looked at.
  const auto most = static_cast<std::size_t>(limit);
  std::size_t size = 0;
  while (size < most && text[size] != '\0' && text[size] != '~') ++size;
  const VariableField field = variable_field({text, size < most ? size + 1 : size});
  std::memmove(result, field.value.data(), field.value.size());
  result[field.value.size()] = '\0';
  return static_cast<std::int64_t>(field.consumed);
}
