#include "views/xml.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <string_view>

#include "tests/views/view_lines.h"

using namespace tarvik;

namespace {

std::string text_of(std::string_view bytes, bool left_out) {
  bool found = !left_out;
  std::string text = xml_text(bytes, &found);
  EXPECT_EQ(found, left_out);
  return text;
}

TEST(XmlText, PlainTextStays) { EXPECT_EQ(text_of("a <b> & c", false), "a <b> & c"); }
TEST(XmlText, WhiteSpaceStays) { EXPECT_EQ(text_of("a\tb\nc\rd", false), "a\tb\nc\rd"); }
TEST(XmlText, ControlCharactersAreLeftOut) {
  EXPECT_EQ(text_of("\x01"
                    "a\x1F"
                    "b\x0C",
                    true),
            "ab");
}
TEST(XmlText, DeleteStays) { EXPECT_EQ(text_of("a\x7F", false), "a\x7F"); }
TEST(XmlText, NonCharactersAreLeftOut) {
  EXPECT_EQ(text_of("a\xEF\xBF\xBE\xEF\xBF\xBF"
                    "b\xEF\xBF\xBD",
                    true),
            "ab\xEF\xBF\xBD");
}
TEST(XmlText, BytesThatAreNoUtf8AreLatin1) { EXPECT_EQ(text_of("\xE9", false), "\xC3\xA9"); }

std::string real(double value) {
  std::array<char, 64> room;
  return {room.data(), put_xml_real(room.data(), value)};
}

TEST(PutXmlReal, DigitsAreThoseOfJson) {
  EXPECT_EQ(real(2.4596e13), "2.4596e13");
  EXPECT_EQ(real(-0.0), "-0");
}
TEST(PutXmlReal, InfinityIsThatOfSchemas) {
  EXPECT_EQ(real(std::numeric_limits<double>::infinity()), "INF");
  EXPECT_EQ(real(-std::numeric_limits<double>::infinity()), "-INF");
}

TEST(Xml, ElementsAreIndented) {
  TextSink sink;
  Xml xml(&sink);
  xml.declare();
  xml.start("a");
  xml.attribute("b", "\"<&\n");
  xml.start("c");
  xml.element("d", "<>&");
  xml.elements()->put("\n  <e>1</e>");
  xml.end();
  xml.element("f", 0.5);
  xml.end();
  EXPECT_TRUE(xml.flush());
  EXPECT_EQ(sink.text(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<a b=\"&quot;&lt;&amp;&#10;\">\n"
            " <c>\n"
            "  <d>&lt;&gt;&amp;</d>\n"
            "  <e>1</e>\n"
            " </c>\n"
            " <f>0.5</f>\n"
            "</a>\n");
}

}  // namespace
