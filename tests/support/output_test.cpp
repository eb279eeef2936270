#include "support/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/elog.h"
#include "support/elog_impl.h"
#include "support/line.h"
#include "support/memory.h"
#include "support/stream.h"
#include "tests/support/child.h"

using namespace tarvik;

namespace {

using std::string_literals::operator""s;

TEST(OutputPrint, TextIsWrittenAsFormatted) {
  const ChildResult child = run_child([] { output_print("# %cs = %d\n", 'V', 12); });
  EXPECT_EQ(child.bytes, "# Vs = 12\n");
  EXPECT_EQ(child.status, 0);
}

TEST(OutputPrint, NoNewlineIsAdded) {
  const ChildResult child = run_child([] {
    output_print("a");
    output_print("b");
  });
  EXPECT_EQ(child.bytes, "ab");
}

TEST(OutputPrint, NulByteCutsNothing) {
  const ChildResult child = run_child([] { output_print("a%cb\n", '\0'); });
  EXPECT_EQ(child.bytes, "a\0b\n"s);
}

TEST(OutputPrint, LongTextIsWrittenWhole) {
  const std::string text(200000, 'x');
  const ChildResult child = run_child([&] { output_print("%s", text.c_str()); });
  EXPECT_TRUE(child.bytes == text);
}

TEST(OutputPrint, IsBuffered) {
  const ChildResult child = run_child([] {
    output_print("lost\n");
    _exit(0);
  });
  EXPECT_EQ(child.bytes, "");
}

TEST(OutputPrint, ControlBytesAreHiddenOnATerminal) {
  const ChildResult child =
      run_child_on_terminal([] { output_print("a\x1b\x01\x7f\tb%c\n", '\0'); });
  EXPECT_EQ(child.bytes, "a???\tb?\r\n");
}

TEST(OutputPrint, ControlBytesGoIntoAPipeAsTheyStand) {
  const ChildResult child = run_child([] { output_print("a\x1b\x01\x7f\n"); });
  EXPECT_EQ(child.bytes, "a\x1b\x01\x7f\n");
}

TEST(OutputReserve, TextBuiltInPlaceIsWritten) {
  const ChildResult child = run_child([] {
    output_print("one\n");
    output_commit(put_text(output_reserve(8), "two\n"));
  });
  EXPECT_EQ(child.bytes, "one\ntwo\n");
}

TEST(OutputReserve, MoreThanTheBufferIsGiven) {
  const ChildResult child = run_child([] {
    output_print("one\n");
    char *out = output_reserve(kStreamBytes + 1);
    std::memset(out, 'x', kStreamBytes + 1);
    output_commit(out + kStreamBytes + 1);
  });
  EXPECT_TRUE(child.bytes == "one\n" + std::string(kStreamBytes + 1, 'x'));
}

TEST(OutputReserve, WithoutMemoryTheProgramEnds) {
  const ChildResult child = run_child([] {
    output_print("one\n");
    memory_set_gate([](std::size_t) { return false; });
    output_reserve(1000000);
  });
  EXPECT_EQ(child.bytes, "one\noutput_reserve: malloc(1000000) error.\n");
  EXPECT_EQ(child.status, 1);
}

TEST(OutputFlush, WritesAtOnce) {
  const ChildResult child = run_child([] {
    output_print("now\n");
    output_flush();
    _exit(0);
  });
  EXPECT_EQ(child.bytes, "now\n");
}

TEST(OutputOrder, BothStreamsIntoOnePipeKeepTheTrueOrder) {
  const ChildResult child = run_child([] {
    for (int i = 0; i < 3; ++i) {
      output_print("out %d\n", i);
      elog_notify(0, "log %d\n", i);
      elog_commit(put_text(elog_reserve(8), "line\n"));
    }
    output_print("end\n");
  });
  EXPECT_EQ(child.bytes, "out 0\nlog 0\nline\nout 1\nlog 1\nline\nout 2\nlog 2\nline\nend\n");
}

TEST(OutputWriteError, NoneAtFirst) {
  const ChildResult child = run_child([] {
    output_print("text\n");
    output_flush();
    elog_notify(0, "%d\n", output_write_error());
  });
  EXPECT_EQ(child.bytes, "text\n0\n");
}

TEST(OutputWriteError, FullDeviceIsReported) {
  const ChildResult child = run_child([] {
    dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
    output_print("lost\n");
    output_flush();
    elog_notify(0, "%d\n", output_write_error());
  });
  EXPECT_EQ(child.bytes, std::to_string(ENOSPC) + "\n");
}

TEST(OutputWriteError, ClosedDescriptorIsReported) {
  const ChildResult child = run_child([] {
    close(STDOUT_FILENO);
    output_print("lost\n");
    output_flush();
    elog_notify(0, "%d\n", output_write_error());
  });
  EXPECT_EQ(child.bytes, std::to_string(EBADF) + "\n");
}

TEST(OutputWriteError, LogIsNotBlamed) {
  const ChildResult child = run_child([] {
    dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
    output_print("lost\n");
    elog_notify(0, "%d\n", elog_write_error());
  });
  EXPECT_EQ(child.bytes, "0\n");
}

}  // namespace
