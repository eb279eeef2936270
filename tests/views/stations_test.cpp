#include "views/stations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

#include "tests/util/volume_writer.h"
#include "tests/views/station_blockettes.h"
#include "tests/views/view_lines.h"

using namespace tarvik;
using namespace station_blockettes;

namespace {

std::string lines(const VolumeWriter &volume, const EpochOptions &epochs = {}, bool csv = false) {
  ViewOptions options;
  options.csv = csv;
  return lines_of(make_stations_view(options, epochs).get(), volume.bytes());
}

std::string element(const std::string &frequency) {
  return R"({"freq":)" + frequency + R"(,"amp":2,"amp_err":0,"phase":-45,"phase_err":0})";
}

std::string sensitivity(const std::string &line) {
  return between(line, R"("sensitivity":)", R"(,"stages":)");
}
std::string stages(const std::string &line) {
  return between(line, R"("stages":)", R"(,"comments":)");
}

// The stages of an epoch with these blockettes, after the dictionaries (blocks 0 to 6), a 50 and a
// 52.
std::string stages_of(std::initializer_list<ControlBlockette> responses) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  volume.control('S', responses);
  return stages(lines(volume));
}

// ---- a line ----

TEST(StationsView, LineHasEverything) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), comment(51, 7, {2020, 2}, 5), channel("BHZ", "00")});
  volume.control('S', {gain(0, 3000), comment(59, 7, {2021, 76}, -3)});
  EXPECT_EQ(
      lines(volume),
      R"({"kind":"epoch","file":"v","network":"XX","station":"DYNGA","location":"00","channel":"BHZ",)"
      R"("start":"2021-03-16T06:15:52.6000Z","end":null,"latitude":65,"longitude":-16.25,)"
      R"("elevation":700.5,"depth":2.5,"azimuth":90,"dip":-90,"sample_rate":20,)"
      R"("max_clock_drift":1e-4,"instrument":"Sensor","units":"M/S",)"
      R"("units_description":"M/S in words","calibration_units":"V",)"
      R"("calibration_units_description":"V in words","format":"Steim-2","flags":"CG",)"
      R"("comment":"\"new\"","site":"Askja, north","network_description":"Test network",)"
      R"("station_start":"2020-01-01T00:00:00.0000Z","station_end":null,"station_latitude":64.99,)"
      R"("station_longitude":-16.5,"station_elevation":688,)"
      R"("sensitivity":{"value":3e3,"frequency":0.05,"input_units":null,"output_units":null},)"
      R"("stages":[{"stage":0,"blockettes":[{"type":58,"from":58,"block":10,)"
      R"("fields":{"stage":0,"sens":3e3,"freq":0.05,"nhistories":0}}]}],)"
      R"("comments":[{"start":"2021-03-17T00:00:00.0000Z","end":null,"text":"Frozen","level":-3}],)"
      R"("station_comments":[{"start":"2020-01-02T00:00:00.0000Z","end":null,"text":"Frozen",)"
      R"("level":5}]})"
      "\n");
}

TEST(StationsView, CsvHasTheValuesThatAreNoLists) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ", "00"), gain(0, 3000)});
  EXPECT_EQ(
      lines(volume, {}, true),
      "v,XX,DYNGA,00,BHZ,2021-03-16T06:15:52.6000Z,,65,-16.25,700.5,2.5,90,-90,20,1e-4,Sensor,"
      "M/S,M/S in words,V,V in words,Steim-2,CG,\"\"\"new\"\"\",\"Askja, north\",Test network,"
      "2020-01-01T00:00:00.0000Z,,64.99,-16.5,688\n");
}

TEST(StationsHeading, HasTheKeys) {
  EXPECT_EQ(stations_heading(),
            "file,network,station,location,channel,start,end,latitude,longitude,elevation,depth,"
            "azimuth,dip,sample_rate,max_clock_drift,instrument,units,units_description,"
            "calibration_units,calibration_units_description,format,flags,comment,site,"
            "network_description,station_start,station_end,station_latitude,station_longitude,"
            "station_elevation");
}

TEST(StationsView, EachChannelHasALineWithTheStation) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ"), channel("BHN"), station("SKERA")});
  volume.control('S', channel("BHE"));
  const std::string text = lines(volume);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
  EXPECT_NE(text.find(R"("station":"DYNGA","location":"","channel":"BHN")"), std::string::npos);
  EXPECT_NE(text.find(R"("station":"SKERA","location":"","channel":"BHE")"), std::string::npos);
}

TEST(StationsView, StationWithoutChannelHasALine) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), comment(51, 7, {2020, 2}, 5), station("SKERA")});
  volume.control('S', channel("BHZ"));
  const std::string text = lines(volume);
  EXPECT_EQ(between(text, R"("station":"DYNGA",)", R"(,"site")"),
            R"("location":null,"channel":null,"start":null,"end":null,"latitude":null,)"
            R"("longitude":null,"elevation":null,"depth":null,"azimuth":null,"dip":null,)"
            R"("sample_rate":null,"max_clock_drift":null,"instrument":null,"units":null,)"
            R"("units_description":null,"calibration_units":null,)"
            R"("calibration_units_description":null,"format":null,"flags":null,"comment":null)");
  EXPECT_NE(text.find(R"("sensitivity":null,"stages":null,"comments":null,"station_comments":[{)"),
            std::string::npos);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
}

TEST(StationsView, ChannelWithoutStationHasNullsAndNoComments) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {comment(51, 7, {2020, 2}, 5), channel("BHZ")});
  const std::string text = lines(volume);
  EXPECT_EQ(between(text, R"("file":"v",)", R"(,"location")"), R"("network":null,"station":null)");
  EXPECT_EQ(between(text, R"("comment":"\"new\"",)", R"(,"sensitivity")"),
            R"("site":null,"network_description":null,"station_start":null,"station_end":null,)"
            R"("station_latitude":null,"station_longitude":null,"station_elevation":null)");
  EXPECT_NE(text.find(R"("station_comments":[]})"), std::string::npos);
}

TEST(StationsView, NextFileStartsAnew) {
  VolumeWriter first = dictionaries();
  first.control('S', station("DYNGA"));
  VolumeWriter second = dictionaries();
  second.control('S', channel("BHZ"));
  const auto view = make_stations_view({}, {});
  EXPECT_NE(lines_of(view.get(), first.bytes()), "");
  EXPECT_NE(lines_of(view.get(), second.bytes()).find(R"("station":null)"), std::string::npos);
}

TEST(StationsView, CodesOfTheFileBeforeChooseNothing) {
  VolumeWriter first = dictionaries();
  first.control('S', station("DYNGA"));
  VolumeWriter second = dictionaries();
  second.control('S', channel("BHZ"));
  EpochOptions epochs;
  epochs.accept = {"^XX_", "_DYNGA_"};
  const auto view = make_stations_view({}, epochs);
  EXPECT_NE(lines_of(view.get(), first.bytes()), "");
  EXPECT_EQ(lines_of(view.get(), second.bytes()), "");
  epochs.accept = {"^__BHZ$"};
  EXPECT_NE(lines_of(make_stations_view({}, epochs).get(), second.bytes()), "");
}

TEST(StationsView, VolumeWithoutStationsHasNoLine) { EXPECT_EQ(lines(dictionaries()), ""); }

// ---- comments ----

TEST(StationsView, StationCommentThatFollowsAChannelBelongsToItsLine) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ"), comment(51, 7, {2020, 2}, 1)});
  volume.control('S', {channel("BHN"), comment(51, 7, {2020, 3}, 2)});
  const std::string text = lines(volume);
  const std::string first = text.substr(0, text.find('\n'));
  const std::string one =
      R"({"start":"2020-01-02T00:00:00.0000Z","end":null,"text":"Frozen","level":1})";
  const std::string two =
      R"({"start":"2020-01-03T00:00:00.0000Z","end":null,"text":"Frozen","level":2})";
  EXPECT_EQ(between(first, R"("station_comments":)", "]}"), "[" + one);
  EXPECT_EQ(between(text.substr(first.size()), R"("station_comments":)", "]}"),
            "[" + one + "," + two);
}

TEST(StationsView, CommentsStayWithTheirOwn) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), comment(51, 7, {2020, 2}, 1), channel("BHZ")});
  volume.control('S', {comment(59, 7, {2021, 76}, 2), channel("BHN"), station("SKERA")});
  volume.control('S', channel("BHE"));
  const std::vector<std::string> found = split_lines(lines(volume));
  ASSERT_EQ(found.size(), 3U);
  EXPECT_NE(between(found[0], R"("comments":[)", "]"), "");
  EXPECT_EQ(between(found[1], R"(,"comments":[)", "]"), "");
  EXPECT_NE(between(found[1], R"("station_comments":[)", "]"), "");
  EXPECT_EQ(between(found[2], R"(,"comments":[)", "]"), "");
  EXPECT_EQ(between(found[2], R"("station_comments":[)", "]"), "");
}

TEST(StationsView, CommentMayHaveAnEnd) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  volume.control('S',
                 ControlBlockette(59).var("2021,076").var("2021,077").digits(7, 4).fixed("", 6));
  EXPECT_EQ(between(lines(volume), R"(,"comments":[)", "]"),
            R"({"start":"2021-03-17T00:00:00.0000Z","end":"2021-03-18T00:00:00.0000Z",)"
            R"("text":"Frozen","level":null})");
}

TEST(StationsView, UndefinedCommentHasNoText) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ"), comment(59, 8, {2020, 2}, 1)});
  EXPECT_EQ(between(lines(volume), R"("comments":[)", "]"),
            R"({"start":"2020-01-02T00:00:00.0000Z","end":null,"text":null,"level":1})");
}

TEST(StationsView, CommentsEndAfterAThousand) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  for (int i = 0; i < 1001; ++i) {
    volume.control('S', {comment(51, 7, {2020, 2}, i), comment(59, 7, {2020, 2}, i)});
  }
  const std::string text = lines(volume);
  for (const char *array : {R"(,"comments":[)", R"("station_comments":[)"}) {
    const std::string comments = between(text, array, "]");
    EXPECT_EQ(std::count(comments.begin(), comments.end(), '{'), 1000);
    EXPECT_NE(comments.find(R"("level":999})"), std::string::npos);
  }
}

// ---- references ----

TEST(StationsView, ReferenceSeesWhatStandsBefore) {
  VolumeWriter volume(4096);
  volume.control('A', unit(1, "M/S"));
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  volume.control('A', {unit(1, "M/S**2"), unit(2, "V")});
  volume.control('S', channel("BHN"));
  const std::string text = lines(volume);
  const std::string second = text.substr(text.find('\n') + 1);
  EXPECT_EQ(between(text, R"("units":)", R"(,"format")"),
            R"("M/S","units_description":"M/S in words","calibration_units":null,)"
            R"("calibration_units_description":null)");
  EXPECT_EQ(between(second, R"("units":)", ",\"units_d"), R"("M/S")");
  EXPECT_EQ(between(second, R"("calibration_units":)", ",\"cal"), R"("V")");
}

// ---- the response ----

TEST(StationsView, StagesAscendWithZeroFirstAndNoneLast) {
  EXPECT_EQ(
      stages_of(
          {decimation(2), ControlBlockette(58).raw("  "), gain(1, 7), gain(0, 9), gain(2, 8)}),
      R"([{"stage":0,"blockettes":[{"type":58,"from":58,"block":12,"fields":{"stage":0,"sens":9,"freq":0.05,"nhistories":0}}]},)"
      R"({"stage":1,"blockettes":[{"type":58,"from":58,"block":11,"fields":{"stage":1,"sens":7,"freq":0.05,"nhistories":0}}]},)"
      R"({"stage":2,"blockettes":[{"type":57,"from":57,"block":9,"fields":{"stage":2,"isamprate":80,"decfac":4,"decoff":0,"delay":1.5,"correction":0}},)"
      R"({"type":58,"from":58,"block":13,"fields":{"stage":2,"sens":8,"freq":0.05,"nhistories":0}}]},)"
      R"({"stage":null,"blockettes":[{"type":58,"from":58,"block":10,"fields":{"stage":null}}]}])");
}

TEST(StationsView, SensitivityHasTheUnitsOfTheStages) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  // The undefined unit of stage 1 is passed over; that of stage 0 does not count.
  volume.control('S',
                 {list(2, 1, 1, 2), list(1, 1, 1, 9), list(0, 1, 1, 1), gain(0, 5), gain(0, 6)});
  EXPECT_EQ(sensitivity(lines(volume)),
            R"({"value":5,"frequency":0.05,"input_units":"V","output_units":"COUNTS"})");
}

// A list without elements, between two units.
ControlBlockette units(const std::string &stage, int input, int output) {
  return ControlBlockette(55).fixed(stage, 2).digits(input, 3).digits(output, 3).digits(0, 4);
}

// The sensitivity of an epoch with these blockettes and a gain of stage 0.
std::string sensitivity_of(std::initializer_list<ControlBlockette> responses) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  volume.control('S', responses);
  volume.control('S', gain(0, 5));
  return between(lines(volume), R"("sensitivity":{"value":5,"frequency":0.05,)", "}");
}

TEST(StationsView, SensitivityGoesFromTheFirstStageToTheLast) {
  EXPECT_EQ(sensitivity_of({units("02", 2, 3), units("01", 1, 2), units("00", 3, 1)}),
            R"("input_units":"M/S","output_units":"COUNTS")");
  // Of a stage's own, the first and the last in the order of the volume.
  EXPECT_EQ(sensitivity_of({units("01", 1, 2), units("01", 2, 3), units("01", 3, 1)}),
            R"("input_units":"M/S","output_units":"M/S")");
}

TEST(StationsView, SensitivityPassesOverUnitsThatAreNull) {
  EXPECT_EQ(sensitivity_of({units("01", 9, 2), units("02", 2, 3), units("03", 3, 9)}),
            R"("input_units":"V","output_units":"COUNTS")");
}

TEST(StationsView, SensitivityTakesNoUnitsOfStageZero) {
  EXPECT_EQ(sensitivity_of({units("00", 1, 3)}), R"("input_units":null,"output_units":null)");
}

TEST(StationsView, SensitivityTakesUnitsOfANullStage) {
  EXPECT_EQ(sensitivity_of({units("", 2, 1), units("01", 1, 2)}),
            R"("input_units":"M/S","output_units":"M/S")");
}

TEST(StationsView, SensitivityMayComeFromADictionary) {
  VolumeWriter volume = dictionaries();
  volume.control('A', named(48, 4).real(7).real(1).digits(0, 2));
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(0, {4}), gain(0, 5)});
  EXPECT_EQ(sensitivity(lines(volume)),
            R"({"value":7,"frequency":1,"input_units":null,"output_units":null})");
}

TEST(StationsView, SensitivityOfNoStageZeroIsNull) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ"), gain(1, 5)});
  EXPECT_EQ(sensitivity(lines(volume)), "null");
}

TEST(StationsView, UnitThatIsNotDefinedIsNull) {
  EXPECT_NE(stages_of({list(1, 1, 1, 9)}).find(R"("iunits":null,"ounits":"COUNTS")"),
            std::string::npos);
}

TEST(StationsView, SplitResponseIsJoined) {
  EXPECT_EQ(stages_of({list(1, 2, 1), gain(2, 1), list(1, 1, 3)}),
            R"([{"stage":1,"blockettes":[{"type":55,"from":55,"block":9,"fields":{"stage":1,)"
            R"("iunits":"M/S","ounits":"COUNTS","nfaps":3,"faps":[)" +
                element("1") + "," + element("2") + "," + element("3") +
                R"(]}}]},{"stage":2,"blockettes":[{"type":58,"from":58,"block":10,)"
                R"("fields":{"stage":2,"sens":1,"freq":0.05,"nhistories":0}}]}])");
}

TEST(StationsView, ManyBlockettesOfAStageStayInTheirOrder) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  std::string expected;
  for (int i = 0; i < 50; ++i) {
    volume.control('S', {gain(2, 100 + i), gain(1, i)});
    expected += std::to_string(i) + ' ';
  }
  const std::string text = between(stages(lines(volume)), R"("stage":1,)", R"({"stage":2,"block)");
  std::string order;
  for (std::size_t at = 0; (at = text.find(R"("sens":)", at)) != std::string::npos; ++at) {
    order += between(text.substr(at), R"("sens":)", ",") + ' ';
  }
  EXPECT_EQ(order, expected);
}

TEST(StationsView, NegativeStageComesBeforeZero) {
  const std::string text =
      stages_of({gain(0, 9), ControlBlockette(58).raw("-1").real(8).real(1).digits(0, 2)});
  EXPECT_EQ(text.find(R"([{"stage":-1,"blockettes":[{"type":58,"from":58,"block":10,)"), 0U);
}

TEST(StationsView, CoefficientsOfPartsFollowOneAnother) {
  const auto part = [](int nums, int dens, double value) {
    ControlBlockette blockette(54);
    blockette.fixed("D", 1).digits(1, 2).digits(1, 3).digits(2, 3);
    for (const int count : {nums, dens}) {
      blockette.digits(count, 4);
      for (int i = 0; i < count; ++i) blockette.real(value).real(0);
    }
    return blockette;
  };
  const std::string five = R"({"coef":5,"coef_err":0})";
  const std::string six = R"({"coef":6,"coef_err":0})";
  EXPECT_EQ(stages_of({part(1, 0, 5), part(2, 1, 6)}),
            R"([{"stage":1,"blockettes":[{"type":54,"from":54,"block":9,"fields":{"resp":"D",)"
            R"("stage":1,"iunits":"M/S","ounits":"V","nnums":3,"nums":[)" +
                five + "," + six + "," + six + R"(],"ndens":1,"dens":[)" + six + "]}}]}]");
}

TEST(StationsView, FirsOfOneNameAreJoined) {
  const auto part = [](const std::string &name, double value) {
    return ControlBlockette(61).digits(1, 2).var(name).raw("A001002").digits(1, 4).real(
        value, volume::kReal14);
  };
  EXPECT_NE(stages_of({part("F", 1), part("F", 2)}).find(R"("ncoefs":2,"coefs":[1,2]}}]}])"),
            std::string::npos);
  EXPECT_NE(stages_of({part("F", 1), part("G", 2)}).find(R"("block":10,)"), std::string::npos);
}

TEST(StationsView, OtherTypesAreNotJoined) {
  const ControlBlockette corners =
      ControlBlockette(56).raw("01001002").digits(1, 4).real(1).real(2);
  const ControlBlockette polynomial = ControlBlockette(62)
                                          .raw("P01001002MB")
                                          .real(0)
                                          .real(10)
                                          .real(1)
                                          .real(2)
                                          .real(0.5)
                                          .digits(1, 3)
                                          .real(7)
                                          .real(8);
  for (const ControlBlockette &part : {corners, decimation(1), polynomial}) {
    const std::string text = stages_of({part, part});
    EXPECT_NE(text.find(R"("block":9,)"), std::string::npos);
    EXPECT_NE(text.find(R"("block":10,)"), std::string::npos);
  }
}

TEST(StationsView, CountOfOneBlocketteStaysAsItIs) {
  EXPECT_NE(stages_of({ControlBlockette(61)
                           .digits(1, 2)
                           .var("F")
                           .fixed("A", 1)
                           .digits(1, 3)
                           .digits(3, 3)
                           .digits(5, 4)
                           .real(1, volume::kReal14)})
                .find(R"("ncoefs":5,"coefs":[1])"),
            std::string::npos);
}

TEST(StationsView, JoinedPartsWithoutElementsCountThoseOfTheOthers) {
  // The second part ends after its count, the third before it.
  const std::string text = stages_of(
      {list(1, 1, 1), ControlBlockette(55).digits(1, 2).digits(1, 3).digits(3, 3).digits(4, 4),
       ControlBlockette(55).digits(1, 2).digits(1, 3).digits(3, 3)});
  EXPECT_NE(text.find(R"("nfaps":1,"faps":[)" + element("1") + "]}}]}]"), std::string::npos);
}

TEST(StationsView, OtherUnitsAreNotJoined) {
  const std::string text = stages_of({list(1, 1, 1, 1), list(1, 1, 2, 2)});
  EXPECT_NE(text.find(R"("block":9)"), std::string::npos);
  EXPECT_NE(text.find(R"("block":10)"), std::string::npos);
}

TEST(StationsView, OtherBlocketteInBetweenIsNotJoined) {
  EXPECT_NE(stages_of({list(1, 1, 1), gain(1, 5), list(1, 1, 2)}).find(R"("block":11)"),
            std::string::npos);
}

TEST(StationsView, GainsAreNotJoined) {
  EXPECT_NE(stages_of({gain(1, 5), gain(1, 5)}).find(R"("block":10)"), std::string::npos);
}

TEST(StationsView, PolesAndZerosOfPartsFollowOneAnother) {
  const auto part = [](int zeros, int poles, double value) {
    ControlBlockette blockette(53);
    blockette.fixed("A", 1).digits(1, 2).digits(1, 3).digits(2, 3).real(4).real(1);
    for (const int count : {zeros, poles}) {
      blockette.digits(count, 3);
      for (int i = 0; i < count; ++i) blockette.real(value).real(0).real(0).real(0);
    }
    return blockette;
  };
  const auto root = [](const std::string &value) {
    return R"({"real":)" + value + R"(,"imag":0,"real_err":0,"imag_err":0})";
  };
  EXPECT_EQ(stages_of({part(1, 1, 5), part(0, 2, 6)}),
            R"([{"stage":1,"blockettes":[{"type":53,"from":53,"block":9,"fields":{"resp":"A",)"
            R"("stage":1,"iunits":"M/S","ounits":"V","norm":4,"fnorm":1,"nzeros":1,"zeros":[)" +
                root("5") + R"(],"npoles":3,"poles":[)" + root("5") + "," + root("6") + "," +
                root("6") + "]}}]}]");
}

TEST(StationsView, BlockettesEndAfterAThousand) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  for (int i = 0; i < 1000; ++i) volume.control('S', gain(2, i));
  volume.control('S', gain(1, 1));
  const std::string text = stages(lines(volume));
  EXPECT_EQ(text.find(R"([{"stage":2,)"), 0U);
  EXPECT_EQ(text.find(R"("stage":1,)"), std::string::npos);
  EXPECT_NE(text.find(R"("sens":999,)"), std::string::npos);
}

TEST(StationsView, PartsCountBeforeTheyAreJoined) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  for (int i = 0; i < 1001; ++i) volume.control('S', list(1, 1, 3));
  EXPECT_NE(stages(lines(volume)).find(R"("nfaps":1000,"faps":[)"), std::string::npos);
}

// ---- dictionary responses ----

// The only blockette of stage 2 of an epoch, from a dictionary blockette (block 7).
std::string dictionary_fields(const ControlBlockette &dictionary) {
  VolumeWriter volume = dictionaries();
  volume.control('A', dictionary);
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(2, {4})});
  return between(stages(lines(volume)), R"([{"stage":2,"blockettes":[)", "]}]");
}

TEST(StationsView, DictionaryFirBecomes61) {
  EXPECT_EQ(
      dictionary_fields(named(41, 4).fixed("A", 1).digits(1, 3).digits(2, 3).digits(1, 4).real(
          3, volume::kReal14)),
      R"({"type":61,"from":41,"block":7,"fields":{"stage":2,"name":"NAME","sym":"A",)"
      R"("iunits":"M/S","ounits":"V","ncoefs":1,"coefs":[3]}})");
}

TEST(StationsView, DictionaryPolynomialBecomes62) {
  EXPECT_EQ(dictionary_fields(named(42, 4)
                                  .fixed("P", 1)
                                  .digits(1, 3)
                                  .digits(2, 3)
                                  .fixed("M", 1)
                                  .fixed("B", 1)
                                  .real(0)
                                  .real(10)
                                  .real(1)
                                  .real(2)
                                  .real(0.5)
                                  .digits(1, 3)
                                  .real(7)
                                  .real(8)),
            R"({"type":62,"from":42,"block":7,"fields":{"tran":"P","stage":2,"iunits":"M/S",)"
            R"("ounits":"V","poly":"M","funits":"B","lfreq":0,"ufreq":10,"lappr":1,"uappr":2,)"
            R"("err":0.5,"ncoefs":1,"coefs":[{"coef":7,"coef_err":8}]}})");
}

TEST(StationsView, DictionaryPolesAndZerosBecome53) {
  EXPECT_EQ(dictionary_fields(
                named(43, 4).fixed("A", 1).digits(1, 3).digits(2, 3).real(4).real(1).digits(0, 3)),
            R"({"type":53,"from":43,"block":7,"fields":{"resp":"A","stage":2,"iunits":"M/S",)"
            R"("ounits":"V","norm":4,"fnorm":1,"nzeros":0}})");
}

TEST(StationsView, DictionaryCoefficientsBecome54) {
  EXPECT_EQ(
      dictionary_fields(
          named(44, 4).fixed("D", 1).digits(1, 3).digits(2, 3).digits(1, 4).real(3).real(0).digits(
              0, 4)),
      R"({"type":54,"from":44,"block":7,"fields":{"resp":"D","stage":2,"iunits":"M/S",)"
      R"("ounits":"V","nnums":1,"nums":[{"coef":3,"coef_err":0}],"ndens":0}})");
}

TEST(StationsView, DictionaryListBecomes55) {
  EXPECT_EQ(
      dictionary_fields(named(45, 4).digits(1, 3).digits(2, 3).digits(0, 4)),
      R"({"type":55,"from":45,"block":7,"fields":{"stage":2,"iunits":"M/S","ounits":"V","nfaps":0}})");
}

TEST(StationsView, DictionaryCornersBecome56) {
  EXPECT_EQ(dictionary_fields(named(46, 4).digits(1, 3).digits(2, 3).digits(1, 4).real(3).real(6)),
            R"({"type":56,"from":46,"block":7,"fields":{"stage":2,"iunits":"M/S","ounits":"V",)"
            R"("ncorners":1,"corners":[{"freq":3,"slope":6}]}})");
}

TEST(StationsView, DictionaryDecimationBecomes57) {
  EXPECT_EQ(dictionary_fields(named(47, 4)
                                  .real(80, volume::kReal10)
                                  .digits(4, 5)
                                  .digits(1, 5)
                                  .real(1.5, volume::kReal11)
                                  .real(2, volume::kReal11)),
            R"({"type":57,"from":47,"block":7,"fields":{"stage":2,"isamprate":80,"decfac":4,)"
            R"("decoff":1,"delay":1.5,"correction":2}})");
}

TEST(StationsView, DictionaryGainBecomes58) {
  EXPECT_EQ(
      dictionary_fields(named(48, 4).real(7).real(1).digits(0, 2)),
      R"({"type":58,"from":48,"block":7,"fields":{"stage":2,"sens":7,"freq":1,"nhistories":0}})");
}

TEST(StationsView, CutDictionaryBlocketteKeepsTheStage) {
  EXPECT_EQ(dictionary_fields(named(43, 4)),
            R"({"type":53,"from":43,"block":7,"fields":{"stage":2}})");
}

TEST(StationsView, CodeThatIsNotDefinedIsLeftOut) {
  EXPECT_EQ(stages_of({by_dictionary(2, {4, 5})}), "[]");
}

// The types and origins of an epoch's stages, after dictionary blockettes 4, 5 and 6 (blocks 7 to 9).
std::string stages_by(const ControlBlockette &blockette) {
  VolumeWriter volume = dictionaries();
  for (const int code : {4, 5, 6}) {
    volume.control('A', named(48, code).real(code).real(1).digits(0, 2));
  }
  volume.control('S', {station("DYNGA"), channel("BHZ"), blockette});
  return stages(lines(volume));
}
std::string gain_by(int stage, int code) {
  return R"({"type":58,"from":48,"block":)" + std::to_string(code + 3) + R"(,"fields":{"stage":)" +
         std::to_string(stage) + R"(,"sens":)" + std::to_string(code) +
         R"(,"freq":1,"nhistories":0}})";
}

TEST(StationsView, CodesBesideOneThatIsNotDefinedStay) {
  EXPECT_EQ(stages_by(by_dictionary(2, {5, 9, 4})),
            R"([{"stage":2,"blockettes":[)" + gain_by(2, 5) + "," + gain_by(2, 4) + "]}]");
  EXPECT_EQ(stages_by(ControlBlockette(60).raw("010203"
                                               "0005"
                                               "    "
                                               "0004")),
            R"([{"stage":2,"blockettes":[)" + gain_by(2, 5) + "," + gain_by(2, 4) + "]}]");
}

TEST(StationsView, ReferenceBlocketteMayHaveSeveralStages) {
  EXPECT_EQ(stages_by(ControlBlockette(60).raw("02"
                                               "0202"
                                               "00040006"
                                               "0101"
                                               "0005")),
            R"([{"stage":1,"blockettes":[)" + gain_by(1, 5) + R"(]},{"stage":2,"blockettes":[)" +
                gain_by(2, 4) + "," + gain_by(2, 6) + "]}]");
}

TEST(StationsView, CodeOfSeveralBlockettesStandsForThoseBeforeTheReference) {
  const auto fir = [](double value) {
    return named(41, 4).fixed("A", 1).digits(1, 3).digits(2, 3).digits(1, 4).real(value,
                                                                                  volume::kReal14);
  };
  VolumeWriter volume = dictionaries();
  volume.control('A', {fir(1), named(48, 5).real(7).real(1).digits(0, 2), fir(2)});
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(2, {4, 5})});
  volume.control('A', fir(3));
  EXPECT_EQ(
      stages(lines(volume)),
      R"([{"stage":2,"blockettes":[{"type":61,"from":41,"block":7,"fields":{"stage":2,)"
      R"("name":"NAME","sym":"A","iunits":"M/S","ounits":"V","ncoefs":2,"coefs":[1,2]}},)"
      R"({"type":58,"from":48,"block":8,"fields":{"stage":2,"sens":7,"freq":1,"nhistories":0}}]}])");
}

TEST(StationsView, DictionaryBlocketteAndOwnOneAreNotJoined) {
  VolumeWriter volume = dictionaries();
  volume.control('A', named(45, 4).digits(1, 3).digits(3, 3).digits(0, 4));
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(1, {4}), list(1, 1, 1)});
  const std::string text = stages(lines(volume));
  EXPECT_NE(text.find(R"("from":45)"), std::string::npos);
  EXPECT_NE(text.find(R"("from":55)"), std::string::npos);
}

TEST(StationsView, DictionaryReferenceSeesWhatStandsBeforeTheDictionaryBlockette) {
  VolumeWriter volume(4096);
  volume.control('A', named(45, 4).digits(1, 3).digits(3, 3).digits(0, 4));
  volume.control('A', {unit(1, "M/S"), unit(3, "COUNTS")});
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(1, {4})});
  EXPECT_NE(stages(lines(volume)).find(R"("iunits":null,"ounits":null)"), std::string::npos);
}

// ---- choice ----

TEST(StationsView, PatternsAndTimesChooseChannels) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ", "00", "2021,100"), channel("BHN", "10")});
  volume.control('S', gain(1, 5));
  const auto count = [&](const EpochOptions &epochs) {
    const std::string text = lines(volume, epochs);
    return std::count(text.begin(), text.end(), '\n');
  };
  EpochOptions epochs;
  EXPECT_EQ(count(epochs), 2);
  epochs.accept = {"^XX_DYNGA_BHN_10$"};
  EXPECT_EQ(count(epochs), 1);
  epochs.accept = {};
  epochs.from = parse_time_text("2021-04-11");  // a day after the end of the first
  EXPECT_EQ(count(epochs), 1);
  epochs.from = {};
  epochs.to = parse_time_text("2021-03-16T06:15:52.5999");
  EXPECT_EQ(count(epochs), 0);
}

TEST(StationsView, ChannelWithoutAStartBeginsBeforeEverything) {
  VolumeWriter volume = dictionaries();
  volume.control('S', volume::b52({.begin = "", .end = "2021,100"}));
  EpochOptions epochs;
  epochs.to = parse_time_text("0001-01-01");
  EXPECT_NE(lines(volume, epochs), "");
  epochs.from = parse_time_text("2021-04-11");
  EXPECT_EQ(lines(volume, epochs), "");
}

TEST(StationsView, StationWithoutChannelEndsWithTheStation) {
  VolumeWriter volume(4096);
  volume.control('S', volume::b50({.code = "DYNGA", .end = "2021,100"}));
  EpochOptions epochs;
  epochs.from = parse_time_text("2021-04-10");
  EXPECT_NE(lines(volume, epochs), "");
  epochs.from = parse_time_text("2021-04-10T00:00:00.0001");
  EXPECT_EQ(lines(volume, epochs), "");
}

TEST(StationsView, StationWithoutChannelGoesByItsOwnTimes) {
  VolumeWriter volume = dictionaries();
  volume.control('S', station("DYNGA", {2020, 10}));
  EpochOptions epochs;
  epochs.accept = {"^XX_DYNGA_$"};
  epochs.to = parse_time_text("2020-01-10");
  EXPECT_NE(lines(volume, epochs), "");
  epochs.to = parse_time_text("2020-01-09");
  EXPECT_EQ(lines(volume, epochs), "");
}

}  // namespace
