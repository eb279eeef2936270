// The statements that put an archive into SQLite and ask it, over small archives of which the
// answers are known.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"

namespace {

namespace fs = std::filesystem;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

constexpr char kNightly[] = "'" TARVIK_SOURCE_DIR "/examples/archive/nightly.sh'";

// A span from the first day of a year to that of another; 0 for an open end.
struct Years {
  int from;
  int to;

  [[nodiscard]] std::string begin() const { return volume::seed_time(from, 1); }
  [[nodiscard]] std::string end() const { return to == 0 ? "" : volume::seed_time(to, 1); }
};

ControlBlockette station(const std::string &code, const Years &years) {
  return volume::b50({.code = code,
                      .latitude = 48,
                      .longitude = 8,
                      .elevation = 500,
                      .site = "A site",
                      .begin = years.begin(),
                      .end = years.end()});
}

ControlBlockette channel(const std::string &code, const Years &years, double azimuth = 0) {
  return volume::b52({.location = "00",
                      .code = code,
                      .calibration_units = 2,
                      .latitude = 48,
                      .longitude = 8,
                      .elevation = 500,
                      .azimuth = azimuth,
                      .rate = 1,
                      .drift = 0.0001,
                      .begin = years.begin(),
                      .end = years.end()});
}

// The gain of a stage; of stage 0 the sensitivity.
ControlBlockette gain(int stage, double value) {
  return ControlBlockette(58).digits(stage, 2).real(value).real(1.0).digits(0, 2);
}

VolumeWriter headers(const std::vector<ControlBlockette> &blockettes) {
  VolumeWriter volume(4096);
  for (const ControlBlockette &blockette : blockettes) volume.control('S', blockette);
  return volume;
}

// So many samples, one a second.
DataRecord samples(const Time &time, unsigned count) {
  DataRecord record{.sta = "ABC", .loc = "00", .chan = "LHZ", .net = "XX", .time = time};
  record.samples = count;
  record.rate_factor = 1;
  record.rate_multiplier = 1;
  return record.b1000(11, 1, 9);
}
constexpr unsigned kHour = 3600;

class ArchiveTest : public testing::Test {
 protected:
  void put(const std::string &name, const std::string &bytes) const {
    fs::create_directories(fs::path(path_of(name)).parent_path());
    static_cast<void>(scratch_.file("archive/" + name, bytes));
  }
  void put(const std::string &name, const VolumeWriter &volume) const { put(name, volume.bytes()); }
  [[nodiscard]] std::string path_of(const std::string &name) const {
    return scratch_ / ("archive/" + name);
  }
  // Another time of the last change than it has.
  void touch(const std::string &name) const {
    fs::last_write_time(path_of(name),
                        fs::last_write_time(path_of(name)) + std::chrono::nanoseconds(1));
  }

  [[nodiscard]] std::string shell(const std::string &script) const {
    command::Command command;
    command.program = "/bin/sh";
    command.directory = scratch_.path();
    command.arguments = {"sh", "-c", script};
    const fs::path folder = fs::path(SDBLK_BINARY).parent_path();
    const char *path = std::getenv("PATH");
    // SQLite finds its settings at home: a test need not wait for the disk.
    static_cast<void>(scratch_.file(".sqliterc", "PRAGMA synchronous = OFF;"));
    command.environment = {{"PATH", folder.string() + ":" + (path == nullptr ? "" : path)},
                           {"HOME", scratch_.path()}};
    const command::Result result = command::run(command);
    EXPECT_EQ(result.status, 0) << script;
    EXPECT_EQ(result.error, "") << script;
    return result.output;
  }
  void load() const { EXPECT_EQ(shell(std::string(kNightly) + " archive"), ""); }
  [[nodiscard]] std::string ask(const std::string &question) const {
    return shell("sqlite3 archive.db <'" TARVIK_SOURCE_DIR "/examples/archive/" + question +
                 ".sql'");
  }
  [[nodiscard]] std::string select(const std::string &what) const {
    return shell("sqlite3 archive.db 'SELECT " + what + "'");
  }
  // What one volume of these blockettes is answered.
  [[nodiscard]] std::string answer(const std::string &question,
                                   const std::vector<ControlBlockette> &blockettes) const {
    put("v", headers(blockettes));
    load();
    return ask(question);
  }

  command::ScratchDirectory scratch_;
};

// ---- overlapping epochs ----

TEST_F(ArchiveTest, OverlapOfEpochsIsTold) {
  EXPECT_EQ(answer("overlapping_epochs", {station("ABC", {2000, 0}), channel("BHZ", {2000, 2002}),
                                          channel("BHZ", {2001, 2003})}),
            "XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|2002-01-01T00:00:00.0000Z|"
            "2001-01-01T00:00:00.0000Z|2003-01-01T00:00:00.0000Z\n");
}

TEST_F(ArchiveTest, OpenEpochOverlapsTheNext) {
  EXPECT_EQ(answer("overlapping_epochs", {station("ABC", {2000, 0}), channel("BHZ", {2000, 0}),
                                          channel("BHZ", {2001, 0})}),
            "XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|open|2001-01-01T00:00:00.0000Z|open\n");
}

TEST_F(ArchiveTest, EpochsThatMeetDoNotOverlap) {
  EXPECT_EQ(answer("overlapping_epochs", {station("ABC", {2000, 0}), channel("BHZ", {2000, 2001}),
                                          channel("BHZ", {2001, 0}), channel("BHN", {2000, 0})}),
            "");
}

TEST_F(ArchiveTest, OverlapOverTwoVolumesIsToldOnce) {
  put("a", headers({station("ABC", {2000, 0}), channel("BHZ", {2000, 2002})}));
  put("b", headers({station("ABC", {2000, 0}), channel("BHZ", {2001, 2003})}));
  put("c", headers({station("ABC", {2000, 0}), channel("BHZ", {2001, 2003})}));
  load();
  EXPECT_EQ(ask("overlapping_epochs"),
            "XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|2002-01-01T00:00:00.0000Z|"
            "2001-01-01T00:00:00.0000Z|2003-01-01T00:00:00.0000Z\n");
}

// ---- channels outside their station ----

TEST_F(ArchiveTest, ChannelOutsideItsStationIsTold) {
  EXPECT_EQ(answer("outside_station", {station("ABC", {2000, 2010}), channel("BHZ", {1999, 2010}),
                                       channel("BHN", {2000, 2011}), channel("BHE", {2000, 0})}),
            "archive/v|XX|ABC|00|BHE|2000-01-01T00:00:00.0000Z||2000-01-01T00:00:00.0000Z|"
            "2010-01-01T00:00:00.0000Z\n"
            "archive/v|XX|ABC|00|BHN|2000-01-01T00:00:00.0000Z|2011-01-01T00:00:00.0000Z|"
            "2000-01-01T00:00:00.0000Z|2010-01-01T00:00:00.0000Z\n"
            "archive/v|XX|ABC|00|BHZ|1999-01-01T00:00:00.0000Z|2010-01-01T00:00:00.0000Z|"
            "2000-01-01T00:00:00.0000Z|2010-01-01T00:00:00.0000Z\n");
}

TEST_F(ArchiveTest, ChannelThatFillsItsStationIsInside) {
  EXPECT_EQ(answer("outside_station", {station("ABC", {2000, 2010}), channel("BHZ", {2000, 2010}),
                                       station("DEF", {2000, 0}), channel("BHZ", {2000, 0}),
                                       channel("BHN", {2005, 2006}), station("GHI", {2000, 0})}),
            "");
}

// ---- sensitivities ----

TEST_F(ArchiveTest, SensitivityThatIsNotTheProductIsTold) {
  EXPECT_EQ(answer("sensitivity", {station("ABC", {2000, 0}), channel("BHZ", {2000, 0}),
                                   gain(1, 1500), gain(2, 400000), gain(3, 1), gain(0, 640000000)}),
            "archive/v|XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|640000000.0|600000000.0\n");
}

TEST_F(ArchiveTest, SensitivityWithinFivePercentIsRight) {
  EXPECT_EQ(
      answer("sensitivity",
             {station("ABC", {2000, 0}), channel("BHZ", {2000, 0}), gain(1, 100), gain(2, 10),
              gain(0, 1049), channel("BHN", {2000, 0}), gain(1, 100), gain(2, 10), gain(0, 951)}),
      "");
}

TEST_F(ArchiveTest, SensitivityBeyondFivePercentIsWrong) {
  EXPECT_EQ(
      answer("sensitivity",
             {station("ABC", {2000, 0}), channel("BHN", {2000, 0}), gain(1, 100), gain(2, 10),
              gain(0, 1051), channel("BHZ", {2000, 0}), gain(1, 100), gain(2, 10), gain(0, 949)}),
      "archive/v|XX|ABC|00|BHN|2000-01-01T00:00:00.0000Z|1051.0|1000.0\n"
      "archive/v|XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|949.0|1000.0\n");
}

TEST_F(ArchiveTest, SignOfTheSensitivityCounts) {
  EXPECT_EQ(
      answer("sensitivity",
             {station("ABC", {2000, 0}), channel("BHE", {2000, 0}), gain(1, -100), gain(2, 10),
              gain(0, 1000), channel("BHN", {2000, 0}), gain(1, -100), gain(2, 10), gain(0, -1000),
              channel("BHZ", {2000, 0}), gain(1, -100), gain(2, -10), gain(0, 1000)}),
      "archive/v|XX|ABC|00|BHE|2000-01-01T00:00:00.0000Z|1000.0|-1000.0\n");
}

TEST_F(ArchiveTest, GainOfZeroMakesTheProductZero) {
  EXPECT_EQ(answer("sensitivity", {station("ABC", {2000, 0}), channel("BHZ", {2000, 0}), gain(1, 0),
                                   gain(2, 10), gain(0, 10)}),
            "archive/v|XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|10.0|0.0\n");
}

TEST_F(ArchiveTest, EpochWithoutGainsHasNoAnswer) {
  EXPECT_EQ(answer("sensitivity", {station("ABC", {2000, 0}), channel("BHN", {2000, 0}),
                                   gain(0, 1000), channel("BHZ", {2000, 0}), gain(1, 10)}),
            "");
}

// ---- gaps ----

// A gap from 01:00:00, where the sample after the first hour is missing.
TEST_F(ArchiveTest, GapOfADayOverTwoFilesIsTold) {
  put("a", VolumeWriter(512).data(samples({2021, 75}, kHour)));
  put("b", VolumeWriter(512).data(samples({2021, 76, 1}, kHour)));
  load();
  EXPECT_EQ(ask("gaps"),
            "XX|ABC|00|LHZ|2021-03-16T00:59:59.000000Z|2021-03-17T01:00:00.000000Z|1.0\n");
}

TEST_F(ArchiveTest, ShorterGapIsNotTold) {
  put("a", VolumeWriter(512).data(samples({2021, 75}, kHour)));
  put("b", VolumeWriter(512).data(samples({2021, 76, 0, 59, 59}, kHour)));
  load();
  EXPECT_EQ(ask("gaps"), "");
}

// The long stretch covers the time between the two others.
TEST_F(ArchiveTest, GapThatAnotherFileFillsIsNone) {
  VolumeWriter filling(512);
  for (int hour = 0; hour < 48; ++hour) {
    filling.data(samples({2021, 75 + hour / 24, hour % 24}, kHour));
  }
  put("a", VolumeWriter(512).data(samples({2021, 75}, kHour)));
  put("b", filling);
  put("c", VolumeWriter(512).data(samples({2021, 76, 10}, kHour)));
  load();
  EXPECT_EQ(ask("gaps"), "");
}

// ---- the same epoch in two volumes ----

TEST_F(ArchiveTest, DifferentContentOfAnEpochIsTold) {
  put("a", headers({station("ABC", {2000, 0}), channel("BHZ", {2000, 0}), gain(0, 10)}));
  put("b", headers({station("ABC", {2000, 0}), channel("BHZ", {2000, 2001}, 90), gain(0, 20)}));
  load();
  EXPECT_EQ(ask("different_content"),
            "XX|ABC|00|BHZ|2000-01-01T00:00:00.0000Z|archive/a|archive/b|"
            "end azimuth sensitivity stages\n");
}

TEST_F(ArchiveTest, SameContentAtAnotherPlaceIsTheSame) {
  put("a", headers({station("ABC", {2000, 0}), channel("BHZ", {2000, 0}), gain(1, 10)}));
  put("b", headers({station("ABC", {2000, 0}), channel("BHN", {2000, 0}), gain(1, 20),
                    channel("BHZ", {2000, 0}), gain(1, 10)}));
  load();
  EXPECT_EQ(ask("different_content"), "");
}

// ---- garbage ----

TEST_F(ArchiveTest, FilesWithGarbageAreTold) {
  const std::string sound = VolumeWriter(512).data(samples({2021, 75}, kHour)).bytes();
  put("none", "not SEED at all");
  put("some", sound + "xyz");
  put("sound", sound);
  load();
  EXPECT_EQ(ask("garbage"), "archive/none|15|15\narchive/some|3|515\n");
}

// ---- nights ----

TEST_F(ArchiveTest, NextNightTakesInWhatHasChanged) {
  const auto named = [](const std::string &code) {
    return headers({station(code, {2000, 0}), channel("BHZ", {2000, 0})});
  };
  for (const char *name : {"changed", "moved", "replaced", "same", "vanished"}) {
    put(name, named("OLD"));
  }
  load();
  EXPECT_EQ(select("file, station FROM epochs ORDER BY file"),
            "archive/changed|OLD\narchive/moved|OLD\narchive/replaced|OLD\narchive/same|OLD\n"
            "archive/vanished|OLD\n");
  put("added", named("NEW"));
  put("changed", named("NEW"));  // of the same size
  touch("changed");
  put("other", named("NEW"));
  touch("other");
  fs::rename(path_of("other"), path_of("replaced"));
  fs::rename(path_of("moved"), path_of("to"));
  fs::remove(path_of("vanished"));
  load();
  EXPECT_EQ(shell("tr '\\0' '\\n' <changed | sort"),
            "archive/added\narchive/changed\narchive/replaced\narchive/to\n");
  EXPECT_EQ(select("file, station FROM epochs ORDER BY file"),
            "archive/added|NEW\narchive/changed|NEW\narchive/replaced|NEW\narchive/same|OLD\n"
            "archive/to|OLD\n");
  EXPECT_EQ(select("group_concat(file) FROM (SELECT file FROM volumes ORDER BY file)"),
            "archive/added,archive/changed,archive/replaced,archive/same,archive/to\n");
  load();
  EXPECT_EQ(shell("cat volumes.json"), "");
}

// Whatever each night saw of it, the night after the last write sees all.
TEST_F(ArchiveTest, FileThatIsWrittenWhileItIsReadIsReadAgain) {
  const std::string record = VolumeWriter(512).data(samples({2021, 75}, kHour)).bytes();
  put("growing", record);
  static_cast<void>(scratch_.file("record", record));
  const std::string script =
      "(i=0; while [ $i -lt 400 ]; do cat record >>archive/growing; i=$((i + 1)); done) & "
      "writer=$!\n"
      "while kill -0 $writer 2>/dev/null; do " +
      std::string(kNightly) + " archive || exit; done; wait $writer";
  EXPECT_EQ(shell(script), "");
  load();
  EXPECT_EQ(select("bytes, data_records FROM volumes"), "205312|401\n");
  EXPECT_EQ(select("sum(records) FROM segments"), "401\n");
}

TEST_F(ArchiveTest, FileThatCannotBeReadIsToldUntilItCan) {
  put("v", "");
  fs::remove(path_of("v"));
  fs::create_symlink("nowhere", path_of("v"));
  const std::string nightly = std::string(kNightly) + " archive/v";
  EXPECT_EQ(shell(nightly), "");
  EXPECT_EQ(select("* FROM unread"), "archive/v|No such file or directory\n");
  EXPECT_EQ(select("count(*) FROM volumes"), "0\n");
  fs::remove(path_of("v"));
  put("v", headers({station("ABC", {2000, 0})}));
  EXPECT_EQ(shell(nightly), "");
  EXPECT_EQ(select("count(*) FROM unread"), "0\n");
  EXPECT_EQ(select("file FROM volumes"), "archive/v\n");
}

TEST_F(ArchiveTest, NameOfAnyCharactersIsTaken) {
  put("a \"quoted\"\n'name'", headers({station("ABC", {2000, 0}), channel("BHZ", {2000, 0})}));
  load();
  load();
  EXPECT_EQ(select("count(*) FROM epochs"), "1\n");
  EXPECT_EQ(shell("cat volumes.json"), "");
}

TEST_F(ArchiveTest, StationWithoutChannelsHasARow) {
  put("v", headers({station("ABC", {2000, 0})}));
  load();
  EXPECT_EQ(select("network, station, location, channel IS NULL FROM epochs"), "XX|ABC||1\n");
}

}  // namespace
