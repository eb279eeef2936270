#include "support/time_text.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "support/civil.h"
#include "support/line.h"
#include "support/per_thread.h"

namespace tarvik {

namespace {

struct DayText {
  std::int64_t day;
  std::size_t length;         // 0 as long as there is none
  std::array<char, 24> text;  // "YYYY:DDD:"
};

// "YYYY:DDD:" of a day; the last one is kept, for times come in order.
const DayText &day_text(std::int64_t day) {
  static TARVIK_THREAD_LOCAL DayText last = {};
  if (day == last.day && last.length > 0) return last;
  const CivilYear date = civil_year(day);
  char *end = put_char(put_digits(last.text.data(), date.year, 4), ':');
  end = put_char(put_digits(end, date.day, 3), ':');
  last.day = day;
  last.length = static_cast<std::size_t>(end - last.text.data());
  return last;
}

}  // namespace

std::string_view undated_text(double epoch) {
  if (std::isnan(epoch)) return "NaN";
  if (epoch > kEpochLimit) return "Inf";
  return epoch < -kEpochLimit ? "-Inf" : "";
}

char *put_time(char *out, double epoch) {
  const std::string_view whole = undated_text(epoch);
  if (!whole.empty()) return put_text(out, whole);
  const auto seconds = static_cast<std::int64_t>(std::floor(epoch));
  const std::int64_t day = floor_div(seconds, kDaySeconds);
  const DayText &date = day_text(day);
  out = put_text(out, {date.text.data(), date.length});
  const auto second_of_day = static_cast<int>(seconds - day * kDaySeconds);
  out = put_char(put_digits<2>(out, second_of_day / 3600), ':');
  out = put_char(put_digits<2>(out, second_of_day / 60 % 60), ':');
  return put_digits<2>(out, second_of_day % 60);
}

}  // namespace tarvik
