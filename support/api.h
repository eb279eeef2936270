/* What the public headers need of the compiler: symbol visibility and call checks. */
#ifndef TARVIK_SUPPORT_API_H_
#define TARVIK_SUPPORT_API_H_

#if defined(__GNUC__)
#define SDBLK_API __attribute__((visibility("default")))
#define SDBLK_PRINTF(text, first) __attribute__((format(printf, text, first)))
#define SDBLK_SENTINEL __attribute__((sentinel))
#define SDBLK_NORETURN __attribute__((noreturn))
#else
#define SDBLK_API
#define SDBLK_PRINTF(text, first)
#define SDBLK_SENTINEL
#define SDBLK_NORETURN
#endif

#endif /* TARVIK_SUPPORT_API_H_ */
