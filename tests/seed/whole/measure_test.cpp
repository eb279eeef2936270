#include "seed/whole/measure.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/util/volume_writer.h"

namespace {

using namespace tarvik;
using volume::BinaryFields;
using volume::DataRecord;

constexpr std::int64_t kInForce = 4096;

// What is measured, as text: "512", with "confirmed", and the cause of its note.
std::string measure(const std::string &bytes, std::int64_t in_force = kInForce) {
  // A copy of exactly these bytes, so that the sanitizers see a step past them.
  const std::vector<char> exact(bytes.begin(), bytes.end());
  const Image image = {exact.data(), static_cast<std::int64_t>(exact.size())};
  Chain chain;
  const Measure found = measure_record(image, 0, header_at(image, 0), in_force, &chain);
  std::string text = std::to_string(found.length);
  if (found.confirmed) text += " confirmed";
  if (found.has_note) text += std::string(" ") + sdblk_cause_name(found.note);
  return text;
}

// Bytes of no meaning at all, up to a length.
std::string filled(std::string bytes, std::size_t length) {
  bytes.resize(length, 'x');
  return bytes;
}

// A data record whose blockette 1000 states 2 to the exponent, in so many bytes.
std::string stating(unsigned exponent, std::size_t length) {
  return filled(DataRecord{.sta = "ABC"}.b1000(3, 1, exponent).bytes(64), length);
}
std::string silent(std::size_t length) {
  return filled(DataRecord{.sta = "ABC"}.bytes(48), length);
}
std::string data_after(long number = 2) { return DataRecord{.sta = "ABC"}.bytes(48, number); }

// ---- data records with a stated length ----

TEST(MeasureData, StatedLengthIsConfirmedByTheEndOfTheFile) {
  EXPECT_EQ(measure(stating(7, 128)), "128 confirmed");
}

TEST(MeasureData, StatedLengthIsConfirmedByAHeader) {
  EXPECT_EQ(measure(stating(7, 128) + data_after(9)), "128 confirmed");
  EXPECT_EQ(measure(stating(7, 128) + "000009V*"), "128 confirmed");
}

TEST(MeasureData, StatedLengthIsConfirmedByFiller) {
  EXPECT_EQ(measure(stating(7, 128) + "000002      "), "128 confirmed");
  EXPECT_EQ(measure(stating(7, 128) + "000002     x"), "128 unconfirmed");
}

TEST(MeasureData, StatedLengthGoesBeforeAnotherThatAHeaderConfirms) {
  EXPECT_EQ(measure(filled(stating(8, 128) + data_after(), 256)), "256 confirmed");
}

TEST(MeasureData, ExponentsFromSixToSeventeenStateALength) {
  EXPECT_EQ(measure(stating(6, 64)), "64 confirmed");
  EXPECT_EQ(measure(stating(17, 131072)), "131072 confirmed");
  // Nothing is stated, so that the length in force is taken.
  EXPECT_EQ(measure(stating(5, 5000)), "4096 unconfirmed");
  EXPECT_EQ(measure(stating(18, 5000)), "4096 unconfirmed");
  EXPECT_EQ(measure(stating(255, 5000)), "4096 unconfirmed");
}

TEST(MeasureData, FirstBlockette1000States) {
  const std::string two = DataRecord{}.b1000(3, 1, 5).b1000(3, 1, 7).bytes(64);
  EXPECT_EQ(measure(filled(two, 5000)), "4096 unconfirmed");
  const std::string other_first = DataRecord{}.b100(20).b1000(3, 1, 7).bytes(128);
  EXPECT_EQ(measure(other_first), "128 confirmed");
  const std::string three = DataRecord{}.b1000(3, 1, 7).b1000(3, 1, 8).bytes(64);
  EXPECT_EQ(measure(filled(three, 256)), "128 unconfirmed");
}

TEST(MeasureData, ExponentCountsWhereAnotherBlocketteBeginsBeforeIt) {
  // A blockette 1000 at 48 whose exponent, at 54, is the high byte of the type of one at 54.
  std::string record = DataRecord{}.b1000(3, 1, 7).bytes(128);
  record.replace(50, 2, BinaryFields(volume::ByteOrder::kBig).u16(54).bytes());
  EXPECT_EQ(measure(record), "128 confirmed");
}

TEST(MeasureData, LengthIsStatedInEitherByteOrder) {
  const std::string little =
      DataRecord{.order = volume::ByteOrder::kLittle}.b1000(3, 0, 7).bytes(64);
  EXPECT_EQ(measure(filled(little, 5000)), "128 unconfirmed");
}

TEST(MeasureData, ChainIsFollowedPastTheNextHeader) {
  // A header at 64, and at 120 a blockette of an exponent that states 256.
  const auto record = [](unsigned type) {
    std::string bytes = filled(DataRecord{.forced_first_offset = 120}.bytes(48), 64) + data_after();
    bytes = filled(bytes, 120);
    bytes += BinaryFields(volume::ByteOrder::kBig).u16(type).u16(0).u8(3).u8(1).u8(8).bytes();
    return filled(bytes, 256);
  };
  EXPECT_EQ(measure(record(1000)), "256 confirmed");
  EXPECT_EQ(measure(record(999)), "64 confirmed");
}

TEST(MeasureData, ExponentMustBeInTheFile) {
  // The blockette stands at 58 of 64 bytes: its exponent would be the next byte.
  std::string record(64, 'x');
  record.replace(0, 48, DataRecord{.forced_first_offset = 58}.bytes(48));
  record.replace(58, 4, BinaryFields(volume::ByteOrder::kBig).u16(1000).u16(0).bytes());
  EXPECT_EQ(measure(record), "64 confirmed");
  EXPECT_EQ(measure(record + '\x07'), "65 cut");
  record.resize(128, '\x07');
  EXPECT_EQ(measure(record), "128 confirmed");
}

TEST(MeasureData, OtherLengthIsConfirmedByAHeaderAlone) {
  EXPECT_EQ(measure(stating(9, 128) + data_after()), "128 confirmed length");
  EXPECT_EQ(measure(stating(7, 512) + data_after()), "512 confirmed length");
  // The end of the file and filler do not do.
  EXPECT_EQ(measure(stating(7, 256)), "128 unconfirmed");
  EXPECT_EQ(measure(stating(7, 256) + std::string(64, ' ')), "128 unconfirmed");
}

TEST(MeasureData, FirstOtherLengthIsTaken) {
  const std::string both = filled(stating(9, 128) + data_after(), 256) + data_after();
  EXPECT_EQ(measure(both), "128 confirmed length");
}

TEST(MeasureData, LongestOtherLengthIs131072) {
  EXPECT_EQ(measure(stating(7, 131072) + data_after()), "131072 confirmed length");
  EXPECT_EQ(measure(stating(7, 262144) + data_after()), "128 unconfirmed");
}

TEST(MeasureData, StatedLengthPastTheEndIsCut) {
  EXPECT_EQ(measure(stating(9, 511)), "511 cut");
  EXPECT_EQ(measure(stating(9, 512)), "512 confirmed");
  EXPECT_EQ(measure(stating(9, 513)), "512 unconfirmed");
}

TEST(MeasureData, HeaderInsideARecordThatNothingConfirmsEndsIt) {
  EXPECT_EQ(measure(filled(stating(9, 100) + data_after(), 600)), "100 unconfirmed");
  EXPECT_EQ(measure(filled(stating(9, 100) + data_after(), 500)), "100 unconfirmed");
  EXPECT_EQ(measure(filled(stating(9, 100) + "000002V*", 500)), "100 unconfirmed");
}

TEST(MeasureData, HeaderInsideCountsFromByte48On) {
  // Eight bytes in the record's own header that look like one of a control record.
  std::string record = silent(600);
  record.replace(28, 8, "000002V*");
  EXPECT_EQ(measure(record, 512), "512 unconfirmed");
  record.replace(48, 8, "000002V*");
  EXPECT_EQ(measure(record, 512), "48 unconfirmed");
}

TEST(MeasureData, HeaderAtByte47IsStillOfTheRecordsOwn) {
  std::string record = silent(600);
  record.replace(47, 8, "000002V*");
  EXPECT_EQ(measure(record, 512), "512 unconfirmed");
}

TEST(MeasureData, HeaderInsideAConfirmedRecordIsData) {
  EXPECT_EQ(measure(filled(stating(9, 100) + data_after(), 512)), "512 confirmed");
}

// ---- data records without ----

TEST(MeasureData, WithoutAStatedLengthTheFirstThatAHeaderConfirms) {
  EXPECT_EQ(measure(silent(256) + data_after()), "256 confirmed");
  EXPECT_EQ(measure(filled(silent(128) + data_after(), 256) + data_after()), "128 confirmed");
}

TEST(MeasureData, WithoutAStatedLengthTheEndOfTheFileConfirms) {
  EXPECT_EQ(measure(silent(64)), "64 confirmed");
  EXPECT_EQ(measure(silent(131072)), "131072 confirmed");
  EXPECT_EQ(measure(silent(65)), "65 unconfirmed");
}

TEST(MeasureData, WithoutAStatedLengthFillerDoesNotConfirm) {
  EXPECT_EQ(measure(silent(128) + std::string(72, ' '), 100), "100 unconfirmed");
}

TEST(MeasureData, WithoutAStatedLengthTheOneInForceThenTheRest) {
  EXPECT_EQ(measure(silent(5000)), "4096 unconfirmed");
  EXPECT_EQ(measure(silent(4000)), "4000 unconfirmed");
  EXPECT_EQ(measure(silent(200), 200), "200 unconfirmed");
  EXPECT_EQ(measure(silent(140000), 200000), "131072 unconfirmed");
  EXPECT_EQ(measure(silent(200001), 200000), "200000 unconfirmed");
}

// ---- control records ----

// A control record with the number 1, in so many bytes.
std::string control(std::size_t length) { return filled("000001S 0500100", length); }
// One whose blockette states 2 to the power of two characters.
std::string identifier(const std::string &exponent, std::size_t length,
                       const std::string &type = "010", char flag = ' ') {
  return filled(std::string("000001V") + flag + type + "0100" + "02.4" + exponent, length);
}
constexpr char kNext[] = "000002S*";
constexpr char kOther[] = "000009S*";

TEST(MeasureControl, HeaderWithTheNextNumberGoesBeforeAll) {
  // The stated 256 ends well too, at a header with another number.
  const std::string record = filled(identifier(" 8", 256) + kOther, 512) + kNext;
  EXPECT_EQ(measure(record), "512 confirmed length");
  EXPECT_EQ(measure(filled(identifier(" 8", 256) + kNext, 512) + kNext), "256 confirmed");
}

TEST(MeasureControl, StatedThenInForceThenPowersForTheNextNumber) {
  const std::string both = filled(identifier("09", 100) + kNext, 512) + kNext;
  EXPECT_EQ(measure(both, 100), "512 confirmed");
  const std::string unstated = filled(filled(control(64) + kNext, 100) + kNext, 512);
  EXPECT_EQ(measure(unstated, 100), "100 confirmed");
  EXPECT_EQ(measure(unstated, 101), "64 confirmed");
}

TEST(MeasureControl, NumberOneAboveTheLargestIsZeroOrOne) {
  std::string record = filled(filled("999999S 0500100", 64) + "000005S*", 128) + "000001S*";
  EXPECT_EQ(measure(record), "128 confirmed");
}

TEST(MeasureControl, FirstPowerWithTheNextNumberIsTaken) {
  EXPECT_EQ(measure(filled(control(64) + kNext, 128) + kNext, 100), "64 confirmed");
}

TEST(MeasureControl, DataHeaderMayHaveTheNextNumber) {
  const std::string record = filled(control(128) + kOther, 256);
  EXPECT_EQ(measure(record + data_after(2), 100), "256 confirmed");
  // One without a number is a header like any other.
  EXPECT_EQ(measure(record + data_after().replace(0, 6, 6, ' '), 100), "128 confirmed");
}

TEST(MeasureControl, StatedOrInForceThatEndsWellComesSecond) {
  // The header at 64 has another number.
  EXPECT_EQ(measure(filled(control(64) + kOther, 100), 100), "100 confirmed");
  EXPECT_EQ(measure(filled(control(64) + kOther, 100) + kOther, 100), "100 confirmed");
  EXPECT_EQ(measure(filled(control(64) + kOther, 100) + "    ", 100), "100 confirmed");
  EXPECT_EQ(measure(filled(identifier("07", 64) + kOther, 128), 99), "128 confirmed");
}

TEST(MeasureControl, StatedLengthGoesBeforeTheOneInForce) {
  EXPECT_EQ(measure(filled(identifier("07", 100) + kOther, 128) + kOther, 100), "128 confirmed");
}

TEST(MeasureControl, PowerWithAnyHeaderComesThird) {
  EXPECT_EQ(measure(filled(control(128) + kOther, 300), 100), "128 confirmed");
  EXPECT_EQ(measure(filled(identifier("10", 128) + kOther, 300)), "128 confirmed length");
  // The end of the file alone confirms none of these.
  EXPECT_EQ(measure(control(128), 100), "100 unconfirmed");
}

TEST(MeasureControl, FirstPowerWithAnyHeaderIsTaken) {
  EXPECT_EQ(measure(filled(control(64) + kOther, 128) + kOther, 100), "64 confirmed");
}

TEST(MeasureControl, LongestPowerIs131072) {
  for (const char *header : {kNext, kOther}) {
    EXPECT_EQ(measure(control(131072) + header, 100), "131072 confirmed");
    EXPECT_EQ(measure(control(262144) + header, 100), "100 unconfirmed");
  }
}

TEST(MeasureControl, StatedOrInForceWithinTheFileComesFourth) {
  EXPECT_EQ(measure(identifier("07", 300), 200), "128 unconfirmed");
  EXPECT_EQ(measure(identifier("10", 300), 200), "200 unconfirmed");
  EXPECT_EQ(measure(control(300), 200), "200 unconfirmed");
}

TEST(MeasureControl, RestOfTheFileComesLast) {
  EXPECT_EQ(measure(control(300)), "300 unconfirmed");
  EXPECT_EQ(measure(control(140000), 200000), "131072 unconfirmed");
}

TEST(MeasureControl, HeaderInsideEndsItFromByteEightOn) {
  EXPECT_EQ(measure(filled(control(77) + kNext, 300)), "77 unconfirmed");
  EXPECT_EQ(measure(filled(std::string("000001S*") + kNext, 300)), "8 unconfirmed");
}

TEST(MeasureControl, DataHeaderAtByteSevenDoesNotEndIt) {
  // One without a number: its blanks are a flag and what may follow it.
  const std::string header = data_after().replace(0, 6, 6, ' ');
  EXPECT_EQ(measure(filled("000001S" + header, 300), 200), "200 unconfirmed");
  EXPECT_EQ(measure(filled("000001S " + header, 300), 200), "8 unconfirmed");
}

TEST(MeasureControl, VolumeIdentifiersStateALength) {
  for (const char *type : {"005", "008", "010", "  5", " 10"}) {
    EXPECT_EQ(measure(identifier("09", 600, type), 300), "512 unconfirmed") << type;
  }
  for (const char *type : {"011", "050", "  1", "100"}) {
    EXPECT_EQ(measure(identifier("09", 600, type), 300), "300 unconfirmed") << type;
  }
}

TEST(MeasureControl, AnyLetterMayHaveTheIdentifier) {
  for (const char letter : {'A', 'S', 'T'}) {
    std::string record = identifier("09", 600);
    record[6] = letter;
    EXPECT_EQ(measure(record, 300), "512 unconfirmed") << letter;
  }
}

TEST(MeasureControl, RecordThatGoesOnStatesNothing) {
  EXPECT_EQ(measure(identifier("09", 600, "010", '*'), 300), "300 unconfirmed");
}

TEST(MeasureControl, StatedExponentIsDigitsPaddedWithBlanks) {
  EXPECT_EQ(measure(identifier(" 9", 600), 300), "512 unconfirmed");
  EXPECT_EQ(measure(identifier("9 ", 600), 300), "512 unconfirmed");
  for (const char *exponent : {"  ", "x9", "+9", "-9", "05", "18", "99"}) {
    EXPECT_EQ(measure(identifier(exponent, 600), 300), "300 unconfirmed") << exponent;
  }
}

TEST(MeasureControl, StatedExponentsAreSixToSeventeen) {
  EXPECT_EQ(measure(identifier("06", 600), 300), "64 unconfirmed");
  EXPECT_EQ(measure(identifier("17", 131073), 300), "131072 unconfirmed");
}

TEST(MeasureControl, StatedExponentMustBeInTheFile) {
  EXPECT_EQ(measure(identifier("06", 21), 21), "21 confirmed length");
  EXPECT_EQ(measure(identifier("06", 20), 20), "20 confirmed");
}

}  // namespace
