#include "cmd/options.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/util/log_capture.h"

using namespace tarvik;

namespace {

constexpr char kUsage[] =
    "usage: tarvik [-lsize logical_size] [-types tlist] [-v[v]] [-sta] seedfile\n";

// The arguments after the program's name, parsed.
struct Parsed {
  Options options;
  bool accepted;
  std::string log;

  Parsed(std::initializer_list<const char *> arguments) {
    texts_.assign(arguments.begin(), arguments.end());
    texts_.insert(texts_.begin(), "tarvik");
    std::vector<char *> argv;
    for (std::string &text : texts_) argv.push_back(text.data());
    argv.push_back(nullptr);
    const LogCapture capture;
    accepted = parse_options(static_cast<int>(texts_.size()), argv.data(), &options);
    log = capture.text();
  }

 private:
  std::vector<std::string> texts_;
};

TEST(ParseOptions, VolumeAloneGivesDefaults) {
  const Parsed parsed{"a.seed"};
  ASSERT_TRUE(parsed.accepted);
  EXPECT_EQ(parsed.options.verbosity, 0);
  EXPECT_FALSE(parsed.options.station_summary);
  EXPECT_EQ(parsed.options.logical_size, 4096);
  EXPECT_EQ(parsed.options.types, nullptr);
  EXPECT_STREQ(parsed.options.volume, "a.seed");
  EXPECT_EQ(parsed.log, "");
}

TEST(ParseOptions, AllOptionsAreTaken) {
  const Parsed parsed{"-lsize", "512", "-types", "DV", "-vv", "-sta", "a.seed"};
  ASSERT_TRUE(parsed.accepted);
  EXPECT_EQ(parsed.options.verbosity, 2);
  EXPECT_TRUE(parsed.options.station_summary);
  EXPECT_EQ(parsed.options.logical_size, 512);
  EXPECT_STREQ(parsed.options.types, "DV");
  EXPECT_STREQ(parsed.options.volume, "a.seed");
}

TEST(ParseOptions, LaterVerbosityReplacesEarlier) {
  EXPECT_EQ((Parsed{"-vv", "-v", "a.seed"}.options.verbosity), 1);
  EXPECT_EQ((Parsed{"-v", "-vv", "a.seed"}.options.verbosity), 2);
}

TEST(ParseOptions, LaterValueReplacesEarlier) {
  const Parsed parsed{"-lsize", "64", "-types", "A", "-lsize", "128", "-types", "B", "a.seed"};
  EXPECT_EQ(parsed.options.logical_size, 128);
  EXPECT_STREQ(parsed.options.types, "B");
}

TEST(ParseOptions, ScanEndsAtFirstOtherArgument) {
  const Parsed parsed{"a.seed", "-v", "-nonsense"};
  ASSERT_TRUE(parsed.accepted);
  EXPECT_EQ(parsed.options.verbosity, 0);
  EXPECT_STREQ(parsed.options.volume, "a.seed");
}

TEST(ParseOptions, EmptyArgumentIsAVolume) {
  const Parsed parsed{""};
  ASSERT_TRUE(parsed.accepted);
  EXPECT_STREQ(parsed.options.volume, "");
}

TEST(ParseOptions, ValueMayBeginWithAMinusSign) {
  const Parsed parsed{"-lsize", "-7", "-types", "-v", "a.seed"};
  ASSERT_TRUE(parsed.accepted);
  EXPECT_EQ(parsed.options.logical_size, -7);
  EXPECT_STREQ(parsed.options.types, "-v");
  EXPECT_EQ(parsed.options.verbosity, 0);
}

TEST(ParseOptions, LengthIsReadAsFarAsItIsANumber) {
  EXPECT_EQ((Parsed{"-lsize", "abc", "a.seed"}.options.logical_size), 0);
  EXPECT_EQ((Parsed{"-lsize", "", "a.seed"}.options.logical_size), 0);
  EXPECT_EQ((Parsed{"-lsize", " +256k", "a.seed"}.options.logical_size), 256);
}

TEST(ParseOptions, LengthThatDoesNotFitIsCutTo32Bits) {
  // 2^32 + 512
  EXPECT_EQ((Parsed{"-lsize", "4294967808", "a.seed"}.options.logical_size), 512);
  // The largest number of 64 bits, all of whose low 32 bits are set.
  EXPECT_EQ((Parsed{"-lsize", "99999999999999999999", "a.seed"}.options.logical_size), -1);
}

TEST(ParseOptions, UnknownOptionIsRefused) {
  const Parsed parsed{"-vvv", "a.seed"};
  EXPECT_FALSE(parsed.accepted);
  EXPECT_EQ(parsed.log, std::string("Unrecognized option '-vvv'.\n") + kUsage);
}

TEST(ParseOptions, LoneMinusSignIsRefused) {
  const Parsed parsed{"-", "a.seed"};
  EXPECT_FALSE(parsed.accepted);
  EXPECT_EQ(parsed.log, std::string("Unrecognized option '-'.\n") + kUsage);
}

TEST(ParseOptions, LengthWithoutValueIsRefused) {
  const Parsed parsed{"-v", "-lsize"};
  EXPECT_FALSE(parsed.accepted);
  EXPECT_EQ(parsed.log, std::string("Need -lsize argument.\n") + kUsage);
}

TEST(ParseOptions, TypesWithoutValueAreRefused) {
  const Parsed parsed{"-types"};
  EXPECT_FALSE(parsed.accepted);
  EXPECT_EQ(parsed.log, std::string("Need -types argument.\n") + kUsage);
}

TEST(ParseOptions, NoVolumeIsRefused) {
  const Parsed parsed{"-v"};
  EXPECT_FALSE(parsed.accepted);
  EXPECT_EQ(parsed.log, std::string("Need seedfile argument.\n") + kUsage);
}

TEST(Usage, IsWrittenToTheLog) {
  const LogCapture capture;
  usage();
  EXPECT_EQ(capture.text(), kUsage);
}

}  // namespace
