#include "support/digits.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <random>
#include <string>

using namespace tarvik;

namespace {

std::optional<std::uint64_t> read(const std::string &text) {
  std::uint64_t value = 0;
  if (!read_eight_digits(load_eight(text.data()), &value)) return std::nullopt;
  return value;
}

TEST(EightCharacters, AreStoredAsTheyWereLoaded) {
  std::array<char, 9> text = {};
  store_eight(text.data(), load_eight("abcdefgh"));
  EXPECT_STREQ(text.data(), "abcdefgh");
}

TEST(EightCharacters, TheFirstIsTheLowestByte) {
  EXPECT_EQ(load_eight("a\0\0\0\0\0\0\0"), std::uint64_t{'a'});
}

TEST(EightDigits, AreReadAsTheirNumber) {
  EXPECT_EQ(read("00000000"), 0U);
  EXPECT_EQ(read("00000001"), 1U);
  EXPECT_EQ(read("12345678"), 12345678U);
  EXPECT_EQ(read("99999999"), 99999999U);
}

TEST(EightDigits, AnyNumberIsRead) {
  std::mt19937 random(3);
  for (int i = 0; i < 100000; ++i) {
    const auto number = static_cast<unsigned>(random() % 100000000);
    std::array<char, 16> text;
    std::snprintf(text.data(), text.size(), "%08u", number);
    ASSERT_EQ(read(text.data()), number);
  }
}

TEST(EightDigits, AnotherCharacterAtAnyPlaceIsSeen) {
  for (std::size_t place = 0; place < 8; ++place) {
    for (int c = 0; c < 256; ++c) {
      for (const char others : {'0', '9'}) {
        std::string text(8, others);
        text[place] = static_cast<char>(c);
        ASSERT_EQ(read(text).has_value(), c >= '0' && c <= '9') << place << " " << c;
      }
    }
  }
}

TEST(FirstOfEight, StandsAfterZeros) {
  std::uint64_t value = 0;
  EXPECT_TRUE(read_eight_digits(first_of_eight<6>("123456D "), &value));
  EXPECT_EQ(value, 123456U);
  EXPECT_TRUE(read_eight_digits(first_of_eight<1>("7xxxxxxx"), &value));
  EXPECT_EQ(value, 7U);
  EXPECT_FALSE(read_eight_digits(first_of_eight<7>("123456D "), &value));
}

}  // namespace
