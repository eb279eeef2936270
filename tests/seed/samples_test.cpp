// What a data record says of its samples.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "seed/whole.h"
#include "support/elog.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

constexpr std::size_t kLength = 128;                 // of every record here, bytes
constexpr std::int64_t kMarch16 = 1615852800000000;  // 2021,075, the writer's time, microseconds

// The first record of some bytes, read whole.
class Record {
 public:
  explicit Record(const std::string &bytes) : reader_(bytes) {
    const SDBlk *block = reader_.next();
    if (sdblk_samples(block, &samples_) != 0) throw std::runtime_error("no samples");
    record_ = block->data_ptr;
  }
  explicit Record(const DataRecord &record) : Record(record.bytes(kLength)) {}

  const SDBlkSamples *operator->() const { return &samples_; }
  // Where the samples begin in the record, or -1.
  [[nodiscard]] std::int64_t data_offset() const {
    return samples_.data == nullptr ? -1 : samples_.data - record_;
  }

 private:
  WholeReader reader_;
  SDBlkSamples samples_ = {};
  const char *record_ = nullptr;
};

double rate_of(int factor, int multiplier) {
  return Record(DataRecord{.rate_factor = factor, .rate_multiplier = multiplier})->rate;
}
// With a nominal rate of 40.
double rate_of(float actual) {
  DataRecord record{.rate_factor = 20, .rate_multiplier = 2};
  return Record(record.b100(actual))->rate;
}

// A record that only strict reading takes for one: its time may be anything.
class StrictRecord {
 public:
  explicit StrictRecord(const std::string &bytes) : bytes_(bytes) {
    const auto size = static_cast<std::int64_t>(bytes_.size());
    vol_ = sdblk_open_buffer(bytes_.data(), size, 128);
    if (vol_ == nullptr || sdblk_parseblk(vol_, &block_) != 0) {
      throw std::runtime_error("no data record");
    }
  }
  ~StrictRecord() {
    sdblk_free(block_);
    sdblk_closevol(vol_);
  }
  StrictRecord(const StrictRecord &) = delete;
  StrictRecord &operator=(const StrictRecord &) = delete;

  int read(SDBlkSamples *samples) const { return sdblk_samples(block_, samples); }

 private:
  std::string bytes_;
  SDBlkVol *vol_ = nullptr;
  SDBlk *block_ = nullptr;
};

SDBlkSamples strict_samples(const volume::Time &time) {
  SDBlkSamples samples = {};
  EXPECT_EQ(StrictRecord(DataRecord{.time = time}.bytes(kLength)).read(&samples), 0);
  return samples;
}

std::string message() {
  std::size_t size = 0;
  const char *text = elog_registered(0, &size);
  std::string message = text == nullptr ? "" : std::string(text, size);
  elog_clear_register(0);
  return message;
}

// ---- A sound record, in each byte order

DataRecord sound(ByteOrder order) {
  DataRecord record{.sta = "DYNGA",
                    .loc = "00",
                    .chan = "BHZ",
                    .net = "XX",
                    .time = {2021, 75, 1, 2, 3, 4567},
                    .rate_factor = 20,
                    .rate_multiplier = 1,
                    .order = order};
  return record.b1000(3, order == ByteOrder::kBig ? 1 : 0, 7).samples32({1, 2, 3});
}

class Samples : public testing::TestWithParam<ByteOrder> {};
INSTANTIATE_TEST_SUITE_P(ByteOrders, Samples, testing::Values(ByteOrder::kBig, ByteOrder::kLittle));

TEST_P(Samples, OfASoundRecordAreWhatItSays) {
  const Record record(sound(GetParam()));
  EXPECT_STREQ(record->station, "DYNGA");
  EXPECT_STREQ(record->location, "00");
  EXPECT_STREQ(record->channel, "BHZ");
  EXPECT_STREQ(record->network, "XX");
  EXPECT_EQ(record.data_offset(), 64);
  EXPECT_EQ(record->bytes, 64);
  EXPECT_EQ(record->encoding, 3);
  EXPECT_EQ(record->big_endian, GetParam() == ByteOrder::kBig ? 1 : 0);
  EXPECT_EQ(record->samples, 3);
  EXPECT_EQ(record->rate, 20.0);
  EXPECT_EQ(record->timing_quality, -1);
}

TEST_P(Samples, OfASoundRecordStartAtItsTime) {
  // An hour, two minutes, three seconds and 4567 ten-thousandths after the day's begin.
  const Record record(sound(GetParam()));
  EXPECT_EQ(record->has_start, 1);
  EXPECT_EQ(record->start_us, kMarch16 + 3723456700);
  EXPECT_EQ(record->start, (kMarch16 + 3723456700) * 1000);
}

// ---- Codes

TEST(SamplesCodes, AreWithoutTheWhiteSpaceAroundThem) {
  const Record record(DataRecord{.sta = " AB ", .loc = "  ", .chan = "LH ", .net = ""});
  EXPECT_STREQ(record->station, "AB");
  EXPECT_STREQ(record->location, "");
  EXPECT_STREQ(record->channel, "LH");
  EXPECT_STREQ(record->network, "");
}

TEST(SamplesCodes, EndAtANul) {
  const Record record(DataRecord{.sta = std::string("A\0BCD", 5)});
  EXPECT_STREQ(record->station, "A");
}

// ---- Where the data stand

TEST(SamplesData, AreNoneAtTheOffsetZero) {
  const Record record(DataRecord{.forced_data_offset = 0});
  EXPECT_EQ(record.data_offset(), -1);
  EXPECT_EQ(record->bytes, 0);
}

TEST(SamplesData, AreNoneAtTheRecordsEnd) {
  const Record record(DataRecord{.forced_data_offset = 128});
  EXPECT_EQ(record.data_offset(), -1);
  EXPECT_EQ(record->bytes, 0);
}

TEST(SamplesData, AreNoneBeyondTheRecord) {
  // A second record stands there, which is not theirs.
  const std::string next = DataRecord{}.bytes(kLength, 2);
  const Record record(DataRecord{.forced_data_offset = 192}.bytes(kLength) + next);
  EXPECT_EQ(record.data_offset(), -1);
  EXPECT_EQ(record->bytes, 0);
}

TEST(SamplesData, ReachToTheRecordsEnd) {
  const Record record(DataRecord{.forced_data_offset = 127});
  EXPECT_EQ(record.data_offset(), 127);
  EXPECT_EQ(record->bytes, 1);
}

TEST(SamplesData, OfARecordThatIsCutReachToTheFilesEnd) {
  const std::string bytes = sound(ByteOrder::kBig).bytes(kLength).substr(0, 70);
  EXPECT_EQ(Record(bytes)->bytes, 6);
}

TEST(SamplesCount, IsUnsigned) { EXPECT_EQ(Record(DataRecord{.samples = 65535})->samples, 65535); }

TEST(SamplesCount, MayBeZero) { EXPECT_EQ(Record(DataRecord{.samples = 0})->samples, 0); }

// ---- Blockette 1000

TEST(SamplesEncoding, IsNoneWithoutBlockette1000) {
  const Record big(DataRecord{});
  EXPECT_EQ(big->encoding, -1);
  EXPECT_EQ(big->big_endian, 1);
  const Record little(DataRecord{.order = ByteOrder::kLittle});
  EXPECT_EQ(little->encoding, -1);
  EXPECT_EQ(little->big_endian, 0);
}

TEST(SamplesEncoding, AndOrderAreThoseOfTheFirstBlockette1000) {
  const Record record(DataRecord{}.b1000(11, 0, 7).b1000(3, 1, 7));
  EXPECT_EQ(record->encoding, 11);
  EXPECT_EQ(record->big_endian, 0);
}

TEST(SamplesEncoding, OrderMayBeAnyNumberButZero) {
  EXPECT_EQ(Record(DataRecord{}.b1000(3, 255, 7))->big_endian, 1);
}

TEST(SamplesEncoding, OfABlocketteThatIsCutByTheNextIsWhatIsLeft) {
  // Type, next and encoding, then the next blockette: there is no order.
  const Record record(DataRecord{.order = ByteOrder::kLittle}.blockette(1000, "\x0a").b100(1));
  EXPECT_EQ(record->encoding, 10);
  EXPECT_EQ(record->big_endian, 0);
}

TEST(SamplesEncoding, OfABlocketteWithoutBytesIsNone) {
  EXPECT_EQ(Record(DataRecord{}.blockette(1000, "").b100(1))->encoding, -1);
}

// ---- Rate

TEST(SamplesRate, IsTheProductOfPositiveFactorAndMultiplier) {
  EXPECT_EQ(rate_of(20, 2), 40.0);
  EXPECT_EQ(rate_of(32767, 32767), 1073676289.0);
}

TEST(SamplesRate, IsDividedByANegativeMultiplier) { EXPECT_EQ(rate_of(100, -10), 10.0); }

TEST(SamplesRate, IsThatOfAPeriodForANegativeFactor) {
  EXPECT_EQ(rate_of(-10, 1), 0.1);
  EXPECT_EQ(rate_of(-10, 5), 0.5);
}

TEST(SamplesRate, IsThatOfTheProductOfPeriodsForTwoNegatives) { EXPECT_EQ(rate_of(-4, -5), 0.05); }

TEST(SamplesRate, IsNoneForZero) {
  EXPECT_EQ(rate_of(0, 1), 0.0);
  EXPECT_EQ(rate_of(1, 0), 0.0);
  EXPECT_EQ(rate_of(0, 0), 0.0);
}

TEST(SamplesRate, IsNoneBelowAMillionth) {
  EXPECT_EQ(rate_of(-1000, -1000), 0.000001);
  EXPECT_EQ(rate_of(-1000, -1001), 0.0);
  EXPECT_EQ(rate_of(-32768, -32768), 0.0);
  EXPECT_EQ(rate_of(0.0000005F), 0.0);
}

TEST(SamplesRate, IsThatOfBlockette100) { EXPECT_EQ(rate_of(39.5F), 39.5); }

TEST(SamplesRate, IsTheNominalOneWhereBlockette100HasNone) {
  EXPECT_EQ(rate_of(0.0F), 40.0);
  EXPECT_EQ(rate_of(-1.0F), 40.0);
  EXPECT_EQ(rate_of(std::numeric_limits<float>::infinity()), 40.0);
  EXPECT_EQ(rate_of(std::numeric_limits<float>::quiet_NaN()), 40.0);
}

TEST(SamplesRate, IsThatOfTheFirstBlockette100) {
  DataRecord record{.rate_factor = 20, .rate_multiplier = 2};
  EXPECT_EQ(Record(record.b100(0).b100(39.5F))->rate, 40.0);
}

TEST(SamplesRate, IsTheNominalOneWhereBlockette100IsCut) {
  DataRecord record{.rate_factor = 20, .rate_multiplier = 2};
  EXPECT_EQ(Record(record.blockette(100, "\x42\x1e").b1000(3, 1, 7))->rate, 40.0);
}

TEST(SamplesRate, OfBlockette100IsInTheRecordsByteOrder) {
  DataRecord record{.order = ByteOrder::kLittle};
  EXPECT_EQ(Record(record.b100(39.5F))->rate, 39.5);
}

// ---- Start

TEST(SamplesStart, HasTheMicrosecondsOfBlockette1001) {
  EXPECT_EQ(Record(DataRecord{}.b1001(100, 50, 1))->start_us, kMarch16 + 50);
}

TEST(SamplesStart, TakesMicrosecondsWithTheirSign) {
  // 206 is -50 in eight bits.
  EXPECT_EQ(Record(DataRecord{}.b1001(100, 206, 1))->start_us, kMarch16 - 50);
}

TEST(SamplesStart, TakesThoseOfTheFirstBlockette1001) {
  EXPECT_EQ(Record(DataRecord{}.b1001(100, 50, 1).b1001(100, 70, 1))->start_us, kMarch16 + 50);
}

TEST(SamplesStart, HasTheCorrectionThatIsNotApplied) {
  EXPECT_EQ(Record(DataRecord{.time_correction = 5})->start_us, kMarch16 + 500);
  EXPECT_EQ(Record(DataRecord{.time_correction = -300})->start_us, kMarch16 - 30000);
}

TEST(SamplesStart, HasNotTheCorrectionThatIsApplied) {
  const Record applied(DataRecord{.activity_flags = 2, .time_correction = 5});
  EXPECT_EQ(applied->start_us, kMarch16);
  const Record others(DataRecord{.activity_flags = 253, .time_correction = 5});
  EXPECT_EQ(others->start_us, kMarch16 + 500);
}

TEST(SamplesStart, TakesTenThousandthsAboveASecond) {
  EXPECT_EQ(Record(DataRecord{.time = {2021, 75, 0, 0, 0, 65535}})->start_us, kMarch16 + 6553500);
}

TEST(SamplesStart, OfADayThatIsNoneIsNone) {
  const SDBlkSamples samples = strict_samples({2021, 0});
  EXPECT_EQ(samples.has_start, 0);
  EXPECT_EQ(samples.start_us, 0);
  EXPECT_EQ(samples.start, 0);
}

TEST(SamplesStart, OfAnHourThatIsNoneIsNone) {
  EXPECT_EQ(strict_samples({2021, 75, 24}).has_start, 0);
}

TEST(SamplesStart, AfterAllNanosecondsIsTheLastOne) {
  // From 1970 to 2300 there are 330 * 365 days and 80 leap days, to the day 75 another 74.
  const SDBlkSamples samples = strict_samples({2300, 75});
  EXPECT_EQ(samples.start_us, (330LL * 365 + 80 + 74) * 86400 * 1000000);
  EXPECT_EQ(samples.start, INT64_MAX);
}

TEST(SamplesStart, BeforeAllNanosecondsIsTheFirstOne) {
  // From 1600 to 1970 there are 370 * 365 days and 90 leap days.
  const SDBlkSamples samples = strict_samples({1600, 75});
  EXPECT_EQ(samples.start_us, (74 - (370LL * 365 + 90)) * 86400 * 1000000);
  EXPECT_EQ(samples.start, INT64_MIN);
}

TEST(SamplesTimingQuality, IsTheLowestOfBlockettes1001) {
  const Record record(DataRecord{}.b1001(90, 0, 1).b1001(30, 0, 1).b1001(60, 0, 1));
  EXPECT_EQ(record->timing_quality, 30);
}

// ---- Records that say what cannot be

// Each byte after the codes is 255, but for those of the time by which a header is known.
TEST(SamplesOfBadRecords, LieWithinTheRecordWhateverItsHeaderSays) {
  std::string bytes = DataRecord{}.bytes(kLength);
  for (std::size_t i = 8; i < kLength; ++i) {
    if (i < 20 || i > 26) bytes[i] = '\xff';
  }
  const Record record(bytes);
  EXPECT_EQ(record.data_offset(), -1);
  EXPECT_EQ(record->bytes, 0);
  EXPECT_STREQ(record->station, "\xff\xff\xff\xff\xff");
  EXPECT_EQ(record->encoding, -1);
  EXPECT_EQ(record->samples, 65535);
  // Factor and multiplier are -1: one over their product.
  EXPECT_EQ(record->rate, 1.0);
  // 65535 ten-thousandths; the flags say that the correction is applied.
  EXPECT_EQ(record->start_us, kMarch16 + 6553500);
}

TEST(SamplesOfBadRecords, ComeOnceFromAChainThatGoesRound) {
  DataRecord record{.rate_factor = 20, .rate_multiplier = 2};
  EXPECT_EQ(Record(record.blockette(100, std::string(8, '\0'), 48))->rate, 40.0);
}

TEST(SamplesOfBadRecords, ComeFromTheHeaderWhereTheChainLeadsThere) {
  // The station's code is a blockette 1000 of encoding 11, without a next one.
  const Record record(
      DataRecord{.sta = std::string("\x03\xe8\0\0\x0b", 5), .forced_first_offset = 8});
  EXPECT_EQ(record->encoding, 11);
}

TEST(SamplesOfBadRecords, AreRefusedForARecordOf47Bytes) {
  const StrictRecord record(DataRecord{}.bytes(kLength).substr(0, 47));
  SDBlkSamples samples = {};
  samples.samples = 7;
  EXPECT_EQ(record.read(&samples), -1);
  EXPECT_EQ(samples.samples, 7);
  EXPECT_EQ(message(), "sdblk_samples: B0099 at D:000001 is no data record\n");
}

TEST(SamplesOfBadRecords, AreRefusedForAControlBlockette) {
  WholeReader reader(VolumeWriter(256).control('S', ControlBlockette(50)).bytes());
  SDBlkSamples samples = {};
  EXPECT_EQ(sdblk_samples(reader.next(), &samples), -1);
  EXPECT_EQ(message(), "sdblk_samples: B0050 at S:000001 is no data record\n");
}

TEST(SamplesOfBadRecords, AreRefusedForADataBlockette) {
  WholeReader reader(sound(ByteOrder::kBig).bytes(kLength));
  SDBlkSamples samples = {};
  EXPECT_EQ(sdblk_samples(reader.decode_next()->next, &samples), -1);
  EXPECT_EQ(message(), "sdblk_samples: B1000 at D:000001 is no data record\n");
}

}  // namespace
