// Output streams: one buffer in front of a descriptor.
//
// Each thread has streams of its own, and at most one of them holds bytes that are not written yet:
// taking room in one writes the other first, so that both into one file show the true order.  A
// stream is open while it collects bytes (it has room up to limit) and closed otherwise; on a
// terminal, and when a sink takes its bytes, it never opens and every text goes out as it is
// committed.  What is left is written when the thread ends, and for the thread that ends the
// process at its exit.
#ifndef SUPPORT_STREAM_H_
#define SUPPORT_STREAM_H_

#include <atomic>
#include <cstdarg>
#include <cstddef>

#include "support/api.h"
#include "support/per_thread.h"

namespace tarvik {

// The size of a buffer; a longer text gets a larger one.
inline constexpr std::size_t kStreamBytes = std::size_t{64} * 1024;
struct StreamBuffer {
  char bytes[kStreamBytes];
};

using StreamSink = void (*)(void *context, const char *bytes, std::size_t size);

struct Stream {
  char *free;   // where the next text goes; the bytes before it are committed
  char *limit;  // end of the room in the buffer, the buffer's start while closed
  char *buffer;
  std::size_t capacity;  // of the buffer; 0 until the stream is used
  int error;             // errno of the first write that failed, or 0
  bool terminal;         // what the descriptor was when it was last looked at
  StreamSink sink;       // instead of the descriptor
  void *sink_context;
  // The same in every thread:
  int descriptor;
  FirstCome<StreamBuffer> *buffers;
  ThreadEnd end;                       // releases the buffer
  void (*no_room)(std::size_t bytes);  // ends the program for want of memory
};

constexpr Stream make_stream(int descriptor, FirstCome<StreamBuffer> *buffers, void (*at_end)(),
                             void (*no_room)(std::size_t bytes)) {
  return {nullptr,    nullptr, nullptr,           0,      0, false, nullptr, nullptr,
          descriptor, buffers, {at_end, nullptr}, no_room};
}

// Writes what is in the stream's buffer, or hands it to the sink.
void stream_flush(Stream &stream);

// Gives the buffer of a thread that ends back.
void stream_release(Stream &stream);

// Room for a text of at most bytes, or nullptr where there is no memory for a longer buffer.
char *stream_make_room(Stream &stream, std::size_t bytes);

// The slow half of stream_reserve.
char *stream_must_make_room(Stream &stream, std::size_t bytes);

// Room for a text of at most bytes.  Where there is no memory for it the program ends.  Nothing
// else may be written, to either stream, before the text is committed or given up.
inline char *stream_reserve(Stream &stream, std::size_t bytes) {
  if (bytes <= static_cast<std::size_t>(stream.limit - stream.free)) return stream.free;
  return stream_must_make_room(stream, bytes);
}

// Takes what was put into the room, up to end.
inline void stream_commit(Stream &stream, char *end) {
  stream.free = end;
  // A signal handler may write what is committed.
  std::atomic_signal_fence(std::memory_order_release);
  if (end > stream.limit) stream_flush(stream);
}

// Puts a formatted text, which may hold 0 bytes, where the stream's next text goes, with room for
// spare more bytes after it.  Returns its end; it is not committed.  A text that there is no memory
// for is cut.
char *stream_format(Stream &stream, std::size_t spare, const char *format, std::va_list arguments)
    SDBLK_PRINTF(3, 0);

// Sends the stream's bytes to sink from now on; nullptr gives the descriptor back.
void stream_set_sink(Stream &stream, StreamSink sink, void *context);

// Calls call(context) each time before the thread writes to a terminal, for whoever shows something
// there that must go first; nullptr calls nothing.  It may be called by a signal handler.
void stream_before_terminal(void (*call)(void *context), void *context);

// For a signal handler: writes what the thread's streams have committed, then text to standard
// error, with nothing but calls that are allowed there.  On a terminal the text loses its control
// characters.  The streams are left as they are.
void streams_emergency_write(char *text, std::size_t size);

}  // namespace tarvik

#endif  // SUPPORT_STREAM_H_
