// A sound volume gives the same blocks with the same fields in both ways of reading.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "seed/whole.h"
#include "tests/util/block_text.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

namespace {

using block_text::place_of;
using block_text::text_of;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

// ---- one way of reading ----

struct Reading {
  std::vector<std::string> places;
  std::vector<std::string> blocks;
  std::int64_t findings = 0;
  bool complete = false;
};

Reading read_and_close(SDBlkVol *vol) {
  const LogCapture log;
  const FatalHook hook;
  Reading reading;
  SDBlk *block = nullptr;
  try {
    int result = 0;
    while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
      if (sdblk_unstuffblk(block) < 0) break;
      reading.places.push_back(place_of(*block));
      reading.blocks.push_back(text_of(*block));
      if (block->data_ptr == nullptr && block->blockette_length == 0) break;
    }
    reading.complete = result == SDBLK_EOF;
  } catch (const Fatal &) {
    reading.complete = false;
  }
  for (const std::int64_t count : sdblk_whole_counts(vol).findings) reading.findings += count;
  sdblk_free(block);
  sdblk_closevol(vol);
  return reading;
}
Reading read_strictly(const std::string &bytes, std::int32_t record_length) {
  return read_and_close(
      sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), record_length));
}
Reading read_whole(const std::string &bytes, std::int32_t record_length) {
  return read_and_close(sdblk_open_whole_buffer(
      bytes.data(), static_cast<std::int64_t>(bytes.size()), record_length, nullptr));
}

void expect_the_same(const std::string &bytes, std::int32_t record_length = 0) {
  const Reading strict = read_strictly(bytes, record_length);
  const Reading whole = read_whole(bytes, record_length);
  EXPECT_TRUE(strict.complete);
  EXPECT_TRUE(whole.complete);
  EXPECT_EQ(whole.findings, 0);
  EXPECT_GT(whole.blocks.size(), 0U);
  EXPECT_EQ(whole.blocks, strict.blocks);
}

std::string read_file(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// ---- volumes ----

ControlBlockette channel(std::string_view code) {
  return ControlBlockette(52)
      .fixed("00", 2)
      .fixed(code, 3)
      .digits(0, 4)
      .digits(1, 3)
      .var("")
      .digits(1, 3)
      .fixed("", 3)
      .coordinate(64.9, volume::kLatitude)
      .coordinate(-16.9, volume::kLongitude)
      .fixed("", 7)
      .coordinate(1, volume::kLocalDepth)
      .coordinate(0, volume::kAzimuth)
      .coordinate(-90, volume::kDip)
      .digits(1, 4)
      .digits(9, 2)
      .real(20, volume::kReal10)
      .fixed("", 10)
      .fixed("", 4)
      .var("CG")
      .var("2021,075,12:30:15.0500")
      .var("")
      .fixed("N", 1);
}

VolumeWriter metadata(std::size_t length) {
  VolumeWriter out(length);
  out.control('V', ControlBlockette(10)
                       .raw("02.4")
                       .digits(static_cast<long>(std::log2(length)), 2)
                       .var("2021,075")
                       .var("2021,076,01:02:03.4567")
                       .var("2021,001")
                       .var("XX")
                       .var(""));
  out.control('A', ControlBlockette(33).digits(1, 3).var("Seismometer"));
  out.control('A', ControlBlockette(34).digits(1, 3).var("M/S").var("Velocity in\tm/s"));
  out.control('A', ControlBlockette(48).digits(3, 4).var("Gain").real(1).real(1).digits(0, 2));
  out.control('S', ControlBlockette(50)
                       .fixed("DYNGA", 5)
                       .coordinate(64.9931, volume::kLatitude)
                       .coordinate(-16.9, volume::kLongitude)
                       .coordinate(688, volume::kElevation)
                       .fixed("", 4)
                       .fixed("", 3)
                       .var(" Dyngja ")
                       .digits(1, 3)
                       .digits(3210, 4)
                       .digits(10, 2)
                       .var("2018,120")
                       .var("")
                       .fixed("N", 1)
                       .fixed("XX", 2));
  out.control('S', channel("BHZ"));
  ControlBlockette fir(61);
  fir.digits(1, 2).var("F").raw("A001002").digits(200, 4);
  for (int i = 0; i < 200; ++i) fir.real(1.0 / (i + 3), volume::kReal14);
  out.control('S', fir);
  ControlBlockette poles(53);
  poles.raw("A01001001").real(1.5).real(0.02).digits(2, 3);
  for (int i = 0; i < 8; ++i) poles.real(i - 0.37);
  out.control('S', poles.digits(1, 3).real(-1).real(2).real(0).real(0));
  out.control('S', ControlBlockette(60).raw("01"
                                            "01"
                                            "02"
                                            "0003"
                                            "0009"));
  return out;
}

TEST(BothWays, GiveTheSameOfTheSample) {
  expect_the_same(read_file(TARVIK_SOURCE_DIR "/samples/demo.seed"));
}

TEST(BothWays, GiveTheSameOfMetadata) {
  for (const std::size_t length : {256U, 512U, 4096U}) {
    expect_the_same(metadata(length).new_record().bytes(), static_cast<std::int32_t>(length));
  }
}

TEST(BothWays, GiveTheSameOfMetadataAndData) {
  VolumeWriter out = metadata(4096);
  for (int i = 0; i < 5; ++i) {
    DataRecord record{.sta = "DYNGA", .chan = "BHZ", .net = "XX", .time = {2021, 75, i}};
    out.data(record.b1000(3, 1, 12).samples32({1, -2, i}));
  }
  expect_the_same(out.bytes());
}

TEST(BothWays, GiveTheSameOfEachDataBlocketteInBothOrders) {
  for (const ByteOrder order : {ByteOrder::kBig, ByteOrder::kLittle}) {
    VolumeWriter out(512);
    const auto record = [&] {
      return DataRecord{.sta = "ABC", .time = {2021, 75}, .order = order};
    };
    const volume::Calibration calibration = {.begin = {2021, 76, 1, 2, 3, 4},
                                             .duration = 0xfffffff0,
                                             .amplitude = -1.5F,
                                             .channel = "BHZ"};
    out.data(record().b1000(3, 1, 9).b1001(99, 12, 7).b100(20.5F));
    out.data(record().b1000(3, 1, 9).b200({.amplitude = 3, .detector = "STA"}));
    out.data(record().b1000(3, 1, 9).b201({.amplitude = 3, .onset = {1999, 365}}));
    out.data(record().b1000(3, 1, 9).b300(calibration).b310(calibration).b320(calibration));
    out.data(record().b1000(3, 1, 9).b390(calibration).b395({2021, 77}).b400(1, 2, 3));
    out.data(record().b1000(3, 1, 9).b405({1, 2}).b500({.count = 7, .type = "Valid"}));
    out.data(record().b1000(3, 1, 9).b2000({.headers = {"one", "two"}, .data = "opaque"}));
    expect_the_same(out.bytes(), 512);
  }
}

TEST(BothWays, GiveTheSameFromBothEndsOfTheNumbers) {
  VolumeWriter out(512);
  out.sequence(999998);
  out.data(DataRecord{.sta = "ABC"}.b1000(3, 1, 9));
  out.data(DataRecord{.sta = "ABC"}.b1000(3, 1, 9));
  expect_the_same(out.bytes(), 512);
}

// ---- the volumes of a folder ----

struct Compared {
  int alike = 0;   // both ways cut the same blocks, and whole reading found nothing to say
  int others = 0;  // read in part, or refused, by the strict way
};

Compared compare_folder(const std::filesystem::path &folder) {
  Compared compared;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string bytes = read_file(entry.path());
    const Reading strict = read_strictly(bytes, 0);
    const Reading whole = read_whole(bytes, 0);
    EXPECT_TRUE(whole.complete) << entry.path();
    const bool alike = strict.complete && whole.findings == 0 && strict.places == whole.places;
    ++(alike ? compared.alike : compared.others);
    if (alike) {
      EXPECT_EQ(whole.blocks, strict.blocks) << entry.path();
    }
  }
  return compared;
}

TEST(BothWays, GiveTheSameOfTheVolumesInAFolder) {
  const char *folder = std::getenv("TARVIK_TEST_VOLUMES");
  if (folder == nullptr) GTEST_SKIP() << "TARVIK_TEST_VOLUMES names no folder";
  const Compared compared = compare_folder(folder);
  RecordProperty("alike", compared.alike);
  RecordProperty("others", compared.others);
  EXPECT_GT(compared.alike, 0);
}

}  // namespace
