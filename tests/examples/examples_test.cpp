#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "gtest/gtest.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

// Paths are quoted for the shell: one may hold a blank.
constexpr char kDemo[] = "'" TARVIK_SOURCE_DIR "/samples/demo.seed'";
constexpr char kQuiet[] = " 2>/dev/null";

struct Outcome {
  std::string text;
  int status = -1;
};

// Runs a shell command; what it wrote to standard output, and its exit status.
Outcome run(const std::string &command_line) {
  Outcome outcome;
  // NOLINTNEXTLINE(cert-env33-c): the shell's pipes and redirections are wanted.
  std::FILE *pipe = popen(command_line.c_str(), "r");
  if (pipe == nullptr) return outcome;
  std::array<char, 4096> buffer;
  for (std::size_t size = 1; size > 0;) {
    size = std::fread(buffer.data(), 1, buffer.size(), pipe);
    outcome.text.append(buffer.data(), size);
  }
  const int ended = pclose(pipe);
  if (WIFEXITED(ended)) outcome.status = WEXITSTATUS(ended);
  return outcome;
}
Outcome stations(const std::string &arguments) { return run("'" TARVIK_STATIONS "' " + arguments); }
Outcome channels(const std::string &arguments) { return run("'" TARVIK_CHANNELS "' " + arguments); }

Outcome inspect(const std::string &arguments) { return run("'" TARVIK_INSPECT "' " + arguments); }

// A volume in a file, as long as it lives.
class VolumeFile {
 public:
  explicit VolumeFile(const std::string &bytes)
      : VolumeFile(VolumeWriter(4096).raw_record(bytes)) {}
  explicit VolumeFile(const VolumeWriter &volume) {
    const int fd = mkstemp(path_.data());
    if (fd >= 0) close(fd);
    volume.write_to(path_);
  }
  ~VolumeFile() { unlink(path_.c_str()); }
  VolumeFile(const VolumeFile &) = delete;
  VolumeFile &operator=(const VolumeFile &) = delete;

  [[nodiscard]] std::string quoted() const { return "'" + path_ + "'"; }

 private:
  std::string path_ = testing::TempDir() + "volume-XXXXXX";
};

ControlBlockette unit() { return ControlBlockette(34).digits(1, 3).var("M").var("Metres"); }

DataRecord record(const std::string &chan, const volume::Time &time) {
  DataRecord made{.sta = "ABC", .loc = "10", .chan = chan, .net = "YZ", .time = time};
  return made.samples32({1, 2, 3}).b1000(3, 1, 9);
}

// A record of 128 bytes that says so.
std::string record_of(long number) {
  return DataRecord{.sta = "ABC"}.b1000(3, 1, 7).bytes(128, number);
}

TEST(StationsExample, ListsTheSampleVolume) {
  const Outcome outcome = stations(kDemo);
  EXPECT_EQ(outcome.text,
            "XX DYNGA Dyngja Flats, Iceland\n"
            "     BHZ  2018,120,00:00:00  2020,100,09:30:00  9 responses\n"
            "     BHZ  2020,100,09:30:00  open               9 responses\n"
            "  00 LHZ  2020,100,09:30:00  open               12 responses\n"
            "     ACE  2018,120,00:00:00  open               0 responses\n"
            "XX SKERA Skerra Point, Faroe Islands\n"
            "  00 BHZ  2019,201,12:00:00  open               1 responses\n"
            "XX FJELL Fjellvatn, Norway\n"
            "  00 BHZ  2017,305,00:00:00  open               9 responses\n"
            "  00 LKI  2017,305,00:00:00  open               4 responses\n"
            "     OCF  2017,305,00:00:00  open               0 responses\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(StationsExample, TakesAcceptAndRejectPatterns) {
  const Outcome outcome = stations(std::string("-a '_BHZ' -a '_LKI_' -r 'XX_FJELL_B' ") + kDemo);
  EXPECT_EQ(outcome.text,
            "XX DYNGA Dyngja Flats, Iceland\n"
            "     BHZ  2018,120,00:00:00  2020,100,09:30:00  9 responses\n"
            "     BHZ  2020,100,09:30:00  open               9 responses\n"
            "XX SKERA Skerra Point, Faroe Islands\n"
            "  00 BHZ  2019,201,12:00:00  open               1 responses\n"
            "XX FJELL Fjellvatn, Norway\n"
            "  00 LKI  2017,305,00:00:00  open               4 responses\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(StationsExample, SaysWhatItCannotOpen) {
  const Outcome outcome = stations("/no/such/volume 2>&1");
  EXPECT_EQ(outcome.text,
            "parseseed_new: stat(/no/such/volume) error.\n"
            "    No such file or directory\n"
            "stations: /no/such/volume cannot be opened.\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(StationsExample, SaysHowItIsUsed) {
  for (const char *arguments : {" 2>&1", "-a x 2>&1", "-x y volume 2>&1"}) {
    const Outcome outcome = stations(arguments);
    EXPECT_EQ(outcome.text, "usage: stations [-a PATTERN | -r PATTERN]... FILE\n") << arguments;
    EXPECT_EQ(outcome.status, 1);
  }
}

TEST(StationsExample, LeavesOutABlockThatCannotBeDecoded) {
  VolumeWriter writer(4096);
  writer.control('A', {unit(), unit()});
  const VolumeFile file(writer);
  const Outcome outcome = stations(file.quoted() + " 2>&1 | tail -n 1");
  EXPECT_EQ(outcome.text, "stations: block 1 is left out.\n");
  EXPECT_EQ(stations(file.quoted() + kQuiet).status, 1);
}

TEST(StationsExample, StopsAtABlocketteOfLengthZero) {
  VolumeWriter writer(4096);
  writer.control('S', ControlBlockette(50).text_with_length(0));
  const VolumeFile file(writer);
  const Outcome outcome = stations(file.quoted() + " 2>&1 | tail -n 1");
  EXPECT_EQ(outcome.text, "stations: the volume cannot be read to its end.\n");
  EXPECT_EQ(stations(file.quoted() + kQuiet).status, 1);
}

TEST(ChannelsExample, ListsTheSampleVolume) {
  const Outcome outcome = channels(kDemo);
  EXPECT_EQ(outcome.text,
            "XX_DYNGA_00_LHZ      1  2021,075,06:10:00.0000  2021,075,06:10:00.0000\n"
            "XX_DYNGA__ACE        1  2021,075,06:15:00.0000  2021,075,06:15:00.0000\n"
            "XX_DYNGA__BHZ        8  2021,075,06:15:52.6000  2021,075,06:16:31.0000\n"
            "XX_FJELL_00_BHZ      8  2021,075,06:17:38.8000  2021,075,06:18:17.2000\n"
            "XX_FJELL_00_LKI      1  2021,075,06:10:00.0000  2021,075,06:10:00.0000\n"
            "XX_FJELL__OCF        1  2021,075,06:20:00.0000  2021,075,06:20:00.0000\n"
            "XX_SKERA_00_BHZ      8  2021,075,06:16:25.6500  2021,075,06:16:59.2500\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(ChannelsExample, FindsFirstAndLastOfRecordsInAnyOrder) {
  VolumeWriter writer(4096);
  writer.data(record("BHZ", {2020, 100, 1, 2, 3, 4567}), 512);
  writer.data(record("BHZ", {2019, 365, 23, 59, 59, 9999}), 512);
  writer.data(record("BHN", {2020, 1}), 512);
  writer.data(record("BHZ", {2020, 99}), 512);
  const VolumeFile file(writer);
  const Outcome outcome = channels(file.quoted() + " 512");
  EXPECT_EQ(outcome.text,
            "YZ_ABC_10_BHN        1  2020,001,00:00:00.0000  2020,001,00:00:00.0000\n"
            "YZ_ABC_10_BHZ        3  2019,365,23:59:59.9999  2020,100,01:02:03.4567\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(ChannelsExample, LeavesOutARecordWithoutAStartTime) {
  VolumeWriter writer(4096);
  writer.data(record("BHZ", {2020, 1}), 512);
  // The volume ends in the middle of this record's header.
  writer.raw_record("000002D ABC  10BHNYZ");
  const VolumeFile file(writer);
  const Outcome outcome = channels(file.quoted() + " 512 2>&1 | grep '^YZ_\\|left out'");
  EXPECT_EQ(outcome.text,
            "channels: block 1 is left out.\n"
            "YZ_ABC_10_BHZ        1  2020,001,00:00:00.0000  2020,001,00:00:00.0000\n");
  EXPECT_EQ(channels(file.quoted() + " 512" + kQuiet).status, 1);
}

TEST(ChannelsExample, SaysHowItIsUsed) {
  const Outcome outcome = channels("2>&1");
  EXPECT_EQ(outcome.text, "usage: channels FILE [LENGTH]\n");
  EXPECT_EQ(outcome.status, 1);
}

TEST(InspectExample, AccountsForEachByte) {
  const std::string record = record_of(42);
  const VolumeFile file("garbage" + record + record + "  ");
  const Outcome outcome = inspect(file.quoted());
  EXPECT_EQ(outcome.text,
            "         0  garbage, 7 bytes: no record header begins here\n"
            "         7  D record of 128 bytes, block 0, Fixed Section of Data Header\n"
            "        55    Data Only SEED Blockette\n"
            "       135  D record of 128 bytes, block 1, Fixed Section of Data Header\n"
            "       183    Data Only SEED Blockette\n"
            "       263  padding, 2 bytes: padding between records\n"
            "265 bytes: 256 in 2 records, 9 between them\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(InspectExample, TellsWhatCannotBeTakenAtItsWord) {
  VolumeWriter writer(64);
  writer.control('S', ControlBlockette(50).fixed("ABC", 5).raw("not number"));
  const VolumeFile file(writer);
  EXPECT_EQ(inspect(file.quoted()).text,
            "         0  unconfirmed: nothing confirms that the record has 64 bytes\n"
            "         8  value: lat is not a number: 'not number'\n"
            "         0  S record of 64 bytes, block 0, Station Identifier Blockette\n"
            "64 bytes: 64 in 1 records, 0 between them\n");
}

TEST(InspectExample, ReadsTheSampleWithoutAFinding) {
  const Outcome outcome = inspect(std::string(kDemo) + " | grep -c ': '");
  EXPECT_EQ(outcome.text, "1\n");  // the last line
  EXPECT_EQ(inspect(std::string(kDemo) + " >/dev/null").status, 0);
}

TEST(InspectExample, SaysHowItIsUsedAndWhatItCannotOpen) {
  EXPECT_EQ(inspect("2>&1").text, "usage: inspect FILE\n");
  EXPECT_EQ(inspect("/no/such 2>&1").text, "inspect: sdblk_open_whole: stat(/no/such) error.\n");
  EXPECT_EQ(inspect("/no/such" + std::string(kQuiet)).status, 1);
}

}  // namespace
