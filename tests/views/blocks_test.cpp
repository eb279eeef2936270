#include "views/blocks.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/util/volume_writer.h"
#include "tests/views/view_lines.h"

using namespace tarvik;
using volume::BinaryFields;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

namespace {

std::string lines(std::string_view volume, const BlocksOptions &blocks = {},
                  std::int32_t record_length = 4096) {
  ViewOptions options;
  options.record_length = record_length;
  return lines_of(make_blocks_view(options, blocks).get(), volume);
}
std::string lines(const VolumeWriter &volume, const BlocksOptions &blocks = {}) {
  return lines(volume.bytes(), blocks);
}

BlocksOptions raw() {
  BlocksOptions options;
  options.raw = true;
  return options;
}

// The one line that begins so; the test fails where there are others.
std::string line(const std::string &text, const std::string &start) {
  const std::vector<std::string> found = lines_with(text, start);
  EXPECT_EQ(found.size(), 1U) << text;
  return found.empty() ? "" : found.front();
}
// Without their texts, which are for people.
std::string causes(const std::string &text) {
  std::string all;
  for (const std::string &note : lines_with(text, R"({"kind":"note",)")) {
    const std::size_t tail = note.find(R"(,"text":")");
    EXPECT_NE(tail, std::string::npos);
    EXPECT_EQ(note.substr(note.size() - 2), "\"}");
    all += note.substr(0, tail) + "}\n";
  }
  return all;
}
std::string end_line(const std::string &text) { return split_lines(text).back(); }

// ---- what volumes are made of ----

ControlBlockette unit() { return ControlBlockette(34).digits(1, 3).var("M/S").var("Velocity"); }

ControlBlockette comment(int code = 11) {
  return ControlBlockette(51).var(Time{2020, 345}).var("").digits(code, 4).digits(1, 6);
}

DataRecord record(unsigned exponent = 8, ByteOrder order = ByteOrder::kBig) {
  DataRecord data = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  data.order = order;
  data.time = {2021, 75, 6, 15, 52, 6000};
  data.samples = 5;
  data.rate_factor = 20;
  data.rate_multiplier = 1;
  if (exponent > 0) data.b1000(3, 1, exponent);
  return data;
}

// An A record with blocks 0 and 1, an S record with block 2, a data record: 256 bytes each.
VolumeWriter small() {
  VolumeWriter volume(256);
  volume.control(
      'A', {unit(), ControlBlockette(31).digits(11, 4).fixed("A", 1).var("Cold").digits(1, 3)});
  volume.control('S', comment());
  volume.data(record().b1001(100, 50, 7));
  return volume;
}

const std::string kUnitFields = R"("fields":{"uid":1,"name":"M/S","descr":"Velocity"})";
const std::string kCommentFields =
    R"("fields":{"time":"2020-12-10T00:00:00.0000Z","endtime":null,"cid":11,"level":1})";
const std::string kRecordFields =
    R"("fields":{"sta":"DYNGA","loc":"","chan":"BHZ","net":"XX",)"
    R"("time":"2021-03-16T06:15:52.6000Z","nsamp":5,"srate_factor":20,"srate_multiplier":1,)"
    R"("activity_flags":0,"clock_flags":0,"quality_flags":0,"nblks":2,"tcor":0,"data_offset":0,)"
    R"("blk_offset":48})";
const std::string k1000 =
    R"({"type":1000,"offset":48,"name":"Data Only SEED Blockette","fields":{"format":3,"order":1,)"
    R"("dlenp":8})";
const std::string k1001 =
    R"({"type":1001,"offset":56,"name":"Data Extension Blockette","fields":{"qual":100,"usec":50,)"
    R"("res1":0,"fcount":7})";

// ---- the lines of a volume ----

TEST(BlocksView, LinesAreTheBlocksBetweenVolumeAndEnd) {
  EXPECT_EQ(
      lines(small()),
      R"({"kind":"volume","file":"v","schema":"sdblk-blocks/1","bytes":768})"
      "\n"
      R"({"kind":"blockette","file":"v","block":0,"sequence":1,"record_type":"A",)"
      R"("record_offset":0,"offset":8,"length":23,"type":34,"name":"Units Abbreviation Blockette",)" +
          kUnitFields +
          "}\n"
          R"({"kind":"blockette","file":"v","block":1,"sequence":1,"record_type":"A",)"
          R"("record_offset":0,"offset":31,"length":20,"type":31,)"
          R"("name":"Comment Description Blockette","fields":{"cid":11,"class":"A",)"
          R"("comment":"Cold","uid":1},"refs":{"uid":0}})"
          "\n"
          R"({"kind":"blockette","file":"v","block":2,"sequence":2,"record_type":"S",)"
          R"("record_offset":256,"offset":264,"length":41,"type":51,)"
          R"("name":"Station Comment Blockette",)" +
          kCommentFields +
          R"(,"refs":{"cid":1}})"
          "\n"
          R"({"kind":"record","file":"v","block":3,"sequence":3,"record_type":"D","offset":512,)"
          R"("length":256,"byte_order":"big",)" +
          kRecordFields + R"(,"blockettes":[)" + k1000 + "}," + k1001 +
          "}]}\n"
          R"({"kind":"end","file":"v","records":3,"blocks":4,"counts":{"U":0,"V":0,"A":2,"S":1,)"
          R"("T":0,"D":1,"R":0,"Q":0,"M":0},"sequence_breaks":0,"padding_bytes":0,)"
          R"("skipped_bytes":0,"notes":0})"
          "\n");
}

TEST(BlocksView, EmptyFileHasVolumeAndEnd) {
  EXPECT_EQ(lines(""),
            R"({"kind":"volume","file":"v","schema":"sdblk-blocks/1","bytes":0})"
            "\n"
            R"({"kind":"end","file":"v","records":0,"blocks":0,"counts":{"U":0,"V":0,"A":0,"S":0,)"
            R"("T":0,"D":0,"R":0,"Q":0,"M":0},"sequence_breaks":0,"padding_bytes":0,)"
            R"("skipped_bytes":0,"notes":0})"
            "\n");
}

TEST(BlocksView, OneViewReadsFileAfterFile) {
  const auto view = make_blocks_view({}, {});
  const std::string first = lines_of(view.get(), small().bytes());
  VolumeWriter other(256);
  other.control('S', comment());
  lines_of(view.get(), other.bytes());
  EXPECT_EQ(lines_of(view.get(), small().bytes()), first);
}

// ---- control blockettes ----

TEST(BlocksView, BlocketteOverRecordsStandsWhereItStarts) {
  VolumeWriter volume(64);
  volume.control('S', comment());  // to byte 49
  volume.control('S', unit());     // 15 bytes here, 8 in the next record
  volume.control('S', comment(12));
  const std::string text = lines(volume);
  EXPECT_EQ(line(text, R"({"kind":"blockette","file":"v","block":1,)"),
            R"({"kind":"blockette","file":"v","block":1,"sequence":1,"record_type":"S",)"
            R"("record_offset":0,"offset":49,"length":23,"type":34,)"
            R"("name":"Units Abbreviation Blockette",)" +
                kUnitFields + "}");
  EXPECT_NE(line(text, R"({"kind":"blockette","file":"v","block":2,)")
                .find(R"("sequence":2,"record_type":"S","record_offset":64,"offset":80,)"),
            std::string::npos);
}

TEST(BlocksView, RecordWithoutANumberHasNullForIt) {
  DataRecord data = record();
  std::string bytes = data.bytes(256);
  bytes.replace(0, 6, "      ");
  EXPECT_NE(lines(bytes).find(R"("block":0,"sequence":null,"record_type":"D","offset":0,)"),
            std::string::npos);
}

TEST(BlocksView, NumberZeroIsANumber) {
  EXPECT_NE(lines(record().bytes(256, 0)).find(R"("block":0,"sequence":0,"record_type":"D",)"),
            std::string::npos);
}

TEST(BlocksView, UnknownTypeHasNeitherNameNorFields) {
  VolumeWriter volume(256);
  volume.control('S', ControlBlockette(77).raw("abc"));
  const std::string text = lines(volume);
  EXPECT_EQ(line(text, R"({"kind":"blockette",)"),
            R"({"kind":"blockette","file":"v","block":0,"sequence":1,"record_type":"S",)"
            R"("record_offset":0,"offset":8,"length":10,"type":77,"name":null,"fields":null})");
  EXPECT_NE(end_line(text).find(R"("counts":{"U":1,"V":0,"A":0,"S":1,)"), std::string::npos);
}

TEST(BlocksView, TypesOfDataAreUnknownInControlRecords) {
  for (const int type : {99, 100, 1000 / 2, 999}) {
    VolumeWriter volume(256);
    volume.control('S', ControlBlockette(type).raw("abcdefgh"));
    EXPECT_NE(lines(volume).find(R"(,"name":null,"fields":null})"), std::string::npos) << type;
  }
}

// ---- data records ----

TEST(BlocksView, LowByteFirstIsSaid) {
  VolumeWriter volume(256);
  volume.data(record(8, ByteOrder::kLittle));
  const std::string text = lines(volume);
  EXPECT_NE(text.find(R"("length":256,"byte_order":"little","fields":{"sta":"DYNGA",)"),
            std::string::npos);
  EXPECT_NE(text.find(R"("time":"2021-03-16T06:15:52.6000Z","nsamp":5,)"), std::string::npos);
}

TEST(BlocksView, RecordWithoutBlockettesHasAnEmptyArray) {
  VolumeWriter volume(256);
  volume.data(record(0));
  EXPECT_EQ(between(lines(volume), R"("blk_offset":0},)", "\n"), R"("blockettes":[]})");
}

TEST(BlocksView, UnknownDataBlocketteHasNeitherNameNorFields) {
  VolumeWriter volume(256);
  volume.data(record().blockette(1500, "abcd"));
  const std::string text = lines(volume);
  EXPECT_EQ(between(text, R"("blockettes":[)", "\n"),
            k1000 + R"(},{"type":1500,"offset":56,"name":null,"fields":null}]})");
  EXPECT_NE(end_line(text).find(R"("counts":{"U":0,)"), std::string::npos);
}

TEST(BlocksView, TypeFrom2048OnHasNoFields) {
  VolumeWriter volume(256);
  volume.data(record().blockette(65535, "abcd"));
  EXPECT_EQ(between(lines(volume), R"("blockettes":[)", "\n"),
            k1000 + R"(},{"type":65535,"offset":56,"name":null,"fields":null}]})");
}

TEST(BlocksView, ChainedBlocketteOfAReferenceHasRefs) {
  VolumeWriter volume(256);
  volume.control('A', unit());
  volume.data(record().blockette(55, "01001002").b1001(100, 50, 7));
  EXPECT_EQ(between(lines(volume), k1000 + "},", ",{\"type\":1001,"),
            R"({"type":55,"offset":56,"name":"Response List Blockette","fields":{"stage":1,)"
            R"("iunits":1,"ounits":2},"refs":{"iunits":0,"ounits":null}})");
}

TEST(BlocksView, LettersOfDataRecordsAreCounted) {
  VolumeWriter volume(256);
  for (const char letter : {'R', 'Q', 'Q', 'M'}) {
    DataRecord data = record();
    data.quality = letter;
    volume.data(data);
  }
  EXPECT_NE(end_line(lines(volume)).find(R"("T":0,"D":0,"R":1,"Q":2,"M":1})"), std::string::npos);
}

// ---- raw bytes ----

TEST(BlocksView, RawOfABlocketteIsAText) {
  VolumeWriter volume(256);
  volume.control('S', ControlBlockette(34).digits(1, 3).var("\"M\"").var("a\\b"));
  EXPECT_EQ(between(lines(volume, raw()), R"(,"descr":"a\\b"})", "\n"),
            R"(,"raw":"0340018001\"M\"~a\\b~"})");
}

TEST(BlocksView, RawStandsAfterReferences) {
  VolumeWriter volume = small();
  EXPECT_EQ(between(lines(volume, raw()), R"("uid":1},"refs")", "\n"),
            R"(:{"uid":0},"raw":"03100200011ACold~001"})");
}

TEST(BlocksView, RawOfABlocketteOverRecordsHasAllItsBytes) {
  VolumeWriter volume(64);
  volume.control('S', comment()).control('S', unit());  // 15 bytes here, 8 in the next record
  EXPECT_EQ(between(lines(volume, raw()), R"("descr":"Velocity"},)", "\n"),
            R"("raw":"0340023001M/S~Velocity~"})");
}

TEST(BlocksView, RawOfADataBlocketteStandsAfterReferences) {
  VolumeWriter volume(256);
  volume.control('A', unit());
  volume.data(record().blockette(55, "01001002").b1001(100, 50, 7));
  EXPECT_EQ(between(lines(volume, raw()), R"("ounits":null})", "},"),
            R"(,"raw":"003700443031303031303032")");
}

TEST(BlocksView, RawOfADataBlocketteThatAnotherCutsHasWhatIsLeft) {
  // The other one begins in its third byte.
  DataRecord data = record(0);
  data.forced_first_offset = 48;
  std::string bytes = data.bytes(256);
  bytes.replace(48, 4, BinaryFields(ByteOrder::kBig).u16(1500).u16(50).bytes());
  EXPECT_EQ(between(lines(bytes, raw()), R"("type":1500,)", "}"),
            R"("offset":48,"name":null,"fields":null,"raw":"05dc")");
}

TEST(BlocksView, RawThatIsNoUtf8IsLatin1) {
  VolumeWriter volume(256);
  volume.control('S', ControlBlockette(34).digits(1, 3).var("\xB5").var("\xC3\xA9"));
  EXPECT_EQ(between(lines(volume, raw()), R"(,"descr":)", "\n"),
            "\"\xC3\xA9\"},\"raw\":\"0340015001\xC2\xB5~\xC3\x83\xC2\xA9~\"}");
}

TEST(BlocksView, RawThatIsUtf8StaysAsItIs) {
  VolumeWriter volume(256);
  volume.control('S', ControlBlockette(34).digits(1, 3).var("\xC2\xB5").var("\n"));
  EXPECT_EQ(between(lines(volume, raw()), R"(,"descr":)", "\n"),
            "\"\"},\"raw\":\"0340015001\xC2\xB5~\\n~\"}");
}

TEST(BlocksView, RawOfAnUnknownTypeIsThere) {
  VolumeWriter volume(256);
  volume.control('S', ControlBlockette(77).raw("abc"));
  EXPECT_EQ(between(lines(volume, raw()), R"("name":null,)", "\n"),
            R"("fields":null,"raw":"0770010abc"})");
}

TEST(BlocksView, RawOfABlocketteThatIsCutIsWhatIsThere) {
  VolumeWriter volume(64);
  volume.control('S', ControlBlockette(77).raw(std::string(49, 'x')).text_with_length(90));
  const std::string text = lines(volume.bytes(), raw(), 64);
  EXPECT_EQ(between(text, R"("fields":null,)", "\n"),
            R"("raw":"0770090)" + std::string(49, 'x') + R"("})");
  EXPECT_NE(text.find(R"("length":90,"type":77,)"), std::string::npos);
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"cut","offset":8,"block":0})"
                          "\n");
}

TEST(BlocksView, RawOfARecordIsItsFirst48Bytes) {
  VolumeWriter volume(256);
  volume.data(record().b1001(100, 50, 7));
  const std::string text = lines(volume, raw());
  EXPECT_EQ(between(text, k1000, "\n"),
            R"(,"raw":"03e8003803010800"},)" + k1001 + R"(,"raw":"03e9000064320007)" +
                std::string(2 * (64 - 8), '0') +
                // 000001, "D ", "DYNGA", blanks, "BHZXX", 2021, 75, 6, 15, 52, 0, 6000
                R"("}],"raw":"3030303030314420)"
                "44594e4741"
                "2020"
                "42485a"
                "5858"
                "07e5004b060f34001770"
                // 5 samples, 20 times 1, no flags, 2 blockettes, no correction, no data, 48
                "000500140001"
                "00000002"
                "00000000"
                "00000030"
                R"("})");
}

TEST(BlocksView, RawOfADataBlocketteGoesToTheNextOne) {
  VolumeWriter volume(256);
  volume.data(record().blockette(1500, "\xFF\x01").b1001(1, 2, 3));
  EXPECT_EQ(between(lines(volume, raw()), R"("name":null,)", "}"),
            R"("fields":null,"raw":"05dc003eff01")");
}

TEST(BlocksView, RawOfADataBlocketteHas64BytesAtMost) {
  VolumeWriter volume(512);
  volume.data(
      record(9).blockette(1500, std::string(60, 'a')).blockette(1501, std::string(61, 'b')));
  const std::string text = lines(volume, raw());
  std::string a;
  for (int i = 0; i < 60; ++i) a += "61";
  std::string b;
  for (int i = 0; i < 60; ++i) b += "62";
  // At byte 56 with 64 bytes, at byte 120 with the rest of the record.
  EXPECT_NE(text.find(R"("raw":"05dc0078)" + a + "\""), std::string::npos);
  EXPECT_NE(text.find(R"("raw":"05dd0000)" + b + "\""), std::string::npos);
}

// ---- skips ----

TEST(BlocksView, GarbageIsASkipInItsPlace) {
  VolumeWriter volume(256);
  volume.data(record());
  const std::string bytes = volume.bytes() + "no SEED" + volume.bytes();
  const std::string text = lines(bytes);
  EXPECT_EQ(lines_with(text, R"({"kind":"skip",)"),
            std::vector<std::string>{
                R"({"kind":"skip","file":"v","offset":256,"length":7,"why":"garbage"})"});
  const std::vector<std::string> all = split_lines(text);
  ASSERT_EQ(all.size(), 6U) << text;  // the first record has a note: nothing confirms its end
  EXPECT_NE(all[2].find(R"("kind":"record","file":"v","block":0,)"), std::string::npos);
  EXPECT_NE(all[3].find(R"("kind":"skip")"), std::string::npos);
  EXPECT_NE(all[4].find(R"("block":1,"sequence":1,"record_type":"D","offset":263,)"),
            std::string::npos);
  EXPECT_NE(all[5].find(R"("sequence_breaks":1,"padding_bytes":0,"skipped_bytes":7,"notes":1})"),
            std::string::npos);
}

TEST(BlocksView, PaddingIsASkipOfItsOwn) {
  VolumeWriter volume(256);
  volume.data(record()).raw_record(std::string(100, ' ')).sequence(2).data(record());
  const std::string text = lines(volume);
  EXPECT_EQ(line(text, R"({"kind":"skip",)"),
            R"({"kind":"skip","file":"v","offset":256,"length":100,"why":"padding"})");
  EXPECT_NE(end_line(text).find(
                R"("sequence_breaks":0,"padding_bytes":100,"skipped_bytes":0,"notes":0})"),
            std::string::npos);
}

TEST(BlocksView, RestOfAControlRecordIsASkip) {
  VolumeWriter volume(256);
  volume.control('S', comment()).control('S', "what is this?");
  const std::string text = lines(volume.bytes(), {}, 256);
  const std::vector<std::string> all = split_lines(text);
  ASSERT_EQ(all.size(), 4U) << text;
  EXPECT_EQ(all[2], R"({"kind":"skip","file":"v","offset":49,"length":207,"why":"prefix"})");
  EXPECT_NE(all[3].find(R"("padding_bytes":0,"skipped_bytes":207,"notes":0})"), std::string::npos);
}

// ---- notes ----

TEST(BlocksView, RecordsOwnNoteStandsBeforeItAndHasNoBlock) {
  VolumeWriter volume(256);
  volume.data(record(10)).data(record(8));
  const std::string text = lines(volume);
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"length","offset":0})"
                          "\n");
  const std::vector<std::string> all = split_lines(text);
  ASSERT_EQ(all.size(), 5U);
  EXPECT_NE(all[1].find(R"("kind":"note")"), std::string::npos);
  EXPECT_NE(all[2].find(R"("block":0,"sequence":1,"record_type":"D","offset":0,"length":256,)"),
            std::string::npos);
}

TEST(BlocksView, RecordThatIsCutHasTheLengthThatIsThere) {
  VolumeWriter volume(256);
  volume.data(record(9));
  const std::string text = lines(volume);
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"cut","offset":0})"
                          "\n");
  EXPECT_NE(text.find(R"("offset":0,"length":256,)"), std::string::npos);
}

TEST(BlocksView, LengthInForceAtFirstIsThatOfTheOptions) {
  const std::string bytes = VolumeWriter(256).data(record(0)).bytes() + std::string(44, 'x');
  const std::string text = lines(bytes, {}, 256);
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"unconfirmed","offset":0})"
                          "\n");
  EXPECT_EQ(line(text, R"({"kind":"skip",)"),
            R"({"kind":"skip","file":"v","offset":256,"length":44,"why":"garbage"})");
  EXPECT_NE(lines(bytes).find(R"("offset":0,"length":300,)"), std::string::npos);
}

TEST(BlocksView, NotesOfABlockFollowItInTheOrderOfItsFields) {
  VolumeWriter volume(256);
  volume.control('A', ControlBlockette(48).digits(1, 4).var("A"));  // 13 bytes
  volume.control('A', ControlBlockette(48)
                          .digits(1, 4)
                          .var("B")
                          .fixed("x", 12)
                          .real(0.05)
                          .digits(3, 2)
                          .fixed("y", 12)
                          .text_with_length(300));
  const std::string text = lines(volume.bytes(), {}, 256);
  const std::string start = R"({"kind":"note","file":"v","why":")";
  EXPECT_EQ(causes(text), start + R"(cut","offset":21,"block":1})" + '\n' +  //
                              start + R"(again","offset":21,"block":1})" + '\n' + start +
                              R"(value","offset":21,"block":1,"field":"sens"})" + '\n' + start +
                              R"(value","offset":21,"block":1,"field":"histories[0].sens"})" +
                              '\n' + start +
                              R"(short","offset":21,"block":1,"field":"histories"})" + '\n');
  const std::vector<std::string> all = split_lines(text);
  ASSERT_EQ(all.size(), 9U);
  EXPECT_NE(all[2].find(R"("block":1,)"), std::string::npos);
  EXPECT_NE(all[3].find(R"("why":"cut")"), std::string::npos);
  EXPECT_NE(end_line(text).find(R"("notes":5})"), std::string::npos);
}

TEST(BlocksView, NotesOfARecordHaveOrderFirstAndChainLast) {
  DataRecord data = record(9);
  data.time = {2056, 257, 6, 15, 52, 0};  // the same in both byte orders
  volume::Timing timing;
  timing.exception = {0, 1};
  data.b500(timing);
  data.chain.back().forced_next = 9999;
  VolumeWriter volume(512);
  volume.data(data);
  const std::string text = lines(volume);
  const std::string start = R"({"kind":"note","file":"v","why":")";
  EXPECT_EQ(causes(text), start + R"(order","offset":0,"block":0})" + '\n' + start +
                              R"(value","offset":0,"block":0,"field":"blockettes[1].time"})" +
                              '\n' + start + R"(chain","offset":0,"block":0})" + '\n');
  EXPECT_NE(text.find(R"("byte_order":"big",)"), std::string::npos);
}

TEST(BlocksView, TextOfANoteNamesTheFieldAndItsBytes) {
  VolumeWriter volume(256);
  volume.control('S', ControlBlockette(51).var("").var("").digits(1, 4).fixed("\"x1", 6));
  const std::string note = line(lines(volume.bytes(), {}, 256), R"({"kind":"note",)");
  EXPECT_NE(note.find(R"(,"field":"level","text":"level )"), std::string::npos) << note;
  EXPECT_NE(note.find(R"(\"x1)"), std::string::npos) << note;
}

// ---- what comes again ----

// The line of a block, by its number.
std::string line_of_block(const std::string &text, int number, const std::string &kind) {
  return line(text,
              R"({"kind":")" + kind + R"(","file":"v","block":)" + std::to_string(number) + ",");
}

TEST(BlocksRepeats, BlocketteHasItsOwnPlace) {
  VolumeWriter volume(256);
  volume.control('S', comment()).control('S', comment());
  const std::string text = lines(volume);
  const std::string rest = R"("length":41,"type":51,"name":"Station Comment Blockette",)" +
                           kCommentFields + R"(,"refs":{"cid":null}})";
  EXPECT_EQ(line_of_block(text, 0, "blockette"),
            R"({"kind":"blockette","file":"v","block":0,"sequence":1,"record_type":"S",)"
            R"("record_offset":0,"offset":8,)" +
                rest);
  EXPECT_EQ(line_of_block(text, 1, "blockette"),
            R"({"kind":"blockette","file":"v","block":1,"sequence":1,"record_type":"S",)"
            R"("record_offset":0,"offset":49,)" +
                rest);
}

TEST(BlocksRepeats, BlocketteHasItsOwnRawBytes) {
  VolumeWriter volume(256);
  volume.control('S', comment()).control('S', comment());
  const std::string text = lines(volume, raw());
  const std::string end =
      R"("refs":{"cid":null},"raw":"05100412020,345,00:00:00.0000~~0011000001"})";
  EXPECT_TRUE(line_of_block(text, 0, "blockette").ends_with(end)) << text;
  EXPECT_TRUE(line_of_block(text, 1, "blockette").ends_with(end)) << text;
}

// The ends of blocks 0 and 2, which are the same comment before and after what defines its code.
void expect_references_around(const ControlBlockette *definition, const DataRecord *chain) {
  VolumeWriter volume(256);
  volume.control('S', comment());
  if (definition != nullptr) volume.control('A', *definition);
  if (chain != nullptr) volume.data(*chain);
  volume.control('S', comment());
  BlocksOptions comments;
  comments.types = "S";
  for (const BlocksOptions &options : {BlocksOptions(), comments}) {
    const std::string text = lines(volume, options);
    EXPECT_TRUE(line_of_block(text, 0, "blockette").ends_with(R"("refs":{"cid":null}})")) << text;
    EXPECT_TRUE(line_of_block(text, 2, "blockette").ends_with(R"("refs":{"cid":1}})")) << text;
  }
}

TEST(BlocksRepeats, ReferencesSeeWhatWasDefinedInBetweenChosenOrNot) {
  const ControlBlockette definition =
      ControlBlockette(31).digits(11, 4).fixed("A", 1).var("Cold").digits(1, 3);
  expect_references_around(&definition, nullptr);
}

TEST(BlocksRepeats, ReferencesSeeWhatAChainDefinesChosenOrNot) {
  const DataRecord chain = record().blockette(31, "0011ACold~001");
  expect_references_around(nullptr, &chain);
}

TEST(BlocksRepeats, NothingIsKeptOfAnotherFile) {
  VolumeWriter without(256);
  without.control('S', comment());
  const auto view = make_blocks_view({}, {});
  lines_of(view.get(), small().bytes());
  EXPECT_TRUE(line_of_block(lines_of(view.get(), without.bytes()), 0, "blockette")
                  .ends_with(R"("refs":{"cid":null}})"));
}

TEST(BlocksRepeats, DefinitionThatComesAgainIsNoted) {
  VolumeWriter volume(256);
  volume.control('A', unit()).control('A', unit());
  EXPECT_EQ(causes(lines(volume.bytes(), {}, 256)),
            R"({"kind":"note","file":"v","why":"again","offset":31,"block":1})"
            "\n");
}

TEST(BlocksRepeats, NotesAreToldEachTime) {
  // Of 20 bytes each.
  const ControlBlockette bad = ControlBlockette(51).var("x").var("").digits(1, 4).digits(1, 6);
  VolumeWriter volume(256);
  volume.control('S', bad).control('S', bad);
  const std::string text = lines(volume.bytes(), {}, 256);
  EXPECT_EQ(causes(text),
            R"({"kind":"note","file":"v","why":"value","offset":8,"block":0,"field":"time"})"
            "\n"
            R"({"kind":"note","file":"v","why":"value","offset":28,"block":1,"field":"time"})"
            "\n");
  EXPECT_NE(end_line(text).find(R"("notes":2})"), std::string::npos);
}

TEST(BlocksRepeats, BlocketteThatIsCutIsNotTheWholeOne) {
  VolumeWriter volume(128);
  volume.control('S', comment()).control('S', comment());  // from byte 8 to 49 and to 90
  const std::string text = lines(volume.bytes().substr(0, 84));
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"unconfirmed","offset":0})"
                          "\n"
                          R"({"kind":"note","file":"v","why":"cut","offset":49,"block":1})"
                          "\n");
  EXPECT_TRUE(line_of_block(text, 1, "blockette").ends_with(R"("cid":11},"refs":{"cid":null}})"))
      << text;
}

TEST(BlocksRepeats, RecordHasItsOwnNumberPlaceAndTime) {
  VolumeWriter volume(256);
  DataRecord first = record().b1001(100, 50, 7);
  DataRecord second = first;
  second.time = {2021, 76, 0, 0, 0, 1};
  volume.data(first).data(second);
  const std::string text = lines(volume, raw());
  const std::string before = R"("byte_order":"big","fields":{"sta":"DYNGA","loc":"","chan":"BHZ",)"
                             R"("net":"XX","time":")";
  const std::string after =
      R"(","nsamp":5,"srate_factor":20,"srate_multiplier":1,"activity_flags":0,)"
      R"("clock_flags":0,"quality_flags":0,"nblks":2,"tcor":0,"data_offset":0,"blk_offset":48},)"
      R"("blockettes":[)" +
      k1000 + R"(,"raw":"03e8003803010800"},)" + k1001 + R"(,"raw":"03e9000064320007)" +
      std::string(2 * (64 - 8), '0') + R"("}],"raw":"30303030303)";
  const std::string codes =
      "4420"
      "44594e4741"
      "2020"
      "42485a"
      "5858";
  const std::string rest =
      "000500140001"
      "00000002"
      "00000000"
      "00000030"
      "\"}";
  EXPECT_EQ(line_of_block(text, 0, "record"),
            R"({"kind":"record","file":"v","block":0,"sequence":1,"record_type":"D","offset":0,)"
            R"("length":256,)" +
                before + "2021-03-16T06:15:52.6000Z" + after + "1" + codes +
                "07e5004b060f34001770" + rest);
  EXPECT_EQ(line_of_block(text, 1, "record"),
            R"({"kind":"record","file":"v","block":1,"sequence":2,"record_type":"D","offset":256,)"
            R"("length":256,)" +
                before + "2021-03-17T00:00:00.0001Z" + after + "2" + codes +
                "07e5004c000000000001" + rest);
}

TEST(BlocksRepeats, RecordThatDiffersInOneFieldSaysSo) {
  VolumeWriter volume(256);
  DataRecord data = record().b1001(100, 50, 7);
  volume.data(data);
  data.samples = 6;
  volume.data(data);
  data.loc = "00";
  volume.data(data);
  volume.data(record().b1001(100, 51, 7));
  const std::string text = lines(volume);
  EXPECT_NE(line_of_block(text, 1, "record").find(R"("loc":"","chan")"), std::string::npos);
  EXPECT_NE(line_of_block(text, 1, "record").find(R"("nsamp":6,)"), std::string::npos);
  EXPECT_NE(line_of_block(text, 2, "record").find(R"("loc":"00",)"), std::string::npos);
  EXPECT_NE(line_of_block(text, 2, "record").find(R"("nsamp":6,)"), std::string::npos);
  EXPECT_NE(line_of_block(text, 3, "record").find(R"("nsamp":5,)"), std::string::npos);
  EXPECT_NE(line_of_block(text, 3, "record").find(R"("usec":51,)"), std::string::npos);
}

TEST(BlocksRepeats, NotesOfARecordAreToldEachTime) {
  DataRecord data = record(8);
  data.chain.back().forced_next = 9999;
  VolumeWriter volume(256);
  volume.data(data).data(data);
  EXPECT_EQ(causes(lines(volume)),
            R"({"kind":"note","file":"v","why":"chain","offset":0,"block":0})"
            "\n"
            R"({"kind":"note","file":"v","why":"chain","offset":256,"block":1})"
            "\n");
}

TEST(BlocksRepeats, NotesOnFieldsOfAChainAreToldEachTime) {
  DataRecord data = record(8);
  data.blockette(57, "x1" + std::string(42, ' '));
  VolumeWriter volume(256);
  volume.data(data).data(data);
  EXPECT_EQ(causes(lines(volume)),
            R"({"kind":"note","file":"v","why":"value","offset":0,"block":0,)"
            R"("field":"blockettes[1].stage"})"
            "\n"
            R"({"kind":"note","file":"v","why":"value","offset":256,"block":1,)"
            R"("field":"blockettes[1].stage"})"
            "\n");
}

TEST(BlocksRepeats, ByteOrderOfARecordThatCameBeforeIsNoted) {
  DataRecord data = record(8);
  VolumeWriter volume(256);
  volume.data(data);
  data.time = {2056, 257};  // the same in both byte orders
  volume.data(data);
  const std::string text = lines(volume);
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"order","offset":256,"block":1})"
                          "\n");
  EXPECT_NE(
      line_of_block(text, 1, "record").find(R"("time":"2056-09-13T00:00:00.0000Z","nsamp":5,)"),
      std::string::npos)
      << text;
}

TEST(BlocksRepeats, RecordIsChosenByItsBlockettesEachTime) {
  VolumeWriter volume(256);
  volume.data(record().b1001(100, 50, 7)).data(record().b1001(100, 50, 7)).data(record());
  BlocksOptions options;
  options.blockettes = {1001};
  EXPECT_EQ(lines_with(lines(volume, options), R"({"kind":"record",)").size(), 2U);
}

// ---- choosing blocks ----

// The numbers of the blocks that are written.
std::string chosen(std::string_view types, const std::vector<std::int32_t> &blockettes) {
  BlocksOptions options;
  options.types = types;
  options.blockettes = blockettes;
  const std::string text = lines(small(), options);
  std::string numbers;
  for (const std::string &block : split_lines(text)) {
    if (block.find(R"("block":)") != std::string::npos) {
      numbers += between(block, R"("block":)", ",");
    }
  }
  EXPECT_EQ(end_line(text), end_line(lines(small())));
  EXPECT_EQ(split_lines(text).size(), numbers.size() + 2);
  return numbers;
}

TEST(BlocksView, TypesChooseByTheLetterOfTheRecord) {
  EXPECT_EQ(chosen("S", {}), "2");
  EXPECT_EQ(chosen("AD", {}), "013");
  EXPECT_EQ(chosen("R", {}), "");
}

TEST(BlocksView, BlockettesChooseByTheirType) {
  EXPECT_EQ(chosen("", {51}), "2");
  EXPECT_EQ(chosen("", {31, 34}), "01");
  EXPECT_EQ(chosen("", {50}), "");
}

TEST(BlocksView, RecordIsChosenAs99OrByAnyOfItsBlockettes) {
  EXPECT_EQ(chosen("", {99}), "3");
  EXPECT_EQ(chosen("", {1000}), "3");
  EXPECT_EQ(chosen("", {51, 1001}), "23");
  EXPECT_EQ(chosen("", {500}), "");
}

TEST(BlocksView, BothChoicesMustHold) {
  EXPECT_EQ(chosen("A", {34, 51}), "0");
  EXPECT_EQ(chosen("D", {34, 51}), "");
  EXPECT_EQ(chosen("SD", {51, 1000}), "23");
}

TEST(BlocksView, ChoiceLeavesOutTheNotesOfOtherBlocksOnly) {
  VolumeWriter volume(256);
  volume.data(record(10));  // a note of its own
  volume.control('S', ControlBlockette(51).var("x").var("").digits(1, 4).digits(1, 6));
  volume.control('S', "what is this?");
  BlocksOptions none;
  none.types = "M";
  const std::string text = lines(volume.bytes(), none, 256);
  EXPECT_EQ(causes(text), R"({"kind":"note","file":"v","why":"length","offset":0})"
                          "\n");
  EXPECT_EQ(lines_with(text, R"({"kind":"skip",)").size(), 1U);
  EXPECT_NE(end_line(text).find(R"("notes":2})"), std::string::npos);
  none.types = "S";
  EXPECT_EQ(causes(lines(volume.bytes(), none, 256)),
            R"({"kind":"note","file":"v","why":"length","offset":0})"
            "\n"
            R"({"kind":"note","file":"v","why":"value","offset":264,"block":1,"field":"time"})"
            "\n");
}

}  // namespace
