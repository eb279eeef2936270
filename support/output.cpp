#include "support/output.h"

#include <unistd.h>

#include <cstdarg>

#include "support/elog.h"
#include "support/stream.h"

namespace tarvik {

namespace {

void no_room(std::size_t bytes) { elog_die(0, "output_reserve: malloc(%zu) error.\n", bytes); }

FirstCome<StreamBuffer> buffers;

void release_output();

TARVIK_THREAD_LOCAL Stream output_stream =
    make_stream(STDOUT_FILENO, &buffers, release_output, no_room);

void release_output() { stream_release(output_stream); }

}  // namespace

void output_print(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  stream_commit(output_stream, stream_format(output_stream, 0, format, arguments));
  va_end(arguments);
}

char *output_reserve(std::size_t bytes) { return stream_reserve(output_stream, bytes); }

void output_commit(char *end) { stream_commit(output_stream, end); }

void output_flush() { stream_flush(output_stream); }

int output_write_error() { return output_stream.error; }

}  // namespace tarvik
