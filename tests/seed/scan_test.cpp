#include "seed/scan.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "seed/sdblk.h"
#include "support/text.h"
#include "tests/util/log_capture.h"

using namespace tarvik;

namespace {

using namespace std::string_literals;

// The text in memory of exactly its size: a checker sees every read after it.
class ExactBytes {
 public:
  explicit ExactBytes(std::string_view text)
      : bytes_(std::make_unique<char[]>(text.size())), size_(text.size()) {
    text.copy(bytes_.get(), text.size());
  }
  [[nodiscard]] const char *data() const { return bytes_.get(); }
  [[nodiscard]] std::int64_t size() const { return static_cast<std::int64_t>(size_); }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_;
};

struct IntegerScan {
  int result;
  std::int32_t value;
  bool operator==(const IntegerScan &) const = default;
};

// Scans the text as a field of its own size.
IntegerScan integer_of(std::string_view text, const char *format = nullptr) {
  const ExactBytes bytes(text);
  std::int32_t value = -777;
  const int result = scan_int(bytes.data(), format, bytes.size(), &value);
  return {result, value};
}

struct RealScan {
  int result;
  double value;
};

RealScan real_of(std::string_view text) {
  const ExactBytes bytes(text);
  double value = -777;
  const int result = scan_double(bytes.data(), bytes.size(), &value);
  return {result, value};
}

double time_of(const std::string &text) {
  double value = -777;
  EXPECT_EQ(scan_time(text.c_str(), &value), 0);
  return value;
}

std::string string_of(std::string_view text, std::int64_t width) {
  const ExactBytes bytes(text);
  std::string result(static_cast<std::size_t>(width) + 1, '?');
  EXPECT_EQ(scan_str(bytes.data(), width, result.data()), 0);
  return result.c_str();
}

struct VariableScan {
  std::int64_t consumed;
  std::string value;
  bool operator==(const VariableScan &) const = default;
};

VariableScan variable_of(std::string_view text, std::int64_t limit) {
  const ExactBytes bytes(text);
  std::string result(static_cast<std::size_t>(limit < 0 ? 0 : limit) + 1, '?');
  const std::int64_t consumed = scan_var_str(bytes.data(), limit, result.data());
  return {consumed, result.c_str()};
}

// Text of up to `most` characters of an alphabet, the same in every run.
class TextMaker {
 public:
  explicit TextMaker(std::string_view alphabet) : alphabet_(alphabet) {}

  std::string text(std::size_t most) {
    std::string made(random_() % (most + 1), ' ');
    for (char &c : made) c = alphabet_[random_() % alphabet_.size()];
    return made;
  }

 private:
  std::string_view alphabet_;
  std::mt19937 random_{20210316};
};

// ---- scan_int ----

TEST(ScanInt, DigitsAreRead) {
  EXPECT_EQ(integer_of("0"), (IntegerScan{0, 0}));
  EXPECT_EQ(integer_of("42"), (IntegerScan{0, 42}));
  EXPECT_EQ(integer_of("0042"), (IntegerScan{0, 42}));
  EXPECT_EQ(integer_of("2147483647"), (IntegerScan{0, 2147483647}));
}

TEST(ScanInt, LeadingWhiteSpaceAndSignAreRead) {
  EXPECT_EQ(integer_of("  42"), (IntegerScan{0, 42}));
  EXPECT_EQ(integer_of(" \t\n\v\f\r+42"), (IntegerScan{0, 42}));
  EXPECT_EQ(integer_of("-42"), (IntegerScan{0, -42}));
}

TEST(ScanInt, FirstNonDigitEndsTheNumber) {
  EXPECT_EQ(integer_of("4x"), (IntegerScan{0, 4}));
  EXPECT_EQ(integer_of("4 2"), (IntegerScan{0, 4}));
  EXPECT_EQ(integer_of("0x10"), (IntegerScan{0, 0}));
}

TEST(ScanInt, BlankFieldIsZero) {
  EXPECT_EQ(integer_of(""), (IntegerScan{0, 0}));
  EXPECT_EQ(integer_of("   "), (IntegerScan{0, 0}));
  EXPECT_EQ(integer_of(" \t\r\n"), (IntegerScan{0, 0}));
}

TEST(ScanInt, NoNumberFails) {
  LogCapture log;
  EXPECT_EQ(integer_of("ab"), (IntegerScan{-1, 0}));
  EXPECT_EQ(log.registered(), "scan_int: Failed integer input: 'ab'\n");
  EXPECT_EQ(integer_of("-"), (IntegerScan{-1, 0}));
  EXPECT_EQ(log.registered(), "scan_int: Failed integer input: '-'\n");
  EXPECT_EQ(integer_of(" +-1 "), (IntegerScan{-1, 0}));
  EXPECT_EQ(log.registered(), "scan_int: Failed integer input: ' +-1 '\n");
}

TEST(ScanInt, ZeroByteEndsTheText) {
  LogCapture log;
  EXPECT_EQ(integer_of("12\00034"s), (IntegerScan{0, 12}));
  EXPECT_EQ(integer_of("\00034"s), (IntegerScan{0, 0}));
  EXPECT_EQ(integer_of("a\00034"s), (IntegerScan{-1, 0}));
  EXPECT_EQ(log.registered(), "scan_int: Failed integer input: 'a'\n");
}

TEST(ScanInt, OnlyTheWidthIsRead) {
  std::int32_t value = 0;
  EXPECT_EQ(scan_int("12345", nullptr, 3, &value), 0);
  EXPECT_EQ(value, 123);
  EXPECT_EQ(scan_int("12345", nullptr, 0, &value), 0);
  EXPECT_EQ(value, 0);
}

TEST(ScanInt, NegativeWidthIsABlankField) {
  std::int32_t value = 5;
  EXPECT_EQ(scan_int("12", nullptr, -1, &value), 0);
  EXPECT_EQ(value, 0);
}

TEST(ScanInt, FormatReplacesNonDigits) {
  EXPECT_EQ(integer_of("1 ", "##"), (IntegerScan{1, 10}));
  EXPECT_EQ(integer_of("12a4", "####"), (IntegerScan{1, 1204}));
  EXPECT_EQ(integer_of("-5", "##"), (IntegerScan{1, 5}));
  EXPECT_EQ(integer_of("    ", "####"), (IntegerScan{4, 0}));
  EXPECT_EQ(integer_of("ab", "##"), (IntegerScan{2, 0}));
}

TEST(ScanInt, FormatOfDigitsReplacesNothing) {
  EXPECT_EQ(integer_of("1234", "####"), (IntegerScan{0, 1234}));
}

TEST(ScanInt, OnlyPlacesUnderANumberSignAreReplaced) {
  EXPECT_EQ(integer_of("-a5", "-##"), (IntegerScan{1, -5}));
  EXPECT_EQ(integer_of(" 5", "-#"), (IntegerScan{0, 5}));
}

TEST(ScanInt, FormatAndTextMayDifferInLength) {
  EXPECT_EQ(integer_of("1a3", "#"), (IntegerScan{0, 1}));
  EXPECT_EQ(integer_of("1a", "######"), (IntegerScan{1, 10}));
  EXPECT_EQ(integer_of("", "##"), (IntegerScan{0, 0}));
  EXPECT_EQ(integer_of("7b", ""), (IntegerScan{0, 7}));
}

TEST(ScanInt, ValueIsCutTo32Bits) {
  EXPECT_EQ(integer_of("2147483648"), (IntegerScan{0, -2147483647 - 1}));
  EXPECT_EQ(integer_of("4294967298"), (IntegerScan{0, 2}));
  EXPECT_EQ(integer_of("-4294967299"), (IntegerScan{0, -3}));
}

TEST(ScanInt, ValueSaturatesAt64BitsBeforeTheCut) {
  EXPECT_EQ(integer_of("9223372036854775807"), (IntegerScan{0, -1}));
  EXPECT_EQ(integer_of("99999999999999999999"), (IntegerScan{0, -1}));
  EXPECT_EQ(integer_of("-99999999999999999999"), (IntegerScan{0, 0}));
}

TEST(ScanInt, WidthOf80IsTheWidest) {
  EXPECT_EQ(integer_of(std::string(79, '0') + "7"), (IntegerScan{0, 7}));
}

TEST(ScanInt, WidthAbove80EndsTheProgram) {
  LogCapture log;
  const FatalHook hook;
  EXPECT_THROW(integer_of(std::string(81, '0')), Fatal);
  EXPECT_EQ(log.text(), "scan_int: text of 82 bytes does not fit the 80 byte buffer\n");
}

TEST(ScanInt, ReadsWhatStrtolReads) {
  LogCapture log;
  TextMaker maker("0123456789012345678901234567890123456789 -+.\t\nx");
  for (int i = 0; i < 30000; ++i) {
    const std::string text = maker.text(i % 2 == 0 ? 6 : 24);
    char *end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    const auto stop = static_cast<std::size_t>(end - text.c_str());
    const bool fails = stop == 0 && text.find_first_not_of(" \t\n") != std::string::npos;
    const IntegerScan expected = {fails ? -1 : 0,
                                  static_cast<std::int32_t>(static_cast<std::uint32_t>(value))};
    ASSERT_EQ(integer_of(text), expected) << '"' << text << '"';
    const IntegerPrefix prefix = read_integer(text);
    ASSERT_EQ(prefix.value, value) << '"' << text << '"';
    ASSERT_EQ(prefix.length, stop) << '"' << text << '"';
  }
}

// ---- scan_double ----

TEST(ScanDouble, NumbersAreRead) {
  EXPECT_EQ(real_of("  1.5E+02").value, 150.0);
  EXPECT_EQ(real_of("-1.25").value, -1.25);
  EXPECT_EQ(real_of("+0.1").value, 0.1);
  EXPECT_EQ(real_of("7").value, 7.0);
  EXPECT_EQ(real_of(".5").value, 0.5);
  EXPECT_EQ(real_of("5.").value, 5.0);
  EXPECT_EQ(real_of("  1.5E+02").result, 0);
}

TEST(ScanDouble, TrailingCharactersAreIgnored) {
  EXPECT_EQ(real_of("1.5 m/s").value, 1.5);
  EXPECT_EQ(real_of("1.5E").value, 1.5);
  EXPECT_EQ(real_of("1.5E+x").value, 1.5);
  EXPECT_EQ(real_of("1,5").value, 1.0);
  EXPECT_EQ(real_of("1,5").result, 0);
}

TEST(ScanDouble, BlankFieldIsZero) {
  for (const std::string_view blanks : {"", " ", "          ", "\t\r\n"}) {
    EXPECT_EQ(real_of(blanks).result, 0);
    EXPECT_EQ(real_of(blanks).value, 0.0);
  }
}

TEST(ScanDouble, NoNumberFails) {
  LogCapture log;
  const RealScan letter = real_of("x");
  EXPECT_EQ(letter.result, -1);
  EXPECT_EQ(letter.value, 0.0);
  EXPECT_EQ(log.registered(), "scan_double: Failed double input: 'x'\n");
  EXPECT_EQ(real_of(" -. ").result, -1);
  EXPECT_EQ(log.registered(), "scan_double: Failed double input: ' -. '\n");
}

TEST(ScanDouble, ZeroByteEndsTheText) {
  EXPECT_EQ(real_of("1\0005"s).value, 1.0);
  EXPECT_EQ(real_of("\0005"s).result, 0);
}

TEST(ScanDouble, OnlyTheWidthIsRead) {
  double value = 0;
  EXPECT_EQ(scan_double("12.345", 4, &value), 0);
  EXPECT_EQ(value, 12.3);
}

TEST(ScanDouble, WordsOfTheSystemAreNumbers) {
  EXPECT_EQ(real_of("inf").value, HUGE_VAL);
  EXPECT_EQ(real_of("-INFINITY").value, -HUGE_VAL);
  EXPECT_TRUE(std::isnan(real_of("NaN").value));
  EXPECT_EQ(real_of("0x1p3").value, 8.0);
}

TEST(ScanDouble, ValueOutOfRangeIsInfiniteOrZero) {
  EXPECT_EQ(real_of("1E999").value, HUGE_VAL);
  EXPECT_EQ(real_of("-1E999").value, -HUGE_VAL);
  EXPECT_EQ(real_of("1E-999").value, 0.0);
  EXPECT_EQ(real_of("1E999").result, 0);
}

TEST(ScanDouble, WidthAbove80EndsTheProgram) {
  LogCapture log;
  const FatalHook hook;
  EXPECT_EQ(real_of(std::string(79, '0') + "7").value, 7.0);
  EXPECT_THROW(real_of(std::string(81, '0')), Fatal);
  EXPECT_EQ(log.text(), "scan_double: text of 82 bytes does not fit the 80 byte buffer\n");
}

// Whether two numbers are the same to the bit; all that are no number count as one.
bool same_number(double a, double b) {
  return std::memcmp(&a, &b, sizeof(a)) == 0 || (std::isnan(a) && std::isnan(b));
}

void compare_with_strtod(const std::string &text) {
  char *expected_end = nullptr;
  const double expected = std::strtod(text.c_str(), &expected_end);
  char *end = nullptr;
  const double value = fix_strtod(text.c_str(), &end);
  ASSERT_TRUE(same_number(value, expected)) << '"' << text << "\" " << value << ' ' << expected;
  ASSERT_EQ(end, expected_end) << '"' << text << '"';
  const bool fails =
      expected_end == text.c_str() && text.find_first_not_of(" \t\n") != std::string::npos;
  const RealScan scan = real_of(text);
  ASSERT_EQ(scan.result, fails ? -1 : 0) << '"' << text << '"';
  ASSERT_TRUE(same_number(scan.value, expected)) << '"' << text << '"';
}

TEST(ScanDouble, ReadsWhatStrtodReads) {
  LogCapture log;
  TextMaker maker("01234567890123456789..--++eE \tx");
  for (int i = 0; i < 30000; ++i) compare_with_strtod(maker.text(i % 2 == 0 ? 10 : 30));
}

TEST(ScanDouble, ReadsWordsAndHexadecimalDigitsAsStrtodDoes) {
  LogCapture log;
  TextMaker maker("infINFTYtynaANf()_0xX19.pP+-ab ");
  for (int i = 0; i < 30000; ++i) {
    const std::string text = maker.text(8);
    compare_with_strtod(text);
    compare_with_strtod("0x" + text);
    compare_with_strtod("nan" + text);
    compare_with_strtod("inf" + text);
  }
}

TEST(ScanDouble, ReadsNumbersOfEverySizeAsStrtodDoes) {
  LogCapture log;
  TextMaker digits("0123456789");
  for (int i = 0; i < 20000; ++i) {
    const int exponent = i % 700 - 350;
    compare_with_strtod(digits.text(22) + "." + digits.text(22) + "E" + std::to_string(exponent));
  }
}

// ---- scan_time ----

// Seconds since 1970, counted year by year.
double epoch_of(int year, int day, int hour = 0, int minute = 0, double seconds = 0) {
  const auto is_leap = [](int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
  std::int64_t days = day - 1;
  for (int y = 1970; y < year; ++y) days += is_leap(y) ? 366 : 365;
  for (int y = year; y < 1970; ++y) days -= is_leap(y) ? 366 : 365;
  return static_cast<double>(((days * 24 + hour) * 60 + minute) * 60) + seconds;
}

TEST(ScanTime, EmptyTextIsNoTime) { EXPECT_EQ(time_of(""), 9999999999.999); }

TEST(ScanTime, EachLengthHasItsItems) {
  // 1999-01-01 is 915148800 seconds after 1970-01-01.
  EXPECT_EQ(time_of("1999,001"), 915148800.0);
  EXPECT_EQ(time_of("1999"), 915148800.0 - 86400);
  EXPECT_EQ(time_of("1999,001,12"), 915148800.0 + 12 * 3600);
  EXPECT_EQ(time_of("1999,001,12:30"), 915148800.0 + 12 * 3600 + 30 * 60);
  EXPECT_EQ(time_of("1999,001,12:30:15.5"), 915148800.0 + 12 * 3600 + 30 * 60 + 15.5);
  EXPECT_EQ(time_of("1999,001,12:30:15.1234"), 915148800.0 + 45000 + 15.1234);
}

TEST(ScanTime, MissingDayIsTheLastOfTheYearBefore) { EXPECT_EQ(time_of("1970"), -86400.0); }

TEST(ScanTime, LengthDecidesWhatIsRead) {
  // Eight characters: no hour is read.
  EXPECT_EQ(time_of("1999,1,2"), 915148800.0);
  // Eleven: no minute.
  EXPECT_EQ(time_of("1999,1,2:30"), 915148800.0 + 2 * 3600);
  // Four: no day.
  EXPECT_EQ(time_of("99,1"), epoch_of(99, 0));
  // Any other: all that is there.
  EXPECT_EQ(time_of("1999,1"), 915148800.0);
  EXPECT_EQ(time_of("1999,1,2:"), 915148800.0 + 2 * 3600);
}

TEST(ScanTime, ReadingEndsAtTheFirstItemThatIsNotThere) {
  EXPECT_EQ(time_of("x"), epoch_of(0, 0));
  EXPECT_EQ(time_of("    "), epoch_of(0, 0));
  EXPECT_EQ(time_of("1999;001,12:30:15"), epoch_of(1999, 0));
  EXPECT_EQ(time_of("1999,xxx,12:30:15"), epoch_of(1999, 0));
  EXPECT_EQ(time_of("1999,001:12:30:15"), epoch_of(1999, 1));
  EXPECT_EQ(time_of("1999,001,12,30:15"), epoch_of(1999, 1, 12));
  EXPECT_EQ(time_of("1999,001,12:30:x"), epoch_of(1999, 1, 12, 30));
}

TEST(ScanTime, BlanksMayStandBeforeANumberButNotBeforeASign) {
  EXPECT_EQ(time_of(" 1999, 001, 12: 30: 15"), epoch_of(1999, 1, 12, 30, 15));
  EXPECT_EQ(time_of("1999 ,001,12:30:15"), epoch_of(1999, 0));
}

TEST(ScanTime, NumbersAreNotCheckedAgainstTheCalendar) {
  EXPECT_EQ(time_of("1999,400,25:61:61"), epoch_of(1999, 400, 25, 61, 61));
  EXPECT_EQ(time_of("1999,-01,12"), epoch_of(1999, -1, 12));
}

// What sscanf reads of the text.
double sscanf_time(const std::string &text) {
  int year = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  double seconds = 0;
  const char *from = text.c_str();
  // The number of items does not matter.
  int items = 0;
  switch (text.size()) {
    case 0: return 9999999999.999;
    case 4: items = std::sscanf(from, "%d", &year); break;
    case 8: items = std::sscanf(from, "%d,%d", &year, &day); break;
    case 11: items = std::sscanf(from, "%d,%d,%d", &year, &day, &hour); break;
    case 14: items = std::sscanf(from, "%d,%d,%d:%d", &year, &day, &hour, &minute); break;
    default: items = std::sscanf(from, "%d,%d,%d:%d:%lf", &year, &day, &hour, &minute, &seconds);
  }
  EXPECT_LE(items, 5);
  return epoch_of(year, day, hour, minute, seconds);
}

TEST(ScanTime, ReadsWhatSscanfReads) {
  // Years stay small, for they are counted one by one here.
  TextMaker noise("0123456789,:-+. x");
  TextMaker digits("0123456789");
  for (int i = 0; i < 10000; ++i) {
    const std::string text = digits.text(3) + "," + noise.text(16);
    ASSERT_EQ(time_of(text), sscanf_time(text)) << '"' << text << '"';
  }
  for (int i = 0; i < 10000; ++i) {
    const std::string text = digits.text(4) + "," + digits.text(3) + "," + digits.text(2) + ":" +
                             digits.text(2) + ":" + digits.text(2) + "." + digits.text(4);
    ASSERT_EQ(time_of(text), sscanf_time(text)) << '"' << text << '"';
    const std::string beginning = text.substr(0, static_cast<std::size_t>(i) % 18);
    ASSERT_EQ(time_of(beginning), sscanf_time(beginning)) << '"' << beginning << '"';
  }
}

// ---- scan_str ----

TEST(ScanStr, WhiteSpaceAtBothEndsGoes) {
  EXPECT_EQ(string_of("  AB C  ", 8), "AB C");
  EXPECT_EQ(string_of("\t\nAB\r\v\f", 7), "AB");
  EXPECT_EQ(string_of("AB", 2), "AB");
}

TEST(ScanStr, BlankFieldIsEmpty) {
  EXPECT_EQ(string_of("", 0), "");
  EXPECT_EQ(string_of("     ", 5), "");
}

TEST(ScanStr, ZeroByteEndsTheText) {
  EXPECT_EQ(string_of("AB \0CD"s, 6), "AB");
  EXPECT_EQ(string_of("\0CD"s, 3), "");
}

TEST(ScanStr, OnlyTheWidthIsRead) { EXPECT_EQ(string_of("ABCDEF", 3), "ABC"); }

TEST(ScanStr, BytesAbove127AreNoWhiteSpace) { EXPECT_EQ(string_of("\xa0\x85", 2), "\xa0\x85"); }

TEST(ScanStr, NegativeWidthIsABlankField) { EXPECT_EQ(string_of("ABC", -1), ""); }

TEST(ScanStr, WidthOf16383IsTheWidest) {
  const std::string text(16384, 'x');
  EXPECT_EQ(string_of(text, 16383), text.substr(0, 16383));
}

TEST(ScanStr, WidthAbove16383EndsTheProgram) {
  LogCapture log;
  const FatalHook hook;
  const std::string text(16384, 'x');
  EXPECT_THROW(string_of(text, 16384), Fatal);
  EXPECT_EQ(log.text(), "scan_str: text of 16385 bytes does not fit the 16384 byte buffer\n");
}

// ---- scan_var_str ----

TEST(ScanVarStr, TildeEndsTheValue) {
  EXPECT_EQ(variable_of("AB~CD~", 6), (VariableScan{3, "AB"}));
  EXPECT_EQ(variable_of(" Station name ~", 40), (VariableScan{15, "Station name"}));
}

TEST(ScanVarStr, NothingAfterTheTildeIsLookedAt) {
  // A limit beyond the text's memory: a checker sees a step too far.
  EXPECT_EQ(variable_of("AB~", 100), (VariableScan{3, "AB"}));
}

TEST(ScanVarStr, TildeAtTheStartIsAnEmptyValue) {
  EXPECT_EQ(variable_of("~ABC", 4), (VariableScan{1, ""}));
  EXPECT_EQ(variable_of("~", 1), (VariableScan{1, ""}));
  EXPECT_EQ(variable_of("  ~ABC", 6), (VariableScan{3, ""}));
}

TEST(ScanVarStr, LimitBelowOneTakesNothing) {
  EXPECT_EQ(variable_of("ABC~", 0), (VariableScan{0, ""}));
  EXPECT_EQ(variable_of("ABC~", -5), (VariableScan{0, ""}));
}

TEST(ScanVarStr, LimitEndsTheValueAsItStands) {
  EXPECT_EQ(variable_of("ABC", 3), (VariableScan{3, "ABC"}));
  EXPECT_EQ(variable_of("ABC~", 3), (VariableScan{3, "ABC"}));
  EXPECT_EQ(variable_of("AB  ", 4), (VariableScan{4, "AB  "}));
  EXPECT_EQ(variable_of(" AB  ~", 5), (VariableScan{5, "AB  "}));
}

TEST(ScanVarStr, TildeAsLastCharacterOfTheLimitIsTaken) {
  EXPECT_EQ(variable_of("AB ~", 4), (VariableScan{4, "AB"}));
}

TEST(ScanVarStr, LimitInLeadingWhiteSpaceLeavesTheValueEmpty) {
  EXPECT_EQ(variable_of("    AB~", 4), (VariableScan{4, ""}));
  EXPECT_EQ(variable_of("    AB~", 5), (VariableScan{5, "A"}));
}

TEST(ScanVarStr, ZeroByteEndsTheValueAndIsNotTaken) {
  EXPECT_EQ(variable_of("AB \0CD~"s, 7), (VariableScan{3, "AB"}));
  EXPECT_EQ(variable_of("\0CD~"s, 4), (VariableScan{0, ""}));
  EXPECT_EQ(variable_of("  \0CD~"s, 6), (VariableScan{2, ""}));
}

// The same, character by character.
VariableScan walked(std::string_view text, std::int64_t limit) {
  if (limit < 1) return {0, ""};
  std::int64_t count = 0;
  std::string value;
  std::size_t end = 0;
  for (const char c : text) {
    if (c == '~') return {count + 1, value.substr(0, end)};
    if (c == '\0') return {count, value.substr(0, end)};
    ++count;
    const bool white = std::string_view(" \t\n\v\f\r").find(c) != std::string_view::npos;
    if (!white || !value.empty()) value += c;
    if (!white) end = value.size();
    if (count == limit) return {count, value};
  }
  return {count, value.substr(0, end)};
}

TEST(ScanVarStr, ReadsWhatACharacterWiseWalkReads) {
  TextMaker maker("AB  ~\t");
  for (int i = 0; i < 30000; ++i) {
    // A final 0 byte, so that no walk runs over the end.
    const std::string text = maker.text(12) + "\0"s;
    const std::int64_t limit = i % 14;
    ASSERT_EQ(variable_of(text, limit), walked(text, limit)) << '"' << text << "\" " << limit;
  }
}

}  // namespace
