#include "tests/util/volume_writer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace volume {
namespace {

using namespace std::string_literals;

// A record as its header shows it.
struct Frame {
  std::string header;
  std::string body;
};

// Cuts a volume into records of one length, without a look at what they hold.
std::vector<Frame> frames_of(const std::string &bytes, std::size_t length) {
  std::vector<Frame> frames;
  for (std::size_t at = 0; at < bytes.size(); at += length) {
    frames.push_back({bytes.substr(at, 8), bytes.substr(at + 8, length - 8)});
  }
  return frames;
}

// Joins the bodies of control records and cuts them into blockettes again, by their own lengths.  A
// record with fewer than seven bytes left, or with blanks where a blockette would start, is done.
std::vector<std::string> blockettes_of(const std::vector<Frame> &frames) {
  std::vector<std::string> blockettes;
  std::size_t missing = 0;
  for (const Frame &frame : frames) {
    EXPECT_EQ(frame.header[7], missing > 0 ? '*' : ' ');
    std::string_view rest = frame.body;
    while (!rest.empty()) {
      if (missing == 0) {
        if (rest.size() < 7 || rest.substr(0, 3) == "   ") break;
        missing = std::stoul(std::string(rest.substr(3, 4)));
        blockettes.emplace_back();
      }
      const std::string_view piece = rest.substr(0, missing);
      blockettes.back() += piece;
      missing -= piece.size();
      rest.remove_prefix(piece.size());
    }
  }
  EXPECT_EQ(missing, 0U);
  return blockettes;
}

TEST(SeedTime, HasLeadingZerosAndFourDecimals) {
  EXPECT_EQ(seed_time(1999, 7, 3, 4, 5, 60), "1999,007,03:04:05.0060");
}

TEST(ControlBlockette, TextStartsWithTypeAndLengthOfTheWhole) {
  // 7 + 3 + 11 = 21 bytes.
  EXPECT_EQ(ControlBlockette(33).digits(12, 3).var("Geophone 2").text(), "0330021012Geophone 2~");
}

TEST(ControlBlockette, TextWithLengthKeepsTheBody) {
  EXPECT_EQ(ControlBlockette(5).fixed("AB", 4).text_with_length(0), "0050000AB  ");
}

TEST(ControlBlockette, RealsFollowTheirPicture) {
  EXPECT_EQ(ControlBlockette(48).real(1.23456).raw("|").real(-0.00625).text(),
            "0480032 1.23456E+00|-6.25000E-03");
  EXPECT_EQ(ControlBlockette(57).real(20, kReal10).text(), "05700172.0000E+01");
  EXPECT_EQ(ControlBlockette(61).real(-0.5, kReal14).text(), "0610021-5.0000000E-01");
}

TEST(ControlBlockette, CoordinatesFollowTheirPicture) {
  EXPECT_EQ(ControlBlockette(50).coordinate(8.5, kLatitude).text(), "0500017+08.500000");
  EXPECT_EQ(ControlBlockette(50).coordinate(-16.9124, kLongitude).text(), "0500018-016.912400");
  EXPECT_EQ(ControlBlockette(52).coordinate(2.5, kLocalDepth).text(), "0520012002.5");
}

TEST(ControlBlockette, FieldThatDoesNotFitThrows) {
  EXPECT_THROW(ControlBlockette(50).fixed("ABCDEF", 5), std::length_error);
  EXPECT_THROW(ControlBlockette(50).digits(1000, 3), std::length_error);
  EXPECT_THROW(ControlBlockette(57).real(-1, kReal10), std::length_error);
  EXPECT_THROW(ControlBlockette(50).coordinate(100, kLatitude), std::length_error);
}

TEST(VolumeWriter, ShortRecordIsPaddedWithBlanks) {
  VolumeWriter volume(24);
  volume.control('V', ControlBlockette(33).var("ab"));
  EXPECT_EQ(volume.bytes(), "000001V 0330010ab~      ");
}

TEST(VolumeWriter, BlocketteRunsOnAfterTheNextHeader) {
  VolumeWriter volume(20);
  volume.control('A', ControlBlockette(33).raw("0123456789ABCDEFG"));
  EXPECT_EQ(volume.bytes(), "000001A 033002401234000002A*56789ABCDEFG");
}

TEST(VolumeWriter, BlocketteThatEndsWithTheRecordLeavesNoContinuation) {
  VolumeWriter volume(18);
  volume.control('A', {ControlBlockette(33).raw("abc"), ControlBlockette(34).raw("d")});
  EXPECT_EQ(volume.bytes(), "000001A 0330010abc000002A 0340008d  ");
}

TEST(VolumeWriter, BlockettePrefixIsNeverSplit) {
  VolumeWriter volume(24);
  volume.control('A', {ControlBlockette(33).raw("abc"), ControlBlockette(34).raw("d")});
  EXPECT_EQ(volume.bytes(), "000001A 0330010abc      000002A 0340008d        ");
}

TEST(VolumeWriter, BlockettesComeBackWholeFromEveryRecordLength) {
  std::vector<ControlBlockette> blockettes;
  for (int i = 0; i < 40; ++i) {
    blockettes.push_back(
        ControlBlockette(33).raw(std::string(static_cast<std::size_t>(i * 3), 'x')));
  }
  for (std::size_t length = 16; length <= 256; ++length) {
    VolumeWriter volume(length);
    for (const ControlBlockette &blockette : blockettes) volume.control('A', blockette);
    const std::vector<std::string> found = blockettes_of(frames_of(volume.bytes(), length));
    ASSERT_EQ(found.size(), blockettes.size()) << length;
    for (std::size_t i = 0; i < found.size(); ++i) ASSERT_EQ(found[i], blockettes[i].text());
  }
}

TEST(VolumeWriter, OtherTypeAndNewRecordStartARecord) {
  VolumeWriter volume(16);
  volume.control('V', "0100007").control('A', "0330007").new_record().control('A', "0340007");
  EXPECT_EQ(volume.bytes(), "000001V 0100007 000002A 0330007 000003A 0340007 ");
}

TEST(VolumeWriter, SequenceCountsOnFromTheNumberGiven) {
  VolumeWriter volume(16);
  volume.control('V', "0100007").sequence(500).control('A', "0330007").control('S', "0500007");
  const std::vector<Frame> frames = frames_of(volume.bytes(), 16);
  ASSERT_EQ(frames.size(), 3U);
  EXPECT_EQ(frames[1].header, "000500A ");
  EXPECT_EQ(frames[2].header, "000501S ");
  EXPECT_EQ(volume.next_sequence(), 502);
}

TEST(VolumeWriter, RecordLengthHoldsForTheRecordsThatFollow) {
  VolumeWriter volume(16);
  volume.control('V', "0100007").record_length(20).control('A', "0330007");
  EXPECT_EQ(volume.bytes(), "000001V 0100007 000002A 0330007     ");
}

TEST(VolumeWriter, RawAndDataRecordsCloseTheOpenOneAndCount) {
  VolumeWriter volume(16);
  volume.control('V', "0100007").raw_record("abc").data({.quality = 'M'}, 64);
  EXPECT_EQ(volume.bytes().substr(0, 27), "000001V 0100007 abc000003M ");
  EXPECT_EQ(volume.bytes().size(), 16U + 3U + 64U);
}

TEST(VolumeWriter, FileHoldsTheBytes) {
  VolumeWriter volume(64);
  volume.control('V', "0100007");
  const std::string path = testing::TempDir() + "volume_writer_test.seed";
  volume.write_to(path);
  std::ifstream file(path, std::ios::binary);
  const std::string read{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(read, volume.bytes());
  std::remove(path.c_str());
}

TEST(VolumeWriter, FileThatCannotBeWrittenThrows) {
  EXPECT_THROW(VolumeWriter(64).write_to(testing::TempDir() + "absent/folder"), std::runtime_error);
}

DataRecord example(ByteOrder order) {
  return {.quality = 'R',
          .sta = "DYNGA",
          .loc = "00",
          .chan = "BHZ",
          .net = "XX",
          .time = {.year = 2021, .day = 75, .hour = 6, .minute = 16, .second = 2, .fraction = 500},
          .samples = 2,
          .rate_factor = 20,
          .rate_multiplier = -1,
          .activity_flags = 1,
          .clock_flags = 32,
          .quality_flags = 4,
          .time_correction = -2,
          .order = order};
}

TEST(DataRecord, FixedHeaderIsBigEndianByDefault) {
  // 2021 is 0x07E5, 500 is 0x01F4.
  EXPECT_EQ(example(ByteOrder::kBig).bytes(48, 17),
            "000017R DYNGA00BHZXX"
            "\x07\xE5\x00\x4B\x06\x10\x02\x00\x01\xF4"
            "\x00\x02\x00\x14\xFF\xFF\x01\x20\x04\x00\xFF\xFF\xFF\xFE\x00\x00\x00\x00"s);
}

TEST(DataRecord, FixedHeaderTurnsAroundInLittleEndian) {
  EXPECT_EQ(example(ByteOrder::kLittle).bytes(48, 17),
            "000017R DYNGA00BHZXX"
            "\xE5\x07\x4B\x00\x06\x10\x02\x00\xF4\x01"
            "\x02\x00\x14\x00\xFF\xFF\x01\x20\x04\x00\xFE\xFF\xFF\xFF\x00\x00\x00\x00"s);
}

TEST(DataRecord, BlockettesAreChainedAndPayloadStandsAtAMultipleOf64) {
  const std::string bytes =
      DataRecord{}.b1000(3, 1, 7).b1001(100, 25, 0).samples32({-1, 258}).bytes(128);
  EXPECT_EQ(bytes.substr(30, 2), "\x00\x02"s);          // samples
  EXPECT_EQ(bytes.substr(39, 1), "\x02");               // blockettes
  EXPECT_EQ(bytes.substr(44, 4), "\x00\x40\x00\x30"s);  // payload at 64, chain at 48
  EXPECT_EQ(bytes.substr(48, 8), "\x03\xE8\x00\x38\x03\x01\x07\x00"s);
  EXPECT_EQ(bytes.substr(56, 8), "\x03\xE9\x00\x00\x64\x19\x00\x00"s);
  EXPECT_EQ(bytes.substr(64, 8), "\xFF\xFF\xFF\xFF\x00\x00\x01\x02"s);
  EXPECT_EQ(bytes.substr(72), std::string(56, '\0'));
}

TEST(DataRecord, ForcedValuesAreWrittenAndMoveNothing) {
  DataRecord record{.forced_count = 9, .forced_data_offset = 1, .forced_first_offset = 2};
  record.blockette(1002, "abcd", 48).blockette(4096, "");
  const std::string bytes = record.bytes(64);
  EXPECT_EQ(bytes.substr(39, 1), "\x09");
  EXPECT_EQ(bytes.substr(44, 4), "\x00\x01\x00\x02"s);
  EXPECT_EQ(bytes.substr(48), "\x03\xEA\x00\x30"s + "abcd" + "\x10\x00\x00\x00\x00\x00\x00\x00"s);
}

TEST(DataRecord, WhatDoesNotFitThrows) {
  EXPECT_THROW(static_cast<void>(DataRecord{}.samples32({1}).bytes(64)), std::length_error);
  EXPECT_THROW(static_cast<void>(DataRecord{.sta = "TOOLONG"}.bytes(64)), std::length_error);
  EXPECT_THROW(static_cast<void>(DataRecord{.samples = 65536}.bytes(64)), std::length_error);
  EXPECT_THROW(static_cast<void>(DataRecord{.rate_factor = 32768}.bytes(64)), std::length_error);
}

// The bytes of the only blockette of a record, its four byte head included.
std::string only_blockette(const DataRecord &record) {
  return record.bytes(512).substr(48, 4 + record.chain.at(0).body.size());
}

TEST(DataRecord, SampleRateIsAFloat) {
  // 20 is 1.25 * 2^4: exponent 127 + 4 = 0x83, so 0x41A00000.
  EXPECT_EQ(only_blockette(DataRecord{}.b100(20, 3)),
            "\x00\x64\x00\x00\x41\xA0\x00\x00\x03\0\0\0"s);
  EXPECT_EQ(only_blockette(DataRecord{.order = ByteOrder::kLittle}.b100(20)),
            "\x64\x00\x00\x00\x00\x00\xA0\x41\x00\0\0\0"s);
}

TEST(DataRecord, OpaqueBlocketteCountsItsHeadersAndData) {
  // 15 fixed bytes, 2 + 3 of headers: the data start at 20 and end at 24.
  EXPECT_EQ(
      only_blockette(DataRecord{}.b2000(
          {.record = 5, .word_order = 1, .flags = 2, .headers = {"A", "BC"}, .data = "wxyz"})),
      "\x07\xD0\x00\x00\x00\x18\x00\x14\x00\x00\x00\x05\x01\x02\x02"s + "A~BC~wxyz");
}

TEST(DataRecord, BlockettesHaveTheManualsLengths) {
  struct Row {
    DataRecord record;
    std::size_t length;
  };
  const std::vector<Row> rows = {
      {DataRecord{}.b200({}), 52},  {DataRecord{}.b201({}), 60},      {DataRecord{}.b300({}), 60},
      {DataRecord{}.b310({}), 60},  {DataRecord{}.b320({}), 64},      {DataRecord{}.b390({}), 28},
      {DataRecord{}.b395({}), 16},  {DataRecord{}.b400(0, 0, 0), 16}, {DataRecord{}.b405({1}), 6},
      {DataRecord{}.b500({}), 200}, {DataRecord{}.b1001(0, 0, 0), 8}};
  for (const Row &row : rows) {
    EXPECT_EQ(only_blockette(row.record).size(), row.length) << row.record.chain.at(0).type;
  }
}

TEST(DataRecord, DetectionFieldsStandInOrder) {
  // 1 is 0x3F800000, 2 is 0x40000000, 0.5 is 0x3F000000.
  const std::string onset = "\x07\xE5\x00\x4B\x01\x02\x03\x00\x00\x04"s;
  const Detection detection{.amplitude = 1,
                            .period = 2,
                            .background = 0.5F,
                            .flags = 4,
                            .onset = {2021, 75, 1, 2, 3, 4},
                            .detector = "PICKER",
                            .signal_to_noise = {1, 2, 3, 4, 5, 6},
                            .lookback = 7,
                            .algorithm = 8};
  const std::string head = "\x3F\x80\0\0\x40\0\0\0\x3F\0\0\0\x04\0"s + onset;
  const std::string name = "PICKER" + std::string(18, ' ');
  EXPECT_EQ(only_blockette(DataRecord{}.b200(detection)), "\x00\xC8\x00\x00"s + head + name);
  EXPECT_EQ(only_blockette(DataRecord{}.b201(detection)),
            "\x00\xC9\x00\x00"s + head + "\x01\x02\x03\x04\x05\x06\x07\x08" + name);
}

TEST(DataRecord, CalibrationFieldsStandInOrder) {
  const Calibration calibration{.begin = {2021, 75, 1, 2, 3, 4},
                                .steps = 5,
                                .flags = 6,
                                .duration = 7,
                                .interval = 8,
                                .period = 2,
                                .amplitude = 1,
                                .channel = "BHC",
                                .reference_amplitude = 9,
                                .coupling = "RESISTIVE",
                                .rolloff = "3DB@10HZ",
                                .noise = "WHITE"};
  const std::string begin = "\x07\xE5\x00\x4B\x01\x02\x03\x00\x00\x04"s;
  const std::string one = "\x3F\x80\0\0"s;
  const std::string two = "\x40\0\0\0"s;
  const std::string duration = "\0\0\0\x07"s;
  const std::string tail = "BHC\0\0\0\0\x09"s + "RESISTIVE   " + "3DB@10HZ    ";
  EXPECT_EQ(only_blockette(DataRecord{}.b300(calibration)),
            "\x01\x2C\0\0"s + begin + "\x05\x06" + duration + "\0\0\0\x08"s + one + tail);
  EXPECT_EQ(only_blockette(DataRecord{}.b310(calibration)),
            "\x01\x36\0\0"s + begin + "\x00\x06"s + duration + two + one + tail);
  EXPECT_EQ(only_blockette(DataRecord{}.b320(calibration)),
            "\x01\x40\0\0"s + begin + "\x00\x06"s + duration + one + tail + "WHITE   ");
  EXPECT_EQ(only_blockette(DataRecord{}.b390(calibration)),
            "\x01\x86\0\0"s + begin + "\x00\x06"s + duration + one + "BHC\0"s);
}

TEST(DataRecord, TimingFieldsStandInOrder) {
  const Timing timing{.vco_percent = 0.5F,
                      .exception = {2021, 75, 1, 2, 3, 4},
                      .microseconds = 5,
                      .quality_percent = 90,
                      .count = 6,
                      .type = "MISSING",
                      .model = "GPS",
                      .status = "LOCKED"};
  EXPECT_EQ(only_blockette(DataRecord{}.b500(timing)),
            "\x01\xF4\0\0\x3F\0\0\0"s + "\x07\xE5\x00\x4B\x01\x02\x03\x00\x00\x04"s +
                "\x05\x5A\0\0\0\x06"s + "MISSING" + std::string(9, ' ') + "GPS" +
                std::string(29, ' ') + "LOCKED" + std::string(122, ' '));
}

}  // namespace
}  // namespace volume
