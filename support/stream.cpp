#include "support/stream.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/elog.h"
#include "support/memory.h"

namespace tarvik {

namespace {

char output_buffer[kStreamBytes];
char log_buffer[kStreamBytes];

}  // namespace

constinit Stream output_stream{
    output_buffer, output_buffer, output_buffer, &log_stream, "output_reserve", STDOUT_FILENO, 0,
    false,         nullptr,       nullptr};
constinit Stream log_stream{log_buffer,    log_buffer, log_buffer, &output_stream, "elog_reserve",
                            STDERR_FILENO, 0,          false,      nullptr,        nullptr};

namespace {

void (*before_terminal)(void *context) = nullptr;
void *before_terminal_context = nullptr;

void clear_terminal() {
  if (before_terminal != nullptr) before_terminal(before_terminal_context);
}

// Writes everything and returns 0, or the errno of the failure.
int write_all(int descriptor, const char *bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(descriptor, bytes, size);
    if (written >= 0) {
      bytes += written;
      size -= static_cast<std::size_t>(written);
    } else if (errno == EAGAIN) {
      // Somebody made the descriptor non-blocking: wait until it takes more.
      pollfd writable{descriptor, POLLOUT, 0};
      poll(&writable, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

// The file's bytes must not drive the reader's terminal.
void hide_control_bytes(char *bytes, std::size_t size) {
  for (char *end = bytes + size; bytes != end; ++bytes) {
    const auto byte = static_cast<unsigned char>(*bytes);
    if ((byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7f) *bytes = '?';
  }
}

void flush_at_exit() {
  stream_flush(output_stream);
  stream_flush(log_stream);
}

// The descriptor is looked at each time, for a program may redirect it.
void open_stream(Stream &stream) {
  static const int registered = std::atexit(flush_at_exit);
  static_cast<void>(registered);
  const int saved_errno = errno;
  stream.terminal = stream.sink == nullptr && isatty(stream.descriptor) == 1;
  errno = saved_errno;
  if (stream.sink == nullptr && !stream.terminal) stream.limit = stream.buffer + kStreamBytes;
}

}  // namespace

// Empties the buffer and closes the stream.  Bytes that cannot be written are lost.
void stream_flush(Stream &stream) {
  const auto size = static_cast<std::size_t>(stream.free - stream.buffer);
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
    hide_control_bytes(stream.buffer, size);
  }
  const int error = write_all(stream.descriptor, stream.buffer, size);
  if (stream.error == 0) stream.error = error;
  errno = saved_errno;
}

char *stream_make_room(Stream &stream, std::size_t bytes) {
  if (bytes > kStreamBytes) {
    elog_die(0, "%s: text of %ld bytes does not fit the %ld byte buffer\n", stream.reserve_name,
             static_cast<long>(bytes), static_cast<long>(kStreamBytes));
  }
  stream_flush(*stream.other);
  stream_flush(stream);
  open_stream(stream);
  return stream.free;
}

void stream_write(Stream &stream, const char *text, std::size_t size) {
  if (stream.sink != nullptr && size > kStreamBytes) {
    stream_flush(stream);
    stream.sink(stream.sink_context, text, size);
    return;
  }
  while (size > 0) {
    const std::size_t piece = std::min(size, kStreamBytes);
    char *room = stream_reserve(stream, piece);
    std::memcpy(room, text, piece);
    stream_commit(stream, room + piece);
    text += piece;
    size -= piece;
  }
}

void stream_set_sink(Stream &stream,
                     void (*sink)(void *context, const char *bytes, std::size_t size),
                     void *context) {
  stream_flush(stream);
  stream.sink = sink;
  stream.sink_context = context;
}

void stream_before_terminal(void (*call)(void *context), void *context) {
  before_terminal = call;
  before_terminal_context = context;
}

void streams_emergency_write(const char *text, std::size_t size) {
  clear_terminal();
  for (const Stream *stream : {&output_stream, &log_stream}) {
    write_all(stream->descriptor, stream->buffer,
              static_cast<std::size_t>(stream->free - stream->buffer));
  }
  write_all(STDERR_FILENO, text, size);
}

void FormattedText::format(const char *format, std::va_list arguments, std::size_t spare) noexcept {
  clear();
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(short_, kShortBytes, format, arguments);
  if (length > 0) {
    size_ = static_cast<std::size_t>(length);
    const std::size_t needed = size_ + spare + 1;
    if (needed > kShortBytes) long_ = static_cast<char *>(memory_get(needed));
    if (long_ != nullptr) {
      room_ = needed;
      std::vsnprintf(long_, needed, format, again);
    }
    // What a cut text loses makes room for its line end.
    size_ = std::min(size_, room_ - 1 - std::min(spare, room_ - 1));
  }
  va_end(again);
}

void FormattedText::append(std::string_view text) noexcept {
  const std::size_t size = std::min(text.size(), room_ - size_);
  if (size > 0) std::memcpy((long_ == nullptr ? short_ : long_) + size_, text.data(), size);
  size_ += size;
}

void FormattedText::clear() noexcept {
  memory_free(long_);
  long_ = nullptr;
  size_ = 0;
  room_ = kShortBytes;
}

}  // namespace tarvik
