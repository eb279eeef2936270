#include "seed/block.h"

#include <cstring>
#include <new>

#include "support/arr_impl.h"
#include "support/memory.h"

namespace tarvik {

namespace {

// Contents of a block that the parser fills again and again, and of a chained one.
constexpr std::size_t kContentsBytes = 4096;
constexpr std::size_t kChainedContentsBytes = 512;

struct OwnedBlock {
  SDBlk block;
  SDBlkStorage storage;
};

SDBlk *new_block(std::size_t contents_bytes) {
  void *piece = memory_get(sizeof(OwnedBlock));
  if (piece == nullptr) return nullptr;
  auto *owned = new (piece) OwnedBlock{};
  owned->block.storage = &owned->storage;
  owned->block.contents = arr_new_pooled(contents_bytes);
  if (owned->block.contents == nullptr) {
    memory_free(owned);
    return nullptr;
  }
  return &owned->block;
}

// What a program has put there goes; what it has taken over stays, and is no longer ours.
void release_raw(SDBlk *block) {
  SDBlkStorage *storage = block->storage;
  const bool in_use = storage != nullptr && storage->raw_in_use;
  if (!in_use && block->blockette_raw == nullptr) return;  // as in all blocks of data
  if (!in_use || block->blockette_raw != storage->raw) {
    memory_free(block->blockette_raw);
    if (in_use) storage->raw = nullptr;
    if (in_use) storage->raw_capacity = 0;
  }
  if (in_use) storage->raw_in_use = false;
  block->blockette_raw = nullptr;
}

// The bookkeeping, made now for a block that a program has made by hand; or nullptr.
SDBlkStorage *storage_of(SDBlk *block) {
  if (block->storage != nullptr) return block->storage;
  void *piece = memory_get(sizeof(SDBlkStorage));
  if (piece == nullptr) return nullptr;
  auto *storage = new (piece) SDBlkStorage{};
  storage->separate = true;
  storage->number = -1;
  storage->there = block->blockette_length;
  block->storage = storage;
  return storage;
}

void release_memory(SDBlk *block) {
  release_raw(block);
  freearr(block->contents, free_sdblk_entry);
  if (block->storage != nullptr) memory_free(block->storage->raw);
  if (block->storage != nullptr && block->storage->separate) memory_free(block->storage);
  memory_free(block);
}

void release_chain_list(SDBlk *record) {
  if (record->storage == nullptr) return;
  SDBlk *chained = record->storage->chain_first;
  while (chained != nullptr) {
    SDBlk *following = chained->storage->chain_following;
    release_memory(chained);
    chained = following;
  }
}

// The data blockettes in use go on without their record: the first of them owns the others.
void leave_chain(SDBlk *record) {
  SDBlkStorage *storage = record->storage;
  if (storage == nullptr || storage->chain_first == storage->chain_spare) {
    release_chain_list(record);
    return;
  }
  SDBlkStorage *heir = storage->chain_first->storage;
  heir->chain_first = heir->chain_following;
  heir->chain_spare = storage->chain_spare;
  heir->chain_following = nullptr;
  heir->chained = false;
}

// What a copy has of its own; false with a message registered.
bool copy_raw(const SDBlk &block, SDBlk *copy) {
  if (block.blockette_raw == nullptr) return true;
  const std::int32_t length = block.blockette_length;
  if (length < 0 || !block_take_raw(copy, length)) {
    elog_log(1, "sdblk_copy: malloc (blockette_raw,%d) error.\n", length);
    return false;
  }
  std::memcpy(copy->blockette_raw, block.blockette_raw, static_cast<std::size_t>(length));
  return true;
}

bool copy_contents(const SDBlk &block, SDBlk *copy) {
  if (block.contents == nullptr) return true;
  copy->contents = sdblk_copy_entry_arr(block.contents);
  if (copy->contents != nullptr) return true;
  elog_log(0, "sdblk_copy: sdblk_copy_entry_arr(contents) error.\n");
  return false;
}

// A block in a record's chain goes with the record.
bool is_chained(const SDBlk *block) { return block->storage != nullptr && block->storage->chained; }

}  // namespace

SDBlk *block_new() noexcept { return new_block(kContentsBytes); }

SDBlk *block_start(SDBlk **blkp) noexcept {
  if (*blkp == nullptr) {
    *blkp = block_new();
    return *blkp;
  }
  sdblk_clear(*blkp);
  return storage_of(*blkp) == nullptr ? nullptr : *blkp;
}

bool block_make_whole(SDBlk *block) noexcept {
  if (block->contents == nullptr) block->contents = newarr();
  return block->contents != nullptr && storage_of(block) != nullptr;
}

long block_size() noexcept { return static_cast<long>(sizeof(SDBlk)); }

bool block_take_raw(SDBlk *block, std::int32_t length) noexcept {
  SDBlkStorage *storage = block->storage;
  const std::size_t bytes = static_cast<std::size_t>(length) + 1;
  if (bytes > storage->raw_capacity) {
    void *raw = memory_get(bytes);
    if (raw == nullptr) return false;
    memory_free(storage->raw);
    storage->raw = static_cast<char *>(raw);
    storage->raw_capacity = bytes;
  }
  block->blockette_raw = storage->raw;
  storage->raw_in_use = true;
  return true;
}

SDBlk *block_take_chained(SDBlk *record) noexcept {
  SDBlkStorage *storage = storage_of(record);
  if (storage == nullptr) return nullptr;
  SDBlk *chained = storage->chain_spare;
  if (chained != nullptr) {
    storage->chain_spare = chained->storage->chain_following;
    sdblk_clear(chained);
    return chained;
  }
  chained = new_block(kChainedContentsBytes);
  if (chained == nullptr) return nullptr;
  chained->storage->chained = true;
  SDBlk **end = &storage->chain_first;
  while (*end != nullptr) end = &(*end)->storage->chain_following;
  *end = chained;
  return chained;
}

// The chain of a block that the library made goes back to its list; one that a copy shares stays
// with its owner; of one that a program made by hand the first block is released.
void block_drop_chain(SDBlk *block) noexcept {
  SDBlk *next = block->next;
  block->next = nullptr;
  SDBlkStorage *storage = block->storage;
  if (storage == nullptr) {
    sdblk_free_single(next);
    return;
  }
  if (storage->chain_first == nullptr && !storage->chained && !storage->shares_chain) {
    sdblk_free_single(next);
  }
  storage->chain_spare = storage->chain_first;
  storage->shares_chain = false;
}

void block_forget_fields(SDBlk *block) noexcept {
  Arr *contents = block->contents;
  if (contents != nullptr && contents->count > 0 && contents->root == contents &&
      !contents->foreign) {
    arr_clear(contents, free_sdblk_entry);
  }
}

}  // namespace tarvik

using namespace tarvik;

void sdblk_clear(SDBlk *block) {
  if (block == nullptr) return;
  if (block->next != nullptr) block_drop_chain(block);
  release_raw(block);
  block->blkdef = nullptr;
  block->data_ptr = nullptr;
  block->data_offset = 0;
  if (block->contents != nullptr && block->contents->root == block->contents) {
    arr_clear(block->contents, free_sdblk_entry);
  } else {
    freearr(block->contents, free_sdblk_entry);
    block->contents = newarr();
  }
}

void sdblk_free_single(SDBlk *block) {
  if (block == nullptr || is_chained(block)) return;
  leave_chain(block);
  release_memory(block);
}

void sdblk_free(void *block) {
  auto *whole = static_cast<SDBlk *>(block);
  if (whole == nullptr || is_chained(whole)) return;
  sdblk_clear(whole);
  release_chain_list(whole);
  release_memory(whole);
}

SDBlk *sdblk_copy(const SDBlk *block) {
  if (block == nullptr) return nullptr;
  void *piece = memory_get(sizeof(OwnedBlock));
  if (piece == nullptr) {
    elog_log(1, "sdblk_copy: malloc (SDBlk,%ld) error.\n", block_size());
    return nullptr;
  }
  auto *owned = new (piece) OwnedBlock{*block, {}};
  SDBlk *copy = &owned->block;
  copy->storage = &owned->storage;
  copy->storage->shares_chain = true;
  if (block->storage != nullptr) {
    copy->storage->reported = block->storage->reported;
    copy->storage->number = block->storage->number;
    copy->storage->there = block->storage->there;
  }
  copy->blockette_raw = nullptr;
  copy->contents = nullptr;
  if (copy_raw(*block, copy) && copy_contents(*block, copy)) return copy;
  release_memory(copy);
  return nullptr;
}
