// Signals that end the run.
#ifndef SDBLK_SIGNALS_H_
#define SDBLK_SIGNALS_H_

#include <csignal>

namespace tarvik {

// From now on the signals that end a run (from the keyboard, of kill, of a terminal or reader that
// goes away) first remove the file at the path of remove_at_end and take the progress away; a file
// that gets too large is an error of writing.  Signals that are ignored stay so.
void catch_ending_signals();

// The path of the file that is removed when a signal ends the run; nullptr for none.  The path must
// live until another one is set.
void remove_at_end(const char *path);

// No signal is delivered to this thread while one lives: what was made and what must be removed
// stay in step.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld &) = delete;
  SignalsHeld &operator=(const SignalsHeld &) = delete;

 private:
  sigset_t before_;
};

}  // namespace tarvik

#endif  // SDBLK_SIGNALS_H_
