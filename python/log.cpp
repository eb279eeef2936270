#include "python/log.h"

#include <exception>
#include <new>
#include <sstream>

#include "support/elog_impl.h"

namespace tarvik {

Log::Log() {
  // What the runtime keeps of a thread's exceptions is allocated when it is touched first, and the
  // process ends when there is no memory for it then.
  const volatile int touched = std::uncaught_exceptions();
  static_cast<void>(touched);
  if (!elog_prepare()) throw std::bad_alloc();
  elog_clear_register(0);
  elog_set_sink(keep, this);
  elog_set_die([](void *) { throw Died(); }, nullptr);
}

Log::~Log() {
  elog_clear_register(0);
  elog_set_die(nullptr, nullptr);
  elog_set_sink(nullptr, nullptr);
}

// A text that there is no memory for is lost.
void Log::keep(void *log, const char *bytes, std::size_t size) {
  try {
    static_cast<Log *>(log)->text_.append(bytes, size);
  } catch (const std::bad_alloc &) {
  }
}

std::vector<std::string> Log::lines() {
  elog_clear_register(1);
  elog_flush();
  std::vector<std::string> lines;
  std::istringstream text(std::move(text_));
  text_.clear();
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

}  // namespace tarvik
