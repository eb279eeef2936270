// What happens when the volume's file shrinks while it is read.
#ifndef CMD_MAPPING_GUARD_H_
#define CMD_MAPPING_GUARD_H_

#include "seed/sdblk.h"

namespace tarvik {

// From now on, touching a page of the volume that its file no longer has ends the program with
// status 1 and a message on standard error, after what is in the output buffers.
void guard_mapping(const SDBlkVol &vol);

}  // namespace tarvik

#endif  // CMD_MAPPING_GUARD_H_
