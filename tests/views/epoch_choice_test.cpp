#include "views/epoch_choice.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace tarvik;

namespace {

constexpr EpochCodes kChannel = {"XX", "DYNGA", "00", "BHZ"};
constexpr EpochCodes kNoLocation = {"XX", "DYNGA", "", "BHZ"};
constexpr EpochCodes kStation = {"XX", "DYNGA", "", ""};

bool takes(const EpochOptions &options, const EpochCodes &codes) {
  return EpochChoice(options).takes(codes, nullptr, nullptr);
}

bool takes(const EpochOptions &options, double start, double end) {
  SDBlkEntry starts = {};
  starts.value.d = start;
  SDBlkEntry ends = {};
  ends.value.d = end;
  return EpochChoice(options).takes(kChannel, &starts, &ends);
}

TEST(EpochChoice, WithoutOptionsAllIsTaken) {
  EXPECT_TRUE(takes({}, kChannel));
  EXPECT_TRUE(takes({}, 0, 1));
}

TEST(EpochChoice, LocationStandsLastWhereThereIsOne) {
  EXPECT_TRUE(
      takes({.accept = {"^XX_DYNGA_BHZ_00$"}, .reject = {}, .from = {}, .to = {}}, kChannel));
  EXPECT_TRUE(
      takes({.accept = {"^XX_DYNGA_BHZ$"}, .reject = {}, .from = {}, .to = {}}, kNoLocation));
  EXPECT_TRUE(takes({.accept = {"^XX_DYNGA_$"}, .reject = {}, .from = {}, .to = {}}, kStation));
}

TEST(EpochChoice, PatternsAreExtendedAndSearched) {
  EXPECT_TRUE(takes({.accept = {"_BH(Z|N)"}, .reject = {}, .from = {}, .to = {}}, kChannel));
  EXPECT_FALSE(takes({.accept = {"_LH(Z|N)"}, .reject = {}, .from = {}, .to = {}}, kChannel));
}

TEST(EpochChoice, OneOfAcceptIsEnough) {
  EXPECT_TRUE(takes({.accept = {"LHZ", "BHZ"}, .reject = {}, .from = {}, .to = {}}, kChannel));
}

TEST(EpochChoice, RejectWins) {
  EXPECT_FALSE(
      takes({.accept = {"BHZ"}, .reject = {"LHZ", "_00$"}, .from = {}, .to = {}}, kChannel));
  EXPECT_TRUE(takes({.accept = {}, .reject = {"_00$"}, .from = {}, .to = {}}, kNoLocation));
}

TEST(EpochChoice, EpochThatBeginsAfterToIsLeftOut) {
  EXPECT_TRUE(takes({.accept = {}, .reject = {}, .from = {}, .to = 100000}, 10, 20));
  EXPECT_FALSE(takes({.accept = {}, .reject = {}, .from = {}, .to = 99999}, 10, 20));
}

TEST(EpochChoice, EpochThatEndsBeforeFromIsLeftOut) {
  EXPECT_TRUE(takes({.accept = {}, .reject = {}, .from = 200000, .to = {}}, 10, 20));
  EXPECT_FALSE(takes({.accept = {}, .reject = {}, .from = 200001, .to = {}}, 10, 20));
}

TEST(EpochChoice, MissingTimesAreOpen) {
  EXPECT_TRUE(takes({.accept = {}, .reject = {}, .from = 1, .to = -1}, kChannel));
}

TEST(EpochChoice, PatternWithAFaultThrows) {
  EXPECT_THROW(EpochChoice({.accept = {"a", "("}, .reject = {}, .from = {}, .to = {}}),
               std::invalid_argument);
}

TEST(PatternFault, GoodPatternHasNone) { EXPECT_EQ(pattern_fault("^XX_(A|B)"), ""); }
TEST(PatternFault, FaultIsToldInWords) { EXPECT_NE(pattern_fault("("), ""); }

}  // namespace
