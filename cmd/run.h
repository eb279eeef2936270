// One run of the command over a volume.
#ifndef CMD_RUN_H_
#define CMD_RUN_H_

#include "cmd/options.h"

namespace tarvik {

// Reads the volume, prints what the options ask for and the counts.  Returns the exit status.
int run(const Options &options);

}  // namespace tarvik

#endif  // CMD_RUN_H_
