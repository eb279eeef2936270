// Each allocation of the whole process refused in turn, those of the C and C++ libraries too: what
// the command can do without it does as before, and for the rest it ends as for any other failure.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/cmd/command_fixture.h"

namespace {

using command::Command;
using command::Result;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

class RefusedMemory : public CommandFixture {
 protected:
  RefusedMemory() {
    VolumeWriter out(512);
    out.control('A', ControlBlockette(34).digits(1, 3).var("M/S").var(std::string(300, 'v')));
    out.control('S',
                ControlBlockette(51).var("2021,001").var("2021,002").digits(7, 4).digits(0, 6));
    out.control('S', ControlBlockette(53)
                         .fixed("A", 1)
                         .digits(1, 2)
                         .digits(1, 3)
                         .digits(1, 3)
                         .real(1)
                         .real(1)
                         .digits(1, 3)
                         .real(1)
                         .real(2)
                         .real(3)
                         .real(4)
                         .digits(0, 3));
    out.data(DataRecord{.sta = "DYNGA", .chan = "BHZ", .net = "XX"}.b1000(3, 1, 9).b100(20));
    write(out);
  }

  // The command whose n-th allocation is refused; whether it has asked for it.
  bool run_without(long n, Command command, Result *result) const {
    const std::string report = directory_ / "report";
    std::filesystem::remove(report);
    command.environment = {{"LD_PRELOAD", TESTS_REFUSE_MEMORY},
                           {"REFUSE_ALLOCATION", std::to_string(n)},
                           {"REFUSE_REPORT", report},
                           {"ORVALEN", directory_.path()}};
    *result = command::run(command);
    return std::filesystem::exists(report);
  }

  // Refuses one after the other until the last is past.
  void refuse_each(const std::vector<std::string> &arguments) const {
    const Command command = command_with(arguments);
    Result whole;
    ASSERT_FALSE(run_without(0, command, &whole));
    const std::string announced = whole.error.substr(0, whole.error.find("tarvik", 10));
    Result result;
    long n = 1;
    for (; run_without(n, command, &result); ++n) {
      ASSERT_EQ(result.signal, 0) << n << '\n' << result.error;
      // The build's identifier and the time are among the first lines.
      EXPECT_EQ(result.error.substr(0, announced.size()), announced) << n;
      if (result.status == whole.status && result.output == whole.output) continue;
      EXPECT_EQ(result.status, 1) << n;
      EXPECT_TRUE(result.error.ends_with("(v.seed) error.\n")) << n << '\n' << result.error;
    }
    EXPECT_EQ(result.error, whole.error);
    EXPECT_GT(n, 1);
  }
};

TEST_F(RefusedMemory, EndsTheCountsInOrder) { refuse_each({"v.seed"}); }

TEST_F(RefusedMemory, EndsTheListingInOrder) { refuse_each({"-v", "v.seed"}); }

TEST_F(RefusedMemory, EndsTheFullListingInOrder) { refuse_each({"-vv", "v.seed"}); }

TEST_F(RefusedMemory, EndsTheSummaryInOrder) { refuse_each({"-sta", "-v", "v.seed"}); }

TEST_F(RefusedMemory, EndsTheBannerInOrder) { refuse_each({}); }

}  // namespace
