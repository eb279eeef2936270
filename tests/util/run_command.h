// Runs a program as a shell would, and tells what it wrote and how it ended.
#ifndef TESTS_UTIL_RUN_COMMAND_H_
#define TESTS_UTIL_RUN_COMMAND_H_

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace command {

// Where a stream of the program goes.
enum class Stream {
  kPipe,        // to the test
  kFile,        // to a file, which the test reads afterwards
  kTerminal,    // to a terminal, in raw mode: what arrives is what was written
  kWithOutput,  // standard error only: where standard output goes (2>&1)
  kFull,        // to a device without room
  kClosed,      // nowhere: the descriptor is not open
  kGone         // into a pipe whose reader has gone away
};

struct Command {
  std::vector<std::string> arguments = {};  // the program's name first
  std::string program = TARVIK_BINARY;      // the file that is run
  std::string directory = ".";              // where it runs
  // Changes to the environment; no value takes the variable away.
  std::vector<std::pair<std::string, std::optional<std::string>>> environment = {};
  Stream output = Stream::kPipe;
  Stream error = Stream::kPipe;
  // Called once, when the first bytes have arrived and before any is read.
  std::function<void()> on_arrival = {};
  std::chrono::seconds limit{60};  // then it is killed
};

struct Result {
  std::string output;
  std::string error;
  int status = -1;        // exit status, or -1 when it did not exit
  int signal = 0;         // the signal that ended it, or 0
  long peak_kib = 0;      // the most memory that it had at once
  bool too_slow = false;  // killed at the limit
};

// Throws std::runtime_error when the program cannot be started.
Result run(const Command &command);

// What the command writes to standard error at its start: its name, the release, the build, the
// time of the program file and the command line.
std::string announcement(std::string_view name, std::string_view command_line,
                         std::string_view build_id);

// The build identifier in a text that starts with an announcement by this name, or an empty text
// where no 40 hexadecimal digits stand in its place.
std::string build_id_in(std::string_view text, std::string_view name);

// Standard error without the announcement before it.  Where that is not the expected one,
// nothing is taken away, so that a comparison fails and shows it.
std::string after_announcement(const Result &result, std::string_view command_line,
                               std::string_view name = "tarvik");

// The version banner; patches is what it says about them, "" or ", 3 patches".
std::string version_banner(std::string_view name, std::string_view extra,
                           const std::string &executable, std::string_view build_id,
                           std::string_view patches);

// When a file was changed last, as the announcement says it, with the line end.
std::string time_line(const std::string &path);

// A directory that goes away with its files.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory &) = delete;
  ScratchDirectory &operator=(const ScratchDirectory &) = delete;

  [[nodiscard]] const std::string &path() const { return path_; }
  // The path of a file in it.
  [[nodiscard]] std::string operator/(std::string_view name) const;
  // Writes a file; its path.
  [[nodiscard]] std::string file(std::string_view name, std::string_view bytes) const;

 private:
  std::string path_;
};

}  // namespace command

#endif  // TESTS_UTIL_RUN_COMMAND_H_
