#include "support/epoch.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

#include "support/civil.h"
#include "support/memory.h"
#include "support/time_text.h"

using namespace tarvik;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoTime = 9999999999.999;

std::string text_of(double epoch, const char *format) {
  char *text = epoch2str(epoch, format);
  std::string result = text == nullptr ? "(null)" : text;
  std::free(text);
  return result;
}

std::string time_of(double epoch) {
  std::array<char, 32> buffer;
  return {buffer.data(), put_time(buffer.data(), epoch)};
}

TEST(H2e, EpochIsZero) { EXPECT_EQ(h2e(1970, 1, 0, 0, 0.0), 0.0); }

TEST(H2e, PartsAddUp) { EXPECT_EQ(h2e(1970, 2, 3, 4, 5.5), 86400.0 + 3 * 3600.0 + 4 * 60.0 + 5.5); }

TEST(H2e, LeapYearsAreCounted) {
  EXPECT_EQ(h2e(2000, 1, 0, 0, 0.0), 946684800.0);
  EXPECT_EQ(h2e(2001, 1, 0, 0, 0.0) - h2e(2000, 1, 0, 0, 0.0), 366 * 86400.0);
  EXPECT_EQ(h2e(1901, 1, 0, 0, 0.0) - h2e(1900, 1, 0, 0, 0.0), 365 * 86400.0);
  EXPECT_EQ(h2e(1, 1, 0, 0, 0.0) - h2e(0, 1, 0, 0, 0.0), 366 * 86400.0);
}

TEST(H2e, YearsBeforeTheEpochAreNegative) {
  EXPECT_EQ(h2e(1969, 365, 23, 59, 59.0), -1.0);
  EXPECT_EQ(h2e(1, 1, 0, 0, 0.0), -719162 * 86400.0);
  EXPECT_EQ(h2e(-399, 1, 0, 0, 0.0), -(719162 + 146097) * 86400.0);
}

TEST(H2e, NothingIsNormalised) {
  EXPECT_EQ(h2e(1970, 0, 0, 0, 0.0), -86400.0);
  EXPECT_EQ(h2e(1970, 1, 25, 61, 61.0), 25 * 3600.0 + 61 * 60.0 + 61.0);
  EXPECT_EQ(h2e(1970, 400, -1, -1, -1.0), 399 * 86400.0 - 3661.0);
}

TEST(H2e, SecondsAreAddedOnce) { EXPECT_EQ(h2e(2020, 60, 12, 34, 56.789), 1582979640.0 + 56.789); }

TEST(H2e, ExtremesDoNotOverflow) {
  constexpr std::int32_t kMost = INT32_MAX;
  constexpr std::int32_t kLeast = INT32_MIN;
  // 2^31 hours and minutes of seconds on top of the day before 1970-01-01.
  EXPECT_EQ(h2e(1970, 0, kMost, kMost, 0.0), 2147483647.0 * 3660.0 - 86400.0);
  EXPECT_EQ(h2e(1970, kLeast, 0, 0, 0.0), -2147483649.0 * 86400.0);
  EXPECT_GT(h2e(kMost, kMost, kMost, kMost, 0.0), 6.7e16);
  EXPECT_LT(h2e(kLeast, kLeast, kLeast, kLeast, 0.0), -6.7e16);
}

TEST(Epoch2str, YearDayAndTime) {
  EXPECT_EQ(text_of(0.0, "%Y:%j:%T"), "1970:001:00:00:00");
  EXPECT_EQ(text_of(951782400.0, "%Y:%j:%T"), "2000:060:00:00:00");  // 29 February
  EXPECT_EQ(text_of(978307199.0, "%Y:%j:%T"), "2000:366:23:59:59");
}

TEST(Epoch2str, FractionIsRoundedDown) {
  EXPECT_EQ(text_of(59.999, "%T"), "00:00:59");
  EXPECT_EQ(text_of(-0.001, "%Y:%j:%T"), "1969:365:23:59:59");
}

TEST(Epoch2str, YearHasFourDigitsAtLeast) {
  EXPECT_EQ(text_of(h2e(5, 1, 0, 0, 0.0), "%Y"), "0005");
  EXPECT_EQ(text_of(h2e(0, 366, 0, 0, 0.0), "%Y:%j"), "0000:366");
  EXPECT_EQ(text_of(h2e(-5, 1, 0, 0, 0.0), "%Y"), "-0005");
  EXPECT_EQ(text_of(h2e(65535, 365, 24, 59, 59.0), "%Y:%j:%T"), "65536:001:00:59:59");
}

TEST(Epoch2str, OtherConversionsAreThoseOfStrftime) {
  // 2001-09-09 was a Sunday, the 252nd day of its year.
  constexpr double kBillion = 1e9;
  EXPECT_EQ(text_of(kBillion, "%a %A %b %B %d %e %H %I %M %S %p"),
            "Sun Sunday Sep September 09  9 01 01 46 40 AM");
  EXPECT_EQ(text_of(kBillion, "%F %D %y %m %u %w %U %%"), "2001-09-09 09/09/01 01 09 7 0 36 %");
  EXPECT_EQ(text_of(kBillion, "%n%t"), "\n\t");
}

TEST(Epoch2str, ModifiersMeanNothing) {
  EXPECT_EQ(text_of(0.0, "%EY %Oj %Ey"), "1970 001 70");
  EXPECT_EQ(text_of(h2e(812, 42, 12, 0, 0.0), "%EY:%Oj:%OS"), "0812:042:00");
  EXPECT_EQ(text_of(h2e(-5, 42, 12, 0, 0.0), "%EY"), "-0005");
}

TEST(Epoch2str, WidthOfAConversionIsThatOfStrftime) { EXPECT_EQ(text_of(0.0, "%5d|"), "00001|"); }

std::string fraction_of(double epoch, const char *format, int decimals) {
  char *text = epoch2str_fraction(epoch, format, decimals);
  std::string result = text == nullptr ? "(null)" : text;
  std::free(text);
  return result;
}

TEST(Epoch2strFraction, FollowsTheSeconds) {
  constexpr double kQuarter = 1e9 + 0.25;
  EXPECT_EQ(fraction_of(kQuarter, "%Y-%m-%dT%H:%M:%SZ", 6), "2001-09-09T01:46:40.250000Z");
  EXPECT_EQ(fraction_of(kQuarter, "%Y:%j:%T", 4), "2001:252:01:46:40.2500");
  EXPECT_EQ(fraction_of(kQuarter, "%OS|%M|%s", 1), "40.3|46|1000000000");
}

TEST(Epoch2strFraction, IsTheNearest) {
  // 13.1234 has no double of its own; the one at hand is less.
  EXPECT_EQ(fraction_of(h2e(2010, 58, 6, 34, 13.1234), "%T", 4), "06:34:13.1234");
  EXPECT_EQ(fraction_of(h2e(2010, 58, 6, 34, 13.1234), "%T", 6), "06:34:13.123400");
  EXPECT_EQ(fraction_of(0.00004, "%S", 4), "00.0000");
  EXPECT_EQ(fraction_of(0.00006, "%S", 4), "00.0001");
}

TEST(Epoch2strFraction, CarriesIntoTheDate) {
  const double last = h2e(2010, 365, 23, 59, 59.99996);
  EXPECT_EQ(fraction_of(last, "%Y:%j:%T", 4), "2011:001:00:00:00.0000");
  EXPECT_EQ(fraction_of(last, "%Y:%j:%T", 5), "2010:365:23:59:59.99996");
}

TEST(Epoch2strFraction, BeforeTheEpochCountsUpToo) {
  EXPECT_EQ(fraction_of(-0.25, "%Y:%j:%T", 2), "1969:365:23:59:59.75");
}

TEST(Epoch2strFraction, DecimalsArePutWithinTheirBounds) {
  EXPECT_EQ(fraction_of(1.75, "%S", 0), "01");
  EXPECT_EQ(fraction_of(1.75, "%S", -1), "01");
  EXPECT_EQ(fraction_of(1.75, "%S", 9), "01.750000000");
  EXPECT_EQ(fraction_of(1.75, "%S", 100), "01.750000000");
}

TEST(Epoch2strFraction, WithoutADateThereIsNone) {
  EXPECT_EQ(fraction_of(kNaN, "%S", 3), "NaN");
  EXPECT_EQ(fraction_of(-kInfinity, "%S", 3), "-Inf");
}

TEST(Epoch2str, ConversionOf32CharactersGivesNothing) {
  const std::string flags(30, '-');
  EXPECT_EQ(text_of(0.0, ("<%" + flags + "d>").c_str()), "<>");
}

TEST(Epoch2str, MonthsOfLeapYears) {
  EXPECT_EQ(text_of(h2e(2000, 60, 0, 0, 0.0), "%F"), "2000-02-29");
  EXPECT_EQ(text_of(h2e(2001, 60, 0, 0, 0.0), "%F"), "2001-03-01");
  EXPECT_EQ(text_of(h2e(2000, 366, 0, 0, 0.0), "%F"), "2000-12-31");
  EXPECT_EQ(text_of(h2e(1, 1, 0, 0, 0.0), "%F"), "0001-01-01");
}

TEST(Epoch2str, DaysOfTheWeekRunThroughTheEpoch) {
  EXPECT_EQ(text_of(0.0, "%a"), "Thu");
  EXPECT_EQ(text_of(-86400.0, "%a"), "Wed");
  EXPECT_EQ(text_of(-5 * 86400.0, "%a"), "Sat");
}

TEST(Epoch2str, TimeZoneIsUniversalTime) {
  setenv("TZ", "XYZ+5", 1);
  tzset();
  EXPECT_EQ(text_of(1.0, "%T %Z %z %s"), "00:00:01 UTC +0000 1");
  unsetenv("TZ");
  tzset();
}

TEST(Epoch2str, SecondsSinceTheEpoch) {
  EXPECT_EQ(text_of(-1.5, "%s"), "-2");
  EXPECT_EQ(text_of(1e15, "%s"), "1000000000000000");
}

TEST(Epoch2str, PlainTextIsCopied) {
  EXPECT_EQ(text_of(0.0, ""), "");
  EXPECT_EQ(text_of(0.0, "year %Y."), "year 1970.");
  EXPECT_EQ(text_of(0.0, "100%"), "100%");
}

TEST(Epoch2str, LongFormatIsWrittenWhole) {
  std::string format;
  std::string expected;
  for (int i = 0; i < 500; ++i) {
    format += "%Y-";
    expected += "1970-";
  }
  EXPECT_EQ(text_of(0.0, format.c_str()), expected);
}

TEST(Epoch2str, NoNumberHasNoDate) {
  EXPECT_EQ(text_of(kNaN, "%Y"), "NaN");
  EXPECT_EQ(text_of(kInfinity, "%Y"), "Inf");
  EXPECT_EQ(text_of(-kInfinity, "%Y"), "-Inf");
}

TEST(Epoch2str, BeyondTheLimitCountsAsInfinite) {
  EXPECT_EQ(text_of(std::nextafter(1e15, kInfinity), "%Y"), "Inf");
  EXPECT_EQ(text_of(std::nextafter(-1e15, -kInfinity), "%Y"), "-Inf");
  // 1e15 s are 11574074074 days and 6400 s.  The days are 79221 times 400 years of 146097 days and
  // 123637 more, of which 338 years with 81 leap years (as from 1970 on) take 123451.
  EXPECT_EQ(text_of(1e15, "%Y:%j:%T"), "31690708:187:01:46:40");
}

TEST(Epoch2str, MemoryExhaustedGivesNull) {
  memory_set_gate([](std::size_t) { return false; });
  EXPECT_EQ(epoch2str(0.0, "%Y"), nullptr);
  EXPECT_EQ(epoch2str(0.0, ""), nullptr);
  EXPECT_EQ(epoch2str(kNaN, "%Y"), nullptr);
  memory_set_gate(nullptr);
}

TEST(Yearday, YearAndDay) {
  EXPECT_EQ(yearday(0.0), 1970001);
  EXPECT_EQ(yearday(-0.5), 1969365);
  EXPECT_EQ(yearday(h2e(2054, 365, 12, 0, 0.0)), 2054365);
  EXPECT_EQ(yearday(h2e(2000, 366, 0, 0, 0.0)), 2000366);
}

TEST(Yearday, NoNumberGivesZero) {
  EXPECT_EQ(yearday(kNaN), 0);
  EXPECT_EQ(yearday(2e15), 0);
  EXPECT_EQ(yearday(-kInfinity), 0);
}

TEST(Yearday, YearsThatDoNotFitSaturate) {
  EXPECT_EQ(yearday(1e15), INT32_MAX);
  EXPECT_EQ(yearday(-1e15), INT32_MIN);
}

double clock_seconds() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// To the microsecond, which a double holds.
TEST(StdNow, IsTheSystemClock) {
  const double before = clock_seconds();
  const double now = std_now();
  const double after = clock_seconds();
  EXPECT_GE(now, before - 1e-6);
  EXPECT_LE(now, after + 1e-6);
}

TEST(StdNow, CanBeSetAndGivenBack) {
  std_set_now(2682374400.5);
  EXPECT_EQ(std_now(), 2682374400.5);
  std_set_now(kNaN);
  EXPECT_LT(std::fabs(std_now() - static_cast<double>(std::time(nullptr))), 60.0);
}

TEST(PutTime, SaysWhatEpoch2strSays) {
  for (const double epoch :
       {0.0, -0.001, 1.0, 86399.999, 86400.0, 951782400.0, -62167219201.0, 1e15, -1e15, 2e15, -2e15,
        kNaN, kInfinity, -kInfinity, kNoTime, 0.5, 2005972207999.0}) {
    EXPECT_EQ(time_of(epoch), text_of(epoch, "%Y:%j:%T")) << epoch;
  }
}

TEST(PutTime, DayIsWorkedOutAnewWhenItChanges) {
  EXPECT_EQ(time_of(86399.0), "1970:001:23:59:59");
  EXPECT_EQ(time_of(86400.0), "1970:002:00:00:00");
  EXPECT_EQ(time_of(86399.0), "1970:001:23:59:59");
  EXPECT_EQ(time_of(-1.0), "1969:365:23:59:59");
}

TEST(CivilYear, EveryDayFollowsTheOneBefore) {
  // 1000 years before the epoch to 1000 years after it.
  CivilYear expected = civil_year(-365243);
  for (std::int64_t day = -365242; day < 365243; ++day) {
    if (++expected.day > (is_leap_year(expected.year) ? 366 : 365)) {
      expected = {expected.year + 1, 1};
    }
    const CivilYear date = civil_year(day);
    ASSERT_TRUE(date.year == expected.year && date.day == expected.day) << day;
  }
}

}  // namespace
