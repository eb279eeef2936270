/* A program that has functions called like some of the library's: those of the library go on
 * calling each other. */
#include <stdint.h>
#include <string.h>

#include "seed/sdblk.h"

int main(void) {
  const char *text =
      "000001S 0510035"
      "2021,075~"
      "2021,076~"
      "0001"
      "000000          ";
  char volume[256];
  memset(volume, ' ', sizeof volume);
  memcpy(volume, text, strlen(text));
  SDBlkVol *vol = sdblk_new(NULL, volume, sizeof volume, 256);
  SDBlk *block = NULL;
  double start = 0;
  int right = sdblk_parseblk(vol, &block) > 0 && sdblk_unstuffblk(block) == 0 &&
              sdblk_getv(block->contents, "time", &start, NULL) == 0 && start == 1615852800.0;
  sdblk_free(block);
  sdblk_closevol(vol);
  return right ? 0 : 1;
}

double h2e(int32_t year, int32_t day, int32_t hour, int32_t minute, double seconds) {
  (void)year, (void)day, (void)hour, (void)minute;
  return seconds;
}
void *getarr(const Arr *arr, const char *key) {
  (void)arr, (void)key;
  return NULL;
}
