#include "support/formatted_text.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

#include "support/memory.h"

using namespace tarvik;

namespace {

FormattedText text;  // all its bytes are 0

SDBLK_PRINTF(2, 3) void format(std::size_t spare, const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  text.format(format, arguments, spare);
  va_end(arguments);
}

class FormattedTextTest : public testing::Test {
 protected:
  ~FormattedTextTest() override {
    memory_set_gate(nullptr);
    text.clear();
  }
};

TEST_F(FormattedTextTest, HoldsWhatWasFormattedLast) {
  EXPECT_EQ(text.view(), "");
  format(0, "%d %s", 12, "blocks");
  EXPECT_EQ(text.view(), "12 blocks");
  format(0, "%s", "");
  EXPECT_EQ(text.view(), "");
}

TEST_F(FormattedTextTest, AppendsIntoTheSpareRoom) {
  for (const std::size_t size : {0U, 1018U, 1019U, 1020U, 1023U, 1024U, 5000U}) {
    const std::string front(size, 'x');
    format(4, "%s", front.c_str());
    text.append("back");
    EXPECT_EQ(text.view(), front + "back") << size;
  }
}

TEST_F(FormattedTextTest, WithoutMemoryALongTextIsCutBeforeTheSpareRoom) {
  memory_set_gate([](std::size_t) { return false; });
  format(4, "%s", std::string(5000, 'x').c_str());
  EXPECT_EQ(text.view(), std::string(1019, 'x'));
  text.append("back");
  EXPECT_EQ(text.view(), std::string(1019, 'x') + "back");
}

TEST_F(FormattedTextTest, NoMoreIsAppendedThanFits) {
  format(0, "%s", std::string(1020, 'x').c_str());
  text.append("12345678");
  EXPECT_EQ(text.view(), std::string(1020, 'x') + "1234");
}

}  // namespace
