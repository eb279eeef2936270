#include "views/time_text.h"

#include <gtest/gtest.h>

#include <optional>

using namespace tarvik;

namespace {

TEST(ParseTimeText, DateIsItsMidnight) {
  EXPECT_EQ(parse_time_text("1970-01-01"), 0);
  EXPECT_EQ(parse_time_text("1970-01-02Z"), 864000000);
  EXPECT_EQ(parse_time_text("1969-12-31"), -864000000);
}

TEST(ParseTimeText, MonthsAndLeapDaysCount) {
  // 2020-02-29 is day 18321 and 2021-03-16 day 18702.
  EXPECT_EQ(parse_time_text("2020-02-29"), 18321 * 864000000LL);
  EXPECT_EQ(parse_time_text("2021-03-16"), 18702 * 864000000LL);
}

TEST(ParseTimeText, ClockAndFractionCount) {
  EXPECT_EQ(parse_time_text("1970-01-01T01:02:03"), 37230000);
  EXPECT_EQ(parse_time_text("1970-01-01T00:00:00.6Z"), 6000);
  EXPECT_EQ(parse_time_text("1970-01-01T00:00:00.00019999"), 1);
  EXPECT_EQ(parse_time_text("1970-01-01T00:00:00."), 0);
  EXPECT_EQ(parse_time_text("1970-01-01T23:59:60Z"), 864000000);
}

TEST(ParseTimeText, PartsOutOfRangeAreNoTime) {
  for (const char *text :
       {"0000-01-01", "2021-00-01", "2021-13-01", "2021-01-00", "2021-04-31", "2021-02-29",
        "2100-02-29", "2021-01-01T24:00:00", "2021-01-01T00:60:00", "2021-01-01T00:00:61"}) {
    EXPECT_EQ(parse_time_text(text), std::nullopt) << text;
  }
}

TEST(ParseTimeText, OtherFormsAreNoTime) {
  for (const char *text :
       {"", "2021", "2021-1-01", "2021-01-1", "20210101", "2021-01-01T", "2021-01-01T00:00",
        "2021-01-01 00:00:00", "2021-01-01T00:00:00z", "2021-01-01T00:00:00ZZ", " 2021-01-01",
        "2021-01-01T00:00:0x", "2021-01-01T00:00:00.1+01:00", "-021-01-01"}) {
    EXPECT_EQ(parse_time_text(text), std::nullopt) << text;
  }
}

TEST(TicksOf, SecondsAreTenThousandTicks) {
  EXPECT_EQ(ticks_of(1.00005), 10001);
  EXPECT_EQ(ticks_of(-0.0001), -1);
}

}  // namespace
