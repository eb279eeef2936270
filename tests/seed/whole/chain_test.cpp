#include "seed/whole/chain.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/util/volume_writer.h"

namespace {

using tarvik::byte_order_of;
using tarvik::Chain;
using tarvik::Link;
using tarvik::RecordBytes;
using volume::BinaryFields;
using volume::ByteOrder;
using volume::DataRecord;

RecordBytes bytes_of(const std::string &record) {
  return {record.data(), static_cast<std::int64_t>(record.size())};
}

void put16(std::string *record, std::size_t at, unsigned value) {
  record->replace(at, 2, BinaryFields(ByteOrder::kBig).u16(value).bytes());
}

// ---- byte order ----

// The parts of a start time that are looked at, as they read with the high byte first.
struct Start {
  unsigned day;
  unsigned year;
  unsigned ten_thousandths;
};
// "big", "little", or "big?" where nothing decides.
std::string order_of(const Start &start) {
  std::string record(48, '\0');
  put16(&record, 20, start.year);
  put16(&record, 22, start.day);
  put16(&record, 28, start.ten_thousandths);
  const tarvik::ByteOrder order = byte_order_of(bytes_of(record));
  return std::string(order.big_endian ? "big" : "little") + (order.deduced ? "" : "?");
}

// Each of these numbers makes sense in both orders or in none.
constexpr unsigned kDayInBoth = 0x0101;  // 257
constexpr unsigned kDayInNone = 0x0000;
constexpr unsigned kYearInBoth = 0x0808;  // 2056
constexpr unsigned kYearInNone = 0xffff;
constexpr unsigned kRestInBoth = 0x0000;
constexpr unsigned kRestInNone = 0xffff;

TEST(ByteOrderOf, DayOfTheYearDecidesFirst) {
  // 2021 and 5 with the low byte first do not count then.
  EXPECT_EQ(order_of({75, 0xe507, 0x0500}), "big");
  EXPECT_EQ(order_of({75 << 8, 2021, 5}), "little");
  EXPECT_EQ(order_of({366, kYearInBoth, kRestInBoth}), "big");
  EXPECT_EQ(order_of({0x6e01, kYearInBoth, kRestInBoth}), "little");  // 366
}

TEST(ByteOrderOf, ThenTheYear) {
  for (const unsigned day : {kDayInBoth, kDayInNone, 0x6f01U}) {  // the last is 367, or 28417
    EXPECT_EQ(order_of({day, 1900, 0xffff}), "big") << day;
    EXPECT_EQ(order_of({day, 2100, 0xffff}), "big") << day;
    EXPECT_EQ(order_of({day, 0x6c07, 0xffff}), "little") << day;  // 1900
    EXPECT_EQ(order_of({day, 0x3408, 0xffff}), "little") << day;  // 2100
  }
}

TEST(ByteOrderOf, ThenTheTenThousandths) {
  for (const unsigned year : {kYearInBoth, kYearInNone, 1899U, 0x3508U}) {  // the last is 2101
    EXPECT_EQ(order_of({kDayInBoth, year, 0x1027}), "big") << year;         // or 10000
    EXPECT_EQ(order_of({kDayInBoth, year, 0x2710}), "little") << year;      // or 4135
  }
}

TEST(ByteOrderOf, HighByteIsFirstWhereNothingDecides) {
  EXPECT_EQ(order_of({kDayInBoth, kYearInBoth, kRestInBoth}), "big?");
  EXPECT_EQ(order_of({kDayInNone, kYearInNone, kRestInNone}), "big?");
  EXPECT_EQ(order_of({kDayInNone, kYearInNone, 9999}), "big?");  // or 3879
}

// ---- the chain ----

using Places = std::vector<std::pair<int, int>>;  // type and offset

struct Followed {
  Places places;
  bool ended_well;
  int refused;
};
Followed follow(Chain *chain, const std::string &record, bool big_endian = true) {
  // A copy of exactly these bytes, so that the sanitizers see a step past them.
  const std::vector<char> exact(record.begin(), record.end());
  chain->start({exact.data(), static_cast<std::int64_t>(exact.size())}, big_endian);
  Followed followed = {};
  Link link = {};
  while (chain->next(&link)) followed.places.emplace_back(link.type, link.offset);
  followed.ended_well = chain->ended_well();
  followed.refused = chain->refused();
  return followed;
}
Followed follow(const std::string &record, bool big_endian = true) {
  Chain chain;
  return follow(&chain, record, big_endian);
}

// A record of zeros whose chain starts at an offset.
std::string record_with_chain(std::size_t length, unsigned first) {
  std::string record(length, '\0');
  put16(&record, 46, first);
  return record;
}
void put_blockette(std::string *record, std::size_t at, unsigned type, unsigned next) {
  put16(record, at, type);
  put16(record, at + 2, next);
}

TEST(Chain, RunsFromTheOffsetAtByte46ToAnOffsetOfZero) {
  const std::string record = DataRecord{}.b1000(3, 1, 7).b100(20).bytes(128);
  const Followed followed = follow(record);
  EXPECT_EQ(followed.places, (Places{{1000, 48}, {100, 56}}));
  EXPECT_TRUE(followed.ended_well);
}

TEST(Chain, IsReadInTheByteOrderGiven) {
  const std::string record =
      DataRecord{.order = ByteOrder::kLittle}.b1000(3, 0, 7).b100(20).bytes(128);
  EXPECT_EQ(follow(record, false).places, (Places{{1000, 48}, {100, 56}}));
}

TEST(Chain, OffsetOfZeroIsNoChain) {
  const Followed followed = follow(record_with_chain(64, 0));
  EXPECT_TRUE(followed.places.empty());
  EXPECT_TRUE(followed.ended_well);
}

TEST(Chain, MayRunBackAndLieInTheFixedSection) {
  std::string record = record_with_chain(128, 100);
  put_blockette(&record, 100, 7, 1);
  put_blockette(&record, 1, 8, 50);
  put_blockette(&record, 50, 9, 0);
  const Followed followed = follow(record);
  EXPECT_EQ(followed.places, (Places{{7, 100}, {8, 1}, {9, 50}}));
  EXPECT_TRUE(followed.ended_well);
}

TEST(Chain, FourBytesOfABlocketteMustBeThere) {
  std::string record = record_with_chain(64, 60);
  EXPECT_EQ(follow(record).places, (Places{{0, 60}}));
  put16(&record, 46, 61);
  const Followed followed = follow(record);
  EXPECT_TRUE(followed.places.empty());
  EXPECT_FALSE(followed.ended_well);
  EXPECT_EQ(followed.refused, 61);
}

TEST(Chain, OffsetPastTheRecordIsRefused) {
  std::string record = record_with_chain(64, 48);
  put_blockette(&record, 48, 1000, 65535);
  const Followed followed = follow(record);
  EXPECT_EQ(followed.places, (Places{{1000, 48}}));
  EXPECT_FALSE(followed.ended_well);
  EXPECT_EQ(followed.refused, 65535);
}

TEST(Chain, PlaceIsVisitedOnce) {
  std::string record = record_with_chain(128, 48);
  put_blockette(&record, 48, 1, 100);
  put_blockette(&record, 100, 2, 48);
  const Followed followed = follow(record);
  EXPECT_EQ(followed.places, (Places{{1, 48}, {2, 100}}));
  EXPECT_FALSE(followed.ended_well);
  EXPECT_EQ(followed.refused, 48);
}

// Blockettes one after the other from byte 48 on, the last one ending the chain.
std::string long_chain(unsigned count) {
  std::string record = record_with_chain(48 + 4 * std::size_t{count}, 48);
  for (unsigned i = 0; i < count; ++i) {
    const unsigned at = 48 + 4 * i;
    put_blockette(&record, at, i, i + 1 < count ? at + 4 : 0);
  }
  return record;
}

TEST(Chain, TakesAThousandAndTwentyFour) {
  const Followed whole = follow(long_chain(1024));
  EXPECT_EQ(whole.places.size(), 1024U);
  EXPECT_EQ(whole.places.back(), std::make_pair(1023, 48 + 4 * 1023));
  EXPECT_TRUE(whole.ended_well);
  const Followed more = follow(long_chain(1025));
  EXPECT_EQ(more.places.size(), 1024U);
  EXPECT_FALSE(more.ended_well);
  EXPECT_EQ(more.refused, 48 + 4 * 1024);
}

TEST(Chain, EachRecordStartsAfresh) {
  Chain chain;
  const std::string record = long_chain(1024);
  const Places first = follow(&chain, record).places;
  EXPECT_EQ(follow(&chain, record).places, first);
  EXPECT_EQ(follow(&chain, long_chain(3)).places.size(), 3U);
}

}  // namespace
