#include "views/volumes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"
#include "tests/views/view_lines.h"

using namespace tarvik;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

namespace {

struct Given {
  bool csv = false;
  bool spooled = false;
  std::int32_t record_length = 256;
};

// The line of a file whose last change is said in seconds and nanoseconds.
std::string line(std::string_view bytes, const Given &given = {}) {
  const command::ScratchDirectory scratch;
  Source source;
  source.name = "v";
  source.path = scratch.file("v", bytes);
  source.spooled = given.spooled;
  const timespec time = {1615875352, 600000007};
  const timespec times[] = {time, time};
  if (utimensat(AT_FDCWD, source.path.c_str(), times, 0) != 0) throw std::runtime_error("no time");
  ViewOptions options;
  options.csv = given.csv;
  options.record_length = given.record_length;
  TextSink sink;
  LineBuffer lines(&sink);
  const auto view = make_volumes_view(options);
  const Outcome outcome = view->read(source, &lines);
  if (outcome == Outcome::unreadable) throw std::runtime_error(view->error());
  lines.flush();
  return sink.text();
}
std::string line(const VolumeWriter &volume) { return line(volume.bytes()); }

// The value of a key that another one follows.
std::string value(const std::string &line, const std::string &key) {
  const std::string rest = between(line, '"' + key + "\":", "\n");
  return rest.substr(0, rest.find(",\""));
}
std::string value(const VolumeWriter &volume, const std::string &key) {
  return value(line(volume), key);
}

// ---- blockettes and records ----

ControlBlockette label(int exponent = 8) {
  return ControlBlockette(10)
      .fixed("02.4", 4)
      .digits(exponent, 2)
      .var(Time{2021, 75})
      .var(Time{2021, 76, 12})
      .var(Time{2021, 80})
      .var("Org")
      .var("A label");
}

ControlBlockette station(const std::string &code, const std::string &network = "XX") {
  return volume::b50({.code = code, .network = network});
}

ControlBlockette channel(std::string_view code, std::string_view location = "") {
  return ControlBlockette(52).fixed(location, 2).fixed(code, 3).digits(0, 4);
}

DataRecord record(const Time &time = {2021, 75, 6, 15, 52, 6000}) {
  DataRecord data = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  data.time = time;
  data.samples = 100;
  data.rate_factor = 20;
  data.rate_multiplier = 1;
  return data;
}

VolumeWriter small() { return VolumeWriter(256); }

// ---- a line ----

TEST(VolumesView, LineHasEverything) {
  VolumeWriter volume = small();
  volume.control('V', label());
  volume.control('S', {station("DYNGA"), channel("BHZ"), ControlBlockette(58).digits(0, 2)});
  volume.data(record()).data(record({2021, 75, 6, 15, 57, 6000}));
  EXPECT_EQ(
      line(volume),
      R"({"kind":"volume","file":"v","bytes":1024,"modified":"2021-03-16T06:15:52.600000007Z",)"
      R"("content":"full","version":"02.4","record_length":256,"label":"A label",)"
      R"("organization":"Org","start":"2021-03-16T00:00:00.0000Z",)"
      R"("end":"2021-03-17T12:00:00.0000Z","stations":1,"channels":1,"epochs":1,"responses":1,)"
      R"("data_start":"2021-03-16T06:15:52.6000Z","data_end":"2021-03-16T06:16:02.5500Z",)"
      R"("data_records":2,"samples":200,"records":4,"blocks":6,"counts":{"U":0,"V":1,"A":0,"S":3,)"
      R"("T":0,"D":2,"R":0,"Q":0,"M":0},"sequence_breaks":0,"padding_bytes":0,)"
      R"("skipped_bytes":0,"notes":{}})"
      "\n");
}

TEST(VolumesView, EmptyFileHasNulls) {
  EXPECT_EQ(
      line(""),
      R"({"kind":"volume","file":"v","bytes":0,"modified":"2021-03-16T06:15:52.600000007Z",)"
      R"("content":"none","version":null,"record_length":null,"label":null,"organization":null,)"
      R"("start":null,"end":null,"stations":0,"channels":0,"epochs":0,"responses":0,)"
      R"("data_start":null,"data_end":null,"data_records":0,"samples":0,"records":0,"blocks":0,)"
      R"("counts":{"U":0,"V":0,"A":0,"S":0,"T":0,"D":0,"R":0,"Q":0,"M":0},"sequence_breaks":0,)"
      R"("padding_bytes":0,"skipped_bytes":0,"notes":{}})"
      "\n");
}

TEST(VolumesView, CsvHasTheValuesThatAreNoObjects) {
  VolumeWriter volume = small();
  volume.control('V', label());
  volume.data(record());
  Given csv;
  csv.csv = true;
  EXPECT_EQ(line(volume.bytes(), csv),
            "v,512,2021-03-16T06:15:52.600000007Z,data,02.4,256,A label,Org,"
            "2021-03-16T00:00:00.0000Z,2021-03-17T12:00:00.0000Z,0,0,0,0,"
            "2021-03-16T06:15:52.6000Z,2021-03-16T06:15:57.5500Z,1,100,2,2,0,0,0\n");
}

TEST(VolumesHeading, HasTheKeys) {
  EXPECT_EQ(volumes_heading(),
            "file,bytes,modified,content,version,record_length,label,organization,start,end,"
            "stations,channels,epochs,responses,data_start,data_end,data_records,samples,records,"
            "blocks,sequence_breaks,padding_bytes,skipped_bytes");
}

TEST(VolumesView, StandardInputHasNoTimeOfChange) {
  Given spooled;
  spooled.spooled = true;
  EXPECT_EQ(value(line("", spooled), "modified"), "null");
}

TEST(VolumesView, NextFileStartsAnew) {
  VolumeWriter volume = small();
  volume.control('V', label());
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  volume.data(record());
  const auto view = make_volumes_view({});
  const std::string first = lines_of(view.get(), "");
  lines_of(view.get(), volume.bytes());
  const std::string again = lines_of(view.get(), "");
  EXPECT_EQ(value(first, "content"), value(again, "content"));
  EXPECT_EQ(between(first, R"("version":)", "\n"), between(again, R"("version":)", "\n"));
}

// ---- content ----

std::string content(bool stations, bool data, bool control) {
  VolumeWriter volume = small();
  if (stations) volume.control('S', station("A"));
  if (control) volume.control('T', ControlBlockette(70).fixed("P", 1).var("").var(""));
  if (data) volume.data(record());
  return value(volume, "content");
}

TEST(VolumesView, ContentTellsWhatThereIs) {
  EXPECT_EQ(content(true, true, false), R"("full")");
  EXPECT_EQ(content(true, true, true), R"("full")");
  EXPECT_EQ(content(true, false, false), R"("dataless")");
  EXPECT_EQ(content(true, false, true), R"("dataless")");
  EXPECT_EQ(content(false, true, false), R"("data")");
  EXPECT_EQ(content(false, true, true), R"("data")");
  EXPECT_EQ(content(false, false, true), R"("control")");
  EXPECT_EQ(content(false, false, false), R"("none")");
}

TEST(VolumesView, ControlHeaderWithoutBlockettesIsControl) {
  const std::string text = line("000001V " + std::string(248, ' '));
  EXPECT_EQ(value(text, "content"), R"("control")");
  EXPECT_EQ(value(text, "record_length"), "256");
}

TEST(VolumesView, ChannelsWithoutAStationAreNoStations) {
  VolumeWriter volume = small();
  volume.control('S', channel("BHZ"));
  EXPECT_EQ(value(volume, "content"), R"("control")");
  volume.data(record());
  EXPECT_EQ(value(volume, "content"), R"("data")");
}

TEST(VolumesView, GarbageIsNoContent) {
  const std::string text = line("this is no SEED at all");
  EXPECT_EQ(value(text, "content"), R"("none")");
  EXPECT_EQ(value(text, "skipped_bytes"), "22");
  EXPECT_EQ(value(text, "record_length"), "null");
}

// ---- the volume's own words ----

TEST(VolumesView, FirstOfTheIdentifiersCounts) {
  VolumeWriter volume = small();
  volume.control('V', ControlBlockette(5).fixed("02.3", 4).digits(9, 2).var(Time{2020, 1}));
  volume.control('V', label());
  const std::string text = line(volume);
  EXPECT_EQ(value(text, "version"), R"("02.3")");
  EXPECT_EQ(value(text, "record_length"), "512");
  EXPECT_EQ(value(text, "label"), "null");
  EXPECT_EQ(value(text, "organization"), "null");
  EXPECT_EQ(value(text, "start"), R"("2020-01-01T00:00:00.0000Z")");
  EXPECT_EQ(value(text, "end"), "null");
}

TEST(VolumesView, IdentifierOfTelemetryHasStartAndEnd) {
  VolumeWriter volume = small();
  volume.control('V', ControlBlockette(8)
                          .fixed("2.4", 4)
                          .digits(8, 2)
                          .fixed("A", 5)
                          .fixed("", 2)
                          .fixed("BHZ", 3)
                          .var(Time{2020, 1})
                          .var(Time{2020, 2})
                          .var(Time{2020, 3}));
  const std::string text = line(volume);
  EXPECT_EQ(value(text, "version"), R"("2.4")");
  EXPECT_EQ(value(text, "start"), R"("2020-01-01T00:00:00.0000Z")");
  EXPECT_EQ(value(text, "end"), R"("2020-01-02T00:00:00.0000Z")");
  EXPECT_EQ(value(text, "label"), "null");
}

TEST(VolumesView, EmptyTextsStayTextsAndUnreadableTimesAreNull) {
  VolumeWriter volume = small();
  volume.control('V', ControlBlockette(10)
                          .fixed("", 4)
                          .digits(8, 2)
                          .var("yesterday")
                          .var("")
                          .var("")
                          .var("")
                          .var(""));
  const std::string text = line(volume);
  EXPECT_EQ(value(text, "version"), R"("")");
  EXPECT_EQ(value(text, "label"), R"("")");
  EXPECT_EQ(value(text, "organization"), R"("")");
  EXPECT_EQ(value(text, "start"), "null");
  EXPECT_EQ(value(text, "end"), "null");
}

// An identifier with an exponent in a record of 256 bytes, and another record after it.
std::string record_length(std::string_view exponent) {
  VolumeWriter volume = small();
  volume.control('V', ControlBlockette(10).fixed("02.4", 4).fixed(exponent, 2));
  volume.control('T', ControlBlockette(70).fixed("P", 1));
  return value(volume, "record_length");
}

TEST(VolumesView, RecordLengthIsTheStatedOneFrom64To131072) {
  EXPECT_EQ(record_length("06"), "64");
  EXPECT_EQ(record_length("12"), "4096");
  EXPECT_EQ(record_length("17"), "131072");
}

TEST(VolumesView, RecordLengthIsElseThatOfTheFirstRecord) {
  EXPECT_EQ(record_length("05"), "256");
  EXPECT_EQ(record_length("18"), "256");
  EXPECT_EQ(record_length("-8"), "256");
  EXPECT_EQ(record_length(""), "256");
  EXPECT_EQ(record_length("x"), "256");
  EXPECT_EQ(value(small().data(record()).data(record()), "record_length"), "256");
}

TEST(VolumesView, RecordLengthIsThatWhichTheFirstRecordHas) {
  EXPECT_EQ(value(small().data(record().b1000(3, 1, 17)).data(record()), "record_length"), "256");
}

TEST(VolumesView, RecordLengthIsNotThatOfLaterRecords) {
  VolumeWriter volume = small();
  volume.data(record().b1000(3, 1, 9), 512).data(record()).data(record());
  EXPECT_EQ(value(volume, "record_length"), "512");
}

// ---- counts ----

TEST(VolumesView, StationsAreDifferentCodes) {
  VolumeWriter volume = small();
  volume.control('S', {station("A"), station("B"), station("A"), station("A", "YY")});
  EXPECT_EQ(value(volume, "stations"), "3");
}

TEST(VolumesView, CodesAreNotRunTogether) {
  VolumeWriter volume = small();
  volume.control('S', {station("BC", "A"), station("C", "AB")});
  volume.control('S', {station("D"), channel("HZ", "B"), channel("Z", "BH")});
  EXPECT_EQ(value(volume, "stations"), "3");
  EXPECT_EQ(value(volume, "channels"), "2");
}

TEST(VolumesView, CodeAndPlaceOfAChannelAreNotRunTogether) {
  VolumeWriter volume = small();
  volume.control('S', {station("D"), channel("BH", "Z"), channel("B", "HZ")});
  EXPECT_EQ(value(volume, "channels"), "2");
}

TEST(VolumesView, ChannelsAreDifferentCodesAndPlacesOfAStation) {
  VolumeWriter volume = small();
  volume.control('S', {station("A"), channel("BHZ"), channel("BHZ"), channel("BHZ", "00")});
  volume.control('S', {channel("BHN"), station("B"), channel("BHZ")});
  volume.control('S', {station("A"), channel("BHN")});
  EXPECT_EQ(value(volume, "channels"), "4");
  EXPECT_EQ(value(volume, "epochs"), "6");
}

TEST(VolumesView, ChannelWithoutAStationBelongsToOneOfEmptyCodes) {
  VolumeWriter volume = small();
  volume.control('S', {channel("BHZ"), channel("BHZ"), station("", ""), channel("BHZ")});
  const std::string text = line(volume);
  EXPECT_EQ(value(text, "channels"), "1");
  EXPECT_EQ(value(text, "stations"), "1");
  EXPECT_EQ(value(text, "epochs"), "3");
}

TEST(VolumesView, AbsentCodesAreEmptyOnes) {
  VolumeWriter volume = small();
  volume.control('S', {ControlBlockette(50), station("", ""), ControlBlockette(52), channel("")});
  const std::string text = line(volume);
  EXPECT_EQ(value(text, "stations"), "1");
  EXPECT_EQ(value(text, "channels"), "1");
}

TEST(VolumesView, ResponsesAre53To58And60To62) {
  for (int type = 40; type < 75; ++type) {
    VolumeWriter volume = small();
    volume.control('S', ControlBlockette(type));
    const bool is_one = (type >= 53 && type <= 58) || (type >= 60 && type <= 62);
    EXPECT_EQ(value(volume, "responses"), is_one ? "1" : "0") << type;
  }
}

TEST(VolumesView, BlockettesInAChainAreNoStationsOrChannels) {
  VolumeWriter volume = small();
  volume.data(record().blockette(50, "A    ").blockette(52, "  BHZ").blockette(58, "00"));
  volume.data(record().blockette(10, "02.412"));
  const std::string text = line(volume);
  for (const char *key : {"stations", "channels", "epochs", "responses"}) {
    EXPECT_EQ(value(text, key), "0") << key;
  }
  EXPECT_EQ(value(text, "content"), R"("data")");
  EXPECT_EQ(value(text, "version"), "null");
}

// ---- data ----

TEST(VolumesView, SamplesAreThoseOfAllDataRecords) {
  DataRecord still = record();
  still.rate_factor = 0;
  still.samples = 65535;
  const std::string text = line(small().data(still).data(record()).data(still));
  EXPECT_EQ(value(text, "samples"), "131170");
  EXPECT_EQ(value(text, "data_records"), "3");
}

TEST(VolumesView, DataTimesAreTheEarliestStartAndTheLatestEnd) {
  // The longest segment begins first; another channel's ends last.
  DataRecord other = record({2021, 75, 6, 15, 58, 0});
  other.chan = "BHN";
  const std::string text = line(small()
                                    .data(record({2021, 75, 6, 15, 55, 0}))
                                    .data(other)
                                    .data(record({2021, 75, 6, 15, 50, 0})));
  EXPECT_EQ(value(text, "data_start"), R"("2021-03-16T06:15:50.0000Z")");
  EXPECT_EQ(value(text, "data_end"), R"("2021-03-16T06:16:02.9500Z")");
}

TEST(VolumesView, SegmentOfSeveralRecordsDoesNotGoBeforeAnEarlierOne) {
  const std::string text = line(small()
                                    .data(record({2021, 75, 6, 15, 50, 0}))
                                    .data(record({2021, 75, 6, 16, 0, 0}))
                                    .data(record({2021, 75, 6, 16, 5, 0})));
  EXPECT_EQ(value(text, "data_start"), R"("2021-03-16T06:15:50.0000Z")");
  EXPECT_EQ(value(text, "data_end"), R"("2021-03-16T06:16:09.9500Z")");
}

TEST(VolumesView, EndOfASegmentThatLiesInAnotherIsNotTheLatest) {
  DataRecord shorter = record({2021, 75, 6, 15, 53, 0});
  shorter.samples = 1;
  const std::string text = line(small().data(record()).data(shorter));
  EXPECT_EQ(value(text, "data_end"), R"("2021-03-16T06:15:57.5500Z")");
}

TEST(VolumesView, DataTimesHaveFourDecimalsOfTheMicroseconds) {
  const std::string text = line(small().data(record().b1001(0, 99, 0)));
  EXPECT_EQ(value(text, "data_start"), R"("2021-03-16T06:15:52.6000Z")");
  EXPECT_EQ(value(text, "data_end"), R"("2021-03-16T06:15:57.5500Z")");
}

TEST(VolumesView, DataWithoutARateHaveNoTimes) {
  DataRecord still = record();
  still.rate_factor = 0;
  const std::string text = line(small().data(still));
  EXPECT_EQ(value(text, "data_start"), "null");
  EXPECT_EQ(value(text, "data_end"), "null");
}

// ---- notes and skips ----

TEST(VolumesView, NotesAreCountedByCauseInTheirOrder) {
  VolumeWriter volume = small();
  volume.control('A', ControlBlockette(34).digits(1, 3).var("M").var(""));
  volume.control('A', ControlBlockette(34).digits(1, 3).var("V").var(""));   // again
  volume.control('S', ControlBlockette(11).digits(2, 3).fixed("A", 5));      // short
  volume.control('S', ControlBlockette(51).var("x").var("y").digits(1, 4));  // value, twice
  volume.data(record().b1000(3, 1, 17));                                     // length
  DataRecord lost = record();
  lost.forced_first_offset = 9999;  // chain
  volume.data(lost);
  DataRecord either = record();
  either.time = {2056, 257};  // order
  volume.data(either);
  volume.data(record().b1000(3, 1, 9));  // cut
  EXPECT_EQ(between(line(volume), R"("notes":)", "\n"),
            R"({"length":1,"cut":1,"order":1,"chain":1,"value":2,"short":1,"again":1}})");
}

TEST(VolumesView, NotesOfRecordsAreLengthUnconfirmedAndCut) {
  VolumeWriter volume = small();
  volume.data(record().b1000(3, 1, 17));  // length
  volume.data(record().b1000(3, 1, 8));
  const std::string unconfirmed = volume.bytes() + "x";
  const std::string cut = record().b1000(3, 1, 9).bytes(256, 3);
  EXPECT_EQ(between(line(unconfirmed + cut), R"("notes":)", "\n"),
            R"({"length":1,"unconfirmed":1,"cut":1}})");
}

TEST(VolumesView, UnconfirmedIsANote) {
  EXPECT_EQ(between(line(small().data(record()).bytes() + "x"), R"("notes":)", "\n"),
            R"({"unconfirmed":1}})");
}

TEST(VolumesView, SkipsAndBreaksAreCounted) {
  VolumeWriter volume = small();
  volume.data(record().b1000(3, 1, 8)).raw_record(std::string(100, ' ')).sequence(7);
  volume.data(record().b1000(3, 1, 8));
  const std::string text = line(volume.bytes() + "no SEED");
  EXPECT_EQ(value(text, "sequence_breaks"), "1");
  EXPECT_EQ(value(text, "padding_bytes"), "100");
  EXPECT_EQ(value(text, "skipped_bytes"), "7");
}

}  // namespace
