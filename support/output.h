// The command's standard output: buffered, flushed before anything goes to the error log, so that
// both streams into one file show the true order.
#ifndef SUPPORT_OUTPUT_H_
#define SUPPORT_OUTPUT_H_

#include <cstddef>

#include "support/api.h"

namespace tarvik {

// Writes a formatted text.  On a terminal, control bytes other than newline and tab show as "?".
void output_print(const char *format, ...) SDBLK_PRINTF(1, 2);
// Room for bytes in the output's buffer, and the end of what was put there (see support/line.h).
char *output_reserve(std::size_t bytes);
void output_commit(char *end);
void output_flush();
// The errno of the first write that failed, or 0.
int output_write_error();

}  // namespace tarvik

#endif  // SUPPORT_OUTPUT_H_
