// Decoding a block of either kind: sdblk_unstuffblk, and sdblk_chain before it.
#include "seed/block.h"
#include "seed/cursor.h"
#include "seed/failure.h"
#include "seed/format.h"
#include "seed/sdblk.h"
#include "seed/walk.h"
#include "seed/whole.h"
#include "seed/whole/reader.h"

using namespace tarvik;

namespace {

// Decodes a block of either kind.
int unstuff_strictly(SDBlk *block) {
  const bool is_data = block->blockette_type == SDBLK_DATA_RECORD;
  const int result =
      is_data ? sdblk_unstuff_dblk(block->vol, block) : sdblk_unstuff_blk(block->vol, block);
  if (result >= 0) return 0;
  elog_log(0, "sdblk_unstuffblk: %s error for B%4.4d at %c:%6.6d\n",
           is_data ? "sdblk_unstuff_dblk" : "sdblk_unstuff_blk", block->blockette_type,
           block->record_type, block->logical_sequence);
  return -1;
}

}  // namespace

int sdblk_unstuff_blk(SDBlkVol *vol, SDBlk *block) {
  if (block->blkdef == nullptr || block->blockette_raw == nullptr) return 0;
  block_forget_fields(block);
  Cursor fields = Cursor(block->blockette_raw, block->blockette_length).from(kPrefixBytes);
  return walk_fields(&block->contents, &fields, {vol, block->big_endian != 0}, 1,
                     list_of(*block->blkdef), nullptr);
}

int sdblk_unstuffblk(SDBlk *block) {
  const Attempt attempt;
  SDBlkVol *vol = block->vol;
  const bool whole = vol != nullptr && vol->whole != nullptr;
  const int result = whole ? unstuff_whole(vol, block) : unstuff_strictly(block);
  if (result < 0 && vol != nullptr) {
    attempt.keep(vol, block->file_offset, sdblk_block_number(block));
  }
  return result;
}

int sdblk_chain(SDBlk *record, double *start) {
  const Attempt attempt;
  SDBlkVol *vol = record->vol;
  if (vol == nullptr || vol->whole == nullptr) {
    elog_log(0, "sdblk_chain: B%4.4d at %c:%6.6d is not read whole\n", record->blockette_type,
             record->record_type, record->logical_sequence);
    return -1;
  }
  const int result = chain_whole(vol, record, start);
  if (result < 0) attempt.keep(vol, record->file_offset, sdblk_block_number(record));
  return result;
}
