#include "views/csv.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

TEST(CsvText, CommaIsQuoted) { EXPECT_EQ(csv_text("Black Forest, no"), "\"Black Forest, no\""); }
TEST(CsvText, TextWithoutSpecialCharactersIsBare) { EXPECT_EQ(csv_text(" a;b'c\t"), " a;b'c\t"); }
TEST(CsvText, EmptyTextIsNothing) { EXPECT_EQ(csv_text(""), ""); }
TEST(CsvText, QuoteIsDoubled) { EXPECT_EQ(csv_text("5\" pipe"), "\"5\"\" pipe\""); }
TEST(CsvText, LineEndsAreQuoted) {
  EXPECT_EQ(csv_text("a\nb"), "\"a\nb\"");
  EXPECT_EQ(csv_text("a\rb"), "\"a\rb\"");
}
TEST(CsvText, BytesThatAreNoUtf8AreLatin1) {
  EXPECT_EQ(csv_text("\xE9t\xE9"), "\xC3\xA9t\xC3\xA9");
}
TEST(CsvText, Utf8StaysAsItIs) { EXPECT_EQ(csv_text("\xC3\xA9"), "\xC3\xA9"); }

}  // namespace
