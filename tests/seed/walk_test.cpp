// The field walker.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "support/arena.h"
#include "tests/seed/walked.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

using testing::ExitedWithCode;
using volume::ControlBlockette;
using volume::VolumeWriter;

// ---- text and numbers ----

ControlBlockette station() {
  return ControlBlockette(50)
      .fixed("DYNG", 5)
      .raw("-08.250000")
      .raw("+115.500000")
      .raw("+0012.5")
      .digits(3, 4)
      .raw("   ")
      .var("  Dyn  gate ")
      .digits(1, 3)
      .digits(3210, 4)
      .digits(10, 2)
      .var("1999,001,12:30:15.5")
      .var("")
      .fixed("N", 1)
      .fixed("XX", 2);
}

TEST(ControlFields, StationIsDecodedByName) {
  BlockReader reader(one('S', station()));
  const Arr *contents = reader.decode_next()->contents;
  EXPECT_EQ(countarr(contents), 14);
  EXPECT_EQ(text_of(contents, "sta"), "DYNG");
  EXPECT_EQ(real_of(contents, "lat"), -8.25);
  EXPECT_EQ(real_of(contents, "lon"), 115.5);
  EXPECT_EQ(real_of(contents, "elev"), 12.5);
  EXPECT_EQ(integer_of(contents, "nchans"), 3);
  EXPECT_EQ(integer_of(contents, "int_order"), 3210);
  EXPECT_EQ(text_of(contents, "update"), "N");
  EXPECT_EQ(text_of(contents, "net"), "XX");
}

TEST(ControlFields, EveryScalarHasTheCountOne) {
  BlockReader reader(one('S', station()));
  const Arr *contents = reader.decode_next()->contents;
  for (const char *key : {"sta", "lat", "nchans", "time"}) {
    EXPECT_EQ(entry_of(contents, key).count, 1) << key;
    EXPECT_STREQ(entry_of(contents, key).def->key, key);
  }
}

TEST(ControlFields, BlankIntegerIsZero) {
  BlockReader reader(one('S', station()));
  EXPECT_EQ(integer_of(reader.decode_next()->contents, "ncomments"), 0);
}

TEST(ControlFields, VariableTextLosesOuterBlanksOnly) {
  BlockReader reader(one('S', station()));
  EXPECT_EQ(text_of(reader.decode_next()->contents, "name"), "Dyn  gate");
}

TEST(ControlFields, TimesAreEpochsAndEmptyOnesNone) {
  BlockReader reader(one('S', station()));
  const Arr *contents = reader.decode_next()->contents;
  // 1999-01-01 is 915148800; 12:30:15.5 is 45015.5 s.
  EXPECT_EQ(real_of(contents, "time"), 915193815.5);
  EXPECT_EQ(real_of(contents, "endtime"), SDBLK_NO_TIME);
}

TEST(ControlFields, TimeThatIsNoTimeDecodesWithoutError) {
  BlockReader reader(one('T', ControlBlockette(70).raw("E").var("soon").var("")));
  // Year 0, day 0: 719529 days before 1970.
  EXPECT_EQ(real_of(reader.decode_next()->contents, "time"), -719529.0 * 86400.0);
}

TEST(ControlFields, ShiftedIntegerIsRead) {
  BlockReader reader(one('S', ControlBlockette(53).raw("A").raw(" 1").raw("  3").raw("4  ")));
  const Arr *contents = reader.decode_next()->contents;
  EXPECT_EQ(integer_of(contents, "stage"), 1);
  EXPECT_EQ(integer_of(contents, "iunits"), 3);
  EXPECT_EQ(integer_of(contents, "ounits"), 4);
}

TEST(ControlFields, NumbersOfAGroupAreReadInAnyForm) {
  const ControlBlockette blockette = ControlBlockette(53)
                                         .raw("A01003004")
                                         .real(1)
                                         .real(1)
                                         .digits(3, 3)
                                         .raw(" 1.00000E+00-2.00000E+00 3.00000E-01 4.00000E+00")
                                         .raw(" 5.00000E+00        -6.5 7.00000e+00            ")
                                         .raw("+8.00000E+00 9.00000E+00           1 2.00000E+00")
                                         .digits(0, 3);
  BlockReader reader(one('S', blockette));
  const Arr *contents = reader.decode_next()->contents;
  const std::array<std::array<double, 4>, 3> expected = {
      {{1.0, -2.0, 0.3, 4.0}, {5.0, -6.5, 7.0, 0.0}, {8.0, 9.0, 1.0, 2.0}}};
  for (std::int32_t i = 0; i < 3; ++i) {
    const Arr *zero = repetition_of(contents, "zeros", i);
    const std::array<double, 4> values = {real_of(zero, "real"), real_of(zero, "imag"),
                                          real_of(zero, "real_err"), real_of(zero, "imag_err")};
    EXPECT_EQ(values, expected[static_cast<std::size_t>(i)]) << i;
    EXPECT_EQ(countarr(zero), 4) << i;
  }
  EXPECT_EQ(integer_of(contents, "npoles"), 0);
}

TEST(ControlFields, IntegerCutByTheBlockettesEndReadsWhatIsThere) {
  BlockReader reader(one('A', ControlBlockette(33).raw("12")));
  EXPECT_EQ(integer_of(reader.decode_next()->contents, "gid"), 12);
}

TEST(ControlFields, RealNumberWithTrailingLettersIsRead) {
  BlockReader reader(one('S', ControlBlockette(50).fixed("DYNG", 5).raw("12.5 north")));
  EXPECT_EQ(real_of(reader.decode_next()->contents, "lat"), 12.5);
}

// ---- non-digits ----

void decode_first(const std::string &bytes) {
  BlockReader reader(bytes);
  sdblk_unstuffblk(reader.next());
}

TEST(NondigitsDeathTest, LetterInAnIntegerEndsTheProgram) {
  EXPECT_EXIT(decode_first(one('S', channel_with_subchannel("12a4"))), ExitedWithCode(1),
              "SEEDERROR - Non-digit characters in integer field B0052:subchan = '12a4' - program "
              "exiting\\.");
}

TEST(NondigitsDeathTest, LetterInALookupCodeEndsTheProgram) {
  EXPECT_EXIT(decode_first(one('A', ControlBlockette(34).raw("3 x").var("M"))), ExitedWithCode(1),
              "integer field B0034:uid = '3 x' - program exiting\\.");
}

// The fatal text of decoding the first block.
std::string fatal_text(BlockReader &reader) {
  LogCapture log;
  const FatalHook hook;
  SDBlk *block = reader.next();
  EXPECT_THROW(sdblk_unstuffblk(block), Fatal);
  return log.take();
}

TEST(Nondigits, AreCountedInTheVolume) {
  BlockReader reader(one('S', channel_with_subchannel("a-b4")));
  EXPECT_EQ(fatal_text(reader),
            "SEEDERROR - Non-digit characters in integer field B0052:subchan = 'a-b4' - program "
            "exiting.\n");
  EXPECT_EQ(reader.vol()->nondigits, 3);
}

TEST(Nondigits, ASignIsOneToo) {
  BlockReader reader(one('S', channel_with_subchannel("  -4")));
  EXPECT_EQ(fatal_text(reader),
            "SEEDERROR - Non-digit characters in integer field B0052:subchan = '-4' - program "
            "exiting.\n");
}

TEST(Nondigits, DigitsAndBlanksCountNothing) {
  BlockReader reader(one('S', channel_with_subchannel(" 42 ")));
  EXPECT_EQ(integer_of(reader.decode_next()->contents, "subchan"), 42);
  EXPECT_EQ(reader.vol()->nondigits, 0);
}

TEST(Nondigits, InAnIntegerArrayAreFatalToo) {
  Walk walk("202x3", {field("n", 'D', 1, "#", SDBLK_INT),
                      counted(field("list", 'D', 2, "##", SDBLK_INT_ARRAY), "n")});
  LogCapture log;
  const FatalHook hook;
  EXPECT_THROW(walk.run(), Fatal);
  // No block was cut before.
  EXPECT_EQ(log.take(),
            "SEEDERROR - Non-digit characters in integer field B0000:list = 'x3' - program "
            "exiting.\n");
}

// ---- fields that cannot be read ----

TEST(ScanFailure, RealNumberIsReportedWithItsBytes) {
  BlockReader reader(
      one('S', ControlBlockette(50).raw("DYNG ").raw("north     ").raw("+115.500000")));
  SDBlk *block = reader.next();
  LogCapture log;
  EXPECT_EQ(sdblk_unstuffblk(block), -1);
  // The dump: 26 characters after eight blanks, filled up to 64.
  EXPECT_EQ(log.take(), "        DYNG north     +115.500000" + std::string(38, ' ') + "\n");
  EXPECT_EQ(log.registered(),
            "scan_double: Failed double input: 'north'\n"
            "sdblk_unstuff_sblk: scan_double(north) error.\n"
            "sdblk_unstuffblk: sdblk_unstuff_blk error for B0050 at S:000001\n");
}

TEST(ScanFailure, FieldsBeforeItStay) {
  BlockReader reader(
      one('S', ControlBlockette(50).raw("DYNG ").raw("north     ").raw("+115.500000")));
  SDBlk *block = reader.next();
  const LogCapture log;
  EXPECT_EQ(sdblk_unstuffblk(block), -1);
  EXPECT_EQ(countarr(block->contents), 1);
  EXPECT_EQ(text_of(block->contents, "sta"), "DYNG");
}

TEST(ScanFailure, InAGroupTheDumpStartsWithTheGroup) {
  const ControlBlockette poles = ControlBlockette(53)
                                     .raw("A01003004")
                                     .real(1)
                                     .real(1)
                                     .digits(2, 3)
                                     .real(2)
                                     .raw("imaginary   ");
  BlockReader reader(one('S', poles));
  SDBlk *block = reader.next();
  LogCapture log;
  EXPECT_EQ(sdblk_unstuffblk(block), -1);
  EXPECT_EQ(log.take(), "         2.00000E+00imaginary   " + std::string(40, ' ') + "\n");
}

TEST(ScanFailure, IntegerIsReportedWithItsBytes) {
  Walk walk("wx", {field("n", 'A', 2, "", SDBLK_INT)});
  LogCapture log;
  EXPECT_EQ(walk.run(), -1);
  EXPECT_EQ(log.take(), "        wx" + std::string(62, ' ') + "\n");
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'wx'\n"
            "sdblk_unstuff_sblk: scan_int(wx) error.\n");
}

TEST(ScanFailure, LookupCodeIsReportedWithItsBytes) {
  Walk walk("wx", {field("uid", 'A', 2, "", SDBLK_ABBR_KEY)});
  LogCapture log;
  EXPECT_EQ(walk.run(), -1);
  EXPECT_EQ(log.take(), "        wx" + std::string(62, ' ') + "\n");
  EXPECT_EQ(log.registered(),
            "scan_int: Failed integer input: 'wx'\n"
            "sdblk_unstuff_sblk: scan_int(wx) error.\n");
  EXPECT_EQ(countarr(walk.vol()->abbrs), 0);
}

TEST(ScanFailure, ElementsAreReportedWithoutTheirBytes) {
  struct Case {
    std::int32_t kind;
    const char *messages;
  };
  constexpr const char *kInteger =
      "scan_int: Failed integer input: 'wx'\nsdblk_unstuff_sblk: scan_int(wx) error.\n";
  constexpr const char *kReal =
      "scan_double: Failed double input: 'wx'\nsdblk_unstuff_sblk: scan_double(wx) error.\n";
  for (const Case &c : {Case{SDBLK_INT_ARRAY, kInteger}, Case{SDBLK_REF_ARRAY, kInteger},
                        Case{SDBLK_DOUBLE_ARRAY, kReal}}) {
    Walk walk("211wx", {field("n", 'D', 1, "#", SDBLK_INT),
                        counted(field("list", 'A', 2, "", c.kind), "n")});
    LogCapture log;
    EXPECT_EQ(walk.run(), -1);
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(log.registered(), c.messages);
    EXPECT_EQ(countarr(walk.array()), 1) << "the array itself is not kept";
  }
}

TEST(ScanFailure, ReferenceWithTrailingLettersIsRead) {
  BlockReader reader(one('S', ControlBlockette(60).raw("01").raw("0101").raw("1x23")));
  const Arr *stage = repetition_of(reader.decode_next()->contents, "stages", 0);
  EXPECT_EQ(entry_of(stage, "resps").value.ra[0].code, 1);
}

// ---- texts that are too long ----

TEST(LongText, OfTheBuffersSizeLessOneFits) {
  BlockReader reader(one('A', ControlBlockette(33).raw("001").var(std::string(4095, 'x')), 8192));
  EXPECT_EQ(text_of(reader.decode_next()->contents, "descr"), std::string(4095, 'x'));
}

TEST(LongText, OfTheBuffersSizeIsFatal) {
  BlockReader reader(one('A', ControlBlockette(33).raw("001").var(std::string(4096, 'x')), 8192));
  EXPECT_EQ(fatal_text(reader),
            "sdblk_unstuff_sblk: text of 4097 bytes does not fit the 4096 byte buffer\n");
}

TEST(LongText, NumberOfMoreThan80CharactersIsFatal) {
  const std::string digits(81, '0');
  LogCapture log;
  const FatalHook hook;
  EXPECT_THROW(Walk(digits, {field("n", 'D', 81, "", SDBLK_INT)}).run(), Fatal);
  EXPECT_EQ(log.take(), "scan_int: text of 82 bytes does not fit the 80 byte buffer\n");
  EXPECT_THROW(Walk(digits, {field("r", 'F', 81, "", SDBLK_DOUBLE)}).run(), Fatal);
  EXPECT_EQ(log.take(), "scan_double: text of 82 bytes does not fit the 80 byte buffer\n");
}

TEST(LongText, BlanksAroundItDoNotCount) {
  const std::string blanks(3000, ' ');
  BlockReader reader(one('A', ControlBlockette(33).raw("001").var(blanks + "x" + blanks), 8192));
  EXPECT_EQ(text_of(reader.decode_next()->contents, "descr"), "x");
}

TEST(LongTextDeathTest, EndsTheProgram) {
  EXPECT_EXIT(
      decode_first(one('A', ControlBlockette(33).raw("001").var(std::string(5000, 'x')), 8192)),
      ExitedWithCode(1),
      "sdblk_unstuff_sblk: text of 5001 bytes does not fit the 4096 byte buffer");
}

TEST(LongText, ReferenceKeyIsBounded) {
  // "k...k:7" of 127 characters fits, of 128 does not.
  for (const std::size_t size : {125U, 126U}) {
    const std::string key(size, 'k');
    Walk walk("7", {referring(field("n", 'D', 1, "#", SDBLK_INT), key.c_str())});
    LogCapture log;
    const FatalHook hook;
    if (size == 125) {
      EXPECT_EQ(walk.run(), 0);
      continue;
    }
    EXPECT_THROW(walk.run(), Fatal);
    EXPECT_EQ(log.take(),
              "sdblk_unstuff_sblk: text of 129 bytes does not fit the 128 byte buffer\n");
  }
}

// ---- data that ends early ----

struct Piece {
  const char *key;
  std::string text;
};

void expect_keys_up_to_each_boundary(int type, char record_type, const std::vector<Piece> &pieces) {
  for (std::size_t present = 0; present <= pieces.size(); ++present) {
    ControlBlockette blockette(type);
    for (std::size_t i = 0; i < present; ++i) blockette.raw(pieces[i].text);
    BlockReader reader(one(record_type, blockette));
    const Arr *contents = reader.decode_next()->contents;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      EXPECT_EQ(getarr(contents, pieces[i].key) != nullptr, i < present)
          << "B" << type << " of " << present << " fields: " << pieces[i].key;
    }
  }
}

TEST(ShortBlockette, FieldsAfterItsEndAreAbsent) {
  expect_keys_up_to_each_boundary(50, 'S',
                                  {{"sta", "DYNG "},
                                   {"lat", "-08.250000"},
                                   {"lon", "+115.500000"},
                                   {"elev", "+0012.5"},
                                   {"nchans", "0003"},
                                   {"ncomments", "000"},
                                   {"name", "Gate~"},
                                   {"net_gid", "001"},
                                   {"int_order", "3210"},
                                   {"short_order", "10"},
                                   {"time", "2021,075~"},
                                   {"endtime", "~"},
                                   {"update", "N"},
                                   {"net", "XX"}});
  expect_keys_up_to_each_boundary(53, 'S',
                                  {{"resp", "A"},
                                   {"stage", "01"},
                                   {"iunits", "003"},
                                   {"ounits", "004"},
                                   {"norm", " 1.00000E+00"},
                                   {"fnorm", " 1.00000E+00"},
                                   {"nzeros", "001"},
                                   {"zeros", std::string(48, '0')},
                                   {"npoles", "000"}});
  expect_keys_up_to_each_boundary(30, 'A',
                                  {{"name", "Steim~"},
                                   {"did", "0001"},
                                   {"family", "050"},
                                   {"nkeys", "02"},
                                   {"keys", "F1~F2~"}});
}

TEST(ShortBlockette, MissingFieldIsNotDefined) {
  BlockReader reader(one('S', ControlBlockette(50).raw("DYNG ")));
  const SDBlk *block = reader.decode_next();
  const LogCapture log;
  double lat = 0;
  EXPECT_EQ(sdblk_getv(block->contents, "lat", &lat, nullptr), -1);
  EXPECT_EQ(registered(), "sdblk_getv: entry 'lat' not defined.\n");
}

TEST(ShortBlockette, RepetitionsAfterItsEndAreNull) {
  const ControlBlockette blockette = ControlBlockette(53)
                                         .raw("A01003004")
                                         .real(1)
                                         .real(1)
                                         .digits(3, 3)
                                         .real(1)
                                         .real(2)
                                         .real(3)
                                         .real(4)
                                         .real(5)
                                         .real(6);
  BlockReader reader(one('S', blockette));
  const Arr *contents = reader.decode_next()->contents;
  EXPECT_EQ(entry_of(contents, "zeros").count, 3);
  EXPECT_EQ(countarr(repetition_of(contents, "zeros", 0)), 4);
  EXPECT_EQ(countarr(repetition_of(contents, "zeros", 1)), 2);
  EXPECT_EQ(real_of(repetition_of(contents, "zeros", 1), "imag"), 6.0);
  EXPECT_EQ(repetition_of(contents, "zeros", 2), nullptr);
}

TEST(ShortBlockette, ElementsAfterItsEndAreEmpty) {
  BlockReader texts(one('A', ControlBlockette(30).var("Steim").raw("000105003").var("F1")));
  const SDBlkEntry &keys = entry_of(texts.decode_next()->contents, "keys");
  ASSERT_EQ(keys.count, 3);
  EXPECT_STREQ(keys.value.sa[0], "F1");
  EXPECT_STREQ(keys.value.sa[1], "");
  EXPECT_STREQ(keys.value.sa[2], "");

  BlockReader reals(one(
      'S', ControlBlockette(61).raw("01").var("F").raw("A0030030002").real(2, volume::kReal14)));
  const SDBlkEntry &coefs = entry_of(reals.decode_next()->contents, "coefs");
  ASSERT_EQ(coefs.count, 2);
  EXPECT_EQ(coefs.value.da[0], 2.0);
  EXPECT_EQ(coefs.value.da[1], 0.0);

  BlockReader codes(one('S', ControlBlockette(60).raw("01").raw("0102").raw("0005")));
  const SDBlkEntry &resps =
      entry_of(repetition_of(codes.decode_next()->contents, "stages", 0), "resps");
  ASSERT_EQ(resps.count, 2);
  EXPECT_EQ(resps.value.ra[0].code, 5);
  EXPECT_EQ(resps.value.ra[1].code, 0);
  EXPECT_EQ(resps.value.ra[1].blk, nullptr);
}

TEST(ShortBlockette, HugeCountCostsOnlyItsPointers) {
  BlockReader reader(one('S', ControlBlockette(55).raw("01003004").raw("9999").real(1)));
  const Arr *contents = reader.decode_next()->contents;
  EXPECT_EQ(entry_of(contents, "faps").count, 9999);
  EXPECT_EQ(countarr(repetition_of(contents, "faps", 0)), 1);
  for (std::int32_t i = 1; i < 9999; ++i) {
    ASSERT_EQ(repetition_of(contents, "faps", i), nullptr) << i;
  }
}

// ---- repeated groups ----

TEST(Group, IsAsLongAsItsCount) {
  for (int count = 0; count <= 3; ++count) {
    ControlBlockette blockette(11);
    blockette.digits(count, 3);
    for (int i = 0; i < count; ++i) blockette.fixed("ST" + std::to_string(i), 5).digits(10 + i, 6);
    BlockReader reader(one('V', blockette.raw(" ")));
    const Arr *contents = reader.decode_next()->contents;
    ASSERT_EQ(entry_of(contents, "stas").count, count);
    ASSERT_NE(entry_of(contents, "stas").value.ea, nullptr);
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(text_of(repetition_of(contents, "stas", i), "sta"), "ST" + std::to_string(i));
      EXPECT_EQ(integer_of(repetition_of(contents, "stas", i), "lseq"), 10 + i);
    }
  }
}

TEST(Group, OfNoRepetitionsTakesNothing) {
  BlockReader reader(
      one('S', ControlBlockette(53).raw("A01003004").real(1).real(1).raw("000").raw("007")));
  EXPECT_EQ(integer_of(reader.decode_next()->contents, "npoles"), 7);
}

TEST(Group, HoldsAGroupOfReferences) {
  VolumeWriter writer(4096);
  writer.control('A', ControlBlockette(47).raw("0012").var("DEC"));
  writer.control('S', ControlBlockette(60).raw("02").raw("01020012").raw("0099").raw("0200"));
  BlockReader reader(writer.bytes());
  reader.decode_next();
  const Arr *contents = reader.decode_next()->contents;
  const Arr *first = repetition_of(contents, "stages", 0);
  EXPECT_EQ(integer_of(first, "nresps"), 2);
  const SDBlkEntry &resps = entry_of(first, "resps");
  ASSERT_EQ(resps.count, 2);
  EXPECT_EQ(resps.value.ra[0].code, 12);
  EXPECT_EQ(resps.value.ra[0].blk, abbreviation(reader, "rid:12"));
  EXPECT_NE(resps.value.ra[0].blk, nullptr);
  EXPECT_EQ(resps.value.ra[1].code, 99);
  EXPECT_EQ(resps.value.ra[1].blk, nullptr);
  const Arr *second = repetition_of(contents, "stages", 1);
  EXPECT_EQ(integer_of(second, "stage"), 2);
  EXPECT_EQ(integer_of(second, "nresps"), 0);
  EXPECT_EQ(getarr(second, "resps"), nullptr) << "the blockette ends before it";
}

TEST(Group, ThatNamesAMissingCountFails) {
  struct Case {
    char record_type;
    ControlBlockette blockette;
    std::string message;
  };
  const std::string start = "sdblk_unstuff_sblk: Cannot find number_entry, ";
  const std::vector<Case> cases = {
      {'A', ControlBlockette(46).raw("0001").var("X").raw("0030040000 "),
       start + "'nfaps', for entry 'corners'.\n"},
      {'A', ControlBlockette(48).raw("0001").var("X").real(1).real(1).raw("00 "),
       start + "'ndens', for entry 'histories'.\n"},
      {'S', ControlBlockette(56).raw("010030040001").real(1).real(1),
       start + "'nfaps', for entry 'corners'.\n"},
      {'S', ControlBlockette(58).raw("01").real(1).real(1).raw("00 "),
       start + "'ndens', for entry 'histories'.\n"},
      {'T', ControlBlockette(73).raw("0000 "), start + "'ndata', for entry 'segs'.\n"},
  };
  for (const Case &c : cases) {
    BlockReader reader(one(c.record_type, c.blockette));
    const LogCapture log;
    SDBlk *block = reader.next();
    EXPECT_EQ(sdblk_unstuffblk(block), -1);
    EXPECT_EQ(registered().substr(0, c.message.size()), c.message);
    EXPECT_EQ(countarr(block->contents), block->blkdef->nfields - 1) << "all but the group";
  }
}

TEST(Group, ThatNamesAMissingCountIsNotReachedByAShortBlockette) {
  BlockReader reader(one('S', ControlBlockette(58).raw("01").real(1).real(1).raw("00")));
  EXPECT_EQ(sdblk_unstuffblk(reader.next()), 0);
}

TEST(Group, CountMustStandInTheSameArray) {
  const std::array<SDBlkFieldDef, 1> inner = {
      counted(field("list", 'D', 1, "#", SDBLK_INT_ARRAY), "n")};
  Walk walk("123", {field("n", 'D', 1, "#", SDBLK_INT), group("outer", "n", inner)});
  const LogCapture log;
  EXPECT_EQ(walk.run(), -1);
  EXPECT_EQ(registered(), "sdblk_unstuff_sblk: Cannot find number_entry, 'n', for entry 'list'.\n");
}

// ---- the walker by itself ----

TEST(Walker, BinaryIntegersHaveTheirSign) {
  EXPECT_EQ(walked_integer("\xFE", "BYTE", 1, true), -2);
  EXPECT_EQ(walked_integer("\xFE", "UBYTE", 1, true), 254);
  EXPECT_EQ(walked_integer("\xFF\xFE", "WORD", 2, true), -2);
  EXPECT_EQ(walked_integer("\xFF\xFE", "UWORD", 2, true), 65534);
  EXPECT_EQ(walked_integer("\xFF\xFF\xFF\xFE", "LONG", 4, true), -2);
  EXPECT_EQ(walked_integer("\xFF\xFF\xFF\xFE", "ULONG", 4, true), -2) << "the same 32 bits";
}

TEST(Walker, BinaryIntegersFollowTheByteOrder) {
  EXPECT_EQ(walked_integer("\x01\x02", "WORD", 2, true), 0x0102);
  EXPECT_EQ(walked_integer("\x01\x02", "WORD", 2, false), 0x0201);
  EXPECT_EQ(walked_integer("\x01\x02", "UWORD", 2, true), 0x0102);
  EXPECT_EQ(walked_integer("\x01\x02", "UWORD", 2, false), 0x0201);
  EXPECT_EQ(walked_integer("\x01\x02\x03\x04", "LONG", 4, true), 0x01020304);
  EXPECT_EQ(walked_integer("\x01\x02\x03\x04", "LONG", 4, false), 0x04030201);
  EXPECT_EQ(walked_integer("\x01\x02\x03\x04", "ULONG", 4, true), 0x01020304);
  EXPECT_EQ(walked_integer("\x01\x02\x03\x04", "ULONG", 4, false), 0x04030201);
}

TEST(Walker, MissingBytesOfABinaryIntegerAreZero) {
  EXPECT_EQ(walked_integer("\x01", "UWORD", 2, true), 0x0100);
  EXPECT_EQ(walked_integer("\x01", "UWORD", 2, false), 0x0001);
  EXPECT_EQ(walked_integer("\x01\x02\x03", "LONG", 4, true), 0x01020300);
  EXPECT_EQ(walked_integer("\x01\x02\x03", "LONG", 4, false), 0x00030201);
}

TEST(Walker, BinaryTimeIsAnEpoch) {
  const SDBlkFieldDef time = field("time", 'B', 10, "BTIME", SDBLK_DOUBLE);
  // 2000, day 1, 00:00:00.5000; the unused byte does not count.
  EXPECT_EQ(walked_real({"\x07\xD0\x00\x01\x00\x00\x00\x63\x13\x88", 10}, time), 946684800.5);
  EXPECT_EQ(walked_real({"\xD0\x07\x01\x00\x00\x00\x00\x63\x88\x13", 10}, time, false),
            946684800.5);
  // 2000, day 2, 01:02:03: 86400 + 3723 s later.
  EXPECT_EQ(walked_real({"\x07\xD0\x00\x02\x01\x02\x03\x00\x00\x00", 10}, time), 946774923.0);
  // Cut after the hour: 2000, day 1, 01:00:00.
  EXPECT_EQ(walked_real({"\x07\xD0\x00\x01\x01", 5}, time), 946688400.0);
}

TEST(Walker, FloatIsWidened) {
  const SDBlkFieldDef value = field("v", 'B', 4, "FLOAT", SDBLK_DOUBLE);
  EXPECT_EQ(walked_real({"\x3F\xC0\x00\x00", 4}, value), 1.5);
  EXPECT_EQ(walked_real({"\x00\x00\xC0\x3F", 4}, value, false), 1.5);
  EXPECT_EQ(walked_real({"\x3F\xC0", 2}, value), 1.5) << "missing bytes are zero";
}

TEST(Walker, OtherFormatsOfARealNumberAreDecimalText) {
  EXPECT_EQ(walked_real("1.5E+02", field("v", 'F', 7, "-#.#", SDBLK_DOUBLE)), 150.0);
  EXPECT_EQ(walked_real("   ", field("v", 'F', 3, "", SDBLK_DOUBLE)), 0.0);
}

TEST(Walker, EmptyTimeTextIsNoTime) {
  EXPECT_EQ(walked_real("~", field("t", 'V', 22, "TIME", SDBLK_DOUBLE)), SDBLK_NO_TIME);
}

TEST(Walker, ArraysHoldTheirElements) {
  Walk walk(
      "2"
      "0107"
      "1.52.5"
      "ab~c~",
      {field("n", 'D', 1, "#", SDBLK_INT), counted(field("ia", 'D', 2, "##", SDBLK_INT_ARRAY), "n"),
       counted(field("da", 'F', 3, "", SDBLK_DOUBLE_ARRAY), "n"),
       counted(field("sa", 'V', 0, "", SDBLK_STRING_ARRAY), "n")});
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(walk.remaining(), 0);
  EXPECT_EQ(entry_of(walk.array(), "ia").count, 2);
  EXPECT_EQ(entry_of(walk.array(), "ia").value.ia[0], 1);
  EXPECT_EQ(entry_of(walk.array(), "ia").value.ia[1], 7);
  EXPECT_EQ(entry_of(walk.array(), "da").value.da[0], 1.5);
  EXPECT_EQ(entry_of(walk.array(), "da").value.da[1], 2.5);
  EXPECT_STREQ(entry_of(walk.array(), "sa").value.sa[0], "ab");
  EXPECT_STREQ(entry_of(walk.array(), "sa").value.sa[1], "c");
}

TEST(Walker, ReferencesWithoutAKeyPointNowhere) {
  Walk walk("25", {field("n", 'D', 1, "#", SDBLK_INT),
                   counted(field("ra", 'D', 1, "#", SDBLK_REF_ARRAY), "n")});
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(entry_of(walk.array(), "ra").value.ra[0].code, 5);
  EXPECT_EQ(entry_of(walk.array(), "ra").value.ra[0].blk, nullptr);
}

TEST(Walker, AnotherKindTakesNothing) {
  Walk walk("7", {field("odd", 'D', 1, "#", -10), field("n", 'D', 1, "#", SDBLK_INT)});
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(entry_of(walk.array(), "odd").count, 0);
  EXPECT_EQ(integer_of(walk.array(), "n"), 7);
}

TEST(Walker, AnotherStorageTypeTakesNothing) {
  Walk walk("7", {field("odd", 'X', 1, "", SDBLK_STRING), field("n", 'D', 1, "#", SDBLK_INT)});
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(text_of(walk.array(), "odd"), "");
  EXPECT_EQ(integer_of(walk.array(), "n"), 7);
}

TEST(Walker, LaterFieldOfTheSameKeyReplacesTheEarlier) {
  Walk walk("ab", {field("s", 'A', 1, "", SDBLK_STRING), field("s", 'A', 1, "", SDBLK_STRING)});
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(countarr(walk.array()), 1);
  EXPECT_EQ(text_of(walk.array(), "s"), "b");
}

TEST(Walker, CursorAndCountMoveTogether) {
  Walk walk("ab rest", {field("s", 'A', 3, "", SDBLK_STRING)});
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(walk.consumed(), 3);
  EXPECT_EQ(walk.remaining(), 4);
}

TEST(Walker, WithoutBytesNothingIsMade) {
  Walk walk("", {field("s", 'A', 3, "", SDBLK_STRING)});
  EXPECT_EQ(walk.run(), 0);
  EXPECT_EQ(walk.array(), nullptr);
}

TEST(Walker, NegativeCountIsAFailure) {
  Walk walk("-17", {field("n", 'D', 2, "", SDBLK_INT),
                    counted(field("list", 'D', 1, "#", SDBLK_INT_ARRAY), "n")});
  const LogCapture log;
  EXPECT_EQ(walk.run(), -1);
  EXPECT_TRUE(registered().starts_with("sdblk_unstuff_sblk: malloc(entry->ia=list,-4) error.\n"));
}

TEST(Walker, EveryArrayNeedsItsCount) {
  for (const std::int32_t kind :
       {SDBLK_INT_ARRAY, SDBLK_DOUBLE_ARRAY, SDBLK_STRING_ARRAY, SDBLK_REF_ARRAY}) {
    Walk walk("12", {counted(field("list", 'A', 1, "", kind), "n")});
    EXPECT_EQ(walk.run(), -1);
    EXPECT_EQ(registered(),
              "sdblk_unstuff_sblk: Cannot find number_entry, 'n', for entry 'list'.\n");
  }
}

TEST(Walker, ArrayThatNamesNoCountFails) {
  Walk walk("12", {field("list", 'D', 1, "#", SDBLK_INT_ARRAY)});
  EXPECT_EQ(walk.run(), -1);
  EXPECT_EQ(registered(), "sdblk_unstuff_sblk: Cannot find number_entry, '', for entry 'list'.\n");
}

TEST(Walker, NegativeCountOfEveryArrayIsAFailure) {
  for (const std::int32_t kind :
       {SDBLK_DOUBLE_ARRAY, SDBLK_STRING_ARRAY, SDBLK_REF_ARRAY, SDBLK_GROUP_ARRAY}) {
    Walk walk("-11",
              {field("n", 'A', 2, "", SDBLK_INT), counted(field("list", 'A', 1, "", kind), "n")});
    EXPECT_EQ(walk.run(), -1);
    EXPECT_EQ(registered().rfind("sdblk_unstuff_sblk: malloc(entry->", 0), 0U);
  }
}

TEST(Walker, CountOfZeroGivesAnEmptyArray) {
  Walk walk("01", {field("n", 'D', 1, "#", SDBLK_INT),
                   counted(field("da", 'F', 1, "", SDBLK_DOUBLE_ARRAY), "n"),
                   field("next", 'D', 1, "#", SDBLK_INT)});
  EXPECT_EQ(walk.run(), 0);
  EXPECT_EQ(entry_of(walk.array(), "da").count, 0);
  EXPECT_EQ(integer_of(walk.array(), "next"), 1);
}

TEST(Walker, WithoutFieldsNothingIsMade) {
  Walk walk("12", {});
  EXPECT_EQ(walk.run(), 0);
  EXPECT_EQ(walk.array(), nullptr);
  EXPECT_EQ(walk.remaining(), 2);
}

TEST(Walker, FieldWithoutWidthIsEmpty) {
  Walk walk("12", {field("fixed", 'A', 0, "", SDBLK_STRING), field("raw", 'B', 0, "", SDBLK_STRING),
                   field("n", 'D', 2, "##", SDBLK_INT)});
  EXPECT_EQ(walk.run(), 0);
  EXPECT_EQ(text_of(walk.array(), "fixed"), "");
  EXPECT_EQ(text_of(walk.array(), "raw"), "");
  EXPECT_EQ(integer_of(walk.array(), "n"), 12);
}

TEST(Walker, BinaryTextEndsAtAZeroByte) {
  Walk walk({"ab\0c1", 5},
            {field("raw", 'B', 4, "", SDBLK_STRING), field("n", 'D', 1, "#", SDBLK_INT)});
  EXPECT_EQ(walk.run(), 0);
  EXPECT_EQ(text_of(walk.array(), "raw"), "ab");
  EXPECT_EQ(integer_of(walk.array(), "n"), 1);
}

TEST(Walker, ManyFieldsKeepTheirKeys) {
  // More keys than an array holds without its index.
  std::vector<std::string> keys;
  for (int i = 0; i < 100; ++i) keys.push_back("k" + std::to_string(i));
  std::vector<SDBlkFieldDef> fields;
  for (const std::string &key : keys) fields.push_back(field(key.c_str(), 'D', 2, "##", SDBLK_INT));
  std::string bytes;
  for (int i = 0; i < 100; ++i)
    bytes += {static_cast<char>('0' + i / 10), static_cast<char>('0' + i % 10)};
  Walk walk(bytes, fields);
  ASSERT_EQ(walk.run(), 0);
  EXPECT_EQ(countarr(walk.array()), 100);
  for (int i = 0; i < 100; ++i)
    EXPECT_EQ(integer_of(walk.array(), keys[static_cast<std::size_t>(i)].c_str()), i);
}

// ---- no memory ----

// Every piece an allocation of its own, so that each of them can be made to fail.
class OnePieceEach {
 public:
  OnePieceEach() { Arena::one_piece_per_chunk = true; }
  ~OnePieceEach() { Arena::one_piece_per_chunk = false; }
  OnePieceEach(const OnePieceEach &) = delete;
  OnePieceEach &operator=(const OnePieceEach &) = delete;
};

// The first lines of what each failing allocation registers, until none fails.
std::set<std::string> messages_of_each_failure(std::string_view bytes,
                                               const std::vector<SDBlkFieldDef> &fields) {
  std::set<std::string> messages;
  for (long n = 1;; ++n) {
    Walk walk(bytes, fields);
    LogCapture log;
    const FailingMemory memory(n);
    const int result = walk.run();
    if (!FailingMemory::failed()) {
      EXPECT_EQ(result, 0);
      return messages;
    }
    EXPECT_EQ(result, -1) << "allocation " << n;
    const std::string text = log.registered();
    const std::size_t end = text.find('\n') + 1;
    messages.insert(text.substr(0, end));
    EXPECT_EQ(text.substr(end), "    Cannot allocate memory\n") << "allocation " << n;
  }
}

TEST(WalkerMemory, EachFailureNamesFieldAndSize) {
  const OnePieceEach pieces;
  const std::array<SDBlkFieldDef, 1> inner = {field("in", 'A', 1, "", SDBLK_STRING)};
  const std::vector<SDBlkFieldDef> fields = {
      field("n", 'D', 1, "#", SDBLK_INT),
      counted(field("ia", 'D', 1, "#", SDBLK_INT_ARRAY), "n"),
      counted(field("da", 'D', 1, "#", SDBLK_DOUBLE_ARRAY), "n"),
      counted(field("sa", 'V', 0, "", SDBLK_STRING_ARRAY), "n"),
      counted(field("ra", 'D', 1, "#", SDBLK_REF_ARRAY), "n"),
      group("ea", "n", inner),
      field("s", 'A', 4, "", SDBLK_STRING)};
  const std::set<std::string> messages =
      messages_of_each_failure("3123456ab~c~~678xyzTEXT", fields);
  const std::string start = "sdblk_unstuff_sblk: malloc(entry";
  const std::string entry_size = std::to_string(sizeof(SDBlkEntry));
  const std::set<std::string> expected = {
      start + "->ia=ia,12) error.\n", start + "->da=da,24) error.\n",
      start + "->sa=sa,24) error.\n", start + "->ra=ra,48) error.\n",
      start + "->ea=ea,24) error.\n", start + "=s,5) error.\n",
      start + "=in,2) error.\n",      start + "->sa=sa,3) error.\n",
      start + "->sa=sa,2) error.\n",  start + "->sa=sa,1) error.\n"};
  for (const std::string &message : expected) EXPECT_EQ(messages.count(message), 1U) << message;
  // What is left is about entries.
  std::set<std::string> entries;
  for (const std::string &message : messages) {
    if (expected.count(message) == 0) entries.insert(message);
  }
  EXPECT_EQ(entries.count(start + "=n," + entry_size + ") error.\n"), 1U);
  EXPECT_EQ(entries.count(start + "=in," + entry_size + ") error.\n"), 1U);
  for (const std::string &message : entries) {
    EXPECT_TRUE(message.starts_with(start + "=") &&
                message.ends_with("," + entry_size + ") error.\n"))
        << message;
  }
}

TEST(WalkerMemory, EachFailureInAGroupOfNumbersIsReported) {
  const OnePieceEach pieces;
  const ControlBlockette blockette = ControlBlockette(53)
                                         .raw("A01003004")
                                         .real(1)
                                         .real(1)
                                         .digits(1, 3)
                                         .raw(" 1.00000E+00-2.00000E+00 3.00000E-01 4.00000E+00")
                                         .digits(0, 3);
  bool group_failed = false;
  for (long n = 1;; ++n) {
    BlockReader reader(one('S', blockette));
    SDBlk *block = reader.next();
    LogCapture log;
    const FailingMemory memory(n);
    const int result = sdblk_unstuffblk(block);
    if (!FailingMemory::failed()) {
      EXPECT_EQ(result, 0);
      break;
    }
    EXPECT_EQ(result, -1) << "allocation " << n;
    const std::string message = "sdblk_unstuff_sblk: malloc(entry=real," +
                                std::to_string(sizeof(SDBlkEntry)) + ") error.\n";
    if (log.registered().starts_with(message)) group_failed = true;
  }
  EXPECT_TRUE(group_failed);
}

TEST(Walker, GroupWithoutRepetitionsDoesNotLookAtItsFields) {
  std::vector<SDBlkFieldDef> fields = {field("n", 'D', 1, "#", SDBLK_INT)};
  SDBlkFieldDef empty = counted(field("g", '\0', 0, "", SDBLK_GROUP_ARRAY), "n");
  empty.nsub = 2;
  empty.sub = nullptr;
  fields.push_back(empty);
  Walk walk("0xx", fields);
  EXPECT_EQ(walk.run(), 0);
}

TEST(WalkerMemory, AbbreviationThatCannotBeCopiedIsReported) {
  const OnePieceEach pieces;
  bool copy_failed = false;
  for (long n = 1;; ++n) {
    BlockReader reader(one('A', unit(3)));
    SDBlk *block = reader.next();
    LogCapture log;
    const FailingMemory memory(n);
    const int result = sdblk_unstuffblk(block);
    if (!FailingMemory::failed()) {
      EXPECT_EQ(result, 0);
      break;
    }
    EXPECT_EQ(result, -1) << "allocation " << n;
    EXPECT_EQ(countarr(reader.vol()->abbrs), 0) << "allocation " << n;
    const std::string text = log.registered();
    if (text.find("sdblk_unstuff_sblk: sdblk_copy(abbr_ref) error.\n") != std::string::npos) {
      copy_failed = true;
    }
    EXPECT_NE(text.find("sdblk_unstuffblk: sdblk_unstuff_blk error for B0034 at A:000001\n"),
              std::string::npos);
  }
  EXPECT_TRUE(copy_failed);
}

TEST(WalkerMemory, FailedAbbreviationCanBeDecodedAgain) {
  const OnePieceEach pieces;
  for (long n = 1; n < 12; ++n) {
    BlockReader reader(one('A', unit(3)));
    SDBlk *block = reader.next();
    const LogCapture log;
    {
      const FailingMemory memory(n);
      EXPECT_EQ(sdblk_unstuffblk(block), -1) << "allocation " << n;
    }
    EXPECT_EQ(sdblk_unstuffblk(block), 0) << "allocation " << n;
    EXPECT_NE(abbreviation(reader, "uid:3"), nullptr);
  }
}

}  // namespace
