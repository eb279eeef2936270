// One field's bytes.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "tests/seed/walked.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

namespace {

struct Cut {
  std::string text;
  std::ptrdiff_t consumed;
  std::int32_t remaining;
};

Cut cut(char stype, std::int32_t width, std::string_view bytes) {
  const SDBlkFieldDef def = field("k", stype, width, "", SDBLK_STRING);
  const std::vector<char> exact(bytes.begin(), bytes.end());
  const char *cursor = exact.data();
  auto remaining = static_cast<std::int32_t>(exact.size());
  std::array<char, 4096> text;
  text.fill('#');
  EXPECT_EQ(sdblk_parse_sentry(&def, &cursor, &remaining, text.data()), 0);
  return {text.data(), cursor - exact.data(), remaining};
}

void expect_cut(const Cut &actual, std::string_view text, std::ptrdiff_t consumed,
                std::int32_t remaining) {
  EXPECT_EQ(actual.text, text);
  EXPECT_EQ(actual.consumed, consumed);
  EXPECT_EQ(actual.remaining, remaining);
}

TEST(ParseSentry, FixedTextIsTrimmed) {
  for (const char stype : {'A', 'D', 'F'}) expect_cut(cut(stype, 5, " a b cd"), "a b", 5, 2);
}

TEST(ParseSentry, FixedTextIsCutByTheEnd) { expect_cut(cut('A', 9, " ab"), "ab", 3, 0); }

TEST(ParseSentry, FixedTextEndsAtAZeroByte) { expect_cut(cut('A', 4, {"ab\0c", 4}), "ab", 4, 0); }

TEST(ParseSentry, BinaryBytesAreNotTrimmed) { expect_cut(cut('B', 3, " a bc"), " a ", 3, 2); }

TEST(ParseSentry, BinaryBytesAreCutByTheEnd) { expect_cut(cut('B', 4, "ab"), "ab", 2, 0); }

TEST(ParseSentry, VariableTextTakesItsTerminator) {
  expect_cut(cut('V', 2, " abc ~d"), "abc", 6, 1);
}

TEST(ParseSentry, VariableTextWithoutTerminatorTakesAll) {
  expect_cut(cut('V', 2, "ab  "), "ab  ", 4, 0);
}

TEST(ParseSentry, OtherStorageTypesTakeNothing) {
  expect_cut(cut('\0', 3, "abc"), "", 0, 3);
  expect_cut(cut('Z', 3, "abc"), "", 0, 3);
}

}  // namespace
