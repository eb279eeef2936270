#include "support/parse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "support/memory.h"

using namespace tarvik;

namespace {

void expect_integer(const char *text, std::int64_t value, std::size_t length) {
  const IntegerPrefix integer = read_integer(text);
  EXPECT_EQ(integer.value, value) << text;
  EXPECT_EQ(integer.length, length) << text;
}

void expect_real(std::string_view text, double value, std::size_t length) {
  const RealPrefix real = read_real(text);
  EXPECT_EQ(real.value, value) << text;
  EXPECT_EQ(real.length, length) << text;
}

TEST(ReadReal, PlainDecimals) {
  expect_real("1.5", 1.5, 3);
  expect_real("-12.25abc", -12.25, 6);
  expect_real(" \t+0.5 ", 0.5, 6);
  expect_real(".5", 0.5, 2);
  expect_real("5.", 5.0, 2);
  expect_real("1.2.3", 1.2, 3);
}

TEST(ReadReal, Exponents) {
  expect_real("1.5E+03", 1500.0, 7);
  expect_real("2e-2x", 0.02, 4);
  expect_real("1e", 1.0, 1);
  expect_real("1e+", 1.0, 1);
  expect_real("1e5.5", 1e5, 3);
}

TEST(ReadReal, NoNumberTakesNothing) {
  for (const char *text : {"", " ", "+", "-", ".", "+.", "e5", ".e5", "abc", "- 1", "+-1", "in"}) {
    expect_real(text, 0.0, 0);
  }
}

TEST(ReadReal, TextEndsWithTheView) {
  expect_real(std::string_view("12345", 2), 12.0, 2);
  expect_real(std::string_view("1e55", 2), 1.0, 1);
  expect_real(std::string_view("1.5", 2), 1.0, 2);
  expect_real(std::string_view("0x1f", 2), 0.0, 1);
  expect_real(std::string_view("infinity", 5), HUGE_VAL, 3);
}

TEST(ReadReal, NulByteEndsTheNumber) { expect_real(std::string_view("1\0002", 3), 1.0, 1); }

TEST(ReadReal, BeyondTheRangeIsInfiniteOrZero) {
  expect_real("1e999", HUGE_VAL, 5);
  expect_real("-1e99999999999999999999", -HUGE_VAL, 23);
  expect_real("1e-999", 0.0, 6);
  expect_real("0e99999999999999999999", 0.0, 22);
}

TEST(ReadReal, HexadecimalWithoutMemoryTakesNothing) {
  expect_real("0x1p3", 8.0, 5);
  memory_set_gate([](std::size_t) { return false; });
  expect_real("0x1p3", 0.0, 0);
  memory_set_gate(nullptr);
}

TEST(ReadInteger, Numbers) {
  expect_integer("42", 42, 2);
  expect_integer(" \n-7x", -7, 4);
  expect_integer("+5", 5, 2);
  expect_integer("007", 7, 3);
  expect_integer("1.5", 1, 1);
}

TEST(ReadInteger, NoNumberTakesNothing) {
  for (const char *text : {"", "  ", "-", "+", "x1", "- 1", "--1"}) expect_integer(text, 0, 0);
}

TEST(ReadInteger, SaturatesAt64Bits) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  expect_integer("9223372036854775807", kMost, 19);
  expect_integer("9223372036854775808", kMost, 19);
  expect_integer("-9223372036854775808", kLeast, 20);
  expect_integer("-9223372036854775809", kLeast, 20);
  expect_integer("9223372036854775806", kMost - 1, 19);
  expect_integer("99999999999999999999999", kMost, 23);
  expect_integer("-99999999999999999999999", kLeast, 24);
}

TEST(ReadInteger, TextEndsWithTheView) {
  const IntegerPrefix integer = read_integer(std::string_view("12345", 3));
  EXPECT_EQ(integer.value, 123);
  EXPECT_EQ(integer.length, 3U);
}

}  // namespace
