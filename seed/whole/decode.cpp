// Decoding of blocks that are read whole: control blockettes, and data records with their chains.
#include <algorithm>
#include <array>

#include "seed/block.h"
#include "seed/format.h"
#include "seed/whole/chain.h"
#include "seed/whole/fields.h"
#include "seed/whole/findings.h"
#include "seed/whole/numbers.h"
#include "seed/whole/reader.h"
#include "seed/whole/state.h"
#include "support/load.h"

namespace tarvik {
namespace {

constexpr std::int64_t kDataOffset = 44;  // of the first sample: where a record says it

bool decode_blockette(const FieldsOf &of) {
  SDBlk *block = of.block;
  const std::int64_t there = block->storage->there;
  if (of.notes && there < block->blockette_length) {
    report_note(of.whole, SDBLK_NOTE_CUT, of.offset, of.number, nullptr,
                "the blockette has %lld bytes of the %d that it states",
                static_cast<long long>(there), block->blockette_length);
  }
  if (block->blkdef == nullptr || block->blockette_raw == nullptr) return true;
  const std::int64_t prefix = std::min(there, kPrefixBytes);
  return decode_fields(of, block->blockette_raw + prefix, there - prefix);
}

// ---- chains ----

// The blockettes of one record's chain, and where each of them ends.
struct Links {
  std::array<Link, Chain::kMost> link;
  std::array<std::int32_t, Chain::kMost> end;
  std::size_t count = 0;
};

// Each ends where the next higher one begins, the last at the record's end.
void find_ends(std::int32_t record_length, Links *links) {
  std::array<std::uint16_t, Chain::kMost> by_offset;
  const std::size_t count = links->count;
  bool ascending = true;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    links->end[i] = links->link[i + 1].offset;
    ascending = ascending && links->end[i] > links->link[i].offset;
  }
  if (count > 0) links->end[count - 1] = record_length;
  if (ascending) return;
  for (std::size_t i = 0; i < count; ++i) by_offset[i] = static_cast<std::uint16_t>(i);
  std::sort(by_offset.begin(), by_offset.begin() + static_cast<std::ptrdiff_t>(count),
            [&](std::uint16_t a, std::uint16_t b) {
              return links->link[a].offset < links->link[b].offset;
            });
  for (std::size_t i = 0; i < count; ++i) {
    links->end[by_offset[i]] = i + 1 < count ? links->link[by_offset[i + 1]].offset : record_length;
  }
}

const SDBlkDef *chained_definition(std::int32_t type) {
  return type < SEED_BLKDEFS_INDEX_SIZE ? seed_blkdefs_index[type] : nullptr;
}

// The next data blockette of a record, without its fields; nullptr when memory runs out.
SDBlk *add_chained(SDBlk *record, SDBlk *tail, const Link &link, std::int32_t end) {
  SDBlk *blk = block_take_chained(record);
  if (blk == nullptr) return nullptr;
  blk->blockette_type = link.type;
  blk->logical_sequence = record->logical_sequence;
  blk->logical_length = record->logical_length;
  blk->record_offset = record->record_offset;
  blk->record_type = record->record_type;
  blk->block_number = record->block_number;
  blk->storage->number = record->storage->number;
  blk->file_offset = record->file_offset + link.offset;
  blk->data_ptr = record->data_ptr + link.offset;
  blk->blockette_length = end - link.offset;
  blk->storage->there = end - link.offset;
  blk->big_endian = record->big_endian;
  blk->vol = record->vol;
  blk->blkdef = chained_definition(link.type);
  tail->next = blk;
  return blk;
}

// Hangs the blockettes of its chain on a record.
bool link_chain(SDBlk *record, const RecordBytes &bytes, Chain *chain) {
  Links links;
  chain->start(bytes, record->big_endian != 0);
  while (chain->next(&links.link[links.count])) {
    if (++links.count == Chain::kMost) break;
  }
  find_ends(record->blockette_length, &links);
  SDBlk *tail = record;
  for (std::size_t i = 0; i < links.count; ++i) {
    tail = add_chained(record, tail, links.link[i], links.end[i]);
    if (tail == nullptr) return false;
  }
  return true;
}

bool decode_chained(const FieldsOf &of) {
  FieldsOf chained = of;
  for (SDBlk *blk = of.block->next; blk != nullptr; blk = blk->next) {
    chained.block = blk;
    ++chained.chained;
    const std::int64_t size = blk->blockette_length - kLinkBytes;
    if (blk->blkdef == nullptr || size <= 0) continue;
    if (!decode_data_fields(chained, blk->data_ptr + kLinkBytes, size)) return false;
  }
  return true;
}

RecordBytes bytes_of(const SDBlk &record) { return {record.data_ptr, record.blockette_length}; }

bool decode_record(const FieldsOf &of) {
  SDBlk *record = of.block;
  Chain &chain = of.whole->chain;
  const RecordBytes bytes = bytes_of(*record);
  const ByteOrder order = byte_order_of(bytes);
  if (of.notes && !order.deduced) {
    report_note(of.whole, SDBLK_NOTE_ORDER, of.offset, of.number, nullptr,
                "the byte order cannot be deduced; the high byte is taken to be first");
  }
  record->big_endian = order.big_endian ? 1 : 0;
  if (!decode_data_fields(of, bytes.bytes + kHeaderBytes, bytes.size - kHeaderBytes)) return false;
  record->data_offset = load_u16(bytes.bytes + kDataOffset, order.big_endian);
  if (!link_chain(record, bytes, &chain) || !decode_chained(of)) return false;
  if (of.notes && !chain.ended_well()) {
    report_note(of.whole, SDBLK_NOTE_CHAIN, of.offset, of.number, nullptr,
                "the chain of data blockettes leads to %d, where none is taken", chain.refused());
  }
  return true;
}

// A block that a program has made by hand may be shorter than any record.
bool is_record(const SDBlk &block) {
  return block.blockette_type == SDBLK_DATA_RECORD && block.data_ptr != nullptr &&
         block.blockette_length >= kDataHeaderBytes;
}

bool decode(SDBlkVol *vol, SDBlk *block) {
  const FieldsOf of = {
      vol->whole, block, block->file_offset, block->storage->number, -1, !block->storage->reported};
  block->storage->reported = true;
  return is_record(*block) ? decode_record(of) : decode_blockette(of);
}

}  // namespace

int unstuff_whole(SDBlkVol *vol, SDBlk *block) {
  block_drop_chain(block);
  block_forget_fields(block);
  if (block_make_whole(block) && decode(vol, block)) return 0;
  elog_log(0, "sdblk_unstuffblk: no memory for the fields of B%4.4d at %c:%6.6d\n",
           block->blockette_type, block->record_type, block->logical_sequence);
  return -1;
}

int chain_whole(SDBlkVol *vol, SDBlk *record, double *start) {
  if (!is_record(*record)) {
    elog_log(0, "sdblk_chain: B%4.4d at %c:%6.6d is no data record\n", record->blockette_type,
             record->record_type, record->logical_sequence);
    return -1;
  }
  block_drop_chain(record);
  block_forget_fields(record);
  const RecordBytes bytes = bytes_of(*record);
  const ByteOrder order = byte_order_of(bytes);
  record->big_endian = order.big_endian ? 1 : 0;
  if (!block_make_whole(record) || !link_chain(record, bytes, &vol->whole->chain)) {
    elog_log(1, "sdblk_chain: no memory for the data blockettes of B%4.4d at %c:%6.6d\n",
             record->blockette_type, record->record_type, record->logical_sequence);
    return -1;
  }
  *start = SDBLK_NO_TIME;
  const bool has_start = read_whole_binary_time(bytes.bytes + kStartTime, order.big_endian, start);
  return has_start && order.deduced && vol->whole->chain.ended_well() ? 1 : 0;
}

}  // namespace tarvik
