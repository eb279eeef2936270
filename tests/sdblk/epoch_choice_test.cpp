#include "sdblk/epoch_choice.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "sdblk/options.h"

using namespace tarvik;

namespace {

using Texts = std::vector<std::string>;

// What the last command line chose.
std::shared_ptr<EpochOptions> chosen;

void declare(OptionList *options, Chosen * /*chosen*/) {
  chosen = std::make_shared<EpochOptions>();
  declare_epoch_choice(options, chosen);
}
std::string schema() { return "{}\n"; }

constexpr std::array kVerbs = {Verb{"epochs", "Some epochs", declare, nullptr, schema}};

// The complaint about the options, without the hint after it; empty where there is none.
std::string fault_of(const Texts &options) {
  std::vector<const char *> argv = {"sdblk", "epochs", "file"};
  for (const std::string &option : options) argv.push_back(option.c_str());
  Options parsed;
  std::string text;
  if (parse_options(static_cast<int>(argv.size()), argv.data(), kVerbs, &parsed, &text) !=
      Parsed::fault) {
    return "";
  }
  return text.substr(0, text.find('\n'));
}

TEST(DeclareEpochChoice, NothingChoosesAll) {
  EXPECT_EQ(fault_of({}), "");
  EXPECT_TRUE(chosen->accept.empty() && chosen->reject.empty());
  EXPECT_FALSE(chosen->from || chosen->to);
}

TEST(DeclareEpochChoice, PatternsMayBeSeveral) {
  EXPECT_EQ(fault_of({"--accept", "^XX_", "--accept", "[,]", "--reject", "BH.$"}), "");
  EXPECT_EQ(chosen->accept, (Texts{"^XX_", "[,]"}));
  EXPECT_EQ(chosen->reject, Texts{"BH.$"});
}

TEST(DeclareEpochChoice, PatternWithAFaultIsRefused) {
  EXPECT_EQ(fault_of({"--accept", "("}).substr(0, 22), "sdblk: --accept: '(': ");
  EXPECT_EQ(fault_of({"--reject", "["}).substr(0, 22), "sdblk: --reject: '[': ");
}

TEST(DeclareEpochChoice, TimesAreKept) {
  EXPECT_EQ(fault_of({"--from", "2021-03-16", "--to", "2021-03-16T06:15:52.6"}), "");
  EXPECT_EQ(chosen->from, parse_time_text("2021-03-16"));
  EXPECT_EQ(chosen->to, parse_time_text("2021-03-16T06:15:52.6"));
  EXPECT_TRUE(chosen->from < chosen->to);
}

TEST(DeclareEpochChoice, TextThatIsNoTimeIsRefused) {
  const std::string no_time = "' is no time such as 2021-03-16 or 2021-03-16T06:15:52.6";
  EXPECT_EQ(fault_of({"--from", "2021-02-30"}), "sdblk: --from: '2021-02-30" + no_time);
  EXPECT_EQ(fault_of({"--to", "soon"}), "sdblk: --to: 'soon" + no_time);
}

}  // namespace
