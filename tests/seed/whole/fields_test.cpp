#include "seed/whole/fields.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "tests/util/decoded.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using namespace std::string_literals;
using volume::BinaryFields;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

// One blockette, decoded, with what was told of it.
class Decoded {
 public:
  explicit Decoded(const ControlBlockette &blockette) : Decoded(volume_of(blockette)) {}
  explicit Decoded(const DataRecord &record) : Decoded(record.bytes(512)) {}
  explicit Decoded(const std::string &bytes) : reader_(bytes, 512), block_(reader_.decode_next()) {}

  [[nodiscard]] const Arr *fields() const { return block_->contents; }
  // Those of a data blockette, counted from 0.
  [[nodiscard]] const Arr *fields(int chained) const {
    const SDBlk *block = block_->next;
    for (int i = 0; i < chained; ++i) block = block->next;
    return block->contents;
  }
  [[nodiscard]] bool has(const char *key) const { return getarr(fields(), key) != nullptr; }
  [[nodiscard]] const SDBlkEntry &entry(const char *key) const { return entry_of(fields(), key); }
  // A value, or none for a null.
  [[nodiscard]] std::optional<std::int32_t> integer(const char *key) const {
    if (!sdblk_has_value(&entry(key))) return {};
    return entry(key).value.i;
  }
  [[nodiscard]] std::optional<double> real(const char *key) const {
    if (!sdblk_has_value(&entry(key))) return {};
    return entry(key).value.d;
  }
  // The notes, without their place.
  [[nodiscard]] Lines notes() const {
    Lines notes = reader_.lines();
    for (std::string &note : notes) {
      const std::size_t place = note.find(" @");
      const std::size_t field = note.find(' ', note.find("block ") + 6);
      note = note.substr(0, place) + (field == std::string::npos ? "" : note.substr(field));
    }
    return notes;
  }
  [[nodiscard]] const std::string &text() const { return reader_.text(); }

 private:
  static std::string volume_of(const ControlBlockette &blockette) {
    return VolumeWriter(512).control('S', blockette).bytes();
  }

  WholeReader reader_;
  const SDBlk *block_;
};

const std::optional<std::int32_t> kNoInteger = {};
const std::optional<double> kNoReal = {};

// ---- texts ----

// The name of a blockette 33, whatever bytes.
Decoded named(const std::string &bytes) {
  return Decoded(ControlBlockette(33).digits(1, 3).raw(bytes));
}

TEST(DecodeFields, TextIsWithoutWhiteSpaceAtBothEnds) {
  EXPECT_EQ(text_of(named(" \t\n\v\f\rA name\t of it \r\n~").fields(), "descr"), "A name\t of it");
  EXPECT_EQ(text_of(named("~").fields(), "descr"), "");
  EXPECT_EQ(text_of(named("   ~").fields(), "descr"), "");
}

TEST(DecodeFields, TextIsCutAtTheFirstNul) {
  EXPECT_EQ(text_of(named(" one \0 two~"s).fields(), "descr"), "one");
  EXPECT_EQ(text_of(named("\0one~"s).fields(), "descr"), "");
}

TEST(DecodeFields, VariableTextRunsToItsTildeOrTheEnd) {
  EXPECT_EQ(text_of(named("one~two~").fields(), "descr"), "one");
  EXPECT_EQ(text_of(named("one").fields(), "descr"), "one");
  EXPECT_EQ(text_of(named(std::string(200, 'n') + "~").fields(), "descr"), std::string(200, 'n'));
}

TEST(DecodeFields, TextIsNeverNull) {
  const Decoded decoded = named("  ~");
  EXPECT_TRUE(sdblk_has_value(&decoded.entry("descr")));
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, TextOfFixedWidthTakesWhatIsLeft) {
  const Decoded decoded(ControlBlockette(50).raw("DY"));
  EXPECT_EQ(text_of(decoded.fields(), "sta"), "DY");
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

// ---- absent fields ----

TEST(DecodeFields, FieldIsAbsentWhereNoByteIsLeftForIt) {
  const Decoded decoded(ControlBlockette(50).raw("DYNGA"));
  EXPECT_TRUE(decoded.has("sta"));
  EXPECT_FALSE(decoded.has("lat"));
  EXPECT_EQ(countarr(decoded.fields()), 1);
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, BytesAfterTheLastFieldAreNothing) {
  const Decoded decoded(ControlBlockette(33).digits(1, 3).var("one").raw("and more"));
  EXPECT_EQ(countarr(decoded.fields()), 2);
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

// ---- decimal integers ----

// The integer "stage" (two digits) of a blockette 57, and a field after it.
Decoded stage(const std::string &bytes) { return Decoded(ControlBlockette(57).raw(bytes)); }

TEST(DecodeFields, IntegerMayStandBetweenBlanks) {
  EXPECT_EQ(stage("07").integer("stage"), 7);
  EXPECT_EQ(stage(" 7").integer("stage"), 7);
  EXPECT_EQ(stage("7 ").integer("stage"), 7);
  EXPECT_EQ(stage("-7").integer("stage"), -7);
  EXPECT_EQ(stage("7\0"s).integer("stage"), 7);
}

TEST(DecodeFields, EmptyIntegerIsNullWithoutANote) {
  for (const std::string &bytes : {"  "s, "\0\0"s, " \0"s, "\t\n"s}) {
    const Decoded decoded = stage(bytes);
    EXPECT_EQ(decoded.integer("stage"), kNoInteger);
    EXPECT_EQ(decoded.entry("stage").value.i, 0);
    EXPECT_EQ(decoded.notes(), (Lines{}));
  }
}

TEST(DecodeFields, UnreadableIntegerIsNullWithANote) {
  for (const char *bytes : {"x7", "7x", "+-", "--", "7-"}) {
    const Decoded decoded = stage(bytes);
    EXPECT_EQ(decoded.integer("stage"), kNoInteger) << bytes;
    EXPECT_EQ(decoded.entry("stage").value.i, 0);
    EXPECT_EQ(decoded.notes(), (Lines{"value stage"})) << bytes;
  }
  EXPECT_EQ(stage("x7").text(), "stage is not a number: 'x7'");
}

TEST(DecodeFields, NumberOfWhichBytesAreMissingIsNull) {
  const Decoded decoded = stage("7");
  EXPECT_EQ(decoded.integer("stage"), kNoInteger);
  EXPECT_EQ(decoded.notes(), (Lines{"value stage"}));
  EXPECT_EQ(decoded.text(), "stage is cut short: '7'");
  // Blank bytes do not save it.
  EXPECT_EQ(stage(" ").notes(), (Lines{"value stage"}));
}

TEST(DecodeFields, NoteShowsAValueInOneLine) {
  EXPECT_EQ(stage("7\x80").text(), "stage is not a number: '7?'");
}

// ---- decimal real numbers ----

// The real number "isamprate" (ten characters) of a blockette 57.
Decoded rate(const std::string &bytes) {
  return Decoded(ControlBlockette(57).digits(1, 2).raw(bytes));
}

TEST(DecodeFields, RealNumberInItsPictureOrAnyOther) {
  EXPECT_EQ(rate("2.5000E+01").real("isamprate"), 25.0);
  EXPECT_EQ(rate("        25").real("isamprate"), 25.0);
  EXPECT_EQ(rate("25.       ").real("isamprate"), 25.0);
  EXPECT_EQ(rate(" +.25e2\0  "s).real("isamprate"), 25.0);
  EXPECT_EQ(rate("      1e99").real("isamprate"), 1e99);
  EXPECT_EQ(rate("     1e400").real("isamprate"), std::numeric_limits<double>::infinity());
}

TEST(DecodeFields, EmptyRealNumberIsNullWithoutANote) {
  const Decoded decoded = rate("          ");
  EXPECT_EQ(decoded.real("isamprate"), kNoReal);
  EXPECT_TRUE(std::isnan(decoded.entry("isamprate").value.d));
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, UnreadableRealNumberIsNullWithANote) {
  for (const char *bytes : {"2.5000F+01", "       nan", "       inf", "    0x1p+3", "2.5 E+01  ",
                            "2,5       ", "2.5000E+  "}) {
    const Decoded decoded = rate(bytes);
    EXPECT_EQ(decoded.real("isamprate"), kNoReal) << bytes;
    EXPECT_EQ(decoded.notes(), (Lines{"value isamprate"})) << bytes;
  }
}

TEST(DecodeFields, RealNumberOfWhichBytesAreMissingIsNull) {
  const Decoded decoded = rate("2.5000E+0");
  EXPECT_EQ(decoded.real("isamprate"), kNoReal);
  EXPECT_EQ(decoded.notes(), (Lines{"value isamprate"}));
}

// ---- times ----

Decoded begin(const std::string &bytes) { return Decoded(ControlBlockette(51).raw(bytes)); }

TEST(DecodeFields, TimeTextIsTakenAtItsWord) {
  EXPECT_EQ(begin("1970,001,00:00:01.2500~").real("time"), 1.25);
  EXPECT_EQ(begin(" 1970,002 ~").real("time"), 86400.0);
  EXPECT_EQ(begin("1970,002").real("time"), 86400.0);
}

TEST(DecodeFields, EmptyTimeIsNullWithoutANote) {
  for (const char *bytes : {"~", "   ~"}) {
    const Decoded decoded = begin(bytes);
    EXPECT_EQ(decoded.real("time"), kNoReal);
    EXPECT_EQ(decoded.entry("time").value.d, SDBLK_NO_TIME);
    EXPECT_EQ(decoded.notes(), (Lines{}));
  }
}

TEST(DecodeFields, UnreadableTimeIsNullWithANote) {
  for (const char *bytes : {"(null)~", "1970/01/01~", "1970,367~"}) {
    const Decoded decoded = begin(bytes);
    EXPECT_EQ(decoded.real("time"), kNoReal) << bytes;
    EXPECT_EQ(decoded.entry("time").value.d, SDBLK_NO_TIME);
    EXPECT_EQ(decoded.notes(), (Lines{"value time"})) << bytes;
  }
  EXPECT_EQ(begin("(null)~").text(), "time is not a time: '(null)'");
}

TEST(DecodeFields, LongValueIsShownCut) {
  EXPECT_EQ(begin(std::string(41, 'x') + "~").text(),
            "time is not a time: '" + std::string(40, 'x') + "...'");
  EXPECT_EQ(begin(std::string(40, 'x') + "~").text(),
            "time is not a time: '" + std::string(40, 'x') + "'");
}

TEST(DecodeFields, BinaryTimeOutOfRangeIsNullWithANote) {
  std::string bytes = DataRecord{}.b500({.exception = {1970, 1, 0, 0, 1, 0}}).bytes(512);
  Decoded whole(bytes);
  EXPECT_EQ(real_of(whole.fields(0), "time"), 1.0);
  EXPECT_EQ(whole.notes(), (Lines{}));
  bytes[48 + 4 + 4 + 4] = 24;  // the hour
  const Decoded decoded(bytes);
  EXPECT_FALSE(sdblk_has_value(&entry_of(decoded.fields(0), "time")));
  EXPECT_EQ(real_of(decoded.fields(0), "time"), SDBLK_NO_TIME);
  EXPECT_EQ(decoded.notes(), (Lines{"value blockettes[0].time"}));
  // The fields after it are as ever.
  EXPECT_EQ(text_of(decoded.fields(0), "type"), "");
}

TEST(DecodeFields, LastPartOfABinaryTimeIsNotChecked) {
  EXPECT_EQ(Decoded(DataRecord{.time = {1970, 1, 23, 59, 60, 65535}}).real("time"),
            86400.0 + 6.5535);
}

// ---- binary numbers ----

TEST(DecodeFields, BinaryNumbersHaveTheirSigns) {
  DataRecord record{.rate_factor = -20, .rate_multiplier = -3, .activity_flags = 255};
  record.samples = 65535;
  const Decoded decoded(record);
  EXPECT_EQ(decoded.integer("nsamp"), 65535);
  EXPECT_EQ(decoded.integer("srate_factor"), -20);
  EXPECT_EQ(decoded.integer("srate_multiplier"), -3);
  EXPECT_EQ(decoded.integer("activity_flags"), 255);
}

TEST(DecodeFields, UlongIsUnsigned) {
  DataRecord record;
  record.b500({.count = 0xfffffffe});
  const Decoded decoded(record);
  EXPECT_EQ(sdblk_integer(&entry_of(decoded.fields(0), "count")), 4294967294);
}

TEST(DecodeFields, LongIsSigned) {
  const Decoded decoded(DataRecord{.time_correction = -2});
  EXPECT_EQ(sdblk_integer(&decoded.entry("tcor")), -2);
}

TEST(DecodeFields, BinaryFieldOfWhichBytesAreMissingIsNull) {
  // A blockette 400 at the end of the record: two of four bytes of the azimuth are there.
  std::string bytes = DataRecord{.forced_first_offset = 58}.bytes(64);
  bytes.replace(58, 4, BinaryFields(ByteOrder::kBig).u16(400).u16(0).bytes());
  const Decoded decoded(bytes);
  EXPECT_FALSE(sdblk_has_value(&entry_of(decoded.fields(0), "azimuth")));
  EXPECT_EQ(countarr(decoded.fields(0)), 1);
  EXPECT_EQ(decoded.notes(), (Lines{"value blockettes[0].azimuth"}));
  EXPECT_EQ(decoded.text(), "blockettes[0].azimuth is cut short");
}

TEST(DecodeFields, EachBinaryKindOfWhichBytesAreMissingIsNull) {
  // A type, the bytes of its fields that the record has, and the field that is cut.
  struct Cut {
    unsigned type;
    std::string there;
    const char *key;
  };
  const std::string time = BinaryFields(ByteOrder::kBig).time({2021, 1}).bytes();
  for (const Cut &cut :
       {Cut{400, std::string(9, '\0'), "config"}, Cut{500, std::string(13, '\0'), "time"},
        Cut{500, std::string(4, '\0') + time + std::string(3, '\0'), "count"},
        Cut{100, std::string(3, '\0'), "samprate"}, Cut{2000, "x", "length"}}) {
    const auto at = static_cast<unsigned>(128 - 4 - cut.there.size());
    std::string bytes = DataRecord{.forced_first_offset = at}.bytes(128);
    bytes.replace(at, 128, BinaryFields(ByteOrder::kBig).u16(cut.type).u16(0).bytes() + cut.there);
    EXPECT_EQ(Decoded(bytes).notes(), (Lines{"value blockettes[0]."s + cut.key}));
  }
}

TEST(DecodeFields, FloatThatIsNoNumberIsAValue) {
  DataRecord record;
  record.b100(std::numeric_limits<float>::quiet_NaN());
  const Decoded decoded(record);
  EXPECT_TRUE(sdblk_has_value(&entry_of(decoded.fields(0), "samprate")));
  EXPECT_TRUE(std::isnan(real_of(decoded.fields(0), "samprate")));
}

// ---- arrays ----

// A blockette 61 with so many coefficients, and a count of its own.
Decoded fir(const std::string &count, const std::string &coefficients) {
  return Decoded(
      ControlBlockette(61).digits(1, 2).var("F").raw("A001002").raw(count).raw(coefficients));
}
const std::string kOne = " 1.0000000E+00";
const std::string kTwo = " 2.0000000E+00";

std::vector<double> reals_of(const SDBlkEntry &entry) {
  return {entry.value.da, entry.value.da + entry.count};
}

TEST(DecodeFields, ArrayHasAsManyElementsAsItsCountSays) {
  const Decoded decoded = fir("0002", kOne + kTwo + kOne);
  EXPECT_EQ(reals_of(decoded.entry("coefs")), (std::vector<double>{1, 2}));
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, ArrayHoldsWhatHasAByteAtLeast) {
  const Decoded two = fir("0003", kOne + kTwo);
  EXPECT_EQ(two.entry("coefs").count, 2);
  EXPECT_EQ(two.notes(), (Lines{"short coefs"}));
  EXPECT_EQ(two.text(), "coefs has fewer elements than its count says");
  const Decoded cut = fir("0003", kOne + kTwo + " ");
  EXPECT_EQ(cut.entry("coefs").count, 3);
  EXPECT_TRUE(std::isnan(cut.entry("coefs").value.da[2]));
  EXPECT_EQ(cut.notes(), (Lines{"value coefs"}));
}

TEST(DecodeFields, ArrayWithoutABytesIsAbsentAndShort) {
  const Decoded decoded = fir("0003", "");
  EXPECT_FALSE(decoded.has("coefs"));
  EXPECT_EQ(decoded.notes(), (Lines{"short coefs"}));
  EXPECT_EQ(fir("0000", "").notes(), (Lines{}));
}

TEST(DecodeFields, ArrayWhoseCountIsAbsentIsNotShort) {
  const Decoded decoded(ControlBlockette(61).digits(1, 2).var("F").raw("A001002"));
  EXPECT_FALSE(decoded.has("ncoefs"));
  EXPECT_FALSE(decoded.has("coefs"));
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, NegativeCountLeavesAnArrayEmpty) {
  const Decoded decoded = fir("-002", kOne);
  EXPECT_EQ(decoded.entry("coefs").count, 0);
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, CountWithoutAValueLeavesAnArrayEmptyAndShort) {
  const Decoded blank = fir("    ", kOne);
  EXPECT_EQ(blank.entry("coefs").count, 0);
  EXPECT_EQ(blank.notes(), (Lines{"short coefs"}));
  EXPECT_EQ(blank.text(), "coefs is left empty, for its count has no value");
  EXPECT_EQ(fir("000x", kOne).notes(), (Lines{"value ncoefs", "short coefs"}));
  // Also where no byte is left for the array.
  EXPECT_EQ(fir("    ", "").notes(), (Lines{"short coefs"}));
}

TEST(DecodeFields, ElementsMayLackAValue) {
  const Decoded decoded = fir("0004", kOne + "             x" + "              " + kTwo);
  const std::vector<double> elements = reals_of(decoded.entry("coefs"));
  ASSERT_EQ(elements.size(), 4U);
  EXPECT_EQ(elements[0], 1.0);
  EXPECT_TRUE(std::isnan(elements[1]));
  EXPECT_TRUE(std::isnan(elements[2]));
  EXPECT_EQ(elements[3], 2.0);
  EXPECT_EQ(decoded.notes(), (Lines{"value coefs"}));
}

TEST(DecodeFields, CountPromisesNoMoreMemoryThanThereAreBytes) {
  const Decoded decoded = fir("9999", kOne);
  EXPECT_EQ(decoded.entry("coefs").count, 1);
  EXPECT_EQ(decoded.notes(), (Lines{"short coefs"}));
}

TEST(DecodeFields, ArrayOfTextsHasThemInOrder) {
  const Decoded decoded(
      ControlBlockette(30).var("Int").digits(1, 4).digits(0, 3).digits(3, 2).var(" M0 ").var(""));
  const SDBlkEntry &keys = decoded.entry("keys");
  ASSERT_EQ(keys.count, 2);
  EXPECT_STREQ(keys.value.sa[0], "M0");
  EXPECT_STREQ(keys.value.sa[1], "");
  EXPECT_EQ(decoded.notes(), (Lines{"short keys"}));
}

// ---- groups ----

constexpr char kCoefficient[] = " 1.00000E+00 0.50000E+00";

// A blockette 54 with counts and bytes of numerators and denominators.
ControlBlockette coefficients(const std::string &fields) {
  return ControlBlockette(54).raw("A01001002" + fields);
}

TEST(DecodeFields, GroupHasARepetitionEach) {
  const Decoded decoded(
      coefficients("0001"s + kCoefficient + "0002" + kCoefficient + kCoefficient));
  EXPECT_EQ(decoded.entry("nums").count, 1);
  EXPECT_EQ(decoded.entry("dens").count, 2);
  EXPECT_EQ(real_of(repetition_of(decoded.fields(), "dens", 1), "coef_err"), 0.5);
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, RepetitionIsThereWithOneByteOfIt) {
  const Decoded decoded(coefficients("0003"s + kCoefficient + " 1.0"));
  EXPECT_EQ(decoded.entry("nums").count, 2);
  const Arr *second = repetition_of(decoded.fields(), "nums", 1);
  EXPECT_EQ(countarr(second), 1);
  EXPECT_FALSE(sdblk_has_value(&entry_of(second, "coef")));
  EXPECT_EQ(decoded.notes(), (Lines{"value nums[1].coef", "short nums"}));
  EXPECT_FALSE(decoded.has("ndens"));
}

TEST(DecodeFields, GroupWithoutAByteIsAbsentAndShort) {
  const Decoded decoded(coefficients("0002"));
  EXPECT_FALSE(decoded.has("nums"));
  EXPECT_FALSE(decoded.has("ndens"));
  EXPECT_EQ(decoded.notes(), (Lines{"short nums"}));
  EXPECT_EQ(coefficients("0000").text().size(), 7U + 9 + 4);
  EXPECT_EQ(Decoded(coefficients("0000")).notes(), (Lines{}));
}

TEST(DecodeFields, CountWithoutAValueAndNoByteAfterItIsShortOnce) {
  EXPECT_EQ(Decoded(coefficients("    ")).notes(), (Lines{"short nums"}));
}

TEST(DecodeFields, NotesOfAGroupNameTheRepetition) {
  const Decoded decoded(coefficients("0002"s + kCoefficient + " 1.00000E+00         bad" + "0000"));
  EXPECT_EQ(decoded.notes(), (Lines{"value nums[1].coef_err"}));
  EXPECT_EQ(decoded.text(), "nums[1].coef_err is not a number: 'bad'");
  EXPECT_FALSE(decoded.has("dens"));
}

TEST(DecodeFields, RepetitionsOfEachGroupCountFromZero) {
  const Decoded decoded(
      coefficients("0002"s + kCoefficient + kCoefficient + "0001" + " 1.00000E+00         bad"));
  EXPECT_EQ(decoded.notes(), (Lines{"value dens[0].coef_err"}));
}

TEST(DecodeFields, CountWithoutAValueEndsItsListOfFields) {
  const Decoded decoded(coefficients("    "s + kCoefficient + "0000"));
  EXPECT_EQ(decoded.entry("nums").count, 0);
  EXPECT_FALSE(decoded.has("ndens"));
  EXPECT_FALSE(decoded.has("dens"));
  EXPECT_EQ(decoded.notes(), (Lines{"short nums"}));
}

TEST(DecodeFields, NegativeCountDoesNot) {
  const Decoded decoded(coefficients("-0010001"s + kCoefficient));
  EXPECT_EQ(decoded.entry("nums").count, 0);
  EXPECT_EQ(decoded.entry("dens").count, 1);
  EXPECT_EQ(decoded.notes(), (Lines{}));
}

TEST(DecodeFields, CountWithoutAValueInARepetitionEndsTheRepetition) {
  // Two stages, the first of which has no count of its responses.
  const Decoded decoded(
      ControlBlockette(60).raw("02"
                               "01"
                               "  "
                               "02"
                               "01"
                               "0007"));
  EXPECT_EQ(decoded.entry("stages").count, 2);
  const Arr *first = repetition_of(decoded.fields(), "stages", 0);
  EXPECT_EQ(entry_of(first, "resps").count, 0);
  const Arr *second = repetition_of(decoded.fields(), "stages", 1);
  EXPECT_EQ(integer_of(second, "stage"), 2);
  EXPECT_EQ(entry_of(second, "resps").count, 1);
  EXPECT_EQ(decoded.notes(), (Lines{"short stages[0].resps"}));
}

TEST(DecodeFields, FiveGroupsAreCountedByTheirOwnFields) {
  const std::string pair = " 1.00000E+00 2.00000E+00";
  EXPECT_EQ(Decoded(ControlBlockette(46).raw("0001F~001002").digits(2, 4).raw(pair + pair))
                .entry("corners")
                .count,
            2);
  EXPECT_EQ(Decoded(ControlBlockette(56).raw("01001002").digits(2, 4).raw(pair + pair))
                .entry("corners")
                .count,
            2);
  EXPECT_EQ(Decoded(ControlBlockette(48).raw("0001G~" + pair).digits(1, 2).raw(pair).var("2021"))
                .entry("histories")
                .count,
            1);
  EXPECT_EQ(Decoded(ControlBlockette(58).raw("01" + pair).digits(1, 2).raw(pair).var("2021"))
                .entry("histories")
                .count,
            1);
  EXPECT_EQ(
      Decoded(ControlBlockette(73).digits(1, 4).raw("ABC    BHZ2021~00000101")).entry("segs").count,
      1);
}

TEST(DecodeFields, GroupsOfNumbersInOtherFormsAreReadTheSame) {
  const Decoded decoded(coefficients("0002"s + kCoefficient + "         1.5         .25" + "0000"));
  const Arr *second = repetition_of(decoded.fields(), "nums", 1);
  EXPECT_EQ(real_of(second, "coef"), 1.5);
  EXPECT_EQ(real_of(second, "coef_err"), 0.25);
  EXPECT_FALSE(decoded.has("dens"));
}

// ---- abbreviations ----

std::string dictionary(std::initializer_list<ControlBlockette> blockettes) {
  return VolumeWriter(512).control('A', blockettes).bytes();
}
ControlBlockette unit(const std::string &code, const std::string &name) {
  return ControlBlockette(34).raw(code).var(name).var("");
}
// One that refers to the unit 1, and to the unit 2.
ControlBlockette comment() {
  return ControlBlockette(31).digits(1, 4).fixed("S", 1).var("Noise").digits(1, 3);
}

TEST(DecodeFields, ReferenceSeesWhatStandsBeforeIt) {
  WholeReader reader(dictionary({comment(), unit("001", "M"), comment()}), 512);
  EXPECT_EQ(entry_of(reader.decode_next()->contents, "uid").ref, nullptr);
  reader.decode_next();
  const SDBlkEntry &entry = entry_of(reader.decode_next()->contents, "uid");
  ASSERT_NE(entry.ref, nullptr);
  EXPECT_EQ(text_of(entry.ref->contents, "name"), "M");
  EXPECT_EQ(sdblk_definition_number(reader.vol(), entry.definition, 0), 1);
}

TEST(DecodeFields, FirstDefinitionStaysTheOneThatIsReferredTo) {
  WholeReader reader(dictionary({unit("001", "M"), unit("001", "S"), comment()}), 512);
  reader.decode_next();
  reader.decode_next();
  EXPECT_EQ(reader.lines(),
            (Lines{"again @" + std::to_string(8 + unit("001", "M").text().size()) + " block 1"}));
  EXPECT_EQ(reader.text(), "uid 1 is defined already");
  const SDBlkEntry &entry = entry_of(reader.decode_next()->contents, "uid");
  EXPECT_EQ(text_of(entry.ref->contents, "name"), "M");
  EXPECT_EQ(sdblk_definitions(reader.vol(), entry.definition), 2);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), entry.definition, 1), 1);
}

TEST(DecodeFields, CodeWithoutAValueDefinesNothing) {
  WholeReader reader(dictionary({unit("   ", "M"), unit("x", "M"), unit("   ", "S"), comment()}),
                     512);
  reader.read_all();
  EXPECT_EQ(sdblk_definition_of(reader.vol(), "uid", 0), 0);
  EXPECT_EQ(reader.lines()[2],
            "value @" + std::to_string(8 + unit("   ", "M").text().size()) + " block 1 uid");
}

TEST(DecodeFields, CodeOfZeroIsACodeLikeAnyOther) {
  WholeReader reader(
      dictionary({unit("000", "M"), unit("000", "S"),
                  ControlBlockette(31).digits(1, 4).fixed("S", 1).var("Noise").digits(0, 3)}),
      512);
  reader.decode_next();
  reader.decode_next();
  EXPECT_EQ(reader.lines(),
            (Lines{"again @" + std::to_string(8 + unit("000", "M").text().size()) + " block 1"}));
  const SDBlkEntry &entry = entry_of(reader.decode_next()->contents, "uid");
  ASSERT_NE(entry.ref, nullptr);
  EXPECT_EQ(text_of(entry.ref->contents, "name"), "M");
}

TEST(DecodeFields, ReferenceWithoutAValueLeadsNowhere) {
  const Decoded decoded(ControlBlockette(31).digits(1, 4).fixed("S", 1).var("Noise").raw("   "));
  EXPECT_EQ(decoded.integer("uid"), kNoInteger);
  EXPECT_EQ(decoded.entry("uid").ref, nullptr);
}

TEST(DecodeFields, BlocketteOfSeveralOfOneCodeAreAllHandedOut) {
  const ControlBlockette part = ControlBlockette(41).raw("0001F~A001002").digits(1, 4).raw(kOne);
  WholeReader reader(dictionary({part, part, part}), 512);
  reader.read_all();
  const std::int32_t definition = sdblk_definition_of(reader.vol(), "rid", 1);
  EXPECT_EQ(sdblk_definitions(reader.vol(), definition), 3);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), definition, 2), 2);
}

TEST(DecodeFields, ArrayOfReferencesHasTheirBlocks) {
  VolumeWriter writer(512);
  writer.control('A', ControlBlockette(48).digits(3, 4).var("Gain").real(1).real(1).digits(0, 2));
  writer.control('S', ControlBlockette(60).raw("01"
                                               "01"
                                               "03"
                                               "0003"
                                               "    "
                                               "0009"));
  WholeReader reader(writer.bytes());
  reader.decode_next();
  const SDBlk *block = reader.decode_next();
  const SDBlkEntry &resps = entry_of(repetition_of(block->contents, "stages", 0), "resps");
  ASSERT_EQ(resps.count, 3);
  EXPECT_EQ(resps.value.ra[0].code, 3);
  EXPECT_EQ(text_of(resps.value.ra[0].blk->contents, "name"), "Gain");
  EXPECT_EQ(resps.value.ra[1].code, SDBLK_NO_CODE);
  EXPECT_EQ(resps.value.ra[1].blk, nullptr);
  EXPECT_EQ(resps.value.ra[2].code, 9);
  EXPECT_EQ(resps.value.ra[2].blk, nullptr);
}

TEST(DecodeFields, NotesOfOneBlockComeInTheOrderOfItsFields) {
  const ControlBlockette blockette =
      ControlBlockette(41).raw("0001F~A").raw("x01").raw("002").raw("0002").raw(kOne);
  WholeReader reader(dictionary({unit("001", "M"), blockette, blockette}), 512);
  reader.read_all();
  const std::string place = std::to_string(8 + unit("001", "M").text().size());
  EXPECT_EQ(Lines(reader.lines().begin() + 1, reader.lines().begin() + 4),
            (Lines{"block 1: A 41 @" + place, "value @" + place + " block 1 iunits",
                   "short @" + place + " block 1 coefs"}));
  const std::string after = std::to_string(std::stoul(place) + blockette.text().size());
  EXPECT_EQ(Lines(reader.lines().begin() + 5, reader.lines().begin() + 8),
            (Lines{"again @" + after + " block 2", "value @" + after + " block 2 iunits",
                   "short @" + after + " block 2 coefs"}));
}

}  // namespace
