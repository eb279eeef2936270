#include "sdblk/options.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

using namespace tarvik;

namespace {

using Texts = std::vector<std::string>;

// What the verb "words" was told.
bool loud = false;
Texts words;

void declare_words(OptionList *options, Chosen *chosen) {
  loud = false;
  words.clear();
  options->flag("--loud", &loud, "Loud");
  const auto take = [](const std::string &word) {
    words.push_back(word);
    return std::string();
  };
  options->arguments("--word", "WORD", take, "A word");
  options->path("--known", "LIST", &chosen->known, "A list");
}
void declare_nothing(OptionList * /*options*/, Chosen * /*chosen*/) {}
Heading heading() { return "a,b"; }
std::string schema() { return "{}\n"; }

constexpr std::array kVerbs = {
    Verb{"words", "What is said", declare_words, heading, schema},
    Verb{"plain", "Nothing of its own", declare_nothing, nullptr, nullptr},
};

class ParseOptionsTest : public testing::Test {
 protected:
  Parsed parse(const Texts &arguments) {
    options_ = Options();
    text_.clear();
    std::vector<const char *> argv = {"sdblk"};
    for (const std::string &argument : arguments) argv.push_back(argument.c_str());
    return parse_options(static_cast<int>(argv.size()), argv.data(), kVerbs, &options_, &text_);
  }

  // The complaint about a command line, without the hint after it; empty where there is none.
  std::string fault(const Texts &arguments) {
    if (parse(arguments) != Parsed::fault) return "";
    return text_.substr(0, text_.find('\n'));
  }

  Options options_;
  std::string text_;
};

TEST_F(ParseOptionsTest, FilesAreAllThatIsLeft) {
  ASSERT_EQ(parse({"plain", "a", "-j", "2", "b", "-"}), Parsed::options);
  EXPECT_STREQ(options_.verb->name, "plain");
  EXPECT_EQ(options_.files, (Texts{"a", "b", "-"}));
}

TEST_F(ParseOptionsTest, DefaultsHold) {
  ASSERT_EQ(parse({"plain", "a"}), Parsed::options);
  EXPECT_EQ(options_.workers, 1);
  EXPECT_EQ(options_.view.record_length, 4096);
  EXPECT_FALSE(options_.view.csv);
  EXPECT_FALSE(options_.nul);
  EXPECT_FALSE(options_.schema);
  EXPECT_EQ(options_.output, "");
  EXPECT_EQ(options_.files_from, "");
}

TEST_F(ParseOptionsTest, EachOptionSetsItsVariable) {
  ASSERT_EQ(parse({"words", "--files-from", "l", "-0", "-j", "7", "-o", "out", "--record-length",
                   "512", "--csv", "--loud"}),
            Parsed::options);
  EXPECT_EQ(options_.files_from, "l");
  EXPECT_TRUE(options_.nul);
  EXPECT_EQ(options_.workers, 7);
  EXPECT_EQ(options_.output, "out");
  EXPECT_EQ(options_.view.record_length, 512);
  EXPECT_TRUE(options_.view.csv);
  EXPECT_TRUE(loud);
}

TEST_F(ParseOptionsTest, ArgumentsMayBeJoined) {
  ASSERT_EQ(parse({"plain", "-j3", "-oout", "--record-length=64", "--files-from=-"}),
            Parsed::options);
  EXPECT_EQ(options_.workers, 3);
  EXPECT_EQ(options_.output, "out");
  EXPECT_EQ(options_.view.record_length, 64);
  EXPECT_EQ(options_.files_from, "-");
}

TEST_F(ParseOptionsTest, ArgumentsAreTakenAsTheyStand) {
  const Texts odd = {"[a]", "[a,b]", "a,b", "{}", "%%", "", "words", "1", "a=b", "#", "'x'"};
  Texts arguments = {"plain"};
  arguments.insert(arguments.end(), odd.begin(), odd.end());
  ASSERT_EQ(parse(arguments), Parsed::options);
  EXPECT_EQ(options_.files, odd);
}

TEST_F(ParseOptionsTest, RepeatedOptionKeepsEachArgumentAsItStands) {
  ASSERT_EQ(parse({"words", "a", "--word", "[BH]", "--word=[x,y]", "b", "--word", "{}"}),
            Parsed::options);
  EXPECT_EQ(words, (Texts{"[BH]", "[x,y]", "{}"}));
  EXPECT_EQ(options_.files, (Texts{"a", "b"}));
}

TEST_F(ParseOptionsTest, AfterTheMarkAllAreFiles) {
  ASSERT_EQ(parse({"plain", "a", "--", "-j", "--help", "--", "b"}), Parsed::options);
  EXPECT_EQ(options_.files, (Texts{"a", "-j", "--help", "--", "b"}));
}

TEST_F(ParseOptionsTest, RecordLengthIsAPowerOfTwo) {
  for (const char *length : {"64", "128", "4096", "65536", "131072"}) {
    ASSERT_EQ(parse({"plain", "a", "--record-length", length}), Parsed::options) << length;
    EXPECT_EQ(std::to_string(options_.view.record_length), length);
  }
  for (const char *length : {"32", "63", "65", "100", "262144", "0", "-64", "64x", "0x40", "",
                             "1e3", "4096.0", " 64", "99999999999999"}) {
    EXPECT_EQ(fault({"plain", "a", "--record-length", length}),
              "sdblk: --record-length: '" + std::string(length) +
                  "' is no power of two from 64 to 131072");
  }
}

TEST_F(ParseOptionsTest, NoWorkersAreAsManyAsProcessors) {
  ASSERT_EQ(parse({"plain", "a", "-j", "0"}), Parsed::options);
  EXPECT_EQ(options_.workers, static_cast<int>(std::thread::hardware_concurrency()));
}

TEST_F(ParseOptionsTest, WorkersAreANumber) {
  for (const char *number : {"-1", "x", "", "1.5", "0x2", "99999999999"}) {
    EXPECT_EQ(fault({"plain", "a", "-j", number}),
              "sdblk: -j: '" + std::string(number) + "' is no number of files");
  }
}

TEST_F(ParseOptionsTest, WrongUsageIsTold) {
  EXPECT_EQ(fault({}), "sdblk: no verb is given");
  EXPECT_EQ(fault({"other", "a"}), "sdblk: 'other' is no verb");
  EXPECT_EQ(fault({"--csv"}), "sdblk: '--csv' is no verb");
  EXPECT_NE(fault({"--csv", "words", "a"}), "");
  EXPECT_EQ(fault({"plain"}), "sdblk: no FILE is given");
  EXPECT_EQ(fault({"plain", "--"}), "sdblk: no FILE is given");
  EXPECT_EQ(fault({"plain", "a", "-o", ""}), "sdblk: -o: the path is empty");
  EXPECT_EQ(fault({"plain", "a", "--files-from", ""}), "sdblk: --files-from: the path is empty");
  EXPECT_EQ(fault({"words", "a", "--csv", "--known", "l"}), "sdblk: --known goes without --csv");
  EXPECT_EQ(fault({"plain", "a", "-o"}), "sdblk: -o: the argument is missing");
  EXPECT_EQ(fault({"words", "a", "--word"}), "sdblk: --word: the argument is missing");
  EXPECT_EQ(fault({"plain", "a", "-o", "x", "-o", "y"}), "sdblk: -o: is given more than once");
  EXPECT_EQ(fault({"plain", "a", "--bogus"}), "sdblk: '--bogus' is no option");
  EXPECT_EQ(fault({"plain", "-x", "a"}), "sdblk: '-x' is no option");
  EXPECT_EQ(fault({"plain", "a", "--rec", "64"}), "sdblk: '--rec' is no option");
}

TEST_F(ParseOptionsTest, OptionsOfOtherVerbsAreWrong) {
  EXPECT_NE(fault({"plain", "a", "--loud"}), "");
  EXPECT_NE(fault({"plain", "a", "--csv"}), "");
  EXPECT_NE(fault({"plain", "--schema"}), "");
}

TEST_F(ParseOptionsTest, ComplaintEndsInAHint) {
  parse({"plain"});
  EXPECT_EQ(text_, "sdblk: no FILE is given\nTry 'sdblk plain --help'.\n");
  parse({});
  EXPECT_EQ(text_, "sdblk: no verb is given\nTry 'sdblk --help'.\n");
}

TEST_F(ParseOptionsTest, ListAloneIsEnough) {
  ASSERT_EQ(parse({"plain", "--files-from", "-"}), Parsed::options);
  EXPECT_EQ(options_.files, Texts{});
}

TEST_F(ParseOptionsTest, SchemaNeedsNoFile) {
  ASSERT_EQ(parse({"words", "--schema"}), Parsed::options);
  EXPECT_TRUE(options_.schema);
}

TEST_F(ParseOptionsTest, HelpNamesTheVerbs) {
  ASSERT_EQ(parse({"--help"}), Parsed::answer);
  EXPECT_NE(text_.find("words"), std::string::npos);
  EXPECT_NE(text_.find("Nothing of its own"), std::string::npos);
}

TEST_F(ParseOptionsTest, HelpOfAVerbNamesItsOptions) {
  ASSERT_EQ(parse({"words", "--help"}), Parsed::answer);
  for (const char *name :
       {"--files-from LIST", "-0", "-j N", "-o FILE", "--record-length BYTES", "[FILE...]", "--csv",
        "--schema", "--loud", "--word WORD", "--help", "--version"}) {
    EXPECT_NE(text_.find(name), std::string::npos) << name;
  }
}

TEST_F(ParseOptionsTest, VersionIsThatOfTheProject) {
  for (const Texts &arguments : {Texts{"--version"}, Texts{"plain", "--version"}}) {
    ASSERT_EQ(parse(arguments), Parsed::answer);
    EXPECT_EQ(text_, "sdblk " SDBLK_VERSION "\n");
  }
}

}  // namespace
