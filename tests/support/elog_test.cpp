#include "support/elog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/elog_impl.h"
#include "support/line.h"
#include "support/memory.h"
#include "support/output.h"
#include "support/stream.h"
#include "tests/support/child.h"
#include "tests/util/log_capture.h"

using namespace tarvik;

namespace {

using std::string_literals::operator""s;

void append_to_string(void *context, const char *bytes, size_t size) {
  static_cast<std::string *>(context)->append(bytes, size);
}

void emergency_write(std::string text) { streams_emergency_write(text.data(), text.size()); }

std::string commandline_of(std::initializer_list<const char *> arguments) {
  std::vector<std::string> texts(arguments.begin(), arguments.end());
  std::vector<char *> argv;
  for (std::string &text : texts) argv.push_back(text.data());
  const int argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);
  elog_init(argc, argv.data());
  char *line = elog_commandline_str();
  std::string result = line == nullptr ? "(null)" : line;
  std::free(line);
  elog_init(0, nullptr);
  return result;
}

TEST(ElogNotify, TextIsWrittenAsFormatted) {
  const LogCapture log;
  elog_notify(0, "B%4.4d at %c:%6.6d\n", 5, 'V', 12);
  EXPECT_EQ(log.text(), "B0005 at V:000012\n");
}

TEST(ElogNotify, MissingNewlineIsAdded) {
  const LogCapture log;
  elog_notify(0, "one");
  elog_notify(0, "%s", "");
  elog_notify(0, "two\n");
  EXPECT_EQ(log.text(), "one\n\ntwo\n");
}

TEST(ElogNotify, NulByteCutsNothing) {
  const LogCapture log;
  elog_notify(0, "a%cb\n", '\0');
  EXPECT_EQ(log.text(), "a\0b\n"s);
}

TEST(ElogNotify, LongTextIsWrittenWhole) {
  const LogCapture log;
  for (const std::size_t size : {1022U, 1023U, 1024U, 5000U, 65535U, 65536U, 200000U}) {
    const std::string text(size, 'x');
    const std::size_t before = log.text().size();
    elog_notify(0, "%s", text.c_str());
    EXPECT_EQ(log.text().substr(before), text + "\n") << size;
  }
}

TEST(ElogNotify, WithoutMemoryOnlyWhatPassesTheBufferIsCut) {
  const LogCapture log;
  elog_notify(0, "first\n");
  memory_set_gate([](std::size_t) { return false; });
  elog_notify(0, "%s", std::string(kStreamBytes - 10, 'x').c_str());
  elog_notify(0, "%s", std::string(1000000, 'y').c_str());
  memory_set_gate(nullptr);
  const std::string text = log.text();
  const std::string whole = "first\n" + std::string(kStreamBytes - 10, 'x') + "\n";
  ASSERT_TRUE(text.starts_with(whole));
  EXPECT_GT(text.size() - whole.size(), kStreamBytes - 10);
  EXPECT_LT(text.size() - whole.size(), 1000000U);
  EXPECT_TRUE(text.ends_with("y\n"));
}

TEST(ElogNotify, RegisterIsLeftAlone) {
  const LogCapture log;
  elog_log(0, "registered\n");
  elog_notify(0, "noted\n");
  EXPECT_EQ(log.text(), "noted\n");
}

TEST(ElogNotify, FlagOneAddsTheSystemText) {
  const LogCapture log;
  errno = ENOENT;
  elog_notify(1, "no file\n");
  EXPECT_EQ(log.text(), "no file\n    "s + std::strerror(ENOENT) + "\n");
}

TEST(ElogLog, NothingIsWritten) {
  const LogCapture log;
  elog_log(0, "silent\n");
  elog_flush();
  EXPECT_EQ(log.text(), "");
}

TEST(ElogLog, ErrnoIsReadAtTheCall) {
  const LogCapture log;
  errno = EACCES;
  elog_log(1, "first");
  errno = ENOENT;
  elog_complain(0, "last\n");
  EXPECT_EQ(log.text(), "first\n    "s + std::strerror(EACCES) + "\nlast\n");
}

TEST(ElogLog, FlagOneWithoutErrnoAddsNothing) {
  const LogCapture log;
  errno = 0;
  elog_complain(1, "plain\n");
  EXPECT_EQ(log.text(), "plain\n");
}

TEST(ElogLog, OtherFlagsAddNothing) {
  const LogCapture log;
  errno = EACCES;
  elog_complain(2, "plain\n");
  EXPECT_EQ(log.text(), "plain\n");
}

TEST(ElogLog, MemoryExhaustedKeepsShortTextWhole) {
  const LogCapture log;
  memory_set_gate([](std::size_t) { return false; });
  elog_log(0, "malloc error\n");
  memory_set_gate(nullptr);
  elog_complain(0, "end\n");
  EXPECT_EQ(log.text(), "malloc error\nend\n");
}

TEST(ElogLog, MemoryExhaustedCutsLongTextButNotTheSystemText) {
  const LogCapture log;
  const std::string text(3000, 'x');
  errno = ENOMEM;
  memory_set_gate([](std::size_t) { return false; });
  elog_log(1, "%s", text.c_str());
  memory_set_gate(nullptr);
  elog_complain(0, "end\n");
  const std::string ending = "\n    "s + std::strerror(ENOMEM) + "\nend\n";
  ASSERT_GT(log.text().size(), ending.size() + 500);
  EXPECT_LT(log.text().size(), 1100U);
  EXPECT_EQ(log.text().substr(log.text().size() - ending.size() - 1), "x" + ending);
}

TEST(ElogComplain, RegisterIsWrittenOldestFirstAndEmptied) {
  const LogCapture log;
  elog_log(0, "one\n");
  elog_log(0, "two\n");
  elog_complain(0, "three\n");
  elog_complain(0, "four\n");
  EXPECT_EQ(log.text(), "one\ntwo\nthree\nfour\n");
}

TEST(ElogComplain, FullRegisterHasDroppedNothing) {
  const LogCapture log;
  std::string expected;
  for (int i = 0; i < 100; ++i) {
    elog_log(0, "%d\n", i);
    expected += std::to_string(i) + "\n";
  }
  elog_complain(0, "end\n");
  EXPECT_EQ(log.text(), expected + "end\n");
}

TEST(ElogComplain, DroppedTextsAreCounted) {
  const LogCapture log;
  for (int i = 0; i < 250; ++i) elog_log(0, "%d\n", i);
  elog_complain(0, "end\n");
  std::string expected = "(150 earlier messages dropped)\n";
  for (int i = 150; i < 250; ++i) expected += std::to_string(i) + "\n";
  EXPECT_EQ(log.text(), expected + "end\n");
}

TEST(ElogComplain, DroppedCountStartsAgain) {
  const LogCapture log;
  for (int i = 0; i < 101; ++i) elog_log(0, "x\n");
  elog_complain(0, "end\n");
  const std::size_t before = log.text().size();
  elog_log(0, "one\n");
  elog_complain(0, "end\n");
  EXPECT_EQ(log.text().substr(before), "one\nend\n");
}

TEST(ElogClearRegister, FlagZeroDropsUnseen) {
  const LogCapture log;
  elog_log(0, "gone\n");
  elog_clear_register(0);
  elog_complain(0, "end\n");
  EXPECT_EQ(log.text(), "end\n");
}

TEST(ElogClearRegister, OtherFlagWritesFirst) {
  const LogCapture log;
  elog_log(0, "kept\n");
  elog_clear_register(1);
  EXPECT_EQ(log.text(), "kept\n");
  elog_complain(0, "end\n");
  EXPECT_EQ(log.text(), "kept\nend\n");
}

TEST(ElogDie, WritesRegisterAndEndsWithOne) {
  const ChildResult child = run_child([] {
    elog_log(0, "why\n");
    elog_die(0, "dead\n");
  });
  EXPECT_EQ(child.bytes, "why\ndead\n");
  EXPECT_EQ(child.status, 1);
}

TEST(ElogDie, OutputIsFlushed) {
  const ChildResult child = run_child([] {
    elog_set_die([](void *) { _exit(7); }, nullptr);
    output_print("counted\n");
    elog_die(0, "dead\n");
  });
  EXPECT_EQ(child.bytes, "counted\ndead\n");
  EXPECT_EQ(child.status, 7);
}

TEST(ElogDie, HookMayThrow) {
  const LogCapture log;
  int context = 5;
  elog_set_die([](void *value) { throw *static_cast<int *>(value); }, &context);
  EXPECT_THROW(elog_die(0, "dead\n"), int);
  elog_set_die(nullptr, nullptr);
  EXPECT_EQ(log.text(), "dead\n");
}

TEST(ElogDie, HookThatReturnsIsFollowedByExit) {
  const ChildResult child = run_child([] {
    elog_set_die([](void *) { elog_notify(0, "hook\n"); }, nullptr);
    elog_die(0, "dead\n");
  });
  EXPECT_EQ(child.bytes, "dead\nhook\n");
  EXPECT_EQ(child.status, 1);
}

TEST(ElogInit, NameIsTheLastComponent) {
  std::string path = "/opt/bin/tarvik";
  std::array<char *, 2> argv = {path.data(), nullptr};
  elog_init(1, argv.data());
  EXPECT_STREQ(elog_program_name(), "tarvik");
  elog_init(0, nullptr);
  EXPECT_EQ(elog_program_name(), nullptr);
}

TEST(ElogInit, NameWithoutDirectoryIsWhole) {
  std::string path = "tarvik";
  std::array<char *, 2> argv = {path.data(), nullptr};
  elog_init(1, argv.data());
  EXPECT_STREQ(elog_program_name(), "tarvik");
  elog_init(0, nullptr);
}

TEST(ElogInit, WithoutANameThereIsNone) {
  std::array<char *, 1> argv = {nullptr};
  elog_init(1, argv.data());
  EXPECT_EQ(elog_program_name(), nullptr);
  elog_init(1, nullptr);
  EXPECT_EQ(elog_program_name(), nullptr);
  elog_init(0, nullptr);
}

TEST(ElogCommandline, PlainArgumentsAreJoinedByBlanks) {
  EXPECT_EQ(commandline_of({"./tarvik", "-lsize", "4096", "a_@%+=:,./-Z9"}),
            "./tarvik -lsize 4096 a_@%+=:,./-Z9");
}

TEST(ElogCommandline, OtherArgumentsAreQuoted) {
  EXPECT_EQ(commandline_of({"t", "", "a b", "$x", "a\nb", "\xc3\xa4"}),
            "t '' 'a b' '$x' 'a\nb' '\xc3\xa4'");
}

TEST(ElogCommandline, BracesAreQuoted) { EXPECT_EQ(commandline_of({"t", "{a}"}), "t '{a}'"); }

TEST(ElogCommandline, SingleQuoteIsQuoted) {
  EXPECT_EQ(commandline_of({"t", "it's"}), "t 'it'\\''s'");
}

TEST(ElogCommandline, NoArgumentsGiveEmptyText) { EXPECT_EQ(commandline_of({}), ""); }

TEST(ElogCommandline, MemoryExhaustedGivesNull) {
  memory_set_gate([](std::size_t) { return false; });
  EXPECT_EQ(elog_commandline_str(), nullptr);
  memory_set_gate(nullptr);
}

TEST(ElogCommandline, EndsWithTheFirstNullArgument) {
  std::string name = "tarvik";
  std::array<char *, 2> argv = {name.data(), nullptr};
  elog_init(5, argv.data());
  char *line = elog_commandline_str();
  EXPECT_STREQ(line, "tarvik");
  std::free(line);
  elog_init(0, nullptr);
}

TEST(ElogCommandline, IsNotifiedWithoutMemory) {
  const LogCapture log;
  std::string name = "tarvik";
  std::array<char *, 2> argv = {name.data(), nullptr};
  elog_init(1, argv.data());
  memory_set_gate([](std::size_t) { return false; });
  elog_commandline();
  memory_set_gate(nullptr);
  elog_init(0, nullptr);
  EXPECT_EQ(log.text(), "tarvik\n");
}

TEST(ElogCommandline, IsNotified) {
  const LogCapture log;
  std::string name = "tarvik";
  std::string file = "100%s";
  std::array<char *, 3> argv = {name.data(), file.data(), nullptr};
  elog_init(2, argv.data());
  elog_commandline();
  elog_init(0, nullptr);
  EXPECT_EQ(log.text(), "tarvik 100%s\n");
}

TEST(ElogSink, GetsWholeLinesAtOnce) {
  const LogCapture log;
  char *out = elog_reserve(16);
  elog_commit(put_text(out, "line\n"));
  EXPECT_EQ(log.text(), "line\n");
}

TEST(ElogSink, RemovedGivesStandardErrorBack) {
  const ChildResult child = run_child([] {
    std::string text;
    elog_notify(0, "before\n");
    elog_set_sink(append_to_string, &text);
    elog_notify(0, "inside\n");
    elog_set_sink(nullptr, nullptr);
    elog_notify(0, "after %s", text.c_str());
  });
  EXPECT_EQ(child.bytes, "before\nafter inside\n");
}

TEST(ElogStream, RegisteredTextsAreNotWrittenAtExit) {
  const ChildResult child = run_child([] {
    elog_notify(0, "noted\n");
    elog_log(0, "registered\n");
  });
  EXPECT_EQ(child.bytes, "noted\n");
  EXPECT_EQ(child.status, 0);
}

TEST(ElogStream, NotificationsAreBuffered) {
  const ChildResult child = run_child([] {
    elog_notify(0, "lost\n");
    _exit(0);
  });
  EXPECT_EQ(child.bytes, "");
}

TEST(ElogStream, ComplaintIsWrittenThrough) {
  const ChildResult child = run_child([] {
    elog_notify(0, "noted\n");
    elog_complain(0, "complained\n");
    _exit(0);
  });
  EXPECT_EQ(child.bytes, "noted\ncomplained\n");
}

TEST(ElogStream, ManyLinesArriveWhole) {
  const ChildResult child = run_child([] {
    for (int i = 0; i < 30000; ++i) {
      char *out = elog_reserve(64);
      out = put_text(out, "line ");
      elog_commit(put_char(put_integer(out, i), '\n'));
    }
  });
  std::string expected;
  for (int i = 0; i < 30000; ++i) expected += "line " + std::to_string(i) + "\n";
  EXPECT_TRUE(child.bytes == expected) << child.bytes.size() << " of " << expected.size();
}

TEST(ElogStream, RoomAsLargeAsTheBufferIsGiven) {
  const ChildResult child = run_child([] {
    elog_notify(0, "first\n");
    char *out = elog_reserve(kStreamBytes);
    std::memset(out, 'x', kStreamBytes);
    elog_commit(out + kStreamBytes);
  });
  EXPECT_TRUE(child.bytes == "first\n" + std::string(kStreamBytes, 'x'));
}

TEST(ElogStream, MoreRoomThanTheBufferIsGiven) {
  const ChildResult child = run_child([] {
    for (const std::size_t size : {kStreamBytes + 1, kStreamBytes, 3 * kStreamBytes}) {
      elog_notify(0, "first\n");
      char *out = elog_reserve(size);
      std::memset(out, 'x', size);
      elog_commit(out + size);
    }
  });
  const auto line = [](std::size_t size) { return "first\n" + std::string(size, 'x'); };
  EXPECT_TRUE(child.bytes == line(kStreamBytes + 1) + line(kStreamBytes) + line(3 * kStreamBytes));
  EXPECT_EQ(child.status, 0);
}

TEST(ElogStream, RoomWithoutMemoryEndsTheProgram) {
  const ChildResult child = run_child([] {
    elog_notify(0, "first\n");
    memory_set_gate([](std::size_t) { return false; });
    elog_reserve(1000000);  // more than any other test here
  });
  EXPECT_EQ(child.bytes, "first\nelog_reserve: malloc(1000000) error.\n");
  EXPECT_EQ(child.status, 1);
}

TEST(ElogStream, ControlBytesGoIntoAPipeAsTheyStand) {
  const ChildResult child = run_child([] { elog_notify(0, "\x1b[2J\r\x7f\n"); });
  EXPECT_EQ(child.bytes, "\x1b[2J\r\x7f\n");
}

TEST(ElogStream, ControlBytesAreHiddenOnATerminal) {
  const ChildResult child =
      run_child_on_terminal([] { elog_notify(0, "a\x1b[2J\r\x7f\t%c\xe4z\n", '\0'); });
  EXPECT_EQ(child.bytes, "a?[2J??\t?\xe4z\r\n");
}

TEST(ElogStream, ControlCharactersOfOtherSizeAreHiddenOnATerminal) {
  const ChildResult child =
      run_child_on_terminal([] { elog_notify(0, "\x9b\xc2\x9b\xc3\x9b\xe2\x82\x82\n"); });
  EXPECT_EQ(child.bytes, "??\xc3\x9b\xe2\x82\x82\r\n");
}

TEST(ElogStream, TerminalGetsEachLineAtOnce) {
  const ChildResult child = run_child_on_terminal([] {
    elog_notify(0, "now\n");
    _exit(0);
  });
  EXPECT_EQ(child.bytes, "now\r\n");
}

TEST(ElogStream, LongTextOnATerminalIsHiddenThroughout) {
  const ChildResult child = run_child_on_terminal(
      [] { elog_notify(0, "%s\n", std::string(kStreamBytes + 100, '\x1b').c_str()); });
  EXPECT_TRUE(child.bytes == std::string(kStreamBytes + 100, '?') + "\r\n");
}

TEST(ElogStream, FullDeviceIsAWriteError) {
  const ChildResult child = run_child([] {
    dup2(open("/dev/full", O_WRONLY), STDERR_FILENO);
    elog_notify(0, "lost\n");
    const int before = elog_write_error();
    elog_flush();
    output_print("%d %d\n", before, elog_write_error());
  });
  EXPECT_EQ(child.bytes, "0 " + std::to_string(ENOSPC) + "\n");
}

TEST(ElogStream, FirstWriteErrorIsKeptAndItsBytesAreDropped) {
  const ChildResult child = run_child([] {
    const int pipe_end = dup(STDERR_FILENO);
    close(STDERR_FILENO);
    elog_complain(0, "lost\n");
    dup2(open("/dev/full", O_WRONLY), STDERR_FILENO);
    elog_complain(0, "lost too\n");
    dup2(pipe_end, STDERR_FILENO);
    elog_complain(0, "%d\n", elog_write_error());
  });
  EXPECT_EQ(child.bytes, std::to_string(EBADF) + "\n");
}

TEST(ElogStream, NonBlockingDescriptorLosesNothing) {
  const ChildResult child = run_child([] {
    fcntl(STDERR_FILENO, F_SETPIPE_SZ, 4096);  // smaller than the log's buffer: part is taken
    fcntl(STDERR_FILENO, F_SETFL, fcntl(STDERR_FILENO, F_GETFL) | O_NONBLOCK);
    for (int i = 0; i < 50000; ++i) elog_notify(0, "%010d\n", i);
    elog_flush();
    std::exit(elog_write_error());
  });
  ASSERT_EQ(child.bytes.size(), 50000U * 11);
  for (std::size_t i = 0; i < 50000; ++i) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(child.bytes.substr(i * 11, 11), std::string(10 - number.size(), '0') + number + "\n");
  }
  EXPECT_EQ(child.status, 0);
}

TEST(ElogStream, ReaderThatGoesAwayEndsTheProgramQuietly) {
  const ChildResult child = run_child([] {
    std::array<int, 2> ends = {};
    if (pipe(ends.data()) != 0) std::exit(9);
    close(ends[0]);
    dup2(ends[1], STDERR_FILENO);
    elog_complain(0, "nobody reads\n");
  });
  EXPECT_EQ(child.bytes, "");
  EXPECT_EQ(child.status, 1000 + SIGPIPE);
}

TEST(ElogStream, ErrnoSurvivesACall) {
  const LogCapture log;
  errno = ERANGE;
  elog_log(0, "text\n");
  EXPECT_EQ(errno, ERANGE);
}

TEST(StreamsEmergencyWrite, WritesWhatIsCommittedAndThenTheText) {
  const ChildResult child = run_child([] {
    output_print("output\n");
    elog_notify(0, "log\n");
    static_cast<void>(put_text(elog_reserve(100), "not committed"));
    emergency_write("fault\n");
    _exit(3);
  });
  EXPECT_EQ(child.bytes, "output\nlog\nfault\n");
  EXPECT_EQ(child.status, 3);
}

TEST(StreamsEmergencyWrite, TextLosesItsControlCharactersOnATerminal) {
  const auto write = [] {
    emergency_write("a\x1b\x9b\n");
    _exit(3);
  };
  EXPECT_EQ(run_child_on_terminal(write).bytes, "a??\r\n");
  EXPECT_EQ(run_child(write).bytes, "a\x1b\x9b\n");
}

TEST(StreamsEmergencyWrite, PendingOutputComesBeforeTheText) {
  const ChildResult child = run_child([] {
    elog_notify(0, "log\n");
    output_print("output\n");
    emergency_write("fault\n");
    _exit(3);
  });
  EXPECT_EQ(child.bytes, "log\noutput\nfault\n");
}

}  // namespace
