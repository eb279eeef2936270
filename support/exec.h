/* Finding programs and files. */
#ifndef TARVIK_SUPPORT_EXEC_H_
#define TARVIK_SUPPORT_EXEC_H_

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Path of the running executable, or NULL; constant for the life of the process. */
SDBLK_API const char *getexecname(void);
/* The first readable file called name in the directories of the search-path variable (separated by
 * ":"), as text that the caller frees, or NULL. */
SDBLK_API char *datafile(const char *variable, const char *name);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_EXEC_H_ */
