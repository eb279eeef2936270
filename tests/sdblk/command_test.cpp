// The command as a shell runs it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"

namespace {

namespace fs = std::filesystem;
using command::Result;
using command::Stream;
using Lines = std::vector<std::string>;

// Three data records of 512 bytes.
std::string volume() {
  volume::VolumeWriter writer(512);
  writer.data({}).data({}).data({});
  return writer.bytes();
}

Lines lines_in(const std::string &text) {
  std::istringstream stream(text);
  Lines lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string contents(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The text of the member "file", as it is written.
std::string file_of(const std::string &line) {
  constexpr std::string_view kKey = R"("file":")";
  const std::size_t start = line.find(kKey) + kKey.size();
  return line.substr(start, line.find('"', start) - start);
}

std::string error_line(const std::string &file, const std::string &text) {
  return R"({"kind":"error","file":")" + file + R"(","text":")" + text + "\"}\n";
}
const std::string kNoFile = "No such file or directory";

class SdblkTest : public testing::Test {
 protected:
  // Runs the command in the scratch folder.
  [[nodiscard]] command::Command with(Lines arguments) const {
    command::Command command;
    command.program = SDBLK_BINARY;
    command.directory = scratch_.path();
    command.arguments = std::move(arguments);
    command.arguments.insert(command.arguments.begin(), "sdblk");
    return command;
  }
  [[nodiscard]] Result run(Lines arguments) const {
    return command::run(with(std::move(arguments)));
  }
  // Runs a script of the shell there, to which $sdblk is the command.
  [[nodiscard]] Result shell(const std::string &script) const {
    command::Command command;
    command.program = "/bin/sh";
    command.directory = scratch_.path();
    command.arguments = {"sh", "-c", script};
    command.environment = {{"sdblk", SDBLK_BINARY}};
    return command::run(command);
  }

  // The files that the lines of a run are about, each once, in the order of their first lines.
  [[nodiscard]] Lines files_of(const Lines &arguments) const {
    Lines files;
    for (const std::string &line : lines_in(run(arguments).output)) {
      const std::string file = file_of(line);
      if (std::find(files.begin(), files.end(), file) == files.end()) files.push_back(file);
    }
    return files;
  }

  // The names in the scratch folder, sorted.
  [[nodiscard]] Lines names() const {
    Lines names;
    for (const auto &entry : fs::directory_iterator(scratch_.path())) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  void make(const std::string &name, const std::string &bytes) const {
    fs::create_directories(fs::path(scratch_ / name).parent_path());
    static_cast<void>(scratch_.file(name, bytes));
  }

  command::ScratchDirectory scratch_;
};

TEST_F(SdblkTest, SoundFileGivesStatus0) {
  make("v", volume());
  const Result result = run({"blocks", "v"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "");
  const Lines lines = lines_in(result.output);
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[0], R"({"kind":"volume","file":"v","schema":"sdblk-blocks/1","bytes":1536})");
  EXPECT_TRUE(lines[4].starts_with(R"({"kind":"end","file":"v","records":3,)"));
}

TEST_F(SdblkTest, DamagedFileGivesStatus3) {
  make("garbage", "x" + volume());
  make("cut", "000001V*0100050xx");
  make("prefix", "000001V*xxxxxxxxx");
  EXPECT_EQ(run({"blocks", "garbage"}).status, 3);
  EXPECT_EQ(run({"blocks", "cut"}).status, 3);
  EXPECT_EQ(run({"blocks", "prefix"}).status, 3);
}

TEST_F(SdblkTest, DamageIsToldByEveryVerbAndWhateverIsChosen) {
  make("garbage", "x" + volume());
  make("cut", "000001V*0100050xx");
  make("prefix", "000001V*xxxxxxxxx");
  make("record", volume::DataRecord{}.b1000(3, 1, 12).bytes(512));
  for (const std::string file : {"garbage", "cut", "prefix", "record"}) {
    for (const char *verb : {"blocks", "volumes", "stations", "segments"}) {
      EXPECT_EQ(run({verb, file}).status, 3) << verb << ' ' << file;
    }
    EXPECT_EQ(run({"blocks", "--types", "M", file}).status, 3) << file;
    EXPECT_EQ(run({"stations", "--csv", "--accept", "none", file}).status, 3) << file;
  }
}

TEST_F(SdblkTest, OtherNotesAreNoDamage) {
  // A record of 512 bytes that states 4096, with another after it: note length.
  make("length", volume::DataRecord{}.b1000(3, 1, 12).bytes(512) + volume());
  make("unconfirmed", std::string("000001V*") + std::string(92, ' '));
  for (const char *verb : {"blocks", "volumes", "stations", "segments"}) {
    EXPECT_EQ(run({verb, "length", "unconfirmed"}).status, 0) << verb;
  }
}

TEST_F(SdblkTest, PaddingIsNoDamage) {
  make("v", volume() + std::string(512, ' '));
  EXPECT_EQ(run({"blocks", "v"}).status, 0);
}

TEST_F(SdblkTest, UnreadableFileCostsItsLineAndGivesStatus1) {
  make("v", volume());
  const Result result = run({"blocks", "none", "v"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "");
  EXPECT_TRUE(result.output.starts_with(error_line("none", kNoFile)));
  EXPECT_EQ(lines_in(result.output).size(), 6U);
}

TEST_F(SdblkTest, Status1ComesBefore3) {
  make("garbage", "x" + volume());
  EXPECT_EQ(run({"blocks", "garbage", "none"}).status, 1);
}

TEST_F(SdblkTest, WrongUsageGivesStatus2AndNoOutput) {
  for (const Lines &arguments :
       {Lines{}, Lines{"none"}, Lines{"blocks"}, Lines{"blocks", "v", "--record-length", "100"},
        Lines{"blocks", "v", "--types", "X"}, Lines{"blocks", "v", "--blockettes", "x"},
        Lines{"blocks", "v", "--csv"}, Lines{"volumes", "v", "-j", "x"}}) {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("sdblk: ")) << result.error;
  }
}

TEST_F(SdblkTest, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(run({"--version"}).output, "sdblk " SDBLK_VERSION "\n");
  for (const Lines &arguments : {Lines{"--help"}, Lines{"blocks", "--help"}}) {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("Usage: sdblk"), std::string::npos);
    EXPECT_EQ(result.error, "");
  }
}

TEST_F(SdblkTest, HelpFitsATerminalOf80Columns) {
  for (const std::string verb : {"", "blocks", "volumes", "stations", "segments", "stationxml"}) {
    const Result result = verb.empty() ? run({"--help"}) : run({verb, "--help"});
    for (const std::string &line : lines_in(result.output)) EXPECT_LE(line.size(), 80U) << line;
  }
}

TEST_F(SdblkTest, HelpNamesVerbsAsTheManualDoes) {
  const std::string help = run({"--help"}).output;
  EXPECT_NE(help.find("Usage: sdblk [OPTION...] VERB\n"), std::string::npos) << help;
  EXPECT_NE(help.find("\nVerbs:\n"), std::string::npos) << help;
  EXPECT_NE(help.find("'sdblk VERB --help'"), std::string::npos) << help;
}

TEST_F(SdblkTest, DanglingLinkIsUnreadable) {
  fs::create_symlink("nowhere", scratch_ / "link");
  EXPECT_EQ(run({"blocks", "link"}).output, error_line("link", kNoFile));
}

TEST_F(SdblkTest, LinkThatIsNamedIsFollowed) {
  make("v", volume());
  fs::create_symlink("v", scratch_ / "link");
  EXPECT_EQ(run({"blocks", "link"}).status, 0);
}

TEST_F(SdblkTest, LoopOfLinksIsUnreadable) {
  fs::create_symlink("loop", scratch_ / "loop");
  EXPECT_EQ(run({"blocks", "loop"}).output,
            error_line("loop", "Too many levels of symbolic links"));
}

TEST_F(SdblkTest, PipeThatIsNamedIsUnreadable) {
  mkfifo((scratch_ / "pipe").c_str(), 0600);
  EXPECT_EQ(run({"blocks", "pipe"}).output, error_line("pipe", "not a regular file"));
}

TEST_F(SdblkTest, NameThatIsNoUtf8IsLatin1) {
  EXPECT_EQ(run({"blocks", "caf\xE9", "na\xC3\xAFve"}).output,
            error_line("caf\xC3\xA9", kNoFile) + error_line("na\xC3\xAFve", kNoFile));
}

TEST_F(SdblkTest, NameIsEscapedAsJsonRequires) {
  EXPECT_EQ(run({"blocks", "a\"b\\c\nd"}).output, error_line(R"(a\"b\\c\nd)", kNoFile));
}

TEST_F(SdblkTest, FolderGivesItsFiles) {
  for (const char *name : {"d/b", "d/a/2", "d/a/1", "d/c"}) make(name, volume());
  fs::create_symlink("../d", scratch_ / "d/loop");
  EXPECT_EQ(files_of({"blocks", "d"}), (Lines{"d/a/1", "d/a/2", "d/b", "d/c"}));
}

TEST_F(SdblkTest, EmptyFolderGivesNothing) {
  fs::create_directory(scratch_ / "d");
  const Result result = run({"blocks", "d"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

TEST_F(SdblkTest, ListOfFilesIsRead) {
  for (const char *name : {"a", "b", "c d"}) make(name, volume());
  make("list", "b\nc d\n");
  EXPECT_EQ(files_of({"volumes", "a", "--files-from", "list"}), (Lines{"a", "b", "c d"}));
}

TEST_F(SdblkTest, ListMayComeFromStandardInputWithNuls) {
  make("a\nb", volume());
  const Result result = shell(R"(printf 'a\nb\0none\0' | "$sdblk" volumes --files-from - -0)");
  EXPECT_EQ(result.status, 1);
  const Lines lines = lines_in(result.output);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(file_of(lines[0]), R"(a\nb)");
  EXPECT_EQ(lines[1] + "\n", error_line("none", kNoFile));
}

TEST_F(SdblkTest, EmptyListIsNoError) {
  make("list", "");
  const Result result = run({"volumes", "--files-from", "list"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

TEST_F(SdblkTest, ListThatCannotBeReadEndsTheRun) {
  const Result none = run({"volumes", "--files-from", "none", "-o", "out"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.error, "sdblk: none: " + kNoFile + "\n");
  const Result folder = run({"volumes", "--files-from", ".", "-o", "out"});
  EXPECT_EQ(folder.status, 1);
  EXPECT_EQ(folder.error, "sdblk: .: Is a directory\n");
  EXPECT_EQ(names(), Lines{});
}

TEST_F(SdblkTest, StandardInputIsSpooled) {
  make("v", volume());
  fs::create_directory(scratch_ / "tmp");
  const Result result = shell(R"(cat v | TMPDIR=tmp "$sdblk" blocks -)");
  EXPECT_EQ(result.status, 0);
  const Lines lines = lines_in(result.output);
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[0], R"({"kind":"volume","file":"-","schema":"sdblk-blocks/1","bytes":1536})");
  EXPECT_TRUE(fs::is_empty(scratch_ / "tmp"));
}

TEST_F(SdblkTest, StandardInputHasNoTime) {
  make("v", volume());
  EXPECT_TRUE(
      shell(R"("$sdblk" volumes - <v)")
          .output.starts_with(R"({"kind":"volume","file":"-","bytes":1536,"modified":null,)"));
}

TEST_F(SdblkTest, StandardInputIsReadOnce) {
  make("v", volume());
  const std::string twice = error_line("-", "standard input is read already");
  EXPECT_TRUE(shell(R"("$sdblk" volumes - - <v)").output.ends_with(twice));
  EXPECT_EQ(shell(R"(echo none | "$sdblk" volumes --files-from - -)").output,
            twice + error_line("none", kNoFile));
}

TEST_F(SdblkTest, ClosedStandardInputIsUnreadable) {
  const Result result = shell(R"("$sdblk" volumes - <&-)");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, error_line("-", "Bad file descriptor"));
}

TEST_F(SdblkTest, EmptyStandardInputIsAnEmptyFile) {
  const Result result = shell(R"("$sdblk" blocks - </dev/null)");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(lines_in(result.output).size(), 2U);
}

TEST_F(SdblkTest, ManyFilesGiveTheSameLinesWhateverTheWorkers) {
  const std::string bytes = volume();
  for (unsigned i = 0; i < 3000; ++i)
    make("d/" + std::to_string(i), bytes.substr(0, std::size_t{512} * (i % 4)));
  const Result one = run({"blocks", "d", "-j", "1"});
  const Result four = run({"blocks", "d", "-j", "4"});
  EXPECT_EQ(one.status, 0);
  EXPECT_EQ(four.status, 0);
  // Those of each file in their order.
  const auto by_file = [](const Result &result) {
    std::map<std::string, Lines> lines;
    for (const std::string &line : lines_in(result.output)) lines[file_of(line)].push_back(line);
    return lines;
  };
  const auto want = by_file(one);
  EXPECT_EQ(want.size(), 3000U);
  EXPECT_EQ(by_file(four), want);
}

TEST_F(SdblkTest, MoreWorkersThanFilesDoNoHarm) {
  make("v", volume());
  for (const char *workers : {"0", "2", "8", "100000"}) {
    EXPECT_EQ(run({"blocks", "v", "-j", workers}).output, run({"blocks", "v"}).output);
  }
}

TEST_F(SdblkTest, OutputFileTakesAllLines) {
  make("v", volume());
  const Result result = run({"blocks", "v", "none", "-o", "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(contents(scratch_ / "out"), run({"blocks", "v", "none"}).output);
  EXPECT_EQ(names(), (Lines{"out", "v"}));
}

TEST_F(SdblkTest, OutputFileInAFolderThatIsNotThereIsTold) {
  make("v", volume());
  const Result result = run({"blocks", "v", "-o", "none/out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "sdblk: none/out: " + kNoFile + "\n");
  EXPECT_EQ(result.output, "");
}

TEST_F(SdblkTest, FullDiskLeavesNoOutputFile) {
  make("v", volume());
  make("out", "before");
  // Of 512 bytes at most.
  const Result result = shell(R"(ulimit -f 1; "$sdblk" blocks v -o out)");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "sdblk: out: File too large\n");
  EXPECT_EQ(contents(scratch_ / "out"), "before");
  EXPECT_EQ(names(), (Lines{"out", "v"}));
}

TEST_F(SdblkTest, FullDeviceIsTold) {
  make("v", volume());
  for (const Lines &arguments : {Lines{"blocks", "v"}, Lines{"--help"}, Lines{"--version"},
                                 Lines{"volumes", "none", "--csv"}}) {
    command::Command command = with(arguments);
    command.output = Stream::kFull;
    const Result result = command::run(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.error.ends_with("sdblk: standard output: No space left on device\n"))
        << result.error;
  }
}

TEST_F(SdblkTest, ClosedStandardOutputIsTold) {
  make("v", volume());
  command::Command command = with({"blocks", "v"});
  command.output = Stream::kClosed;
  const Result result = command::run(command);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "sdblk: standard output: Bad file descriptor\n");
}

TEST_F(SdblkTest, ClosedStreamsDoNoHarmToAnOutputFile) {
  make("v", volume());
  const Result result = shell(R"("$sdblk" blocks v none -o out <&- >&- 2>&-)");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(contents(scratch_ / "out"), run({"blocks", "v", "none"}).output);
}

TEST_F(SdblkTest, ReaderThatGoesAwayEndsTheRunQuietly) {
  make("v", volume());
  command::Command command = with({"blocks", "v"});
  command.output = Stream::kGone;
  const Result result = command::run(command);
  EXPECT_EQ(result.signal, SIGPIPE);
  EXPECT_EQ(result.error, "");
}

TEST_F(SdblkTest, ReaderThatGoesAwayEndsTheRunAlsoWhereThatIsOff) {
  make("v", volume());
  const Result result = shell(
      "mkfifo pipe; exec 3<>pipe 4>pipe 3>&-\n"
      "trap '' PIPE; \"$sdblk\" blocks v >&4; echo $?\n");
  EXPECT_EQ(result.output, std::to_string(128 + SIGPIPE) + "\n");
  EXPECT_EQ(result.error, "");
}

// The run waits for its input when the signal comes.
TEST_F(SdblkTest, SignalsLeaveNoOutputFile) {
  make("out", "before");
  for (const std::string signal : {"TERM", "HUP"}) {
    const Result result = shell(
        "mkfifo pipe; exec 3<>pipe\n"
        "\"$sdblk\" volumes -o out - <pipe & run=$!\n"
        "until ls -A | grep -q tmp; do sleep 0.01; done\n"
        "kill -" +
        signal + " $run; wait $run; echo $?; rm pipe; ls -A\n");
    const int number = signal == "TERM" ? SIGTERM : SIGHUP;
    EXPECT_EQ(result.output, std::to_string(128 + number) + "\nout\n");
  }
  EXPECT_EQ(contents(scratch_ / "out"), "before");
}

TEST_F(SdblkTest, SignalThatIsOffStaysSo) {
  make("v", volume());
  const Result result = shell(
      "mkfifo pipe; trap '' HUP\n"
      "\"$sdblk\" volumes -o out - <pipe & run=$!\n"
      "exec 3>pipe\n"
      "until ls -A | grep -q tmp; do sleep 0.01; done\n"
      "kill -HUP $run; cat v >&3; exec 3>&-; wait $run; echo $?\n");
  EXPECT_EQ(result.output, "0\n");
  EXPECT_TRUE(
      contents(scratch_ / "out").starts_with(R"({"kind":"volume","file":"-","bytes":1536,)"));
}

TEST_F(SdblkTest, FileThatShrinksWhileItIsReadCostsItsOwnLines) {
  // More than goes into a pipe, so that the run waits for its reader.
  volume::VolumeWriter writer(512);
  for (int i = 0; i < 20000; ++i) writer.data({});
  make("large", writer.bytes());
  make("v", volume());
  command::Command command = with({"blocks", "large", "v"});
  command.on_arrival = [this] { fs::resize_file(scratch_ / "large", 1000); };
  const Result result = command::run(command);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.signal, 0);
  const Lines lines = lines_in(result.output);
  ASSERT_GT(lines.size(), 6U);
  EXPECT_EQ(lines[lines.size() - 6] + "\n", error_line("large", "changed while it was read"));
  EXPECT_TRUE(lines.back().starts_with(R"({"kind":"end","file":"v")"));
}

// Nothing states or confirms where the record ends.
TEST_F(SdblkTest, RecordLengthIsInForceAtFirst) {
  make("v", "000001V*" + std::string(2992, 'x'));
  const auto skips = [this](const std::string &length, const std::string &skip) {
    const std::string output = run({"blocks", "v", "--record-length", length}).output;
    return output.find(skip + R"(,"why":"garbage"})") != std::string::npos;
  };
  EXPECT_TRUE(skips("512", R"("offset":512,"length":2488)"));
  EXPECT_TRUE(skips("2048", R"("offset":2048,"length":952)"));
}

TEST_F(SdblkTest, CommaSeparatedValuesHaveAHeadingAlways) {
  make("list", "");
  const Result empty = run({"volumes", "--csv", "--files-from", "list"});
  EXPECT_EQ(empty.status, 0);
  EXPECT_TRUE(empty.output.starts_with("file,bytes,modified,content,"));
  EXPECT_EQ(lines_in(empty.output).size(), 1U);
  make("v", volume());
  const Result result = run({"volumes", "--csv", "none", "v"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "sdblk: none: " + kNoFile + "\n");
  const Lines lines = lines_in(result.output);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_TRUE(lines[1].starts_with("v,1536,"));
}

TEST_F(SdblkTest, MessageShowsNoControlCharactersOnATerminal) {
  command::Command command = with({"volumes", "--csv", "a\033[2Jb"});
  command.error = Stream::kTerminal;
  EXPECT_EQ(command::run(command).error, "sdblk: a?[2Jb: " + kNoFile + "\n");
}

TEST_F(SdblkTest, KnownFilesArePassedOver) {
  make("d/a", volume());
  make("d/b", volume());
  make("list", run({"volumes", "d"}).output);
  const Result result = run({"volumes", "--known", "list", "d"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

// Two nights on an archive that changes.
TEST_F(SdblkTest, KnownTellsWhatHasChangedSince) {
  for (const char *name : {"same", "grown", "replaced", "moved", "vanished", "in_place"}) {
    make(std::string("d/") + name, volume());
  }
  make("night1", run({"volumes", "d"}).output);
  make("d/added", volume());
  make("d/grown", volume() + volume());
  fs::remove(scratch_ / "d/vanished");
  fs::rename(scratch_ / "d/moved", scratch_ / "d/moved_to");
  // The same size, another time.
  make("other", volume());
  const auto later = fs::last_write_time(scratch_ / "d/same") + std::chrono::nanoseconds(1);
  fs::last_write_time(scratch_ / "other", later);
  fs::rename(scratch_ / "other", scratch_ / "d/replaced");
  make("d/in_place", volume());
  fs::last_write_time(scratch_ / "d/in_place",
                      fs::last_write_time(scratch_ / "d/in_place") + std::chrono::nanoseconds(1));
  const Result night2 = run({"volumes", "--known", "night1", "d"});
  EXPECT_EQ(night2.status, 0);
  Lines got;
  for (const std::string &line : lines_in(night2.output)) {
    got.push_back(line.substr(9, line.find('"', 9) - 9) + " " + file_of(line));
  }
  EXPECT_EQ(got,
            (Lines{"volume d/added", "volume d/grown", "volume d/in_place", "volume d/moved_to",
                   "volume d/replaced", "gone d/moved", "gone d/vanished"}));
  // Both lists together say how the archive is.
  make("nights", contents(scratch_ / "night1") + night2.output);
  EXPECT_EQ(run({"volumes", "--known", "nights", "d"}).output, "");
}

TEST_F(SdblkTest, KnownListThatIsNotThereEndsTheRun) {
  make("v", volume());
  const Result result = run({"volumes", "--known", "none", "v"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "sdblk: none: " + kNoFile + "\n");
}

TEST_F(SdblkTest, FolderThatIsNotThereTakesNoFilesAway) {
  make("d/a", volume());
  make("list", run({"volumes", "d"}).output);
  fs::remove_all(scratch_ / "d");
  EXPECT_EQ(run({"volumes", "--known", "list", "d"}).output, error_line("d", kNoFile));
}

TEST_F(SdblkTest, ProgressIsShownOnATerminalAndGoneAtTheEnd) {
  make("v", volume());
  command::Command command;
  command.program = "/bin/sh";
  command.directory = scratch_.path();
  // The input comes in its time.
  command.arguments = {"sh", "-c", R"((sleep 2.6; cat v) | "$sdblk" volumes none - >out)"};
  command.environment = {{"sdblk", SDBLK_BINARY}, {"TERM", "vt100"}};
  command.error = Stream::kTerminal;
  const Result result = command::run(command);
  EXPECT_TRUE(result.error.starts_with("\r\033[Ksdblk: 1 of 2 files, 0.0 of 0.0 MB"))
      << result.error;
  EXPECT_TRUE(result.error.ends_with("\r\033[K")) << result.error;
}

TEST_F(SdblkTest, ShortRunShowsNoProgress) {
  make("v", volume());
  command::Command command = with({"volumes", "v"});
  command.error = Stream::kTerminal;
  EXPECT_EQ(command::run(command).error, "");
}

}  // namespace
