/* What header_c11.c, which is C, offers to the tests, which are C++. */
#ifndef TESTS_SEED_HEADER_C11_H_
#define TESTS_SEED_HEADER_C11_H_

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Number of stations (blockettes 50) of the volume, the first `most` latitudes to latitudes; -1
 * when the volume cannot be read to its end. */
long header_c11_count_stations(const char *bytes, int32_t size, double *latitudes, long most);

/* Sizes of the public records, as C sees them. */
size_t header_c11_block_size(void);
size_t header_c11_volume_size(void);
size_t header_c11_entry_size(void);
size_t header_c11_field_size(void);

#ifdef __cplusplus
}
#endif

#endif /* TESTS_SEED_HEADER_C11_H_ */
