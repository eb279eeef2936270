// The scanners and the time functions, against what the C library makes of the same bytes.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "fuzz/harness.h"
#include "fuzz/listing.h"
#include "seed/sdblk.h"
#include "support/epoch.h"
#include "support/parse.h"
#include "support/tbl.h"
#include "support/text.h"

using namespace tarvik;

namespace fuzz {

namespace {

constexpr std::size_t kNumberWidth = 80;
constexpr std::size_t kTextWidth = 16383;

// Takes plain values off the front of the input.
class Taker {
 public:
  explicit Taker(std::string_view bytes) : bytes_(bytes) {}

  template <typename T>
  T take() {
    T value = {};
    const std::size_t size = bytes_.size() < sizeof(T) ? bytes_.size() : sizeof(T);
    std::memcpy(&value, bytes_.data(), size);
    bytes_.remove_prefix(size);
    return value;
  }
  [[nodiscard]] std::string_view rest() const { return bytes_; }

 private:
  std::string_view bytes_;
};

// Bytes with nothing after them, not even a 0.
class Exact {
 public:
  explicit Exact(std::string_view bytes) : bytes_(new char[bytes.size()]), size_(bytes.size()) {
    bytes.copy(bytes_.get(), bytes.size());
  }
  [[nodiscard]] const char *data() const { return bytes_.get(); }
  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

void scan_int_target(std::string_view bytes) {
  const std::string until_zero(bytes.substr(0, kNumberWidth).data(),
                               strnlen(bytes.data(), std::min(bytes.size(), kNumberWidth)));
  const Exact text(bytes);
  std::int32_t value = 0;
  const auto width = static_cast<std::int64_t>(text.size());
  const int result = scan_int(text.data(), nullptr, width, &value);
  char *end = nullptr;
  const long expected = std::strtol(until_zero.c_str(), &end, 10);
  const bool readable = end != until_zero.c_str() || blank(until_zero.c_str()) != 0;
  require(result == (readable ? 0 : -1), "scan_int reads what strtol reads");
  if (result == 0)
    require(value == static_cast<std::int32_t>(expected), "scan_int's value is strtol's");
  const int replaced = scan_int(text.data(), "####", width, &value);
  require(replaced >= -1 && replaced <= 4, "no more digits are replaced than the format has");
}

void scan_double_target(std::string_view bytes) {
  const std::string until_zero(bytes.substr(0, kNumberWidth).data(),
                               strnlen(bytes.data(), std::min(bytes.size(), kNumberWidth)));
  const Exact text(bytes);
  double value = 0.0;
  const int result = scan_double(text.data(), static_cast<std::int64_t>(text.size()), &value);
  char *end = nullptr;
  const double expected = std::strtod(until_zero.c_str(), &end);
  const bool readable = end != until_zero.c_str() || blank(until_zero.c_str()) != 0;
  require(result == (readable ? 0 : -1), "scan_double reads what strtod reads");
  if (result == 0) require(same(value, expected), "scan_double's value is strtod's");
}

void strtod_target(std::string_view bytes) {
  const std::string text(bytes);
  char *end = nullptr;
  char *expected_end = nullptr;
  const double value = fix_strtod(text.c_str(), &end);
  const double expected = std::strtod(text.c_str(), &expected_end);
  require(end == expected_end, "fix_strtod stops where strtod stops");
  require(same(value, expected) && std::signbit(value) == std::signbit(expected),
          "fix_strtod's value is strtod's");
}

void scan_time_target(std::string_view bytes) {
  const std::string text(bytes);
  double value = 0.0;
  require(scan_time(text.c_str(), &value) == 0, "a time is always read");
  std::free(epoch2str(value, "%Y,%j,%T"));
}

void scan_str_target(std::string_view bytes) {
  const Exact text(bytes);
  const std::unique_ptr<char[]> result(new char[text.size() + 1]);
  scan_str(text.data(), static_cast<std::int64_t>(text.size()), result.get());
  const std::size_t size = std::strlen(result.get());
  require(size <= text.size(), "a field's text is no longer than the field");
  require(size == 0 || (!is_space(result[0]) && !is_space(result[size - 1])),
          "a field's text has no white space at its ends");
}

void scan_var_str_target(std::string_view bytes) {
  const Exact text(bytes);
  const std::unique_ptr<char[]> result(new char[text.size() + 1]);
  const auto limit = static_cast<std::int64_t>(text.size());
  const std::int64_t consumed = scan_var_str(text.data(), limit, result.get());
  require(consumed >= 0 && consumed <= limit, "no more is consumed than is there");
  require(static_cast<std::int64_t>(std::strlen(result.get())) <= consumed,
          "a variable text is no longer than what it took");
}

// Cuts one field of any storage type and width.
void sentry_target(std::string_view bytes) {
  static constexpr std::string_view kStorageTypes = "ADFVB";
  Taker taker(bytes);
  const std::uint8_t type = taker.take<std::uint8_t>();
  const std::int32_t width = taker.take<std::int16_t>();
  const Exact text(taker.rest());
  SDBlkFieldDef field = {};
  field.key = "key";
  field.stype = static_cast<unsigned char>(kStorageTypes[type % kStorageTypes.size()]);
  field.width = width;
  field.kind = SDBLK_STRING;
  const char *cursor = text.data();
  auto remaining = static_cast<std::int32_t>(text.size());
  std::array<char, 4096> value;
  sdblk_parse_sentry(&field, &cursor, &remaining, value.data());
  require(remaining >= 0 && cursor + remaining == text.data() + text.size(),
          "the cursor and the rest move together");
}

void epoch_target(std::string_view bytes) {
  Taker taker(bytes);
  const auto epoch = taker.take<double>();
  const std::string format(taker.rest());
  std::free(epoch2str(epoch, format.c_str()));
  constexpr double kFirstYear = -62135596800.0;  // 1 January of the year 1
  constexpr double kLastYear = 2.5e11;           // before the year 9999 ends
  if (!(epoch >= kFirstYear && epoch <= kLastYear)) return;
  const auto seconds = static_cast<std::time_t>(std::floor(epoch));
  std::tm parts = {};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> expected;
  std::strftime(expected.data(), expected.size(), "%j,%H:%M:%S %d %m %a", &parts);
  const std::unique_ptr<char, decltype(&std::free)> text(epoch2str(epoch, "%j,%T %d %m %a"),
                                                         std::free);
  require(std::strcmp(text.get(), expected.data()) == 0, "a date is the system's");
  require(yearday(epoch) == (parts.tm_year + 1900) * 1000 + parts.tm_yday + 1,
          "yearday is the system's");
}

void h2e_target(std::string_view bytes) {
  Taker taker(bytes);
  const auto year = taker.take<std::int32_t>();
  const auto day = taker.take<std::int32_t>();
  const auto hour = taker.take<std::int32_t>();
  const auto minute = taker.take<std::int32_t>();
  const auto seconds = taker.take<double>();
  const double epoch = h2e(year, day, hour, minute, seconds);
  std::free(epoch2str(epoch, "%Y:%j:%T"));
  yearday(epoch);
  const bool plain = year >= 1 && year <= 9999 && day >= 1 && day <= 365;
  if (plain)
    require(yearday(h2e(year, day, 23, 59, 59.0)) == year * 1000 + day, "days are counted");
}

void patterns_target(std::string_view bytes) {
  const std::size_t split = bytes.find('\n');
  // Repetition counts let the system's expressions grow without bound; they are its own affair.
  std::string pattern(bytes.substr(0, std::min<std::size_t>(split, 32)));
  if (pattern.find_first_of("{*+\\") != std::string::npos) return;
  const std::string text(split == std::string_view::npos ? "" : bytes.substr(split + 1));
  Tbl *patterns = newtbl();
  settbl(patterns, -1, pattern.data());
  Tbl *matches = tblgrep(patterns, text.c_str());
  require(counttbl(matches) <= 1, "no more match than there are");
  freetbl(matches, nullptr);
  freetbl(patterns, nullptr);
}

void text_target(std::string_view bytes) {
  std::string text(bytes);
  blank(text.c_str());
  const std::size_t before = std::strlen(text.c_str());
  chomp(text.data());
  require(before - std::strlen(text.c_str()) <= 1, "one newline is dropped at most");
  sdblk_printbuf("  ", text.data(), static_cast<std::int64_t>(text.size()));
}

constexpr std::array kTargets = {scan_int_target,  scan_double_target, strtod_target,
                                 scan_time_target, scan_str_target,    scan_var_str_target,
                                 sentry_target,    epoch_target,       h2e_target,
                                 patterns_target,  text_target};

}  // namespace

void exercise_scan(std::string_view bytes) {
  if (bytes.empty()) return;
  const std::size_t choice = static_cast<unsigned char>(bytes[0]) % kTargets.size();
  bytes.remove_prefix(1);
  const bool is_number = choice < 2;
  if (bytes.size() > (is_number ? kNumberWidth : kTextWidth)) {
    bytes = bytes.substr(0, is_number ? kNumberWidth + 1 : kTextWidth);
  }
  if (!until_fatal([&] { kTargets[choice](bytes); })) {
    require(!is_number || bytes.size() > kNumberWidth, "a field that fits is no fatal fault");
  }
}

}  // namespace fuzz
