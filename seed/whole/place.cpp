// Going back, or on, in a volume that is read whole.
#include <algorithm>

#include "seed/paging.h"
#include "seed/whole.h"
#include "seed/whole/state.h"

using namespace tarvik;

SDBlkPlace sdblk_place(const SDBlkVol *vol) {
  const SDBlkWhole &whole = *vol->whole;
  const Record &record = whole.record;
  return {.block = whole.counts.blocks,
          .record_offset = record.offset,
          .record_length = static_cast<std::int32_t>(record.length),
          .length = static_cast<std::int32_t>(whole.in_force),
          .number = record.number,
          .pos = static_cast<std::int32_t>(whole.pos),
          .letter = record.letter};
}

void sdblk_go_to(SDBlkVol *vol, const SDBlkPlace *place) {
  SDBlkWhole *whole = vol->whole;
  whole->counts.blocks = place->block;
  whole->record = {place->record_offset, place->record_length, place->number, place->letter};
  whole->in_force = place->length;
  whole->pos = place->pos;
  whole->next = place->record_offset + place->record_length;
  whole->header = Header::none;
  vol->record_offset = place->record_offset;
  // Pages that are touched again are given back again.
  vol->given_back = std::min(vol->given_back, place->record_offset / kGiveBack * kGiveBack);
}
