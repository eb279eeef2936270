#include "support/terminal.h"

#include <gtest/gtest.h>

#include <string>

using namespace tarvik;

namespace {

using std::string_literals::operator""s;

// What a terminal is shown of the text.
std::string shown(std::string text) {
  text.resize(hide_control_characters(text.data(), text.size()));
  return text;
}

TEST(HideControlCharacters, OfAsciiAllButNewlineAndTabAreHidden) {
  for (int c = 0; c < 128; ++c) {
    const bool control = (c < 32 && c != '\n' && c != '\t') || c == 127;
    const char byte = static_cast<char>(c);
    EXPECT_EQ(shown({byte}), std::string(1, control ? '?' : byte)) << c;
  }
}

TEST(HideControlCharacters, LoneBytesFrom128To159AreHiddenAndHigherOnesAreNot) {
  for (int c = 128; c < 256; ++c) {
    const char byte = static_cast<char>(c);
    EXPECT_EQ(shown({'a', byte, 'b'}), "a"s + (c <= 159 ? '?' : byte) + 'b') << c;
    EXPECT_EQ(shown({byte}), std::string(1, c <= 159 ? '?' : byte)) << c;
  }
}

TEST(HideControlCharacters, CharactersFromU0080ToU009FAreOneMark) {
  for (int c = 0x80; c <= 0x9f; ++c) {
    EXPECT_EQ(shown({'\xc2', static_cast<char>(c), 'b'}), "?b") << c;
  }
  EXPECT_EQ(shown("\xc2\xa0"), "\xc2\xa0");
}

TEST(HideControlCharacters, Utf8StaysAsItIs) {
  // The least and the greatest character of each range of well-formed sequences.
  for (const char *text :
       {"\xc2\xa0", "\xdf\xbf", "\xe0\xa0\x80", "\xe0\xbf\xbf", "\xe1\x80\x80", "\xec\xbf\xbf",
        "\xed\x80\x80", "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80",
        "\xf1\x80\x80\x80", "\xf3\xbf\xbf\xbf", "\xf4\x8f\xbf\xbf"}) {
    EXPECT_EQ(shown(text), text);
  }
}

TEST(HideControlCharacters, IllFormedSequencesProtectNothing) {
  EXPECT_EQ(shown("\xc0\x80"), "\xc0?");            // longer than need be
  EXPECT_EQ(shown("\xe0\x9f\x80"), "\xe0??");       // the same
  EXPECT_EQ(shown("\xed\xa0\x80"), "\xed\xa0?");    // half of a pair
  EXPECT_EQ(shown("\xf0\x8f\x80\x80"), "\xf0???");  // longer than need be
  EXPECT_EQ(shown("\xf4\x90\x80\x80"), "\xf4???");  // beyond the last character
  EXPECT_EQ(shown("\xf5\x80\x80\x80"), "\xf5???");
  EXPECT_EQ(shown("\xe2\x82"), "\xe2?");    // cut at the end
  EXPECT_EQ(shown("\xe2\x82z"), "\xe2?z");  // cut by something else
  EXPECT_EQ(shown("\xf1\x80\x80z"), "\xf1??z");
}

TEST(HideControlCharacters, TextClosesUpAfterAShorterMark) {
  EXPECT_EQ(shown("a\xc2\x85\xe2\x82\xac\x1b\xc2\x85z"), "a?\xe2\x82\xac??z");
  EXPECT_EQ(shown(""), "");
}

}  // namespace
