// Runs a function in a child process and tells what became of it.
#ifndef TESTS_SUPPORT_CHILD_H_
#define TESTS_SUPPORT_CHILD_H_

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

struct ChildResult {
  int status;         // exit status, or 1000 and the number of the signal that ended the child
  std::string bytes;  // what it wrote
};

inline int child_exit_status(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

// Reads until the other side is closed; a terminal says so by an error.
inline std::string read_everything(int descriptor) {
  std::string bytes;
  std::array<char, 4096> piece;
  for (ssize_t got = 0; (got = read(descriptor, piece.data(), piece.size())) > 0;) {
    bytes.append(piece.data(), static_cast<std::size_t>(got));
  }
  return bytes;
}

// The child's standard output and standard error both go into one pipe.  A function that returns is
// followed by exit(0).
template <typename Function>
ChildResult run_child(Function function) {
  std::array<int, 2> ends = {};
  if (pipe(ends.data()) != 0) return {-1, "no pipe"};
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    function();
    std::exit(0);
  }
  close(ends[1]);
  ChildResult result = {0, read_everything(ends[0])};
  close(ends[0]);
  result.status = child_exit_status(child);
  return result;
}

// Both streams of the child are a terminal that changes nothing.
template <typename Function>
ChildResult run_child_on_terminal(Function function) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return {-1, "no terminal"};
  const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(terminal, STDOUT_FILENO);
    dup2(terminal, STDERR_FILENO);
    close(terminal);
    function();
    std::exit(0);
  }
  close(terminal);
  ChildResult result = {0, read_everything(master)};
  close(master);
  result.status = child_exit_status(child);
  return result;
}

#endif  // TESTS_SUPPORT_CHILD_H_
