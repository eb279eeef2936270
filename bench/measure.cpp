#include "bench/measure.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

pid_t start(const Command &command) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, command.output.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  std::vector<char *> argv;
  std::vector<std::string> arguments = command.arguments;
  for (std::string &argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot run " + command.arguments[0]);
  return child;
}

double seconds_in(const timeval &time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

long anonymous_kib(pid_t child) {
  std::ifstream status("/proc/" + std::to_string(child) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("RssAnon:", 0) == 0) return std::strtol(line.c_str() + 8, nullptr, 10);
  }
  return 0;
}

// A run that is looked at every millisecond.
Measurement watch(const Command &command) {
  Measurement measurement;
  const pid_t child = start(command);
  int status = 0;
  rusage usage = {};
  while (wait4(child, &status, WNOHANG, &usage) == 0) {
    measurement.peak_anonymous_kib = std::max(measurement.peak_anonymous_kib, anonymous_kib(child));
    usleep(1000);
  }
  measurement.peak_kib = usage.ru_maxrss;
  return measurement;
}

std::string joined(const std::vector<std::string> &names) {
  std::string text;
  for (const std::string &name : names) text += (text.empty() ? "" : " + ") + name;
  return text;
}

}  // namespace

void read_afresh(const std::string &path) {
  const int descriptor = open(path.c_str(), O_RDONLY);
  if (descriptor < 0) throw std::runtime_error("cannot open " + path);
  fdatasync(descriptor);
  posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
  std::vector<char> buffer(std::size_t{1} << 20);
  while (read(descriptor, buffer.data(), buffer.size()) > 0) continue;
  close(descriptor);
}

Measurement run(const Command &command) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t child = start(command);
  int status = 0;
  rusage usage = {};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(command.arguments[0] + " failed");
  }
  return {elapsed.count(), seconds_in(usage.ru_utime) + seconds_in(usage.ru_stime), usage.ru_maxrss,
          0};
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

Table::Table(std::vector<Row> rows) : rows_(std::move(rows)) {}

void Table::measure(int rounds) {
  for (int round = 0; round < rounds; ++round) {
    for (const Row &row : rows_) {
      if (row.command.arguments.empty()) continue;
      const Measurement measurement = run(row.command);
      Times &times = times_[row.name];
      times.seconds.push_back(measurement.seconds);
      times.cpu_seconds.push_back(measurement.cpu_seconds);
      times.peak_kib = measurement.peak_kib;
    }
  }
}

double Table::seconds_of(const std::string &name) const { return median(times_.at(name).seconds); }

double Table::cpu_seconds_of(const std::string &name) const {
  return median(times_.at(name).cpu_seconds);
}

void Table::print() {
  std::puts(
      "| run | seconds | CPU seconds | of | ratio | target | per second | resident | anonymous |");
  std::puts("|---|---:|---:|---|---:|---:|---:|---:|---:|");
  for (const Row &row : rows_) print_row(row);
}

void Table::print_row(const Row &row) {
  if (row.command.arguments.empty()) {
    std::printf("| %s | | | %s | | | | | |\n", row.name.c_str(), joined(row.yardsticks).c_str());
    return;
  }
  const double seconds = seconds_of(row.name);
  std::printf("| %s | %.4f | %.4f | %s |", row.name.c_str(), seconds, cpu_seconds_of(row.name),
              joined(row.yardsticks).c_str());
  if (row.yardsticks.empty()) {
    std::printf(" | |");
  } else {
    double whole = 0;
    for (const std::string &name : row.yardsticks) whole += seconds_of(name);
    std::printf(" %.2f |", seconds / whole);
    row.target > 0 ? std::printf(" %.2f |", row.target) : std::printf(" |");
  }
  row.items > 0 ? std::printf(" %.2f M |", row.items / seconds / 1e6) : std::printf(" |");
  std::printf(" %.1f MiB | %.1f MiB |\n",
              static_cast<double>(times_.at(row.name).peak_kib) / 1024.0,
              static_cast<double>(watch(row.command).peak_anonymous_kib) / 1024.0);
  std::fflush(stdout);
}

}  // namespace bench
