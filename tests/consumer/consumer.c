/* Succeeds when the installed library can be compiled against, linked and called. */
#include "seed/sdblk.h"

int main(void) {
  if (sdblk_blkdefs_init() != 0) return 1;
  return seed_blkdefs_index[52] != NULL && seed_blkdefs_index[52]->type == 52 ? 0 : 1;
}
