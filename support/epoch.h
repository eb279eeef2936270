/* Time: epoch seconds (UTC, no leap seconds, proleptic Gregorian calendar) to and from dates. */
#ifndef TARVIK_SUPPORT_EPOCH_H_
#define TARVIK_SUPPORT_EPOCH_H_

#include <stdint.h>

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Epoch seconds of a year, day of year (1 is 1 January), hour, minute and seconds.  Nothing is
 * checked or normalised: day 0 is the last day of the year before. */
SDBLK_API double h2e(int32_t year, int32_t day, int32_t hour, int32_t minute, double seconds);

/* The epoch, rounded down to whole seconds, in the format of strftime, as text that the caller
 * frees (free).  A NaN, or a value beyond 1e15 in size, gives "NaN", "Inf" or "-Inf".  NULL when
 * memory runs out. */
SDBLK_API char *epoch2str(double epoch, const char *format);

/* The same of the epoch rounded to the nearest of 1 to 9 decimals of a second, which %S and %T show
 * after a point: 1e9 + 0.25 in the format "%Y-%m-%dT%H:%M:%SZ" with 6 decimals is
 * 2001-09-09T01:46:40.250000Z.  (A double holds the microseconds of our times, not their
 * nanoseconds.)  0 decimals round down and show none, as epoch2str does. */
SDBLK_API char *epoch2str_fraction(double epoch, const char *format, int decimals);

/* year * 1000 + day of year of an epoch; 0 for a NaN or a value beyond 1e15 in size. */
SDBLK_API int32_t yearday(double epoch);

/* The system clock.  std_set_now fixes it, for tests; a NaN gives the system clock back. */
SDBLK_API double std_now(void);
SDBLK_API void std_set_now(double epoch);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_EPOCH_H_ */
