/* Binary values in storage order to host order.  Each converts count values at *source, most (m) or
 * least (v) significant byte first, to result, and moves *source past them. */
#ifndef TARVIK_SUPPORT_BYTEORDER_H_
#define TARVIK_SUPPORT_BYTEORDER_H_

#include <stdint.h>

#include "../support/api.h"

#ifdef __cplusplus
extern "C" {
#endif

SDBLK_API void mi2hi(const char **source, int32_t *result, int count);
SDBLK_API void vi2hi(const char **source, int32_t *result, int count);
SDBLK_API void umi2hi(const char **source, uint32_t *result, int count);
SDBLK_API void uvi2hi(const char **source, uint32_t *result, int count);
SDBLK_API void ms2hs(const char **source, int16_t *result, int count);
SDBLK_API void vs2hs(const char **source, int16_t *result, int count);
SDBLK_API void ums2hs(const char **source, uint16_t *result, int count);
SDBLK_API void uvs2hs(const char **source, uint16_t *result, int count);
SDBLK_API void mf2hf(const char **source, float *result, int count);
SDBLK_API void vf2hf(const char **source, float *result, int count);

#ifdef __cplusplus
}
#endif

#endif /* TARVIK_SUPPORT_BYTEORDER_H_ */
