// How blocks are made, reused and released: the library's side of SDBlk.
//
// A block and its bookkeeping are one allocation.  A record's data blockettes belong to the
// record's block for good: they stay on its chain list when the block is cleared and are handed out
// again for the next record, contents and all, so that a steady stream of records allocates
// nothing.
#ifndef SEED_BLOCK_H_
#define SEED_BLOCK_H_

#include <cstddef>
#include <cstdint>

#include "seed/sdblk.h"

struct SDBlkStorage {
  char *raw;                 // the buffer of blockette_raw; kept over clears
  std::size_t raw_capacity;  // its size, bytes
  SDBlk *chain_first;        // a record's data blockettes, in the order of their making
  SDBlk *chain_spare;        // the first of them that is not in use
  SDBlk *chain_following;    // a data blockette: the one made after it
  bool raw_in_use;           // blockette_raw was set to raw
  bool separate;             // of a block made by hand: an allocation of its own
  bool chained;              // a data blockette: belongs to its record's block
  bool shares_chain;         // a copy: next belongs to the original
  bool reported;             // whole reading: decoded before, and its notes told
  std::int64_t number;       // whole reading: of the block, or of the record of a data blockette
  std::int64_t there;        // whole reading: bytes of it that the file has
};

namespace tarvik {

// A new zero-filled block with empty contents, or nullptr.  errno tells why.
SDBlk *block_new() noexcept;

// A block to be filled: *blkp emptied, or a new one.  nullptr when memory runs out.
SDBlk *block_start(SDBlk **blkp) noexcept;

// Makes what a block that a program has made by hand lacks; false when memory runs out.
[[nodiscard]] bool block_make_whole(SDBlk *block) noexcept;

// Size of a block, for messages.
long block_size() noexcept;

// A buffer for length raw bytes and a final 0, put into blockette_raw; false when memory runs out.
[[nodiscard]] bool block_take_raw(SDBlk *block, std::int32_t length) noexcept;

// The next unused data blockette of a record's block, cleared, or nullptr when memory runs out.
SDBlk *block_take_chained(SDBlk *record) noexcept;

// Takes the chain off a block; what the library made for it is kept for the next record.
void block_drop_chain(SDBlk *block) noexcept;

// Takes the decoded fields off a block that is decoded again; what a program set by hand stays.
void block_forget_fields(SDBlk *block) noexcept;

}  // namespace tarvik

#endif  // SEED_BLOCK_H_
