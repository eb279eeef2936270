// The two output streams of the process, standard output and the error log: one buffer each.
//
// At most one of them holds bytes that are not written yet: taking room in one writes the other
// first, so that both into one file show the true order.  A stream is open while it collects bytes
// (it has room up to limit) and closed otherwise; on a terminal, and when a sink takes its bytes,
// it never opens and every text goes out as it is committed.
#ifndef SUPPORT_STREAM_H_
#define SUPPORT_STREAM_H_

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <string_view>

#include "support/api.h"

namespace tarvik {

inline constexpr std::size_t kStreamBytes = std::size_t{64} * 1024;

struct Stream {
  char *free;          // where the next text goes; the bytes before it are committed
  char *limit;         // end of the room in the buffer, the buffer's start while closed
  char *const buffer;  // kStreamBytes bytes
  Stream *const other;
  const char *const reserve_name;  // the function that a text too long for the buffer is blamed on
  const int descriptor;
  int error;      // errno of the first write that failed, or 0
  bool terminal;  // what the descriptor was when it was last looked at
  void (*sink)(void *context, const char *bytes, std::size_t size);  // instead of the descriptor
  void *sink_context;
};

extern Stream output_stream;
extern Stream log_stream;

// Writes what is in the stream's buffer, or hands it to the sink.
void stream_flush(Stream &stream);

// The slow half of stream_reserve.
char *stream_make_room(Stream &stream, std::size_t bytes);

// Room for a text of at most bytes, which the buffer must be able to hold: more ends the program.
// Nothing else may be written, to either stream, before the text is committed or given up.
inline char *stream_reserve(Stream &stream, std::size_t bytes) {
  if (bytes <= static_cast<std::size_t>(stream.limit - stream.free)) return stream.free;
  return stream_make_room(stream, bytes);
}

// Takes what was put into the room, up to end.
inline void stream_commit(Stream &stream, char *end) {
  stream.free = end;
  // A signal handler may write what is committed.
  std::atomic_signal_fence(std::memory_order_release);
  if (end > stream.limit) stream_flush(stream);
}

// A text of any length.
void stream_write(Stream &stream, const char *text, std::size_t size);

// Sends the stream's bytes to sink from now on; nullptr gives the descriptor back.
void stream_set_sink(Stream &stream,
                     void (*sink)(void *context, const char *bytes, std::size_t size),
                     void *context);

// Calls call(context) each time before a stream writes to a terminal, for whoever shows something
// there that must go first; nullptr calls nothing.  It may be called by a signal handler.
void stream_before_terminal(void (*call)(void *context), void *context);

// For a signal handler: writes what both streams have committed, then text to standard error, with
// nothing but calls that are allowed there.  The streams are left as they are.
void streams_emergency_write(const char *text, std::size_t size);

// A formatted text, which may hold 0 bytes.  Without memory for a long one it is cut.
class FormattedText {
 public:
  constexpr FormattedText() noexcept = default;
  ~FormattedText() { clear(); }
  FormattedText(const FormattedText &) = delete;
  FormattedText &operator=(const FormattedText &) = delete;

  // Replaces the text, with room for spare more bytes behind it.
  void format(const char *format, std::va_list arguments, std::size_t spare) noexcept
      SDBLK_PRINTF(2, 0);
  // Adds as much of a text as there is room for.
  void append(std::string_view text) noexcept;
  void clear() noexcept;

  [[nodiscard]] std::string_view view() const noexcept {
    return {long_ == nullptr ? short_ : long_, size_};
  }

 private:
  static constexpr std::size_t kShortBytes = 1024;

  char *long_ = nullptr;  // the text when short_ is too small for it
  std::size_t size_ = 0;
  std::size_t room_ = kShortBytes;
  char short_[kShortBytes] = {};
};

}  // namespace tarvik

#endif  // SUPPORT_STREAM_H_
