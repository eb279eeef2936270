#include "views/fields.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "tests/util/volume_writer.h"
#include "tests/views/whole_block.h"

using namespace tarvik;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

namespace {

// ---- what is read ----

std::string fields_of(const SDBlk &block) {
  TextBuffer buffer;
  put_fields(&buffer, block, plan_of(*block.blkdef));
  return std::string(buffer.text());
}
std::string references_of(const SDBlk &block) {
  TextBuffer buffer;
  put_references(&buffer, block, plan_of(*block.blkdef));
  return std::string(buffer.text());
}

VolumeWriter volume_of(const ControlBlockette &blockette) {
  VolumeWriter volume(1024);
  volume.control('S', blockette);
  return volume;
}
std::string fields(const ControlBlockette &blockette) {
  const VolumeWriter volume = volume_of(blockette);
  const WholeBlock block(volume);
  return fields_of(*block);
}

std::string chained(const DataRecord &record) {
  VolumeWriter volume(512);
  volume.data(record);
  const WholeBlock block(volume);
  return fields_of(*(*block).next);
}

DataRecord record() { return {.sta = "DYNGA", .chan = "BHZ", .net = "XX"}; }

// ---- single values ----

TEST(PutFields, TimesAreTextsOrNull) {
  EXPECT_EQ(fields(ControlBlockette(70).fixed("P", 1).var(Time{2021, 75, 6, 15, 52, 6000}).var("")),
            R"({"flag":"P","time":"2021-03-16T06:15:52.6000Z","endtime":null})");
}

TEST(PutFields, YearZeroIsNull) {
  EXPECT_EQ(fields(ControlBlockette(70).fixed("P", 1).var("0000,366").var("0001,001")),
            R"({"flag":"P","time":null,"endtime":"0001-01-01T00:00:00.0000Z"})");
}

TEST(PutFields, YearOfFiveDigitsIsNull) {
  EXPECT_EQ(fields(ControlBlockette(70)
                       .fixed("P", 1)
                       .var("9999,365,24:00:00")
                       .var("9999,365,23:59:59.9999")),
            R"({"flag":"P","time":null,"endtime":"9999-12-31T23:59:59.9999Z"})");
}

TEST(PutFields, FieldsThatAreAbsentHaveNoKey) {
  EXPECT_EQ(fields(ControlBlockette(51).var("2020,001")),
            R"({"time":"2020-01-01T00:00:00.0000Z"})");
  EXPECT_EQ(fields(ControlBlockette(51)), "{}");
}

TEST(PutFields, NumbersWithoutAValueAreNull) {
  EXPECT_EQ(fields(ControlBlockette(57)
                       .fixed("", 2)
                       .fixed("x", 10)
                       .fixed("1.5", 5)
                       .fixed("", 5)
                       .fixed("", 11)
                       .raw("1")),
            R"({"stage":null,"isamprate":null,"decfac":null,"decoff":null,"delay":null,)"
            R"("correction":null})");
}

TEST(PutFields, IntegersAreDecimals) {
  EXPECT_EQ(fields(ControlBlockette(57).fixed("+7", 2).fixed("1", 10).fixed("-99", 5).digits(0, 5)),
            R"({"stage":7,"isamprate":1,"decfac":-99,"decoff":0})");
}

TEST(PutFields, RealsBeyondTheRangeAreTexts) {
  EXPECT_EQ(
      fields(ControlBlockette(58).digits(1, 2).fixed("1e999", 12).fixed("-1e999", 12).raw("0")),
      R"({"stage":1,"sens":"Infinity","freq":"-Infinity","nhistories":null})");
}

TEST(PutFields, RealsAreShort) {
  EXPECT_EQ(fields(ControlBlockette(58)
                       .digits(0, 2)
                       .fixed("+6.29000E+08", 12)
                       .fixed("-0.00000E+00", 12)
                       .digits(0, 2)),
            R"({"stage":0,"sens":6.29e8,"freq":-0,"nhistories":0})");
}

TEST(PutFields, IntegersOfABinaryFieldReachBothEnds) {
  DataRecord low = record();
  low.time_correction = std::numeric_limits<std::int32_t>::min();
  low.rate_factor = -32768;
  low.rate_multiplier = 32767;
  low.samples = 65535;
  low.activity_flags = 255;
  VolumeWriter volume(256);
  volume.data(low);
  EXPECT_EQ(fields_of(*WholeBlock(volume)),
            R"({"sta":"DYNGA","loc":"","chan":"BHZ","net":"XX","time":"2021-03-16T00:00:00.0000Z",)"
            R"("nsamp":65535,"srate_factor":-32768,"srate_multiplier":32767,"activity_flags":255,)"
            R"("clock_flags":0,"quality_flags":0,"nblks":0,"tcor":-2147483648,"data_offset":0,)"
            R"("blk_offset":0})");
  DataRecord high = record();
  high.time_correction = std::numeric_limits<std::int32_t>::max();
  VolumeWriter other(256);
  other.data(high);
  EXPECT_NE(fields_of(*WholeBlock(other)).find(R"("tcor":2147483647,)"), std::string::npos);
}

TEST(PutFields, NumbersOfThirtyTwoBitsWithoutASignAreNotNegative) {
  volume::Timing timing;
  timing.count = 4294967295;
  timing.exception = {2021, 75};
  timing.vco_percent = 0.1F;
  timing.type = "Missing";
  EXPECT_EQ(chained(record().b500(timing)),
            R"({"vco":0.10000000149011612,"time":"2021-03-16T00:00:00.0000Z","usec":0,"qual":0,)"
            R"("count":4294967295,"type":"Missing","model":"","status":""})");
}

TEST(PutFields, NumberOfTwoToThe31IsNotNegative) {
  volume::Timing timing;
  timing.count = 2147483648;
  timing.exception = {2021, 75};
  EXPECT_NE(chained(record().b500(timing)).find(R"("count":2147483648,)"), std::string::npos);
}

TEST(PutFields, BinaryRealsThatAreNotFiniteAreTexts) {
  const float infinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(chained(record().b100(infinity)), R"({"samprate":"Infinity","flags":0})");
  EXPECT_EQ(chained(record().b100(-infinity)), R"({"samprate":"-Infinity","flags":0})");
  EXPECT_EQ(chained(record().b100(std::numeric_limits<float>::quiet_NaN())),
            R"({"samprate":"NaN","flags":0})");
}

TEST(PutFields, BinaryRealsAreTheDoublesTheyAre) {
  EXPECT_EQ(chained(record().b100(20)), R"({"samprate":20,"flags":0})");
  EXPECT_EQ(chained(record().b100(1e-45F)), R"({"samprate":1.401298464324817e-45,"flags":0})");
  EXPECT_EQ(chained(record().b100(-0.0F)), R"({"samprate":-0,"flags":0})");
}

TEST(PutFields, LastPartOfABinaryTimeIsNotChecked) {
  DataRecord late = record();
  late.time = {2021, 75, 6, 15, 52, 65535};
  VolumeWriter volume(256);
  volume.data(late);
  EXPECT_NE(fields_of(*WholeBlock(volume)).find(R"("time":"2021-03-16T06:15:58.5535Z")"),
            std::string::npos);
}

TEST(PutFields, TextsAreTrimmedAndEscaped) {
  EXPECT_EQ(fields(ControlBlockette(34).digits(1, 3).var(" \tM\"S\r ").var("caf\xE9")),
            "{\"uid\":1,\"name\":\"M\\\"S\",\"descr\":\"caf\xC3\xA9\"}");
}

// ---- what repeats ----

TEST(PutFields, TextsOfAnArray) {
  EXPECT_EQ(fields(ControlBlockette(30)
                       .var("Steim")
                       .digits(2, 4)
                       .digits(50, 3)
                       .digits(3, 2)
                       .var("F1")
                       .var("")
                       .var("\xFF")),
            "{\"name\":\"Steim\",\"did\":2,\"family\":50,\"nkeys\":3,\"keys\":[\"F1\",\"\","
            "\"\xC3\xBF\"]}");
}

ControlBlockette filter(int count) {
  return ControlBlockette(61)
      .digits(3, 2)
      .var("FIR")
      .fixed("A", 1)
      .digits(4, 3)
      .digits(5, 3)
      .digits(count, 4);
}
const std::string kFilterStart = R"({"stage":3,"name":"FIR","sym":"A","iunits":4,"ounits":5,)";

TEST(PutFields, RealsOfAnArrayThatHaveNoValueAreNull) {
  EXPECT_EQ(fields(filter(4)
                       .real(0.25, volume::kReal14)
                       .fixed("", 14)
                       .fixed("one", 14)
                       .real(-1e-9, volume::kReal14)),
            kFilterStart + R"("ncoefs":4,"coefs":[0.25,null,null,-1e-9]})");
}

TEST(PutFields, RealOfAnArrayBeyondTheRangeIsAText) {
  EXPECT_EQ(fields(filter(1).fixed("1e400", 14)),
            kFilterStart + R"("ncoefs":1,"coefs":["Infinity"]})");
}

TEST(PutFields, ArrayHoldsWhatIsThere) {
  EXPECT_EQ(fields(filter(3).real(1, volume::kReal14).raw("2")),
            kFilterStart + R"("ncoefs":3,"coefs":[1,null]})");
}

TEST(PutFields, ArrayWithoutAByteIsAbsent) {
  EXPECT_EQ(fields(filter(3)), kFilterStart + R"("ncoefs":3})");
  EXPECT_EQ(fields(filter(0)), kFilterStart + R"("ncoefs":0})");
}

TEST(PutFields, ArrayOfNoneIsEmptyWhereBytesAreLeft) {
  EXPECT_EQ(fields(filter(0).raw(" ")), kFilterStart + R"("ncoefs":0,"coefs":[]})");
}

TEST(PutFields, GroupIsAnArrayOfObjects) {
  EXPECT_EQ(fields(ControlBlockette(11).digits(2, 3).fixed("AA", 5).digits(3, 6).fixed("B", 5)),
            R"({"nstas":2,"stas":[{"sta":"AA","lseq":3},{"sta":"B"}]})");
}

TEST(PutFields, FieldsAfterAGroupFollowIt) {
  EXPECT_EQ(fields(ControlBlockette(53)
                       .fixed("A", 1)
                       .digits(1, 2)
                       .digits(4, 3)
                       .digits(5, 3)
                       .real(1)
                       .real(0.02)
                       .digits(0, 3)
                       .digits(1, 3)
                       .real(-1.5)
                       .real(2.5)
                       .real(0)
                       .real(0)),
            R"({"resp":"A","stage":1,"iunits":4,"ounits":5,"norm":1,"fnorm":0.02,"nzeros":0,)"
            R"("zeros":[],"npoles":1,"poles":[{"real":-1.5,"imag":2.5,"real_err":0,)"
            R"("imag_err":0}]})");
}

// ---- references ----

// Units 1 (block 0), a comment 11 (block 1), a source 5 (block 2) and responses 8 and 9 (3 and 4).
VolumeWriter dictionaries() {
  VolumeWriter volume(1024);
  volume.control('A', ControlBlockette(34).digits(1, 3).var("V").var("Volt"));
  volume.control('A', ControlBlockette(31).digits(11, 4).fixed("A", 1).var("X").digits(1, 3));
  volume.control('A', ControlBlockette(32).digits(5, 2).var("").var("").var(""));
  volume.control('A', ControlBlockette(47).digits(8, 4).var(""));
  volume.control('A', ControlBlockette(48).digits(9, 4).var(""));
  return volume;
}
constexpr int kFirst = 5;  // the number of the next block

std::string fields_after(const ControlBlockette &blockette) {
  VolumeWriter volume = dictionaries();
  volume.control('S', blockette);
  return fields_of(*WholeBlock(volume, kFirst));
}
std::string references_after(const ControlBlockette &blockette) {
  VolumeWriter volume = dictionaries();
  volume.control('S', blockette);
  return references_of(*WholeBlock(volume, kFirst));
}

ControlBlockette comment(std::string_view code) {
  return ControlBlockette(51).var("2020,001").var("").fixed(code, 4).digits(0, 6);
}

TEST(PutReferences, NumberOfTheBlockThatDefinesTheCode) {
  EXPECT_EQ(references_after(comment("0011")), R"(,"refs":{"cid":1})");
}

TEST(PutReferences, CodeThatIsNotDefinedIsNull) {
  EXPECT_EQ(references_after(comment("0012")), R"(,"refs":{"cid":null})");
}

TEST(PutReferences, FieldWithoutAValueHasNone) {
  EXPECT_EQ(references_after(comment("")), "");
  EXPECT_EQ(references_after(comment("x")), "");
}

TEST(PutReferences, CodeOfZeroIsNoMissingOne) {
  EXPECT_EQ(references_after(comment("0000")), R"(,"refs":{"cid":null})");
}

TEST(PutReferences, FieldThatIsAbsentHasNone) {
  EXPECT_EQ(references_after(ControlBlockette(51).var("2020,001").var("")), "");
}

TEST(PutReferences, EachFieldThatRefersHasItsOwn) {
  EXPECT_EQ(references_after(ControlBlockette(55).digits(1, 2).digits(1, 3).digits(2, 3)),
            R"(,"refs":{"iunits":0,"ounits":null})");
  EXPECT_EQ(references_after(ControlBlockette(55).digits(1, 2).fixed("", 3).digits(1, 3)),
            R"(,"refs":{"ounits":0})");
}

TEST(PutReferences, BlocketteWithoutReferencesHasNone) {
  EXPECT_EQ(references_after(ControlBlockette(58).digits(1, 2).real(1).real(1).digits(0, 2)), "");
}

TEST(PutReferences, FirstOfSeveralDefinitionsStays) {
  VolumeWriter volume(1024);
  volume.control('A', ControlBlockette(34).digits(1, 3).var("V").var(""));
  volume.control('A', ControlBlockette(34).digits(1, 3).var("A").var(""));
  volume.control('A', ControlBlockette(55).digits(1, 2).digits(1, 3));
  EXPECT_EQ(references_of(*WholeBlock(volume, 2)), R"(,"refs":{"iunits":0})");
}

TEST(PutReferences, DefinitionAfterTheBlockIsNotSeen) {
  VolumeWriter volume(1024);
  volume.control('A', ControlBlockette(55).digits(1, 2).digits(1, 3));
  volume.control('A', ControlBlockette(34).digits(1, 3).var("V").var(""));
  EXPECT_EQ(references_of(*WholeBlock(volume, 0)), R"(,"refs":{"iunits":null})");
}

TEST(PutFields, ReferencesOfARepetitionAreItsLastKey) {
  EXPECT_EQ(fields_after(ControlBlockette(71)
                             .var("2021,075")
                             .digits(5, 2)
                             .coordinate(1, volume::kLatitude)
                             .coordinate(2, volume::kLongitude)
                             .coordinate(3, volume::kEventDepth)
                             .digits(3, 3)
                             .coordinate(4.5, volume::kMagnitude)
                             .var("Mb")
                             .digits(5, 2)
                             .coordinate(5, volume::kMagnitude)
                             .var("Ms")
                             .digits(6, 2)
                             .coordinate(6, volume::kMagnitude)
                             .var("Mw")
                             .fixed("", 2)
                             .digits(1, 3)),
            R"({"time":"2021-03-16T00:00:00.0000Z","hypo_sid":5,"lat":1,"lon":2,"depth":3,)"
            R"("nmags":3,"mags":[{"magnitude":4.5,"type":"Mb","source_sid":5,)"
            R"("refs":{"source_sid":2}},{"magnitude":5,"type":"Ms","source_sid":6,)"
            R"("refs":{"source_sid":null}},{"magnitude":6,"type":"Mw","source_sid":null}],)"
            R"("sregion":1})");
}

TEST(PutReferences, ThoseOfRepetitionsAreLeftOut) {
  EXPECT_EQ(
      references_after(ControlBlockette(60).digits(1, 2).digits(1, 2).digits(1, 2).digits(8, 4)),
      "");
}

TEST(PutFields, ArrayOfReferencesHasAnArray) {
  EXPECT_EQ(fields_after(ControlBlockette(60)
                             .digits(2, 2)
                             .digits(1, 2)
                             .digits(4, 2)
                             .digits(8, 4)
                             .fixed("", 4)
                             .digits(7, 4)
                             .digits(9, 4)
                             .digits(2, 2)
                             .digits(1, 2)
                             .fixed("?", 4)),
            R"({"nstages":2,"stages":[{"stage":1,"nresps":4,"resps":[8,null,7,9],)"
            R"("refs":{"resps":[3,null,null,4]}},)"
            R"({"stage":2,"nresps":1,"resps":[null],"refs":{"resps":[null]}}]})");
}

TEST(PutFields, RepetitionWithoutReferencesHasNoSuchKey) {
  EXPECT_EQ(fields_after(ControlBlockette(60).digits(1, 2).digits(1, 2).digits(2, 2)),
            R"({"nstages":1,"stages":[{"stage":1,"nresps":2}]})");
}

TEST(PutFields, EmptyArrayOfReferencesHasAnEmptyArray) {
  VolumeWriter volume = dictionaries();
  volume.control('S', ControlBlockette(60).digits(1, 2).digits(1, 2).digits(0, 2).raw(" "));
  EXPECT_EQ(fields_of(*WholeBlock(volume, kFirst)),
            R"({"nstages":1,"stages":[{"stage":1,"nresps":0,"resps":[],"refs":{"resps":[]}}]})");
}

TEST(PutFields, ArrayOfReferencesWhoseCountIsNullIsAnEmptyOne) {
  EXPECT_EQ(fields_after(ControlBlockette(60).digits(1, 2).digits(1, 2).raw("   ")),
            R"({"nstages":1,"stages":[{"stage":1,"nresps":null,"resps":[],"refs":{"resps":[]}}]})");
  EXPECT_EQ(fields_after(ControlBlockette(60).digits(1, 2).digits(1, 2).raw("  ")),
            R"({"nstages":1,"stages":[{"stage":1,"nresps":null}]})");
}

// ---- some members ----

std::string members(const SDBlk &block, std::size_t from, std::size_t to) {
  TextBuffer buffer;
  put_members(&buffer, block, plan_of(*block.blkdef), from, to);
  return std::string(buffer.text());
}

TEST(PutMembers, FirstOfAllHasABraceAndTheOthersACommaBefore) {
  const VolumeWriter volume =
      volume_of(ControlBlockette(51).var("").var("").digits(11, 4).digits(7, 6));
  const WholeBlock block(volume);
  EXPECT_EQ(members(*block, 0, 2), R"({"time":null,"endtime":null)");
  EXPECT_EQ(members(*block, 2, 4), R"(,"cid":11,"level":7)");
  EXPECT_EQ(members(*block, 1, 1), "");
}

TEST(PutMembers, EndWhereFieldsAreAbsent) {
  const VolumeWriter volume = volume_of(ControlBlockette(51).var("").var(""));
  const WholeBlock block(volume);
  EXPECT_EQ(members(*block, 1, 4), R"(,"endtime":null)");
}

// ---- one value ----

TEST(PutValue, IsThatOfTheField) {
  VolumeWriter volume = dictionaries();
  volume.control('S', comment("0011"));
  const WholeBlock block(volume, kFirst);
  const Plan &plan = plan_of(*(*block).blkdef);
  TextBuffer buffer;
  for (std::int32_t i = 0; i < 4; ++i) {
    put_value(&buffer, *block, *sdblk_entry_at((*block).contents, plan.defs, i),
              plan.fields[static_cast<std::size_t>(i)]);
    buffer.put(' ');
  }
  EXPECT_EQ(buffer.text(), R"("2020-01-01T00:00:00.0000Z" null 11 0 )");
}

}  // namespace
