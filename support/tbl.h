/* Lists of pointers by position. */
#ifndef TARVIK_SUPPORT_TBL_H_
#define TARVIK_SUPPORT_TBL_H_

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Tbl Tbl;

/* A new, empty list, or NULL when memory runs out.  Release it with freetbl. */
SDBLK_API Tbl *newtbl(void);

/* Sets the element at position to value; -1 appends, and a position past the end fills the gap
 * with NULL.  The element that stood there is not released.  Returns the position, or -1 for
 * another negative position, for a NULL list, and when memory runs out. */
SDBLK_API long settbl(Tbl *tbl, long position, void *value);

/* The element at position, or NULL outside the list and for a NULL list. */
SDBLK_API void *gettbl(const Tbl *tbl, long position);

/* Number of elements; 0 for NULL. */
SDBLK_API long counttbl(const Tbl *tbl);

/* Releases the list, each element that is not NULL through free_element unless that is NULL.  A
 * NULL list does nothing. */
SDBLK_API void freetbl(Tbl *tbl, void (*free_element)(void *));

/* The patterns (char *, POSIX extended regular expressions) of the list that match somewhere in
 * text, as a new list of the same pointers; NULL when one of the list is no valid expression or
 * memory runs out.  Patterns are compiled once and kept with the list.  Release the answer with
 * freetbl(answer, NULL). */
SDBLK_API Tbl *tblgrep(Tbl *patterns, const char *text);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_TBL_H_ */
