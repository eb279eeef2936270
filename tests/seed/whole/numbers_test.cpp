#include "seed/whole/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/util/volume_writer.h"

namespace {

using namespace tarvik;

constexpr std::int32_t kUntouched = 77;

// ---- integers ----

std::int32_t integer(std::string_view text) {
  std::int32_t value = kUntouched;
  EXPECT_TRUE(read_whole_integer(text, &value)) << text;
  return value;
}
void expect_no_integer(std::string_view text) {
  std::int32_t value = kUntouched;
  EXPECT_FALSE(read_whole_integer(text, &value)) << text;
  EXPECT_EQ(value, kUntouched) << text;
}

TEST(ReadWholeInteger, TakesASignAndDigits) {
  EXPECT_EQ(integer("0"), 0);
  EXPECT_EQ(integer("0042"), 42);
  EXPECT_EQ(integer("+7"), 7);
  EXPECT_EQ(integer("-7"), -7);
  EXPECT_EQ(integer("-0"), 0);
}

TEST(ReadWholeInteger, TakesThirtyTwoBits) {
  EXPECT_EQ(integer("2147483647"), 2147483647);
  EXPECT_EQ(integer("-2147483648"), std::numeric_limits<std::int32_t>::min());
  expect_no_integer("2147483648");
  expect_no_integer("-2147483649");
  expect_no_integer("99999999999999999999999999");
  EXPECT_EQ(integer("000000000000000000000000005"), 5);
}

TEST(ReadWholeInteger, RefusesAnythingElse) {
  for (const char *text : {"", "+", "-", "+-1", "--1", "1 2", " 1", "1 ", "1.", "1e2", "x", "0x1"})
    expect_no_integer(text);
}

// ---- real numbers ----

double real(std::string_view text) {
  double value = kUntouched;
  EXPECT_TRUE(read_whole_real(text, &value)) << text;
  return value;
}

TEST(ReadWholeReal, TakesDigitsWithAtMostOnePoint) {
  EXPECT_EQ(real("1"), 1.0);
  EXPECT_EQ(real("1."), 1.0);
  EXPECT_EQ(real(".5"), 0.5);
  EXPECT_EQ(real("1.25"), 1.25);
  EXPECT_EQ(real("-0.5"), -0.5);
  EXPECT_EQ(real("+064.993100"), 64.9931);
  EXPECT_TRUE(std::signbit(real("-0")));
}

TEST(ReadWholeReal, TakesAnExponent) {
  EXPECT_EQ(real("1E3"), 1000.0);
  EXPECT_EQ(real("1e+3"), 1000.0);
  EXPECT_EQ(real(".5e-1"), 0.05);
  EXPECT_EQ(real("1.E2"), 100.0);
  EXPECT_EQ(real("1.23456E-03"), 1.23456e-3);
}

TEST(ReadWholeReal, GivesTheNearestDouble) {
  EXPECT_EQ(real("0.1"), 0.1);
  // Just above the middle between 1 and the next double.
  EXPECT_EQ(real("1.00000000000000011102230246251565405"), 1.0 + 0x1p-52);
  EXPECT_EQ(real("1.00000000000000011102230246251565404"), 1.0);
  EXPECT_EQ(real("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(ReadWholeReal, IsInfiniteBeyondTheRangeAndZeroBelow) {
  EXPECT_EQ(real("1e309"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(real("-1e99999999999999999999"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(real("1e-99999999999999999999"), 0.0);
}

TEST(ReadWholeReal, RefusesAnythingElse) {
  for (const char *text :
       {"",    "+",  ".",  "-.",  "1..", "1.2.3", "e5",    ".e5", "1e",  "1e+",  "1e5.",
        "1 2", " 1", "1 ", "1,5", "inf", "nan",   "0x1p3", "1d5", "+-1", "1e--5"}) {
    double value = kUntouched;
    EXPECT_FALSE(read_whole_real(text, &value)) << text;
    EXPECT_EQ(value, kUntouched) << text;
  }
}

// ---- times ----

double time_of(std::string_view text) {
  double value = kUntouched;
  EXPECT_TRUE(read_whole_time(text, &value)) << text;
  return value;
}
void expect_no_time(std::string_view text) {
  double value = kUntouched;
  EXPECT_FALSE(read_whole_time(text, &value)) << text;
  EXPECT_EQ(value, kUntouched) << text;
}

// 2021-01-01 is day 18628 since 1970-01-01: 51 years of 365 days and 13 leap days.
constexpr double kStartOf2021 = 18628.0 * 86400;
constexpr double kDay = 86400;

TEST(ReadWholeTime, MayEndAfterEachPart) {
  EXPECT_EQ(time_of("2021"), kStartOf2021);
  EXPECT_EQ(time_of("2021,032"), kStartOf2021 + 31 * kDay);
  EXPECT_EQ(time_of("2021,032,05"), kStartOf2021 + 31 * kDay + 5 * 3600);
  EXPECT_EQ(time_of("2021,032,05:06"), kStartOf2021 + 31 * kDay + 5 * 3600 + 360);
  EXPECT_EQ(time_of("2021,032,05:06:07"), kStartOf2021 + 31 * kDay + 5 * 3600 + 367);
  EXPECT_EQ(time_of("2021,032,05:06:07."), kStartOf2021 + 31 * kDay + 5 * 3600 + 367);
  EXPECT_EQ(time_of("2021,032,05:06:07.5"), kStartOf2021 + 31 * kDay + 5 * 3600 + 367.5);
}

TEST(ReadWholeTime, TakesFewerDigitsToo) {
  EXPECT_EQ(time_of("2021,1"), kStartOf2021);
  EXPECT_EQ(time_of("2021,32,5:6:7"), kStartOf2021 + 31 * kDay + 5 * 3600 + 367);
}

TEST(ReadWholeTime, FourDigitsOfTheFractionCount) {
  EXPECT_EQ(time_of("1970,001,00:00:00.1234"), 0.1234);
  EXPECT_EQ(time_of("1970,001,00:00:00.12349999"), 0.1234);
  EXPECT_EQ(time_of("1970,001,00:00:00.00009"), 0.0);
  EXPECT_EQ(time_of("1970,001,00:00:00.05"), 0.05);
}

TEST(ReadWholeTime, CountsBackBefore1970) {
  EXPECT_EQ(time_of("1969,365,23:59:59.7500"), -0.25);
  EXPECT_EQ(time_of("1969"), -365 * kDay);
}

TEST(ReadWholeTime, EachPartHasItsRange) {
  EXPECT_EQ(time_of("2021,001,24"), kStartOf2021 + kDay);
  EXPECT_EQ(time_of("2021,001,00:59:60"), kStartOf2021 + 3600);
  EXPECT_EQ(time_of("2021,366"), kStartOf2021 + 365 * kDay);  // the next 1 January
  expect_no_time("2021,000");
  expect_no_time("2021,367");
  expect_no_time("2021,001,25");
  expect_no_time("2021,001,00:60");
  expect_no_time("2021,001,00:00:61");
}

TEST(ReadWholeTime, TakesAnyYearOfFourDigits) {
  EXPECT_EQ(time_of("2020,366"), kStartOf2021 - kDay);
  // 719528 days from 0000-01-01 to 1970-01-01.
  EXPECT_EQ(time_of("0000"), -719528 * kDay);
  EXPECT_EQ(time_of("9999"), 2932532 * kDay);
}

TEST(ReadWholeTime, RefusesAnythingElse) {
  for (const char *text : {"",
                           "202",
                           "20210",
                           "2021,",
                           "2021,0001",
                           "2021,001,",
                           "2021,001,001",
                           "2021,001,00:",
                           "2021,001,00:000",
                           "2021,001,00:00:",
                           "2021,001,00:00:000",
                           "2021,001,00:00:00,5",
                           "2021,001,00:00:00.5x",
                           "2021,001,00:00.5",
                           "2021,001,00.5",
                           "2021,001 00:00",
                           "2021:001",
                           "-021",
                           "2021-01-01",
                           " 2021",
                           "2021 ",
                           "2021,+1",
                           "2021,001,-1"}) {
    expect_no_time(text);
  }
}

// ---- binary times ----

using volume::BinaryFields;
using volume::ByteOrder;
using volume::Time;

std::string binary(const Time &time, ByteOrder order = ByteOrder::kBig) {
  return BinaryFields(order).time(time).bytes();
}
bool is_time(const Time &time) { return is_whole_binary_time(binary(time).data(), true); }

TEST(ReadWholeBinaryTime, IsArithmeticOnTheCalendarInEitherOrder) {
  const Time time = {2021, 32, 5, 6, 7, 1234};
  double value = 0;
  EXPECT_TRUE(read_whole_binary_time(binary(time).data(), true, &value));
  EXPECT_DOUBLE_EQ(value, kStartOf2021 + 31 * kDay + 5 * 3600 + 367.1234);
  EXPECT_TRUE(read_whole_binary_time(binary(time, ByteOrder::kLittle).data(), false, &value));
  EXPECT_DOUBLE_EQ(value, kStartOf2021 + 31 * kDay + 5 * 3600 + 367.1234);
}

TEST(ReadWholeBinaryTime, LastPartIsNotChecked) {
  double value = 0;
  EXPECT_TRUE(read_whole_binary_time(binary({1970, 1, 0, 0, 0, 65535}).data(), true, &value));
  EXPECT_DOUBLE_EQ(value, 6.5535);
}

TEST(ReadWholeBinaryTime, UnusedByteDoesNotCount) {
  std::string bytes = binary({1970, 1, 0, 0, 1, 0});
  bytes[7] = '\xff';
  double value = 0;
  EXPECT_TRUE(read_whole_binary_time(bytes.data(), true, &value));
  EXPECT_EQ(value, 1.0);
}

TEST(IsWholeBinaryTime, EachPartHasItsRange) {
  EXPECT_TRUE(is_time({1, 1}));
  EXPECT_FALSE(is_time({0, 1}));
  EXPECT_TRUE(is_time({9999, 366, 23, 59, 60}));
  EXPECT_FALSE(is_time({10000, 1}));
  EXPECT_FALSE(is_time({2021, 0}));
  EXPECT_FALSE(is_time({2021, 367}));
  EXPECT_FALSE(is_time({2021, 1, 24}));
  EXPECT_FALSE(is_time({2021, 1, 0, 60}));
  EXPECT_FALSE(is_time({2021, 1, 0, 0, 61}));
}

TEST(ReadWholeBinaryTime, LeavesTheResultWhereThereIsNone) {
  double value = kUntouched;
  EXPECT_FALSE(read_whole_binary_time(binary({0, 0}).data(), true, &value));
  EXPECT_EQ(value, kUntouched);
}

}  // namespace
