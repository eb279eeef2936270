// The fields of a block in the order of the catalogue, and their exact bytes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "seed/whole.h"
#include "tests/util/decoded.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::BinaryFields;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

std::string control(const ControlBlockette &blockette) {
  return VolumeWriter(512).control('S', blockette).bytes();
}
std::string raw_of(const SDBlk *block) {
  std::int64_t size = 0;
  const char *bytes = sdblk_raw(block, &size);
  return {bytes, static_cast<std::size_t>(size)};
}
// The bytes of a field; "-" where it is not found.
std::string bytes_of(const SDBlk *block, const SDBlkEntry &entry, std::int32_t element = 0) {
  std::int64_t size = -1;
  const char *bytes = sdblk_field_bytes(block, &entry, element, &size);
  if (bytes == nullptr) return "-";
  return {bytes, static_cast<std::size_t>(size)};
}

// ---- all bytes of a block ----

TEST(SdblkRaw, OfAControlBlocketteAreThoseFromItsTypeOn) {
  const ControlBlockette blockette = ControlBlockette(33).digits(1, 3).var("Network");
  WholeReader whole(control(blockette), 512);
  EXPECT_EQ(raw_of(whole.next()), blockette.text());
  BlockReader strict(control(blockette));
  EXPECT_EQ(raw_of(strict.next()), blockette.text());
}

TEST(SdblkRaw, OfACutBlocketteAreThoseThatAreThere) {
  const std::string text = ControlBlockette(90).raw("0123456789").text_with_length(99);
  WholeReader reader(VolumeWriter(25).control('S', text).bytes(), 25);
  EXPECT_EQ(raw_of(reader.next()), text);
}

TEST(SdblkRaw, OfADataRecordAreTheRecordAndThoseOfABlocketteRunToTheNext) {
  const std::string bytes = DataRecord{}.b1000(3, 1, 7).b100(20).bytes(128);
  WholeReader reader(bytes);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(raw_of(block), bytes);
  EXPECT_EQ(raw_of(block->next), bytes.substr(48, 8));
  EXPECT_EQ(raw_of(block->next->next), bytes.substr(56));
}

TEST(SdblkRaw, OfADataRecordThatIsReadStrictlyIsItsLength) {
  const std::string bytes = DataRecord{}.b1000(3, 1, 7).bytes(128);
  BlockReader reader(bytes + DataRecord{}.b1000(3, 1, 7).bytes(128, 2), 128);
  EXPECT_EQ(raw_of(reader.decode_next()), bytes);
}

TEST(SdblkRaw, OfABlockMadeByHandAreNone) {
  const SDBlk block = {};
  std::int64_t size = 7;
  EXPECT_EQ(sdblk_raw(&block, &size), nullptr);
  EXPECT_EQ(size, 0);
}

// ---- fields in order ----

TEST(SdblkEntryAt, GivesTheFieldsInTheOrderOfTheCatalogue) {
  WholeReader reader(control(ControlBlockette(33).digits(1, 3).var("Network")), 512);
  const SDBlk *block = reader.decode_next();
  const SDBlkFieldDef *fields = block->blkdef->fields;
  EXPECT_EQ(sdblk_entry_at(block->contents, fields, 0)->value.i, 1);
  EXPECT_STREQ(sdblk_entry_at(block->contents, fields, 1)->value.s, "Network");
}

TEST(SdblkEntryAt, IsNullWhereTheFieldIsAbsent) {
  WholeReader reader(control(ControlBlockette(33).digits(1, 3)), 512);
  const SDBlk *block = reader.decode_next();
  EXPECT_NE(sdblk_entry_at(block->contents, block->blkdef->fields, 0), nullptr);
  EXPECT_EQ(sdblk_entry_at(block->contents, block->blkdef->fields, 1), nullptr);
  EXPECT_EQ(sdblk_entry_at(nullptr, block->blkdef->fields, 0), nullptr);
}

TEST(SdblkEntryAt, GivesThoseOfARepetition) {
  WholeReader reader(control(ControlBlockette(60).raw("01"
                                                      "02"
                                                      "01"
                                                      "0007")),
                     512);
  const SDBlk *block = reader.decode_next();
  const SDBlkEntry *stages = sdblk_entry_at(block->contents, block->blkdef->fields, 1);
  const SDBlkEntry *stage = sdblk_entry_at(stages->value.ea[0], stages->def->sub, 0);
  EXPECT_EQ(stage->value.i, 2);
}

// ---- the bytes of a field ----

TEST(SdblkFieldBytes, AreThoseThatStandInTheBlock) {
  WholeReader reader(
      control(ControlBlockette(50).raw(" AB  +64.993100").raw("-016.0      ").raw("x")), 512);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "sta")), " AB  ");
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "lat")), "+64.993100");
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "lon")), "-016.0     ");
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "elev")), " x");
}

TEST(SdblkFieldBytes, OfAVariableTextGoWithoutItsTilde) {
  WholeReader reader(control(ControlBlockette(34).digits(1, 3).var(" M/S ").raw("rest")), 512);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "name")), " M/S ");
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "descr")), "rest");
}

TEST(SdblkFieldBytes, OfAnArrayAreThoseOfOneElement) {
  WholeReader reader(
      control(ControlBlockette(30).var("Int").digits(1, 4).digits(0, 3).digits(2, 2).var("M0").var(
          "W4")),
      512);
  const SDBlk *block = reader.decode_next();
  const SDBlkEntry &keys = entry_of(block->contents, "keys");
  EXPECT_EQ(bytes_of(block, keys, 0), "M0");
  EXPECT_EQ(bytes_of(block, keys, 1), "W4");
  EXPECT_EQ(bytes_of(block, keys, 2), "-");
  EXPECT_EQ(bytes_of(block, keys, -1), "-");
}

TEST(SdblkFieldBytes, AreFoundInRepetitionsAndAfterThem) {
  WholeReader reader(control(ControlBlockette(54)
                                 .raw("A01001002")
                                 .digits(2, 4)
                                 .raw(" 1.00000E+00 0.00000E+00")
                                 .raw(" 2.00000E+00         bad")
                                 .raw(" 12x")),
                     512);
  const SDBlk *block = reader.decode_next();
  const Arr *second = repetition_of(block->contents, "nums", 1);
  EXPECT_EQ(bytes_of(block, entry_of(second, "coef")), " 2.00000E+00");
  EXPECT_EQ(bytes_of(block, entry_of(second, "coef_err")), "         bad");
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "ndens")), " 12x");
}

TEST(SdblkFieldBytes, OfAGroupAreNone) {
  WholeReader reader(control(ControlBlockette(60).raw("01"
                                                      "02"
                                                      "01"
                                                      "0007")),
                     512);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "stages")), "-");
}

TEST(SdblkFieldBytes, OfBinaryFieldsAreThoseOfTheRecordOrTheBlockette) {
  const std::string bytes = DataRecord{.sta = "AB"}.b1000(3, 1, 7).b100(20).bytes(128);
  WholeReader reader(bytes);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "sta")), "AB   ");
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "time")), bytes.substr(20, 10));
  EXPECT_EQ(bytes_of(block->next, entry_of(block->next->contents, "dlenp")), "\x07");
  EXPECT_EQ(bytes_of(block->next->next, entry_of(block->next->next->contents, "samprate")),
            bytes.substr(60, 4));
}

TEST(SdblkFieldBytes, EntryOfAnotherBlockIsNotFound) {
  WholeReader reader(control(ControlBlockette(33).digits(1, 3).var("Network")), 512);
  WholeReader other(control(ControlBlockette(33).digits(1, 3).var("Network")), 512);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(bytes_of(block, entry_of(other.decode_next()->contents, "gid")), "-");
}

TEST(SdblkFieldBytes, OfABlockThatIsReadStrictly) {
  BlockReader reader(control(ControlBlockette(33).digits(1, 3).var(" Network ")));
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(bytes_of(block, entry_of(block->contents, "descr")), " Network ");
}

// ---- integers ----

TEST(SdblkInteger, IsUnsignedOfTheFormatUlongOnly) {
  SDBlkFieldDef def = {};
  SDBlkEntry entry = {};
  entry.def = &def;
  entry.value.i = -1;
  def.format = "LONG";
  EXPECT_EQ(sdblk_integer(&entry), -1);
  def.format = "ULONG";
  EXPECT_EQ(sdblk_integer(&entry), 4294967295);
}

}  // namespace
