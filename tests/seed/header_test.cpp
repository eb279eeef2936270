// The public header comes first, to show that it needs no other.
#include "seed/sdblk.h"
// What follows shows that it may stand twice.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>

#include "seed/sdblk.h"
#include "tests/seed/header_c11.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ControlBlockette;

ControlBlockette station(const std::string &code, double latitude) {
  return ControlBlockette(50).fixed(code, 5).coordinate(latitude, volume::kLatitude);
}

TEST(HeaderInC, ProgramReadsAVolume) {
  volume::VolumeWriter writer(512);
  writer.control('S', {station("ONE", 46.5), ControlBlockette(51).raw(""), station("TWO", -8.25)});
  const std::string bytes = writer.bytes();
  std::array<double, 2> latitudes = {};
  EXPECT_EQ(header_c11_count_stations(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                      latitudes.data(), 2),
            2);
  EXPECT_EQ(latitudes[0], 46.5);
  EXPECT_EQ(latitudes[1], -8.25);
}

TEST(HeaderInC, DamagedVolumeShowsInTheResult) {
  const std::string bytes = "ABCDEFV 0110007";
  EXPECT_EQ(header_c11_count_stations(bytes.data(), 15, nullptr, 0), -1);
  elog_clear_register(0);
}

TEST(HeaderInC, RecordsHaveTheSameSizes) {
  EXPECT_EQ(header_c11_block_size(), sizeof(SDBlk));
  EXPECT_EQ(header_c11_volume_size(), sizeof(SDBlkVol));
  EXPECT_EQ(header_c11_entry_size(), sizeof(SDBlkEntry));
  EXPECT_EQ(header_c11_field_size(), sizeof(SDBlkFieldDef));
}

TEST(HeaderRecords, ValueOfAnEntryIsOneSlotOf8Bytes) { EXPECT_EQ(sizeof(SDBlkEntry{}.value), 8U); }

TEST(HeaderRecords, MembersOfAnEntryStandInTheirOrder) {
  EXPECT_EQ(offsetof(SDBlkEntry, def), 0U);
  EXPECT_LT(offsetof(SDBlkEntry, def), offsetof(SDBlkEntry, ref));
  EXPECT_LT(offsetof(SDBlkEntry, ref), offsetof(SDBlkEntry, count));
  EXPECT_LT(offsetof(SDBlkEntry, count), offsetof(SDBlkEntry, value));
  EXPECT_LT(offsetof(SDBlkAbbrRef, code), offsetof(SDBlkAbbrRef, blk));
}

TEST(HeaderRecords, OffsetsIntoAVolumeHave64Bits) {
  EXPECT_EQ(sizeof(SDBlk{}.record_offset), 8U);
  EXPECT_EQ(sizeof(SDBlk{}.file_offset), 8U);
  EXPECT_EQ(sizeof(SDBlk{}.data_offset), 8U);
  EXPECT_EQ(sizeof(SDBlkVol{}.image_size), 8U);
  EXPECT_EQ(sizeof(SDBlkVol{}.offset), 8U);
  EXPECT_EQ(sizeof(SDBlkVol{}.record_offset), 8U);
}

TEST(HeaderConstants, KindsAndSentinelsHaveTheirValues) {
  EXPECT_EQ(SDBLK_INT, -1);
  EXPECT_EQ(SDBLK_ABBR_KEY, -2);
  EXPECT_EQ(SDBLK_DOUBLE, -3);
  EXPECT_EQ(SDBLK_STRING, -4);
  EXPECT_EQ(SDBLK_INT_ARRAY, -5);
  EXPECT_EQ(SDBLK_DOUBLE_ARRAY, -6);
  EXPECT_EQ(SDBLK_STRING_ARRAY, -7);
  EXPECT_EQ(SDBLK_GROUP_ARRAY, -8);
  EXPECT_EQ(SDBLK_REF_ARRAY, -9);
  EXPECT_EQ(SDBLK_EOF, 999999999);
  EXPECT_EQ(SDBLK_NO_TIME, 9999999999.999);
  EXPECT_EQ(SDBLK_DATA_RECORD, 99);
}

}  // namespace
