#include "views/time_text.h"

#include <array>

#include "support/civil.h"

namespace tarvik {
namespace {

constexpr std::array<int, 12> kMonths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Takes one part after the other off the start of a text.
class Parts {
 public:
  explicit Parts(std::string_view text) : rest_(text) {}

  bool take(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  // A number of exactly so many digits, within bounds.
  bool take(std::size_t digits, int least, int most, int *value) {
    if (rest_.size() < digits) return false;
    *value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      if (!is_digit(rest_[i])) return false;
      *value = *value * 10 + (rest_[i] - '0');
    }
    rest_.remove_prefix(digits);
    return *value >= least && *value <= most;
  }
  // Any number of digits, as ten-thousandths.
  int take_fraction() {
    int fraction = 0;
    int unit = 1000;
    for (; !rest_.empty() && is_digit(rest_.front()); rest_.remove_prefix(1)) {
      fraction += unit * (rest_.front() - '0');
      unit /= 10;
    }
    return fraction;
  }
  [[nodiscard]] bool is_empty() const { return rest_.empty(); }

 private:
  static bool is_digit(char c) { return c >= '0' && c <= '9'; }

  std::string_view rest_;
};

int days_of(int year, int month) {
  return kMonths[static_cast<std::size_t>(month - 1)] + (month == 2 && is_leap_year(year) ? 1 : 0);
}

// The day since 1970-01-01.
bool take_date(Parts *parts, std::int64_t *day) {
  int year = 0;
  int month = 0;
  int day_of_month = 0;
  if (!parts->take(4, 1, 9999, &year) || !parts->take('-') || !parts->take(2, 1, 12, &month) ||
      !parts->take('-') || !parts->take(2, 1, days_of(year, month), &day_of_month)) {
    return false;
  }
  *day = first_day_of(year) + day_of_month - 1;
  for (int before = 1; before < month; ++before) *day += days_of(year, before);
  return true;
}

bool take_clock(Parts *parts, Ticks *clock) {
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!parts->take(2, 0, 23, &hour) || !parts->take(':') || !parts->take(2, 0, 59, &minute) ||
      !parts->take(':') || !parts->take(2, 0, 60, &second)) {
    return false;
  }
  *clock = (hour * 3600 + minute * 60 + second) * kTicksPerSecond;
  if (parts->take('.')) *clock += parts->take_fraction();
  return true;
}

}  // namespace

std::optional<Ticks> parse_time_text(std::string_view text) {
  Parts parts(text);
  std::int64_t day = 0;
  Ticks clock = 0;
  if (!take_date(&parts, &day)) return std::nullopt;
  if (parts.take('T') && !take_clock(&parts, &clock)) return std::nullopt;
  parts.take('Z');
  if (!parts.is_empty()) return std::nullopt;
  return day * kDaySeconds * kTicksPerSecond + clock;
}

}  // namespace tarvik
