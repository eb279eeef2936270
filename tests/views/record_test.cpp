#include "views/record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "tests/util/volume_writer.h"
#include "tests/views/whole_block.h"

using namespace tarvik;
using volume::ByteOrder;
using volume::DataRecord;
using volume::VolumeWriter;

namespace {

constexpr std::int64_t kStart = 1615875352600000;  // 2021-03-16T06:15:52.6

volume::DataRecord record(int factor = 20, int multiplier = 1) {
  volume::DataRecord data = {.sta = "DYNGA", .loc = "00", .chan = "BHZ", .net = "XX"};
  data.time = {2021, 75, 6, 15, 52, 6000};
  data.samples = 100;
  data.rate_factor = factor;
  data.rate_multiplier = multiplier;
  return data;
}

tarvik::DataRecord read(const volume::DataRecord &record) {
  VolumeWriter volume(512);
  volume.data(record);
  return data_record(*WholeBlock(volume));
}
double rate(const volume::DataRecord &data) { return read(data).rate; }
std::int64_t shift(const volume::DataRecord &data) { return read(data).start - kStart; }
std::int32_t quality(const volume::DataRecord &data) { return read(data).timing_quality; }

// ---- codes ----

TEST(DataRecord, HasTheCodesAndTheLetter) {
  volume::DataRecord data = record();
  data.quality = 'Q';
  const ChannelId id = read(data).id;
  EXPECT_EQ(code_text(id.network), "XX");
  EXPECT_EQ(code_text(id.station), "DYNGA");
  EXPECT_EQ(code_text(id.location), "00");
  EXPECT_EQ(code_text(id.channel), "BHZ");
  EXPECT_EQ(id.quality, 'Q');
}

TEST(DataRecord, CodesHaveNoWhiteSpaceAround) {
  volume::DataRecord data = record();
  data.sta = " AB ";
  data.loc = "";
  data.net = "\tX";
  const ChannelId id = read(data).id;
  EXPECT_EQ(code_text(id.station), "AB");
  EXPECT_EQ(code_text(id.location), "");
  EXPECT_EQ(code_text(id.network), "X");
}

TEST(DataRecord, CodesEndAtANul) {
  volume::DataRecord data = record();
  data.sta = std::string("A\0B", 3);
  EXPECT_EQ(code_text(read(data).id.station), "A");
}

TEST(ChannelId, OrderIsThatOfBytesWithoutASign) {
  volume::DataRecord plain = record();
  plain.sta = "Z";
  volume::DataRecord high = record();
  high.sta = "\x80";
  const ChannelId a = read(plain).id;
  const ChannelId b = read(high).id;
  EXPECT_TRUE(a < b);
  EXPECT_FALSE(b < a);
}

TEST(ChannelId, OrderGoesByNetworkThenStationLocationChannelAndQuality) {
  ChannelId low;
  low.network = {'A', 'A'};
  low.station = {'B'};
  low.location = {'C'};
  low.channel = {'D'};
  low.quality = 'Q';
  ChannelId high = low;
  high.quality = 'R';
  EXPECT_TRUE(low < high);
  low.channel = {'D', 'D'};
  EXPECT_TRUE(high < low);
  high.location = {'C', 'C'};
  EXPECT_TRUE(low < high);
  low.station = {'B', 'B'};
  EXPECT_TRUE(high < low);
  high.network = {'A', 'B'};
  EXPECT_TRUE(low < high);
}

// ---- rates ----

TEST(DataRecord, RateIsTheProductWhenBothArePositive) {
  EXPECT_EQ(rate(record(20, 1)), 20);
  EXPECT_EQ(rate(record(20, 5)), 100);
}

TEST(DataRecord, NegativeMultiplierDivides) {
  EXPECT_EQ(rate(record(10, -4)), 2.5);
  EXPECT_EQ(rate(record(1, -3)), 1.0 / 3);
}

TEST(DataRecord, NegativeFactorIsSecondsASample) {
  EXPECT_EQ(rate(record(-10, 5)), 0.5);
  EXPECT_EQ(rate(record(-3, 1)), 1.0 / 3);
}

TEST(DataRecord, BothNegativeDivideOne) {
  EXPECT_EQ(rate(record(-10, -4)), 0.025);
  EXPECT_EQ(rate(record(-32768, -1)), 1.0 / 32768);
}

TEST(DataRecord, NoRateWhenEitherIsZero) {
  EXPECT_EQ(rate(record(0, 5)), 0);
  EXPECT_EQ(rate(record(20, 0)), 0);
  EXPECT_EQ(rate(record(0, -5)), 0);
  EXPECT_EQ(rate(record(-20, 0)), 0);
  EXPECT_EQ(rate(record(0, 0)), 0);
}

TEST(DataRecord, Blockette100SaysTheRate) {
  EXPECT_EQ(rate(record().b100(19.5)), 19.5);
  EXPECT_EQ(rate(record(0, 0).b100(19.5)), 19.5);
}

TEST(DataRecord, FirstBlockette100Counts) {
  EXPECT_EQ(rate(record().b100(19.5).b100(5)), 19.5);
  EXPECT_EQ(rate(record().b100(0).b100(5)), 20);
}

TEST(DataRecord, Blockette100ThatIsNoRateLeavesItToFactorAndMultiplier) {
  EXPECT_EQ(rate(record().b100(0)), 20);
  EXPECT_EQ(rate(record().b100(-0.0F)), 20);
  EXPECT_EQ(rate(record().b100(-5)), 20);
  EXPECT_EQ(rate(record().b100(std::numeric_limits<float>::infinity())), 20);
  EXPECT_EQ(rate(record().b100(std::numeric_limits<float>::quiet_NaN())), 20);
}

TEST(DataRecord, Blockette100WithoutARateLeavesItToFactorAndMultiplier) {
  EXPECT_EQ(rate(record().blockette(100, "\x41").b1001(0, 0, 0)), 20);
}

TEST(DataRecord, Blockette100EndsWhereOneBeforeItInTheChainBegins) {
  // The chain starts at an offset and leads back to 48, where a rate of 40 takes eight bytes.
  const auto rate_before = [](unsigned first) {
    volume::DataRecord data = record();
    data.forced_first_offset = first;
    const volume::BinaryFields back = volume::BinaryFields(ByteOrder::kBig).u16(3000).u16(48);
    const volume::BinaryFields b100 = volume::BinaryFields(ByteOrder::kBig).u16(100).u16(0).f32(40);
    std::string bytes = data.bytes(256);
    bytes.replace(48, 8, b100.bytes()).replace(first, 4, back.bytes());
    return data_record(*WholeBlock(VolumeWriter(256).raw_record(bytes))).rate;
  };
  EXPECT_EQ(rate_before(56), 40);
  EXPECT_EQ(rate_before(55), 20);
}

TEST(DataRecord, RateBelowAMillionthIsNone) {
  EXPECT_EQ(rate(record(-1000, -1000)), 0.000001);
  EXPECT_EQ(rate(record(-1001, -1000)), 0);
  EXPECT_EQ(rate(record().b100(9e-7F)), 0);
  EXPECT_EQ(rate(record().b100(1.1e-6F)), static_cast<double>(1.1e-6F));
}

TEST(DataRecord, RateInTheOtherByteOrderIsTheSame) {
  volume::DataRecord data = record(10, -4);
  data.order = ByteOrder::kLittle;
  EXPECT_EQ(rate(data), 2.5);
  EXPECT_EQ(rate(data.b100(19.5)), 19.5);
}

// ---- times ----

TEST(DataRecord, StartIsTheTimeOfTheRecord) {
  const tarvik::DataRecord data = read(record());
  EXPECT_TRUE(data.has_start);
  EXPECT_EQ(data.start, kStart);
  EXPECT_EQ(data.samples, 100);
}

TEST(DataRecord, MicrosecondsAreASignedByte) {
  EXPECT_EQ(shift(record().b1001(100, 50, 0)), 50);
  EXPECT_EQ(shift(record().b1001(100, 127, 0)), 127);
  EXPECT_EQ(shift(record().b1001(100, 128, 0)), -128);
  EXPECT_EQ(shift(record().b1001(100, 206, 0)), -50);
}

TEST(DataRecord, MicrosecondsAreThoseOfTheFirstBlockette1001) {
  EXPECT_EQ(shift(record().b1001(100, 50, 0).b1001(100, 7, 0)), 50);
  EXPECT_EQ(shift(record().blockette(1001, "\x64").b1001(100, 7, 0)), 0);
}

TEST(DataRecord, CorrectionThatIsNotYetAppliedIsAdded) {
  volume::DataRecord data = record();
  data.time_correction = 15000;
  EXPECT_EQ(shift(data), 1500000);
  data.time_correction = -1;
  EXPECT_EQ(shift(data), -100);
  data.activity_flags = 0xFD;
  EXPECT_EQ(shift(data), -100);
}

TEST(DataRecord, CorrectionThatIsAppliedIsNotAddedAgain) {
  volume::DataRecord data = record();
  data.time_correction = 15000;
  data.activity_flags = 2;
  EXPECT_EQ(shift(data), 0);
  data.activity_flags = 0xFF;
  EXPECT_EQ(shift(data), 0);
}

TEST(DataRecord, LargestCorrectionIsAdded) {
  volume::DataRecord data = record();
  data.time_correction = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(shift(data), -214748364800);
}

TEST(DataRecord, MicrosecondsAndCorrectionAddUp) {
  volume::DataRecord data = record().b1001(100, 206, 0);
  data.time_correction = 10000;
  EXPECT_EQ(shift(data), 999950);
}

// ---- quality ----

TEST(DataRecord, TimingQualityIsTheLowest) {
  EXPECT_EQ(quality(record().b1001(90, 0, 0).b1001(30, 0, 0).b1001(60, 0, 0)), 30);
  EXPECT_EQ(quality(record().b1001(0, 0, 0)), 0);
}

TEST(DataRecord, NoBlockette1001GivesNoTimingQuality) {
  EXPECT_EQ(quality(record().b100(20)), kNoQuality);
}

}  // namespace
