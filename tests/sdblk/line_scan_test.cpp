#include "sdblk/line_scan.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace tarvik;

namespace {

using Members = std::vector<std::pair<std::string, std::string>>;

Members members_of(std::string_view line) {
  LineScan scan(line);
  LineScan::Member member;
  Members members;
  while (scan.next(&member)) members.emplace_back(member.key, member.value);
  return members;
}

std::string unquoted(std::string_view quoted) {
  std::string text;
  return unquote(quoted, &text) ? text : "(no text)";
}

TEST(LineScan, MembersComeInTheirOrder) {
  EXPECT_EQ(members_of(R"({"kind":"volume","bytes":12,"modified":null})"),
            (Members{{"kind", R"("volume")"}, {"bytes", "12"}, {"modified", "null"}}));
}

TEST(LineScan, BlanksMayStandAnywhere) {
  EXPECT_EQ(members_of(" { \"a\" : 1 , \"b\" : \"x\" } "), (Members{{"a", "1"}, {"b", R"("x")"}}));
}

TEST(LineScan, WhatIsNestedIsOneValue) {
  EXPECT_EQ(
      members_of(R"({"counts":{"a":1,"b":[2,"}"]},"list":[{"x":"]"}],"z":1})"),
      (Members{{"counts", R"({"a":1,"b":[2,"}"]})"}, {"list", R"([{"x":"]"}])"}, {"z", "1"}}));
}

TEST(LineScan, QuotesInTextsDoNotEndThem) {
  EXPECT_EQ(members_of(R"({"a":"x\"y,","b\\":"\\"})"),
            (Members{{"a", R"("x\"y,")"}, {R"(b\\)", R"("\\")"}}));
}

TEST(LineScan, EmptyObjectHasNoMember) { EXPECT_EQ(members_of("{}"), Members{}); }

TEST(LineScan, LineThatIsNoObjectHasNoMember) {
  for (const char *line : {"", "x", "[1,2]", "\"a\":1", "{", "{\"", "{\"a", "{\"a\"", "{\"a\":"}) {
    EXPECT_EQ(members_of(line), Members{}) << line;
  }
}

TEST(LineScan, LineThatIsCutEndsWithTheLastWholeMember) {
  EXPECT_EQ(members_of(R"({"a":1,"b":"xy)"), (Members{{"a", "1"}}));
  EXPECT_EQ(members_of(R"({"a":1,"b":"xy\)"), (Members{{"a", "1"}}));
  EXPECT_EQ(members_of(R"({"a":1,"b":{"c":1)"), (Members{{"a", "1"}}));
  EXPECT_EQ(members_of(R"({"a":1,"b":12)"), (Members{{"a", "1"}}));
}

TEST(Unquote, PlainTextStandsForItself) { EXPECT_EQ(unquoted("\"a/b\xC3\xA9\""), "a/b\xC3\xA9"); }

TEST(Unquote, EscapesStandForTheirCharacters) {
  EXPECT_EQ(unquoted(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
}

TEST(Unquote, UnitsStandForCharacters) {
  EXPECT_EQ(unquoted(R"("\u0041\u00e9\u20AC")"), "A\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(unquoted(R"("\ud83d\ude00")"), "\xF0\x9F\x98\x80");
  EXPECT_EQ(unquoted(R"("\u0000x")"), std::string("\0x", 2));
}

TEST(Unquote, WhatIsNoTextIsRefused) {
  for (const char *text : {"", "\"", "x", "null", "\"x", R"("\x")", R"("\u12")", R"("\u12g4")",
                           R"("\ud83d")", R"("\ud83dx")", R"("\ud83d\u0041")"}) {
    EXPECT_EQ(unquoted(text), "(no text)") << text;
  }
}

}  // namespace
