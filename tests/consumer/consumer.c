/* Succeeds when the installed library can be compiled against, linked and called.  The volume is
 * the smallest that holds a station: one record of one blockette, in memory. */
#include <string.h>

#include "seed/sdblk.h"

static int read_station(const char *volume, int32_t size) {
  SDBlkVol *vol = sdblk_new(NULL, volume, size, 256);
  SDBlk *block = NULL;
  SDBlkSta *station = NULL;
  int taken = -1;
  if (vol != NULL && sdblk_parseblk(vol, &block) > 0 && sdblk_unstuffblk(block) == 0) {
    taken = sdblk_setup_stabuf(block, &station, NULL, NULL, 0, 0.0, 0.0);
  }
  int right = taken == 1 && strcmp(station->sta, "ABC") == 0 && strcmp(station->net, "XX") == 0;
  sdblk_free_stabuf(station);
  sdblk_free(block);
  sdblk_closevol(vol);
  return right;
}

int main(void) {
  const char *text =
      "000001S 0500079ABC  +50.000000+008.000000+0100.00001000Somewhere~0013210102010,001~~NXX";
  char volume[256];
  size_t used = 0;
  for (; text[used] != '\0'; ++used) volume[used] = text[used];
  for (; used < sizeof volume; ++used) volume[used] = ' ';
  if (read_station(volume, sizeof volume)) return 0;
  elog_complain(0, "consumer: the volume was not read.\n");
  return 1;
}
