#include "views/json.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace tarvik;

namespace {

using Limits = std::numeric_limits<double>;

// What a function writes at a pointer.
template <typename Put, typename... Values>
std::string put(Put function, Values... values) {
  std::array<char, 64> room;
  char *end = function(room.data(), values...);
  return {room.data(), end};
}

std::string real(double value) { return put(put_json_real, value); }
std::string time(double epoch) { return put(put_json_time, epoch); }

// ---- real numbers ----

TEST(PutJsonReal, WholeNumbersHaveNoPoint) {
  EXPECT_EQ(real(0), "0");
  EXPECT_EQ(real(1), "1");
  EXPECT_EQ(real(20), "20");
  EXPECT_EQ(real(688), "688");
  EXPECT_EQ(real(-90), "-90");
  EXPECT_EQ(real(1234567), "1234567");
}

TEST(PutJsonReal, FractionsHaveADigitBeforeThePoint) {
  EXPECT_EQ(real(0.5), "0.5");
  EXPECT_EQ(real(64.9931), "64.9931");
  EXPECT_EQ(real(-16.9124), "-16.9124");
  EXPECT_EQ(real(0.1 + 0.2), "0.30000000000000004");
}

TEST(PutJsonReal, ExponentIsWrittenWhereItIsShorter) {
  EXPECT_EQ(real(100), "100");
  EXPECT_EQ(real(1000), "1e3");
  EXPECT_EQ(real(1200), "1200");
  EXPECT_EQ(real(12000), "12000");
  EXPECT_EQ(real(120000), "1.2e5");
  EXPECT_EQ(real(6.29e8), "6.29e8");
  EXPECT_EQ(real(0.01), "0.01");
  EXPECT_EQ(real(0.001), "1e-3");
  EXPECT_EQ(real(0.0012), "0.0012");
  EXPECT_EQ(real(0.00012), "1.2e-4");
}

TEST(PutJsonReal, ZeroKeepsItsSign) { EXPECT_EQ(real(-0.0), "-0"); }

TEST(PutJsonReal, ValuesThatAreNotFiniteAreTexts) {
  EXPECT_EQ(real(Limits::quiet_NaN()), "\"NaN\"");
  EXPECT_EQ(real(-Limits::quiet_NaN()), "\"NaN\"");
  EXPECT_EQ(real(Limits::infinity()), "\"Infinity\"");
  EXPECT_EQ(real(-Limits::infinity()), "\"-Infinity\"");
}

TEST(PutJsonReal, EndsOfTheRangeReadBack) {
  EXPECT_EQ(real(Limits::max()), "1.7976931348623157e308");
  EXPECT_EQ(real(Limits::lowest()), "-1.7976931348623157e308");
  EXPECT_EQ(real(Limits::min()), "2.2250738585072014e-308");
  EXPECT_EQ(real(2.225073858507201e-308), "2.225073858507201e-308");  // the largest denormal
  EXPECT_EQ(real(Limits::denorm_min()), "5e-324");
  EXPECT_EQ(real(-Limits::denorm_min()), "-5e-324");
}

TEST(PutJsonReal, PowersThatAreNoLongerExactAreStillShort) {
  EXPECT_EQ(real(1e15), "1e15");
  EXPECT_EQ(real(1e16), "1e16");
  EXPECT_EQ(real(1e21), "1e21");
  EXPECT_EQ(real(1e22), "1e22");
  EXPECT_EQ(real(1e23), "1e23");
  EXPECT_EQ(real(std::nextafter(1e23, 0)), "9.999999999999997e22");
  EXPECT_EQ(real(std::nextafter(1e23, 1e24)), "1.0000000000000001e23");
  EXPECT_EQ(real(1e-22), "1e-22");
  EXPECT_EQ(real(1e-23), "1e-23");
}

TEST(PutJsonReal, IntegersBeyondThoseThatAllFitAreShort) {
  EXPECT_EQ(real(9007199254740991), "9007199254740991");
  EXPECT_EQ(real(9007199254740992), "9007199254740992");
  EXPECT_EQ(real(9007199254740994), "9007199254740994");
  EXPECT_EQ(real(9223372036854775808.0), "9223372036854776000");
}

TEST(PutJsonReal, NeighboursOfShortNumbersAreTold) {
  EXPECT_EQ(real(std::nextafter(0.05, 1)), "0.05000000000000001");
  EXPECT_EQ(real(std::nextafter(20.0, 0)), "19.999999999999996");
  EXPECT_EQ(real(std::nextafter(1e7, 0)), "9999999.999999998");
  EXPECT_EQ(real(99999999.5), "99999999.5");
}

// Digits without zeros at either end, and the power of ten of the first, as the compiler's library
// finds them.
std::pair<std::string, int> shortest(double value) {
  std::array<char, 40> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), std::fabs(value),
                                    std::chars_format::scientific);
  const std::string scientific(text.data(), result.ptr);
  const std::size_t mark = scientific.find('e');
  std::string digits = scientific.substr(0, mark);
  std::erase(digits, '.');
  digits.erase(digits.find_last_not_of('0') + 1);
  return {digits, std::stoi(scientific.substr(mark + 1))};
}

// The shorter one of the two ways to write them.
std::string expected(double value) {
  const auto [digits, exponent] = shortest(value);
  const int size = static_cast<int>(digits.size());
  std::string plain = digits;
  if (exponent < 0) {
    plain = "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
  } else if (exponent + 1 >= size) {
    plain += std::string(static_cast<std::size_t>(exponent + 1 - size), '0');
  } else {
    plain.insert(static_cast<std::size_t>(exponent + 1), ".");
  }
  std::string scientific = digits;
  if (size > 1) scientific.insert(1, ".");
  scientific += "e" + std::to_string(exponent);
  const std::string sign = value < 0 ? "-" : "";
  return sign + (plain.size() <= scientific.size() ? plain : scientific);
}

double read_back(const std::string &text) {
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

TEST(PutJsonReal, AnyDoubleHasTheShortestDigitsThatReadBack) {
  std::mt19937_64 random(20210316);  // NOLINT: the same numbers in every run
  int seen = 0;
  while (seen < 100000) {
    const double value = std::bit_cast<double>(random());
    if (!std::isfinite(value) || value == 0) continue;
    ++seen;
    const std::string text = real(value);
    ASSERT_EQ(text, expected(value));
    ASSERT_EQ(read_back(text), value);
  }
}

// As volumes have them: a few digits and a small exponent.
TEST(PutJsonReal, AnyDecimalHasTheShortestDigitsThatReadBack) {
  std::mt19937_64 random(7);  // NOLINT: the same numbers in every run
  for (int i = 0; i < 100000; ++i) {
    const auto digits = 1 + random() % 17;
    std::string decimal = random() % 2 == 0 ? "-" : "";
    decimal += static_cast<char>('1' + random() % 9);
    decimal += '.';
    for (std::size_t k = 1; k < digits; ++k) decimal += static_cast<char>('0' + random() % 10);
    decimal += "e" + std::to_string(static_cast<int>(random() % 61) - 30);
    const double value = read_back(decimal);
    const std::string text = real(value);
    ASSERT_EQ(text, expected(value)) << decimal;
    ASSERT_EQ(read_back(text), value) << decimal;
  }
}

// More numbers than texts are kept of.
TEST(PutJsonReal, NumberThatComesAgainHasTheSameText) {
  for (int round = 0; round < 3; ++round) {
    for (int i = -20000; i < 20000; ++i) {
      const double value = i / 7.0;
      if (i == 0) continue;
      ASSERT_EQ(real(value), expected(value));
    }
  }
}

TEST(PutJsonReal, LongestTextComesOutWholeEachTime) {
  EXPECT_EQ(real(-2.2250738585072014e-308), "-2.2250738585072014e-308");
  EXPECT_EQ(real(-2.2250738585072014e-308), "-2.2250738585072014e-308");
  EXPECT_EQ(real(2.2250738585072014e-308), "2.2250738585072014e-308");
  EXPECT_EQ(real(2.2250738585072014e-308), "2.2250738585072014e-308");
}

TEST(PutJsonReal, ZeroComesOutWithItsSignAfterOtherNumbers) {
  EXPECT_EQ(real(1.5), "1.5");
  EXPECT_EQ(real(-0.0), "-0");
  EXPECT_EQ(real(0.0), "0");
}

TEST(PutJsonReal, ValuesThatAreNotFiniteComeAgain) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(real(Limits::quiet_NaN()), "\"NaN\"");
    EXPECT_EQ(real(Limits::infinity()), "\"Infinity\"");
    EXPECT_EQ(real(-Limits::infinity()), "\"-Infinity\"");
  }
}

TEST(PutJsonReal, FitsItsRoom) {
  EXPECT_LE(real(Limits::lowest()).size(), kRealRoom);
  EXPECT_LE(real(-Limits::min()).size(), kRealRoom);
}

// ---- the same digits for other formats ----

std::string digits_of(const ShortDecimal &decimal) {
  return {decimal.digits, static_cast<std::size_t>(decimal.size)};
}

TEST(ShortDecimal, HasDigitsAndThePowerOfTheFirst) {
  const ShortDecimal decimal = short_decimal(-0.00125);
  EXPECT_TRUE(decimal.negative);
  EXPECT_EQ(digits_of(decimal), "125");
  EXPECT_EQ(decimal.exponent, -3);
}

TEST(ShortDecimal, ZeroIsOneDigit) {
  const ShortDecimal zero = short_decimal(0.0);
  EXPECT_FALSE(zero.negative);
  EXPECT_EQ(digits_of(zero), "0");
  EXPECT_EQ(zero.exponent, 0);
  EXPECT_TRUE(short_decimal(-0.0).negative);
}

TEST(ShortDecimal, RoundNumbersHaveNoZerosAtTheEnd) {
  EXPECT_EQ(digits_of(short_decimal(1e300)), "1");
  EXPECT_EQ(short_decimal(1e300).exponent, 300);
  EXPECT_EQ(digits_of(short_decimal(4200)), "42");
  EXPECT_EQ(short_decimal(4200).exponent, 3);
}

// ---- times ----

constexpr double kDay = 86400;
constexpr double kYear1 = -719162 * kDay;      // 0001-01-01
constexpr double kYear10000 = 2932897 * kDay;  // 10000-01-01

TEST(PutJsonTime, HasFourDecimalsAlways) {
  EXPECT_EQ(time(0), "\"1970-01-01T00:00:00.0000Z\"");
  EXPECT_EQ(time(1615875352.6), "\"2021-03-16T06:15:52.6000Z\"");
  EXPECT_EQ(time(1615875352.0001), "\"2021-03-16T06:15:52.0001Z\"");
}

TEST(PutJsonTime, YearsOfFourDigitsFromTheFirstOnAreShown) {
  EXPECT_EQ(time(kYear1), "\"0001-01-01T00:00:00.0000Z\"");
  EXPECT_EQ(time(kYear1 - 0.0001), "null");
  EXPECT_EQ(time(kYear1 - 400 * 366 * kDay), "null");
  EXPECT_EQ(time(kYear10000 - 0.0001), "\"9999-12-31T23:59:59.9999Z\"");
  EXPECT_EQ(time(kYear10000), "null");
  EXPECT_EQ(time(kYear10000 * 3), "null");
}

TEST(PutJsonTime, TimesBefore1970GoOnTowardsTheNextSecond) {
  EXPECT_EQ(time(-0.0001), "\"1969-12-31T23:59:59.9999Z\"");
  EXPECT_EQ(time(-1), "\"1969-12-31T23:59:59.0000Z\"");
  EXPECT_EQ(time(-1.5), "\"1969-12-31T23:59:58.5000Z\"");
  EXPECT_EQ(time(-kDay), "\"1969-12-31T00:00:00.0000Z\"");
}

TEST(PutJsonTime, FinerThanFourDecimalsIsRounded) {
  EXPECT_EQ(time(0.99994), "\"1970-01-01T00:00:00.9999Z\"");
  EXPECT_EQ(time(0.99996), "\"1970-01-01T00:00:01.0000Z\"");
  EXPECT_EQ(time(kDay - 0.00004), "\"1970-01-02T00:00:00.0000Z\"");
  EXPECT_EQ(time(-0.00004), "\"1970-01-01T00:00:00.0000Z\"");
}

TEST(PutJsonTime, LeapDaysAreDaysOfLeapYearsOnly) {
  EXPECT_EQ(time(59 * kDay), "\"1970-03-01T00:00:00.0000Z\"");
  EXPECT_EQ(time(951782400), "\"2000-02-29T00:00:00.0000Z\"");
  EXPECT_EQ(time(951868800), "\"2000-03-01T00:00:00.0000Z\"");
  EXPECT_EQ(time(978220800), "\"2000-12-31T00:00:00.0000Z\"");
  EXPECT_EQ(time(4107542400), "\"2100-03-01T00:00:00.0000Z\"");
  EXPECT_EQ(time(4107542399), "\"2100-02-28T23:59:59.0000Z\"");
}

TEST(PutJsonTime, WhatIsNoNumberIsNull) {
  EXPECT_EQ(time(Limits::quiet_NaN()), "null");
  EXPECT_EQ(time(Limits::infinity()), "null");
  EXPECT_EQ(time(-Limits::infinity()), "null");
  EXPECT_EQ(time(1e300), "null");
}

TEST(PutJsonTime, DaysInAnyOrderAreTold) {
  EXPECT_EQ(time(0), "\"1970-01-01T00:00:00.0000Z\"");
  EXPECT_EQ(time(kYear10000), "null");
  EXPECT_EQ(time(kYear10000 + 5), "null");
  EXPECT_EQ(time(5), "\"1970-01-01T00:00:05.0000Z\"");
}

TEST(PutJsonTickTime, FinerThanFourDecimalsIsCutOff) {
  EXPECT_EQ(put(put_json_tick_time, std::int64_t{999999}), "\"1970-01-01T00:00:00.9999Z\"");
  EXPECT_EQ(put(put_json_tick_time, std::int64_t{100}), "\"1970-01-01T00:00:00.0001Z\"");
  EXPECT_EQ(put(put_json_tick_time, std::int64_t{-1}), "\"1969-12-31T23:59:59.9999Z\"");
}

TEST(PutJsonTickTime, YearOfFiveDigitsIsNull) {
  EXPECT_EQ(put(put_json_tick_time, std::int64_t{253402300800} * 1000000), "null");
  EXPECT_EQ(put(put_json_tick_time, std::int64_t{253402300800} * 1000000 - 1),
            "\"9999-12-31T23:59:59.9999Z\"");
}

TEST(PutJsonMicrotime, HasSixDecimals) {
  EXPECT_EQ(put(put_json_microtime, std::int64_t{0}), "\"1970-01-01T00:00:00.000000Z\"");
  EXPECT_EQ(put(put_json_microtime, std::int64_t{1615875352600050}),
            "\"2021-03-16T06:15:52.600050Z\"");
  EXPECT_EQ(put(put_json_microtime, std::int64_t{-1}), "\"1969-12-31T23:59:59.999999Z\"");
}

TEST(PutJsonMicrotime, YearOfFiveDigitsIsNull) {
  EXPECT_EQ(put(put_json_microtime, std::int64_t{253402300800} * 1000000), "null");
}

TEST(PutJsonNanotime, HasNineDecimals) {
  EXPECT_EQ(put(put_json_nanotime, std::int64_t{1615875352}, std::int64_t{600000007}),
            "\"2021-03-16T06:15:52.600000007Z\"");
}

// ---- texts ----

// A text in the form that a line has, by both functions.
std::string text(std::string_view bytes) {
  TextBuffer buffer;
  put_json_text(&buffer, bytes);
  EXPECT_EQ(buffer.text(), json_text(bytes));
  return std::string(buffer.text());
}

std::string short_text(const std::string &text) {
  std::array<char, kShortTextRoom> room;
  char *end = put_short_json_text(room.data(), text.c_str());
  return end == nullptr ? "" : std::string(room.data(), end);
}

TEST(PutShortJsonText, PlainTextIsQuoted) {
  EXPECT_EQ(short_text(""), "\"\"");
  EXPECT_EQ(short_text("BHZ ~"), "\"BHZ ~\"");
}

TEST(PutShortJsonText, LongestIsTakenAndOneMoreIsNot) {
  const std::string longest(kShortText, 'x');
  EXPECT_EQ(short_text(longest), '"' + longest + '"');
  EXPECT_EQ(short_text(longest + "x"), "");
}

TEST(PutShortJsonText, WhatIsNotPlainIsLeftToOthers) {
  for (const char *text : {"a\"", "\\", "\n", "\x1F", "\xC3\xA9", "\x80"}) {
    EXPECT_EQ(short_text(text), "") << text;
  }
}

TEST(PutJsonText, PlainTextIsQuoted) {
  EXPECT_EQ(text(""), "\"\"");
  EXPECT_EQ(text("Black Forest, no/where"), "\"Black Forest, no/where\"");
}

TEST(PutJsonText, QuoteAndBackslashAreEscaped) {
  EXPECT_EQ(text("a\"b"), R"("a\"b")");
  EXPECT_EQ(text("a\\b"), R"("a\\b")");
}

TEST(PutJsonText, ControlCharactersAreEscapedAndNothingElse) {
  std::string all;
  for (char c = 1; c < 0x20; ++c) all += c;
  EXPECT_EQ(text(all),
            R"("\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e\u000f\u0010\u0011)"
            R"(\u0012\u0013\u0014\u0015\u0016\u0017\u0018\u0019\u001a\u001b\u001c\u001d\u001e)"
            R"(\u001f")");
  EXPECT_EQ(text(std::string(1, '\0')), R"("\u0000")");
  EXPECT_EQ(text("\x7F"), "\"\x7F\"");
}

TEST(PutJsonText, Utf8StaysAsItIs) {
  for (const char *utf8 : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xC2\x80"}) {
    EXPECT_EQ(text(utf8), '"' + std::string(utf8) + '"');
  }
  EXPECT_EQ(text("\xC3\xA9\n\xE2\x82\xAC"), "\"\xC3\xA9\\n\xE2\x82\xAC\"");
}

TEST(PutJsonText, OtherBytesAreLatin1) {
  EXPECT_EQ(text("Gr\xF6nland"), "\"Gr\xC3\xB6nland\"");
  EXPECT_EQ(text("\x80\xBF\xC0\xFF"), "\"\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF\"");
}

TEST(PutJsonText, OneWrongByteMakesTheWholeTextLatin1) {
  EXPECT_EQ(text("\xC3\xA9\xE9"), "\"\xC3\x83\xC2\xA9\xC3\xA9\"");
  EXPECT_EQ(text("\xE9\"\n"), "\"\xC3\xA9\\\"\\n\"");
}

TEST(PutJsonText, LongTextsOfTheWidestFormHaveRoom) {
  const std::string controls(200000, '\x01');
  const std::string quoted = text(controls);
  EXPECT_EQ(quoted.size(), 6 * controls.size() + 2);
  EXPECT_EQ(quoted.substr(quoted.size() - 7), "\\u0001\"");
}

TEST(IsUtf8, FirstAndLastCharacterOfEachLengthAreTaken) {
  EXPECT_TRUE(is_utf8(""));
  EXPECT_TRUE(is_utf8(std::string_view("\0", 1)));
  EXPECT_TRUE(is_utf8("\x7F"));
  EXPECT_TRUE(is_utf8("\xC2\x80"));
  EXPECT_TRUE(is_utf8("\xDF\xBF"));
  EXPECT_TRUE(is_utf8("\xE0\xA0\x80"));
  EXPECT_TRUE(is_utf8("\xED\x9F\xBF"));
  EXPECT_TRUE(is_utf8("\xEE\x80\x80"));
  EXPECT_TRUE(is_utf8("\xEF\xBF\xBF"));
  EXPECT_TRUE(is_utf8("\xF0\x90\x80\x80"));
  EXPECT_TRUE(is_utf8("\xF4\x8F\xBF\xBF"));
}

TEST(IsUtf8, ContinuationByteWithoutAFirstIsRefused) {
  EXPECT_FALSE(is_utf8("\x80"));
  EXPECT_FALSE(is_utf8("a\xBF"));
}

TEST(IsUtf8, BytesThatNeverStandAreRefused) {
  for (const char *bytes : {"\xC0\x80", "\xC1\xBF", "\xF5\x80\x80\x80", "\xFE", "\xFF"}) {
    EXPECT_FALSE(is_utf8(bytes));
  }
}

TEST(IsUtf8, FormsLongerThanNeededAreRefused) {
  EXPECT_FALSE(is_utf8("\xE0\x9F\xBF"));
  EXPECT_FALSE(is_utf8("\xF0\x8F\xBF\xBF"));
}

TEST(IsUtf8, SurrogatesAreRefused) {
  EXPECT_FALSE(is_utf8("\xED\xA0\x80"));
  EXPECT_FALSE(is_utf8("\xED\xBF\xBF"));
}

TEST(IsUtf8, PastTheLastCharacterIsRefused) { EXPECT_FALSE(is_utf8("\xF4\x90\x80\x80")); }

TEST(IsUtf8, CharacterThatIsCutIsRefused) {
  for (const char *bytes : {"\xC3", "\xE2\x82", "\xE2", "\xF0\x9F\x98", "\xF0\x9F", "\xF0"}) {
    EXPECT_FALSE(is_utf8(bytes));
  }
}

TEST(IsUtf8, OtherByteInPlaceOfAContinuationIsRefused) {
  EXPECT_FALSE(is_utf8("\xC3("));
  EXPECT_FALSE(is_utf8("\xE2(\xA1"));
  EXPECT_FALSE(is_utf8("\xE2\x82("));
  EXPECT_FALSE(is_utf8("\xF0(\x8C\xBC"));
  EXPECT_FALSE(is_utf8("\xF0\x90(\xBC"));
  EXPECT_FALSE(is_utf8("\xF0\x90\x8C("));
  EXPECT_FALSE(is_utf8("\xC3\xC3\xA9"));
}

TEST(Utf8Text, SaysWhatJsonSaysWithoutEscapes) {
  EXPECT_EQ(utf8_text("\xE9\"\n"), "\xC3\xA9\"\n");
  EXPECT_EQ(utf8_text("\xC3\xA9\\"), "\xC3\xA9\\");
}

}  // namespace
