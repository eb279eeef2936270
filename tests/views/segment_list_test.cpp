#include "views/segment_list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace tarvik;

namespace {

ChannelId channel(const std::string &code, char quality = 'D') {
  ChannelId id;
  id.network = {'X', 'X'};
  std::memcpy(id.channel.data(), code.data(), code.size());
  id.quality = quality;
  return id;
}

// A record of 100 samples, 20 a second: 5 seconds.
DataRecord record(std::int64_t start, double rate = 20, std::int64_t samples = 100) {
  return {channel("BHZ"), true, start, samples, rate, kNoQuality};
}
constexpr std::int64_t kNext = 5000000;

// The segments of the one channel of records in the order of a file.
std::vector<Segment> segments(const std::vector<DataRecord> &records) {
  SegmentList list;
  std::int64_t offset = 0;
  for (const DataRecord &one : records) {
    list.add(one, offset);
    offset += 512;
  }
  list.finish();
  EXPECT_EQ(list.channels().size(), 1U);
  return list.channels().front().segments;
}
bool are_one(const DataRecord &a, const DataRecord &b) { return segments({a, b}).size() == 1; }

// ---- what continues ----

TEST(SegmentList, RecordThatIsDueContinues) {
  const std::vector<Segment> found = segments({record(0), record(kNext), record(2 * kNext)});
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].start, 0);
  EXPECT_EQ(found[0].end(), 14950000);
  EXPECT_EQ(found[0].samples, 300);
  EXPECT_EQ(found[0].records, 3);
}

TEST(SegmentList, HalfASampleLateContinuesAndNoMore) {
  EXPECT_TRUE(are_one(record(0), record(kNext + 25000)));
  EXPECT_FALSE(are_one(record(0), record(kNext + 25001)));
}

TEST(SegmentList, HalfASampleEarlyContinuesAndNoMore) {
  EXPECT_TRUE(are_one(record(0), record(kNext - 25000)));
  EXPECT_FALSE(are_one(record(0), record(kNext - 25001)));
}

TEST(SegmentList, HalfASampleCanBeAFraction) {
  // At 3 samples a second a sample takes 333333.33 microseconds, half of it 166666.67.
  EXPECT_TRUE(are_one(record(0, 3, 1), record(333333 + 166666, 3, 1)));
  EXPECT_FALSE(are_one(record(0, 3, 1), record(333333 + 166667, 3, 1)));
}

TEST(SegmentList, HalfASampleIsOneOfTheRecordBefore) {
  // 10000 a second: half a sample takes 50 microseconds; one at 10000.9 49.9955.
  EXPECT_TRUE(are_one(record(0, 10000, 100), record(10050, 10000.9, 100)));
  EXPECT_FALSE(are_one(record(0, 10000.9, 100), record(9999 + 50, 10000, 100)));
}

TEST(SegmentList, DurationIsRoundedToTheNearestMicrosecond) {
  EXPECT_EQ(segments({record(0, 3, 2)})[0].next(), 666667);
  EXPECT_EQ(segments({record(0, 3, 2)})[0].end(), 333333);
  // 7812.5 microseconds a sample
  EXPECT_EQ(segments({record(0, 128, 1)})[0].next(), 7813);
  EXPECT_EQ(segments({record(0, 128, 3)})[0].next(), 23438);
  EXPECT_EQ(segments({record(-10000, 128, 1)})[0].next(), -2187);
}

TEST(SegmentList, RateMayDifferByLessThanOnePartIn10000) {
  EXPECT_TRUE(are_one(record(0, 10000), record(10000, 10000.5)));
  EXPECT_TRUE(are_one(record(0, 10000), record(10000, 9999.5)));
  EXPECT_FALSE(are_one(record(0, 10000), record(10000, 10001)));
  EXPECT_FALSE(are_one(record(0, 10000), record(10000, 9999)));
}

TEST(SegmentList, RatesDifferInPartsOfTheOneBefore) {
  EXPECT_TRUE(are_one(record(0, 10001), record(9999, 10000)));
  EXPECT_FALSE(are_one(record(0, 10000), record(10000, 10001)));
}

TEST(SegmentList, RateIsComparedWithThatOfTheLastRecord) {
  const std::vector<Segment> found =
      segments({record(0, 10000), record(10000, 10000.9), record(19999, 10001.8)});
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].rate, 10000);
  EXPECT_EQ(found[0].last_rate, 10001.8);
  EXPECT_FALSE(are_one(record(0, 10000), record(10000, 10001.8)));
}

TEST(SegmentList, TimeIsReckonedFromTheLastRecord) {
  // Each one is 20 ms late: 40 ms in all are no matter.
  EXPECT_EQ(segments({record(0), record(kNext + 20000), record(2 * kNext + 40000)}).size(), 1U);
}

// ---- what is in no segment ----

TEST(SegmentList, RecordWithoutSamplesRateOrStartIsInNone) {
  SegmentList list;
  DataRecord timeless = record(0);
  timeless.has_start = false;
  list.add(timeless, 0);
  list.add(record(0, 0), 512);
  list.add(record(0, 20, 0), 1024);
  list.finish();
  EXPECT_TRUE(list.channels().empty());
}

TEST(SegmentList, RecordWithoutSamplesBreaksNothing) {
  EXPECT_EQ(segments({record(0), record(kNext, 20, 0), record(kNext)}).size(), 1U);
}

// ---- gaps, overlaps, order ----

TEST(SegmentList, GapOpensANewSegment) {
  const std::vector<Segment> found = segments({record(0), record(kNext + 1000000)});
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].end(), 4950000);
  EXPECT_EQ(found[1].start, 6000000);
}

TEST(SegmentList, OverlapOpensANewSegment) {
  const std::vector<Segment> found = segments({record(0), record(1000000)});
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].end(), 4950000);
  EXPECT_EQ(found[1].start, 1000000);
}

TEST(SegmentList, RecordsOutOfOrderAreSortedAndJoined) {
  const std::vector<Segment> found = segments({record(2 * kNext), record(kNext), record(0)});
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].start, 0);
  EXPECT_EQ(found[0].end(), 14950000);
  EXPECT_EQ(found[0].samples, 300);
  EXPECT_EQ(found[0].records, 3);
}

TEST(SegmentList, RecordsOutOfOrderAreJoinedWithinHalfASampleAndNoMore) {
  EXPECT_TRUE(are_one(record(kNext + 25000), record(0)));
  EXPECT_FALSE(are_one(record(kNext + 25001), record(0)));
  EXPECT_TRUE(are_one(record(kNext - 25000), record(0)));
  EXPECT_FALSE(are_one(record(kNext - 25001), record(0)));
}

TEST(SegmentList, RateOfRecordsOutOfOrderIsThatOfTheFirstInTime) {
  const std::vector<Segment> found = segments({record(10000, 10000.5), record(0, 10000)});
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].rate, 10000);
}

TEST(SegmentList, RecordContinuesTheOpenSegmentOnly) {
  // The third one continues the first, but the second has opened a segment.
  SegmentList list;
  list.add(record(0), 0);
  list.add(record(60000000), 512);
  list.add(record(kNext), 1024);
  EXPECT_EQ(list.channels().front().segments.size(), 3U);
  list.finish();
  const std::vector<Segment> &found = list.channels().front().segments;
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].records, 2);
  EXPECT_EQ(found[1].start, 60000000);
}

TEST(SegmentList, SameStartsAreInTheOrderOfTheFile) {
  const std::vector<Segment> found = segments({record(0, 20, 10), record(0, 20, 20)});
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].samples, 10);
  EXPECT_EQ(found[0].offset, 0);
  EXPECT_EQ(found[1].samples, 20);
  EXPECT_EQ(found[1].offset, 512);
}

TEST(SegmentList, OverlappingSegmentBetweenTwoKeepsThemApart) {
  // By start: 0 to 5 s, 1 to 6 s, 5 to 10 s.  Only neighbours are joined.
  EXPECT_EQ(segments({record(kNext), record(1000000), record(0)}).size(), 3U);
}

// ---- channels ----

TEST(SegmentList, ChannelsInTurnHaveSegmentsOfTheirOwn) {
  SegmentList list;
  for (int i = 0; i < 10; ++i) {
    for (const char *code : {"BHZ", "BHN", "BHE"}) {
      DataRecord one = record(i * kNext);
      one.id = channel(code);
      list.add(one, i);
    }
  }
  list.finish();
  ASSERT_EQ(list.channels().size(), 3U);
  for (const SegmentList::Channel &one : list.channels()) {
    ASSERT_EQ(one.segments.size(), 1U);
    EXPECT_EQ(one.segments[0].records, 10);
  }
}

TEST(SegmentList, ChannelsAreInTheOrderOfTheirCodesAndQuality) {
  SegmentList list;
  const std::vector<ChannelId> ids = {channel("\xFF"), channel("BHZ", 'R'), channel("BHZ", 'D'),
                                      channel("BH"), channel("~")};
  for (const ChannelId &id : ids) {
    DataRecord one = record(0);
    one.id = id;
    list.add(one, 0);
  }
  list.finish();
  ASSERT_EQ(list.channels().size(), 5U);
  EXPECT_EQ(list.channels()[0].id, ids[3]);
  EXPECT_EQ(list.channels()[1].id, ids[2]);
  EXPECT_EQ(list.channels()[2].id, ids[1]);
  EXPECT_EQ(list.channels()[3].id, ids[4]);
  EXPECT_EQ(list.channels()[4].id, ids[0]);
}

TEST(SegmentList, AnyCodeThatDiffersIsAnotherChannel) {
  SegmentList list;
  list.add(record(0), 0);
  std::vector<ChannelId> others(5, channel("BHZ"));
  others[0].network = {'X', 'Y'};
  others[1].station = {'A'};
  others[2].location = {'0'};
  others[3].channel = {'B', 'H', 'N'};
  others[4].quality = 'M';
  for (const ChannelId &id : others) {
    DataRecord one = record(kNext);
    one.id = id;
    list.add(one, 0);
  }
  list.finish();
  EXPECT_EQ(list.channels().size(), 6U);
}

TEST(SegmentList, ClearForgetsTheFileBefore) {
  SegmentList list;
  list.add(record(0), 0);
  list.finish();
  list.clear();
  EXPECT_TRUE(list.channels().empty());
  list.add(record(kNext), 0);
  list.finish();
  ASSERT_EQ(list.channels().size(), 1U);
  EXPECT_EQ(list.channels()[0].segments[0].start, kNext);
}

// ---- timing quality ----

std::int32_t quality(std::int32_t a, std::int32_t b) {
  DataRecord first = record(0);
  first.timing_quality = a;
  DataRecord second = record(kNext);
  second.timing_quality = b;
  return segments({first, second})[0].timing_quality;
}

TEST(SegmentList, TimingQualityIsTheLowestOfTheRecordsThatHaveOne) {
  EXPECT_EQ(quality(90, 30), 30);
  EXPECT_EQ(quality(30, 90), 30);
  EXPECT_EQ(quality(kNoQuality, 90), 90);
  EXPECT_EQ(quality(0, kNoQuality), 0);
  EXPECT_EQ(quality(kNoQuality, kNoQuality), kNoQuality);
}

}  // namespace
