// The verb stationxml as a shell runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"
#include "tests/views/station_blockettes.h"

namespace {

using command::Result;
using volume::ControlBlockette;
using volume::VolumeWriter;

constexpr char kSample[] = TARVIK_SOURCE_DIR "/samples/demo.seed";

std::string contents(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

ControlBlockette station(const std::string &latitude) {
  return ControlBlockette(50)
      .fixed("DYNGA", 5)
      .raw(latitude)
      .coordinate(-16.5, volume::kLongitude)
      .coordinate(688, volume::kElevation)
      .digits(0, 4)
      .digits(0, 3)
      .var("Askja")
      .digits(1, 3)
      .digits(3210, 4)
      .digits(10, 2)
      .var(volume::Time{2020, 1})
      .var("")
      .fixed("N", 1)
      .fixed("XX", 2);
}

// A volume with one station, of which nothing is lost, and one whose station has no latitude.
std::string sound() { return VolumeWriter(512).control('S', station("+64.990000")).bytes(); }
std::string lossy() { return VolumeWriter(512).control('S', station("          ")).bytes(); }

constexpr char kLoss[] = "lossy: 8: Network/Station/Latitude: has no value (XX_DYNGA)\n";

class StationXmlVerb : public testing::Test {
 protected:
  StationXmlVerb() {
    static_cast<void>(scratch_.file("sound", sound()));
    static_cast<void>(scratch_.file("lossy", lossy()));
  }

  [[nodiscard]] Result run(std::vector<std::string> arguments,
                           const std::string &date = "0") const {
    command::Command command;
    command.program = SDBLK_BINARY;
    command.directory = scratch_.path();
    command.arguments = std::move(arguments);
    command.arguments.insert(command.arguments.begin(), {"sdblk", "stationxml"});
    command.environment = {{"SOURCE_DATE_EPOCH", date}};
    return command::run(command);
  }
  // Standard output and what stands in its place.
  [[nodiscard]] std::string written() const { return contents(scratch_ / "out"); }
  [[nodiscard]] bool is_written() const { return std::filesystem::exists(scratch_ / "out"); }

  command::ScratchDirectory scratch_;
};

TEST_F(StationXmlVerb, SampleGivesTheGoldenDocument) {
  const Result result = run({kSample});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "");
  std::string golden = contents(TARVIK_TEST_DATA_DIR "/sdblk/golden/demo.xml");
  const std::string version = "VERSION";
  golden.replace(golden.find(version), version.size(), SDBLK_VERSION);
  EXPECT_EQ(result.output, golden);
}

TEST_F(StationXmlVerb, DateIsThatOfTheVariable) {
  const Result result = run({"sound"}, "1615875352");
  EXPECT_NE(result.output.find("<Created>2021-03-16T06:15:52Z</Created>"), std::string::npos);
}

TEST_F(StationXmlVerb, DateThatIsNoneIsWrongUsage) {
  for (const char *date : {"", "now", "-1", "1.5", "253402300800"}) {
    const Result result = run({"sound"}, date);
    EXPECT_EQ(result.status, 2) << date;
    EXPECT_EQ(result.error, "sdblk: SOURCE_DATE_EPOCH holds no time\n");
  }
}

TEST_F(StationXmlVerb, LevelThatIsNoneIsWrongUsage) {
  const Result result = run({"--level", "stage", "sound"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.error,
            "sdblk: --level: 'stage' is none of network, station, channel and response\n"
            "Try 'sdblk stationxml --help'.\n");
}

TEST_F(StationXmlVerb, LevelEndsTheDocument) {
  EXPECT_EQ(run({"--level", "network", "sound"}).output.find("<Station"), std::string::npos);
  EXPECT_NE(run({"--level", "station", "sound"}).output.find("<Station"), std::string::npos);
}

TEST_F(StationXmlVerb, LossIsTold) {
  const Result result = run({"lossy"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, kLoss);
  EXPECT_NE(result.output.find("</FDSNStationXML>"), std::string::npos);
}

TEST_F(StationXmlVerb, StrictLossFailsButIsWritten) {
  const Result result = run({"--strict", "lossy"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, kLoss);
  EXPECT_NE(result.output.find("</FDSNStationXML>"), std::string::npos);
}

TEST_F(StationXmlVerb, StrictLossLeavesTheFileAsItIs) {
  EXPECT_EQ(run({"--strict", "-o", "out", "lossy"}).status, 1);
  EXPECT_FALSE(is_written());
  EXPECT_EQ(run({"--strict", "-o", "out", "sound"}).status, 0);
  const std::string before = written();
  EXPECT_EQ(run({"--strict", "-o", "out", "lossy", "sound"}).status, 1);
  EXPECT_EQ(written(), before);
  EXPECT_EQ(run({"-o", "out", "lossy"}).status, 0);
  EXPECT_NE(written(), before);
}

TEST_F(StationXmlVerb, NothingToWriteIsTold) {
  static_cast<void>(scratch_.file("data", VolumeWriter(512).data({}).bytes()));
  const Result result = run({"-o", "out", "data"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "sdblk: there is nothing to be written\n");
  EXPECT_FALSE(is_written());
}

TEST_F(StationXmlVerb, StrictLossFailsAlsoWithoutADocument) {
  VolumeWriter volume(4096);
  volume.control('S', station_blockettes::channel("BHZ"));
  static_cast<void>(scratch_.file("alone", volume.bytes()));
  const std::string error =
      "alone: 8: Network/Station/Channel: the channel stands in no station (__BHZ)\n"
      "sdblk: there is nothing to be written\n";
  EXPECT_EQ(run({"alone"}).status, 0);
  const Result result = run({"--strict", "alone"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, error);
}

TEST_F(StationXmlVerb, ChoiceOfNothingIsNothingToWrite) {
  EXPECT_EQ(run({"--reject", "DYNGA", "sound"}).error, "sdblk: there is nothing to be written\n");
}

TEST_F(StationXmlVerb, UnreadableFileGivesStatus1AndTheOthers) {
  const Result result = run({"none", "sound"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "sdblk: none: No such file or directory\n");
  EXPECT_NE(result.output.find("DYNGA"), std::string::npos);
}

TEST_F(StationXmlVerb, UnreadableFileAloneGivesStatus1) { EXPECT_EQ(run({"none"}).status, 1); }

TEST_F(StationXmlVerb, DamagedFileGivesStatus3) {
  static_cast<void>(scratch_.file("damaged", "no record" + sound()));
  EXPECT_EQ(run({"damaged"}).status, 3);
}

TEST_F(StationXmlVerb, FolderIsRead) {
  const Result result = run({"."});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "./lossy: 8: Network/Station/Latitude: has no value (XX_DYNGA)\n");
  EXPECT_NE(result.output.find("<Station code=\"DYNGA\""), std::string::npos);
}

TEST_F(StationXmlVerb, StandardInputIsReadTwice) {
  command::Command command;
  command.program = "/bin/sh";
  command.directory = scratch_.path();
  command.arguments = {"sh", "-c", "\"$sdblk\" stationxml - <lossy"};
  command.environment = {{"sdblk", SDBLK_BINARY}};
  const Result result = command::run(command);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "-: 8: Network/Station/Latitude: has no value (XX_DYNGA)\n");
}

TEST_F(StationXmlVerb, FullDiskGivesStatus1) {
  command::Command command;
  command.program = SDBLK_BINARY;
  command.directory = scratch_.path();
  command.arguments = {"sdblk", "stationxml", "sound"};
  command.output = command::Stream::kFull;
  const Result result = command::run(command);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "sdblk: standard output: No space left on device\n");
}

TEST_F(StationXmlVerb, NumberOfFilesAtATimeIsNoOption) {
  EXPECT_EQ(run({"-j", "2", "sound"}).status, 2);
}

}  // namespace
