// The station summary: a line a station, a line a channel epoch, and the responses of each.
#ifndef CMD_STATION_DUMP_H_
#define CMD_STATION_DUMP_H_

#include "seed/sdblk.h"

namespace tarvik {

// Prints what a decoded block adds to the summary, on standard output: blockettes 50, 52 and the
// responses; others add nothing.  A verbosity above 0 adds names and coordinates.  Returns 0.
int station_dump(const SDBlk *block, int verbosity);

// Writes a time as "%Y:%j:%T", or "NULL" for SDBLK_NO_TIME, to text (at least 32 bytes).  Returns
// 0.
int mystrtime(char *text, double epoch);

}  // namespace tarvik

#endif  // CMD_STATION_DUMP_H_
