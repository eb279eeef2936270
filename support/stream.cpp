#include "support/stream.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "support/terminal.h"
#include "support/write_all.h"

namespace tarvik {

namespace {

// The stream that may hold bytes that are not written.
TARVIK_THREAD_LOCAL Stream *pending = nullptr;

struct TerminalCall {
  void (*call)(void *context);
  void *context;
};
TARVIK_THREAD_LOCAL TerminalCall before_terminal = {};

void clear_terminal() {
  if (before_terminal.call != nullptr) before_terminal.call(before_terminal.context);
}

std::size_t committed_bytes(const Stream &stream) {
  return static_cast<std::size_t>(stream.free - stream.buffer);
}

void flush_pending() {
  if (pending != nullptr) stream_flush(*pending);
}

void release_buffer(Stream &stream) {
  if (stream.capacity > kStreamBytes) {
    memory_free(stream.buffer);
  } else if (stream.capacity > 0) {
    stream.buffers->give_back(reinterpret_cast<StreamBuffer *>(stream.buffer));
  }
}

char *new_buffer(const Stream &stream, std::size_t bytes) {
  if (bytes > kStreamBytes) return static_cast<char *>(memory_get(bytes));
  StreamBuffer *buffer = stream.buffers->take();
  return buffer == nullptr ? nullptr : buffer->bytes;
}

// A larger buffer for a stream whose buffer is empty.  False when memory runs out.
bool enlarge(Stream &stream, std::size_t bytes) {
  char *buffer = new_buffer(stream, bytes);
  if (buffer == nullptr) return false;
  if (stream.capacity == 0) at_thread_end(&stream.end);
  release_buffer(stream);
  stream.buffer = stream.free = stream.limit = buffer;
  stream.capacity = std::max(bytes, kStreamBytes);
  return true;
}

// The descriptor is looked at each time, for a program may redirect it.
void open_stream(Stream &stream) {
  static const int registered = std::atexit(flush_pending);
  static_cast<void>(registered);
  if (stream.sink != nullptr) return;
  const int saved_errno = errno;
  stream.terminal = isatty(stream.descriptor) == 1;
  errno = saved_errno;
  if (!stream.terminal) stream.limit = stream.buffer + stream.capacity;
}

}  // namespace

// Empties the buffer and closes the stream.  Bytes that cannot be written are lost.
void stream_flush(Stream &stream) {
  std::size_t size = committed_bytes(stream);
  stream.free = stream.buffer;
  stream.limit = stream.buffer;
  if (size == 0) return;
  if (stream.sink != nullptr) {
    stream.sink(stream.sink_context, stream.buffer, size);
    return;
  }
  const int saved_errno = errno;
  if (stream.terminal) {
    clear_terminal();
    size = hide_control_characters(stream.buffer, size);
  }
  const int error = write_all(stream.descriptor, stream.buffer, size);
  if (stream.error == 0) stream.error = error;
  errno = saved_errno;
}

void stream_release(Stream &stream) {
  stream_flush(stream);
  release_buffer(stream);
  stream.buffer = stream.free = stream.limit = nullptr;
  stream.capacity = 0;
  if (pending == &stream) pending = nullptr;
}

char *stream_make_room(Stream &stream, std::size_t bytes) {
  if (pending != &stream) flush_pending();
  stream_flush(stream);
  if (bytes > stream.capacity && !enlarge(stream, bytes)) return nullptr;
  pending = &stream;
  open_stream(stream);
  return stream.free;
}

char *stream_must_make_room(Stream &stream, std::size_t bytes) {
  char *room = stream_make_room(stream, bytes);
  if (room == nullptr) stream.no_room(bytes);
  return room;
}

char *stream_format(Stream &stream, std::size_t spare, const char *format, std::va_list arguments) {
  constexpr std::size_t kMostTexts = 1024;
  std::va_list again;
  va_copy(again, arguments);
  char *room = stream_reserve(stream, kMostTexts + spare);
  const int length = std::vsnprintf(room, kMostTexts, format, arguments);
  auto size = static_cast<std::size_t>(std::max(length, 0));
  if (size >= kMostTexts) {
    if (stream_make_room(stream, size + 1 + spare) == nullptr) size = stream.capacity - 1 - spare;
    room = stream_reserve(stream, size + 1 + spare);
    std::vsnprintf(room, size + 1, format, again);
  }
  va_end(again);
  return room + size;
}

void stream_set_sink(Stream &stream, StreamSink sink, void *context) {
  stream_flush(stream);
  stream.sink = sink;
  stream.sink_context = context;
}

void stream_before_terminal(void (*call)(void *context), void *context) {
  before_terminal = {call, context};
}

void streams_emergency_write(char *text, std::size_t size) {
  clear_terminal();
  if (pending != nullptr) {
    write_all(pending->descriptor, pending->buffer, committed_bytes(*pending));
  }
  termios settings;
  if (tcgetattr(STDERR_FILENO, &settings) == 0) size = hide_control_characters(text, size);
  write_all(STDERR_FILENO, text, size);
}

}  // namespace tarvik
