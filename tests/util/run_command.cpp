#include "tests/util/run_command.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace command {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const std::string &what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

// A descriptor that is closed with its owner; -1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  [[nodiscard]] int number() const { return number_; }
  void reset() {
    if (number_ >= 0) close(number_);
    number_ = -1;
  }

 private:
  int number_ = -1;
};

Descriptor opened(const char *path, int flags) {
  Descriptor file(open(path, flags | O_CLOEXEC));
  if (file.number() < 0) fail(path);
  return file;
}

// One stream: the program's end, and ours where there is something to read.
struct Ends {
  Descriptor program;
  Descriptor ours;
  bool read_afterwards = false;
};

Ends make_pipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) < 0) fail("pipe2");
  return {.program = Descriptor(ends[1]), .ours = Descriptor(ends[0])};
}

Ends make_file() {
  std::string path = std::filesystem::temp_directory_path() / "tarvik-stream-XXXXXX";
  Descriptor file(mkostemp(path.data(), O_CLOEXEC));
  if (file.number() < 0) fail(path);
  Ends ends = {.program = opened(path.c_str(), O_WRONLY | O_APPEND),
               .ours = std::move(file),
               .read_afterwards = true};
  unlink(path.c_str());
  return ends;
}

Ends make_terminal() {
  Descriptor ours(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (ours.number() < 0 || grantpt(ours.number()) < 0 || unlockpt(ours.number()) < 0) {
    fail("posix_openpt");
  }
  Ends ends = {.program = opened(ptsname(ours.number()), O_RDWR | O_NOCTTY),
               .ours = std::move(ours)};
  termios settings{};
  tcgetattr(ends.program.number(), &settings);
  cfmakeraw(&settings);
  tcsetattr(ends.program.number(), TCSANOW, &settings);
  return ends;
}

Ends make_stream(Stream stream) {
  switch (stream) {
    case Stream::kPipe: return make_pipe();
    case Stream::kFile: return make_file();
    case Stream::kTerminal: return make_terminal();
    case Stream::kFull: return {.program = opened("/dev/full", O_WRONLY), .ours = Descriptor()};
    case Stream::kGone: return {.program = make_pipe().program, .ours = Descriptor()};
    case Stream::kWithOutput:
    case Stream::kClosed: break;
  }
  return {};
}

bool is_changed(const Command &command, std::string_view variable) {
  const std::string_view name = variable.substr(0, variable.find('='));
  return std::any_of(command.environment.begin(), command.environment.end(),
                     [name](const auto &change) { return change.first == name; });
}

std::vector<std::string> environment_of(const Command &command) {
  // The first of a name counts.  The program ends without releasing what it has, as it is meant to.
  std::vector<std::string> variables = {"ASAN_OPTIONS=detect_leaks=0"};
  for (char **variable = environ; *variable != nullptr; ++variable) {
    if (!is_changed(command, *variable)) variables.emplace_back(*variable);
  }
  for (const auto &[name, value] : command.environment) {
    if (value) variables.push_back(name + "=" + *value);
  }
  return variables;
}

std::vector<char *> pointers_to(std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  for (std::string &text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

void put_in_place(int from, int to) {
  if (from < 0) {
    close(to);
  } else {
    dup2(from, to);
  }
}

pid_t start(const Command &command, const Ends &output, const Ends &error) {
  std::vector<std::string> arguments = command.arguments;
  std::vector<std::string> variables = environment_of(command);
  const std::vector<char *> argv = pointers_to(arguments);
  const std::vector<char *> envp = pointers_to(variables);
  const pid_t child = fork();
  if (child < 0) fail("fork");
  if (child > 0) return child;
  put_in_place(output.program.number(), STDOUT_FILENO);
  const bool together = command.error == Stream::kWithOutput;
  put_in_place(together ? STDOUT_FILENO : error.program.number(), STDERR_FILENO);
  if (chdir(command.directory.c_str()) < 0) _exit(126);
  execve(command.program.c_str(), argv.data(), envp.data());
  _exit(127);
}

// Takes what has arrived.  False at the end; a terminal that nobody writes to any more ends in EIO.
bool read_some(int descriptor, std::string *text) {
  std::array<char, 65536> bytes;
  const ssize_t size = read(descriptor, bytes.data(), bytes.size());
  if (size < 0 && errno == EINTR) return true;
  if (size <= 0) return false;
  text->append(bytes.data(), static_cast<std::size_t>(size));
  return true;
}

// Reads both streams until their writers are gone.  False when that takes too long.
bool read_both(const Command &command, Descriptor output, Descriptor error, Result *result) {
  const auto deadline = Clock::now() + command.limit;
  std::function<void()> on_arrival = command.on_arrival;
  while (output.number() >= 0 || error.number() >= 0) {
    std::array<pollfd, 2> waiting = {pollfd{output.number(), POLLIN, 0},
                                     pollfd{error.number(), POLLIN, 0}};
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    if (poll(waiting.data(), waiting.size(), static_cast<int>(left)) <= 0) continue;
    if (on_arrival) std::exchange(on_arrival, nullptr)();
    if (waiting[0].revents != 0 && !read_some(output.number(), &result->output)) output.reset();
    if (waiting[1].revents != 0 && !read_some(error.number(), &result->error)) error.reset();
  }
  return true;
}

void wait_for(pid_t child, Result *result) {
  int status = 0;
  rusage usage{};
  while (wait4(child, &status, 0, &usage) < 0) {
    if (errno != EINTR) fail("wait4");
  }
  if (WIFEXITED(status)) result->status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result->signal = WTERMSIG(status);
  result->peak_kib = usage.ru_maxrss;
}

void read_file(const Ends &ends, std::string *text) {
  if (!ends.read_afterwards) return;
  while (read_some(ends.ours.number(), text)) {
  }
}

Descriptor to_read_now(Ends *ends) {
  return ends->read_afterwards ? Descriptor() : std::move(ends->ours);
}

}  // namespace

Result run(const Command &command) {
  Result result;
  Ends output = make_stream(command.output);
  Ends error = make_stream(command.error);
  const pid_t child = start(command, output, error);
  output.program.reset();
  error.program.reset();
  if (!read_both(command, to_read_now(&output), to_read_now(&error), &result)) {
    kill(child, SIGKILL);
    result.too_slow = true;
  }
  wait_for(child, &result);
  read_file(output, &result.output);
  read_file(error, &result.error);
  return result;
}

std::string time_line(const std::string &path) {
  struct stat status {};
  std::array<char, 32> text{};
  if (stat(path.c_str(), &status) < 0) fail(path);
  if (ctime_r(&status.st_mtime, text.data()) == nullptr) fail("ctime_r");
  const std::string time = text.data();
  return "    " + time.substr(0, time.find('\n')) + " <#>\n";
}

namespace {

std::string first_lines(std::string_view name) {
  return "\n" + std::string(name) +
         "    Orvalen Release 5.11 Mac OS X 10.15.6 2022-02-22  <#>\n   ";
}

}  // namespace

std::string announcement(std::string_view name, std::string_view command_line,
                         std::string_view build_id) {
  return first_lines(name) + std::string(build_id) + "  <#>\n" + time_line(TARVIK_BINARY) +
         std::string(command_line) + "\n";
}

std::string version_banner(std::string_view name, std::string_view extra,
                           const std::string &executable, std::string_view build_id,
                           std::string_view patches) {
  std::string text = "\n" + std::string(name) + " " + std::string(extra) + " <#>\n";
  text += time_line(executable);
  text += "    Orvalen Release 5.11 Mac OS X 10.15.6 2022-02-22 " + std::string(patches) + " <#>\n";
  text += "    " + std::string(build_id) + "  <#>\n";
  text += "\n    " TARVIK_MAKER "\n\n    " TARVIK_ADDRESS_1 "\n    " TARVIK_ADDRESS_2 "\n\n";
  return text + "    Please report problems to " TARVIK_SUPPORT_EMAIL "\n\n";
}

std::string build_id_in(std::string_view text, std::string_view name) {
  constexpr std::size_t kDigits = 40;
  const std::size_t start = first_lines(name).size();
  if (text.size() < start) return {};
  const std::string_view id = text.substr(start, kDigits);
  const bool fits =
      id.size() == kDigits && id.find_first_not_of("0123456789abcdef") == std::string_view::npos;
  return fits ? std::string(id) : std::string();
}

std::string after_announcement(const Result &result, std::string_view command_line,
                               std::string_view name) {
  const std::string id = build_id_in(result.error, name);
  const std::string expected = announcement(name, command_line, id);
  if (id.empty() || !result.error.starts_with(expected)) return result.error;
  return result.error.substr(expected.size());
}

ScratchDirectory::ScratchDirectory() {
  path_ = std::filesystem::temp_directory_path() / "tarvik-test-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) fail(path_);
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string ScratchDirectory::operator/(std::string_view name) const {
  return path_ + "/" + std::string(name);
}

std::string ScratchDirectory::file(std::string_view name, std::string_view bytes) const {
  std::string path = *this / name;
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) fail(path);
  return path;
}

}  // namespace command
