#include "seed/whole/header.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/util/volume_writer.h"

namespace {

using namespace tarvik;
using namespace std::string_literals;
using volume::ByteOrder;
using volume::DataRecord;

// A copy of exactly these bytes, so that the sanitizers see a step past them.
class Exact {
 public:
  explicit Exact(std::string_view bytes) : bytes_(bytes.begin(), bytes.end()) {}
  [[nodiscard]] Image image() const {
    return {bytes_.data(), static_cast<std::int64_t>(bytes_.size())};
  }

 private:
  std::vector<char> bytes_;
};

Header kind_of(std::string_view bytes) { return header_at(Exact(bytes).image(), 0); }

// The first 48 bytes of a data record, one of them changed.
std::string data_header(std::size_t at = 0, char byte = '0') {
  std::string bytes = DataRecord{.sta = "ABC", .chan = "BHZ"}.bytes(48);
  bytes[at] = byte;
  return bytes;
}
std::string with_start(ByteOrder order, int year, int day) {
  return DataRecord{.time = {year, day}, .order = order}.bytes(48);
}

// ---- control headers ----

TEST(HeaderAt, SixDigitsLetterAndAsteriskMakeAControlHeader) {
  for (const char letter : {'V', 'A', 'S', 'T'}) {
    EXPECT_EQ(kind_of("000001"s + letter + '*'), Header::control) << letter;
  }
}

TEST(HeaderAt, OtherLettersAreNoControlHeader) {
  for (const char letter : {'D', 'R', 'Q', 'M', 'B', 'v', ' ', '\0'}) {
    EXPECT_EQ(kind_of("000001"s + letter + "*0500100"), Header::none) << letter;
  }
}

TEST(HeaderAt, SevenBytesAreNoHeader) { EXPECT_EQ(kind_of("000001V"), Header::none); }

TEST(HeaderAt, EachOfTheSixIsADigitInAControlHeader) {
  for (std::size_t at = 0; at < 6; ++at) {
    for (const char other : {' ', '\0', '/', ':', 'x'}) {
      std::string bytes = "000001V*";
      bytes[at] = other;
      EXPECT_EQ(kind_of(bytes), Header::none) << at << other;
    }
  }
}

TEST(HeaderAt, OtherFlagsMakeNoControlHeader) {
  for (const char flag : {'\0', '0', '+', 'x'}) {
    EXPECT_EQ(kind_of("000001V"s + flag + "0500100"), Header::none) << flag;
  }
}

TEST(HeaderAt, BlankFlagNeedsThreeBlanksOrNulsAfterIt) {
  EXPECT_EQ(kind_of("000001V    "), Header::control);
  EXPECT_EQ(kind_of("000001V \0\0\0"s), Header::control);
  EXPECT_EQ(kind_of("000001V  \0 "s), Header::control);
  EXPECT_EQ(kind_of("000001V   "), Header::none);
  EXPECT_EQ(kind_of("000001V   x"), Header::none);
  EXPECT_EQ(kind_of("000001V "), Header::none);
}

TEST(HeaderAt, BlankFlagOrATypeAndALengthAfterIt) {
  EXPECT_EQ(kind_of("000001V 0500100"), Header::control);
  EXPECT_EQ(kind_of("000001V  50 100"), Header::control);
  EXPECT_EQ(kind_of("000001V   5   0"), Header::control);
  EXPECT_EQ(kind_of("000001V 050010"), Header::none);
}

TEST(HeaderAt, TypeAndLengthAreBlanksThenDigitsToTheEnd) {
  for (const char *prefix : {"50 0100", "5 00100", "05x0100", "050010 ", "05001 0", "050    ",
                             "050-100", "0500x00", "+500100"}) {
    EXPECT_EQ(kind_of("000001V "s + prefix), Header::none) << prefix;
  }
  EXPECT_EQ(kind_of("000001V \0"
                    "500100"s),
            Header::none);
}

TEST(HeaderAt, NothingElseCountsAfterThreeBlanks) {
  EXPECT_EQ(kind_of("000001V    xxxx"), Header::control);
  EXPECT_EQ(kind_of("000001V x      "), Header::none);
  EXPECT_EQ(kind_of("000001V  x     "), Header::none);
}

TEST(HeaderAt, TypeAndLengthMayBeZero) { EXPECT_EQ(kind_of("000001V 0000000"), Header::control); }

TEST(HeaderAt, NulIsNoBlankOfATypeOrALength) {
  EXPECT_EQ(kind_of("000001V 050\0100"s), Header::none);
  EXPECT_EQ(kind_of("000001V 050   \0"s), Header::none);
}

// ---- data headers ----

TEST(HeaderAt, FortyEightBytesMakeADataHeader) {
  EXPECT_EQ(kind_of(data_header()), Header::data);
  EXPECT_EQ(kind_of(data_header().substr(0, 47)), Header::none);
}

TEST(HeaderAt, LettersOfDataHeaders) {
  for (const char letter : {'D', 'R', 'Q', 'M'}) {
    EXPECT_EQ(kind_of(data_header(6, letter)), Header::data) << letter;
  }
  for (const char letter : {'V', 'd', 'E', ' '}) {
    EXPECT_EQ(kind_of(data_header(6, letter)), Header::none) << letter;
  }
}

TEST(HeaderAt, NumberOfADataHeaderIsDigitsBlanksAndNuls) {
  for (std::size_t at = 0; at < 6; ++at) {
    for (const char byte : {'9', ' ', '\0'}) {
      EXPECT_EQ(kind_of(data_header(at, byte)), Header::data) << at << byte;
    }
    for (const char byte : {'\r', '\n', '/', ':', 'x'}) {
      EXPECT_EQ(kind_of(data_header(at, byte)), Header::none) << at << byte;
    }
  }
}

TEST(HeaderAt, FlagOfADataHeaderIsBlankOrNul) {
  EXPECT_EQ(kind_of(data_header(7, ' ')), Header::data);
  EXPECT_EQ(kind_of(data_header(7, '\0')), Header::data);
  EXPECT_EQ(kind_of(data_header(7, '*')), Header::none);
  EXPECT_EQ(kind_of(data_header(7, '0')), Header::none);
}

TEST(HeaderAt, TimeOfDayHasItsRanges) {
  EXPECT_EQ(kind_of(data_header(24, 23)), Header::data);
  EXPECT_EQ(kind_of(data_header(24, 24)), Header::none);
  EXPECT_EQ(kind_of(data_header(24, '\x80')), Header::none);
  EXPECT_EQ(kind_of(data_header(25, 59)), Header::data);
  EXPECT_EQ(kind_of(data_header(25, 60)), Header::none);
  EXPECT_EQ(kind_of(data_header(26, 60)), Header::data);
  EXPECT_EQ(kind_of(data_header(26, 61)), Header::none);
}

TEST(HeaderAt, YearAndDayHaveTheirRangesInEitherOrder) {
  for (const ByteOrder order : {ByteOrder::kBig, ByteOrder::kLittle}) {
    EXPECT_EQ(kind_of(with_start(order, 1900, 1)), Header::data);
    EXPECT_EQ(kind_of(with_start(order, 2100, 366)), Header::data);
    EXPECT_EQ(kind_of(with_start(order, 1899, 1)), Header::none);
    EXPECT_EQ(kind_of(with_start(order, 2101, 1)), Header::none);
    EXPECT_EQ(kind_of(with_start(order, 2021, 0)), Header::none);
    EXPECT_EQ(kind_of(with_start(order, 2021, 367)), Header::none);
  }
}

TEST(HeaderAt, YearAndDayAreReadInOneOrder) {
  // 2021 with the high byte first, 75 with the low one first.
  std::string bytes = with_start(ByteOrder::kBig, 2021, 75);
  std::swap(bytes[22], bytes[23]);
  EXPECT_EQ(kind_of(bytes), Header::none);
}

// ---- looking for the next one ----

TEST(FindHeader, GivesTheFirstFromAnOffsetOn) {
  const Exact bytes("xx000001V*x000002V*");
  EXPECT_EQ(find_header(bytes.image(), 0, 19), 2);
  EXPECT_EQ(find_header(bytes.image(), 2, 19), 2);
  EXPECT_EQ(find_header(bytes.image(), 3, 19), 11);
}

TEST(FindHeader, GivesTheEndOfTheRangeWhereNoneBegins) {
  const Exact bytes("xx000001V*xx");
  EXPECT_EQ(find_header(bytes.image(), 3, 12), 12);
  EXPECT_EQ(find_header(bytes.image(), 0, 2), 2);
}

TEST(FindHeader, HeaderMayReachPastTheRange) {
  const Exact bytes("xx000001V*");
  EXPECT_EQ(find_header(bytes.image(), 0, 3), 2);
}

TEST(FindHeader, FewerBytesThanAHeaderHoldNone) {
  const Exact bytes("000001V");
  EXPECT_EQ(find_header(bytes.image(), 0, 7), 7);
}

// ---- what may follow a record ----

bool is_filler(std::string_view bytes) { return is_filler_at(Exact(bytes).image(), 0); }

TEST(IsFillerAt, BlanksNulsAndLineEndsAfterAtMostANumberAreFiller) {
  EXPECT_TRUE(is_filler(std::string(48, ' ')));
  EXPECT_TRUE(is_filler("000042" + std::string(42, '\0')));
  EXPECT_TRUE(is_filler(" \0\r\n4\0"s + std::string(20, '\r') + std::string(22, '\n')));
}

TEST(IsFillerAt, OtherBytesAreNot) {
  for (const std::size_t at : {std::size_t{0}, std::size_t{5}, std::size_t{6}, std::size_t{47}}) {
    std::string bytes(48, ' ');
    bytes[at] = 'x';
    EXPECT_FALSE(is_filler(bytes)) << at;
  }
}

TEST(IsFillerAt, DigitsStandInTheNumberOnly) {
  std::string bytes(48, ' ');
  bytes[5] = '7';
  EXPECT_TRUE(is_filler(bytes));
  bytes[6] = '7';
  EXPECT_FALSE(is_filler(bytes));
}

TEST(IsFillerAt, LooksAtFortyEightBytes) {
  EXPECT_TRUE(is_filler(std::string(48, ' ') + "x"));
  EXPECT_FALSE(is_filler(std::string(47, ' ') + "x"));
}

TEST(IsFillerAt, FewerAreEnoughAtTheEnd) {
  EXPECT_TRUE(is_filler("4"));
  EXPECT_TRUE(is_filler("000042 "));
  EXPECT_FALSE(is_filler("000042 x"));
  EXPECT_FALSE(is_filler(""));
}

TEST(IsPadding, HoldsDigitsBlanksNulsAndLineEnds) {
  const std::string padding = "09 \0\r\n"s;
  EXPECT_TRUE(is_padding(padding.data(), 6));
  EXPECT_TRUE(is_padding(padding.data(), 0));
  for (const char other : {'\t', '/', ':', '*', 'A', '\x80'}) {
    EXPECT_FALSE(is_padding(&other, 1)) << other;
  }
}

// ---- numbers ----

TEST(RecordNumber, IsDecimalWithOuterBlanksAndNulsDropped) {
  EXPECT_EQ(record_number("000042V "), 42);
  EXPECT_EQ(record_number("    42D "), 42);
  EXPECT_EQ(record_number("42    D "), 42);
  EXPECT_EQ(record_number(("\0 42\0 D "s).data()), 42);
  EXPECT_EQ(record_number("000000D "), 0);
  EXPECT_EQ(record_number("999999D "), 999999);
}

TEST(RecordNumber, IsNoneWhereAnythingElseIsLeft) {
  for (const char *header : {"      D ", "4 2   D ", "00004xD ", "\r00042D ", "-00042D "}) {
    EXPECT_EQ(record_number(header), kNoNumber) << header;
  }
  EXPECT_EQ(record_number(("\0\0\0\0\0\0D "s).data()), kNoNumber);
  EXPECT_EQ(record_number(("4\0"
                           "2   D "s)
                              .data()),
            kNoNumber);
}

TEST(IsOneAbove, FollowsByOne) {
  EXPECT_TRUE(is_one_above(43, 42));
  EXPECT_FALSE(is_one_above(42, 42));
  EXPECT_FALSE(is_one_above(44, 42));
  EXPECT_FALSE(is_one_above(41, 42));
}

TEST(IsOneAbove, ZeroAndOneFollowTheLargest) {
  EXPECT_TRUE(is_one_above(0, 999999));
  EXPECT_TRUE(is_one_above(1, 999999));
  EXPECT_FALSE(is_one_above(2, 999999));
  EXPECT_FALSE(is_one_above(0, 999998));
}

TEST(IsOneAbove, NothingFollowsAMissingNumberOrIsOne) {
  EXPECT_FALSE(is_one_above(0, kNoNumber));
  EXPECT_FALSE(is_one_above(kNoNumber, 5));
  EXPECT_FALSE(is_one_above(kNoNumber, kNoNumber));
}

}  // namespace
