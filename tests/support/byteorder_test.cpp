#include "support/byteorder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

constexpr std::array<char, 9> kBytes = {'\x80', '\x01', '\x02', '\x03', '\x04',
                                        '\x05', '\x06', '\xff', '\x00'};

TEST(ByteOrder, BigEndian32Bits) {
  const char *source = kBytes.data();
  std::array<std::int32_t, 2> values = {};
  mi2hi(&source, values.data(), 2);
  EXPECT_EQ(values[0], INT32_MIN + 0x010203);
  EXPECT_EQ(values[1], 0x040506ff);
  EXPECT_EQ(source, kBytes.data() + 8);
}

TEST(ByteOrder, LittleEndian32Bits) {
  const char *source = kBytes.data();
  std::array<std::int32_t, 2> values = {};
  vi2hi(&source, values.data(), 2);
  EXPECT_EQ(values[0], 0x03020180);
  EXPECT_EQ(values[1], -0x00f9fafc);  // 0xff060504
  EXPECT_EQ(source, kBytes.data() + 8);
}

TEST(ByteOrder, Unsigned32Bits) {
  const char *source = kBytes.data();
  std::uint32_t value = 0;
  umi2hi(&source, &value, 1);
  EXPECT_EQ(value, 0x80010203U);
  uvi2hi(&source, &value, 1);
  EXPECT_EQ(value, 0xff060504U);
  EXPECT_EQ(source, kBytes.data() + 8);
}

TEST(ByteOrder, Signed16Bits) {
  const char *source = kBytes.data();
  std::array<std::int16_t, 2> values = {};
  ms2hs(&source, values.data(), 2);
  EXPECT_EQ(values[0], -0x7fff);
  EXPECT_EQ(values[1], 0x0203);
  source = kBytes.data() + 6;
  vs2hs(&source, values.data(), 1);
  EXPECT_EQ(values[0], -0x00fa);  // 0xff06
  EXPECT_EQ(source, kBytes.data() + 8);
}

TEST(ByteOrder, Unsigned16Bits) {
  const char *source = kBytes.data();
  std::uint16_t value = 0;
  ums2hs(&source, &value, 1);
  EXPECT_EQ(value, 0x8001);
  uvs2hs(&source, &value, 1);
  EXPECT_EQ(value, 0x0302);
  EXPECT_EQ(source, kBytes.data() + 4);
}

TEST(ByteOrder, Floats) {
  // 1.5 is 0x3fc00000, -2 is 0xc0000000.
  constexpr std::array<char, 8> kFloats = {'\x3f', '\xc0', '\0', '\0', '\0', '\0', '\0', '\xc0'};
  const char *source = kFloats.data();
  float value = 0;
  mf2hf(&source, &value, 1);
  EXPECT_EQ(value, 1.5F);
  vf2hf(&source, &value, 1);
  EXPECT_EQ(value, -2.0F);
  EXPECT_EQ(source, kFloats.data() + 8);
}

TEST(ByteOrder, SourceNeedsNoAlignment) {
  const char *source = kBytes.data() + 1;
  std::uint32_t value = 0;
  umi2hi(&source, &value, 1);
  EXPECT_EQ(value, 0x01020304U);
}

TEST(ByteOrder, NothingAskedForMovesNothing) {
  const char *source = kBytes.data();
  std::uint16_t value = 77;
  ums2hs(&source, &value, 0);
  ums2hs(&source, &value, -1);
  EXPECT_EQ(value, 77);
  EXPECT_EQ(source, kBytes.data());
}

}  // namespace
