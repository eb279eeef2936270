/* Associative arrays: text keys to pointers, in the order in which the keys were first set. */
#ifndef TARVIK_SUPPORT_ARR_H_
#define TARVIK_SUPPORT_ARR_H_

#include "../support/api.h"
#include "../support/tbl.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Arr Arr;

/* A new, empty array, or NULL when memory runs out.  Release it with freearr. */
SDBLK_API Arr *newarr(void);

/* Sets key to value (NULL is a value too); the key is copied.  Returns the value that the key had
 * before, for the caller to release, or NULL.  When memory runs out the program ends (elog_die). */
SDBLK_API void *setarr(Arr *arr, const char *key, void *value);

/* The value of key, or NULL when the key or the array is not there. */
SDBLK_API void *getarr(const Arr *arr, const char *key);

/* A new list of the keys (char *, owned by the array), in the order in which they were first set;
 * empty for NULL.  Release it with freetbl(keys, NULL).  NULL when memory runs out. */
SDBLK_API Tbl *keysarr(const Arr *arr);

/* Number of keys; 0 for NULL. */
SDBLK_API long countarr(const Arr *arr);

/* Releases the array, each value through free_value unless that is NULL.  NULL does nothing. */
SDBLK_API void freearr(Arr *arr, void (*free_value)(void *));

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_ARR_H_ */
