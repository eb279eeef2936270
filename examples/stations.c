/* Prints the stations of a SEED volume: their channels, and of each epoch the number of responses.
 *
 *   stations [-a PATTERN | -r PATTERN]... FILE
 *
 * With -a (accept) only channels that one of these patterns matches are printed, with -r (reject)
 * none that one of these matches.  A pattern is a POSIX extended regular expression, searched in
 * "NET_STA_CHA_LO", or "NET_STA_CHA" when the location code is empty: "^XX_", "_BH[ZNE]", "_00$".
 */
#include <stdio.h>
#include <stdlib.h>

#include "seed/sdblk.h"
#include "support/epoch.h"

typedef struct Filters {
  Tbl *accept; /* NULL: accept all */
  Tbl *reject; /* NULL: reject none */
} Filters;

static void print_time(double time) {
  char *text = time == SDBLK_NO_TIME ? NULL : epoch2str(time, "%Y,%j,%H:%M:%S");
  printf("  %-17s", text == NULL ? "open" : text);
  free(text);
}

static void print_channel(const SDBlkChan *channel) {
  for (long i = 0; i < counttbl(channel->spans); ++i) {
    const SDBlkChanSpan *span = gettbl(channel->spans, i);
    printf("  %-2s %-3s", channel->loc, channel->chan);
    print_time(span->time);
    print_time(span->endtime);
    printf("  %ld responses\n", counttbl(span->resp_blks));
  }
}

static void print_station(const SDBlkSta *station) {
  const char *name = "";
  const SDBlk *first = gettbl(station->station_blks, 0);
  sdblk_getv(first->contents, "name", &name, NULL);
  printf("%s %s %s\n", station->net, station->sta, name);
  Tbl *keys = keysarr(station->chans);
  for (long i = 0; i < counttbl(keys); ++i) print_channel(getarr(station->chans, gettbl(keys, i)));
  freetbl(keys, NULL);
}

/* Feeds a block to the station buffer, and prints the station that it completes. */
static int feed(const SDBlk *block, SDBlkSta **station, const Filters *filters) {
  int result = sdblk_setup_stabuf(block, station, filters->accept, filters->reject, 0, 0.0, 0.0);
  if (result != 2) return result;
  print_station(*station);
  return sdblk_setup_stabuf(block, station, filters->accept, filters->reject, 0, 0.0, 0.0);
}

/* Reads the volume to its end.  Returns the exit status. */
static int read_volume(SDBlkVol *vol, const Filters *filters) {
  int status = 0;
  int result = 0;
  SDBlk *block = NULL;
  SDBlkSta *station = NULL;
  while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
    if (block->data_ptr != NULL) continue; /* a data record */
    if (sdblk_unstuffblk(block) < 0 || feed(block, &station, filters) < 0) {
      elog_complain(0, "stations: block %d is left out.\n", block->block_number);
      status = 1;
    }
    if (block->blockette_length == 0) break; /* there is no way to read on */
  }
  if (station != NULL && station->state != 0) print_station(station);
  if (result != SDBLK_EOF) {
    elog_complain(0, "stations: the volume cannot be read to its end.\n");
    status = 1;
  }
  sdblk_free_stabuf(station);
  sdblk_free(block);
  return status;
}

static void add_pattern(Tbl **list, char *pattern) {
  if (*list == NULL) *list = newtbl();
  if (settbl(*list, -1, pattern) < 0) elog_die(1, "stations: out of memory.\n");
}

int main(int argc, char **argv) {
  Filters filters = {NULL, NULL};
  int i = 1;
  for (; i + 2 < argc && argv[i][0] == '-' && (argv[i][1] == 'a' || argv[i][1] == 'r'); i += 2) {
    add_pattern(argv[i][1] == 'a' ? &filters.accept : &filters.reject, argv[i + 1]);
  }
  if (i + 1 != argc) elog_die(0, "usage: stations [-a PATTERN | -r PATTERN]... FILE\n");
  SDBlkVol *vol = sdblk_new(argv[i], NULL, 0, 0);
  if (vol == NULL) elog_die(0, "stations: %s cannot be opened.\n", argv[i]);
  int status = read_volume(vol, &filters);
  sdblk_closevol(vol);
  freetbl(filters.accept, NULL);
  freetbl(filters.reject, NULL);
  return status;
}
