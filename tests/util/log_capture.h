// What tests need to look at the error log and to make the library fail: the log's bytes as text, a
// fatal error as an exception, an allocation that fails.
#ifndef TESTS_UTIL_LOG_CAPTURE_H_
#define TESTS_UTIL_LOG_CAPTURE_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/elog.h"
#include "support/memory.h"

// Collects what the log writes, as long as it lives.  Texts registered before or during its life
// are dropped unseen, so that no test sees those of another.
class LogCapture {
 public:
  LogCapture() {
    elog_clear_register(0);
    elog_flush();
    elog_set_sink(collect, this);
  }
  ~LogCapture() {
    elog_clear_register(0);
    elog_set_sink(nullptr, nullptr);
  }
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;

  // All that the log has written since the start or the last take.
  [[nodiscard]] std::string text() const {
    elog_flush();
    return bytes_;
  }
  // The same, and forgets it.
  std::string take() {
    elog_flush();
    return std::exchange(bytes_, {});
  }
  // The registered texts, oldest first; the register is empty then.  Text written before stays
  // where it is.
  std::string registered() {
    elog_flush();
    const std::size_t before = bytes_.size();
    elog_clear_register(1);
    elog_flush();
    std::string texts = bytes_.substr(before);
    bytes_.resize(before);
    return texts;
  }

 private:
  static void collect(void *context, const char *bytes, std::size_t size) {
    static_cast<LogCapture *>(context)->bytes_.append(bytes, size);
  }

  std::string bytes_;
};

// What the texts registered just now are, for a test that needs no capture of its own.
inline std::string registered() {
  std::string texts;
  elog_flush();
  elog_set_sink([](void *context, const char *bytes,
                   std::size_t size) { static_cast<std::string *>(context)->append(bytes, size); },
                &texts);
  elog_clear_register(1);
  elog_flush();
  elog_set_sink(nullptr, nullptr);
  return texts;
}

// A fatal error of the library, while a FatalHook lives.
struct Fatal : std::runtime_error {
  Fatal() : std::runtime_error("elog_die") {}
};

// Turns elog_die into the exception Fatal; its text goes to the log as always.
class FatalHook {
 public:
  FatalHook() {
    elog_set_die([](void *) { throw Fatal(); }, nullptr);
  }
  ~FatalHook() { elog_set_die(nullptr, nullptr); }
  FatalHook(const FatalHook &) = delete;
  FatalHook &operator=(const FatalHook &) = delete;
};

// Makes one allocation of the library fail: the n-th from now on, counted from 1; with `always` all
// after it fail too.  An n of 0 makes none fail and only counts them.
class FailingMemory {
 public:
  explicit FailingMemory(long n, bool always = false) {
    nth() = n;
    asked() = 0;
    stays() = always;
    tarvik::memory_set_gate(pass);
  }
  ~FailingMemory() { tarvik::memory_set_gate(nullptr); }
  FailingMemory(const FailingMemory &) = delete;
  FailingMemory &operator=(const FailingMemory &) = delete;

  // Allocations asked for so far, failed ones too.
  [[nodiscard]] static long count() { return asked(); }
  // Whether an allocation has failed.
  [[nodiscard]] static bool failed() { return nth() > 0 && asked() >= nth(); }

 private:
  static bool pass(std::size_t) {
    ++asked();
    if (nth() == 0) return true;
    return stays() ? asked() < nth() : asked() != nth();
  }
  static long &nth() {
    static long number = 0;
    return number;
  }
  static long &asked() {
    static long number = 0;
    return number;
  }
  static bool &stays() {
    static bool flag = false;
    return flag;
  }
};

#endif  // TESTS_UTIL_LOG_CAPTURE_H_
