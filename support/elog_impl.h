// The inside of the error log, for the library's own C++ code.
#ifndef SUPPORT_ELOG_IMPL_H_
#define SUPPORT_ELOG_IMPL_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "support/elog.h"
#include "support/stream.h"

namespace tarvik {

extern TARVIK_THREAD_LOCAL Stream log_stream;

// Room for a text of at most `bytes` bytes in the log's buffer; what is put there is written as one
// notification when elog_commit is called with its end.  The text ends in a newline.  Nothing else
// may be logged or printed in between.
inline char *elog_reserve(std::size_t bytes) { return stream_reserve(log_stream, bytes); }
inline void elog_commit(char *end) { stream_commit(log_stream, end); }

// Gets what the calling thread needs to log, which stays until it ends.  False when memory runs
// out. A thread that logs without having asked loses messages, or ends the program, where there is
// none.
[[nodiscard]] bool elog_prepare() noexcept;

// How many texts the thread has registered since its start, dropped ones too.
std::int64_t elog_registered_ever() noexcept;
// The text that was registered so many ago, 1 for the last, or the oldest that is kept; it lives
// until the next one is registered.
std::string_view elog_registered_last(std::int64_t ago) noexcept;

// What the thread notifies goes to a sink as long as this lives; what it complains of goes where it
// went before.
class ElogDiversion {
 public:
  ElogDiversion(StreamSink sink, void *context) noexcept;
  ~ElogDiversion();
  ElogDiversion(const ElogDiversion &) = delete;
  ElogDiversion &operator=(const ElogDiversion &) = delete;

  // Ends it early.
  void end() noexcept;

 private:
  StreamSink sink_before_;
  void *context_before_;
  ElogDiversion *outer_;
};

}  // namespace tarvik

#endif  // SUPPORT_ELOG_IMPL_H_
