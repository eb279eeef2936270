/* Text utilities, the same in every locale. */
#ifndef TARVIK_SUPPORT_TEXT_H_
#define TARVIK_SUPPORT_TEXT_H_

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 1 for NULL, the empty text and text of white space only; else 0. */
SDBLK_API int blank(const char *text);
/* Drops one newline at the end of text. */
SDBLK_API void chomp(char *text);
/* strtod of the "C" locale: the same value and the same stopping place, to *end unless end is NULL. */
SDBLK_API double fix_strtod(const char *text, char **end);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_TEXT_H_ */
