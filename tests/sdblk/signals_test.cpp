#include "sdblk/signals.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

using namespace tarvik;

namespace {

namespace fs = std::filesystem;

// A program with a file to be removed, which says on the stream that it is ready.  Either of its two
// threads may get a signal.
[[noreturn]] void wait_for_a_signal(const std::string &path, int stream) {
  catch_ending_signals();
  remove_at_end(path.c_str());
  const auto wait = [] {
    while (true) pause();
  };
  std::thread other(wait);
  if (write(stream, "r", 1) != 1) _exit(1);
  wait();
  _exit(1);
}

// The signal that ended the program, which is sent until then; 0 for none.
int ended_by(int signal, const std::string &path) {
  int ends[2] = {};
  if (pipe(ends) != 0) return 0;
  std::ofstream(path) << "half";
  const pid_t child = fork();
  if (child == 0) wait_for_a_signal(path, ends[1]);
  close(ends[1]);
  char ready = 0;
  const bool is_ready = read(ends[0], &ready, 1) == 1;
  close(ends[0]);
  int status = 0;
  while (waitpid(child, &status, is_ready ? WNOHANG : 0) == 0) kill(child, signal);
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(CatchEndingSignals, FileIsRemovedHoweverOftenTheSignalComes) {
  constexpr int kRounds = 100;  // as the second one has to come at a certain moment to do harm
  const std::string path = testing::TempDir() + "signals_test." + std::to_string(getpid());
  for (int round = 0; round < kRounds; ++round) {
    ASSERT_EQ(ended_by(SIGTERM, path), SIGTERM);
    ASSERT_FALSE(fs::exists(path)) << "round " << round;
  }
}

}  // namespace
