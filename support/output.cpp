#include "support/output.h"

#include <cstdarg>

#include "support/stream.h"

namespace tarvik {

void output_print(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  FormattedText text;
  text.format(format, arguments, 0);
  va_end(arguments);
  stream_write(output_stream, text.view().data(), text.view().size());
}

char *output_reserve(std::size_t bytes) { return stream_reserve(output_stream, bytes); }

void output_commit(char *end) { stream_commit(output_stream, end); }

void output_flush() { stream_flush(output_stream); }

int output_write_error() { return output_stream.error; }

}  // namespace tarvik
