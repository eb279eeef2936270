#include "views/repeats.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace tarvik;

namespace {

// Bytes of a size, of which those at two places are set apart.
std::string bytes(std::size_t size, char last = 'a', char middle = 'a') {
  std::string text(size, 'a');
  if (size > 0) text.back() = last;
  if (size > 2) text[size / 2] = middle;
  return text;
}

TEST(RepeatsFind, NothingAtFirst) { EXPECT_EQ(Repeats(8).find(0, "bytes"), ""); }

TEST(RepeatsFind, TextOfTheSameBytes) {
  for (std::size_t size = 1; size <= 300; ++size) {
    Repeats repeats(8);
    repeats.keep(0, bytes(size), "text");
    EXPECT_EQ(repeats.find(0, bytes(size)), "text") << size;
  }
}

TEST(RepeatsFind, NothingForBytesThatDifferAtTheEnd) {
  for (std::size_t size = 1; size <= 300; ++size) {
    Repeats repeats(8);
    repeats.keep(0, bytes(size), "text");
    EXPECT_EQ(repeats.find(0, bytes(size, 'b')), "") << size;
  }
}

TEST(RepeatsFind, NothingForBytesThatDifferAnywhere) {
  for (const std::size_t size : {3U, 7U, 8U, 9U, 15U, 16U, 17U, 24U, 31U, 32U, 33U, 64U, 9999U}) {
    Repeats repeats(8);
    repeats.keep(0, bytes(size), "text");
    for (std::size_t i = 0; i < size; ++i) {
      std::string other = bytes(size);
      other[i] = 'b';
      EXPECT_EQ(repeats.find(0, other), "") << size << " at " << i;
    }
  }
}

TEST(RepeatsFind, NothingForMoreOrFewerBytes) {
  for (const std::size_t size : {1U, 8U, 16U, 32U, 100U}) {
    Repeats repeats(8);
    repeats.keep(0, bytes(size), "text");
    EXPECT_EQ(repeats.find(0, bytes(size + 1)), "") << size;
    EXPECT_EQ(repeats.find(0, bytes(size - 1)), "") << size;
  }
}

TEST(RepeatsFind, KindsAreKeptApart) {
  Repeats repeats(1024);
  repeats.keep(1, "bytes", "one");
  EXPECT_EQ(repeats.find(2, "bytes"), "");
  repeats.keep(2, "bytes", "two");
  EXPECT_EQ(repeats.find(1, "bytes"), "one");
  EXPECT_EQ(repeats.find(2, "bytes"), "two");
}

TEST(RepeatsFind, BytesMayHoldZeros) {
  Repeats repeats(1024);
  repeats.keep(0, std::string_view("a\0b", 3), std::string_view("\0", 1));
  EXPECT_EQ(repeats.find(0, std::string_view("a\0b", 3)), std::string_view("\0", 1));
  EXPECT_EQ(repeats.find(0, std::string_view("a\0c", 3)), "");
}

TEST(RepeatsKeep, FirstTextStays) {
  Repeats repeats(1024);
  repeats.keep(0, "bytes", "first");
  repeats.keep(0, "bytes", "second");
  EXPECT_EQ(repeats.find(0, "bytes"), "first");
}

// Of which the hash is the same, for it does not look at the byte that sets them apart.
TEST(RepeatsKeep, SomeOfOneHash) {
  Repeats repeats(64);
  for (char c = 'b'; c <= 'm'; ++c) repeats.keep(0, bytes(3216, 'a', c), std::string(1, c));
  for (char c = 'b'; c <= 'm'; ++c) {
    EXPECT_EQ(repeats.find(0, bytes(3216, 'a', c)), std::string(1, c));
  }
}

TEST(RepeatsKeep, WhatDoesNotFitMakesRoom) {
  Repeats repeats(1024);
  const std::string text(Repeats::kRoom / 8, 'x');
  for (int i = 0; i < 7; ++i) repeats.keep(0, std::to_string(i), text);
  EXPECT_EQ(repeats.find(0, "0"), text);
  for (int i = 7; i < 1000; ++i) repeats.keep(0, std::to_string(i), text);
  EXPECT_EQ(repeats.find(0, "0"), "");
  EXPECT_EQ(repeats.find(0, "999"), text);
}

TEST(RepeatsKeep, OneTooManyMakesRoom) {
  Repeats repeats(8);
  for (int i = 0; i < 8; ++i) repeats.keep(0, std::to_string(i), "text");
  for (int i = 0; i < 8; ++i) EXPECT_EQ(repeats.find(0, std::to_string(i)), "text");
  repeats.keep(0, "8", "text");
  for (int i = 0; i < 8; ++i) EXPECT_EQ(repeats.find(0, std::to_string(i)), "");
  EXPECT_EQ(repeats.find(0, "8"), "text");
}

TEST(RepeatsKeep, TooManyOfOneHashAreNotKept) {
  Repeats repeats(64);
  for (char c = 'b'; c <= 'z'; ++c) repeats.keep(0, bytes(3216, 'a', c), "text");
  EXPECT_EQ(repeats.find(0, bytes(3216, 'a', 'b')), "text");
  EXPECT_EQ(repeats.find(0, bytes(3216, 'a', 'z')), "");
  repeats.keep(0, "others", "still are");
  EXPECT_EQ(repeats.find(0, "others"), "still are");
}

TEST(RepeatsKeep, WhatTakesMostOfTheRoomIsNotKept) {
  Repeats repeats(1024);
  repeats.keep(0, "small", "text");
  repeats.keep(0, "large", std::string(Repeats::kRoom / 2, 'x'));
  EXPECT_EQ(repeats.find(0, "large"), "");
  EXPECT_EQ(repeats.find(0, "small"), "text");
}

TEST(RepeatsClear, ForgetsAll) {
  Repeats repeats(1024);
  repeats.clear();
  repeats.keep(0, "bytes", "text");
  repeats.clear();
  EXPECT_EQ(repeats.find(0, "bytes"), "");
  repeats.keep(0, "bytes", "again");
  EXPECT_EQ(repeats.find(0, "bytes"), "again");
}

TEST(RepeatsClear, WhatWasForgottenLongAgoStaysSo) {
  Repeats repeats(8);
  repeats.keep(0, "old", "text");
  for (int i = 0; i < 70000; ++i) {
    repeats.clear();
    ASSERT_EQ(repeats.find(0, "old"), "") << i;
    repeats.keep(0, "new", "text");
    ASSERT_EQ(repeats.find(0, "old"), "") << i;
    ASSERT_EQ(repeats.find(0, "new"), "text") << i;
  }
}

}  // namespace
