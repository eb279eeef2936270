// The command as its users meet it: what it writes to which stream, and how it ends.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/cmd/command_fixture.h"
#include "tests/util/station_blockettes.h"
#include "tests/util/without_rights.h"

namespace {

using command::Command;
using command::Result;
using command::Stream;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

constexpr char kUsage[] =
    "usage: tarvik [-lsize logical_size] [-types tlist] [-v[v]] [-sta] seedfile\n";

// ---- volumes

ControlBlockette volume_identifier(int length_exponent) {  // 50 bytes
  return ControlBlockette(10)
      .raw("02.4")
      .digits(length_exponent, 2)
      .var("2021,001")
      .var("2021,002")
      .var("2021,003")
      .var("ORG")
      .var("LABEL");
}

ControlBlockette generic_abbreviation() {  // 14 bytes
  return ControlBlockette(33).digits(1, 3).var("Net");
}

ControlBlockette unit_abbreviation() {
  return ControlBlockette(34).digits(1, 3).var("M").var("Metres");
}

ControlBlockette unknown_blockette() {  // 10 bytes
  return ControlBlockette(63).raw("xyz");
}

ControlBlockette station(const std::string &code) {  // 74 bytes
  return volume::b50({.code = code, .begin = "2021,001"});
}

DataRecord data_record() {
  DataRecord record{.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  return record.b1000(3, 1, 9);
}

// One record of each kind of header, of 512 bytes.
VolumeWriter small_volume() {
  VolumeWriter out(512);
  out.control('V', volume_identifier(9));
  out.control('A', {generic_abbreviation(), unknown_blockette()});
  out.control('S', station("DYNGA"));
  out.data(data_record());
  return out;
}
constexpr Counts kSmallCounts = {.unknown = 1, .v = 1, .a = 2, .s = 1, .d = 1};

constexpr char kSmallListing[] =
    "000001: V: B0010[000000,000000008,0050]: Volume Identifier Blockette\n"
    "000002: A: B0033[000001,000000520,0014]: Generic Abbreviation Blockette\n"
    "000002: A: B0063: UNDEFINED\n"
    "000003: S: B0050[000003,000001032,0074]: Station Identifier Blockette\n"
    "000004: D: BDATA[000004,000001536,0512]: Fixed Section of Data Header\n";

// A control record of any type letter with one unknown blockette, 64 bytes.
std::string record_of_type(std::string_view sequence, char type) {
  std::string bytes = std::string(sequence) + type + " 0630010xyz";
  bytes.resize(64, ' ');
  return bytes;
}

// ---- arguments

using TarvikUsage = CommandFixture;

TEST_F(TarvikUsage, NoArgumentGivesUsageAndBanner) {
  Command command = command_with({});
  command.environment = {{"ORVALEN", std::nullopt}};
  const Result result = command::run(command);
  const std::string id = command::build_id_in(result.error, "tarvik");
  EXPECT_EQ(id.size(), 40U);
  EXPECT_EQ(result.error, command::announcement("tarvik", "tarvik", id) + kUsage +
                              command::version_banner("tarvik", "", TARVIK_BINARY, id, ""));
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikUsage, BannerCountsPatches) {
  const std::string patched = directory_ / "patched";
  std::filesystem::create_directory(patched);
  for (const char *name : {"/a", "/.b", "/..."}) std::ofstream(patched + name).put('x');
  Command command = command_with({});
  command.environment = {{"ORVALEN", directory_.path()}};
  const Result result = command::run(command);
  const std::string id = command::build_id_in(result.error, "tarvik");
  EXPECT_EQ(command::after_announcement(result, "tarvik"),
            kUsage + command::version_banner("tarvik", "", TARVIK_BINARY, id, ", 3 patches"));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikUsage, InstallRootThatIsTooLongEndsTheBanner) {
  Command command = command_with({});
  command.environment = {{"ORVALEN", std::string(1016, 'x')}};
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik"),
            kUsage + ("\ntarvik  <#>\n" + command::time_line(TARVIK_BINARY)) +
                "    Orvalen Release 5.11 Mac OS X 10.15.6 2022-02-22 "
                "patch_count: text of 1025 bytes does not fit the 1024 byte buffer\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikUsage, NameIsAnnouncedWithItsPath) {
  Command command = command_with({});
  command.arguments = {"./bin of mine/tarvik", "-"};
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "'./bin of mine/tarvik' -", "./bin of mine/tarvik"),
            std::string("Unrecognized option '-'.\n") + kUsage);
}

TEST_F(TarvikUsage, OptionsAloneLackAVolume) {
  const Result result = tarvik({"-v"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -v"),
            std::string("Need seedfile argument.\n") + kUsage);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikUsage, UnknownOptionIsRefused) {
  const Result result = tarvik({"-v", "--what's this?", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -v '--what'\\''s this?' v.seed"),
            std::string("Unrecognized option '--what's this?'.\n") + kUsage);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikUsage, OptionWithoutValueIsRefused) {
  const Result length = tarvik({"-lsize"});
  EXPECT_EQ(command::after_announcement(length, "tarvik -lsize"),
            std::string("Need -lsize argument.\n") + kUsage);
  EXPECT_EQ(length.status, 1);
  const Result types = tarvik({"-types"});
  EXPECT_EQ(command::after_announcement(types, "tarvik -types"),
            std::string("Need -types argument.\n") + kUsage);
  EXPECT_EQ(types.status, 1);
}

// ---- files

using TarvikFile = CommandFixture;

TEST_F(TarvikFile, MissingFileIsReported) {
  const Result result = tarvik({"none.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik none.seed"),
            "parseseed_new: stat(none.seed) error.\n"
            "    No such file or directory\n"
            "sdblk_parse(none.seed) error.\n");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikFile, EmptyNameIsAMissingFile) {
  const Result result = tarvik({""});
  EXPECT_EQ(command::after_announcement(result, "tarvik ''"),
            "parseseed_new: stat() error.\n"
            "    No such file or directory\n"
            "sdblk_parse() error.\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikFile, NineBytesAreNothing) {
  write("000001V  ");
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "parseseed_new: Nothing in file v.seed.\n"
            "sdblk_parse(v.seed) error.\n");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikFile, EmptyFileIsNothing) {
  write("");
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "parseseed_new: Nothing in file v.seed.\n"
            "sdblk_parse(v.seed) error.\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikFile, TenBytesAreAVolume) {
  write("000001V   ");
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"), "");
  EXPECT_EQ(result.output, at_end({}));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikFile, DirectoryIsRefused) {
  // With entries in it: an empty one has size 0 on some file systems.
  const std::string path = directory_ / "v.seed";
  std::filesystem::create_directory(path);
  for (const char *name : {"/first-entry", "/second-entry"}) std::ofstream(path + name).put('x');
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "parseseed_new: v.seed is not a regular file.\n"
            "sdblk_parse(v.seed) error.\n");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikFile, UnreadableFileIsReported) {
  write(small_volume());
  chmod((directory_ / "v.seed").c_str(), 0);
  std::filesystem::permissions(directory_.path(), std::filesystem::perms::all);
  // A copy of the command, since the folder that it is built in may be root's alone.
  Command command = command_with({"v.seed"});
  command.program = directory_ / "tarvik";
  // A record of which lines ran could not be written either, which would be said.
  command.environment = {{"LLVM_PROFILE_FILE", "/dev/null"}};
  std::filesystem::copy(TARVIK_BINARY, command.program);
  std::filesystem::last_write_time(command.program,
                                   std::filesystem::last_write_time(TARVIK_BINARY));
  const auto run_without_rights = [&command] {
    const WithoutRights nobody;
    return command::run(command);
  };
  const Result result = run_without_rights();
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "parseseed_new: open(v.seed) error.\n"
            "    Permission denied\n"
            "sdblk_parse(v.seed) error.\n");
  EXPECT_EQ(result.status, 1);
}

// ---- reading

using TarvikRun = CommandFixture;

TEST_F(TarvikRun, CountsGoToStandardOutput) {
  write(small_volume());
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"), "");
  EXPECT_EQ(result.output,
            "EOF detected on v.seed.\n"
            "# Us = 1\n# Vs = 1\n# As = 2\n# Ss = 1\n# Ts = 0\n"
            "# Ds = 1\n# Rs = 0\n# Qs = 0\n# Ms = 0\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikRun, EveryRecordTypeHasItsCount) {
  VolumeWriter out(512);
  const std::string types = "VAST";
  for (std::size_t i = 0; i < types.size(); ++i) {
    for (std::size_t n = 0; n <= i; ++n) out.control(types[i], ControlBlockette(63).raw("xyz"));
  }
  int repeats = 4;
  for (const char quality : {'D', 'R', 'Q', 'M'}) {
    DataRecord record = data_record();
    record.quality = quality;
    ++repeats;
    for (int n = 0; n < repeats; ++n) out.data(record);
  }
  write(out);
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(
      result.output,
      at_end({.unknown = 10, .v = 1, .a = 2, .s = 3, .t = 4, .d = 5, .r = 6, .q = 7, .m = 8}));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikRun, VerboseListsHeadersOnStandardError) {
  write(small_volume());
  const Result result = tarvik({"-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -v v.seed"), kSmallListing);
  EXPECT_EQ(result.output, at_end(kSmallCounts));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikRun, VeryVerboseListsFields) {
  VolumeWriter out(512);
  out.control('A', generic_abbreviation());
  write(out);
  const Result result = tarvik({"-vv", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -vv v.seed"),
            "000001: A: B0033[000000,000000008,0014]: Generic Abbreviation Blockette\n"
            "        0330014001Net~" +
                std::string(50, ' ') +
                "\n"
                "        gid        = 1\n"
                "        descr      = Net\n");
  EXPECT_EQ(result.output, at_end({.a = 1}));
}

TEST_F(TarvikRun, LaterVerbosityReplacesEarlier) {
  write(small_volume());
  const Result result = tarvik({"-vv", "-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -vv -v v.seed"), kSmallListing);
}

TEST_F(TarvikRun, ArgumentsAfterTheVolumeAreIgnored) {
  write(small_volume());
  const Result result = tarvik({"v.seed", "-v", "-nonsense", "none.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed -v -nonsense none.seed"), "");
  EXPECT_EQ(result.output, at_end(kSmallCounts));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikRun, TypesSelectWhatIsListedButNotWhatIsCounted) {
  write(small_volume());
  const Result result = tarvik({"-types", "DV", "-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -types DV -v v.seed"),
            "000001: V: B0010[000000,000000008,0050]: Volume Identifier Blockette\n"
            "000004: D: BDATA[000004,000001536,0512]: Fixed Section of Data Header\n");
  EXPECT_EQ(result.output, at_end(kSmallCounts));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikRun, TypesSelectWhatIsDecoded) {
  VolumeWriter out(512);
  out.control('A', {unit_abbreviation(), unit_abbreviation()});
  write(out);
  EXPECT_EQ(tarvik({"-types", "S", "v.seed"}).status, 0);
  EXPECT_EQ(tarvik({"-types", "SA", "v.seed"}).status, 1);
}

TEST_F(TarvikRun, EmptyListOfTypesSelectsNothing) {
  write(small_volume());
  const Result result = tarvik({"-types", "", "-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -types '' -v v.seed"), "");
  EXPECT_EQ(result.output, at_end(kSmallCounts));
}

TEST_F(TarvikRun, OtherLettersCountOnlyAsUnknown) {
  for (const char type : {'X', 'U', 'v', ' '}) {
    write(record_of_type("000001", type) + record_of_type("000002", 'V'));
    const Result result = tarvik({"-lsize", "64", "v.seed"});
    EXPECT_EQ(result.output, at_end({.unknown = 2, .v = 1})) << type;
    EXPECT_EQ(result.status, 0) << type;
  }
}

TEST_F(TarvikRun, OtherLettersDoNotCountWhereTheirBlocketteIsKnown) {
  write("000001X 0330014001Net~   ");
  EXPECT_EQ(tarvik({"v.seed"}).output, at_end({}));
}

TEST_F(TarvikRun, NulTypePassesEveryList) {
  write(record_of_type("000001", '\0') + record_of_type("000002", 'V'));
  const Result result = tarvik({"-lsize", "64", "-types", "D", "-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -lsize 64 -types D -v v.seed"),
            std::string("000001: \0: B0063: UNDEFINED\n", 28));
  EXPECT_EQ(result.output, at_end({.unknown = 2, .v = 1}));
}

// A record of 4096 bytes in which something that looks like the next header stands after 64.
std::string ambiguous_volume() {
  std::string bytes = record_of_type("000001", 'V') + record_of_type("000002", 'T');
  bytes.resize(4096, ' ');
  bytes += record_of_type("000002", 'V');
  bytes.resize(8192, ' ');
  return bytes;
}

TEST_F(TarvikRun, LengthIsTriedFirst) {
  write(ambiguous_volume());
  const Result result = tarvik({"-lsize", "64", "v.seed"});
  EXPECT_EQ(result.output, at_end({.unknown = 2, .v = 1, .t = 1}));
}

TEST_F(TarvikRun, LengthIs4096UnlessToldOtherwise) {
  write(ambiguous_volume());
  const Counts counts = {.unknown = 2, .v = 2};
  EXPECT_EQ(tarvik({"v.seed"}).output, at_end(counts));
  EXPECT_EQ(tarvik({"-lsize", "abc", "v.seed"}).output, at_end(counts));
  EXPECT_EQ(tarvik({"-lsize", "-64", "v.seed"}).output, at_end(counts));
}

TEST_F(TarvikRun, StationSummaryReplacesTheListing) {
  write(small_volume());
  const Result result = tarvik({"-sta", "-vv", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta -vv v.seed"), "");
  EXPECT_EQ(result.output,
            "XX DYNGA 2021:001:00:00:00 NULL\n"
            "         Site : Net\n"
            "         64.9931 -16.9124 688.000\n" +
                at_end(kSmallCounts));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikRun, BlocketteCutByEndOfFileIsAQuietEnd) {
  const std::string bytes = small_volume().bytes();
  write(bytes.substr(0, 1032 + 73));  // the station lacks its last byte
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"), "");
  EXPECT_EQ(result.output, at_end({.unknown = 1, .v = 1, .a = 2}));
  EXPECT_EQ(result.status, 0);
}

// ---- damaged volumes

using TarvikDamage = CommandFixture;

TEST_F(TarvikDamage, ParserErrorKeepsTheCounts) {
  VolumeWriter out(512);
  out.control('V', volume_identifier(9)).control('S', station("DYNGA")).control('S', "abc0007");
  write(out);
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "scan_int: Failed integer input: 'abc'\n"
            "sdblk_parseblk: scan_int(blockette_type,'abc') error at S:000002\n"
            "sdblk_parseblk (v.seed) error.\n");
  EXPECT_EQ(result.output, (Counts{.v = 1, .s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, DecoderErrorKeepsTheCounts) {
  VolumeWriter out(512);
  out.control('A', {unit_abbreviation(), unit_abbreviation()}).control('S', station("DYNGA"));
  write(out);
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "sdblk_unstuff_sblk: Abbreviation uid:1 already defined.\n"
            "sdblk_unstuffblk: sdblk_unstuff_blk error for B0034 at A:000001\n"
            "sdblk_unstuffblk (v.seed) error.\n");
  EXPECT_EQ(result.output, (Counts{.a = 2}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, NonDigitsEndTheProgram) {
  VolumeWriter out(512);
  out.control('S', station("DYNGA"));
  out.control('S', ControlBlockette(52).fixed("", 2).fixed("BHZ", 3).raw("12a4").digits(1, 3));
  write(out);
  const Result result = tarvik({"-sta", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta v.seed"),
            "SEEDERROR - Non-digit characters in integer field B0052:subchan = '12a4' - program "
            "exiting.\n");
  EXPECT_EQ(result.output, "XX DYNGA 2021:001:00:00:00 NULL\n");
  EXPECT_EQ(result.status, 1);
}

constexpr char kLengthZeroMessages[] =
    "B0050 at S:000002 has length 0: cannot read on.\n"
    "sdblk_parseblk (v.seed) error.\n";

VolumeWriter volume_with_length_zero(int type) {
  VolumeWriter out(512);
  out.control('V', volume_identifier(9));
  return out.control('S', ControlBlockette(type).text_with_length(0));
}

TEST_F(TarvikDamage, LengthZeroIsHandledOnce) {
  write(volume_with_length_zero(50));
  const Result result = tarvik({"-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -v v.seed"),
            std::string("000001: V: B0010[000000,000000008,0050]: Volume Identifier Blockette\n"
                        "000002: S: B0050[000001,000000520,0000]: Station Identifier Blockette\n") +
                kLengthZeroMessages);
  EXPECT_EQ(result.output, (Counts{.v = 1, .s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, LengthZeroIsSummedUpOnce) {
  write(volume_with_length_zero(50));
  const Result result = tarvik({"-sta", "v.seed"});
  // The station lacks all its fields, and the first of them that was asked for is in the register.
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta v.seed"),
            std::string("sdblk_getv: entry 'sta' not defined.\n") + kLengthZeroMessages);
  EXPECT_EQ(result.output, ("\?\?       NULL NULL\n" + Counts{.v = 1, .s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, LengthZeroEndsAlsoWhereItIsNotListed) {
  write(volume_with_length_zero(50));
  const Result result = tarvik({"-types", "V", "-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -types V -v v.seed"),
            std::string("000001: V: B0010[000000,000000008,0050]: Volume Identifier Blockette\n") +
                kLengthZeroMessages);
  EXPECT_EQ(result.output, (Counts{.v = 1, .s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, LengthZeroOfUnknownTypeCountsOnce) {
  write(volume_with_length_zero(63));
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "B0063 at S:000002 has length 0: cannot read on.\n"
            "sdblk_parseblk (v.seed) error.\n");
  EXPECT_EQ(result.output, (Counts{.unknown = 1, .v = 1, .s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, LengthZeroOfADataRecordsTypeIsNotReadForever) {
  write(volume_with_length_zero(99));
  Command command = command_with({"-types", "V", "v.seed"});
  command.limit = std::chrono::seconds(10);
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik -types V v.seed"),
            "B0099 at S:000002 has length 0: cannot read on.\n"
            "sdblk_parseblk (v.seed) error.\n");
  EXPECT_EQ(result.output, (Counts{.v = 1, .s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, BlocketteOfADataRecordsTypeIsRefused) {
  VolumeWriter out(512);
  write(out.control('S', ControlBlockette(99).raw("xyz")));
  const Result result = tarvik({"v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "sdblk_unstuff_dblk: B0099 at S:000001 is no data record\n"
            "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at S:000001\n"
            "sdblk_unstuffblk (v.seed) error.\n");
  EXPECT_EQ(result.output, (Counts{.s = 1}.lines()));
  EXPECT_EQ(result.status, 1);
}

// Channels without fields register a message each when they are summed up.
std::string empty_channels(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "0520007";
  return text;
}

TEST_F(TarvikDamage, RegisteredMessagesStayQuietWithoutAComplaint) {
  VolumeWriter out(16384);
  write(out.control('S', empty_channels(1000)));
  const Result result = tarvik({"-sta", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta v.seed"), "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikDamage, OnlyTheNewestMessagesAreKept) {
  VolumeWriter out(16384);
  write(out.control('S', empty_channels(1000) + "abc0007"));
  const Result result = tarvik({"-sta", "v.seed"});
  // 1000 of the channels and 2 of the parser were registered, 100 are kept.
  std::string expected = "(902 earlier messages dropped)\n";
  for (int i = 0; i < 98; ++i) expected += "sdblk_getv: entry 'chan' not defined.\n";
  expected +=
      "scan_int: Failed integer input: 'abc'\n"
      "sdblk_parseblk: scan_int(blockette_type,'abc') error at S:000001\n"
      "sdblk_parseblk (v.seed) error.\n";
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta v.seed"), expected);
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikDamage, FileThatShrinksEndsTheRun) {
  // Its listing is far longer than pipe and buffers, so that the command is in the midst of the
  // volume when the first bytes arrive.
  VolumeWriter out(512);
  for (int i = 0; i < 20000; ++i) out.data(data_record());
  write(out);
  Command command = command_with({"-vv", "v.seed"});
  const std::string path = directory_ / "v.seed";
  command.on_arrival = [path] {
    if (truncate(path.c_str(), 4096) < 0) throw std::runtime_error("truncate");
  };
  const Result result = command::run(command);
  EXPECT_TRUE(result.error.ends_with("\ntarvik: v.seed changed while it was read.\n"))
      << result.error.substr(result.error.size() - 200);
  EXPECT_NE(command::after_announcement(result, "tarvik -vv v.seed"), result.error);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.signal, 0);
}

// ---- streams

using TarvikStreams = CommandFixture;

TEST_F(TarvikStreams, BothIntoOneFileKeepTheirOrder) {
  VolumeWriter out(512);
  out.control('V', volume_identifier(9)).control('S', station("FIRST"));
  DataRecord damaged = data_record();
  damaged.forced_first_offset = 5000;
  out.data(damaged);
  out.control('S', station("LAST"));
  write(out);
  Command command = command_with({"-sta", "v.seed"});
  command.output = Stream::kFile;
  command.error = Stream::kWithOutput;
  const Result result = command::run(command);
  const std::string id = command::build_id_in(result.output, "tarvik");
  EXPECT_EQ(result.output,
            command::announcement("tarvik", "tarvik -sta v.seed", id) +
                "XX FIRST 2021:001:00:00:00 NULL\n"
                "sdblk_unstuff_dblk: WARNING - Bad blockette offset 5000 at D:000003 - rest of the "
                "chain ignored.\n"
                "XX LAST  2021:001:00:00:00 NULL\n" +
                at_end({.v = 1, .s = 2, .d = 1}));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikStreams, ListingComesBeforeTheCountsInOneFile) {
  write(small_volume());
  Command command = command_with({"-v", "v.seed"});
  command.output = Stream::kFile;
  command.error = Stream::kWithOutput;
  const Result result = command::run(command);
  const std::string id = command::build_id_in(result.output, "tarvik");
  EXPECT_EQ(result.output, command::announcement("tarvik", "tarvik -v v.seed", id) + kSmallListing +
                               at_end(kSmallCounts));
}

TEST_F(TarvikStreams, FullOutputIsReported) {
  write(small_volume());
  Command command = command_with({"v.seed"});
  command.output = Stream::kFull;
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "tarvik: write error: No space left on device\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikStreams, FullOutputIsReportedAfterTheComplaints) {
  VolumeWriter out(512);
  write(out.control('S', station("DYNGA")).control('S', "abc0007"));
  Command command = command_with({"-sta", "v.seed"});
  command.output = Stream::kFull;
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta v.seed"),
            "scan_int: Failed integer input: 'abc'\n"
            "sdblk_parseblk: scan_int(blockette_type,'abc') error at S:000001\n"
            "sdblk_parseblk (v.seed) error.\n"
            "tarvik: write error: No space left on device\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikStreams, FullErrorStreamMakesTheRunAFailure) {
  write(small_volume());
  Command command = command_with({"-v", "v.seed"});
  command.error = Stream::kFull;
  const Result result = command::run(command);
  EXPECT_EQ(result.output, at_end(kSmallCounts));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikStreams, ClosedOutputIsReported) {
  write(small_volume());
  Command command = command_with({"v.seed"});
  command.output = Stream::kClosed;
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"),
            "tarvik: write error: Bad file descriptor\n");
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikStreams, ClosedErrorStreamMakesTheRunAFailure) {
  write(small_volume());
  Command command = command_with({"v.seed"});
  command.error = Stream::kClosed;
  const Result result = command::run(command);
  EXPECT_EQ(result.output, at_end(kSmallCounts));
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikStreams, UnusedClosedOutputIsNoWriteError) {
  Command command = command_with({"-v"});
  command.output = Stream::kClosed;
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik -v"),
            std::string("Need seedfile argument.\n") + kUsage);
  EXPECT_EQ(result.status, 1);
}

TEST_F(TarvikStreams, ReaderThatGoesAwayEndsTheRunQuietly) {
  write(small_volume());
  Command command = command_with({"v.seed"});
  command.output = Stream::kGone;
  const Result result = command::run(command);
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"), "");
  EXPECT_EQ(result.signal, SIGPIPE);
}

TEST_F(TarvikStreams, ReaderOfTheListingThatGoesAwayEndsTheRunQuietly) {
  write(small_volume());
  Command command = command_with({"-v", "v.seed"});
  command.error = Stream::kGone;
  const Result result = command::run(command);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.signal, SIGPIPE);
}

TEST_F(TarvikStreams, ReaderThatGoesAwayEndsTheRunAlsoWithTheSignalIgnored) {
  write(small_volume());
  Command command = command_with({"v.seed"});
  command.output = Stream::kGone;
  std::signal(SIGPIPE, SIG_IGN);
  const Result result = command::run(command);
  std::signal(SIGPIPE, SIG_DFL);
  EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"), "");
  EXPECT_EQ(result.signal, SIGPIPE);
}

// A record of this type, listed on a stream of this kind.
class TarvikControlBytes : public CommandFixture {
 protected:
  [[nodiscard]] std::string listing(char type, Stream error) const {
    write(record_of_type("000001", type));
    Command command = command_with({"-v", "v.seed"});
    command.error = error;
    return command::after_announcement(command::run(command), "tarvik -v v.seed");
  }
};

TEST_F(TarvikControlBytes, DoNotReachATerminal) {
  for (const char type : {'\0', '\x01', '\r', '\x1b', '\x1f', '\x7f', '\x80', '\x9b', '\x9f'}) {
    EXPECT_EQ(listing(type, Stream::kTerminal), "000001: ?: B0063: UNDEFINED\n") << int{type};
  }
}

TEST_F(TarvikControlBytes, OtherBytesReachATerminal) {
  for (const char type : {'\t', '\n', ' ', '~', '\xa0', '\xff'}) {
    EXPECT_EQ(listing(type, Stream::kTerminal),
              std::string("000001: ") + type + ": B0063: UNDEFINED\n")
        << int{type};
  }
}

TEST_F(TarvikControlBytes, ReachPipesAndFiles) {
  for (const char type : {'\0', '\x1b', '\x7f'}) {
    const std::string expected = std::string("000001: ") + type + ": B0063: UNDEFINED\n";
    EXPECT_EQ(listing(type, Stream::kPipe), expected) << int{type};
    EXPECT_EQ(listing(type, Stream::kFile), expected) << int{type};
  }
}

TEST_F(TarvikStreams, ControlBytesOfTheSummaryDoNotReachATerminal) {
  VolumeWriter out(512);
  write(out.control('S', station("A\x1b[2J")));
  Command command = command_with({"-sta", "v.seed"});
  command.output = Stream::kTerminal;
  EXPECT_EQ(command::run(command).output, "XX A?[2J 2021:001:00:00:00 NULL\n" + at_end({.s = 1}));
  command.output = Stream::kPipe;
  EXPECT_EQ(command::run(command).output,
            "XX A\x1b[2J 2021:001:00:00:00 NULL\n" + at_end({.s = 1}));
}

// ---- long volumes

class TarvikLong : public CommandFixture {
 protected:
  // The volume "v.seed" of control records, each with one blockette of 14 bytes; what lies between
  // them takes no room in the file system.
  void write_sparse(int records, off_t length) const {
    const int file = open((directory_ / "v.seed").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    bool good = file >= 0;
    for (int i = 0; i < records && good; ++i) {
      const std::string bytes = number(i + 1) + "S 0510014~~00010   ";
      good = pwrite(file, bytes.data(), bytes.size(), i * length) ==
             static_cast<ssize_t>(bytes.size());
    }
    good = good && ftruncate(file, records * length) == 0;
    if (!good || close(file) < 0) throw std::runtime_error("v.seed cannot be written");
  }

  // The volume "v.seed" of data records of 512 bytes.  It is not put together in memory: what a
  // program needs at most is counted from before it is loaded, when it is still a copy of this one.
  void write_data(int records) const {
    const std::string record = data_record().bytes(512);
    const std::string_view after_number = std::string_view(record).substr(6);
    std::ofstream file(directory_ / "v.seed", std::ios::binary);
    for (int i = 1; i <= records; ++i) file << number(i) << after_number;
    if (!file.flush()) throw std::runtime_error("v.seed cannot be written");
  }

  // The most memory, in KiB, of a run that must succeed quietly.
  [[nodiscard]] long peak_of_reading(const Counts &counts) const {
    const Result result = tarvik({"v.seed"});
    EXPECT_EQ(command::after_announcement(result, "tarvik v.seed"), "");
    EXPECT_EQ(result.output, at_end(counts));
    EXPECT_EQ(result.status, 0);
    return result.peak_kib;
  }

  static constexpr long kAllowedGrowthKib = 16L * 1024;

 private:
  static std::string number(int sequence) { return std::to_string(1000000 + sequence).substr(1); }
};

TEST_F(TarvikLong, RecordsAfterFourGibibytesAreRead) {
  write_sparse(6, off_t{1} << 30);
  const Result result = tarvik({"-lsize", "1073741824", "-v", "v.seed"});
  EXPECT_EQ(command::after_announcement(result, "tarvik -lsize 1073741824 -v v.seed"),
            "000001: S: B0051[000000,000000008,0014]: Station Comment Blockette\n"
            "000002: S: B0051[000001,1073741832,0014]: Station Comment Blockette\n"
            "000003: S: B0051[000002,2147483656,0014]: Station Comment Blockette\n"
            "000004: S: B0051[000003,3221225480,0014]: Station Comment Blockette\n"
            "000005: S: B0051[000004,4294967304,0014]: Station Comment Blockette\n"
            "000006: S: B0051[000005,5368709128,0014]: Station Comment Blockette\n");
  EXPECT_EQ(result.output, at_end({.s = 6}));
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikLong, ControlRecordsTakeLittleMemory) {
  write_sparse(100, 131072);
  const long small = peak_of_reading({.s = 100});
  write_sparse(2048, 131072);
  EXPECT_LT(peak_of_reading({.s = 2048}) - small, kAllowedGrowthKib);
}

TEST_F(TarvikLong, DataRecordsTakeLittleMemory) {
  write_data(100);
  const long small = peak_of_reading({.d = 100});
  write_data(131072);
  EXPECT_LT(peak_of_reading({.d = 131072}) - small, kAllowedGrowthKib);
}

// ---- the sample

class TarvikSample : public testing::Test {
 protected:
  static Result tarvik(std::vector<std::string> arguments) {
    return command::run({.arguments = std::move(arguments),
                         .directory = std::string(TARVIK_SOURCE_DIR) + "/samples"});
  }
  static std::string golden(std::string_view name) {
    std::ifstream file(std::string(TARVIK_TEST_DATA_DIR) + "/cmd/golden/" + std::string(name));
    return {std::istreambuf_iterator<char>(file), {}};
  }
};

TEST_F(TarvikSample, SummaryIsTheOneInTheTree) {
  const Result result = tarvik({"tarvik", "-sta", "demo.seed"});
  EXPECT_EQ(result.output, golden("demo_sta.txt"));
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta demo.seed"), "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(TarvikSample, VerboseSummaryIsTheOneInTheTree) {
  const Result result = tarvik({"tarvik", "-sta", "-v", "demo.seed"});
  EXPECT_EQ(result.output, golden("demo_sta_v.txt"));
  EXPECT_EQ(command::after_announcement(result, "tarvik -sta -v demo.seed"), "");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
