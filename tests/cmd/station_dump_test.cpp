// The station summary, as the command prints it.
#include "cmd/station_dump.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/cmd/command_fixture.h"
#include "tests/util/station_blockettes.h"

using namespace tarvik;

namespace {

using command::Result;
using volume::ControlBlockette;
using volume::VolumeWriter;

// ---- blockettes, whole or as far as a test needs them

ControlBlockette unit_abbreviation(int code, std::string_view name) {
  return ControlBlockette(34).digits(code, 3).var(name).var("Not shown");
}

ControlBlockette generic_abbreviation(int code, std::string_view text) {
  return ControlBlockette(33).digits(code, 3).var(text);
}

struct Station {
  std::string code = "DYNGA";
  int network_name = 1;
  std::string begin = "2018,120,04:05:06.9999";
  std::string end = "2020,366,23:59:59";
  std::optional<std::string> network = "XX";
};

ControlBlockette station(const Station &station) {
  return volume::b50({.code = station.code,
                      .longitude = -16.91232,
                      .elevation = -12.5,
                      .site = "Dyngja Flats",
                      .network_name = station.network_name,
                      .begin = station.begin,
                      .end = station.end,
                      .network = station.network});
}

struct Channel {
  std::string loc = "00";
  std::string code = "BHZ";
  int instrument = 2;
  int units = 3;
  std::string begin = "2018,120";
  std::string end = {};
};

ControlBlockette channel(const Channel &channel) {
  return volume::b52({.location = channel.loc,
                      .code = channel.code,
                      .instrument = channel.instrument,
                      .remark = "Remark",
                      .signal_units = channel.units,
                      .depth = 2.5,
                      .azimuth = 271.5,
                      .dip = -45.5,
                      .rate = 0.125,
                      .begin = channel.begin,
                      .end = channel.end});
}

// A response blockette that ends after its stage.  Types 53, 54, 56 and 62 have fields before it.
ControlBlockette response(int type, int stage) {
  ControlBlockette blockette(type);
  if (type == 53 || type == 54 || type == 62) blockette.fixed("A", 1);
  return blockette.digits(stage, 2);
}

// The gain of a stage, as often as there are items to print.
std::vector<ControlBlockette> gains(int count) {
  return std::vector<ControlBlockette>(static_cast<std::size_t>(count), response(58, 1));
}

ControlBlockette response_dictionary(int type, int code) {
  return ControlBlockette(type).digits(code, 4).var("NAME");
}

struct Stage {
  int number;
  std::vector<int> codes;
};

ControlBlockette references(const std::vector<Stage> &stages) {
  ControlBlockette blockette(60);
  blockette.digits(static_cast<long>(stages.size()), 2);
  for (const Stage &stage : stages) {
    blockette.digits(stage.number, 2).digits(static_cast<long>(stage.codes.size()), 2);
    for (const int code : stage.codes) blockette.digits(code, 4);
  }
  return blockette;
}

const std::string kIndent(15, ' ');

class StationDump : public CommandFixture {
 public:
  StationDump() : volume_(4096) {}

  StationDump &abbreviation(const ControlBlockette &blockette) { return add('A', blockette); }
  StationDump &header(const ControlBlockette &blockette) { return add('S', blockette); }
  StationDump &headers(const std::vector<ControlBlockette> &blockettes) {
    for (const ControlBlockette &blockette : blockettes) header(blockette);
    return *this;
  }

  // The summary of what was added, without the end and the counts; reading must succeed quietly.
  std::string summary(const std::vector<std::string> &options = {}) {
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.begin(), "-sta");
    arguments.emplace_back("v.seed");
    std::string command_line = "tarvik";
    for (const std::string &argument : arguments) command_line += " " + argument;
    write(volume_);
    const Result result = tarvik(arguments);
    EXPECT_EQ(command::after_announcement(result, command_line), "");
    EXPECT_EQ(result.status, 0);
    const std::string end = at_end(counts_);
    EXPECT_TRUE(result.output.ends_with(end)) << result.output;
    return result.output.substr(0, result.output.size() - end.size());
  }

 private:
  StationDump &add(char type, const ControlBlockette &blockette) {
    volume_.control(type, blockette);
    ++(type == 'A' ? counts_.a : counts_.s);
    return *this;
  }

  VolumeWriter volume_;
  Counts counts_;
};

// ---- stations

TEST_F(StationDump, StationIsOneLine) {
  EXPECT_EQ(header(station({})).summary(), "XX DYNGA 2018:120:04:05:06 2020:366:23:59:59\n");
}

TEST_F(StationDump, ShortCodesArePadded) {
  EXPECT_EQ(header(station({.code = "AB", .network = {}}).fixed("X", 2)).summary(),
            "X  AB    2018:120:04:05:06 2020:366:23:59:59\n");
}

TEST_F(StationDump, EmptyTimesAreNull) {
  EXPECT_EQ(header(station({.begin = "", .end = ""})).summary(), "XX DYNGA NULL NULL\n");
}

TEST_F(StationDump, StationWithoutNetworkHasQuestionMarks) {
  EXPECT_EQ(header(station({.network = {}})).summary(),
            "\?\? DYNGA 2018:120:04:05:06 2020:366:23:59:59\n");
}

TEST_F(StationDump, BlankNetworkStaysBlank) {
  EXPECT_EQ(header(station({.network = {}}).fixed("", 2)).summary(),
            "   DYNGA 2018:120:04:05:06 2020:366:23:59:59\n");
}

TEST_F(StationDump, StationWithoutFieldsShowsNothing) {
  EXPECT_EQ(header(ControlBlockette(50)).summary(), "\?\?       NULL NULL\n");
}

TEST_F(StationDump, StationCutAfterItsCodeHasNoTimes) {
  EXPECT_EQ(header(ControlBlockette(50).fixed("DYNGA", 5)).summary(), "\?\? DYNGA NULL NULL\n");
}

TEST_F(StationDump, VerboseStationHasSiteNetworkAndPlace) {
  abbreviation(generic_abbreviation(1, "Demonstration Network"));
  EXPECT_EQ(header(station({})).summary({"-v"}),
            "XX DYNGA 2018:120:04:05:06 2020:366:23:59:59\n"
            "         Dyngja Flats : Demonstration Network\n"
            "         64.9931 -16.9123 -12.500\n");
}

TEST_F(StationDump, HigherVerbositySaysNoMore) {
  EXPECT_EQ(header(station({})).summary({"-vv"}),
            "XX DYNGA 2018:120:04:05:06 2020:366:23:59:59\n"
            "         Dyngja Flats : \n"
            "         64.9931 -16.9123 -12.500\n");
}

TEST_F(StationDump, UnknownNetworkCodeHasNoDescription) {
  abbreviation(generic_abbreviation(1, "Demonstration Network"));
  EXPECT_EQ(header(station({.network_name = 2})).summary({"-v"}),
            "XX DYNGA 2018:120:04:05:06 2020:366:23:59:59\n"
            "         Dyngja Flats : \n"
            "         64.9931 -16.9123 -12.500\n");
}

TEST_F(StationDump, VerboseStationWithoutFieldsHasZeros) {
  EXPECT_EQ(header(ControlBlockette(50)).summary({"-v"}),
            "\?\?       NULL NULL\n"
            "          : \n"
            "         0.0000 0.0000 0.000\n");
}

TEST_F(StationDump, ValuesAfterTheFirstMissingOneAreMissing) {
  // There is a latitude, but no longitude.
  const auto blockette =
      ControlBlockette(50).fixed("DYNGA", 5).coordinate(64.9931, volume::kLatitude);
  EXPECT_EQ(header(blockette).summary({"-v"}),
            "\?\? DYNGA NULL NULL\n"
            "          : \n"
            "         64.9931 0.0000 0.000\n");
}

// ---- channels

TEST_F(StationDump, ChannelIsOneLine) {
  EXPECT_EQ(header(channel({})).summary(), "         BHZ 00 2018:120:00:00:00 NULL\n");
}

TEST_F(StationDump, ChannelWithoutLocationIsPadded) {
  EXPECT_EQ(header(channel({.loc = "", .code = "HZ"})).summary(),
            "         HZ     2018:120:00:00:00 NULL\n");
}

TEST_F(StationDump, ChannelWithoutFieldsShowsNothing) {
  EXPECT_EQ(header(ControlBlockette(52)).summary(), "                NULL NULL\n");
}

TEST_F(StationDump, ChannelCodeThatIsMissingHidesTheLocation) {
  // The channel code is asked for first, though the location stands before it.
  EXPECT_EQ(header(ControlBlockette(52).fixed("00", 2)).summary(), "                NULL NULL\n");
}

TEST_F(StationDump, VerboseChannelHasInstrumentUnitsAndSixNumbers) {
  abbreviation(generic_abbreviation(2, "Seismometer")).abbreviation(unit_abbreviation(3, "M/S"));
  EXPECT_EQ(header(channel({})).summary({"-v"}),
            "         BHZ 00 2018:120:00:00:00 NULL\n"
            "                Seismometer : M/S\n"
            "                64.9931 -16.9124 2.500 271.500 -45.500 0.125\n");
}

TEST_F(StationDump, UnknownCodesOfAChannelShowNothing) {
  abbreviation(generic_abbreviation(1, "Seismometer")).abbreviation(unit_abbreviation(1, "M/S"));
  EXPECT_EQ(header(channel({})).summary({"-v"}),
            "         BHZ 00 2018:120:00:00:00 NULL\n"
            "                 : \n"
            "                64.9931 -16.9124 2.500 271.500 -45.500 0.125\n");
}

TEST_F(StationDump, AbbreviationsWithoutTextShowNothing) {
  abbreviation(ControlBlockette(33).digits(2, 3)).abbreviation(ControlBlockette(34).digits(3, 3));
  EXPECT_EQ(header(channel({})).summary({"-v"}),
            "         BHZ 00 2018:120:00:00:00 NULL\n"
            "                 : \n"
            "                64.9931 -16.9124 2.500 271.500 -45.500 0.125\n");
}

TEST_F(StationDump, VerboseChannelWithoutFieldsHasZeros) {
  EXPECT_EQ(header(ControlBlockette(52)).summary({"-v"}),
            "                NULL NULL\n"
            "                 : \n"
            "                0.0000 0.0000 0.000 0.000 0.000 0.000\n");
}

// ---- responses

TEST_F(StationDump, ResponsesOfAChannelShareALine) {
  header(channel({}));
  for (const int type : {53, 54, 57, 58, 61, 62}) header(response(type, type - 50));
  EXPECT_EQ(summary(), "         BHZ 00 2018:120:00:00:00 NULL\n" + kIndent +
                           " 53(3) 54(4) 57(7) 58(8) 61(11) 62(12)");
}

TEST_F(StationDump, ResponseListAndGenericResponseAreItems) {
  headers({response(55, 1), response(56, 2)});
  EXPECT_EQ(summary(), kIndent + " 55(1) 56(2)");
}

TEST_F(StationDump, StageZeroIsShown) {
  EXPECT_EQ(header(response(58, 0)).summary(), kIndent + " 58(0)");
}

TEST_F(StationDump, MissingStageIsEmpty) {
  headers({ControlBlockette(57), response(58, 2)});
  EXPECT_EQ(summary(), kIndent + " 57() 58(2)");
}

TEST_F(StationDump, OtherBlockettesAddNothing) {
  headers({response(58, 1), ControlBlockette(51), ControlBlockette(59), response(58, 2)});
  EXPECT_EQ(summary(), kIndent + " 58(1) 58(2)");
}

TEST_F(StationDump, ElevenItemsFillALine) {
  const std::string eleven =
      kIndent + " 58(1) 58(1) 58(1) 58(1) 58(1) 58(1)" + " 58(1) 58(1) 58(1) 58(1) 58(1)";
  EXPECT_EQ(headers(gains(11)).summary(), eleven);
  EXPECT_EQ(header(response(58, 2)).summary(), eleven + "\n" + kIndent + " 58(2)");
}

TEST_F(StationDump, TwentyThreeItemsFillTwoLinesAndStartAThird) {
  std::string expected;
  for (int item = 0; item < 23; ++item) {
    if (item == 11 || item == 22) expected += "\n";
    if (item % 11 == 0) expected += kIndent;
    expected += " 58(1)";
  }
  EXPECT_EQ(headers(gains(23)).summary(), expected);
}

TEST_F(StationDump, StationEndsTheOpenLine) {
  headers({response(58, 1), station({}), response(58, 2)});
  EXPECT_EQ(summary(), kIndent + " 58(1)\nXX DYNGA 2018:120:04:05:06 2020:366:23:59:59\n" +
                           kIndent + " 58(2)");
}

TEST_F(StationDump, ChannelEndsTheOpenLine) {
  headers({response(58, 1), channel({}), channel({.code = "BHN"}), response(58, 2)});
  EXPECT_EQ(summary(), kIndent +
                           " 58(1)\n"
                           "         BHZ 00 2018:120:00:00:00 NULL\n"
                           "         BHN 00 2018:120:00:00:00 NULL\n" +
                           kIndent + " 58(2)");
}

TEST_F(StationDump, ChannelStartsACountOfItsOwn) {
  headers(gains(6)).header(channel({})).headers(gains(6));
  const std::string six = kIndent + " 58(1) 58(1) 58(1) 58(1) 58(1) 58(1)";
  EXPECT_EQ(summary(), six + "\n         BHZ 00 2018:120:00:00:00 NULL\n" + six);
}

// ---- response references

class StationDumpReferences : public StationDump {
 protected:
  StationDumpReferences() {
    abbreviation(response_dictionary(43, 1).fixed("A", 1));
    abbreviation(response_dictionary(47, 2));
    abbreviation(response_dictionary(44, 3).fixed("D", 1));
  }
};

TEST_F(StationDumpReferences, TwoStagesOfTwoAreFourItems) {
  header(references({{1, {1, 2}}, {2, {3, 2}}}));
  EXPECT_EQ(summary(), kIndent + " 60()->[43(1) 47(1) 44(2) 47(2)]");
}

TEST_F(StationDumpReferences, NoStagesLeaveTheBracketsEmpty) {
  header(references({}));
  EXPECT_EQ(summary(), kIndent + " 60()->[]");
}

TEST_F(StationDumpReferences, NoFieldsLeaveTheBracketsEmpty) {
  header(ControlBlockette(60));
  EXPECT_EQ(summary(), kIndent + " 60()->[]");
}

TEST_F(StationDumpReferences, StageWithoutReferencesAddsNothing) {
  header(references({{1, {}}, {2, {3}}, {3, {}}, {4, {2}}}));
  EXPECT_EQ(summary(), kIndent + " 60()->[44(2) 47(4)]");
}

TEST_F(StationDumpReferences, UnknownCodeShowsItsStage) {
  header(references({{1, {9, 1}}, {2, {9}}}));
  EXPECT_EQ(summary(), kIndent + " 60()->[\?\?(1) 43(1) \?\?(2)]");
}

TEST_F(StationDumpReferences, StagesThatAreNotThereHaveNoReferences) {
  // Three stages are promised, one is there.
  header(ControlBlockette(60).digits(3, 2).digits(1, 2).digits(1, 2).digits(1, 4));
  EXPECT_EQ(summary(), kIndent + " 60()->[43(1)]");
}

TEST_F(StationDumpReferences, StageWithoutItsFieldsHasNoReferences) {
  // The second stage ends after its number.
  header(ControlBlockette(60).digits(2, 2).digits(1, 2).digits(1, 2).digits(1, 4).digits(2, 2));
  EXPECT_EQ(summary(), kIndent + " 60()->[43(1)]");
}

TEST_F(StationDumpReferences, ReferencesThatAreNotThereAreUnknown) {
  // Three references are promised, one is there.
  header(ControlBlockette(60).digits(1, 2).digits(1, 2).digits(3, 2).digits(1, 4));
  EXPECT_EQ(summary(), kIndent + " 60()->[43(1) \?\?(1) \?\?(1)]");
}

TEST_F(StationDumpReferences, LineGoesOnAfterTheBracket) {
  header(references({{1, {1}}})).header(response(58, 3));
  EXPECT_EQ(summary(), kIndent + " 60()->[43(1)] 58(3)");
}

TEST_F(StationDumpReferences, ReferencesWrapLikeItems) {
  // The blockette itself is the first item, so that the eleventh reference is the twelfth.
  header(references({{1, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2}}}));
  EXPECT_EQ(summary(), kIndent +
                           " 60()->[43(1) 43(1) 43(1) 43(1) 43(1) 43(1) 43(1) 43(1) 43(1) 43(1)\n" +
                           kIndent + " 47(1)]");
}

TEST_F(StationDumpReferences, FirstReferenceNeverWraps) {
  // The eleventh item opens the bracket; its first reference stays, as the twelfth, and the second
  // goes to a new line.
  headers(gains(10)).header(references({{1, {1, 2}}}));
  EXPECT_EQ(summary(), kIndent +
                           " 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1)"
                           " 60()->[43(1)\n" +
                           kIndent + " 47(1)]");
}

TEST_F(StationDumpReferences, BracketOpensOnANewLineAfterElevenItems) {
  headers(gains(11)).header(references({{1, {1}}}));
  EXPECT_EQ(summary(), kIndent +
                           " 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1) 58(1)\n" +
                           kIndent + " 60()->[43(1)]");
}

// ---- times

std::string time_text(double epoch) {
  std::array<char, 32> text;
  EXPECT_EQ(mystrtime(text.data(), epoch), 0);
  return text.data();
}

TEST(MyStrTime, EmptyTimeIsNull) { EXPECT_EQ(time_text(9999999999.999), "NULL"); }

TEST(MyStrTime, TimeHasYearDayAndTimeOfDay) {
  EXPECT_EQ(time_text(0), "1970:001:00:00:00");
  EXPECT_EQ(time_text(951782400), "2000:060:00:00:00");  // 29 February
}

TEST(MyStrTime, FractionsAreRoundedDown) {
  EXPECT_EQ(time_text(59.9999), "1970:001:00:00:59");
  EXPECT_EQ(time_text(-0.5), "1969:365:23:59:59");
}

TEST(MyStrTime, TimeNextToTheEmptyOneIsATime) {
  // 9999999999 s: 2286-11-20, day 324.
  EXPECT_EQ(time_text(9999999999.0), "2286:324:17:46:39");
}

TEST(MyStrTime, WhatIsNoTimeIsShownAsSuch) {
  EXPECT_EQ(time_text(1e300), "Inf");
  EXPECT_EQ(time_text(-1e300), "-Inf");
}

}  // namespace
