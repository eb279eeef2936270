/* The error log: notifications are written at once, messages are registered until somebody
 * complains.
 *
 * The log writes to standard error, through one buffer: when the buffer is full, before the command
 * writes to standard output, at every complaint and at the end, at exit, and line by line on a
 * terminal, where control bytes other than newline and tab show as "?".  Texts are written as they
 * are formatted; one that does not end in a newline gets one.
 *
 * Each thread has a log of its own: buffer, register, sink and die hook.  What its buffer holds is
 * also written when the thread ends.  Into one file the threads' texts come in whole lines.
 *
 * In every call flag 1 adds a second line after the text, four blanks and the system's text for
 * errno, unless errno is 0; other flags add nothing. */
#ifndef TARVIK_SUPPORT_ELOG_H_
#define TARVIK_SUPPORT_ELOG_H_

#include <stddef.h>

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Texts that the register keeps; older ones are dropped and counted. */
#define ELOG_REGISTER_SIZE 100

/* Records the program's name (last component of argv[0]) and its arguments, which must stay. */
SDBLK_API void elog_init(int argc, char **argv);
/* The recorded name, or NULL. */
SDBLK_API const char *elog_program_name(void);

/* Writes a text. */
SDBLK_API void elog_notify(int flag, const char *format, ...) SDBLK_PRINTF(2, 3);
/* Registers a text; nothing is written. */
SDBLK_API void elog_log(int flag, const char *format, ...) SDBLK_PRINTF(2, 3);
/* Writes the registered texts, oldest first, and this one; the register is empty then. */
SDBLK_API void elog_complain(int flag, const char *format, ...) SDBLK_PRINTF(2, 3);
/* Complains and ends the program with status 1, or does what elog_set_die says. */
SDBLK_API void elog_die(int flag, const char *format, ...) SDBLK_NORETURN SDBLK_PRINTF(2, 3);
/* Empties the register: flag 0 drops its texts, any other flag writes them. */
SDBLK_API void elog_clear_register(int flag);
/* A registered text, counted from 0 for the oldest, and in *size its bytes, of which the last is a
 * line end; NULL and 0 where there is none.  No 0 byte needs to follow.  It lives until the next
 * text is registered or the register is emptied. */
SDBLK_API const char *elog_registered(int index, size_t *size);

/* Writes the command line; elog_commandline_str returns it as text that the caller frees: the
 * arguments joined by blanks, in single quotes where a shell would need them. */
SDBLK_API void elog_commandline(void);
SDBLK_API char *elog_commandline_str(void);

/* Writes what is in the log's buffer. */
SDBLK_API void elog_flush(void);
/* The errno of the first write that failed, or 0. */
SDBLK_API int elog_write_error(void);

/* For programs that embed the library; both are of the calling thread.  elog_set_die: elog_die
 * calls die with the context after it has written its texts; a die that returns is followed by
 * exit(1), so it leaves by longjmp, by a C++ exception or by ending the process.  elog_set_sink:
 * the log's bytes go to sink, in whole lines, instead of standard error; the sink must not log.
 * NULL restores what was before either was set. */
SDBLK_API void elog_set_die(void (*die)(void *context), void *context);
SDBLK_API void elog_set_sink(void (*sink)(void *context, const char *bytes, size_t size),
                             void *context);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_ELOG_H_ */
