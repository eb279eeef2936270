// What each thread has of its own.
#ifndef SUPPORT_PER_THREAD_H_
#define SUPPORT_PER_THREAD_H_

#include <atomic>

#include "support/memory.h"

// A small variable of each thread.  In this model it costs what a static one does, and a library
// that is loaded late has room for a few hundred bytes of them in all.
#define TARVIK_THREAD_LOCAL constinit thread_local __attribute__((tls_model("initial-exec")))

namespace tarvik {

// Large objects, one for each thread that takes one.  The first to come gets the static one, so
// that a program of one thread allocates nothing; the others get memory.  All bytes of an object
// are 0 when it is taken for the first time; T has neither constructor nor destructor.
template <typename T>
class FirstCome {
 public:
  // nullptr when memory runs out.
  T *take() noexcept {
    if (!taken_.exchange(true, std::memory_order_acquire)) return &first_;
    return static_cast<T *>(memory_get_zeroed(sizeof(T)));
  }
  void give_back(T *object) noexcept {
    if (object == &first_) {
      taken_.store(false, std::memory_order_release);
    } else {
      memory_free(object);
    }
  }

 private:
  T first_;
  std::atomic<bool> taken_;
};

// Something to be done when a thread ends (for the end of the process there is atexit).
struct ThreadEnd {
  void (*act)();
  ThreadEnd *next;
};

// Adds to what the calling thread does at its end, the latest first.  `end` lives as long as the
// thread and is added once.
void at_thread_end(ThreadEnd *end) noexcept;

}  // namespace tarvik

#endif  // SUPPORT_PER_THREAD_H_
