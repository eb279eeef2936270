// What the tests of the command share: a directory of their own in which it runs, and its count
// lines.
#ifndef TESTS_CMD_COMMAND_FIXTURE_H_
#define TESTS_CMD_COMMAND_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"

struct Counts {
  int unknown = 0;
  int v = 0;
  int a = 0;
  int s = 0;
  int t = 0;
  int d = 0;
  int r = 0;
  int q = 0;
  int m = 0;

  [[nodiscard]] std::string lines() const {
    const auto line = [](std::string_view letter, int count) {
      return "# " + std::string(letter) + "s = " + std::to_string(count) + "\n";
    };
    return line("U", unknown) + line("V", v) + line("A", a) + line("S", s) + line("T", t) +
           line("D", d) + line("R", r) + line("Q", q) + line("M", m);
  }
};

class CommandFixture : public testing::Test {
 protected:
  // The command with these arguments, in the test's directory; "tarvik" is not among them.
  [[nodiscard]] command::Command command_with(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "tarvik");
    return {.arguments = std::move(arguments), .directory = directory_.path()};
  }
  [[nodiscard]] command::Result tarvik(std::vector<std::string> arguments) const {
    return command::run(command_with(std::move(arguments)));
  }

  // Writes the volume "v.seed", which the tests read.
  void write(const volume::VolumeWriter &volume) const { volume.write_to(directory_ / "v.seed"); }
  void write(std::string_view bytes) const { static_cast<void>(directory_.file("v.seed", bytes)); }

  static std::string at_end(const Counts &counts) {
    return "EOF detected on v.seed.\n" + counts.lines();
  }

  command::ScratchDirectory directory_;
};

#endif  // TESTS_CMD_COMMAND_FIXTURE_H_
