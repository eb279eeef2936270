// Opening a volume for whole reading, and what a program asks of one.
#include "seed/open.h"

#include <cerrno>
#include <new>

#include "seed/block.h"
#include "seed/whole.h"
#include "seed/whole/state.h"
#include "support/memory.h"

using namespace tarvik;

namespace {

SDBlkVol *make_whole(SDBlkVol *vol, const SDBlkWholeOptions *options) {
  if (vol == nullptr || sdblk_read_whole(vol, options) == 0) return vol;
  sdblk_closevol(vol);
  return nullptr;
}

const Definitions *definitions_of(const SDBlkVol *vol) {
  return vol == nullptr || vol->whole == nullptr ? nullptr : &vol->whole->definitions;
}

}  // namespace

int sdblk_read_whole(SDBlkVol *vol, const SDBlkWholeOptions *options) {
  if (vol->offset != 0 || vol->record_pos != 0 || vol->nblocks != 0 || vol->whole != nullptr) {
    elog_log(0, "sdblk_read_whole: the volume is being read already.\n");
    return -1;
  }
  void *memory = memory_get(sizeof(SDBlkWhole));
  if (memory == nullptr) {
    elog_log(1, "sdblk_read_whole: no memory for %ld bytes.\n",
             static_cast<long>(sizeof(SDBlkWhole)));
    return -1;
  }
  constexpr SDBlkWholeOptions kPlain = {nullptr, nullptr, SDBLK_KEEP_FIRST};
  vol->whole = new (memory) SDBlkWhole(options == nullptr ? kPlain : *options);
  vol->whole->in_force = vol->logical_length;
  return 0;
}

SDBlkVol *sdblk_open_whole(const char *path, std::int32_t record_length,
                           const SDBlkWholeOptions *options) {
  errno = 0;
  return make_whole(open_file("sdblk_open_whole", path, record_length, 0), options);
}

SDBlkVol *sdblk_open_whole_buffer(const void *bytes, std::int64_t size, std::int32_t record_length,
                                  const SDBlkWholeOptions *options) {
  errno = 0;
  const char *buffer = size > 0 ? static_cast<const char *>(bytes) : "";
  return make_whole(
      open_buffer("sdblk_open_whole_buffer", buffer, size > 0 ? size : 0, record_length), options);
}

SDBlkWholeCounts sdblk_whole_counts(const SDBlkVol *vol) {
  return vol == nullptr || vol->whole == nullptr ? SDBlkWholeCounts{} : vol->whole->counts;
}

std::int64_t sdblk_block_number(const SDBlk *block) {
  const bool whole = block->vol != nullptr && block->vol->whole != nullptr;
  return whole && block->storage != nullptr ? block->storage->number : block->block_number;
}

std::int32_t sdblk_definition_of(const SDBlkVol *vol, const char *abbr_key, std::int32_t code) {
  const Definitions *definitions = definitions_of(vol);
  return definitions == nullptr ? 0 : definitions->find(abbr_key, code);
}

std::int32_t sdblk_definitions(const SDBlkVol *vol, std::int32_t definition) {
  const Definitions *definitions = definitions_of(vol);
  const Definition *found = definitions == nullptr ? nullptr : definitions->get(definition);
  return found == nullptr ? 0 : found->count;
}

std::int64_t sdblk_definition_number(const SDBlkVol *vol, std::int32_t definition,
                                     std::int32_t which) {
  const Definitions *definitions = definitions_of(vol);
  const Defining *found = definitions == nullptr ? nullptr : definitions->get(definition, which);
  return found == nullptr ? -1 : found->number;
}

const SDBlk *sdblk_definition_block(const SDBlkVol *vol, std::int32_t definition,
                                    std::int32_t which) {
  const Definitions *definitions = definitions_of(vol);
  const Defining *found = definitions == nullptr ? nullptr : definitions->get(definition, which);
  return found == nullptr ? nullptr : found->block;
}
