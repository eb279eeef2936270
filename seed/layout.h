// Decoding of definitions of which every field has its place: the fixed section of a data record
// and nearly all data blockettes.  One look at the length is enough for all fields.
#ifndef SEED_LAYOUT_H_
#define SEED_LAYOUT_H_

#include "seed/sdblk.h"
#include "seed/walk.h"

// Decodes the fields of a definition from the bytes in front: by their places where they have
// some and all bytes are there, else one after the other.  0, or -1 with messages registered.
int unpack_fields(Arr **contents, Feed feed, const WalkContext &context, const SDBlkDef &def);

#endif  // SEED_LAYOUT_H_
