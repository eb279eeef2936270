// Days of the proleptic Gregorian calendar, counted from 1970-01-01.
#ifndef SUPPORT_CIVIL_H_
#define SUPPORT_CIVIL_H_

#include <cstdint>

namespace tarvik {

inline constexpr std::int64_t kDaySeconds = 86400;
// An epoch beyond this size counts as infinite.
inline constexpr double kEpochLimit = 1e15;

// Rounds down, unlike the operator.
constexpr std::int64_t floor_div(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

struct CivilYear {
  std::int64_t year;
  std::int32_t day;  // of the year, 1 is 1 January
};

constexpr bool is_leap_year(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The day of 1 January of a year.
constexpr std::int64_t first_day_of(std::int64_t year) {
  constexpr std::int64_t kDaysFromYear1 = 719162;
  const std::int64_t before = year - 1;
  if (before >= 0 && before <= UINT16_MAX) {
    // Nearly every year: 32 bits without a sign divide fastest.
    const auto years = static_cast<std::uint32_t>(before);
    return std::int64_t{years * 365 + years / 4 - years / 100 + years / 400} - kDaysFromYear1;
  }
  return before * 365 + floor_div(before, 4) - floor_div(before, 100) + floor_div(before, 400) -
         kDaysFromYear1;
}

// The year and day of the year of a day.
constexpr CivilYear civil_year(std::int64_t day) {
  constexpr std::int64_t kDaysOf400Years = 146097;
  // A guess that is right or one too high or too low, for a year has 365.2425 days on average.
  std::int64_t year = 1970 + floor_div(day * 400, kDaysOf400Years);
  if (day < first_day_of(year)) --year;
  if (day >= first_day_of(year + 1)) ++year;
  return {year, static_cast<std::int32_t>(day - first_day_of(year) + 1)};
}

}  // namespace tarvik

#endif  // SUPPORT_CIVIL_H_
