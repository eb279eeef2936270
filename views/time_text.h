// Times as people and programs write them on a command line.
#ifndef VIEWS_TIME_TEXT_H_
#define VIEWS_TIME_TEXT_H_

#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarvik {

// A time of SEED, in ten-thousandths of a second since 1970-01-01T00:00:00 UTC.
using Ticks = std::int64_t;
inline constexpr Ticks kTicksPerSecond = 10000;

// From epoch seconds, as blocks hold them.
inline Ticks ticks_of(double epoch) {
  return std::llround(epoch * static_cast<double>(kTicksPerSecond));
}

// Reads "YYYY-MM-DD[THH:MM:SS[.F*]][Z]", UTC: a date of the calendar from year 1 on, hours to 23,
// seconds to 60; of the fraction the first four digits count.  Nothing for any other text.
std::optional<Ticks> parse_time_text(std::string_view text);

}  // namespace tarvik

#endif  // VIEWS_TIME_TEXT_H_
