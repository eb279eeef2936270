/* Loaded before a program (LD_PRELOAD), refuses one of its allocations, whoever asks for it: the
 * one that the environment variable REFUSE_ALLOCATION numbers, counted from 1.  The file
 * REFUSE_REPORT is made when it is asked for. */
#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdlib.h>
#include <unistd.h>

#define SEEN __attribute__((visibility("default")))

/* The C library's own. */
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *memory, size_t size);

static long left = -1; /* until the one; below 0 none is refused */
static const char *report = NULL;

__attribute__((constructor)) static void begin(void) {
  const char *number = getenv("REFUSE_ALLOCATION");
  report = getenv("REFUSE_REPORT");
  if (number != NULL && report != NULL) left = atol(number);
}

static int refused(void) {
  if (left < 0 || --left != 0) return 0;
  left = -1;
  close(open(report, O_CREAT | O_WRONLY, 0600));
  errno = ENOMEM;
  return 1;
}

SEEN void *malloc(size_t size) { return refused() ? NULL : __libc_malloc(size); }
SEEN void *calloc(size_t count, size_t size) {
  return refused() ? NULL : __libc_calloc(count, size);
}
SEEN void *realloc(void *memory, size_t size) {
  return refused() ? NULL : __libc_realloc(memory, size);
}
