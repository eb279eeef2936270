#include "support/epoch.h"

#include <time.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>

#include "support/c_locale.h"
#include "support/civil.h"
#include "support/digits.h"
#include "support/line.h"
#include "support/memory.h"
#include "support/time_text.h"

using namespace tarvik;

namespace {

std::atomic<double> fixed_now = std::numeric_limits<double>::quiet_NaN();

// A text that grows; when memory runs out it is lost and stays so.
class GrowingText {
 public:
  GrowingText() noexcept = default;
  ~GrowingText() { memory_free(text_); }
  GrowingText(const GrowingText &) = delete;
  GrowingText &operator=(const GrowingText &) = delete;

  void append(std::string_view more) noexcept {
    if (size_ + more.size() >= capacity_) grow(more.size());
    if (!lost_) size_ = static_cast<std::size_t>(put_text(text_ + size_, more) - text_);
  }

  // The text, for the caller to free; null when memory ran out.
  char *release() noexcept {
    append({});
    if (lost_) return nullptr;
    text_[size_] = '\0';
    char *text = text_;
    text_ = nullptr;
    return text;
  }

 private:
  void grow(std::size_t bytes) noexcept {
    const std::size_t capacity = std::max<std::size_t>(32, (size_ + bytes + 1) * 2);
    void *larger = lost_ ? nullptr : memory_resize(text_, capacity);
    lost_ = larger == nullptr;
    if (lost_) return;
    text_ = static_cast<char *>(larger);
    capacity_ = capacity;
  }

  char *text_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  bool lost_ = false;
};

// An epoch and its date.
struct Moment {
  std::int64_t seconds;  // rounded down
  std::int64_t fraction;
  int decimals;  // of the fraction, which is not shown when there are none
  CivilYear date;
  tm parts;
};

void set_month(tm &parts, bool leap_year) {
  const std::array<int, 12> lengths = {31, leap_year ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30,
                                       31};
  int rest = parts.tm_yday;
  std::size_t month = 0;
  while (rest >= lengths[month]) rest -= lengths[month++];
  parts.tm_mon = static_cast<int>(month);
  parts.tm_mday = rest + 1;
}

// With no decimals the epoch is rounded down, else to the nearest of so many.
Moment moment_of(double epoch, int decimals) {
  Moment moment = {};
  const double whole = std::floor(epoch);
  moment.seconds = static_cast<std::int64_t>(whole);
  moment.decimals = std::clamp(decimals, 0, 9);
  if (moment.decimals > 0) {
    const double power = kExactPowers[static_cast<std::size_t>(moment.decimals)];
    moment.fraction = std::llround((epoch - whole) * power);
    if (moment.fraction == static_cast<std::int64_t>(power)) {
      ++moment.seconds;
      moment.fraction = 0;
    }
  }
  const std::int64_t day = floor_div(moment.seconds, kDaySeconds);
  const int second_of_day = static_cast<int>(moment.seconds - day * kDaySeconds);
  moment.date = civil_year(day);
  moment.parts.tm_year = static_cast<int>(moment.date.year - 1900);
  moment.parts.tm_yday = moment.date.day - 1;
  set_month(moment.parts, is_leap_year(moment.date.year));
  moment.parts.tm_wday = static_cast<int>(day + 4 - floor_div(day + 4, 7) * 7);
  moment.parts.tm_hour = second_of_day / 3600;
  moment.parts.tm_min = second_of_day / 60 % 60;
  moment.parts.tm_sec = second_of_day % 60;
  return moment;
}

void append_digits(GrowingText &text, std::int64_t value, int digits) {
  std::array<char, 32> buffer;
  const char *end = put_digits(buffer.data(), value, digits);
  text.append({buffer.data(), static_cast<std::size_t>(end - buffer.data())});
}

void append_seconds(GrowingText &text, const Moment &moment) {
  append_digits(text, moment.parts.tm_sec, 2);
  if (moment.decimals == 0) return;
  text.append(".");
  append_digits(text, moment.fraction, moment.decimals);
}

// A conversion that strftime knows, "%" included.
void append_strftime(GrowingText &text, const Moment &moment, std::string_view conversion) {
  std::array<char, 32> format = {};
  if (conversion.size() >= format.size()) return;
  std::copy(conversion.begin(), conversion.end(), format.begin());
  std::array<char, 512> buffer;
  text.append({buffer.data(),
               strftime_l(buffer.data(), buffer.size(), format.data(), &moment.parts, c_locale())});
}

void append_format(GrowingText &text, const Moment &moment, std::string_view format);

// Conversions whose meaning strftime leaves open for some years, or takes from the local time zone,
// are made here.
void append_conversion(GrowingText &text, const Moment &moment, std::string_view conversion) {
  // The modifiers E and O mean nothing in the "C" locale.
  const bool modified = conversion.size() == 3 && (conversion[1] == 'E' || conversion[1] == 'O');
  switch (conversion.size() == 2 || modified ? conversion.back() : '\0') {
    case 'Y': return append_digits(text, moment.date.year, 4);
    case 'j': return append_digits(text, moment.date.day, 3);
    case 'S': return append_seconds(text, moment);
    case 'T': return append_format(text, moment, "%H:%M:%S");
    case 'F': return append_format(text, moment, "%Y-%m-%d");
    case 's': return append_digits(text, moment.seconds, 1);
    case 'Z': return text.append("UTC");
    case 'z': return text.append("+0000");
    default: return append_strftime(text, moment, conversion);
  }
}

// Length of the conversion that format begins with: flags, width and modifier may stand between the
// percent sign and the letter.  A text that ends before the letter is no conversion: 0.
std::size_t conversion_length(std::string_view format) {
  const std::size_t letter = format.find_first_not_of("_-0^#+123456789EO", 1);
  return letter == std::string_view::npos ? 0 : letter + 1;
}

void append_format(GrowingText &text, const Moment &moment, std::string_view format) {
  while (!format.empty()) {
    const std::size_t plain = std::min(format.find('%'), format.size());
    text.append(format.substr(0, plain));
    format.remove_prefix(plain);
    const std::size_t length = conversion_length(format);
    if (length == 0) break;
    append_conversion(text, moment, format.substr(0, length));
    format.remove_prefix(length);
  }
  text.append(format);
}

}  // namespace

double h2e(int32_t year, int32_t day, int32_t hour, int32_t minute, double seconds) {
  const std::int64_t days = first_day_of(year) + (std::int64_t{day} - 1);
  const std::int64_t whole =
      days * kDaySeconds + std::int64_t{hour} * 3600 + std::int64_t{minute} * 60;
  return static_cast<double>(whole) + seconds;
}

char *epoch2str(double epoch, const char *format) { return epoch2str_fraction(epoch, format, 0); }

char *epoch2str_fraction(double epoch, const char *format, int decimals) {
  GrowingText text;
  const std::string_view whole = undated_text(epoch);
  if (whole.empty()) {
    append_format(text, moment_of(epoch, decimals), format);
  } else {
    text.append(whole);
  }
  return text.release();
}

int32_t yearday(double epoch) {
  if (!undated_text(epoch).empty()) return 0;
  const auto seconds = static_cast<std::int64_t>(std::floor(epoch));
  const CivilYear date = civil_year(floor_div(seconds, kDaySeconds));
  // Years of more than six digits do not fit.
  return static_cast<int32_t>(
      std::clamp<std::int64_t>(date.year * 1000 + date.day, INT32_MIN, INT32_MAX));
}

double std_now(void) {
  const double fixed = fixed_now.load(std::memory_order_relaxed);
  if (!std::isnan(fixed)) return fixed;
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void std_set_now(double epoch) { fixed_now.store(epoch, std::memory_order_relaxed); }
