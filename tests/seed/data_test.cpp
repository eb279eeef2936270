// Decoding of data records: byte order, fixed section, chain of data blockettes.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "seed/block.h"
#include "seed/sdblk.h"
#include "support/arena.h"
#include "support/epoch.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

using volume::BinaryFields;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Opaque;
using volume::VolumeWriter;

constexpr std::int32_t kRecordLength = 512;

DataRecord data_record(ByteOrder order = ByteOrder::kBig) {
  DataRecord record{.sta = "DYNGA", .loc = "00", .chan = "BHZ", .net = "XX", .time = {2021, 75}};
  record.order = order;
  return record;
}

std::string bytes_of(const DataRecord &record) { return record.bytes(kRecordLength); }

const SDBlk *chained(const SDBlk *block, int position) {
  for (int i = 0; i < position && block != nullptr; ++i) block = block->next;
  return block;
}

int chain_size(const SDBlk *block) {
  int size = 0;
  for (const SDBlk *next = block->next; next != nullptr; next = next->next) ++size;
  return size;
}

// The record decoded, with what the log got at once and what is registered.
struct Outcome {
  int result;
  std::string written;
  std::string messages;
};

Outcome decode(SDBlk *block) {
  LogCapture log;
  const int result = sdblk_unstuffblk(block);
  return {result, log.text(), log.registered()};
}

// ---- byte order ----

// The system clock of the tests, as long as it lives.
class Clock {
 public:
  explicit Clock(int year) { std_set_now(h2e(year, 150, 12, 0, 0.0)); }
  ~Clock() { std_set_now(std::numeric_limits<double>::quiet_NaN()); }
  Clock(const Clock &) = delete;
  Clock &operator=(const Clock &) = delete;
};

constexpr const char *kCannotDeduce =
    "sdblk_unstuff_dblk: WARNING - Cannot deduce byte order - using BIGENDIAN default.\n";

struct Pair {
  unsigned first;
  unsigned second;
};

struct OrderCase {
  Pair year;
  Pair day;
  Pair fraction;
  std::int32_t big_endian;
  bool warns = false;
};

void put_pair(std::string *bytes, std::size_t offset, Pair pair) {
  (*bytes)[offset] = static_cast<char>(pair.first);
  (*bytes)[offset + 1] = static_cast<char>(pair.second);
}

void expect_order(const std::vector<OrderCase> &cases) {
  for (std::size_t i = 0; i < cases.size(); ++i) {
    std::string bytes = bytes_of(data_record());
    put_pair(&bytes, 20, cases[i].year);
    put_pair(&bytes, 22, cases[i].day);
    put_pair(&bytes, 28, cases[i].fraction);
    BlockReader reader(bytes);
    SDBlk *block = reader.next();
    const Outcome outcome = decode(block);
    EXPECT_EQ(outcome.result, 0) << "case " << i;
    EXPECT_EQ(block->big_endian, cases[i].big_endian) << "case " << i;
    EXPECT_EQ(outcome.written, cases[i].warns ? kCannotDeduce : "") << "case " << i;
  }
}

constexpr Pair kBig2021 = {0x07, 0xE5};
constexpr Pair kLittle2021 = {0xE5, 0x07};
constexpr Pair kBothYears = {0x08, 0x08};  // 2056
constexpr Pair kBothDays = {0x01, 0x01};   // 257
constexpr Pair kNone = {0x00, 0x00};

TEST(ByteOrderDeduction, DayOfOneOrderDecidesAgainstTheYear) {
  const Clock clock(2021);
  expect_order({{kLittle2021, {0x00, 0x05}, kNone, 1},  // 5 or 1280
                {kBig2021, {0x05, 0x00}, kNone, 0},     // 5
                {kLittle2021, {0x01, 0x6E}, kNone, 1},  // 366 or 28161
                {kBig2021, {0x6E, 0x01}, kNone, 0}});   // 366
}

TEST(ByteOrderDeduction, DayOfNoOrderIsBigEndianWithoutAWarning) {
  const Clock clock(2021);
  expect_order({{kLittle2021, {0x00, 0x00}, kNone, 1},
                {kLittle2021, {0x01, 0x6F}, kNone, 1},  // 367 or 28417
                {kLittle2021, {0x6F, 0x01}, kNone, 1},
                {kLittle2021, {0xFF, 0xFF}, kNone, 1}});
}

TEST(ByteOrderDeduction, DayOfBothOrdersLeavesItToTheYear) {
  const Clock clock(2021);
  expect_order({{kBig2021, kBothDays, kNone, 1},
                {kLittle2021, kBothDays, kNone, 0},
                {kLittle2021, {0x00, 0x01}, kNone, 0},  // 1 or 256
                {kBig2021, {0x00, 0x01}, kNone, 1},
                {kLittle2021, {0x01, 0x00}, kNone, 0},  // 256 or 1
                {kBig2021, {0x01, 0x00}, kNone, 1}});
}

TEST(ByteOrderDeduction, YearsFrom1900Count) {
  const Clock clock(2021);
  expect_order({{{0x6C, 0x07}, kBothDays, kNone, 0},  // 1900
                {{0x6B, 0x07}, kBothDays, kNone, 1},  // 1899: neither
                {{0x07, 0x6B}, kBothDays, kNone, 1}});
}

TEST(ByteOrderDeduction, YearsUpToTheNextOneCount) {
  const Clock clock(2021);
  expect_order({{{0xE6, 0x07}, kBothDays, kNone, 0},    // 2022
                {{0xE7, 0x07}, kBothDays, kNone, 1}});  // 2023: neither
}

TEST(ByteOrderDeduction, YearOfBothOrdersIsNoneBefore2055) {
  const Clock clock(2054);
  expect_order({{kBothYears, kBothDays, {0xFF, 0x00}, 1}});
}

TEST(ByteOrderDeduction, YearOfBothOrdersLeavesItToTheFraction) {
  const Clock clock(2055);
  expect_order({{kBothYears, kBothDays, {0xFF, 0x00}, 0},  // 65280 or 255
                {kBothYears, kBothDays, {0x00, 0xFF}, 1},
                {kBothYears, kBothDays, {0x27, 0x10}, 0},  // 10000 or 4135
                {kBothYears, kBothDays, {0x10, 0x27}, 1},
                {kBothYears, kBothDays, {0xFF, 0xFF}, 1}});
}

TEST(ByteOrderDeduction, FractionOfBothOrdersIsBigEndianWithAWarning) {
  const Clock clock(2055);
  expect_order({{kBothYears, kBothDays, {0x00, 0x00}, 1, true},
                {kBothYears, kBothDays, {0x27, 0x0F}, 1, true},  // 9999 or 3879
                {kBothYears, kBothDays, {0x05, 0x00}, 1, true}});
}

TEST(ByteOrderDeduction, EveryRecordHasItsOwn) {
  VolumeWriter writer(kRecordLength);
  writer.data(data_record(ByteOrder::kLittle)).data(data_record(ByteOrder::kBig));
  writer.data(data_record(ByteOrder::kLittle));
  BlockReader reader(writer.bytes(), kRecordLength);
  for (const std::int32_t expected : {0, 1, 0}) {
    const SDBlk *block = reader.decode_next();
    EXPECT_EQ(block->big_endian, expected);
    EXPECT_EQ(real_of(block->contents, "time"), 1615852800.0);  // 2021, day 75
  }
}

// ---- fixed section ----

class FixedSection : public testing::TestWithParam<ByteOrder> {};

TEST_P(FixedSection, HasItsFifteenFields) {
  DataRecord record = data_record(GetParam());
  record.time = {2021, 75, 12, 30, 15, 500};
  record.samples = 65535;
  record.rate_factor = -20;
  record.rate_multiplier = -32768;
  record.activity_flags = 0x81;
  record.clock_flags = 0xFF;
  record.quality_flags = 7;
  record.time_correction = -123456;
  record.forced_count = 200;
  record.forced_data_offset = 65535;
  BlockReader reader(bytes_of(record));
  const SDBlk *block = reader.decode_next();
  const Arr *contents = block->contents;
  EXPECT_EQ(countarr(contents), 15);
  EXPECT_EQ(text_of(contents, "sta"), "DYNGA");
  EXPECT_EQ(text_of(contents, "loc"), "00");
  EXPECT_EQ(text_of(contents, "chan"), "BHZ");
  EXPECT_EQ(text_of(contents, "net"), "XX");
  // 2021, day 75 is 1615852800; 12:30:15 is 45015 s.
  EXPECT_DOUBLE_EQ(real_of(contents, "time"), 1615897815.05);
  EXPECT_EQ(integer_of(contents, "nsamp"), 65535);
  EXPECT_EQ(integer_of(contents, "srate_factor"), -20);
  EXPECT_EQ(integer_of(contents, "srate_multiplier"), -32768);
  EXPECT_EQ(integer_of(contents, "activity_flags"), 0x81);
  EXPECT_EQ(integer_of(contents, "clock_flags"), 0xFF);
  EXPECT_EQ(integer_of(contents, "quality_flags"), 7);
  EXPECT_EQ(integer_of(contents, "nblks"), 200);
  EXPECT_EQ(integer_of(contents, "tcor"), -123456);
  EXPECT_EQ(integer_of(contents, "data_offset"), 65535);
  EXPECT_EQ(integer_of(contents, "blk_offset"), 0);
  EXPECT_EQ(block->data_offset, 65535);
  EXPECT_EQ(block->big_endian, GetParam() == ByteOrder::kBig ? 1 : 0);
}

TEST_P(FixedSection, WithoutBlockettesHasNoChain) {
  BlockReader reader(bytes_of(data_record(GetParam())));
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(block->next, nullptr);
  EXPECT_EQ(block->blockette_length, 0);
}

TEST_P(FixedSection, TextsAreTrimmed) {
  DataRecord record = data_record(GetParam());
  record.sta = "GB";
  record.loc = "";
  BlockReader reader(bytes_of(record));
  const Arr *contents = reader.decode_next()->contents;
  EXPECT_EQ(text_of(contents, "sta"), "GB");
  EXPECT_EQ(text_of(contents, "loc"), "");
}

INSTANTIATE_TEST_SUITE_P(BothOrders, FixedSection,
                         testing::Values(ByteOrder::kBig, ByteOrder::kLittle));

// ---- chain ----

TEST(Chain, BlocketteIsDescribedWhole) {
  VolumeWriter writer(kRecordLength);
  writer.data(data_record()).data(data_record().b100(20).b1001(90, 5, 7));
  BlockReader reader(writer.bytes(), kRecordLength);
  reader.decode_next();
  const SDBlk *block = reader.decode_next();
  const SDBlk *second = chained(block, 2);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->logical_sequence, 2);
  EXPECT_EQ(second->logical_length, 512);
  EXPECT_EQ(second->record_offset, 512);
  EXPECT_EQ(second->record_type, 'D');
  // The reading position stands 64 bytes after the record's start; the blockette lies at 60.
  EXPECT_EQ(second->file_offset, 512 + 64 + 60);
  EXPECT_EQ(second->data_ptr, block->data_ptr + 60);
  EXPECT_EQ(second->block_number, 2) << "the number of the next block, not counted up";
  EXPECT_EQ(reader.vol()->nblocks, 2);
  EXPECT_EQ(second->blockette_type, 1001);
  EXPECT_EQ(second->data_offset, 0);
  EXPECT_EQ(second->big_endian, 1);
  EXPECT_EQ(second->blockette_raw, nullptr);
  EXPECT_EQ(second->blkdef, seed_blkdefs_index[1001]);
  EXPECT_EQ(second->next, nullptr);
  EXPECT_EQ(second->vol, reader.vol());
  EXPECT_EQ(countarr(second->contents), 4);
  EXPECT_EQ(integer_of(second->contents, "fcount"), 7);
}

TEST(Chain, OffsetInAFileOfAShortLastRecordCountsFromItsEnd) {
  // 56 bytes: all of them are after the reading position.
  BlockReader reader(data_record().b1000(3, 1, 9).bytes(56));
  EXPECT_EQ(reader.decode_next()->next->file_offset, 56 + 48);
}

TEST(Chain, LittleEndianBlockettesAreReadSo) {
  BlockReader reader(
      bytes_of(data_record(ByteOrder::kLittle).b100(20.5F, 3).b400(1.5F, -2.5F, 258)));
  const SDBlk *block = reader.decode_next();
  ASSERT_EQ(chain_size(block), 2);
  EXPECT_EQ(chained(block, 1)->big_endian, 0);
  EXPECT_EQ(real_of(chained(block, 1)->contents, "samprate"), 20.5);
  EXPECT_EQ(real_of(chained(block, 2)->contents, "slowness"), -2.5);
  EXPECT_EQ(integer_of(chained(block, 2)->contents, "config"), 258);
}

TEST(Chain, LengthsAreTheDistancesOfTheBlockettes) {
  DataRecord record = data_record().b100(20).b1001(90, 5, 7);
  record.forced_data_offset = 256;
  BlockReader reader(bytes_of(record));
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(chained(block, 1)->blockette_length, 12);
  EXPECT_EQ(chained(block, 2)->blockette_length, 256 - 60);
}

TEST(Chain, LastLengthWithoutDataIs64) {
  BlockReader reader(bytes_of(data_record().b100(20).b1001(90, 5, 7)));
  EXPECT_EQ(chained(reader.decode_next(), 2)->blockette_length, 64);
}

TEST(Chain, LengthOfABlocketteAfterTheDataIsNegative) {
  DataRecord record = data_record().b100(20);
  record.forced_data_offset = 40;
  BlockReader reader(bytes_of(record));
  EXPECT_EQ(chained(reader.decode_next(), 1)->blockette_length, -8);
}

TEST(Chain, DataOnlyBlocketteStatesTheRecordsLength) {
  BlockReader first(bytes_of(data_record().b1000(3, 1, 9)));
  EXPECT_EQ(first.decode_next()->blockette_length, 512);
  BlockReader after(bytes_of(data_record().b100(20).b1001(1, 2, 3).b1000(3, 1, 12)));
  EXPECT_EQ(after.decode_next()->blockette_length, 4096);
}

TEST(Chain, LengthExponentCountsModulo32) {
  struct Case {
    unsigned exponent;
    std::int32_t length;
  };
  for (const Case &c : {Case{0, 1}, Case{30, 1 << 30}, Case{31, INT32_MIN}, Case{32, 1},
                        Case{41, 512}, Case{255, INT32_MIN}}) {
    BlockReader reader(bytes_of(data_record().b1000(3, 1, c.exponent)));
    EXPECT_EQ(reader.decode_next()->blockette_length, c.length) << c.exponent;
  }
}

TEST(Chain, UnknownBlocketteIsPassed) {
  BlockReader reader(bytes_of(data_record().blockette(1002, "abcd").b1000(3, 1, 9)));
  const SDBlk *block = reader.decode_next();
  ASSERT_EQ(chain_size(block), 2);
  EXPECT_EQ(chained(block, 1)->blkdef, nullptr);
  EXPECT_EQ(countarr(chained(block, 1)->contents), 0);
  EXPECT_EQ(block->blockette_length, 512);
}

TEST(Chain, TypesAfterTheIndexAreReadAsFixedSections) {
  for (const unsigned type : {2048U, 4096U, 65535U}) {
    BlockReader reader(bytes_of(data_record().blockette(type, "STA  LOBHZNT")));
    const SDBlk *block = reader.decode_next();
    ASSERT_EQ(chain_size(block), 1);
    EXPECT_EQ(chained(block, 1)->blockette_type, static_cast<std::int32_t>(type));
    EXPECT_EQ(chained(block, 1)->blkdef, seed_blkdefs_index[99]);
    EXPECT_EQ(text_of(chained(block, 1)->contents, "sta"), "STA");
    EXPECT_EQ(text_of(chained(block, 1)->contents, "net"), "NT");
    EXPECT_EQ(block->data_offset, 0) << "that of the record";
  }
}

TEST(Chain, LastTypeOfTheIndexIsUnknown) {
  BlockReader reader(bytes_of(data_record().blockette(2047, "STA  ")));
  EXPECT_EQ(chained(reader.decode_next(), 1)->blkdef, nullptr);
}

TEST(Chain, Type99IsReadAsAFixedSection) {
  BlockReader reader(bytes_of(data_record().blockette(99, "STA  LOBHZNT").b1000(3, 1, 9)));
  const SDBlk *block = reader.decode_next();
  ASSERT_EQ(chain_size(block), 2);
  EXPECT_EQ(text_of(chained(block, 1)->contents, "chan"), "BHZ");
}

TEST(Chain, OpaqueHeadersAreTexts) {
  Opaque opaque;
  opaque.headers = {"FIRST", "", " third "};
  opaque.data = "~~~";
  opaque.record = 70000;
  BlockReader reader(bytes_of(data_record().b2000(opaque)));
  const Arr *contents = chained(reader.decode_next(), 1)->contents;
  EXPECT_EQ(integer_of(contents, "record"), 70000);
  EXPECT_EQ(integer_of(contents, "nheaders"), 3);
  const SDBlkEntry &headers = entry_of(contents, "headers");
  ASSERT_EQ(headers.count, 3);
  EXPECT_STREQ(headers.value.sa[0], "FIRST");
  EXPECT_STREQ(headers.value.sa[1], "");
  EXPECT_STREQ(headers.value.sa[2], "third");
}

TEST(Chain, MoreOpaqueHeadersThanBytesAreEmpty) {
  DataRecord record = data_record();
  BinaryFields body(ByteOrder::kBig);
  body.u16(0).u16(0).u32(1).u8(1).u8(0).u8(255).raw("A~");
  BlockReader reader(record.blockette(2000, body.bytes()).bytes(65));
  const SDBlkEntry &headers = entry_of(chained(reader.decode_next(), 1)->contents, "headers");
  ASSERT_EQ(headers.count, 255);
  EXPECT_STREQ(headers.value.sa[0], "A");
  for (int i = 1; i < 255; ++i) EXPECT_STREQ(headers.value.sa[i], "") << i;
}

TEST(Chain, NumberOfBlockettesStatedIsNotLookedAt) {
  DataRecord record = data_record().b100(20).b1000(3, 1, 9);
  record.forced_count = 0;
  BlockReader reader(bytes_of(record));
  EXPECT_EQ(chain_size(reader.decode_next()), 2);
}

// ---- chains that go wrong ----

std::string bad_offset(int offset) {
  return "sdblk_unstuff_dblk: WARNING - Bad blockette offset " + std::to_string(offset) +
         " at D:000001 - rest of the chain ignored.\n";
}

void expect_chain_ended(const DataRecord &record, std::size_t length, int bad, int blockettes) {
  BlockReader reader(record.bytes(length));
  SDBlk *block = reader.next();
  const Outcome outcome = decode(block);
  EXPECT_EQ(outcome.result, 0);
  EXPECT_EQ(outcome.written, bad_offset(bad));
  EXPECT_EQ(outcome.messages, "");
  EXPECT_EQ(chain_size(block), blockettes);
  EXPECT_EQ(countarr(block->contents), 15);
}

TEST(BadChain, FirstOffsetOutsideTheRecordIsIgnored) {
  for (const unsigned offset : {509U, 512U, 513U, 65535U}) {
    DataRecord record = data_record();
    record.forced_first_offset = offset;
    expect_chain_ended(record, kRecordLength, static_cast<int>(offset), 0);
  }
}

TEST(BadChain, NextOffsetOutsideTheRecordEndsIt) {
  const std::string body(4, '\0');
  expect_chain_ended(data_record().b100(20).blockette(1002, body, 510), kRecordLength, 510, 2);
}

TEST(BadChain, LastFourBytesOfTheRecordAreABlockette) {
  DataRecord record = data_record();
  record.forced_first_offset = 508;
  BlockReader reader(bytes_of(record));
  SDBlk *block = reader.next();
  EXPECT_EQ(decode(block).written, "");
  ASSERT_EQ(chain_size(block), 1);
  EXPECT_EQ(chained(block, 1)->blockette_type, 0);
}

TEST(BadChain, OffsetOfItselfEndsIt) {
  expect_chain_ended(data_record().blockette(1002, "abcd", 48), kRecordLength, 48, 1);
}

TEST(BadChain, OffsetOfAnEarlierBlocketteEndsIt) {
  expect_chain_ended(
      data_record().blockette(1002, "abcd").blockette(1002, "abcd").blockette(1002, "abcd", 56),
      kRecordLength, 56, 3);
}

TEST(BadChain, WayBackToANewBlocketteIsFollowed) {
  // From 64 back to 56 and 48, where the chain ends.
  DataRecord record =
      data_record().blockette(100, "abcd", 0).blockette(200, "abcd", 48).blockette(300, "abcd", 56);
  record.forced_first_offset = 64;
  BlockReader reader(bytes_of(record));
  SDBlk *block = reader.next();
  EXPECT_EQ(decode(block).written, "");
  ASSERT_EQ(chain_size(block), 3);
  EXPECT_EQ(chained(block, 1)->blockette_type, 300);
  EXPECT_EQ(chained(block, 1)->blockette_length, -8);
  EXPECT_EQ(chained(block, 2)->blockette_type, 200);
  EXPECT_EQ(chained(block, 3)->blockette_type, 100);
}

TEST(BadChain, WayBackIntoALoopEndsIt) {
  DataRecord record = data_record()
                          .blockette(1002, "abcd", 64)
                          .blockette(1002, "abcd", 48)
                          .blockette(1002, "abcd", 56);
  record.forced_first_offset = 56;
  expect_chain_ended(record, kRecordLength, 56, 3);
}

TEST(BadChain, OffsetInsideTheFixedSectionIsFollowed) {
  // At 8 stands "DYNG": type 0x4459, next offset 0x4E47.
  DataRecord record = data_record();
  record.forced_first_offset = 8;
  BlockReader reader(bytes_of(record));
  SDBlk *block = reader.next();
  EXPECT_EQ(decode(block).written, bad_offset(0x4E47));
  ASSERT_EQ(chain_size(block), 1);
  EXPECT_EQ(chained(block, 1)->blockette_type, 0x4459);
  EXPECT_EQ(chained(block, 1)->blockette_length, 0x4E47 - 8);
}

DataRecord long_chain(int size) {
  DataRecord record = data_record();
  record.forced_count = 255;
  for (int i = 0; i < size; ++i) record.blockette(1002, "");
  return record;
}

TEST(BadChain, Of1024BlockettesIsWhole) {
  BlockReader reader(long_chain(1024).bytes(8192));
  SDBlk *block = reader.next();
  EXPECT_EQ(decode(block).written, "");
  EXPECT_EQ(chain_size(block), 1024);
}

TEST(BadChain, EndsAfter1024Blockettes) {
  expect_chain_ended(long_chain(1025), 8192, 48 + 4 * 1024, 1024);
}

TEST(BadChain, ReadingGoesOn) {
  VolumeWriter writer(kRecordLength);
  writer.data(data_record().blockette(1002, "abcd", 48)).data(data_record().b1000(3, 1, 9));
  BlockReader reader(writer.bytes(), kRecordLength);
  EXPECT_EQ(decode(reader.next()).written, bad_offset(48));
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(block->logical_sequence, 2);
  EXPECT_EQ(block->blockette_length, 512);
}

// ---- records cut by the end of the image ----

TEST(CutRecord, HasTheFieldsThatBegin) {
  constexpr std::array<std::size_t, 15> kOffsets = {8,  13, 15, 18, 20, 30, 32, 34,
                                                    36, 37, 38, 39, 40, 44, 46};
  const std::string whole = bytes_of(data_record());
  for (std::size_t size = 10; size <= 48; ++size) {
    BlockReader reader(whole.substr(0, size));
    SDBlk *block = reader.next();
    const Outcome outcome = decode(block);
    long fields = 0;
    for (const std::size_t offset : kOffsets) fields += offset < size ? 1 : 0;
    EXPECT_EQ(countarr(block->contents), fields) << size;
    EXPECT_EQ(outcome.written, "") << size;
    if (size > 46) {
      EXPECT_EQ(outcome.result, 0) << size;
      continue;
    }
    EXPECT_EQ(outcome.result, -1) << size;
    EXPECT_EQ(outcome.messages,
              "sdblk_getv: entry 'blk_offset' not defined.\n"
              "sdblk_unstuff_dblk: sdblk_getv (FIXED->blk_offset) error.\n"
              "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at D:000001\n")
        << size;
  }
}

TEST(CutRecord, MissingBytesAreZero) {
  DataRecord record = data_record();
  record.samples = 0x0102;
  BlockReader reader(bytes_of(record).substr(0, 31));
  SDBlk *block = reader.next();
  EXPECT_EQ(decode(block).result, -1);
  EXPECT_EQ(integer_of(block->contents, "nsamp"), 0x0100);
}

TEST(CutRecord, MissingBytesOfTheDayCountAsZero) {
  // Cut after the first byte of the day: 0x01 is 256 big-endian, 1 little-endian; the year
  // decides.
  std::string bytes = bytes_of(data_record(ByteOrder::kLittle));
  bytes[22] = 1;
  BlockReader reader(bytes.substr(0, 23));
  SDBlk *block = reader.next();
  EXPECT_EQ(decode(block).result, -1);
  EXPECT_EQ(block->big_endian, 0);
}

TEST(CutRecord, ChainEndsWithTheImage) {
  const std::string whole = bytes_of(data_record().b1000(3, 1, 9));
  for (std::size_t size = 48; size <= 52; ++size) {
    BlockReader reader(whole.substr(0, size));
    SDBlk *block = reader.next();
    const Outcome outcome = decode(block);
    if (size < 52) {
      EXPECT_EQ(outcome.result, 0) << size;
      EXPECT_EQ(outcome.written, bad_offset(48)) << size;
      EXPECT_EQ(block->next, nullptr) << size;
    }
  }
}

TEST(CutRecord, DataOnlyBlocketteWithoutItsLengthFails) {
  const std::string whole = bytes_of(data_record().b1000(3, 1, 9));
  for (std::size_t size = 52; size <= 54; ++size) {
    BlockReader reader(whole.substr(0, size));
    SDBlk *block = reader.next();
    const Outcome outcome = decode(block);
    EXPECT_EQ(outcome.result, -1) << size;
    EXPECT_EQ(outcome.messages,
              "sdblk_getv: entry 'dlenp' not defined.\n"
              "sdblk_unstuff_dblk: sdblk_getv (B1000->dlenp) error.\n"
              "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at D:000001\n")
        << size;
    EXPECT_EQ(chain_size(block), 1) << "what was built stays";
    EXPECT_EQ(countarr(block->next->contents), static_cast<long>(size) - 52);
  }
  BlockReader reader(whole.substr(0, 55));
  EXPECT_EQ(reader.decode_next()->blockette_length, 512);
}

TEST(CutRecord, WithoutDataOffsetFailsWhereAProgramSetTheBlocketteOffset) {
  SDBlkFieldDef def = {};
  def.kind = SDBLK_INT;
  auto *entry = static_cast<SDBlkEntry *>(std::calloc(1, sizeof(SDBlkEntry)));
  *entry = {&def, nullptr, 1, {}, 0, 0};
  BlockReader reader(bytes_of(data_record()).substr(0, 44));
  SDBlk *block = reader.next();
  setarr(block->contents, "blk_offset", entry);
  const Outcome outcome = decode(block);
  EXPECT_EQ(outcome.result, -1);
  EXPECT_EQ(outcome.messages,
            "sdblk_getv: entry 'data_offset' not defined.\n"
            "sdblk_unstuff_dblk: sdblk_getv (FIXED->data_offset) error.\n"
            "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at D:000001\n");
  sdblk_clear(block);
}

TEST(CutRecord, ShorterThanItsHeaderHasNoFields) {
  // Read with a length of 7, at which a header stands again.
  BlockReader reader("000001D000002D " + std::string(64, ' '), 7);
  SDBlk *block = reader.next();
  const Outcome outcome = decode(block);
  EXPECT_EQ(block->logical_length, 7);
  EXPECT_EQ(outcome.result, -1);
  EXPECT_EQ(outcome.messages,
            "sdblk_getv: entry 'blk_offset' not defined.\n"
            "sdblk_unstuff_dblk: sdblk_getv (FIXED->blk_offset) error.\n"
            "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at D:000001\n");
  EXPECT_EQ(countarr(block->contents), 0);
}

TEST(CutRecord, EndsWithTheLengthInForceToo) {
  // A record of 64 bytes before others: what lies after its end is not read.
  VolumeWriter writer(64);
  writer.data(data_record().b100(20).blockette(2000, ""));
  writer.raw_record("000002D " + std::string(56, '\x7F'));
  BlockReader reader(writer.bytes(), 64);
  const SDBlk *block = reader.decode_next();
  ASSERT_EQ(chain_size(block), 2);
  EXPECT_EQ(block->logical_length, 64);
  EXPECT_EQ(countarr(chained(block, 2)->contents), 0);
}

// ---- abbreviations in a chain ----

TEST(ChainedAbbreviation, KeepsTheCurrentBlock) {
  VolumeWriter writer(kRecordLength);
  writer.control('S', ControlBlockette(51).var("").var(""));
  writer.data(data_record().blockette(34, "003M/S~Velocity~"));
  BlockReader reader(writer.bytes(), kRecordLength);
  reader.decode_next();
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(text_of(chained(block, 1)->contents, "name"), "M/S");
  const auto *kept = static_cast<const SDBlk *>(getarr(reader.vol()->abbrs, "uid:3"));
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->next, nullptr);
}

TEST(ChainedAbbreviation, WithoutACurrentBlockFails) {
  BlockReader reader(bytes_of(data_record().blockette(34, "003M/S~Velocity~")));
  const Outcome outcome = decode(reader.next());
  EXPECT_EQ(outcome.result, -1);
  EXPECT_EQ(outcome.messages,
            "sdblk_unstuff_sblk: sdblk_copy(abbr_ref) error.\n"
            "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at D:000001\n");
}

TEST(ChainedAbbreviation, WithNondigitsEndsTheProgram) {
  BlockReader reader(bytes_of(data_record().blockette(34, "x03M/S~Velocity~")));
  SDBlk *block = reader.next();
  const LogCapture log;
  const FatalHook hook;
  EXPECT_THROW(sdblk_unstuffblk(block), Fatal);
  EXPECT_EQ(log.text(),
            "SEEDERROR - Non-digit characters in integer field B0000:uid = 'x03' - program "
            "exiting.\n");
}

// ---- decoding again, and memory ----

TEST(DataRecordDecoding, TwiceGivesTheSame) {
  BlockReader reader(bytes_of(data_record().b100(20).b1000(3, 1, 9)));
  SDBlk *block = reader.decode_next();
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(countarr(block->contents), 15);
  ASSERT_EQ(chain_size(block), 2);
  EXPECT_EQ(real_of(chained(block, 1)->contents, "samprate"), 20.0);
}

TEST(DataRecordDecoding, ChainOfTheRecordBeforeIsGone) {
  VolumeWriter writer(kRecordLength);
  writer.data(data_record().b100(20).b1001(1, 2, 3)).data(data_record().b405({7}));
  writer.data(data_record());
  BlockReader reader(writer.bytes(), kRecordLength);
  EXPECT_EQ(chain_size(reader.decode_next()), 2);
  const SDBlk *block = reader.decode_next();
  ASSERT_EQ(chain_size(block), 1);
  EXPECT_EQ(countarr(chained(block, 1)->contents), 1);
  EXPECT_EQ(integer_of(chained(block, 1)->contents, "delay"), 7);
  EXPECT_EQ(chain_size(reader.decode_next()), 0);
}

TEST(DataRecordDecoding, SteadyStateTakesNoMemory) {
  VolumeWriter writer(kRecordLength);
  Opaque opaque;
  opaque.headers = {"FIRST", "SECOND"};
  for (int i = 0; i < 40; ++i) {
    DataRecord record = data_record(i % 2 == 0 ? ByteOrder::kBig : ByteOrder::kLittle);
    record.b100(20).b1001(1, 2, 3).b2000(opaque).b1000(3, 1, 9);
    writer.data(record);
  }
  BlockReader reader(writer.bytes(), kRecordLength);
  for (int i = 0; i < 3; ++i) reader.decode_next();
  const FailingMemory memory(0);
  for (int i = 3; i < 40; ++i) ASSERT_EQ(chain_size(reader.decode_next()), 4);
  EXPECT_EQ(FailingMemory::count(), 0);
}

TEST(DataRecordDecoding, FailedAllocationsAreReported) {
  Arena::one_piece_per_chunk = true;
  const std::string bytes = bytes_of(data_record().b100(20).b1000(3, 1, 9));
  const std::string block_message =
      "sdblk_unstuff_dblk: malloc(blockette," + std::to_string(block_size()) + ") error for B";
  int blocks_failed = 0;
  for (long n = 1;; ++n) {
    BlockReader reader(bytes);
    SDBlk *block = reader.next();
    LogCapture log;
    int result = 0;
    bool failed = false;
    {
      const FailingMemory memory(n);
      result = sdblk_unstuffblk(block);
      failed = FailingMemory::failed();
    }
    if (!failed) {
      EXPECT_EQ(result, 0);
      break;
    }
    EXPECT_EQ(result, -1) << "allocation " << n;
    const std::string messages = log.registered();
    EXPECT_NE(messages.find(" error for B0099 at D:000001\n"), std::string::npos) << messages;
    EXPECT_NE(messages.find("    Cannot allocate memory\n"), std::string::npos) << messages;
    for (const char *type : {"0100", "1000"}) {
      if (messages.starts_with(block_message + type + " at D:000001\n")) ++blocks_failed;
    }
    EXPECT_EQ(sdblk_unstuffblk(block), 0) << "allocation " << n << ", decoded again";
    EXPECT_EQ(chain_size(block), 2) << "allocation " << n << ", decoded again";
  }
  Arena::one_piece_per_chunk = false;
  EXPECT_GE(blocks_failed, 2) << "each of the two blocks";
}

}  // namespace
