// Decoding of data records: byte order, fixed section, chain of data blockettes.
#include "seed/blkdefs/data.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "seed/block.h"
#include "seed/cursor.h"
#include "seed/format.h"
#include "seed/layout.h"
#include "seed/sdblk.h"
#include "seed/walk.h"
#include "support/epoch.h"
#include "support/load.h"

using namespace tarvik;

namespace {

constexpr int kLongestChain = 1024;
constexpr std::int32_t kLastLength = 64;  // stated for a last blockette with no data after it
// Offsets of the start time's parts in a data record.
constexpr std::size_t kYear = 20;
constexpr std::size_t kDay = 22;
constexpr std::size_t kTenThousandths = 28;
constexpr std::int32_t kFirstYear = 1900;

// The position of a field in its definition, where lookups try first.
template <std::size_t N>
consteval std::uint32_t position_of(const SDBlkFieldDef (&fields)[N], std::string_view key) {
  std::uint32_t position = 0;
  while (fields[position].key != key) ++position;
  return position;
}
constexpr std::uint32_t kDataOffsetField = position_of(blkdefs::BDATA_blkdef, "data_offset");
constexpr std::uint32_t kBlockOffsetField = position_of(blkdefs::BDATA_blkdef, "blk_offset");
constexpr std::uint32_t kLengthExponentField = position_of(blkdefs::B1000_blkdef, "dlenp");

// The bytes of a record: as many as the length in force, none past the end of the image.
Cursor record_of(const SDBlkVol *vol, const SDBlk *blk) {
  const std::int64_t there = image_from(*vol, blk->data_ptr).size();
  return {blk->data_ptr, std::min<std::int64_t>(vol->logical_length, there)};
}

// ---- byte order ----

enum class Order { big, little, either, neither };

Order plausible_order(const char *bytes, std::int32_t least, std::int32_t most) {
  const std::int32_t little = load_u16(bytes, false);
  const std::int32_t big = load_u16(bytes, true);
  const bool little_fits = little >= least && little <= most;
  const bool big_fits = big >= least && big <= most;
  if (little_fits && big_fits) return Order::either;
  if (little_fits) return Order::little;
  return big_fits ? Order::big : Order::neither;
}

// Deduced from the start time: its day, then its year, then its fraction, until one of them makes
// sense one way only.  Big-endian when nothing decides.  Bytes past the end of the record count as 0.
bool is_big_endian(const Cursor &record) {
  const auto header = record.padded<kDataHeaderBytes>();
  Order order = plausible_order(&header[kDay], 1, 366);
  if (order != Order::either) return order != Order::little;
  const std::int32_t next_year = yearday(std_now()) / 1000 + 1;
  order = plausible_order(&header[kYear], kFirstYear, next_year);
  if (order != Order::either) return order != Order::little;
  order = plausible_order(&header[kTenThousandths], 0, 9999);
  if (order != Order::either) return order != Order::little;
  elog_complain(
      0, "sdblk_unstuff_dblk: WARNING - Cannot deduce byte order - using BIGENDIAN default.\n");
  return true;
}

// ---- chain ----

// The offsets of a record's data blockettes, as far as they have been followed.
class Chain {
 public:
  // Whether a blockette can be read at an offset: it lies in the record, is new, and not too many
  // stand before it.
  bool accepts(const Cursor &record, std::int32_t offset) {
    if (!record.from(offset).has(kLinkBytes) || count_ == kLongestChain) return false;
    if (offset <= highest_ && visited(offset)) return false;
    if (offset > highest_) highest_ = offset;
    offsets_[count_++] = offset;
    return true;
  }

 private:
  [[nodiscard]] bool visited(std::int32_t offset) const {
    for (std::size_t i = 0; i < count_; ++i) {
      if (offsets_[i] == offset) return true;
    }
    return false;
  }

  std::array<std::int32_t, kLongestChain> offsets_;
  std::size_t count_ = 0;
  std::int32_t highest_ = 0;
};

std::int32_t chained_length(std::int32_t offset, std::int32_t next, std::int64_t data_offset) {
  if (next != 0) return next - offset;
  if (data_offset != 0) return static_cast<std::int32_t>(data_offset) - offset;
  return kLastLength;
}

// Types outside the index keep the definition of the fixed section.
const SDBlkDef *chained_definition(std::int32_t type) {
  return seed_blkdefs_index[type < SEED_BLKDEFS_INDEX_SIZE ? type : SDBLK_DATA_RECORD];
}

void fill_chained(const SDBlkVol *vol, const SDBlk *record, std::int32_t offset, SDBlk *blk) {
  blk->logical_sequence = vol->logical_sequence;
  blk->logical_length = vol->logical_length;
  blk->record_offset = vol->record_offset;
  blk->record_type = vol->record_type;
  blk->block_number = vol->nblocks;
  blk->file_offset = (vol->cursor - vol->image) + offset;
  blk->data_ptr = record->data_ptr + offset;
  blk->big_endian = record->big_endian;
  blk->vol = record->vol;
  blk->blkdef = chained_definition(blk->blockette_type);
}

// A data-only blockette states the record's length.
bool adopt_length(SDBlk *record, const SDBlk *blk) {
  std::int32_t exponent = 0;
  if (!get_integer(blk->contents, kLengthExponentField, "dlenp", &exponent)) {
    elog_log(0, "sdblk_unstuff_dblk: sdblk_getv (B1000->dlenp) error.\n");
    return false;
  }
  record->blockette_length =
      static_cast<std::int32_t>(1U << (static_cast<std::uint32_t>(exponent) % 32));
  return true;
}

// Decodes the data blockette at an offset of the record after the chain's tail, which it becomes;
// gives the offset of the next one.  A negative result is a failure.
int decode_chained(const WalkContext &context, SDBlk *record, const Cursor &bytes, SDBlk **tail,
                   std::int32_t *offset) {
  const SDBlkVol *vol = context.vol;
  Cursor cursor = bytes.from(*offset);
  const char *link = cursor.take(kLinkBytes).data();
  const std::int32_t type = load_u16(link, context.big_endian);
  const std::int32_t next = load_u16(link + 2, context.big_endian);
  SDBlk *blk = block_take_chained(record);
  if (blk == nullptr) {
    elog_log(1, "sdblk_unstuff_dblk: malloc(blockette,%ld) error for B%4.4d at %c:%6.6d\n",
             block_size(), type, vol->record_type, vol->logical_sequence);
    return -1;
  }
  (*tail)->next = blk;
  blk->blockette_type = type;
  fill_chained(vol, record, *offset, blk);
  blk->blockette_length = chained_length(*offset, next, record->data_offset);
  if (blk->blkdef != nullptr) {
    if (unpack_fields(&blk->contents, cursor, context, *blk->blkdef) < 0) return -1;
    if (type == kDataOnlyType && !adopt_length(record, blk)) return -1;
  }
  *tail = blk;
  *offset = next;
  return 0;
}

int decode_chain(const WalkContext &context, SDBlk *blk, const Cursor &record,
                 std::int32_t offset) {
  Chain chain;
  SDBlk *tail = blk;
  while (offset >= 1) {
    if (!chain.accepts(record, offset)) {
      elog_complain(
          0,
          "sdblk_unstuff_dblk: WARNING - Bad blockette offset %d at %c:%6.6d - rest of the "
          "chain ignored.\n",
          offset, context.vol->record_type, context.vol->logical_sequence);
      return 0;
    }
    if (decode_chained(context, blk, record, &tail, &offset) < 0) return -1;
  }
  return 0;
}

}  // namespace

int sdblk_unstuff_dblk(SDBlkVol *vol, SDBlk *block) {
  if (block->data_ptr == nullptr || vol == nullptr) {
    elog_log(0, "sdblk_unstuff_dblk: B%4.4d at %c:%6.6d is no data record\n", block->blockette_type,
             block->record_type, block->logical_sequence);
    return -1;
  }
  const Cursor record = record_of(vol, block);
  const WalkContext context = {vol, is_big_endian(record)};
  block_drop_chain(block);
  block_forget_fields(block);
  block->big_endian = context.big_endian ? 1 : 0;
  if (block->blkdef == nullptr) block->blkdef = seed_blkdefs_index[SDBLK_DATA_RECORD];
  if (unpack_fields(&block->contents, record.from(kHeaderBytes), context, *block->blkdef) < 0) {
    return -1;
  }
  std::int32_t offset = 0;
  if (!get_integer(block->contents, kBlockOffsetField, "blk_offset", &offset)) {
    elog_log(0, "sdblk_unstuff_dblk: sdblk_getv (FIXED->blk_offset) error.\n");
    return -1;
  }
  std::int32_t data_offset = 0;
  if (!get_integer(block->contents, kDataOffsetField, "data_offset", &data_offset)) {
    elog_log(0, "sdblk_unstuff_dblk: sdblk_getv (FIXED->data_offset) error.\n");
    return -1;
  }
  block->data_offset = data_offset;
  return decode_chain(context, block, record, offset);
}
