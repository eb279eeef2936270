#include "seed/whole/findings.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/util/whole_reader.h"

namespace {

using tarvik::report_note;
using tarvik::report_skip;

// What a program was told.
struct Told {
  Lines lines;
  std::vector<std::string> texts;
};
void take(void *context, const SDBlkFinding *finding) {
  auto *told = static_cast<Told *>(context);
  told->lines.push_back(line_of(*finding));
  told->texts.emplace_back(finding->text);
}
std::unique_ptr<SDBlkWhole> telling(Told *told) {
  return std::make_unique<SDBlkWhole>(SDBlkWholeOptions{take, told, SDBLK_KEEP_FIRST});
}

TEST(SdblkCauseName, NamesEachCause) {
  Lines names;
  for (int cause = 0; cause < SDBLK_CAUSES; ++cause) {
    names.emplace_back(sdblk_cause_name(static_cast<SDBlkCause>(cause)));
  }
  EXPECT_EQ(names, (Lines{"padding", "garbage", "prefix", "length", "unconfirmed", "cut", "order",
                          "chain", "value", "short", "again"}));
  EXPECT_STREQ(sdblk_cause_name(static_cast<SDBlkCause>(SDBLK_CAUSES)), "");
}

TEST(ReportSkip, TellsItsPlaceLengthAndASentence) {
  Told told;
  const auto whole = telling(&told);
  report_skip(whole.get(), SDBLK_SKIP_PADDING, 100, 28);
  report_skip(whole.get(), SDBLK_SKIP_GARBAGE, 128, 1);
  report_skip(whole.get(), SDBLK_SKIP_PREFIX, 200, 56);
  EXPECT_EQ(told.lines, (Lines{"padding 100+28", "garbage 128+1", "prefix 200+56"}));
  EXPECT_EQ(told.texts[0], "padding between records");
  EXPECT_EQ(told.texts[1], "no record header begins here");
  EXPECT_EQ(told.texts[2], "no blockette begins here; the rest of the record is passed over");
}

TEST(ReportSkip, CountsPaddingApart) {
  Told told;
  const auto whole = telling(&told);
  report_skip(whole.get(), SDBLK_SKIP_PADDING, 0, 28);
  report_skip(whole.get(), SDBLK_SKIP_GARBAGE, 28, 2);
  report_skip(whole.get(), SDBLK_SKIP_PREFIX, 50, 30);
  EXPECT_EQ(whole->counts.padding_bytes, 28);
  EXPECT_EQ(whole->counts.skipped_bytes, 32);
  EXPECT_EQ(whole->counts.findings[SDBLK_SKIP_PADDING], 1);
  EXPECT_EQ(whole->counts.findings[SDBLK_SKIP_GARBAGE], 1);
  EXPECT_EQ(whole->counts.findings[SDBLK_SKIP_PREFIX], 1);
}

TEST(ReportNote, TellsItsBlockFieldAndSentence) {
  Told told;
  const auto whole = telling(&told);
  report_note(whole.get(), SDBLK_NOTE_VALUE, 8, 3, "lat", "%s is %d", "lat", 7);
  report_note(whole.get(), SDBLK_NOTE_LENGTH, 512, -1, nullptr, "short");
  EXPECT_EQ(told.lines, (Lines{"value @8 block 3 lat", "length @512"}));
  EXPECT_EQ(told.texts[0], "lat is 7");
  EXPECT_EQ(whole->counts.findings[SDBLK_NOTE_VALUE], 1);
  EXPECT_EQ(whole->counts.skipped_bytes, 0);
}

TEST(ReportNote, LongSentenceIsCut) {
  Told told;
  const auto whole = telling(&told);
  report_note(whole.get(), SDBLK_NOTE_VALUE, 8, 3, "lat", "%s", std::string(1000, 'x').c_str());
  EXPECT_EQ(told.texts[0], std::string(255, 'x'));
}

TEST(Report, FindingsCountWhereNobodyTakesThem) {
  SDBlkWhole whole({nullptr, nullptr, SDBLK_KEEP_FIRST});
  report_skip(&whole, SDBLK_SKIP_GARBAGE, 0, 5);
  report_note(&whole, SDBLK_NOTE_CUT, 0, -1, nullptr, "cut");
  EXPECT_EQ(whole.counts.skipped_bytes, 5);
  EXPECT_EQ(whole.counts.findings[SDBLK_NOTE_CUT], 1);
}

}  // namespace
