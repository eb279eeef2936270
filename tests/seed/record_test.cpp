#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "seed/sdblk.h"
#include "support/arena.h"
#include "tests/util/log_capture.h"
#include "tests/util/reader.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

using namespace std::string_literals;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

constexpr int kEnd = 999999999;

// The text, blanks after it up to a size.
std::string padded(std::string text, std::size_t size) {
  text.resize(size, ' ');
  return text;
}

// `count` control records of blanks, numbered from 1 on.
std::string blank_records(int count, std::size_t length) {
  std::string bytes;
  for (int i = 1; i <= count; ++i) {
    const std::string digits = std::to_string(i);
    bytes += padded(std::string(6 - digits.size(), '0') + digits + "V ", length);
  }
  return bytes;
}

// A volume identifier blockette that states the record length 2 to the exponent.
ControlBlockette volume_identifier(int exponent) {
  return ControlBlockette(10)
      .fixed("02.3", 4)
      .digits(exponent, 2)
      .var("")
      .var("")
      .var("")
      .var("")
      .var("");
}

DataRecord data_record(char quality = 'D') {
  DataRecord record{.quality = quality, .sta = "STA", .chan = "BHZ", .net = "XX"};
  return record.b1000(3, 1, 9);
}

// ---- ends of a volume ----

TEST(ParseBlk, ImageBelowAHeaderIsTheEnd) {
  LogCapture log;
  for (std::size_t size = 0; size < 8; ++size) {
    Reader reader("000001V "s.substr(0, size));
    EXPECT_EQ(reader.next(), kEnd) << size;
    EXPECT_FALSE(reader.has_block()) << size;
  }
  EXPECT_EQ(log.registered(), "");
}

TEST(ParseBlk, HeaderWithoutRoomForAPrefixIsTheEnd) {
  LogCapture log;
  for (std::size_t size = 8; size < 15; ++size) {
    Reader reader("000001V 0110007"s.substr(0, size));
    EXPECT_EQ(reader.next(), kEnd) << size;
  }
  Reader whole("000001V 0110007");
  EXPECT_EQ(whole.next(), 7);
  EXPECT_EQ(log.registered(), "");
}

TEST(ParseBlk, EndIsGivenAgainAndAgain) {
  Reader reader("000001V 0110007");
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.next(), kEnd);
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, BlocketteInTheLastSevenBytesIsOnlyReadAfterAHeader) {
  Reader reader("000001V 01100070120007");
  EXPECT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, FragmentAfterTheLastRecordIsIgnored) {
  LogCapture log;
  Reader reader(padded("000001V 0110007", 512) + "000002V", 512);
  EXPECT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.next(), kEnd);
  EXPECT_EQ(log.registered(), "");
}

TEST(ParseBlk, LastRecordRunsToTheEndOfTheImage) {
  Reader reader(padded("000001V 0110007", 512) + padded("000002V 0110007", 700), 512);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().logical_length, 512);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().logical_length, 700);
  EXPECT_EQ(reader.vol().logical_length, 700);
}

// ---- record lengths ----

TEST(ParseBlk, DefaultLengthBeyondAShortImageTakesItAsOneRecord) {
  Reader reader(blank_records(3, 512));
  EXPECT_EQ(reader.next(), kEnd);
  EXPECT_EQ(reader.vol().logical_length, 1536);
  EXPECT_EQ(reader.vol().logical_sequence, 1);
}

TEST(ParseBlk, RecordsOf512AreFoundFromTheDefaultOf4096) {
  std::string bytes = blank_records(10, 512);
  bytes.replace(512 + 8, 7, "0110007");
  Reader reader(bytes);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().logical_length, 512);
  EXPECT_EQ(reader.blk().logical_sequence, 2);
  EXPECT_EQ(reader.blk().record_offset, 512);
}

TEST(ParseBlk, EachPowerOfTwoIsFound) {
  for (std::size_t length = 64; length <= 131072; length *= 2) {
    // After the second header the image goes on, so that no shorter candidate reaches its end.
    std::string bytes = padded("000001V 0110007", length) + padded("000002V ", 131072);
    Reader reader(bytes, 100);
    ASSERT_EQ(reader.next(), 7) << length;
    EXPECT_EQ(reader.vol().logical_length, static_cast<std::int32_t>(length));
  }
}

TEST(ParseBlk, LengthInForceNeedBeNoPowerOfTwo) {
  Reader reader(padded("000001V 0110007", 100) + padded("000002V 0110007", 1000), 100);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().logical_length, 100);
}

TEST(ParseBlk, LengthInForceIsTriedBeforeShorterOnes) {
  std::string bytes = padded("000001V 0110007", 1024) + padded("000002V ", 1024);
  bytes.replace(64, 8, "000002V ");
  Reader reader(bytes, 1024);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.vol().logical_length, 1024);
}

TEST(ParseBlk, ShortestLengthIsTakenWhenTheOneInForceFails) {
  std::string bytes = padded("000001V 0110007", 1024) + padded("000002V ", 1024);
  bytes.replace(128, 8, "000002V ");
  Reader reader(bytes, 512);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.vol().logical_length, 128);
}

TEST(ParseBlk, NoNextHeaderAtAnyPowerOfTwoFails) {
  LogCapture log;
  Reader reader(padded("000001V 0110007", 131073));
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(), "sdblk_parseblk: Cannot find next logical record.\n");
  EXPECT_FALSE(reader.has_block());
}

TEST(ParseBlk, ImageOf131072BytesWithoutANextHeaderIsOneRecord) {
  LogCapture log;
  Reader reader(padded("000001V 0110007", 131072));
  EXPECT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.vol().logical_length, 131072);
  EXPECT_EQ(log.registered(), "");
}

// The length of the first record when `next` stands 512 bytes into an image of 600.
std::int32_t length_before(std::string_view first, std::string_view next) {
  std::string bytes = padded(std::string(first) + "0110007", 600);
  bytes.replace(512, next.size(), next);
  Reader reader(bytes, 512);
  reader.next();
  return reader.vol().logical_length;
}

TEST(ParseBlk, NextHeaderOfEachTypeIsKnown) {
  for (const char *next : {"000002D ", "000002R ", "000002Q ", "000002M ", "000002V ", "000002A*",
                           "000002SX", "000002T\0"}) {
    EXPECT_EQ(length_before("000001V ", {next, 8}), 512) << next;
  }
}

TEST(ParseBlk, OtherTextIsNoNextHeader) {
  for (const char *next : {"000002D*", "000002RX", "000002X ", "000002  ", "000002v ", "000003V ",
                           "000001V ", " 00002V ", "     2V "}) {
    EXPECT_EQ(length_before("000001V ", next), 600) << next;
  }
}

TEST(ParseBlk, SequenceAfter999999IsTakenFor100000) {
  EXPECT_EQ(length_before("999999V ", "100000V "), 512);
  EXPECT_EQ(length_before("999999V ", "000000V "), 600);
}

TEST(ParseBlk, SequenceMayHaveBlanksButTheNextHasZeros) {
  EXPECT_EQ(length_before("    41V ", "000042V "), 512);
}

TEST(ParseBlk, BlankSequenceCountsAsZero) { EXPECT_EQ(length_before("      V ", "000001V "), 512); }

TEST(ParseBlk, NegativeSequenceIsComparedByItsFirstSixCharacters) {
  // -2 + 1 is "-000001" in six digits.
  EXPECT_EQ(length_before("-00002V ", "-00000V "), 512);
}

// The length of the first record when an image of 512 bytes and `next` ends after that.
std::int32_t length_before_cut(std::string_view next) {
  Reader reader(padded("000001V 0110007", 512) + std::string(next), 512);
  reader.next();
  return reader.vol().logical_length;
}

TEST(ParseBlk, ControlHeaderCutByTheEndNeedsSevenBytes) {
  EXPECT_EQ(length_before_cut("000002V"), 512);
  EXPECT_EQ(length_before_cut("000002"), 518);
}

TEST(ParseBlk, DataHeaderCutByTheEndNeedsItsEighthByte) {
  EXPECT_EQ(length_before_cut("000002D "), 512);
  EXPECT_EQ(length_before_cut("000002D"), 519);
}

TEST(ParseBlk, ReadingGoesOnAfterSequence999999) {
  VolumeWriter writer(512);
  writer.sequence(999999).control('V', ControlBlockette(11).digits(0, 3));
  writer.sequence(100000).control('A', ControlBlockette(31).digits(1, 4));
  writer.new_record().control('A', ControlBlockette(31).digits(2, 4));
  Reader reader(writer.bytes(), 512);
  ASSERT_EQ(reader.next(), 10);
  EXPECT_EQ(reader.blk().logical_sequence, 999999);
  ASSERT_EQ(reader.next(), 11);
  EXPECT_EQ(reader.blk().logical_sequence, 100000);
  ASSERT_EQ(reader.next(), 11);
  EXPECT_EQ(reader.blk().logical_sequence, 100001);
}

// ---- damaged headers ----

TEST(ParseBlk, SequenceThatIsNoNumberFails) {
  LogCapture log;
  Reader reader("ABCDEFV 0110007");
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'ABCDEF'\n"
            "sdblk_parseblk: scan_int(logical_sequence,'ABCDEF') error at 0 bytes offset\n");
}

TEST(ParseBlk, ZeroByteInASequenceShowsInTheMessage) {
  LogCapture log;
  Reader reader("A\0CDEFV 0110007"s);
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'A'\n"
            "sdblk_parseblk: scan_int(logical_sequence,'A\0CDEF') error at 0 bytes offset\n"s);
}

TEST(ParseBlk, TypeThatIsNoNumberFails) {
  LogCapture log;
  Reader reader("000007A A120007");
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'A12'\n"
            "sdblk_parseblk: scan_int(blockette_type,'A12') error at A:000007\n");
  EXPECT_FALSE(reader.has_block());
}

TEST(ParseBlk, LengthThatIsNoNumberFails) {
  LogCapture log;
  Reader reader("000007S 052LENG");
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'LENG'\n"
            "sdblk_parseblk: scan_int(blockette_length,'LENG') error for B0052 at S:000007\n");
}

TEST(ParseBlk, NegativeLengthFailsAsMemoryThatCannotBeHad) {
  LogCapture log;
  Reader reader("000007S 052-001");
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(), "sdblk_parseblk: malloc(seedbuf,-1) error for B0052 at S:000007\n");
}

// ---- control blockettes ----

TEST(ParseBlk, ControlBlocketteIsDescribedWhole) {
  Reader reader(padded("000001V 0110007", 64) + padded("000002S*0510010abc050", 64), 64);
  ASSERT_EQ(reader.next(), 7);
  ASSERT_EQ(reader.next(), 10);
  const SDBlk &blk = reader.blk();
  EXPECT_EQ(blk.logical_sequence, 2);
  EXPECT_EQ(blk.logical_length, 64);
  EXPECT_EQ(blk.record_offset, 64);
  EXPECT_EQ(blk.record_type, 'S');
  EXPECT_EQ(blk.data_ptr, nullptr);
  EXPECT_EQ(blk.block_number, 1);
  EXPECT_EQ(blk.blockette_length, 10);
  EXPECT_EQ(blk.file_offset, 72);
  EXPECT_EQ(blk.blockette_type, 51);
  EXPECT_EQ(blk.data_offset, 0);
  EXPECT_EQ(blk.big_endian, 0);
  EXPECT_EQ(std::string(blk.blockette_raw, 11), "0510010abc\0"s);
  EXPECT_EQ(blk.blkdef, seed_blkdefs_index[51]);
  EXPECT_EQ(countarr(blk.contents), 0);
  EXPECT_EQ(blk.next, nullptr);
  EXPECT_EQ(blk.vol, &reader.vol());
  EXPECT_EQ(reader.vol().current, &blk);
  EXPECT_EQ(reader.vol().continuation, '*');
  EXPECT_EQ(reader.vol().record_pos, 18);
  EXPECT_EQ(reader.vol().offset, 82);
  EXPECT_EQ(reader.vol().cursor, reader.vol().image + 82);
  EXPECT_EQ(reader.vol().nblocks, 2);
}

TEST(ParseBlk, BlockettesOfARecordFollowEachOther) {
  Reader reader("000001S 0500009ab0510008c0520007 ");
  EXPECT_EQ(reader.next(), 9);
  EXPECT_EQ(reader.blk().file_offset, 8);
  EXPECT_EQ(reader.next(), 8);
  EXPECT_EQ(reader.blk().file_offset, 17);
  EXPECT_STREQ(reader.blk().blockette_raw, "0510008c");
  EXPECT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().block_number, 2);
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, BlockettesShareOneBlock) {
  Reader reader("000001S 0500009ab0510008c");
  ASSERT_EQ(reader.next(), 9);
  const SDBlk *first = &reader.blk();
  ASSERT_EQ(reader.next(), 8);
  EXPECT_EQ(&reader.blk(), first);
}

TEST(ParseBlk, UnknownTypesHaveNoDefinition) {
  Reader reader("000001S 9990007-120007 ");
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, 999);
  EXPECT_EQ(reader.blk().blkdef, nullptr);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, -12);
  EXPECT_EQ(reader.blk().blkdef, nullptr);
}

TEST(ParseBlk, ControlBlocketteMayCallItselfADataRecord) {
  Reader reader("000001S 0990007");
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, 99);
  EXPECT_EQ(reader.blk().data_ptr, nullptr);
  EXPECT_STREQ(reader.blk().blockette_raw, "0990007");
}

TEST(ParseBlk, UnknownRecordTypeIsReadAsControl) {
  Reader reader("000001?!0110007");
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().record_type, '?');
  EXPECT_EQ(reader.vol().continuation, '!');
}

TEST(ParseBlk, LengthZeroLeavesTheCursorWhereItStands) {
  Reader reader("000001S 0110000 ");
  for (int call = 0; call < 3; ++call) {
    ASSERT_EQ(reader.next(), 0);
    EXPECT_EQ(reader.blk().blockette_length, 0);
    EXPECT_STREQ(reader.blk().blockette_raw, "");
    EXPECT_EQ(reader.blk().block_number, call);
    EXPECT_EQ(reader.vol().offset, 8);
    EXPECT_EQ(reader.vol().record_pos, 8);
  }
}

TEST(ParseBlk, LengthBelowThePrefixIsTakenAsItStands) {
  Reader reader("000001S 0110003    ");
  ASSERT_EQ(reader.next(), 3);
  EXPECT_STREQ(reader.blk().blockette_raw, "011");
  // The next blockette begins with the length of this one.
  ASSERT_EQ(reader.next(), 3);
  EXPECT_EQ(reader.blk().blockette_type, 0);
  EXPECT_EQ(reader.blk().file_offset, 11);
  EXPECT_STREQ(reader.blk().blockette_raw, "000");
}

TEST(ParseBlk, BlankLengthIsZero) {
  Reader reader("000001S 011    ");
  EXPECT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().blockette_type, 11);
}

// ---- blockettes in several records ----

TEST(ParseBlk, BlocketteOf20With12BytesLeftIsPutTogether) {
  const std::string record = padded("000001S 0110044", 52) + "0520020ABCDE";
  Reader reader(record + padded("000002S*FGHIJKLM0530007", 64), 64);
  ASSERT_EQ(record.size(), 64U);
  ASSERT_EQ(reader.next(), 44);
  ASSERT_EQ(reader.next(), 20);
  EXPECT_EQ(std::string(reader.blk().blockette_raw, 21), "0520020ABCDEFGHIJKLM\0"s);
  EXPECT_EQ(reader.blk().logical_sequence, 1);
  EXPECT_EQ(reader.blk().record_offset, 0);
  EXPECT_EQ(reader.blk().file_offset, 52);
  EXPECT_EQ(reader.vol().logical_sequence, 2);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().file_offset, 80);
  EXPECT_EQ(reader.blk().block_number, 2);
}

TEST(ParseBlk, BlocketteRunsThroughManyRecords) {
  std::string fields;
  for (int i = 0; i < 993; ++i) fields += static_cast<char>('a' + i % 26);
  VolumeWriter writer(64);
  writer.control('S', ControlBlockette(58).raw(fields)).control('S', ControlBlockette(52).raw("x"));
  Reader reader(writer.bytes(), 64);
  ASSERT_EQ(reader.next(), 1000);
  EXPECT_EQ(reader.blk().blockette_raw, "0581000" + fields);
  ASSERT_EQ(reader.next(), 8);
  EXPECT_EQ(reader.blk().block_number, 1);
}

TEST(ParseBlk, LongestBlocketteIsPutTogether) {
  const std::string fields(9992, 'x');
  VolumeWriter writer(256);
  writer.control('S', ControlBlockette(58).raw(fields));
  Reader reader(writer.bytes(), 256);
  ASSERT_EQ(reader.next(), 9999);
  EXPECT_EQ(reader.blk().blockette_raw, "0589999" + fields);
}

TEST(ParseBlk, TypeOfTheRecordThatGoesOnIsNotLookedAt) {
  const std::string record = padded("000001S 0110044", 52) + "0520020ABCDE";
  Reader reader(record + padded("000002V FGHIJKLM", 64), 64);
  ASSERT_EQ(reader.next(), 44);
  ASSERT_EQ(reader.next(), 20);
  EXPECT_EQ(reader.blk().record_type, 'S');
  EXPECT_STREQ(reader.blk().blockette_raw, "0520020ABCDEFGHIJKLM");
}

TEST(ParseBlk, BlocketteThatEndsWithItsRecordNeedsNoNext) {
  Reader reader(padded("000001S 0110056", 64) + padded("000002S 0520007", 64), 64);
  ASSERT_EQ(reader.next(), 56);
  EXPECT_EQ(reader.vol().logical_sequence, 1);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().logical_sequence, 2);
}

TEST(ParseBlk, PrefixMayRunOverTheEndOfItsRecord) {
  // Four bytes are left of the record; the length is read over the next header, as it stands there:
  // "0" and "000".
  const std::string record = padded("000001S 0110052", 60) + "0520";
  Reader reader(record + padded("000002S ", 64), 64);
  ASSERT_EQ(reader.next(), 52);
  EXPECT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().blockette_type, 52);
  EXPECT_EQ(reader.blk().file_offset, 60);
}

TEST(ParseBlk, BlocketteCutByTheEndEndsTheVolume) {
  LogCapture log;
  Reader reader("000001V 0110007" + "0520010ab"s);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.next(), kEnd);
  EXPECT_EQ(log.registered(), "sdblk_parseblk: Incomplete B0052 at V:000001\n");
  EXPECT_EQ(reader.vol().nblocks, 2);
}

TEST(ParseBlk, BlocketteThatOnlyHeadersPushOverTheEndIsIncompleteToo) {
  LogCapture log;
  // 10 of 20 bytes in the first record; then a header and only 9 bytes.
  const std::string record = padded("000001S 0110046", 54) + "0520020ABC";
  Reader reader(record + "000002T*123456789", 64);
  ASSERT_EQ(reader.next(), 46);
  EXPECT_EQ(reader.next(), kEnd);
  EXPECT_EQ(log.registered(), "sdblk_parseblk: Incomplete B0052 at T:000002\n");
}

TEST(ParseBlk, DataRecordDropsAnUnfinishedBlockette) {
  LogCapture log;
  const std::string record = padded("000001S 0110044", 52) + "0520090ABCDE";
  Reader reader(record + data_record().bytes(128, 2) + padded("000003S 0530007", 64), 64);
  ASSERT_EQ(reader.next(), 44);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().blockette_type, 99);
  EXPECT_EQ(reader.blk().block_number, 2);
  EXPECT_EQ(reader.blk().logical_sequence, 2);
  EXPECT_EQ(reader.blk().data_ptr, reader.vol().image + 64);
  EXPECT_EQ(reader.blk().blockette_raw, nullptr);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_STREQ(reader.blk().blockette_raw, "0530007");
  EXPECT_EQ(log.registered(), "");
}

// ---- padding ----

TEST(ParseBlk, PaddingOfAnySizeIsSkipped) {
  for (std::size_t left = 0; left <= 10; ++left) {
    const std::string filler(64 - 8 - 7 - left, 'x');
    VolumeWriter writer(64);
    writer.control('S', ControlBlockette(51).raw(filler)).new_record();
    writer.control('S', ControlBlockette(52));
    Reader reader(writer.bytes(), 64);
    ASSERT_EQ(reader.next(), static_cast<int>(64 - 8 - left));
    ASSERT_EQ(reader.next(), 7) << left;
    EXPECT_EQ(reader.blk().file_offset, 72) << left;
  }
}

TEST(ParseBlk, LastTwoBytesOfARecordArePaddingWhateverTheyHold) {
  Reader reader(padded("000001S 0110054", 62) + "05" + padded("000002S 0520007", 64), 64);
  ASSERT_EQ(reader.next(), 54);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, 52);
}

TEST(ParseBlk, ThreeBytesLeftThatAreNotBlankStartABlockette) {
  // The length is read over the next header, as it stands there: "0000".
  const std::string record = padded("000001S 0110053", 61) + "052";
  Reader reader(record + padded("000002S ", 64), 64);
  ASSERT_EQ(reader.next(), 53);
  EXPECT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().blockette_type, 52);
  EXPECT_EQ(reader.blk().file_offset, 61);
}

TEST(ParseBlk, TwoBlanksBeforeADigitAreAType) {
  Reader reader("000001V   60007");
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, 6);
}

TEST(ParseBlk, WhatStandsAfterThreeBlanksIsSkipped) {
  Reader reader(padded("000001S    0510007", 64) + padded("000002S 0520007", 64), 64);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, 52);
}

TEST(ParseBlk, RecordsOfBlanksAreSkipped) {
  Reader reader(blank_records(20, 64) + "000021V 0110007", 64);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().logical_sequence, 21);
  EXPECT_EQ(reader.blk().block_number, 0);
}

// ---- volume identifiers ----

TEST(ParseBlk, ExponentOfAVolumeIdentifierIsTheLengthInForce) {
  VolumeWriter writer(2048);
  writer.control('V', volume_identifier(12)).control('V', ControlBlockette(11).digits(0, 3));
  Reader reader(writer.bytes(), 256);
  ASSERT_EQ(reader.next(), 18);
  EXPECT_EQ(reader.vol().logical_length, 4096);
  // The block was cut before that.
  EXPECT_EQ(reader.blk().logical_length, 2048);
  EXPECT_EQ(reader.blk().blkdef, seed_blkdefs_index[10]);
}

TEST(ParseBlk, EachVolumeIdentifierComesDecoded) {
  const std::array<ControlBlockette, 3> identifiers = {
      ControlBlockette(5).fixed("02.3", 4).digits(11, 2).var(""),
      ControlBlockette(8).fixed("02.3", 4).digits(11, 2),
      ControlBlockette(10).fixed("02.3", 4).digits(11, 2),
  };
  for (const ControlBlockette &identifier : identifiers) {
    Reader reader("000001V " + identifier.text());
    ASSERT_GT(reader.next(), 0);
    std::int32_t exponent = 0;
    EXPECT_EQ(sdblk_getv(reader.blk().contents, "llenp", &exponent, nullptr), 0);
    EXPECT_EQ(exponent, 11);
    EXPECT_EQ(reader.vol().logical_length, 2048);
  }
}

TEST(ParseBlk, NewLengthHoldsForTheRestOfTheRecord) {
  // Measured from the length in force the record would have 1024 bytes.
  std::string bytes =
      padded("000001V " + volume_identifier(9).text(), 1024) + padded("000002V 0110007", 1024);
  bytes.replace(512, 15, "000002V 0120007");
  bytes.replace(600, 7, "xxxxxxx");
  Reader reader(bytes, 1024);
  ASSERT_EQ(reader.next(), 18);
  EXPECT_EQ(reader.blk().logical_length, 1024);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().blockette_type, 12);
  EXPECT_EQ(reader.blk().record_offset, 512);
}

TEST(ParseBlk, SmallExponentMovesTheCursorBack) {
  LogCapture log;
  // The length 32 ends the record inside the blockette, which has 40 bytes.
  Reader reader("000001V 0100040 2.30500000000000ABCDEFGHIJ~~~~~~        ");
  ASSERT_EQ(reader.next(), 40);
  EXPECT_EQ(reader.vol().logical_length, 32);
  EXPECT_EQ(reader.vol().offset, 48);
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'ABCDEF'\n"
            "sdblk_parseblk: scan_int(logical_sequence,'ABCDEF') error at 32 bytes offset\n");
}

TEST(ParseBlk, ExponentWithoutAPositiveLengthFails) {
  LogCapture log;
  for (const int exponent : {31, 63, 95}) {
    Reader reader("000001V " + volume_identifier(exponent).text());
    EXPECT_EQ(reader.next(), -1);
    EXPECT_EQ(log.registered(), "sdblk_parseblk: logical record length 2^" +
                                    std::to_string(exponent) +
                                    " is out of range for B0010 at V:000001\n");
  }
}

TEST(ParseBlk, ExponentIsTakenModulo32) {
  Reader reader("000001V " + volume_identifier(41).text());
  ASSERT_EQ(reader.next(), 18);
  EXPECT_EQ(reader.vol().logical_length, 512);
}

TEST(ParseBlk, LengthBeyondTheImageLeavesTheCursorAtItsEnd) {
  Reader reader("000001V " + volume_identifier(30).text() + "          ");
  ASSERT_EQ(reader.next(), 18);
  EXPECT_EQ(reader.vol().logical_length, 1 << 30);
  EXPECT_EQ(reader.next(), kEnd);
  EXPECT_EQ(reader.vol().offset, reader.vol().image_size);
  EXPECT_EQ(reader.vol().cursor, reader.vol().image + reader.vol().image_size);
}

TEST(ParseBlk, VolumeIdentifierWithoutExponentFails) {
  LogCapture log;
  Reader reader("000001V 010001102.3");
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'llenp' not defined.\n"
            "sdblk_parseblk: sdblk_getv(llenp) error for B0010 at V:000001\n");
}

TEST(ParseBlk, VolumeIdentifierOfLengthZeroFails) {
  LogCapture log;
  Reader reader("000001V 0080000");
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'llenp' not defined.\n"
            "sdblk_parseblk: sdblk_getv(llenp) error for B0008 at V:000001\n");
}

TEST(ParseBlk, LettersInTheExponentEndTheProgram) {
  LogCapture log;
  const FatalHook hook;
  Reader reader("000001V 010001302.3XX");
  EXPECT_THROW(reader.next(), Fatal);
  EXPECT_EQ(log.text(),
            "SEEDERROR - Non-digit characters in integer field B0010:llenp = 'XX' - program "
            "exiting.\n");
}

// ---- data records ----

TEST(ParseBlk, DataRecordIsDescribedWhole) {
  VolumeWriter writer(512);
  writer.control('S', ControlBlockette(52)).data(data_record()).data(data_record());
  Reader reader(writer.bytes(), 512);
  ASSERT_EQ(reader.next(), 7);
  ASSERT_EQ(reader.next(), 0);
  const SDBlk &blk = reader.blk();
  EXPECT_EQ(blk.logical_sequence, 2);
  EXPECT_EQ(blk.logical_length, 512);
  EXPECT_EQ(blk.record_offset, 512);
  EXPECT_EQ(blk.record_type, 'D');
  EXPECT_EQ(blk.data_ptr, reader.vol().image + 512);
  EXPECT_EQ(blk.block_number, 1);
  EXPECT_EQ(blk.blockette_length, 0);
  EXPECT_EQ(blk.file_offset, 512);
  EXPECT_EQ(blk.blockette_type, 99);
  EXPECT_EQ(blk.data_offset, 0);
  EXPECT_EQ(blk.big_endian, 0);
  EXPECT_EQ(blk.blockette_raw, nullptr);
  EXPECT_EQ(blk.blkdef, seed_blkdefs_index[99]);
  EXPECT_EQ(countarr(blk.contents), 0);
  EXPECT_EQ(blk.next, nullptr);
  EXPECT_EQ(blk.vol, &reader.vol());
  EXPECT_EQ(reader.vol().record_pos, 64);
  EXPECT_EQ(reader.vol().offset, 576);
}

TEST(ParseBlk, DataRecordLeavesTheCurrentControlBlockAlone) {
  VolumeWriter writer(512);
  writer.data(data_record());
  Reader data_only(writer.bytes(), 512);
  ASSERT_EQ(data_only.next(), 0);
  EXPECT_EQ(data_only.vol().current, nullptr);
}

TEST(ParseBlk, DataRecordsOfEachQualityComeOneByOne) {
  VolumeWriter writer(512);
  for (const char quality : {'D', 'R', 'Q', 'M'}) writer.data(data_record(quality));
  Reader reader(writer.bytes(), 512);
  std::int64_t offset = 0;
  for (const char quality : {'D', 'R', 'Q', 'M'}) {
    ASSERT_EQ(reader.next(), 0);
    EXPECT_EQ(reader.blk().record_type, quality);
    EXPECT_EQ(reader.blk().file_offset, offset);
    offset += 512;
  }
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, DataRecordsOfChangingLengthAreMeasured) {
  VolumeWriter writer(512);
  writer.data(data_record(), 128).data(data_record(), 256).data(data_record(), 4096);
  Reader reader(writer.bytes());
  std::int64_t offset = 0;
  for (const std::int32_t length : {128, 256, 4096}) {
    ASSERT_EQ(reader.next(), 0);
    EXPECT_EQ(reader.blk().file_offset, offset);
    EXPECT_EQ(reader.blk().logical_length, length);
    offset += length;
  }
}

TEST(ParseBlk, ControlRecordsMayFollowDataRecords) {
  VolumeWriter writer(512);
  writer.data(data_record()).control('T', ControlBlockette(74)).data(data_record('Q'));
  Reader reader(writer.bytes(), 512);
  EXPECT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().data_ptr, nullptr);
  EXPECT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().blockette_raw, nullptr);
  EXPECT_EQ(reader.blk().record_type, 'Q');
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, HeaderThatStandsAgainInsideARecordIsABlockOfItsOwn) {
  std::string record = data_record().bytes(512, 1);
  record.replace(192, 8, "000001D ");
  Reader reader(record + data_record().bytes(512, 2), 512);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().file_offset, 0);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().file_offset, 192);
  EXPECT_EQ(reader.blk().record_offset, 0);
  EXPECT_EQ(reader.blk().data_ptr, reader.vol().image + 192);
  EXPECT_EQ(reader.blk().block_number, 1);
  EXPECT_EQ(reader.vol().record_pos, 256);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().file_offset, 512);
}

TEST(ParseBlk, HeaderOffTheStepsOf64IsNotFound) {
  std::string record = data_record().bytes(512, 1);
  record.replace(200, 8, "000001D ");
  Reader reader(record, 512);
  EXPECT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, HeaderInTheLastStepOfARecordIsFound) {
  std::string record = data_record().bytes(512, 1);
  record.replace(448, 8, "000001D ");
  Reader reader(record + data_record().bytes(512, 2), 512);
  EXPECT_EQ(reader.next(), 0);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().file_offset, 448);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().file_offset, 512);
}

TEST(ParseBlk, DataRecordOf64BytesIsOneStep) {
  VolumeWriter writer(64);
  writer.data(data_record()).data(data_record()).data(data_record());
  Reader reader(writer.bytes(), 64);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(reader.next(), 0);
    EXPECT_EQ(reader.blk().file_offset, i * 64);
    EXPECT_EQ(reader.blk().logical_length, 64);
  }
  EXPECT_EQ(reader.next(), kEnd);
}

TEST(ParseBlk, LastDataRecordMayBeCutAnywhereAfterItsHeader) {
  const std::string record = data_record().bytes(128, 1);
  for (std::size_t size = 8; size <= 128; ++size) {
    Reader reader(record.substr(0, size), 128);
    ASSERT_EQ(reader.next(), 0) << size;
    EXPECT_EQ(reader.blk().logical_length, static_cast<std::int32_t>(size));
    EXPECT_EQ(reader.next(), kEnd) << size;
    EXPECT_EQ(reader.blk().block_number, 0) << size;
  }
}

TEST(ParseBlk, ReusedBlockStartsWithByteOrderZero) {
  VolumeWriter writer(512);
  writer.data(data_record()).data(data_record()).control('T', ControlBlockette(74));
  Reader reader(writer.bytes(), 512);
  ASSERT_EQ(reader.next(), 0);
  ASSERT_EQ(sdblk_unstuffblk(&reader.blk()), 0);
  ASSERT_NE(reader.blk().big_endian, 0);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().big_endian, 0);
  ASSERT_EQ(sdblk_unstuffblk(&reader.blk()), 0);
  ASSERT_EQ(reader.next(), 7);
  EXPECT_EQ(reader.blk().big_endian, 0);
}

TEST(ParseBlk, ReusedBlockStartsEmpty) {
  VolumeWriter writer(512);
  writer.data(data_record()).data(data_record());
  Reader reader(writer.bytes(), 512);
  ASSERT_EQ(reader.next(), 0);
  ASSERT_EQ(sdblk_unstuffblk(&reader.blk()), 0);
  ASSERT_NE(reader.blk().next, nullptr);
  ASSERT_EQ(reader.blk().blockette_length, 512);
  ASSERT_EQ(reader.next(), 0);
  EXPECT_EQ(reader.blk().next, nullptr);
  EXPECT_EQ(reader.blk().blockette_length, 0);
  EXPECT_EQ(countarr(reader.blk().contents), 0);
}

// ---- memory ----

TEST(ParseBlk, StreamOfDataRecordsAllocatesNothing) {
  VolumeWriter writer(256);
  for (int i = 0; i < 500; ++i) writer.data(data_record().b1001(100, 0, 1).b100(20.0F));
  Reader reader(writer.bytes(), 256);
  // The first record makes the block and its chain.
  ASSERT_EQ(reader.next(), 0);
  ASSERT_EQ(sdblk_unstuffblk(&reader.blk()), 0);
  const FailingMemory memory(0);
  int blocks = 1;
  while (reader.next() == 0 && sdblk_unstuffblk(&reader.blk()) == 0) ++blocks;
  EXPECT_EQ(blocks, 500);
  EXPECT_EQ(FailingMemory::count(), 0);
}

TEST(ParseBlk, StreamOfControlBlockettesAllocatesNothing) {
  VolumeWriter writer(4096);
  for (int i = 0; i < 500; ++i) {
    writer.control('S',
                   ControlBlockette(51).var("2021,001").var("2021,002").digits(1, 4).digits(0, 6));
  }
  Reader reader(writer.bytes());
  ASSERT_GT(reader.next(), 0);
  ASSERT_EQ(sdblk_unstuffblk(&reader.blk()), 0);
  const FailingMemory memory(0);
  int blocks = 1;
  while (reader.next() != kEnd && sdblk_unstuffblk(&reader.blk()) == 0) ++blocks;
  EXPECT_EQ(blocks, 500);
  EXPECT_EQ(FailingMemory::count(), 0);
}

TEST(ParseBlk, BlockThatCannotBeMadeFails) {
  LogCapture log;
  const std::string size = std::to_string(sizeof(SDBlk));
  for (long n = 1; n <= 2; ++n) {
    Reader control("000003S 0520007");
    Reader data(data_record().bytes(128, 3));
    {
      const FailingMemory memory(n);
      EXPECT_EQ(control.next(), -1) << n;
      EXPECT_EQ(log.registered(), "sdblk_parseblk: malloc(blockette," + size +
                                      ") error for B0052 at S:000003\n"
                                      "    Cannot allocate memory\n");
    }
    const FailingMemory memory(n);
    EXPECT_EQ(data.next(), -1) << n;
    EXPECT_EQ(log.registered(), "sdblk_parseblk: malloc(blockette," + size +
                                    ") error for BDATA at D:000003\n"
                                    "    Cannot allocate memory\n");
  }
}

TEST(ParseBlk, RawBytesThatCannotBeHadFail) {
  LogCapture log;
  Reader reader("000003S 0520007" + "0530020"s + std::string(13, 'x'));
  ASSERT_EQ(reader.next(), 7);
  const FailingMemory memory(1);
  EXPECT_EQ(reader.next(), -1);
  EXPECT_EQ(log.registered(),
            "sdblk_parseblk: malloc(seedbuf,20) error for B0053 at S:000003\n"
            "    Cannot allocate memory\n");
}

TEST(ParseBlk, VolumeIdentifierThatCannotBeDecodedFails) {
  LogCapture log;
  Arena::one_piece_per_chunk = true;
  Reader reader("000001V 0110013xxxxxx" + volume_identifier(12).text());
  ASSERT_EQ(reader.next(), 13);
  {
    // The second allocation: the raw bytes come first.
    const FailingMemory memory(2, true);
    EXPECT_EQ(reader.next(), -1);
  }
  Arena::one_piece_per_chunk = false;
  const std::string text = log.registered();
  EXPECT_EQ(text.find("sdblk_unstuff_sblk: malloc(entry=version,"), 0U) << text;
  EXPECT_TRUE(text.ends_with("sdblk_parseblk: sdblk_unstuff_blk error for B0010 at V:000001\n"))
      << text;
}

// ---- large volumes ----

TEST(ParseBlk, PagesThatWereGivenBackComeBackWhenTheyAreLookedAt) {
  std::string path = testing::TempDir() + "record_test.XXXXXX";
  close(mkstemp(path.data()));
  constexpr int kRecords = 12000;
  {
    std::ofstream file(path, std::ios::binary);
    for (int i = 1; i <= kRecords; ++i) {
      const std::string digits = std::to_string(i);
      std::string record = std::string(6 - digits.size(), '0') + digits + "S 0510014";
      file << padded(record + std::string(7 - digits.size(), '.') + digits, 1024);
    }
  }
  SDBlkVol *vol = sdblk_new(path.c_str(), nullptr, 0, 1024);
  std::filesystem::remove(path);
  ASSERT_NE(vol, nullptr);
  SDBlk *blk = nullptr;
  int blocks = 0;
  while (sdblk_parseblk(vol, &blk) == 14) ++blocks;
  EXPECT_EQ(blocks, kRecords);
  EXPECT_STREQ(blk->blockette_raw, "0510014..12000");
  EXPECT_GT(vol->given_back, 0);
  for (const std::int64_t i : {0, 1, 4095, 8000}) {
    const std::string number = std::to_string(i + 1);
    const char *record = vol->image + i * 1024;
    EXPECT_EQ(std::string(record, 6), std::string(6 - number.size(), '0') + number);
    EXPECT_EQ(std::string(record + 15, 7), std::string(7 - number.size(), '.') + number);
  }
  sdblk_free(blk);
  sdblk_closevol(vol);
}

// Six records of 2^30 bytes each: five are holes, but for their headers and three blanks of
// padding, the last is given and ends the image.
class LargeVolume : public testing::Test {
 protected:
  static constexpr std::int64_t kRecord = std::int64_t{1} << 30;

  void open_with(const std::string &last) {
    std::string path = testing::TempDir() + "record_test.XXXXXX";
    close(mkstemp(path.data()));
    std::ofstream file(path, std::ios::binary);
    for (int i = 0; i < 5; ++i) {
      file.seekp(i * kRecord);
      file << "00000" << i + 1 << "V    ";
    }
    file.seekp(5 * kRecord);
    file << last << std::flush;
    vol_ = sdblk_new(path.c_str(), nullptr, 0, 1 << 30);
    std::filesystem::remove(path);
    ASSERT_NE(vol_, nullptr);
  }
  ~LargeVolume() override {
    sdblk_free(blk_);
    sdblk_closevol(vol_);
  }

  SDBlkVol *vol_ = nullptr;
  SDBlk *blk_ = nullptr;
};

TEST_F(LargeVolume, ControlBlocketteBeyondFourGibibytesHasExactOffsets) {
  open_with(padded("000006S 0110007", 512));
  EXPECT_EQ(vol_->image_size, 5 * kRecord + 512);
  ASSERT_EQ(sdblk_parseblk(vol_, &blk_), 7);
  EXPECT_EQ(blk_->record_offset, 5 * kRecord);
  EXPECT_EQ(blk_->file_offset, 5 * kRecord + 8);
  EXPECT_EQ(blk_->logical_length, 512);
  EXPECT_EQ(vol_->offset, 5 * kRecord + 15);
  EXPECT_EQ(vol_->cursor - vol_->image, 5 * kRecord + 15);
  EXPECT_EQ(sdblk_parseblk(vol_, &blk_), kEnd);
}

TEST_F(LargeVolume, DataRecordBeyondFourGibibytesIsWhereItsPointerSays) {
  open_with(data_record().bytes(512, 6));
  ASSERT_EQ(sdblk_parseblk(vol_, &blk_), 0);
  EXPECT_EQ(blk_->file_offset, 5 * kRecord);
  EXPECT_EQ(blk_->data_ptr - vol_->image, 5 * kRecord);
  EXPECT_EQ(std::string(blk_->data_ptr, 8), "000006D ");
  ASSERT_EQ(sdblk_unstuffblk(blk_), 0);
  ASSERT_NE(blk_->next, nullptr);
  // The volume stands 64 bytes into the record, the blockette 48 bytes.
  EXPECT_EQ(blk_->next->file_offset, 5 * kRecord + 64 + 48);
  EXPECT_EQ(sdblk_parseblk(vol_, &blk_), kEnd);
}

}  // namespace
