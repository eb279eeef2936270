// The listing of decoded blocks, line by line.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "seed/sdblk.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

namespace {

using namespace std::string_literals;
using testing::ExitedWithCode;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

std::string blanks(std::size_t count) { return std::string(count, ' '); }

std::string listing(const SDBlk *block, std::int32_t level, const char *prefix = "") {
  LogCapture log;
  EXPECT_EQ(sdblk_printblk(block, prefix, level), 0);
  return log.take();
}

std::size_t lines_of(std::string_view text) {
  std::size_t lines = 0;
  for (const char c : text) lines += c == '\n' ? 1 : 0;
  return lines;
}

std::string one(char type, const ControlBlockette &blockette) {
  return VolumeWriter(1024).control(type, blockette).bytes();
}

DataRecord data_record() {
  return {.sta = "DYNGA", .chan = "BHZ", .net = "XX", .time = {2021, 75}};
}

// ---- definitions and entries made by hand ----

SDBlkFieldDef field(const char *key, std::int32_t kind, const char *format = "") {
  SDBlkFieldDef def = {};
  def.key = key;
  def.title = "";
  def.description = "";
  def.format = format;
  def.kind = kind;
  return def;
}

// Entries of fields, set by hand.
class Entries {
 public:
  explicit Entries(std::vector<SDBlkFieldDef> fields)
      : fields_(std::move(fields)), entries_(fields_.size()) {
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      entries_[i] = {&fields_[i], nullptr, 1, {}, 0, 0};
      setarr(array_, fields_[i].key, &entries_[i]);
    }
  }
  ~Entries() { freearr(array_, nullptr); }
  Entries(const Entries &) = delete;
  Entries &operator=(const Entries &) = delete;

  SDBlkEntry &operator[](std::size_t position) { return entries_[position]; }
  [[nodiscard]] Arr *array() const { return array_; }
  [[nodiscard]] std::string print(const char *prefix = "") const {
    LogCapture log;
    EXPECT_EQ(sdblk_print_sblk(&array_, 1, prefix, static_cast<std::int64_t>(fields_.size()),
                               fields_.data()),
              0);
    return log.take();
  }

 private:
  std::vector<SDBlkFieldDef> fields_;
  std::vector<SDBlkEntry> entries_;
  Arr *array_ = newarr();
};

std::string printed_real(double value, const char *format = "") {
  Entries entries({field("v", SDBLK_DOUBLE, format)});
  entries[0].value.d = value;
  return entries.print();
}

// ---- header lines ----

SDBlk header_block() {
  SDBlk block = {};
  block.logical_sequence = 12;
  block.record_type = 'S';
  block.blockette_type = 50;
  block.block_number = 7;
  block.file_offset = 4104;
  block.blockette_length = 93;
  return block;
}

TEST(HeaderLine, NamesABlockette) {
  sdblk_blkdefs_init();
  SDBlk block = header_block();
  block.blkdef = seed_blkdefs_index[50];
  EXPECT_EQ(listing(&block, 0, ">>"),
            ">>000012: S: B0050[000007,000004104,0093]: Station Identifier Blockette\n");
}

TEST(HeaderLine, NamesADataRecord) {
  sdblk_blkdefs_init();
  SDBlk block = header_block();
  block.record_type = 'Q';
  block.blockette_type = 99;
  block.blockette_length = 512;
  block.blkdef = seed_blkdefs_index[99];
  EXPECT_EQ(listing(&block, 0),
            "000012: Q: BDATA[000007,000004104,0512]: Fixed Section of Data Header\n");
}

TEST(HeaderLine, OfAnUnknownTypeIsUndefined) {
  SDBlk block = header_block();
  block.blockette_type = 999;
  EXPECT_EQ(listing(&block, 0, ">"), ">000012: S: B0999: UNDEFINED\n");
}

TEST(HeaderLine, NumbersTakeTheRoomTheyNeed) {
  sdblk_blkdefs_init();
  SDBlk block = header_block();
  block.logical_sequence = -5;
  block.block_number = 12345678;
  block.file_offset = 123456789012;
  block.blockette_length = 65536;
  block.blkdef = seed_blkdefs_index[50];
  EXPECT_EQ(listing(&block, 0),
            "-000005: S: B0050[12345678,123456789012,65536]: Station Identifier Blockette\n");
}

TEST(HeaderLine, ZeroByteAsRecordTypeCutsNothing) {
  SDBlk block = header_block();
  block.record_type = '\0';
  EXPECT_EQ(listing(&block, 0), "000012: \0: B0050: UNDEFINED\n"s);
}

TEST(Level, ZeroPrintsOneLine) {
  BlockReader reader(data_record().b100(20).b1000(3, 1, 9).bytes(512));
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(lines_of(listing(block, 0)), 1U);
}

TEST(Level, AnyOtherPrintsAll) {
  BlockReader reader(one('S', ControlBlockette(50).fixed("DYNG", 5)));
  const SDBlk *block = reader.decode_next();
  const std::string full = listing(block, 1);
  EXPECT_EQ(lines_of(full), 16U) << "header, one row, 14 fields";
  EXPECT_EQ(listing(block, 2), full);
  EXPECT_EQ(listing(block, -1), full);
}

// ---- raw bytes ----

TEST(TextRows, AreOf64Columns) {
  const std::string text = std::string(64, 'a') + std::string(64, 'b') + "cd";
  LogCapture log;
  EXPECT_EQ(sdblk_printbuf(">", text.data(), 130), 0);
  EXPECT_EQ(log.take(), ">        " + std::string(64, 'a') + "\n>        " + std::string(64, 'b') +
                            "\n>        cd" + blanks(62) + "\n");
}

TEST(TextRows, OfAnUnknownBlocketteAreAllThatIsListed) {
  BlockReader reader(one('S', ControlBlockette(999).raw(std::string(123, 'x'))));
  EXPECT_EQ(listing(reader.decode_next(), 1),
            "000001: S: B0999: UNDEFINED\n        9990130" + std::string(57, 'x') + "\n        " +
                std::string(64, 'x') + "\n        xx" + blanks(62) + "\n");
}

TEST(TextRows, EndAtAZeroByteEachForItself) {
  std::string text(70, 'a');
  text[2] = '\0';
  text[66] = '\0';
  LogCapture log;
  sdblk_printbuf("", text.data(), 70);
  EXPECT_EQ(log.take(), "        aa" + blanks(62) + "\n        aa" + blanks(62) + "\n");
}

TEST(TextRows, ControlBytesStandAsTheyAre) {
  LogCapture log;
  sdblk_printbuf("", "a\x1B\x7F\xFF\nb", 6);
  EXPECT_EQ(log.take(), "        a\x1B\x7F\xFF\nb" + blanks(58) + "\n");
}

TEST(TextRows, OfNoBytesAreNone) {
  LogCapture log;
  sdblk_printbuf("", "abc", 0);
  sdblk_printbuf("", "abc", -1);
  EXPECT_EQ(log.take(), "");
}

TEST(TextRows, OfACopyEndWithItsBytes) {
  // The raw bytes of a copy have no 0 after them.
  BlockReader reader(one('S', ControlBlockette(999).raw("abc")));
  SDBlk *copy = sdblk_copy(reader.decode_next());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(listing(copy, 1),
            "000001: S: B0999: UNDEFINED\n        9990010abc" + blanks(54) + "\n");
  sdblk_free(copy);
}

std::string line_at(const std::string &text, int number) {
  std::size_t begin = 0;
  for (int i = 0; i < number; ++i) begin = text.find('\n', begin) + 1;
  return text.substr(begin, text.find('\n', begin) + 1 - begin);
}

TEST(HexRows, ShowTheFixedSection) {
  BlockReader reader(data_record().bytes(512));
  const std::string text = listing(reader.decode_next(), 1);
  // 2021 is 07e5, day 75 is 004b.
  EXPECT_EQ(line_at(text, 1),
            "        3030303030314420"
            "44594e4741"
            "2020"
            "42485a"
            "5858"
            "07e5004b00000000"
            "0000"
            "0000"
            "\n");
  EXPECT_EQ(line_at(text, 2), "        " + std::string(32, '0') + blanks(32) + "\n");
  EXPECT_EQ(line_at(text, 3), "        sta        = DYNGA\n");
}

TEST(HexRows, EndWithTheImage) {
  BlockReader reader(data_record().bytes(512).substr(0, 33));
  const SDBlk *block = reader.next();
  const std::string text = listing(block, 1);
  EXPECT_EQ(line_at(text, 2), "        00" + blanks(62) + "\n");
  EXPECT_EQ(line_at(text, 3), "        sta        = UNDEFINED\n");
}

// ---- chained blockettes ----

TEST(HexRows, OfARecordWithoutAVolumeAreTheFixedSection) {
  const std::string bytes(48, '\x01');
  SDBlk block = {};
  block.data_ptr = bytes.data();
  const std::string text = listing(&block, 1);
  const std::string ones = "0101010101010101";
  const std::string row = ones + ones;
  EXPECT_NE(text.find("        " + row + row + "\n        " + row + blanks(32) + "\n"),
            std::string::npos);
  EXPECT_EQ(lines_of(text), 3U);
}

TEST(ChainedBlockette, MadeByHandHasNoBytes) {
  SDBlk next = {};
  next.blockette_type = 100;
  next.blockette_length = 8;
  BlockReader reader(VolumeWriter(512).data(data_record()).bytes());
  SDBlk *block = reader.decode_next();
  const std::size_t alone = lines_of(listing(block, 1));
  block->next = &next;
  EXPECT_EQ(lines_of(listing(block, 1)), alone + 1);
  block->next = nullptr;
}

TEST(ChainedBlockette, HasHeaderBytesAndFields) {
  DataRecord record = data_record().b1000(10, 1, 9);
  record.forced_data_offset = 56;
  VolumeWriter writer(512);
  writer.data(data_record()).data(record);
  BlockReader reader(writer.bytes(), 512);
  reader.decode_next();
  const std::string text = listing(reader.decode_next(), 1, ">");
  EXPECT_EQ(line_at(text, 0),
            ">000002: D: BDATA[000001,000000512,0512]: Fixed Section of Data Header\n");
  EXPECT_EQ(text.substr(text.find(">           B1000")),
            ">           B1000[000002,000000512,0008]: Data Only SEED Blockette\n"
            ">        03e800000a010900" +
                blanks(48) +
                "\n"
                ">        format     = 10\n"
                ">        order      = 1\n"
                ">        dlenp      = 9\n");
}

TEST(ChainedBlockette, WithoutDefinitionHasNoFields) {
  BlockReader reader(data_record().blockette(1002, "abcd").b1000(10, 1, 9).bytes(512));
  const std::string text = listing(reader.decode_next(), 1);
  const std::size_t begin = text.find("           B1002");
  ASSERT_NE(begin, std::string::npos);
  EXPECT_EQ(text.substr(begin, text.find("           B1000") - begin),
            "           B1002[000001,000000000,0008]: UNDEFINED\n"
            "        03ea003861626364" +
                blanks(48) + "\n");
}

TEST(ChainedBlockette, BytesEndWithTheImage) {
  // A last blockette of 64 bytes, of which 8 are there.
  BlockReader reader(data_record().b1000(10, 1, 9).bytes(512).substr(0, 56));
  const std::string text = listing(reader.decode_next(), 1);
  EXPECT_NE(text.find("B1000[000001,000000000,0064]: Data Only SEED Blockette\n"
                      "        03e800000a010900" +
                      blanks(48) +
                      "\n"
                      "        format"),
            std::string::npos)
      << text;
}

TEST(ChainedBlockette, OfNegativeLengthHasNoBytes) {
  DataRecord record = data_record().b1000(10, 1, 9);
  record.forced_data_offset = 40;
  BlockReader reader(record.bytes(512));
  const std::string text = listing(reader.decode_next(), 1);
  EXPECT_NE(text.find("B1000[000001,000000000,-0008]: Data Only SEED Blockette\n        format"),
            std::string::npos)
      << text;
}

// ---- fields ----

TEST(FieldLine, NamesArePaddedTo10Columns) {
  Entries entries({field("n", SDBLK_INT), field("longer_than_ten", SDBLK_INT)});
  entries[0].value.i = -2;
  entries[1].value.i = 2147483647;
  EXPECT_EQ(entries.print("> "), "> n          = -2\n> longer_than_ten = 2147483647\n");
}

TEST(FieldLine, LookupCodeIsANumberOnly) {
  SDBlk other = header_block();
  Entries entries({field("uid", SDBLK_ABBR_KEY)});
  entries[0].value.i = 3;
  entries[0].ref = &other;
  EXPECT_EQ(entries.print(), "uid        = 3\n");
}

TEST(FieldLine, RealNumbersHaveSixDecimals) {
  EXPECT_EQ(printed_real(-8.25), "v          = -8.250000\n");
  EXPECT_EQ(printed_real(1e-7), "v          = 0.000000\n");
  EXPECT_EQ(printed_real(-0.0), "v          = -0.000000\n");
  EXPECT_EQ(printed_real(1e22), "v          = 10000000000000000000000.000000\n");
}

TEST(FieldLine, RealNumbersThatAreNone) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(printed_real(std::numeric_limits<double>::quiet_NaN()), "v          = nan\n");
  EXPECT_EQ(printed_real(kInfinity), "v          = inf\n");
  EXPECT_EQ(printed_real(-kInfinity), "v          = -inf\n");
}

TEST(FieldLine, TimesAreDates) {
  for (const char *format : {"TIME", "BTIME"}) {
    EXPECT_EQ(printed_real(946684800.5, format), "v          = 2000:001:00:00:00\n");
    EXPECT_EQ(printed_real(9999999999.999, format), "v          = NULL\n");
    EXPECT_EQ(printed_real(std::numeric_limits<double>::quiet_NaN(), format), "v          = NaN\n");
    EXPECT_EQ(printed_real(std::numeric_limits<double>::infinity(), format), "v          = Inf\n");
    EXPECT_EQ(printed_real(-1e300, format), "v          = -Inf\n");
  }
}

TEST(FieldLine, NoTimeIsANumberInOtherFields) {
  EXPECT_EQ(printed_real(9999999999.999, "FLOAT"), "v          = 9999999999.999001\n");
}

TEST(FieldLine, TextsStandAsTheyAre) {
  Entries entries({field("s", SDBLK_STRING), field("t", SDBLK_STRING)});
  std::string text = "a\x07 b\x7F";
  std::string empty;
  entries[0].value.s = text.data();
  entries[1].value.s = empty.data();
  EXPECT_EQ(entries.print(), "s          = a\x07 b\x7F\nt          = \n");
}

TEST(FieldLine, ElementsHaveTheirIndex) {
  std::array<std::int32_t, 2> integers = {4, -5};
  std::array<double, 1> reals = {0.5};
  std::vector<std::string> texts(8);
  for (int i = 0; i < 8; ++i)
    texts[static_cast<std::size_t>(i)] = std::string(1, static_cast<char>('a' + i));
  std::vector<char *> pointers;
  for (std::string &text : texts) pointers.push_back(text.data());
  Entries entries({field("ia", SDBLK_INT_ARRAY), field("da", SDBLK_DOUBLE_ARRAY),
                   field("keys", SDBLK_STRING_ARRAY)});
  entries[0].value.ia = integers.data();
  entries[0].count = 2;
  entries[1].value.da = reals.data();
  entries[2].value.sa = pointers.data();
  entries[2].count = 8;
  const std::string text = entries.print("> ");
  EXPECT_EQ(line_at(text, 0), "> ia[0000]   = 4\n");
  EXPECT_EQ(line_at(text, 1), "> ia[0001]   = -5\n");
  EXPECT_EQ(line_at(text, 2), "> da[0000]   = 0.500000\n");
  EXPECT_EQ(line_at(text, 10), "> keys[0007] = h\n");
  EXPECT_EQ(lines_of(text), 11U);
}

TEST(FieldLine, NullTextIsEmpty) {
  std::array<char *, 1> texts = {nullptr};
  Entries entries({field("text", SDBLK_STRING), field("sa", SDBLK_STRING_ARRAY)});
  entries[0].value.s = nullptr;
  entries[1].value.sa = texts.data();
  EXPECT_EQ(entries.print(), "text       = \nsa[0000]   = \n");
}

TEST(FieldLine, IndexOverFourDigitsTakesItsRoom) {
  std::vector<std::int32_t> integers(10001, 7);
  Entries entries({field("ia", SDBLK_INT_ARRAY)});
  entries[0].value.ia = integers.data();
  entries[0].count = 10001;
  const std::string text = entries.print();
  EXPECT_NE(text.find("\nia[9999]   = 7\nia[10000]  = 7\n"), std::string::npos);
}

// An entry of another definition is printed as that one says, under the name of the field.
TEST(FieldLine, KindIsThatOfTheEntrysDefinition) {
  const SDBlkFieldDef text = field("other", SDBLK_STRING);
  std::string value = "abc";
  Entries entries({field("v", SDBLK_INT)});
  entries[0].def = &text;
  entries[0].value.s = value.data();
  EXPECT_EQ(entries.print(), "v          = abc\n");
}

TEST(FieldLine, EmptyArraysHaveNoLine) {
  Entries entries({field("ia", SDBLK_INT_ARRAY), field("da", SDBLK_DOUBLE_ARRAY),
                   field("sa", SDBLK_STRING_ARRAY), field("ra", SDBLK_REF_ARRAY),
                   field("ea", SDBLK_GROUP_ARRAY)});
  for (std::size_t i = 0; i < 5; ++i) entries[i].count = 0;
  EXPECT_EQ(entries.print(), "");
}

TEST(FieldLine, OtherKindsHaveNoLine) {
  EXPECT_EQ(Entries({field("odd", -10), field("null", 0)}).print(), "");
}

TEST(FieldLine, MissingEntryIsUndefined) {
  const SDBlkFieldDef def = field("lat", SDBLK_DOUBLE);
  Arr *array = newarr();
  LogCapture log;
  sdblk_print_sblk(&array, 1, "> ", 1, &def);
  EXPECT_EQ(log.take(), "> lat        = UNDEFINED\n");
  freearr(array, nullptr);
}

TEST(FieldLine, MissingArrayIsUndefinedThroughout) {
  const SDBlkFieldDef def = field("lat", SDBLK_DOUBLE);
  const std::array<Arr *, 2> arrays = {nullptr, nullptr};
  LogCapture log;
  sdblk_print_sblk(arrays.data(), 2, "", 1, &def);
  EXPECT_EQ(log.take(), "[0000].lat        = UNDEFINED\n[0001].lat        = UNDEFINED\n");
}

// ---- groups ----

std::string group_lines(int repetitions) {
  ControlBlockette blockette(11);
  blockette.digits(repetitions, 3);
  for (int i = 0; i < repetitions; ++i) blockette.fixed("ST" + std::to_string(i), 5).digits(i, 6);
  BlockReader reader(one('V', blockette.raw(" ")));
  const std::string text = listing(reader.decode_next(), 1);
  const std::size_t begin = text.find("        nstas");
  return text.substr(begin);
}

TEST(GroupLines, OfNoRepetitionAreNone) { EXPECT_EQ(group_lines(0), "        nstas      = 0\n"); }

TEST(GroupLines, OfOneRepetitionHaveNoIndex) {
  EXPECT_EQ(group_lines(1),
            "        nstas      = 1\n"
            "        stassta        = ST0\n"
            "        staslseq       = 0\n");
}

TEST(GroupLines, OfThreeRepetitionsHaveTheirIndex) {
  EXPECT_EQ(group_lines(3),
            "        nstas      = 3\n"
            "        stas[0000].sta        = ST0\n"
            "        stas[0000].lseq       = 0\n"
            "        stas[0001].sta        = ST1\n"
            "        stas[0001].lseq       = 1\n"
            "        stas[0002].sta        = ST2\n"
            "        stas[0002].lseq       = 2\n");
}

TEST(GroupLines, IndexOverFourDigitsTakesItsRoom) {
  const SDBlkFieldDef def = field("n", SDBLK_INT);
  const std::vector<Arr *> arrays(10001, nullptr);
  LogCapture log;
  sdblk_print_sblk(arrays.data(), 10001, "", 1, &def);
  EXPECT_TRUE(
      log.take().ends_with("\n[9999].n          = UNDEFINED\n[10000].n          = UNDEFINED\n"));
}

// ---- references ----

TEST(References, AreListedWhereTheyStand) {
  VolumeWriter writer(512);
  writer.control('A', {ControlBlockette(34).raw("003").var("M/S").var("Velocity"),
                       ControlBlockette(31).raw("0007").raw("X").var("Gap").raw("003")});
  writer.control('S', ControlBlockette(51).var("2021,075").var("").raw("0007").raw("000002"));
  BlockReader reader(writer.bytes(), 512);
  reader.decode_next();
  reader.decode_next();
  EXPECT_EQ(
      listing(reader.decode_next(), 1),
      "000002: S: B0051[000002,000000520,0027]: Station Comment Blockette\n"
      "        05100272021,075~~0007000002" +
          blanks(37) +
          "\n"
          "        time       = 2021:075:00:00:00\n"
          "        endtime    = NULL\n"
          "        cid        = 7 ->\n"
          "        000001: A: B0031[000001,000000031,0019]: Comment Description Blockette\n"
          "                03100190007XGap~003" +
          blanks(45) +
          "\n"
          "                cid        = 7\n"
          "                class      = X\n"
          "                comment    = Gap\n"
          "                uid        = 3 ->\n"
          "                000001: A: B0034[000000,000000008,0023]: Units Abbreviation Blockette\n"
          "                        0340023003M/S~Velocity~" +
          blanks(41) +
          "\n"
          "                        uid        = 3\n"
          "                        name       = M/S\n"
          "                        descr      = Velocity\n"
          "        level      = 2\n");
}

TEST(References, OfAnArrayAreListedWithTheirIndex) {
  VolumeWriter writer(512);
  writer.control('A', ControlBlockette(33).raw("001").var("X"));
  writer.control('A', ControlBlockette(46).raw("0012").var("GEN"));
  writer.control(
      'S', ControlBlockette(60).raw("02").raw("01020012").raw("0099").raw("0201").raw("0012"));
  BlockReader reader(writer.bytes(), 512);
  reader.decode_next();
  reader.decode_next();
  const std::string text = listing(reader.decode_next(), 1);
  const std::string referenced =
      "000001: A: B0046[000001,000000020,0015]: Generic Response Dictionary Blockette\n";
  const std::string fields_of_referenced[] = {"rid        = 12",        "name       = GEN",
                                              "iunits     = UNDEFINED", "ounits     = UNDEFINED",
                                              "ncorners   = UNDEFINED", "corners    = UNDEFINED"};
  std::string expected =
      "        nstages    = 2\n"
      "        stages[0000].stage      = 1\n"
      "        stages[0000].nresps     = 2\n"
      "        stages[0000].resps[0000] = 12 ->\n"
      "        stages[0000]." +
      referenced + "        stages[0000].        04600150012GEN~" + blanks(49) + "\n";
  for (const std::string &line : fields_of_referenced) {
    expected += "        stages[0000].        " + line + "\n";
  }
  expected +=
      "        stages[0000].resps[0001] = 99\n"
      "        stages[0001].stage      = 2\n"
      "        stages[0001].nresps     = 1\n"
      "        stages[0001].resps[0000] = 12 ->\n"
      "        stages[0001]." +
      referenced + "        stages[0001].        04600150012GEN~" + blanks(49) + "\n";
  for (const std::string &line : fields_of_referenced) {
    expected += "        stages[0001].        " + line + "\n";
  }
  EXPECT_EQ(text.substr(text.find("        nstages")), expected);
}

// ---- buffers that are too small ----

// The last line that a call writes before it dies.
template <typename Call>
std::string fatal_text(Call call) {
  LogCapture log;
  const FatalHook hook;
  EXPECT_THROW(call(), Fatal);
  const std::string text = log.take();
  const std::size_t line = text.rfind('\n', text.size() - 2);
  return line == std::string::npos ? text : text.substr(line + 1);
}

TEST(LongPrefix, OfABlocksFieldsIsFatal) {
  BlockReader reader(one('S', ControlBlockette(50).fixed("DYNG", 5)));
  const SDBlk *block = reader.decode_next();
  const std::string fits(119, '>');
  const std::string does_not(120, '>');
  EXPECT_EQ(lines_of(listing(block, 1, fits.c_str())), 16U);
  EXPECT_EQ(fatal_text([&] { sdblk_printblk(block, does_not.c_str(), 1); }),
            "sdblk_printblk: text of 129 bytes does not fit the 128 byte buffer\n");
}

TEST(LongPrefix, DoesNotMatterAtLevelZero) {
  const SDBlk block = header_block();
  const std::string prefix(600, '>');
  EXPECT_EQ(listing(&block, 0, prefix.c_str()), prefix + "000012: S: B0050: UNDEFINED\n");
}

TEST(LongPrefix, OfOneRepetitionIsFatal) {
  const SDBlkFieldDef def = field("n", SDBLK_INT);
  Arr *nothing = nullptr;
  const std::string fits(511, '>');
  const std::string does_not(512, '>');
  LogCapture log;
  sdblk_print_sblk(&nothing, 1, fits.c_str(), 1, &def);
  EXPECT_EQ(log.take(), fits + "n          = UNDEFINED\n");
  EXPECT_EQ(fatal_text([&] { sdblk_print_sblk(&nothing, 1, does_not.c_str(), 1, &def); }),
            "sdblk_print_sblk: text of 513 bytes does not fit the 512 byte buffer\n");
}

TEST(Repetitions, AreNumberedBeyondFourDigits) {
  const SDBlkFieldDef def = field("n", SDBLK_INT);
  const std::vector<Arr *> arrays(10001, nullptr);
  LogCapture log;
  sdblk_print_sblk(arrays.data(), 10001, "> ", 1, &def);
  const std::string text = log.take();
  EXPECT_TRUE(
      text.starts_with("> [0000].n          = UNDEFINED\n> [0001].n          = UNDEFINED\n"));
  EXPECT_TRUE(
      text.ends_with("\n> [9999].n          = UNDEFINED\n> [10000].n          = UNDEFINED\n"));
}

TEST(LongPrefix, OfRepetitionsCountsItsIndex) {
  const SDBlkFieldDef def = field("n", SDBLK_INT);
  const std::array<Arr *, 2> arrays = {nullptr, nullptr};
  // "[0000]." takes 7 more.
  const std::string fits(504, '>');
  {
    LogCapture log;
    sdblk_print_sblk(arrays.data(), 2, fits.c_str(), 1, &def);
    EXPECT_EQ(lines_of(log.take()), 2U);
  }
  for (const std::size_t size : {505U, 508U, 600U}) {
    const std::string prefix(size, '>');
    EXPECT_EQ(fatal_text([&] { sdblk_print_sblk(arrays.data(), 2, prefix.c_str(), 1, &def); }),
              "sdblk_print_sblk: text of " + std::to_string(size + 8) +
                  " bytes does not fit the 512 byte buffer\n");
  }
}

// What stands after the buffer would be changed first: the sizes that the second element needs.
TEST(LongName, AfterTheLongestPrefixFits) {
  const std::string key(4089, 'k');
  const std::string prefix(511, '>');
  std::array<std::int32_t, 3> integers = {4, 5, 6};
  Entries entries({field(key.c_str(), SDBLK_INT_ARRAY)});
  entries[0].count = 3;
  entries[0].value.ia = integers.data();
  EXPECT_EQ(entries.print(prefix.c_str()), prefix + key + "[0000] = 4\n" + prefix + key +
                                               "[0001] = 5\n" + prefix + key + "[0002] = 6\n");
}

TEST(LongName, OfAnElementIsFatal) {
  std::array<std::int32_t, 1> integers = {4};
  for (const std::size_t size : {4089U, 4090U}) {
    const std::string key(size, 'k');
    Entries entries({field(key.c_str(), SDBLK_INT_ARRAY)});
    entries[0].value.ia = integers.data();
    if (size == 4089) {
      EXPECT_EQ(entries.print(), key + "[0000] = 4\n");
    } else {
      EXPECT_EQ(fatal_text([&] {
                  static_cast<void>(sdblk_print_sblk(std::array<Arr *, 1>{entries.array()}.data(),
                                                     1, "", 1, entries[0].def));
                }),
                "sdblk_print_sblk: text of 4097 bytes does not fit the 4096 byte buffer\n");
    }
  }
}

TEST(LongName, OfAGroupIsFatal) {
  const std::string key(4096, 'k');
  Entries entries({field(key.c_str(), SDBLK_GROUP_ARRAY)});
  entries[0].count = 0;
  Arr *array = entries.array();
  EXPECT_EQ(fatal_text([&] { sdblk_print_sblk(&array, 1, "", 1, entries[0].def); }),
            "sdblk_print_sblk: text of 4097 bytes does not fit the 4096 byte buffer\n");
}

TEST(LongPrefixDeathTest, EndsTheProgram) {
  sdblk_blkdefs_init();
  SDBlk block = header_block();
  block.blkdef = seed_blkdefs_index[50];
  const std::string prefix(200, '>');
  EXPECT_EXIT(sdblk_printblk(&block, prefix.c_str(), 1), ExitedWithCode(1),
              "sdblk_printblk: text of 209 bytes does not fit the 128 byte buffer");
}

// ---- lines to a callback ----

void collect_line(void *lines, const char *bytes, std::size_t size) {
  static_cast<std::vector<std::string> *>(lines)->emplace_back(bytes, size);
}

TEST(PrintBlockTo, CallbackGetsEachLine) {
  BlockReader reader(
      one('A', ControlBlockette(31).digits(7, 4).fixed("N", 1).var("Dull").digits(0, 3)));
  const SDBlk *block = reader.decode_next();
  const LogCapture log;
  std::vector<std::string> lines;
  EXPECT_EQ(sdblk_printblk_to(block, "> ", 0, collect_line, &lines), 0);
  EXPECT_EQ(lines, std::vector<std::string>{"> 000001: A: B0031[000000,000000008,0020]: Comment "
                                            "Description Blockette\n"});
  lines.clear();
  sdblk_printblk_to(block, "> ", 1, collect_line, &lines);
  std::string text;
  for (const std::string &line : lines) text += line;
  EXPECT_EQ(lines.size(), lines_of(text));
  EXPECT_EQ(log.text(), "");
  EXPECT_EQ(text, listing(block, 1, "> "));
}

TEST(PrintBlockTo, LogGoesOnAfterwards) {
  BlockReader reader(one('A', ControlBlockette(34).digits(1, 3).var("M").var("Metres")));
  const SDBlk *block = reader.decode_next();
  const LogCapture log;
  std::vector<std::string> lines;
  elog_notify(0, "before\n");
  sdblk_printblk_to(block, "", 0, collect_line, &lines);
  elog_notify(0, "after\n");
  EXPECT_EQ(lines.size(), 1U);
  EXPECT_EQ(log.text(), "before\nafter\n");
}

TEST(PrintBlockTo, FatalFaultIsToldToTheLog) {
  BlockReader reader(one('A', ControlBlockette(34).digits(1, 3).var("M").var("Metres")));
  const SDBlk *block = reader.decode_next();
  const LogCapture log;
  const FatalHook hook;
  std::vector<std::string> lines;
  const std::string prefix(120, 'p');  // with the blanks of a field more than its 128 bytes take
  EXPECT_THROW(sdblk_printblk_to(block, prefix.c_str(), 1, collect_line, &lines), Fatal);
  EXPECT_EQ(log.text(), "sdblk_printblk: text of 129 bytes does not fit the 128 byte buffer\n");
  elog_notify(0, "after\n");
  EXPECT_TRUE(log.text().ends_with("after\n"));
}

}  // namespace
