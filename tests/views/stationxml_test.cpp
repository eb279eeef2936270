#include "views/stationxml.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"
#include "tests/views/station_blockettes.h"
#include "tests/views/view_lines.h"

using namespace tarvik;
using namespace station_blockettes;

namespace {

using Texts = std::vector<std::string>;

// What came of some volumes, which lines call "0", "1" ...
struct Made {
  std::string document;  // empty where there was nothing to be written
  Texts lost;            // "0: 8192: Network/Station: text"
  Texts told;
  Texts lost_volumes;
};

std::string text_of(const Loss &loss) {
  return loss.volume + ": " + std::to_string(loss.offset) + ": " + loss.element + ": " + loss.text;
}

// between is called when all volumes were read, before the document is written.
Made make(const Texts &volumes, const StationXmlOptions &options = {},
          const std::function<void(const command::ScratchDirectory &)> &between = nullptr) {
  const command::ScratchDirectory scratch;
  Made made;
  StationXmlListener listener;
  listener.lose = [&](const Loss &loss) { made.lost.push_back(text_of(loss)); };
  listener.tell = [&](const Loss &loss) { made.told.push_back(text_of(loss)); };
  listener.lose_volume = [&](const std::string &name, const std::string &why) {
    made.lost_volumes.push_back(name + ": " + why);
  };
  StationXml document({}, options, listener);
  for (std::size_t i = 0; i < volumes.size(); ++i) {
    Source source;
    source.name = std::to_string(i);
    source.path = scratch.file(source.name, volumes[i]);
    document.add(source);
  }
  if (between) between(scratch);
  if (document.is_empty()) return made;
  TextSink sink;
  if (!document.write(&sink)) throw std::runtime_error("the document cannot be written");
  made.document = sink.text();
  return made;
}

Made make(const VolumeWriter &volume, const StationXmlOptions &options = {}) {
  return make(Texts{volume.bytes()}, options);
}

// A volume with one channel; its dictionaries take the first record, so that the station's begins
// at 4096.
VolumeWriter with_channel(std::initializer_list<ControlBlockette> blockettes) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ")});
  volume.control('S', blockettes);
  return volume;
}

// A blockette with some bytes replaced by others, as many.
std::string patched(const ControlBlockette &blockette, const std::string &from,
                    const std::string &to) {
  std::string text = blockette.text();
  const std::size_t at = text.find(from);
  if (at == std::string::npos || from.size() != to.size()) throw std::runtime_error(text);
  return text.replace(at, from.size(), to);
}

constexpr int kStationOffset = 4096 + 8;

// Where the blockette after the station's and the channel's begins.
std::size_t response_offset() {
  return kStationOffset + station("DYNGA").text().size() + channel("BHZ").text().size();
}
std::string at(std::size_t offset) { return "0: " + std::to_string(offset) + ": "; }

const std::string kOf = " (XX_DYNGA_BHZ)";
const std::string kResponse = "Network/Station/Channel/Response/";

std::string count_of(const std::string &text, const std::string &part) {
  int count = 0;
  for (std::size_t i = text.find(part); i != std::string::npos; i = text.find(part, i + 1)) ++count;
  return std::to_string(count);
}

// The stages of a document with one channel.
std::string stages(const Made &made) {
  const std::size_t begin = made.document.find("     <Stage");
  if (begin == std::string::npos) return "";
  return made.document.substr(begin, made.document.find("    </Response>") - begin);
}

std::string stage_gain(const std::string &value, const std::string &frequency = "0.05") {
  return "      <StageGain>\n       <Value>" + value + "</Value>\n       <Frequency>" + frequency +
         "</Frequency>\n      </StageGain>\n";
}
std::string stage(int number, const std::string &content) {
  return "     <Stage number=\"" + std::to_string(number) + "\">\n" + content + "     </Stage>\n";
}
std::string units(const std::string &element, const std::string &name) {
  return "       <" + element + ">\n        <Name>" + name + "</Name>\n        <Description>" +
         name + " in words</Description>\n       </" + element + ">\n";
}

// ---- a document ----

TEST(StationXml, DocumentHasEverything) {
  VolumeWriter volume(4096);
  volume.control('V', ControlBlockette(10)
                          .raw("02.412")
                          .var(Time{2001, 1})
                          .var("")
                          .var("")
                          .var("A & B")
                          .var("Label"));
  volume.control('A', {ControlBlockette(33).digits(1, 3).var("Test network"), unit(1, "M/S"),
                       unit(2, "V"), unit(3, "COUNTS")});
  volume.control('A', ControlBlockette(31).digits(7, 4).fixed("A", 1).var("<Frozen>").digits(0, 3));
  volume.control('S', {station("DYNGA"), comment(51, 7, {2020, 2}, 5),
                       channel("BHZ", "00", "2022,001"), comment(59, 7, {2021, 76}, 1)});
  volume.control('S', ControlBlockette(53)
                          .fixed("A", 1)
                          .digits(1, 2)
                          .digits(1, 3)
                          .digits(2, 3)
                          .real(4.5)
                          .real(0.02)
                          .digits(1, 3)
                          .real(0)
                          .real(0)
                          .real(0)
                          .real(0.5)
                          .digits(1, 3)
                          .real(-0.037)
                          .real(0.037)
                          .real(0.001)
                          .real(0));
  volume.control('S', {gain(1, 1500), decimation(2), gain(2, 4e5), gain(0, 6.29e8)});
  StationXmlOptions options;
  options.module = "test";
  options.created = 1615875352;
  const Made made = make(volume, options);
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(made.document, R"(<?xml version="1.0" encoding="UTF-8"?>
<FDSNStationXML xmlns="http://www.fdsn.org/xml/station/1" schemaVersion="1.2">
 <Source>A &amp; B</Source>
 <Module>test</Module>
 <Created>2021-03-16T06:15:52Z</Created>
 <Network code="XX">
  <Description>Test network</Description>
  <Station code="DYNGA" startDate="2020-01-01T00:00:00.0000Z">
   <Comment>
    <Value>&lt;Frozen&gt;</Value>
    <BeginEffectiveTime>2020-01-02T00:00:00.0000Z</BeginEffectiveTime>
   </Comment>
   <Latitude>64.99</Latitude>
   <Longitude>-16.5</Longitude>
   <Elevation>688</Elevation>
   <Site>
    <Name>Askja, north</Name>
   </Site>
   <TotalNumberChannels>1</TotalNumberChannels>
   <Channel code="BHZ" startDate="2021-03-16T06:15:52.6000Z" endDate="2022-01-01T00:00:00.0000Z" locationCode="00">
    <Comment>
     <Value>&quot;new&quot;</Value>
    </Comment>
    <Comment>
     <Value>&lt;Frozen&gt;</Value>
     <BeginEffectiveTime>2021-03-17T00:00:00.0000Z</BeginEffectiveTime>
    </Comment>
    <Latitude>65</Latitude>
    <Longitude>-16.25</Longitude>
    <Elevation>700.5</Elevation>
    <Depth>2.5</Depth>
    <Azimuth>90</Azimuth>
    <Dip>-90</Dip>
    <SampleRate>20</SampleRate>
    <ClockDrift>1e-4</ClockDrift>
    <CalibrationUnits>
     <Name>V</Name>
     <Description>V in words</Description>
    </CalibrationUnits>
    <Response>
     <InstrumentSensitivity>
      <Value>6.29e8</Value>
      <Frequency>0.05</Frequency>
      <InputUnits>
       <Name>M/S</Name>
       <Description>M/S in words</Description>
      </InputUnits>
      <OutputUnits>
       <Name>V</Name>
       <Description>V in words</Description>
      </OutputUnits>
     </InstrumentSensitivity>
     <Stage number="1">
      <PolesZeros>
       <InputUnits>
        <Name>M/S</Name>
        <Description>M/S in words</Description>
       </InputUnits>
       <OutputUnits>
        <Name>V</Name>
        <Description>V in words</Description>
       </OutputUnits>
       <PzTransferFunctionType>LAPLACE (RADIANS/SECOND)</PzTransferFunctionType>
       <NormalizationFactor>4.5</NormalizationFactor>
       <NormalizationFrequency>0.02</NormalizationFrequency>
       <Zero number="0">
        <Real plusError="0" minusError="0">0</Real>
        <Imaginary plusError="0.5" minusError="0.5">0</Imaginary>
       </Zero>
       <Pole number="0">
        <Real plusError="1e-3" minusError="1e-3">-0.037</Real>
        <Imaginary plusError="0" minusError="0">0.037</Imaginary>
       </Pole>
      </PolesZeros>
      <StageGain>
       <Value>1500</Value>
       <Frequency>0.05</Frequency>
      </StageGain>
     </Stage>
     <Stage number="2">
      <Decimation>
       <InputSampleRate>80</InputSampleRate>
       <Factor>4</Factor>
       <Offset>0</Offset>
       <Delay>1.5</Delay>
       <Correction>0</Correction>
      </Decimation>
      <StageGain>
       <Value>4e5</Value>
       <Frequency>0.05</Frequency>
      </StageGain>
     </Stage>
    </Response>
   </Channel>
  </Station>
 </Network>
</FDSNStationXML>
)");
}

TEST(StationXml, LevelsEndEarlier) {
  const VolumeWriter volume = with_channel({gain(0, 1), gain(1, 1)});
  const auto elements = [&](XmlLevel level) {
    StationXmlOptions options;
    options.level = level;
    const std::string text = make(volume, options).document;
    std::string found;
    for (const char *element : {"<Network", "<Station ", "<Channel", "<Response"}) {
      found += text.find(element) == std::string::npos ? '-' : '+';
    }
    return found;
  };
  EXPECT_EQ(elements(XmlLevel::network), "+---");
  EXPECT_EQ(elements(XmlLevel::station), "++--");
  EXPECT_EQ(elements(XmlLevel::channel), "+++-");
  EXPECT_EQ(elements(XmlLevel::response), "++++");
}

TEST(StationXml, ChoiceLeavesStationsWithoutWantedChannelsOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), channel("BHZ"), station("SKERA"), channel("BHN")});
  StationXmlOptions options;
  options.epochs.accept = {"_BHN$"};
  const std::string text = make(volume, options).document;
  EXPECT_EQ(text.find("DYNGA"), std::string::npos);
  EXPECT_NE(text.find("SKERA"), std::string::npos);
}

TEST(StationXml, StationWithoutChannelIsWritten) {
  VolumeWriter volume = dictionaries();
  volume.control('S', station("DYNGA"));
  EXPECT_NE(make(volume).document.find("<Station code=\"DYNGA\""), std::string::npos);
}

TEST(StationXml, VolumeWithoutStationsGivesNothing) {
  EXPECT_EQ(make(dictionaries()).document, "");
}

TEST(StationXml, EndFrom2100OnIsOpen) {
  const auto end_of = [](const std::string &end) {
    VolumeWriter volume = dictionaries();
    volume.control('S', {station("DYNGA"), channel("BHZ", "", end)});
    const std::string text = make(volume).document;
    return text.find("endDate") == std::string::npos ? "" : between(text, "endDate=\"", "\"");
  };
  EXPECT_EQ(end_of("2099,365,23:59:59.9999"), "2099-12-31T23:59:59.9999Z");
  EXPECT_EQ(end_of("2100,001"), "");
  EXPECT_EQ(end_of("2599,365"), "");
}

TEST(StationXml, MinusZeroStays) {
  VolumeWriter volume = dictionaries();
  volume.control('S', station("DYNGA"));
  volume.control('S', patched(channel("BHZ"), "+65.000000", "-00.000000"));
  EXPECT_NE(make(volume).document.find("<Latitude>-0</Latitude>"), std::string::npos);
}

// ---- networks ----

ControlBlockette station_of(const std::string &code, int network_text) {
  return volume::b50({.code = code,
                      .latitude = 1,
                      .longitude = 2,
                      .elevation = 3,
                      .channels = 0,
                      .network_name = network_text,
                      .network = code.substr(0, 2)});
}

TEST(StationXml, FirstTextIsTheNetworksAndAnotherTheStations) {
  VolumeWriter volume(4096);
  volume.control('A', {ControlBlockette(33).digits(1, 3).var("One"),
                       ControlBlockette(33).digits(2, 3).var("Two")});
  // The first has no text, so the network's is that of the second.
  volume.control('S', {station_of("AA1", 9), station_of("AA2", 1), station_of("AA3", 2)});
  volume.control('S', station_of("AA4", 1));
  const std::string text = make(volume).document;
  EXPECT_EQ(count_of(text, "<Description>"), "2");
  EXPECT_NE(text.find("<Network code=\"AA\">\n  <Description>One</Description>\n"),
            std::string::npos);
  EXPECT_EQ(between(text, "<Station code=\"AA3\"", "<Latitude>"),
            " startDate=\"2020-01-01T00:00:00.0000Z\">\n   <Description>Two</Description>\n   ");
}

TEST(StationXml, LossInTheNetworksTextIsToldOnceWhereItStands) {
  VolumeWriter volume(4096);
  volume.control('A', ControlBlockette(33).digits(1, 3).var("One\x01"));
  volume.control('S', {station_of("AA1", 1), station_of("AA2", 1)});
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{"0: 8: Network/Description: characters that XML forbids are left out "
                             "(AA_AA1)"});
  EXPECT_EQ(count_of(made.document, "<Description>One</Description>"), "1");
}

TEST(StationXml, StationsOfANetworkStandTogether) {
  VolumeWriter volume(4096);
  volume.control('S', {station_of("AA1", 1), station_of("BB1", 1), station_of("AA2", 1)});
  const std::string text = make(volume).document;
  EXPECT_EQ(count_of(text, "<Network"), "2");
  EXPECT_LT(text.find("AA2"), text.find("BB1"));
}

// ---- what the format cannot take ----

TEST(StationXml, StationWithoutLatitudeIsLeftOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', patched(station("DYNGA"), "+64.990000", "          "));
  volume.control('S', channel("BHZ"));
  const Made made = make(volume);
  EXPECT_EQ(made.lost,
            Texts{at(kStationOffset) + "Network/Station/Latitude: has no value (XX_DYNGA)"});
  EXPECT_NE(made.document.find("<Network code=\"XX\">"), std::string::npos);
  EXPECT_EQ(made.document.find("<Station"), std::string::npos);
}

TEST(StationXml, LatitudeOf90IsOutOfRange) {
  const auto lost = [](const std::string &latitude) {
    VolumeWriter volume = dictionaries();
    volume.control('S', patched(station("DYNGA"), "+64.990000", latitude));
    return make(volume).lost.size();
  };
  EXPECT_EQ(lost("+90.000000"), 1U);
  EXPECT_EQ(lost("+89.999999"), 0U);
  EXPECT_EQ(lost("-90.000000"), 0U);
  EXPECT_EQ(lost("-90.000001"), 1U);
}

TEST(StationXml, ChannelWithoutDepthIsLeftOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', station("DYNGA"));
  volume.control('S', patched(channel("BHZ"), "002.5", "     "));
  volume.control('S', channel("BHN"));
  const Made made = make(volume);
  const std::size_t offset = kStationOffset + station("DYNGA").text().size();
  EXPECT_EQ(made.lost, Texts{at(offset) + "Network/Station/Channel/Depth: has no value" + kOf});
  EXPECT_EQ(count_of(made.document, "<Channel"), "1");
}

TEST(StationXml, OptionalNumberOutOfRangeIsLeftOutAlone) {
  VolumeWriter volume = dictionaries();
  volume.control('S', station("DYNGA"));
  volume.control('S', patched(channel("BHZ"), "090.0-90.0", "360.0-90.1"));
  const Made made = make(volume);
  const std::size_t offset = kStationOffset + station("DYNGA").text().size();
  EXPECT_EQ(made.lost, (Texts{at(offset) + "Network/Station/Channel/Azimuth: is out of range" + kOf,
                              at(offset) + "Network/Station/Channel/Dip: is out of range" + kOf}));
  EXPECT_NE(made.document.find("</Depth>\n    <SampleRate>"), std::string::npos);
}

TEST(StationXml, OptionalNumberWithoutValueIsNoLoss) {
  VolumeWriter volume = dictionaries();
  volume.control('S', station("DYNGA"));
  volume.control('S', patched(channel("BHZ"), "090.0-90.0", "          "));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts());
  EXPECT_NE(made.document.find("</Depth>\n    <SampleRate>"), std::string::npos);
}

TEST(StationXml, MissingNetworkCodeIsEmpty) {
  // The station's blockette ends before its last field.
  std::string text = station("DYNGA").text();
  text.resize(text.size() - 2);
  text.replace(3, 4, "00" + std::to_string(text.size()));
  VolumeWriter volume = dictionaries();
  volume.control('S', text);
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{at(kStationOffset) + "Network/code: has no value (_DYNGA)"});
  EXPECT_NE(made.document.find("<Network code=\"\">"), std::string::npos);
}

TEST(StationXml, NegativeNumberOfChannelsIsLeftOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', patched(station("DYNGA"), "0688.00001", "0688.0  -1"));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{at(kStationOffset) +
                             "Network/Station/TotalNumberChannels: is out of range (XX_DYNGA)"});
}

TEST(StationXml, ChannelWithoutStationIsLeftOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {channel("BHZ"), station("DYNGA")});
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{at(kStationOffset) +
                             "Network/Station/Channel: the channel stands in no station (__BHZ)"});
}

TEST(StationXml, UndefinedCommentIsLeftOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', {station("DYNGA"), comment(51, 8, {2020, 2}, 1), channel("BHZ")});
  volume.control('S', comment(59, 9, {2020, 2}, 1));
  const Made made = make(volume);
  ASSERT_EQ(made.lost.size(), 2U);
  EXPECT_NE(made.lost[0].find("Network/Station/Comment/Value: the comment is not defined"),
            std::string::npos);
  EXPECT_NE(made.lost[1].find("Network/Station/Channel/Comment/Value: "), std::string::npos);
  EXPECT_EQ(count_of(made.document, "<Comment>"), "1");  // that of blockette 52
}

TEST(StationXml, ForbiddenCharactersAreLeftOut) {
  VolumeWriter volume = dictionaries();
  volume.control('S', patched(station("DYNGA"), "Askja, north", "Askja\x01\x1F,nor\n"));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{at(kStationOffset) +
                             "Network/Station/Site/Name: characters that XML forbids are left out "
                             "(XX_DYNGA)"});
  EXPECT_NE(made.document.find("<Name>Askja,nor</Name>"), std::string::npos);
}

TEST(StationXml, CornersHaveNoCounterpart) {
  const Made made = make(with_channel(
      {ControlBlockette(56).digits(1, 2).digits(1, 3).digits(2, 3).digits(0, 4), gain(1, 7)}));
  EXPECT_EQ(made.lost, Texts{at(response_offset()) + kResponse +
                             "Stage: blockette 56 in stage 1 has no counterpart" + kOf});
  EXPECT_EQ(stages(made), stage(1, stage_gain("7")));
}

TEST(StationXml, FurtherBlockettesOfAStageAreLeftOut) {
  const std::size_t first = response_offset();
  const std::size_t filter = list(1, 0, 1).text().size();
  const std::size_t decimated = decimation(1).text().size();
  const std::size_t gained = gain(1, 7).text().size();
  const Made made = make(with_channel({list(1, 0, 1), decimation(1), gain(1, 7), list(1, 0, 1),
                                       decimation(1), gain(1, 8), gain(0, 3), gain(0, 4)}));
  std::size_t offset = first + filter + decimated + gained;
  Texts expected = {at(offset) + kResponse +
                    "Stage/ResponseList: stage 1 has another filter already" + kOf};
  offset += filter;
  expected.push_back(at(offset) + kResponse + "Stage/Decimation: stage 1 has another one already" +
                     kOf);
  offset += decimated;
  expected.push_back(at(offset) + kResponse + "Stage/StageGain: stage 1 has another one already" +
                     kOf);
  offset += 2 * gained;
  expected.push_back(at(offset) + kResponse +
                     "InstrumentSensitivity: stage 0 has another one already" + kOf);
  EXPECT_EQ(made.lost, expected);
  EXPECT_EQ(stages(made).find("<Value>8</Value>"), std::string::npos);
}

TEST(StationXml, FirstFilterIsTheStagesAlsoWhenItCannotBeWritten) {
  const Made made = make(with_channel({list(1, 0, 1, 9), list(1, 1, 1), gain(1, 7)}));
  EXPECT_EQ(made.lost, (Texts{at(response_offset()) + kResponse +
                                  "Stage/ResponseList/InputUnits/Name: has no value" + kOf,
                              at(response_offset() + list(1, 0, 1, 9).text().size()) + kResponse +
                                  "Stage/ResponseList: stage 1 has another filter already" + kOf}));
  EXPECT_EQ(stages(made), stage(1, stage_gain("7")));
}

TEST(StationXml, StageWithoutGainHasOneOfOne) {
  const Made made = make(with_channel({decimation(3)}));
  EXPECT_EQ(made.lost,
            Texts{at(response_offset()) + kResponse +
                  "Stage/StageGain: stage 3 has no gain: 1 at frequency 0 is written" + kOf});
  EXPECT_NE(stages(made).find(stage_gain("1", "0")), std::string::npos);
}

TEST(StationXml, StageWhoseGainHasNoFrequencyIsLeftOut) {
  VolumeWriter volume = with_channel({decimation(1)});
  volume.control('S', patched(gain(1, 7), " 5.00000E-02", "            "));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{at(response_offset() + decimation(1).text().size()) + kResponse +
                             "Stage/StageGain/Frequency: has no value" + kOf});
  EXPECT_EQ(made.document.find("<Response>"), std::string::npos);
}

TEST(StationXml, StageWithoutNumberIsLeftOut) {
  VolumeWriter volume = with_channel({});
  volume.control('S', patched(gain(1, 7), "01 7.0", "   7.0"));
  const Made made = make(volume);
  EXPECT_EQ(made.lost,
            Texts{at(response_offset()) + kResponse + "Stage: the stage has no number" + kOf});
}

TEST(StationXml, TransferFunctionWithoutCounterpartIsLeftOut) {
  const Made made = make(with_channel(
      {ControlBlockette(54).fixed("C", 1).digits(1, 2).digits(1, 3).digits(2, 3).digits(0, 4),
       gain(1, 7)}));
  EXPECT_EQ(made.lost,
            Texts{at(response_offset()) + kResponse +
                  "Stage/Coefficients/CfTransferFunctionType: 'C' has no counterpart" + kOf});
  EXPECT_EQ(stages(made), stage(1, stage_gain("7")));
}

TEST(StationXml, FilterWithoutUnitsIsLeftOut) {
  const Made made = make(with_channel({list(1, 0, 1, 9), gain(1, 7)}));
  EXPECT_EQ(made.lost, Texts{at(response_offset()) + kResponse +
                             "Stage/ResponseList/InputUnits/Name: has no value" + kOf});
  EXPECT_EQ(stages(made), stage(1, stage_gain("7")));
}

TEST(StationXml, SensitivityWithoutUnitsIsLeftOut) {
  const Made made = make(with_channel({gain(0, 7)}));
  EXPECT_EQ(made.lost, (Texts{at(response_offset()) + kResponse +
                                  "InstrumentSensitivity/InputUnits/Name: has no value" + kOf,
                              at(response_offset()) + kResponse +
                                  "InstrumentSensitivity/OutputUnits/Name: has no value" + kOf}));
  EXPECT_EQ(made.document.find("<Response>"), std::string::npos);
}

TEST(StationXml, PartOfAListThatCannotBeWrittenIsLeftOutAlone) {
  VolumeWriter volume = with_channel({});
  // A phase of 361 degrees, and an amplitude without a value.
  volume.control('S', patched(list(1, 3, 1), "-4.50000E+01", " 3.61000E+02"));
  volume.control('S', gain(1, 7));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts{at(response_offset()) + kResponse +
                             "Stage/ResponseList/ResponseListElement/Phase: number 0 cannot be "
                             "written" +
                             kOf});
  EXPECT_EQ(count_of(made.document, "<ResponseListElement>"), "2");
}

TEST(StationXml, EveryPartThatCannotBeWrittenIsTold) {
  VolumeWriter volume = with_channel({});
  volume.control('S', ControlBlockette(53)
                          .fixed("A", 1)
                          .digits(1, 2)
                          .digits(1, 3)
                          .digits(2, 3)
                          .real(1)
                          .real(0)
                          .digits(0, 3)
                          .digits(1, 3)
                          .fixed("", 12)
                          .fixed("", 12)
                          .real(0)
                          .real(0));
  const Made made = make(volume);
  const std::string pole = kResponse + "Stage/PolesZeros/Pole/";
  EXPECT_EQ(made.lost,
            (Texts{at(response_offset()) + pole + "Real: number 0 cannot be written" + kOf,
                   at(response_offset()) + pole + "Imaginary: number 0 cannot be written" + kOf,
                   at(response_offset()) + kResponse +
                       "Stage/StageGain: stage 1 has no gain: 1 at frequency 0 is written" + kOf}));
  EXPECT_EQ(made.document.find("<Pole "), std::string::npos);
}

// ---- polynomials ----

ControlBlockette polynomial(int stage, int coefficients) {
  ControlBlockette blockette(62);
  blockette.fixed("P", 1).digits(stage, 2).digits(1, 3).digits(2, 3).fixed("M", 1).fixed("B", 1);
  blockette.real(0).real(10).real(1).real(2).real(0.5).digits(coefficients, 3);
  for (int i = 0; i < coefficients; ++i) blockette.real(7 + i).real(0.25);
  return blockette;
}

std::string polynomial_content() {
  return units("InputUnits", "M/S") + units("OutputUnits", "V") +
         R"(       <ApproximationType>MACLAURIN</ApproximationType>
       <FrequencyLowerBound>0</FrequencyLowerBound>
       <FrequencyUpperBound>10</FrequencyUpperBound>
       <ApproximationLowerBound>1</ApproximationLowerBound>
       <ApproximationUpperBound>2</ApproximationUpperBound>
       <MaximumError>0.5</MaximumError>
       <Coefficient number="0" plusError="0.25" minusError="0.25">7</Coefficient>
       <Coefficient number="1" plusError="0.25" minusError="0.25">8</Coefficient>
)";
}

TEST(StationXml, PolynomialIsAllOfItsStage) {
  const Made made = make(with_channel({polynomial(1, 2), decimation(1), gain(1, 7)}));
  const std::size_t after = response_offset() + polynomial(1, 2).text().size();
  EXPECT_EQ(
      made.lost,
      (Texts{at(after) + kResponse +
                 "Stage/Decimation: stage 1 has a polynomial, beside which there is none" + kOf,
             at(after + decimation(1).text().size()) + kResponse +
                 "Stage/StageGain: stage 1 has a polynomial, beside which there is none" + kOf}));
  EXPECT_EQ(stages(made),
            stage(1, "      <Polynomial>\n" + polynomial_content() + "      </Polynomial>\n"));
}

TEST(StationXml, PolynomialOfStageZeroIsTheInstruments) {
  const Made made = make(with_channel({polynomial(0, 2), gain(0, 7)}));
  EXPECT_EQ(
      made.lost,
      Texts{at(response_offset() + polynomial(0, 2).text().size()) + kResponse +
            "InstrumentSensitivity: stage 0 has a polynomial, beside which there is none" + kOf});
  EXPECT_EQ(count_of(made.document, "<InstrumentPolynomial>"), "1");
  EXPECT_EQ(made.document.find("<Stage"), std::string::npos);
}

TEST(StationXml, PolynomialWithoutCoefficientsTakesItsStageAway) {
  const Made made = make(with_channel({polynomial(1, 0)}));
  EXPECT_EQ(made.lost,
            Texts{at(response_offset()) + kResponse +
                  "Stage/Polynomial/Coefficient: a polynomial needs all its coefficients" + kOf});
  EXPECT_EQ(made.document.find("<Response>"), std::string::npos);
}

TEST(StationXml, PolynomialThatIsLostIsAllOfItsStageToo) {
  const Made made = make(with_channel({polynomial(1, 0), gain(1, 7)}));
  ASSERT_EQ(made.lost.size(), 2U);
  EXPECT_NE(made.lost[1].find("Stage/StageGain: stage 1 has a polynomial"), std::string::npos);
  EXPECT_EQ(made.document.find("<Response>"), std::string::npos);
}

// ---- the other filters ----

TEST(StationXml, CoefficientsAreWritten) {
  const Made made = make(with_channel({ControlBlockette(54)
                                           .fixed("D", 1)
                                           .digits(1, 2)
                                           .digits(1, 3)
                                           .digits(2, 3)
                                           .digits(2, 4)
                                           .real(0.5)
                                           .real(0)
                                           .real(-2)
                                           .real(0.125)
                                           .digits(1, 4)
                                           .real(1)
                                           .real(0),
                                       gain(1, 7)}));
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(
      stages(made),
      stage(1, "      <Coefficients>\n" + units("InputUnits", "M/S") + units("OutputUnits", "V") +
                   R"(       <CfTransferFunctionType>DIGITAL</CfTransferFunctionType>
       <Numerator plusError="0" minusError="0">0.5</Numerator>
       <Numerator plusError="0.125" minusError="0.125">-2</Numerator>
       <Denominator plusError="0" minusError="0">1</Denominator>
      </Coefficients>
)" + stage_gain("7")));
}

TEST(StationXml, ListIsWritten) {
  const Made made = make(with_channel({list(1, 1, 0.5), gain(1, 7)}));
  EXPECT_EQ(stages(made), stage(1, "      <ResponseList>\n" + units("InputUnits", "M/S") +
                                       units("OutputUnits", "COUNTS") +
                                       R"(       <ResponseListElement>
        <Frequency>0.5</Frequency>
        <Amplitude plusError="0" minusError="0">2</Amplitude>
        <Phase plusError="0" minusError="0">-45</Phase>
       </ResponseListElement>
      </ResponseList>
)" + stage_gain("7")));
}

ControlBlockette fir(std::initializer_list<double> coefficients) {
  ControlBlockette blockette(61);
  blockette.digits(1, 2).var("LOWPASS").fixed("B", 1).digits(3, 3).digits(3, 3);
  blockette.digits(static_cast<long>(coefficients.size()), 4);
  for (const double value : coefficients) blockette.real(value, volume::kReal14);
  return blockette;
}

std::string fir_content(const std::string &lines) {
  return stage(1, "      <FIR name=\"LOWPASS\">\n" + units("InputUnits", "COUNTS") +
                      units("OutputUnits", "COUNTS") + "       <Symmetry>ODD</Symmetry>\n" + lines +
                      "      </FIR>\n" + stage_gain("7"));
}
std::string numerator(const std::string &value) {
  return "       <NumeratorCoefficient>" + value + "</NumeratorCoefficient>\n";
}

TEST(StationXml, SplitFirIsOne) {
  const Made made = make(with_channel({fir({0.5, 0.25}), fir({0.125}), gain(1, 7)}));
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(stages(made), fir_content(numerator("0.5") + numerator("0.25") + numerator("0.125")));
}

// Poles and zeros of stage 1: each a real number.
ControlBlockette roots(std::initializer_list<double> zeros, std::initializer_list<double> poles) {
  ControlBlockette blockette(53);
  blockette.fixed("A", 1).digits(1, 2).digits(1, 3).digits(2, 3).real(1).real(0);
  for (const auto &group : {zeros, poles}) {
    blockette.digits(static_cast<long>(group.size()), 3);
    for (const double value : group) blockette.real(value).real(0).real(0).real(0);
  }
  return blockette;
}

// "Zero 0 1 ", for what roots gives.
std::string root_texts(const std::string &document) {
  std::string texts;
  for (std::size_t i = 0; (i = document.find(" number=\"", i)) != std::string::npos; ++i) {
    const std::string element = document.substr(i - 4, 4);
    if (element == "tage") continue;
    const std::size_t real = document.find("minusError=\"0\">", i) + 15;
    texts += element + ' ' + document.substr(i + 9, document.find('"', i + 9) - i - 9) + ' ' +
             document.substr(real, document.find('<', real) - real) + ' ';
  }
  return texts;
}

TEST(StationXml, ZerosOfASplitResponseStandBeforeItsPoles) {
  // Another stage stands between the parts.
  const Made made = make(with_channel({roots({1}, {2}), decimation(2), roots({3}, {4, 5}),
                                       gain(2, 7), roots({}, {6}), gain(1, 7)}));
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(root_texts(made.document), "Zero 0 1 Zero 1 3 Pole 0 2 Pole 1 4 Pole 2 5 Pole 3 6 ");
}

TEST(StationXml, LossInAFurtherPartHasThatPartsOffset) {
  VolumeWriter volume = with_channel({roots({}, {2})});
  volume.control('S', patched(roots({}, {3}), " 3.00000E+00", "            "));
  volume.control('S', gain(1, 7));
  EXPECT_EQ(make(volume).lost,
            Texts{at(response_offset() + roots({}, {2}).text().size()) + kResponse +
                  "Stage/PolesZeros/Pole/Real: number 1 cannot be written" + kOf});
}

TEST(StationXml, SplitDictionaryResponseIsFoundAgainWhereItIsNotFirst) {
  const auto entry = [](int code, double value) {
    return ControlBlockette(41)
        .digits(code, 4)
        .var("LOWPASS")
        .fixed("B", 1)
        .digits(3, 3)
        .digits(3, 3)
        .digits(1, 4)
        .real(value, volume::kReal14);
  };
  VolumeWriter volume = dictionaries();
  volume.control('A', ControlBlockette(48).digits(5, 4).var("G").real(7).real(0.05).digits(0, 2));
  volume.control('A', {entry(4, 0.5), entry(4, 0.25)});
  // The code stands twice, after a gain; a further FIR goes on with it.
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(1, {5, 4, 4})});
  volume.control('S', by_dictionary(1, {4}));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts());
  std::string coefficients;
  for (int i = 0; i < 3; ++i) coefficients += numerator("0.5") + numerator("0.25");
  EXPECT_EQ(stages(made), fir_content(coefficients));
}

TEST(StationXml, DictionaryResponsesAreWritten) {
  const auto entry = [](double value) {
    return ControlBlockette(41)
        .digits(4, 4)
        .var("LOWPASS")
        .fixed("B", 1)
        .digits(3, 3)
        .digits(3, 3)
        .digits(1, 4)
        .real(value, volume::kReal14);
  };
  VolumeWriter volume = dictionaries();
  volume.control('A', {entry(0.5), entry(0.25)});
  volume.control('A', ControlBlockette(48).digits(5, 4).var("G").real(7).real(0.05).digits(0, 2));
  volume.control('S', {station("DYNGA"), channel("BHZ"), by_dictionary(1, {4, 5})});
  // What is defined after the reference is not meant, though it is known when it is read again.
  volume.control('A', entry(0.125));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(stages(made), fir_content(numerator("0.5") + numerator("0.25")));
}

TEST(StationXml, ReferenceSeesWhatStandsBeforeAlsoWhenItIsReadAgain) {
  VolumeWriter volume(4096);
  volume.control('S', {station("DYNGA"), channel("BHZ"), list(1, 0, 1), gain(1, 7)});
  volume.control('A', {unit(1, "M/S"), unit(2, "V"), unit(3, "COUNTS")});
  const Made made = make(volume);
  EXPECT_EQ(made.lost.size(), 2U);
  EXPECT_EQ(made.document.find("M/S"), std::string::npos);
}

TEST(StationXml, BlockettesDoNotEndAfterAThousand) {
  VolumeWriter volume = with_channel({});
  for (int i = 0; i < 1200; ++i) volume.control('S', list(1, 1, 1));
  volume.control('S', gain(1, 7));
  const Made made = make(volume);
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(count_of(made.document, "<ResponseListElement>"), "1200");
}

// ---- several volumes ----

VolumeWriter network_volume(std::initializer_list<ControlBlockette> blockettes) {
  VolumeWriter volume = dictionaries();
  volume.control('S', blockettes);
  return volume;
}

TEST(StationXml, EqualEpochsStandOnce) {
  const std::string volume = network_volume({station("DYNGA"), channel("BHZ"), gain(1, 7)}).bytes();
  const Made made = make({volume, volume, volume});
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(made.document, make(Texts{volume}).document);
}

TEST(StationXml, NumberOfChannelsMakesNoDifference) {
  VolumeWriter other = dictionaries();
  other.control('S', patched(station("DYNGA"), "0688.00001", "0688.00002"));
  other.control('S', channel("BHN"));
  const Made made =
      make({network_volume({station("DYNGA"), channel("BHZ")}).bytes(), other.bytes()});
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(count_of(made.document, "<Station "), "1");
  EXPECT_EQ(count_of(made.document, "<Channel"), "2");
  EXPECT_NE(made.document.find("<TotalNumberChannels>1<"), std::string::npos);
}

TEST(StationXml, DifferentEpochsStandBoth) {
  const Made made = make({network_volume({station("DYNGA"), channel("BHZ"), gain(1, 7)}).bytes(),
                          network_volume({station("DYNGA"), channel("BHZ"), gain(1, 8)}).bytes()});
  const std::size_t offset = kStationOffset + station("DYNGA").text().size();
  EXPECT_EQ(made.told, Texts{"1: " + std::to_string(offset) +
                             ": Network/Station/Channel: differs from that of the same start in 0 "
                             "(XX_DYNGA_BHZ)"});
  EXPECT_EQ(made.lost, Texts());
  EXPECT_EQ(count_of(made.document, "<Station "), "1");
  EXPECT_EQ(count_of(made.document, "<Channel"), "2");
}

TEST(StationXml, StationThatCannotBeWrittenEqualsNone) {
  // Its channel must not stand for that of the other volume.
  VolumeWriter bad = dictionaries();
  bad.control('S', patched(station("DYNGA"), "+64.990000", "          "));
  bad.control('S', channel("BHZ"));
  const std::string good = network_volume({station("DYNGA"), channel("BHZ")}).bytes();
  const Made made = make({bad.bytes(), good});
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(made.lost,
            Texts{at(kStationOffset) + "Network/Station/Latitude: has no value (XX_DYNGA)"});
  EXPECT_EQ(made.document, make(Texts{good}).document);
}

TEST(StationXml, ChannelThatCannotBeWrittenEqualsNone) {
  VolumeWriter bad = dictionaries();
  bad.control('S', station("DYNGA"));
  bad.control('S', patched(channel("BHZ"), "002.5", "     "));
  const std::string good = network_volume({station("DYNGA"), channel("BHZ")}).bytes();
  const Made made = make({bad.bytes(), good, bad.bytes()});
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(made.lost.size(), 2U);
  EXPECT_EQ(made.document, make(Texts{good}).document);
}

TEST(StationXml, StartsThatAreNotShownAreTheSame) {
  VolumeWriter other = dictionaries();
  other.control('S', patched(station("DYNGA"), "2020,001", "0000,001"));
  VolumeWriter none = dictionaries();
  none.control('S', patched(station("DYNGA"), "2020,001", "        "));
  const Made made = make({other.bytes(), none.bytes()});
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(count_of(made.document, "<Station"), "1");
}

TEST(StationXml, OtherStartIsAnotherEpoch) {
  const Made made = make({network_volume({station("DYNGA", {2020, 1})}).bytes(),
                          network_volume({station("DYNGA", {2020, 2})}).bytes()});
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(count_of(made.document, "<Station "), "2");
}

TEST(StationXml, DifferenceInTheResponseDoesNotShowAboveIt) {
  StationXmlOptions options;
  options.level = XmlLevel::channel;
  const Made made = make({network_volume({station("DYNGA"), channel("BHZ"), gain(1, 7)}).bytes(),
                          network_volume({station("DYNGA"), channel("BHZ"), gain(1, 8)}).bytes()},
                         options);
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(count_of(made.document, "<Channel"), "1");
}

TEST(StationXml, ManyVolumesAreReadInAnyOrder) {
  // Each has a channel of each of two stations, so that the document goes through them twice.
  Texts volumes;
  for (int i = 0; i < 20; ++i) {
    VolumeWriter volume(4096);
    volume.control('A', {ControlBlockette(33).digits(1, 3).var("Test network"),
                         unit(1, "U" + std::to_string(i)), unit(2, "V"), unit(3, "COUNTS")});
    const std::string code = "C" + std::to_string(10 + i);
    volume.control('S', {station("AAA"), channel(code), list(1, 1, i), gain(1, 7)});
    volume.control('S', {station("BBB"), channel(code), list(1, 1, 100 + i), gain(1, 7)});
    volumes.push_back(volume.bytes());
  }
  const Made made = make(volumes);
  EXPECT_EQ(made.told, Texts());
  EXPECT_EQ(count_of(made.document, "<Station "), "2");
  const std::string second = made.document.substr(made.document.find("code=\"BBB\""));
  const std::string last = second.substr(second.find("code=\"C29\""));
  EXPECT_NE(last.find("<Name>U19</Name>"), std::string::npos);
  EXPECT_NE(last.find("<Frequency>119</Frequency>"), std::string::npos);
}

TEST(StationXml, VolumeThatIsGoneIsTold) {
  const std::string volume = network_volume({station("DYNGA"), channel("BHZ")}).bytes();
  Texts volumes(9, volume);  // more than stay open
  volumes[0] = network_volume({station("SKERA"), channel("BHZ")}).bytes();
  const Made made = make(volumes, {}, [](const command::ScratchDirectory &scratch) {
    std::filesystem::remove(scratch.path() + "/0");
  });
  EXPECT_EQ(made.lost_volumes, Texts{"0: No such file or directory"});
  EXPECT_EQ(made.document.find("<Station code=\"SKERA\""), std::string::npos);
  EXPECT_NE(made.document.find("<Station code=\"DYNGA\""), std::string::npos);
}

TEST(StationXml, VolumeThatCannotBeReadIsTold) {
  const command::ScratchDirectory scratch;
  Texts lost;
  StationXmlListener listener;
  listener.lose_volume = [&](const std::string &name, const std::string &why) {
    lost.push_back(name + ": " + why);
  };
  StationXml document({}, {}, listener);
  Source source;
  source.name = "v";
  source.path = scratch.path() + "/none";
  EXPECT_EQ(document.add(source), Outcome::unreadable);
  EXPECT_EQ(lost, Texts{"v: No such file or directory"});
  EXPECT_TRUE(document.is_empty());
}

TEST(StationXml, DamagedVolumeIsRead) {
  const command::ScratchDirectory scratch;
  StationXml document({}, {}, {});
  Source source;
  source.path =
      scratch.file("v", network_volume({station("DYNGA")}).bytes() + std::string(100, '?'));
  EXPECT_EQ(document.add(source), Outcome::damaged);
  EXPECT_FALSE(document.is_empty());
}

class NoSink : public LineSink {
 public:
  bool write(std::string_view /*lines*/) override { return false; }
};

TEST(StationXml, FailureToWriteIsTold) {
  const command::ScratchDirectory scratch;
  StationXml document({}, {}, {});
  Source source;
  source.path = scratch.file("v", network_volume({station("DYNGA")}).bytes());
  document.add(source);
  NoSink sink;
  EXPECT_FALSE(document.write(&sink));
}

}  // namespace
