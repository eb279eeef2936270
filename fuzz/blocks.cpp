#include "fuzz/blocks.h"

#include "fuzz/harness.h"

namespace fuzz {

namespace {

// Reads every decoded field by its name, those of repeated groups too.
void read_fields(const Arr *contents) {
  Tbl *keys = keysarr(contents);
  for (long i = 0; i < counttbl(keys); ++i) {
    const auto *key = static_cast<const char *>(gettbl(keys, i));
    const auto *entry = static_cast<const SDBlkEntry *>(getarr(contents, key));
    if (entry == nullptr) broken("a key of an array has an entry");
    union {
      std::int32_t i;
      double d;
      void *p;
    } value = {};
    require(sdblk_getv(contents, key, &value, nullptr) == 0, "a decoded field is found");
    if (entry->def->kind != SDBLK_GROUP_ARRAY) continue;
    for (std::int32_t n = 0; n < entry->count; ++n) {
      if (entry->value.ea[n] == nullptr) break;
      read_fields(entry->value.ea[n]);
    }
  }
  freetbl(keys, nullptr);
}

void exercise_copy(const SDBlk &block, const Listing &listing) {
  const Block copy(sdblk_copy(&block));
  require(copy != nullptr, "a block can be copied");
  require(list(*copy) == listing, "a copy lists what its original lists");
  Arr *entries = sdblk_copy_entry_arr(block.contents);
  require(countarr(entries) == countarr(block.contents), "a copied array has all entries");
  freearr(entries, free_sdblk_entry);
}

}  // namespace

int parse(SDBlkVol *vol, Block *block) {
  SDBlk *raw = block->release();
  int result = -1;
  try {
    result = sdblk_parseblk(vol, &raw);
  } catch (const Fatal &) {
    block->reset(raw);
    throw;
  }
  block->reset(raw);
  require(
      vol->offset >= 0 && vol->offset <= vol->image_size && vol->cursor == vol->image + vol->offset,
      "the cursor stays inside the image");
  return result;
}

Listing list(const SDBlk &block) {
  take_listing();
  sdblk_printblk(&block, "", 1);
  return take_listing();
}

bool stands_still(const SDBlk &block) {
  return block.data_ptr == nullptr && block.blockette_length == 0;
}

bool exercise_block(SDBlk *block, Listing *listing) {
  const int first = sdblk_unstuffblk(block);
  const Listing once = list(*block);
  listing->add(once);
  read_fields(block->contents);
  exercise_copy(*block, once);
  if (first < 0) return false;
  // An abbreviation is refused the second time, and may have met itself in the dictionary by then.
  if (sdblk_unstuffblk(block) == 0) {
    require(list(*block) == once, "decoding a block again lists the same");
  }
  elog_clear_register(0);
  return true;
}

}  // namespace fuzz
