#include "support/line.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace tarvik;

namespace {

using Buffer = std::array<char, 512>;

template <typename Put>
std::string text_of(Put put) {
  Buffer buffer;
  return {buffer.data(), put(buffer.data())};
}

std::string integer(std::int64_t value) {
  return text_of([&](char *out) { return put_integer(out, value); });
}
std::string digits(std::int64_t value, int count) {
  return text_of([&](char *out) { return put_digits(out, value, count); });
}
std::string fixed(double value, int decimals) {
  return text_of([&](char *out) { return put_fixed(out, value, decimals); });
}

// The number of differences from printf, over 0 to 6 decimals.
int differences(double value) {
  int different = 0;
  for (int decimals = 0; decimals <= 6; ++decimals) {
    Buffer buffer;
    std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
    if (fixed(value, decimals) != buffer.data()) ++different;
  }
  return different;
}

TEST(PutText, TextIsCopied) {
  EXPECT_EQ(text_of([](char *out) { return put_text(out, "abc"); }), "abc");
  EXPECT_EQ(text_of([](char *out) { return put_text(out, {}); }), "");
}

TEST(PutPadded, BlanksFillTheWidth) {
  EXPECT_EQ(text_of([](char *out) { return put_padded(out, "ab", 5); }), "ab   ");
  EXPECT_EQ(text_of([](char *out) { return put_padded(out, "", 2); }), "  ");
}

TEST(PutPadded, EveryTextToEveryWidth) {
  const std::string text = "abcdefghijklmnopqrstuvwxyz";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    for (std::size_t width = 0; width <= text.size(); ++width) {
      const std::string front = text.substr(0, size);
      const std::string padded = front + std::string(width > size ? width - size : 0, ' ');
      EXPECT_EQ(text_of([&](char *out) { return put_padded(out, front, width); }), padded);
    }
  }
}

TEST(PutPadded, LongTextIsNotCut) {
  EXPECT_EQ(text_of([](char *out) { return put_padded(out, "abc", 3); }), "abc");
  EXPECT_EQ(text_of([](char *out) { return put_padded(out, "abcd", 3); }), "abcd");
}

TEST(PutInteger, Numbers) {
  EXPECT_EQ(integer(0), "0");
  EXPECT_EQ(integer(-7), "-7");
  EXPECT_EQ(integer(42), "42");
  EXPECT_EQ(integer(-32768), "-32768");
}

TEST(PutInteger, EveryNumberOfAFewDigits) {
  for (std::int64_t value = 0; value < 20000; ++value) {
    EXPECT_EQ(integer(value), std::to_string(value));
  }
}

TEST(PutInteger, ZerosWithinStay) {
  EXPECT_EQ(integer(1000001), "1000001");
  EXPECT_EQ(integer(70060005), "70060005");
  EXPECT_EQ(integer(999000000), "999000000");
  EXPECT_EQ(integer(5000000042), "5000000042");
}

TEST(PutInteger, Extremes) {
  EXPECT_EQ(integer(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
  EXPECT_EQ(integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(PutInteger, EveryNumberOfDigits) {
  std::int64_t power = 1;
  for (std::size_t zeros = 0; zeros < 19; ++zeros) {
    EXPECT_EQ(integer(power), "1" + std::string(zeros, '0'));
    EXPECT_EQ(integer(power - 1), zeros == 0 ? "0" : std::string(zeros, '9'));
    if (zeros < 18) power *= 10;
  }
}

TEST(PutDigits, ZerosFillTheDigits) {
  EXPECT_EQ(digits(12, 6), "000012");
  EXPECT_EQ(digits(0, 4), "0000");
  EXPECT_EQ(digits(123456, 3), "123456");
}

TEST(PutDigits, MinusSignComesOnTop) {
  EXPECT_EQ(digits(-12, 6), "-000012");
  EXPECT_EQ(digits(-5, 1), "-5");
}

TEST(PutFixed, PlainValues) {
  EXPECT_EQ(fixed(0.0, 6), "0.000000");
  EXPECT_EQ(fixed(1.5, 6), "1.500000");
  EXPECT_EQ(fixed(-34.9459, 4), "-34.9459");
  EXPECT_EQ(fixed(20.0, 1), "20.0");
  EXPECT_EQ(fixed(9999999999.999, 6), "9999999999.999001");
}

TEST(PutFixed, HalfWayGoesToTheEvenDigit) {
  EXPECT_EQ(fixed(0.5, 0), "0");
  EXPECT_EQ(fixed(1.5, 0), "2");
  EXPECT_EQ(fixed(2.5, 0), "2");
  EXPECT_EQ(fixed(0.125, 2), "0.12");
  EXPECT_EQ(fixed(0.375, 2), "0.38");
}

TEST(PutFixed, RoundingMayCarry) {
  EXPECT_EQ(fixed(0.9999996, 6), "1.000000");
  EXPECT_EQ(fixed(999.96, 1), "1000.0");
}

TEST(PutFixed, MinusSignOfZeroIsKept) {
  EXPECT_EQ(fixed(-0.0, 6), "-0.000000");
  EXPECT_EQ(fixed(-1e-9, 6), "-0.000000");
}

TEST(PutFixed, NoNumbers) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(fixed(nan, 6), "nan");
  EXPECT_EQ(fixed(std::copysign(nan, -1.0), 6), "-nan");
  EXPECT_EQ(fixed(infinity, 6), "inf");
  EXPECT_EQ(fixed(-infinity, 6), "-inf");
}

TEST(PutFixed, LargestDoubleNeedsNoMoreThanTheRoomPromised) {
  const double largest = std::numeric_limits<double>::max();
  EXPECT_LE(fixed(-largest, 6).size(), 320U);
  EXPECT_EQ(differences(-largest), 0);
}

TEST(PutFixed, EdgesOfTheFastPathAreThoseOfPrintf) {
  for (const double value :
       {5e-324, 2.2250738585072014e-308, 4398046511103.5, 4398046511104.0, 8796093022207.9995,
        8796093022208.0, 8796093022208.5, 4503599627370495.5, 9007199254740993.0, 1e15, 1e22, 1e308,
        2.5e-7, 5e-7, 1.5e-6, 0.0000005}) {
    EXPECT_EQ(differences(value), 0) << value;
    EXPECT_EQ(differences(-value), 0) << value;
  }
}

TEST(PutFixed, AnyBitsAreThoseOfPrintf) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const auto value = std::bit_cast<double>(random());
    ASSERT_EQ(differences(value), 0) << std::hexfloat << value;
  }
}

TEST(PutFixed, ValuesOfCommonSizeAreThoseOfPrintf) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 20000; ++i) {
    const auto whole = static_cast<double>(static_cast<std::int64_t>(random()));
    const double value = std::ldexp(whole, -static_cast<int>(random() % 90));
    ASSERT_EQ(differences(value), 0) << std::hexfloat << value;
  }
}

TEST(PutFixed, HalvesAreThoseOfPrintf) {
  // Odd multiples of small powers of two: exactly between two texts for some number of decimals.
  for (int odd = 1; odd < 2000; odd += 2) {
    for (int power = 1; power < 12; ++power) {
      ASSERT_EQ(differences(std::ldexp(odd, -power)), 0) << odd << " " << power;
    }
  }
}

TEST(PutFixed, MillionthsNearlyHalfWayAreThoseOfPrintf) {
  std::mt19937_64 random(4);
  for (int i = 0; i < 20000; ++i) {
    const auto whole = static_cast<double>(random() % 5000000000);
    const double half_way = (whole + 0.5) / 1e6;
    ASSERT_EQ(differences(half_way), 0) << std::hexfloat << half_way;
    ASSERT_EQ(differences(std::nextafter(half_way, 0.0)), 0) << std::hexfloat << half_way;
    ASSERT_EQ(differences(-std::nextafter(half_way, 1e6)), 0) << std::hexfloat << half_way;
    const double near =
        (whole + 0.5 + 0.002 * (static_cast<double>(random() % 1000) / 1000 - 0.5)) / 1e6;
    ASSERT_EQ(differences(near), 0) << std::hexfloat << near;
  }
}

TEST(PutHex, EveryByteAtEveryLength) {
  std::string bytes;
  std::string expected;
  for (int i = 0; i < 256; ++i) {
    bytes.push_back(static_cast<char>(i));
    std::array<char, 4> digits;
    std::snprintf(digits.data(), digits.size(), "%02x", static_cast<unsigned>(i));
    expected += digits.data();
  }
  for (std::size_t start = 0; start < bytes.size(); start += 16) {
    for (std::size_t size = 0; size <= 64 && start + size <= bytes.size(); ++size) {
      // No byte more than given, so that the sanitizers see a step after them.
      const std::vector<char> piece(bytes.begin() + static_cast<std::ptrdiff_t>(start),
                                    bytes.begin() + static_cast<std::ptrdiff_t>(start + size));
      EXPECT_EQ(text_of([&](char *out) { return put_hex(out, piece.data(), size); }),
                expected.substr(2 * start, 2 * size));
    }
  }
}

TEST(PutHex, TwoLowerCaseDigitsAByte) {
  const std::array<char, 4> bytes = {'\x00', '\x0f', '\xa9', '\xff'};
  EXPECT_EQ(text_of([&](char *out) { return put_hex(out, bytes.data(), bytes.size()); }),
            "000fa9ff");
}

TEST(PutHex, NoBytesGiveNoText) {
  EXPECT_EQ(text_of([](char *out) { return put_hex(out, "x", 0); }), "");
}

}  // namespace
