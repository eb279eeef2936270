#include "views/segments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/util/volume_writer.h"
#include "tests/views/view_lines.h"

using namespace tarvik;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

namespace {

std::string lines(const VolumeWriter &volume, bool csv = false) {
  ViewOptions options;
  options.csv = csv;
  return lines_of(make_segments_view(options).get(), volume.bytes());
}

// 100 samples, 20 a second: 5 seconds.
DataRecord record(const Time &time = {2021, 75, 6, 15, 52, 6000}) {
  DataRecord data = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  data.time = time;
  data.samples = 100;
  data.rate_factor = 20;
  data.rate_multiplier = 1;
  return data;
}

VolumeWriter volume_of(const std::vector<DataRecord> &records) {
  VolumeWriter volume(256);
  for (const DataRecord &one : records) volume.data(one);
  return volume;
}

const std::string kStart =
    R"({"kind":"segment","file":"v","network":"XX","station":"DYNGA","location":"",)"
    R"("channel":"BHZ","quality":"D",)";

TEST(SegmentsView, LineHasEverything) {
  DataRecord data = record();
  data.quality = 'R';
  data.loc = "00";
  EXPECT_EQ(lines(volume_of({data.b1001(100, 50, 7)})),
            R"({"kind":"segment","file":"v","network":"XX","station":"DYNGA","location":"00",)"
            R"("channel":"BHZ","quality":"R","start":"2021-03-16T06:15:52.600050Z",)"
            R"("end":"2021-03-16T06:15:57.550050Z","sample_rate":20,"samples":100,"records":1,)"
            R"("gap":null,"timing_quality":100})"
            "\n");
}

TEST(SegmentsView, RecordsThatFollowOneAnotherAreOneLine) {
  EXPECT_EQ(lines(volume_of({record(), record({2021, 75, 6, 15, 57, 6000}).b1001(80, 0, 0),
                             record({2021, 75, 6, 16, 2, 6000}).b1001(90, 0, 0)})),
            kStart + R"("start":"2021-03-16T06:15:52.600000Z","end":"2021-03-16T06:16:07.550000Z",)"
                     R"("sample_rate":20,"samples":300,"records":3,"gap":null,"timing_quality":80})"
                     "\n");
}

TEST(SegmentsView, GapIsInSecondsBeyondOneSample) {
  EXPECT_EQ(lines(volume_of({record(), record({2021, 75, 6, 16, 0, 1000})})),
            kStart +
                R"("start":"2021-03-16T06:15:52.600000Z","end":"2021-03-16T06:15:57.550000Z",)"
                R"("sample_rate":20,"samples":100,"records":1,"gap":null,"timing_quality":null})"
                "\n" +
                kStart +
                R"("start":"2021-03-16T06:16:00.100000Z","end":"2021-03-16T06:16:05.050000Z",)"
                R"("sample_rate":20,"samples":100,"records":1,"gap":2.5,"timing_quality":null})"
                "\n");
}

std::string gap(const DataRecord &a, const DataRecord &b) {
  const std::vector<std::string> found = split_lines(lines(volume_of({a, b})));
  EXPECT_EQ(found.size(), 2U);
  return between(found.back(), R"("gap":)", ",");
}

TEST(SegmentsView, OverlapIsANegativeGap) {
  EXPECT_EQ(gap(record(), record({2021, 75, 6, 15, 53, 6000})), "-4");
  EXPECT_EQ(gap(record(), record()), "-5");
}

TEST(SegmentsView, GapHasMicroseconds) {
  // Due at 57.6000; half a sample, 0.025 s, and a microsecond more.
  EXPECT_EQ(gap(record(), record({2021, 75, 6, 15, 57, 6250}).b1001(0, 1, 0)), "0.025001");
  EXPECT_EQ(gap(record(), record({2021, 75, 6, 15, 57, 5750}).b1001(0, 255, 0)), "-0.025001");
}

TEST(SegmentsView, HalfASampleIsNoGap) {
  EXPECT_EQ(split_lines(lines(volume_of({record(), record({2021, 75, 6, 15, 57, 6250})}))).size(),
            1U);
  EXPECT_EQ(split_lines(lines(volume_of({record(), record({2021, 75, 6, 15, 57, 5750})}))).size(),
            1U);
}

TEST(SegmentsView, GapIsOneToTheSegmentBeforeInTime) {
  const std::vector<std::string> found = split_lines(
      lines(volume_of({record({2021, 75, 8}), record({2021, 75, 7}), record({2021, 75, 6})})));
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(between(found[0], R"("gap":)", ","), "null");
  EXPECT_EQ(between(found[1], R"("gap":)", ","), "3595");
  EXPECT_EQ(between(found[2], R"("start":)", ","), R"("2021-03-16T08:00:00.000000Z")");
  EXPECT_EQ(between(found[2], R"("gap":)", ","), "3595");
}

TEST(SegmentsView, GapIsOneToTheSegmentBeforeAlsoWhereAnEarlierOneEndsLater) {
  // 60 seconds from 6:00:00 on, 5 from 6:00:10 on, 5 from 6:00:30 on.
  DataRecord minute = record({2021, 75, 6});
  minute.samples = 1200;
  const std::vector<std::string> found = split_lines(
      lines(volume_of({minute, record({2021, 75, 6, 0, 10}), record({2021, 75, 6, 0, 30})})));
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(between(found[1], R"("gap":)", ","), "-50");
  EXPECT_EQ(between(found[2], R"("gap":)", ","), "15");
}

TEST(SegmentsView, GapIsReckonedAtTheRateOfTheSegmentBefore) {
  // One sample a second, four of them: the next one is due 4 seconds after the first.
  DataRecord slow = record({2021, 75, 6});
  slow.rate_factor = 1;
  slow.samples = 4;
  EXPECT_EQ(gap(slow, record({2021, 75, 6, 0, 7, 5000})), "3.5");
}

TEST(SegmentsView, CorrectionMovesTheStart) {
  DataRecord late = record();
  late.time_correction = 5;
  EXPECT_NE(lines(volume_of({late})).find(R"("start":"2021-03-16T06:15:52.600500Z")"),
            std::string::npos);
  late.activity_flags = 2;
  EXPECT_NE(lines(volume_of({late})).find(R"("start":"2021-03-16T06:15:52.600000Z")"),
            std::string::npos);
}

TEST(SegmentsView, RateIsThatOfTheFirstRecord) {
  DataRecord slow = record();
  slow.rate_factor = -10;
  slow.rate_multiplier = -4;
  slow.samples = 2;
  EXPECT_NE(lines(volume_of({slow}))
                .find(R"("end":"2021-03-16T06:16:32.600000Z",)"
                      R"("sample_rate":0.025,)"),
            std::string::npos);
  EXPECT_NE(lines(volume_of({record().b100(19.999F), record({2021, 75, 6, 15, 57, 6000})}))
                .find(R"("sample_rate":19.999000549316406,"samples":200,)"),
            std::string::npos);
}

TEST(SegmentsView, RecordsWithoutSamplesOrRateHaveNoLine) {
  DataRecord empty = record();
  empty.samples = 0;
  DataRecord still = record();
  still.rate_factor = 0;
  EXPECT_EQ(lines(volume_of({empty, still})), "");
  EXPECT_EQ(lines(VolumeWriter(256).control('S', ControlBlockette(77))), "");
}

TEST(SegmentsView, ChannelsInTurnHaveALineEachByTheirCodes) {
  std::vector<DataRecord> records;
  for (const int second : {52, 57}) {
    for (const char *station : {"Z", "\xC3\xA9", "AB", "A"}) {
      records.push_back(record({2021, 75, 6, 15, second, 6000}));
      records.back().sta = station;
    }
  }
  const std::vector<std::string> found = split_lines(lines(volume_of(records)));
  ASSERT_EQ(found.size(), 4U);
  EXPECT_EQ(between(found[0], R"("station":)", ","), R"("A")");
  EXPECT_EQ(between(found[1], R"("station":)", ","), R"("AB")");
  EXPECT_EQ(between(found[2], R"("station":)", ","), R"("Z")");
  EXPECT_EQ(between(found[3], R"("station":)", ","), "\"\xC3\xA9\"");
  for (const std::string &one : found) EXPECT_NE(one.find(R"("records":2,)"), std::string::npos);
}

TEST(SegmentsView, QualitiesOfAChannelAreApart) {
  DataRecord better = record({2021, 75, 6, 15, 57, 6000});
  better.quality = 'Q';
  const std::vector<std::string> found = split_lines(lines(volume_of({better, record()})));
  ASSERT_EQ(found.size(), 2U);
  EXPECT_NE(found[0].find(R"("quality":"D",)"), std::string::npos);
  EXPECT_NE(found[1].find(R"("quality":"Q",)"), std::string::npos);
  EXPECT_NE(found[1].find(R"("gap":null)"), std::string::npos);
}

TEST(SegmentsView, CsvHasTheValues) {
  EXPECT_EQ(lines(volume_of({record(), record({2021, 75, 6, 16, 0, 1000}).b1001(99, 0, 0)}), true),
            "v,XX,DYNGA,,BHZ,D,2021-03-16T06:15:52.600000Z,2021-03-16T06:15:57.550000Z,20,100,1,,\n"
            "v,XX,DYNGA,,BHZ,D,2021-03-16T06:16:00.100000Z,2021-03-16T06:16:05.050000Z,20,100,1,"
            "2.5,99\n");
}

TEST(SegmentsHeading, HasTheKeys) {
  EXPECT_EQ(segments_heading(),
            "file,network,station,location,channel,quality,start,end,sample_rate,samples,records,"
            "gap,timing_quality");
}

TEST(SegmentsView, NextFileStartsAnew) {
  const auto view = make_segments_view({});
  const std::string first = lines_of(view.get(), volume_of({record()}).bytes());
  EXPECT_EQ(lines_of(view.get(), volume_of({record()}).bytes()), first);
  EXPECT_EQ(lines_of(view.get(), ""), "");
}

}  // namespace
