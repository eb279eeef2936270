/* Who runs, and which build: the announcement at start and the version banner. */
#ifndef TARVIK_SUPPORT_ANNOUNCE_H_
#define TARVIK_SUPPORT_ANNOUNCE_H_

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Logs name and extra with the release, the build identifier, the executable's modification time
 * and the command line.  Either text may be NULL; a NULL name becomes the recorded program name, or
 * the executable's path. */
SDBLK_API void announce(const char *name, const char *extra);
/* The same as one text, in a buffer that the next call uses again. */
SDBLK_API const char *announce_str(const char *name, const char *extra);
/* Writes the version banner to standard error. */
SDBLK_API void banner(const char *name, const char *extra);
/* Number of entries in the directory "patched" of the install root (environment variable ORVALEN),
 * or -1 when there is none. */
SDBLK_API int patch_count(void);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_ANNOUNCE_H_ */
