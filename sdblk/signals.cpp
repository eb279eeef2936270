#include "sdblk/signals.h"

#include <unistd.h>

#include <array>
#include <atomic>

#include "sdblk/progress.h"

namespace tarvik {

namespace {

constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU};

std::atomic<const char *> path_to_remove = nullptr;

// The signal gets its default effect only when all is cleaned up: the same one may come again at any
// moment, to another thread as well.  It comes into force when this returns.
void clean_up_and_end(int signal) {
  const char *path = path_to_remove;
  if (path != nullptr) unlink(path);
  erase_progress();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

void catch_ending_signals() {
  erase_progress();  // so that the handler finds everything made
  // A reader that goes away ends the program quietly, also where it was started with that off.
  std::signal(SIGPIPE, SIG_DFL);
  struct sigaction action = {};
  action.sa_handler = clean_up_and_end;
  for (const int signal : kEndingSignals) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_DFL) sigaction(signal, &action, nullptr);
  }
  std::signal(SIGXFSZ, SIG_IGN);
}

void remove_at_end(const char *path) { path_to_remove = path; }

SignalsHeld::SignalsHeld() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalsHeld::~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

}  // namespace tarvik
