// Real numbers in fixed pictures: what the fast reader takes, and what it leaves to the other.
#include "seed/picture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

std::optional<double> read(const std::string &text) {
  double value = 0.0;
  const bool taken =
      picture::read_field(text.data(), static_cast<std::int32_t>(text.size()), &value);
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
