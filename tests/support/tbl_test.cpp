#include "support/tbl.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "support/memory.h"

using namespace tarvik;

namespace {

struct FreeTbl {
  void operator()(Tbl *tbl) const { freetbl(tbl, nullptr); }
};
using OwnedTbl = std::unique_ptr<Tbl, FreeTbl>;

int freed = 0;
void count_freed(void *) { ++freed; }

// The texts stay the caller's; a list holds pointers.
OwnedTbl list_of(std::vector<std::string> &texts) {
  OwnedTbl list(newtbl());
  for (std::string &text : texts) settbl(list.get(), -1, text.data());
  return list;
}

// The patterns that match, joined by commas; "null" for no answer.
std::string matches_of(Tbl *patterns, const char *text) {
  const OwnedTbl answer(tblgrep(patterns, text));
  if (answer == nullptr) return "null";
  std::string joined;
  for (long i = 0; i < counttbl(answer.get()); ++i) {
    joined += (i > 0 ? "," : "") + std::string(static_cast<char *>(gettbl(answer.get(), i)));
  }
  return joined;
}

TEST(Newtbl, IsEmpty) {
  const OwnedTbl list(newtbl());
  EXPECT_EQ(counttbl(list.get()), 0);
  EXPECT_EQ(gettbl(list.get(), 0), nullptr);
}

TEST(Newtbl, MemoryExhaustedGivesNull) {
  memory_set_gate([](std::size_t) { return false; });
  EXPECT_EQ(newtbl(), nullptr);
  memory_set_gate(nullptr);
}

TEST(Settbl, MinusOneAppendsAndReturnsThePosition) {
  const OwnedTbl list(newtbl());
  std::vector<int> values(100);
  for (long i = 0; i < 100; ++i) {
    EXPECT_EQ(settbl(list.get(), -1, &values[static_cast<std::size_t>(i)]), i);
  }
  EXPECT_EQ(counttbl(list.get()), 100);
  EXPECT_EQ(gettbl(list.get(), 0), &values[0]);
  EXPECT_EQ(gettbl(list.get(), 99), &values[99]);
}

TEST(Settbl, PositionAfterTheEndFillsTheGapWithNull) {
  const OwnedTbl list(newtbl());
  int value = 0;
  EXPECT_EQ(settbl(list.get(), 20, &value), 20);
  EXPECT_EQ(counttbl(list.get()), 21);
  EXPECT_EQ(gettbl(list.get(), 0), nullptr);
  EXPECT_EQ(gettbl(list.get(), 19), nullptr);
  EXPECT_EQ(gettbl(list.get(), 20), &value);
}

TEST(Settbl, TakenPositionIsReplaced) {
  const OwnedTbl list(newtbl());
  int first = 0;
  int second = 0;
  settbl(list.get(), -1, &first);
  EXPECT_EQ(settbl(list.get(), 0, &second), 0);
  EXPECT_EQ(counttbl(list.get()), 1);
  EXPECT_EQ(gettbl(list.get(), 0), &second);
}

TEST(Settbl, OtherNegativePositionIsRefused) {
  const OwnedTbl list(newtbl());
  EXPECT_EQ(settbl(list.get(), -2, nullptr), -1);
  EXPECT_EQ(settbl(list.get(), LONG_MIN, nullptr), -1);
  EXPECT_EQ(counttbl(list.get()), 0);
}

TEST(Settbl, PositionBeyondAllMemoryIsRefused) {
  const OwnedTbl list(newtbl());
  EXPECT_EQ(settbl(list.get(), LONG_MAX, nullptr), -1);
  EXPECT_EQ(settbl(list.get(), LONG_MAX - 1, nullptr), -1);
  EXPECT_EQ(settbl(list.get(), LONG_MAX / 8, nullptr), -1);
  EXPECT_EQ(counttbl(list.get()), 0);
}

TEST(Settbl, NullListIsRefused) { EXPECT_EQ(settbl(nullptr, -1, nullptr), -1); }

TEST(Settbl, MemoryExhaustedLeavesTheListAsItWas) {
  const OwnedTbl list(newtbl());
  int value = 0;
  settbl(list.get(), -1, &value);
  memory_set_gate([](std::size_t) { return false; });
  EXPECT_EQ(settbl(list.get(), 1000, &value), -1);
  memory_set_gate(nullptr);
  EXPECT_EQ(counttbl(list.get()), 1);
  EXPECT_EQ(gettbl(list.get(), 0), &value);
}

TEST(Gettbl, OutsideTheListGivesNull) {
  const OwnedTbl list(newtbl());
  int value = 0;
  settbl(list.get(), -1, &value);
  EXPECT_EQ(gettbl(list.get(), -1), nullptr);
  EXPECT_EQ(gettbl(list.get(), 1), nullptr);
  EXPECT_EQ(gettbl(nullptr, 0), nullptr);
}

TEST(Counttbl, NullListHasNoElements) { EXPECT_EQ(counttbl(nullptr), 0); }

TEST(Freetbl, EachElementThatIsNotNullIsReleased) {
  Tbl *list = newtbl();
  int value = 0;
  settbl(list, 0, &value);
  settbl(list, 5, &value);
  freed = 0;
  freetbl(list, count_freed);
  EXPECT_EQ(freed, 2);
}

TEST(Freetbl, NullListReleasesNothing) {
  freed = 0;
  freetbl(nullptr, count_freed);
  EXPECT_EQ(freed, 0);
}

TEST(Tblgrep, PatternIsSearchedAnywhere) {
  std::vector<std::string> texts = {"BH", "XX", "_B"};
  EXPECT_EQ(matches_of(list_of(texts).get(), "IU_ANMO_BHZ_00"), "BH,_B");
}

TEST(Tblgrep, AnchorsHold) {
  std::vector<std::string> texts = {"^IU", "^ANMO", "00$", "BHZ$"};
  EXPECT_EQ(matches_of(list_of(texts).get(), "IU_ANMO_BHZ_00"), "^IU,00$");
}

TEST(Tblgrep, ExpressionsAreExtended) {
  std::vector<std::string> texts = {"(LH|BH)[ZNE]", "A{2}", "O_?B+H"};
  EXPECT_EQ(matches_of(list_of(texts).get(), "IU_ANMO_BHZ_00"), "(LH|BH)[ZNE],O_?B+H");
}

TEST(Tblgrep, AnswerHoldsTheSamePointers) {
  std::vector<std::string> texts = {"A"};
  const OwnedTbl list = list_of(texts);
  const OwnedTbl answer(tblgrep(list.get(), "A"));
  EXPECT_EQ(gettbl(answer.get(), 0), texts[0].data());
}

TEST(Tblgrep, NoMatchGivesAnEmptyList) {
  std::vector<std::string> texts = {"X"};
  EXPECT_EQ(matches_of(list_of(texts).get(), "IU"), "");
}

TEST(Tblgrep, InvalidExpressionMakesTheWholeAnswerNull) {
  std::vector<std::string> texts = {"A", "(", "A"};
  const OwnedTbl list = list_of(texts);
  EXPECT_EQ(matches_of(list.get(), "A"), "null");
  EXPECT_EQ(matches_of(list.get(), "A"), "null");
}

TEST(Tblgrep, NullElementIsNoExpression) {
  std::vector<std::string> texts = {"A"};
  const OwnedTbl list = list_of(texts);
  settbl(list.get(), 2, texts[0].data());
  EXPECT_EQ(matches_of(list.get(), "A"), "null");
}

TEST(Tblgrep, NullListMatchesNothing) { EXPECT_EQ(matches_of(nullptr, "A"), ""); }

TEST(Tblgrep, ReplacedPatternIsCompiledAgain) {
  std::vector<std::string> texts = {"A", "B"};
  const OwnedTbl list = list_of(texts);
  EXPECT_EQ(matches_of(list.get(), "A"), "A");
  std::string other = "[AC]";
  settbl(list.get(), 0, other.data());
  EXPECT_EQ(matches_of(list.get(), "C"), "[AC]");
  EXPECT_EQ(matches_of(list.get(), "B"), "B");
}

TEST(Tblgrep, AppendedPatternIsUsed) {
  std::vector<std::string> texts = {"A"};
  const OwnedTbl list = list_of(texts);
  EXPECT_EQ(matches_of(list.get(), "AB"), "A");
  std::string other = "B";
  settbl(list.get(), -1, other.data());
  EXPECT_EQ(matches_of(list.get(), "AB"), "A,B");
}

TEST(Tblgrep, PatternIsCompiledOnce) {
  std::vector<std::string> texts = {"A"};
  const OwnedTbl list = list_of(texts);
  EXPECT_EQ(matches_of(list.get(), "X"), "");
  static int allocations;
  allocations = 0;
  memory_set_gate([](std::size_t) { return ++allocations > 0; });
  EXPECT_EQ(matches_of(list.get(), "X"), "");
  memory_set_gate(nullptr);
  EXPECT_EQ(allocations, 1) << "the answer alone";
}

TEST(Tblgrep, MemoryExhaustedAtAnyAllocationGivesNull) {
  static int allowed;
  // The answer, the places for compiled patterns, a pattern, and the answer's first element.
  for (int failing = 0; failing < 4; ++failing) {
    std::vector<std::string> texts = {"A"};
    const OwnedTbl list = list_of(texts);
    allowed = failing;
    memory_set_gate([](std::size_t) { return allowed-- > 0; });
    EXPECT_EQ(matches_of(list.get(), "A"), "null") << failing;
    memory_set_gate(nullptr);
    EXPECT_EQ(matches_of(list.get(), "A"), "A") << failing;
  }
}

}  // namespace
