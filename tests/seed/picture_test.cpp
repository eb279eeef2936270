// Real numbers in fixed pictures: what the fast reader takes, and what it leaves to the other.
#include "seed/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>

using namespace tarvik;

namespace {

std::optional<double> read(const std::string &text) {
  double value = 0.0;
  const bool taken =
      picture::read_fields(text.data(), static_cast<std::int32_t>(text.size()), 1, &value) == 1;
  return taken ? std::optional(value) : std::nullopt;
}

TEST(Picture, EachWidthIsRead) {
  EXPECT_EQ(read("1.2345E+02"), 123.45);
  EXPECT_EQ(read("-1.2345E-02"), -0.012345);
  EXPECT_EQ(read("+1.23456E+01"), 12.3456);
  EXPECT_EQ(read(" 1.2345678E+07"), 12345678.0);
}

TEST(Picture, OtherWidthsAreLeft) { EXPECT_EQ(read("1.234E+02"), std::nullopt); }

TEST(Picture, EachPlaceMustFit) {
  EXPECT_EQ(read("x1.2345E+02"), std::nullopt);
  EXPECT_EQ(read(" x.2345E+02"), std::nullopt);
  EXPECT_EQ(read(" 1,2345E+02"), std::nullopt);
  EXPECT_EQ(read(" 1.23x5E+02"), std::nullopt);
  EXPECT_EQ(read(" 1.2345e+02"), std::nullopt);
  EXPECT_EQ(read(" 1.2345E 02"), std::nullopt);
  EXPECT_EQ(read(" 1.2345E+x2"), std::nullopt);
  EXPECT_EQ(read(" 1.2345E+0x"), std::nullopt);
}

TEST(Picture, PlacesOfTheUnsignedOneMustFit) {
  EXPECT_EQ(read("1.23x5E+02"), std::nullopt);
  EXPECT_EQ(read("1.2345E 02"), std::nullopt);
}

TEST(Picture, PlacesOfTheLongestOneMustFit) {
  EXPECT_EQ(read(" 1.23x5678E+02"), std::nullopt);
  EXPECT_EQ(read(" 1.2345678E 02"), std::nullopt);
  EXPECT_EQ(read("-1.2345678E-02"), -0.012345678);
}

TEST(Picture, OnlyABlankAndTheSignsStandInFront) {
  for (int c = 0; c < 256; ++c) {
    const auto sign = static_cast<char>(c);
    const bool taken = sign == ' ' || sign == '+' || sign == '-';
    EXPECT_EQ(read(sign + std::string("1.23456E+01")).has_value(), taken) << c;
  }
}

TEST(Picture, MinusSignOfZeroIsKept) {
  ASSERT_TRUE(read("-0.00000E+00").has_value());
  EXPECT_TRUE(std::signbit(*read("-0.00000E+00")));
  EXPECT_FALSE(std::signbit(*read(" 0.00000E+00")));
}

TEST(Picture, AnyNumberIsThatOfStrtod) {
  std::mt19937 random(11);
  for (const int decimals : {4, 5, 7}) {
    for (int i = 0; i < 20000; ++i) {
      const double size = static_cast<double>(random()) / 4294967296.0 * 10;
      const int power = static_cast<int>(random() % 30) - 15;
      std::array<char, 64> text;
      std::snprintf(text.data(), text.size(), "%+.*fE%+03d", decimals, std::min(size, 9.99), power);
      ASSERT_EQ(read(text.data()), std::strtod(text.data(), nullptr)) << text.data();
    }
  }
}

TEST(PictureRun, EndsAtTheFirstOfAnotherForm) {
  const std::string text = " 1.00000E+00-2.00000E+00 3.0       +4.00000E-01";
  std::array<double, 4> values = {};
  EXPECT_EQ(picture::read_fields(text.data(), 12, 4, values.data()), 2);
  EXPECT_EQ(values, (std::array<double, 4>{1.0, -2.0, 0.0, 0.0}));
}

TEST(PictureRun, TakesAsManyAsAskedFor) {
  const std::string text = "1.0000E+002.0000E+00";
  std::array<double, 2> values = {};
  EXPECT_EQ(picture::read_fields(text.data(), 10, 0, values.data()), 0);
  EXPECT_EQ(picture::read_fields(text.data(), 10, 1, values.data()), 1);
  EXPECT_EQ(values[1], 0.0);
  EXPECT_EQ(picture::read_fields(text.data(), 10, 2, values.data()), 2);
  EXPECT_EQ(values[1], 2.0);
}

// Ten to the 22nd is the largest power that a double holds exactly; the decimals count too.
TEST(Picture, ExponentsThatOneOperationDoesNotReachAreLeft) {
  EXPECT_EQ(read(" 1.2345E+26"), 12345e22);
  EXPECT_EQ(read(" 1.2345E+27"), std::nullopt);
  EXPECT_EQ(read(" 1.2345E-18"), 12345e-22);
  EXPECT_EQ(read(" 1.2345E-19"), std::nullopt);
  EXPECT_EQ(read("1.2345E+27"), std::nullopt);
  EXPECT_EQ(read(" 1.23456E+28"), std::nullopt);
  EXPECT_EQ(read(" 1.2345678E+30"), std::nullopt);
}

}  // namespace
