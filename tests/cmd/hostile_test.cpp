// Hostile and damaged volumes: the command says what is wrong and ends, within limits on time and
// memory; and what the worst of them cost grows no faster than they do.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "cmd/station_dump.h"
#include "tests/cmd/command_fixture.h"
#include "tests/cmd/hostile_volumes.h"
#include "tests/util/log_capture.h"
#include "tests/util/reader.h"

using namespace tarvik;

#if defined(__SANITIZE_ADDRESS__)
#define TESTS_UNDER_SANITIZERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TESTS_UNDER_SANITIZERS 1
#endif
#endif

namespace {

using command::Command;
using command::Result;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

// The sanitizers reserve address space of their own.
#ifdef TESTS_UNDER_SANITIZERS
constexpr char kLimits[] = "ulimit -t 60; exec \"$@\"";
#else
constexpr char kLimits[] = "ulimit -t 10; ulimit -v 131072; exec \"$@\"";
#endif

// ---- limits

struct Hostile {
  const char *name;
  std::string bytes;
  int status;                // of the command, whatever it prints
  std::string_view message;  // on standard error, at -v
};

void PrintTo(const Hostile &hostile, std::ostream *out) { *out << hostile.name; }

std::string padded(std::string bytes, std::size_t size) {
  bytes.resize(size, ' ');
  return bytes;
}

std::string control_volume(char type, std::string_view blockettes, std::size_t length = 512) {
  return VolumeWriter(length).control(type, blockettes).bytes();
}

std::string control_volume(char type, const ControlBlockette &blockette, std::size_t length = 512) {
  return control_volume(type, blockette.text(), length);
}

ControlBlockette identifier(int exponent) {
  return ControlBlockette(10)
      .raw("02.3")
      .digits(exponent, 2)
      .var("")
      .var("")
      .var("")
      .var("")
      .var("");
}

DataRecord record() { return {.sta = "STA", .chan = "BHZ", .net = "XX"}; }

std::string data_volume(const DataRecord &data, std::size_t length = 512) {
  return VolumeWriter(length).data(data).bytes();
}

DataRecord first_at(unsigned offset) {
  DataRecord data = record().b1000(3, 1, 9);
  data.forced_first_offset = offset;
  return data;
}

// More blockettes than a chain may have, four bytes each.
std::string chain_of_1025() {
  DataRecord data = record();
  data.forced_count = 255;
  for (int i = 0; i < 1025; ++i) data.blockette(1, {});
  return data_volume(data, 8192);
}

// A volume identifier that states 64 bytes, fewer than are read; the header after them stands in
// its own last field.
std::string step_back() {
  std::string text = "000001V 010010002.306~~~~";
  text = padded(padded(text, 64) + "000002V ", 107) + "~";
  return padded(padded(text, 128) + "000003V ", 192);
}

std::string dictionary_of(int type, std::string_view fields) {
  return control_volume('A', ControlBlockette(type).raw(fields));
}

std::vector<Hostile> plain_bytes() {
  using namespace std::string_literals;
  return {
      {"ZeroBytes", std::string(4096, '\0'), 1, "B0000 at "},
      {"OnesOnly", std::string(4096, '\xff'), 1, "scan_int(logical_sequence,"},
      {"BlanksOnly", std::string(300000, ' '), 1, "Cannot find next logical record.\n"},
      {"DigitsOnly", std::string(4096, '9'), 0, ""},
      {"TildesOnly", std::string(4096, '~'), 1, "scan_int(logical_sequence,"},
      {"NulRecordType", padded("000001\0 0520010  B"s, 512), 0, ""},
  };
}

std::vector<Hostile> control_headers() {
  const std::string long_text(4096, 'x');
  return {
      {"TextBeyondItsBuffer", control_volume('A', ControlBlockette(33).digits(1, 3).var(long_text)),
       1, "sdblk_unstuff_sblk: text of 4097 bytes does not fit the 4096 byte buffer\n"},
      {"LettersInAnInteger", dictionary_of(33, "0x1Net~"), 1,
       "SEEDERROR - Non-digit characters in integer field B0033:gid = '0x1' - program exiting.\n"},
      {"NegativeLength", control_volume('S', "052-999"), 1,
       "sdblk_parseblk: malloc(seedbuf,-999) error for B0052 at S:000001\n"},
      {"LengthZero", control_volume('S', "0520000"), 1,
       "B0052 at S:000001 has length 0: cannot read on.\n"},
      {"LengthBelowThePrefix", control_volume('S', "0520003   "), 1,
       "B0003 at S:000001 has length 0: cannot read on.\n"},
      {"LengthBeyondTheImage", control_volume('S', "0529999"), 0, ""},
      {"ControlBlocketteOfType99", control_volume('S', "0990010abc"), 1,
       "sdblk_unstuff_dblk: B0099 at S:000001 is no data record\n"},
      {"RecordLengthOf2Gibibytes", control_volume('V', identifier(31)), 1,
       "sdblk_parseblk: logical record length 2^31 is out of range for B0010 at V:000001\n"},
      {"RecordLengthModulo32", control_volume('V', identifier(44)), 0, ""},
      {"RecordLengthOfAByte", control_volume('V', identifier(0)), 0, ""},
      {"RecordLengthBelowTheCursor", step_back(), 0, ""},
      {"SameCodeTwice",
       VolumeWriter(512)
           .control('A', {ControlBlockette(33).digits(1, 3).var("A"),
                          ControlBlockette(33).digits(1, 3).var("B")})
           .bytes(),
       1, "sdblk_unstuff_sblk: Abbreviation gid:1 already defined.\n"},
      {"PromiseOf9999Numbers", hostile::broken_promises(1), 0, ""},
      {"PromiseOf9999Groups", dictionary_of(44, "0001N~A00000099999999"), 0, ""},
      {"PromiseOf99References", control_volume('S', ControlBlockette(60).raw("99019900019999")), 0,
       ""},
      {"NegativeCount", dictionary_of(41, "0001N~A000000-001"), 1, "SEEDERROR"},
      {"StationWithoutFields", control_volume('S', "0500012STA  "), 0, ""},
      {"ChannelWithoutFields", control_volume('S', "0520010  B"), 0, ""},
      {"StagesWithoutFields", control_volume('S', "060001109"), 0, ""},
  };
}

std::vector<Hostile> data_records() {
  return {
      {"RecordCutInItsFixedSection", data_volume(record(), 64).substr(0, 20), 1,
       "sdblk_unstuff_dblk: sdblk_getv (FIXED->blk_offset) error.\n"},
      {"RecordCutInItsChain", data_volume(record().b1000(3, 1, 9), 64).substr(0, 50), 0,
       "Bad blockette offset 48 at D:000001 - rest of the chain ignored.\n"},
      {"ChainThatStartsAfterTheRecord", data_volume(first_at(60000)), 0,
       "Bad blockette offset 60000 at D:000001 - rest of the chain ignored.\n"},
      {"ChainThatStartsInTheHeader", data_volume(first_at(1)), 0, ""},
      {"ChainInACircle", data_volume(record().blockette(100, std::string(8, 'x'), 48)), 0,
       "Bad blockette offset 48 at D:000001 - rest of the chain ignored.\n"},
      {"ChainOf1025", chain_of_1025(), 0,
       "Bad blockette offset 4144 at D:000001 - rest of the chain ignored.\n"},
      {"RecordLengthByShiftOf255", data_volume(record().b1000(3, 1, 255)), 0, ""},
      {"ChainedTypeWithoutDefinition", data_volume(record().blockette(2047, "abcd")), 0, ""},
      {"ChainedTypeBeyondTheIndex", data_volume(record().blockette(65535, "abcd")), 0, ""},
      {"ChainedLengthBeyondTheRecord", data_volume(record().blockette(2047, "abcd", 65535)), 0,
       "Bad blockette offset 65535 at D:000001 - rest of the chain ignored.\n"},
      {"AbbreviationInAChain", data_volume(record().blockette(33, "001Net~")), 1,
       "sdblk_unstuff_sblk: sdblk_copy(abbr_ref) error.\n"},
  };
}

std::vector<Hostile> large_volumes() {
  return {
      {"HeadersInsideARecord", hostile::overlapping_records(1), 0, ""},
      {"TextsThatOverlap", hostile::overlapping_texts(1), 0, "rest of the chain ignored.\n"},
      {"RecordsReadAgain", hostile::steps_back(12), 0, ""},
      {"LongestChain", hostile::longest_chains(1), 0, ""},
      {"TenThousandAbbreviations", hostile::large_dictionary(10000), 0, ""},
      {"LongReferences", hostile::long_references(20), 0, ""},
  };
}

class HostileVolume : public CommandFixture, public testing::WithParamInterface<Hostile> {
 protected:
  // The command with one option on the volume, under limits.
  [[nodiscard]] Result read(const std::string &option) const {
    write(GetParam().bytes);
    Command limited = command_with({option, "v.seed"});
    limited.program = "/bin/sh";
    limited.arguments = {"sh", "-c", kLimits, "sh", TARVIK_BINARY, option, "v.seed"};
    return command::run(limited);
  }
};

TEST_P(HostileVolume, IsReadWithinLimits) {
  for (const char *option : {"-v", "-vv", "-sta"}) {
    const Result result = read(option);
    EXPECT_EQ(result.signal, 0) << option;
    EXPECT_EQ(result.status, GetParam().status) << option << "\n" << result.error.substr(0, 2000);
    EXPECT_NE(result.error.find(GetParam().message), std::string::npos)
        << option << "\n"
        << result.error.substr(0, 2000);
  }
}

class HostileLimits : public CommandFixture {
 protected:
  // The command without options on the volume, under limits.
  [[nodiscard]] Result read(std::string_view bytes) const {
    write(bytes);
    Command limited = command_with({});
    limited.program = "/bin/sh";
    limited.arguments = {"sh", "-c", kLimits, "sh", TARVIK_BINARY, "v.seed"};
    return command::run(limited);
  }
};

// Ten thousand abbreviations of 80 KB each take more than the limit lets through.
TEST_F(HostileLimits, MemoryThatCannotBeHadIsAnOrdinaryFailure) {
#ifdef TESTS_UNDER_SANITIZERS
  GTEST_SKIP() << "no limit on memory under sanitizers";
#endif
  const Result result = read(hostile::broken_promises(10000));
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("    Cannot allocate memory\n"), std::string::npos) << result.error;
  EXPECT_NE(result.error.find("sdblk_unstuffblk (v.seed) error.\n"), std::string::npos)
      << result.error;
}

// 200000 blockettes of 9999 elements each, in 40 KB.
TEST_F(HostileLimits, ElementsWithoutBytesTakeNoTime) {
  const Result result = read(hostile::steps_back(640));
  EXPECT_EQ(result.signal, 0);
  EXPECT_EQ(result.status, 0) << result.error;
}

std::string name_of(const testing::TestParamInfo<Hostile> &test) { return test.param.name; }

INSTANTIATE_TEST_SUITE_P(PlainBytes, HostileVolume, testing::ValuesIn(plain_bytes()), name_of);
INSTANTIATE_TEST_SUITE_P(Control, HostileVolume, testing::ValuesIn(control_headers()), name_of);
INSTANTIATE_TEST_SUITE_P(Data, HostileVolume, testing::ValuesIn(data_records()), name_of);
INSTANTIATE_TEST_SUITE_P(Large, HostileVolume, testing::ValuesIn(large_volumes()), name_of);

// ---- growth

struct Cost {
  double seconds = 0;
  long allocations = 0;
  double allocated = 0;  // bytes
  long lines = 0;
};

double *allocated_bytes() {
  static double bytes = 0;
  return &bytes;
}

long *allocations() {
  static long count = 0;
  return &count;
}

bool count_allocation(std::size_t bytes) {
  *allocated_bytes() += static_cast<double>(bytes);
  ++*allocations();
  return true;
}

// Reads a volume to its end, with or without listing it.
Cost cost_of(const std::string &bytes, bool listed) {
  LogCapture log;
  Cost cost;
  *allocated_bytes() = 0;
  *allocations() = 0;
  const std::clock_t start = std::clock();
  memory_set_gate(count_allocation);
  {
    Reader reader(bytes);
    int result = reader.next();
    while (result >= 0 && result != SDBLK_EOF && sdblk_unstuffblk(&reader.blk()) == 0) {
      if (listed) sdblk_printblk(&reader.blk(), "", 1);
      result = reader.next();
    }
    EXPECT_EQ(result, SDBLK_EOF) << log.text().substr(0, 1000);
  }
  memory_set_gate(nullptr);
  cost.seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  cost.allocations = *allocations();
  cost.allocated = *allocated_bytes();
  const std::string text = log.text();
  cost.lines = std::count(text.begin(), text.end(), '\n');
  return cost;
}

struct Growth {
  const char *name;
  std::string (*make)(int count);
  int count;
};

void PrintTo(const Growth &growth, std::ostream *out) { *out << growth.name; }

class HostileGrowth : public testing::TestWithParam<Growth> {
 protected:
  // The least of a few tries: other programs only add to the time.
  static Cost cost_at(int count, bool listed) {
    const std::string bytes = GetParam().make(count);
    Cost least = cost_of(bytes, listed);
    for (int i = 0; i < 2; ++i)
      least.seconds = std::min(least.seconds, cost_of(bytes, listed).seconds);
    return least;
  }

  static void expect_proportion(bool listed) {
    constexpr double kSlack = 0.02;         // seconds: what a clock can tell
    constexpr double kKept = 256 * 1024.0;  // bytes that a reader takes whatever it reads
    const Cost once = cost_at(GetParam().count, listed);
    const Cost twice = cost_at(2 * GetParam().count, listed);
    // Twice, and half as much again for the noise of a busy machine.
    EXPECT_LE(twice.seconds, 3 * once.seconds + kSlack);
    EXPECT_LE(twice.allocations, 2 * once.allocations + 64);
    EXPECT_LE(twice.allocated, 2 * once.allocated + kKept);
    EXPECT_LE(twice.lines, 2 * once.lines);
    EXPECT_EQ(twice.lines > once.lines, listed || once.lines > 0);
  }
};

TEST_P(HostileGrowth, DecodingTwiceAsMuchCostsTwiceAsMuch) { expect_proportion(false); }
TEST_P(HostileGrowth, ListingTwiceAsMuchCostsTwiceAsMuch) { expect_proportion(true); }

INSTANTIATE_TEST_SUITE_P(, HostileGrowth,
                         testing::Values(Growth{"LongestChains", hostile::longest_chains, 4},
                                         Growth{"OverlappingRecords", hostile::overlapping_records,
                                                1},
                                         Growth{"BrokenPromises", hostile::broken_promises, 4},
                                         Growth{"LargeDictionary", hostile::large_dictionary, 1000},
                                         Growth{"LongReferences", hostile::long_references, 8}),
                         [](const auto &test) { return std::string(test.param.name); });

}  // namespace
