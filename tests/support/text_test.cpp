#include "support/text.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

// True when fix_strtod and strtod agree in every bit and in where they stop.
bool agrees(const std::string &text) {
  char *expected_end = nullptr;
  char *end = nullptr;
  const double expected = std::strtod(text.c_str(), &expected_end);
  const double value = fix_strtod(text.c_str(), &end);
  return end == expected_end &&
         std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(expected);
}

TEST(Blank, WhiteSpaceOnlyIsBlank) {
  EXPECT_EQ(blank(nullptr), 1);
  EXPECT_EQ(blank(""), 1);
  EXPECT_EQ(blank(" \t\n\v\f\r"), 1);
}

TEST(Blank, AnythingElseIsNot) {
  EXPECT_EQ(blank("  x "), 0);
  EXPECT_EQ(blank("\x1f"), 0);
  EXPECT_EQ(blank("\xa0"), 0);
}

TEST(Chomp, DropsOneNewlineAtTheEnd) {
  std::string text = "a\nb\n\n";
  chomp(text.data());
  EXPECT_STREQ(text.c_str(), "a\nb\n");
}

TEST(Chomp, TextWithoutNewlineStays) {
  std::string text = "ab";
  chomp(text.data());
  EXPECT_STREQ(text.c_str(), "ab");
}

TEST(Chomp, EmptyTextStays) {
  std::string text;
  chomp(text.data());
  EXPECT_STREQ(text.c_str(), "");
}

TEST(Chomp, NullIsLeftAlone) { EXPECT_NO_FATAL_FAILURE(chomp(nullptr)); }

TEST(FixStrtod, NullEndIsAllowed) { EXPECT_EQ(fix_strtod("2.5x", nullptr), 2.5); }

TEST(FixStrtod, NothingConvertedStopsAtTheStart) {
  const char *text = "  x";
  char *end = nullptr;
  EXPECT_EQ(fix_strtod(text, &end), 0.0);
  EXPECT_EQ(end, text);
}

TEST(FixStrtod, SpecialFormsAreThoseOfStrtod) {
  for (const char *text : {"-0",
                           "0x",
                           "0x.",
                           "0x.p1",
                           "0xg",
                           "0x1.8p3",
                           "-0X1F",
                           "0x1p",
                           "0x1p-",
                           "0x1p-1074",
                           "0x1p-1075",
                           "0x1.8p-1075",
                           "0x1p1024",
                           "0x0p99999999999",
                           "inf",
                           "-INF",
                           "infinit",
                           "InfinityX",
                           "nan",
                           "-nan",
                           "NAN(",
                           "nan()",
                           "nan(12)",
                           "nan(0x7f)",
                           "nan(a_Z9)x",
                           "nan(a b)",
                           "nan(12",
                           "18446744073709551617",
                           "18446744073709551616e-5",
                           "99999999999999999999",
                           "9007199254740993",
                           "9007199254740992e22",
                           "1e22",
                           "1e23",
                           "1e-22",
                           "4.9406564584124654e-324",
                           "2.4703282292062327e-324",
                           "2.4703282292062328e-324",
                           "2.2250738585072011e-308",
                           "1.7976931348623157e308",
                           "1.7976931348623159e308",
                           "00000000000000000000000000001",
                           "0.00000000000000000000000000001"}) {
    EXPECT_TRUE(agrees(text)) << text;
  }
}

TEST(FixStrtod, NanTakesAWordOnly) {
  EXPECT_TRUE(agrees("nan(a_1)"));
  EXPECT_TRUE(agrees("nan(a{)"));
}

TEST(FixStrtod, LongTextsAreThoseOfStrtod) {
  for (const std::size_t length : {1U, 10U, 30U, 400U, 900U, 3000U}) {
    const std::string zeros(length, '0');
    const std::string number = std::to_string(length);
    for (const std::string &text :
         {"0." + zeros + "1e" + number, "1" + zeros + "e-" + number, "0." + zeros + "1",
          "1" + zeros, "1." + std::string(length, '9'), "0x1" + zeros + "p-" + number,
          "0x0." + zeros + "1p" + number, "9007199254740992." + zeros + "1",
          "9007199254740993." + zeros + "1", "nan(" + zeros + "1)"}) {
      EXPECT_TRUE(agrees(text)) << text;
    }
  }
}

TEST(FixStrtod, TextsFromPiecesAreThoseOfStrtod) {
  const std::vector<std::string> pieces = {
      "0",   "1",     "9",  "12",  "000000", "123456789", "9007199254740993",
      ".",   ".",     "e",  "E",   "-",      "+",         "0x",
      "0X",  "p",     "F",  "a",   "inf",    "NaN(",      ")",
      "_z1", " ",     "\t", "308", "-308",   "-324",      "e-",
      "x",   "-1074", "1e", "22",  "-22",    "1024",      "999999999999999999999"};
  std::mt19937 random(3);
  for (int i = 0; i < 100000; ++i) {
    std::string text;
    for (std::uint_fast32_t left = random() % 7 + 1; left > 0; --left) {
      text += pieces[random() % pieces.size()];
    }
    ASSERT_TRUE(agrees(text)) << text;
  }
}

TEST(FixStrtod, PrintedDoublesAreThoseOfStrtod) {
  std::mt19937_64 random(4);
  for (int i = 0; i < 50000; ++i) {
    std::array<char, 64> text;
    const auto value = std::bit_cast<double>(random());
    const int digits = static_cast<int>(random() % 25);
    std::snprintf(text.data(), text.size(), "%.*e", digits, value);
    ASSERT_TRUE(agrees(text.data())) << text.data();
    std::snprintf(text.data(), text.size(), "%.*f", digits % 7, std::fmod(value, 1e9));
    ASSERT_TRUE(agrees(text.data())) << text.data();
    std::snprintf(text.data(), text.size(), "%.*a", digits, value);
    ASSERT_TRUE(agrees(text.data())) << text.data();
  }
}

// Makes a locale with a decimal comma, which few machines have, and sets it as long as it lives.
class CommaLocale {
 public:
  CommaLocale() {
    std::string folder = (std::filesystem::temp_directory_path() / "locale_XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) return;
    folder_ = folder;
    std::ofstream(folder_ / "source") << "comment_char %\nescape_char /\nLC_NUMERIC\n"
                                         "decimal_point \",\"\nthousands_sep \"\"\ngrouping -1\n"
                                         "END LC_NUMERIC\n";
    write_charmap();
    const std::string command = "cd '" + folder +
                                "' && localedef -c --no-archive -f ./charmap -i ./source ./comma "
                                ">/dev/null 2>&1";
    // It warns of the categories that are not there, and calls that a failure.
    static_cast<void>(std::system(command.c_str()));
    setenv("LOCPATH", folder.c_str(), 1);
    set_ = std::setlocale(LC_NUMERIC, "comma") != nullptr;
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  CommaLocale(const CommaLocale &) = delete;
  CommaLocale &operator=(const CommaLocale &) = delete;

  [[nodiscard]] bool is_set() const { return set_; }

 private:
  // ASCII; the character sets that localedef knows by name are in a package that may be missing.
  void write_charmap() const {
    std::ofstream map(folder_ / "charmap");
    map << "<code_set_name> PLAIN\n<comment_char> %\n<escape_char> /\nCHARMAP\n";
    std::array<char, 32> line{};
    for (unsigned code = 0; code < 128; ++code) {
      std::snprintf(line.data(), line.size(), "<U%04X> /x%02x\n", code, code);
      map << line.data();
    }
    map << "END CHARMAP\n";
  }

  std::filesystem::path folder_;
  bool set_ = false;
};

TEST(FixStrtod, LocaleOfTheProgramChangesNothing) {
  const CommaLocale locale;
  ASSERT_TRUE(locale.is_set());
  EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
  EXPECT_EQ(fix_strtod("1.5", nullptr), 1.5);
  EXPECT_EQ(fix_strtod("0x1.8", nullptr), 1.5);
  EXPECT_EQ(fix_strtod("1,5", nullptr), 1.0);
}

}  // namespace
