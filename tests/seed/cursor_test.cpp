#include "seed/cursor.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

using namespace tarvik;

namespace {

constexpr std::string_view kBytes = "abcdef";

Cursor cursor_over(std::string_view bytes) {
  return {bytes.data(), static_cast<std::int64_t>(bytes.size())};
}

SDBlkVol volume_of(std::string_view image) {
  SDBlkVol vol = {};
  vol.image = vol.cursor = image.data();
  vol.image_size = static_cast<std::int64_t>(image.size());
  return vol;
}

TEST(Cursor, TakesBytesOneAfterTheOther) {
  Cursor cursor = cursor_over(kBytes);
  EXPECT_EQ(cursor.take(2), "ab");
  EXPECT_EQ(cursor.take(3), "cde");
  EXPECT_EQ(cursor.rest(), "f");
  EXPECT_EQ(cursor.size(), 1);
}

TEST(Cursor, TakesNoMoreThanIsLeft) {
  Cursor cursor = cursor_over(kBytes);
  EXPECT_EQ(cursor.take(7), "abcdef");
  EXPECT_EQ(cursor.take(1), "");
  EXPECT_EQ(cursor.bytes(), kBytes.data() + kBytes.size());
}

TEST(Cursor, NegativeSizeTakesNothing) {
  Cursor cursor = cursor_over(kBytes);
  EXPECT_EQ(cursor.take(-1), "");
  cursor.skip(-2);
  EXPECT_EQ(cursor.rest(), kBytes);
}

TEST(Cursor, OfNegativeSizeHasNothing) {
  Cursor cursor(kBytes.data(), -3);
  EXPECT_FALSE(cursor.has(1));
  EXPECT_EQ(cursor.rest(), "");
  EXPECT_EQ(cursor.take(2), "");
  EXPECT_EQ(cursor.bytes(), kBytes.data());
}

TEST(Cursor, HasAsMuchAsIsLeft) {
  Cursor cursor = cursor_over(kBytes);
  EXPECT_TRUE(cursor.has(6));
  EXPECT_FALSE(cursor.has(7));
  cursor.skip(6);
  EXPECT_TRUE(cursor.has(0));
  EXPECT_FALSE(cursor.has(1));
}

TEST(Cursor, FirstDoesNotMove) {
  const Cursor cursor = cursor_over(kBytes);
  EXPECT_EQ(cursor.first(3), "abc");
  EXPECT_EQ(cursor.first(3), "abc");
}

TEST(Cursor, FromLeavesTheOriginal) {
  const Cursor cursor = cursor_over(kBytes);
  EXPECT_EQ(cursor.from(4).rest(), "ef");
  EXPECT_EQ(cursor.from(9).rest(), "");
  EXPECT_EQ(cursor.rest(), kBytes);
}

TEST(Cursor, PaddedPutsZerosForMissingBytes) {
  EXPECT_EQ(cursor_over("ab").padded<4>(), (std::array<char, 4>{'a', 'b', '\0', '\0'}));
  EXPECT_EQ(cursor_over("ab").padded<1>(), (std::array<char, 1>{'a'}));
  EXPECT_EQ(cursor_over("").padded<2>(), (std::array<char, 2>{'\0', '\0'}));
}

TEST(ImageCursor, EndsWithTheImage) {
  const SDBlkVol vol = volume_of(kBytes);
  EXPECT_EQ(image_at(vol, 4).rest(), "ef");
  EXPECT_EQ(image_at(vol, 6).rest(), "");
  EXPECT_EQ(image_from(vol, vol.image + 5).rest(), "f");
}

TEST(MoveTo, StopsAtTheEndOfTheImage) {
  SDBlkVol vol = volume_of(kBytes);
  move_to(&vol, 2);
  EXPECT_EQ(vol.offset, 2);
  EXPECT_EQ(vol.cursor, vol.image + 2);
  move_to(&vol, 7);
  EXPECT_EQ(vol.offset, 6);
  EXPECT_EQ(vol.cursor, vol.image + 6);
}

}  // namespace
