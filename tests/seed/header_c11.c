/* A C program's view of the library: the public header alone, and every kind of call from C11. */
#include "tests/seed/header_c11.h"

#include "seed/sdblk.h"

static int count_text(void *count_address, const char *sta) {
  int *count = (int *)count_address;
  if (sta == NULL || sta[0] == '\0') return -1;
  ++*count;
  return 0;
}

long header_c11_count_stations(const char *bytes, int32_t size, double *latitudes, long most) {
  SDBlkVol *vol = sdblk_new(NULL, bytes, size, 0);
  SDBlk *blk = NULL;
  int count = 0;
  int result = 0;
  if (vol == NULL) return -1;
  while ((result = sdblk_parseblk(vol, &blk)) > 0 && result != SDBLK_EOF) {
    const char *sta = NULL;
    double lat = 0.0;
    if (sdblk_unstuffblk(blk) < 0) break;
    if (blk->blockette_type != 50) continue;
    if (sdblk_getv(blk->contents, "sta", &sta, "lat", &lat, NULL) < 0) break;
    if (count < most) latitudes[count] = lat;
    if (count_text(&count, sta) < 0) break;
  }
  sdblk_free(blk);
  sdblk_closevol(vol);
  return result == SDBLK_EOF ? count : -1;
}

size_t header_c11_block_size(void) { return sizeof(SDBlk); }
size_t header_c11_volume_size(void) { return sizeof(SDBlkVol); }
size_t header_c11_entry_size(void) { return sizeof(SDBlkEntry); }
size_t header_c11_field_size(void) { return sizeof(SDBlkFieldDef); }
