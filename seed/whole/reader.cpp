#include "seed/whole/reader.h"

#include <algorithm>
#include <cstring>

#include "seed/block.h"
#include "seed/cursor.h"
#include "seed/paging.h"
#include "seed/whole/findings.h"
#include "seed/whole/header.h"
#include "seed/whole/measure.h"
#include "seed/whole/numbers.h"
#include "seed/whole/state.h"
#include "support/memory.h"

namespace tarvik {
namespace {

constexpr std::int32_t kFirstDataType = 99;     // types from here on stand in data records only
constexpr std::int64_t kSearchBytes = 8 << 20;  // looked through before pages are given back

Image image_of(const SDBlkVol *vol) { return {vol->image, vol->image_size}; }

// Where the volume is read, for programs that look and for the pages of its mapping.
void set_position(SDBlkVol *vol, std::int64_t offset) {
  move_to(vol, offset);
  vol->record_pos = static_cast<std::int32_t>(vol->whole->pos);
}

// ---- between records ----

// Passes over what is no record; true when a record stands at the offset of the next one.
bool find_record(SDBlkVol *vol, Header *kind) {
  SDBlkWhole *whole = vol->whole;
  const Image image = image_of(vol);
  const std::int64_t start = whole->next;
  if (start >= image.size) return false;
  *kind = whole->header != Header::none ? whole->header : header_at(image, start);
  if (*kind != Header::none) return true;
  std::int64_t end = start + 1;
  bool padding = is_padding(image.bytes + start, 1);
  for (std::int64_t from = end; end == from && from < image.size;) {
    const std::int64_t to = std::min(from + kSearchBytes, image.size);
    end = find_header(image, from, to);
    padding = padding && is_padding(image.bytes + from, end - from);
    if (end < to) break;
    from = end;
    vol->record_offset = end;
    give_back_pages(vol);
  }
  report_skip(whole, padding ? SDBLK_SKIP_PADDING : SDBLK_SKIP_GARBAGE, start, end - start);
  whole->next = end;
  if (end == image.size) return false;
  *kind = header_at(image, end);
  return true;
}

// ---- records ----

// Records of one length follow one another, and of each a line or two of the cache are looked at:
// steps that the machine does not foresee beyond a page.
void fetch_ahead(const SDBlkVol &vol, std::int64_t length) {
  constexpr std::int64_t kRecords = 3;
  const std::int64_t offset = vol.whole->next + kRecords * length;
  if (offset < vol.image_size) __builtin_prefetch(vol.image + offset);
}

void report_measure(SDBlkWhole *whole, std::int64_t offset, const Measure &measure) {
  if (!measure.has_note) return;
  const auto length = static_cast<long long>(measure.length);
  const auto stated = static_cast<long long>(measure.stated);
  if (measure.note == SDBLK_NOTE_UNCONFIRMED) {
    report_note(whole, measure.note, offset, -1, nullptr,
                "nothing confirms that the record has %lld bytes", length);
  } else {
    report_note(whole, measure.note, offset, -1, nullptr,
                "the record has %lld bytes, but states %lld", length, stated);
  }
}

// Whether a record's number breaks the sequence; the first record's does not.
bool breaks_sequence(const SDBlkWhole &whole, std::int32_t number) {
  return whole.counts.records > 0 && !is_one_above(number, whole.record.number);
}

void enter_record(SDBlkVol *vol, Header kind) {
  SDBlkWhole *whole = vol->whole;
  const std::int64_t offset = whole->next;
  const char *header = vol->image + offset;
  vol->record_offset = offset;
  give_back_pages(vol);
  const Measure measure =
      measure_record(image_of(vol), offset, kind, whole->in_force, &whole->chain);
  report_measure(whole, offset, measure);
  if (measure.confirmed) whole->in_force = measure.length;
  const std::int32_t number = record_number(header);
  SDBlkWholeCounts &counts = whole->counts;
  if (breaks_sequence(*whole, number)) ++counts.sequence_breaks;
  if (counts.records++ == 0) counts.first_record_length = measure.length;
  counts.record_bytes += measure.length;
  whole->record = {offset, measure.length, number, header[6]};
  whole->pos = kind == Header::control ? kHeaderBytes : 0;
  whole->next = offset + measure.length;
  whole->header = measure.next;
  fetch_ahead(*vol, measure.length);
  vol->logical_sequence = number;
  vol->logical_length = static_cast<std::int32_t>(measure.length);
  vol->record_type = header[6];
  vol->continuation = header[7];
}

// Whether the record that follows directly goes on with a blockette of the present one.
bool next_record_continues(const SDBlkVol *vol) {
  const SDBlkWhole &whole = *vol->whole;
  const Header kind =
      whole.header != Header::none ? whole.header : header_at(image_of(vol), whole.next);
  if (kind != Header::control) return false;
  const char *header = vol->image + whole.next;
  const int signs = (header[6] == whole.record.letter ? 1 : 0) +
                    (is_one_above(record_number(header), whole.record.number) ? 1 : 0) +
                    (header[7] == '*' ? 1 : 0);
  return signs >= 2;
}

// ---- blocks ----

// The caller's block, emptied, or a new one; with what every block holds filled in.  nullptr, with
// a message registered, when memory runs out.
SDBlk *start_block(SDBlkVol *vol, SDBlk **blkp, std::int32_t type, std::int64_t offset) {
  SDBlk *blk = block_start(blkp);
  if (blk == nullptr) {
    elog_log(1, "sdblk_parseblk: no memory for a block of %ld bytes\n", block_size());
    return nullptr;
  }
  const Record &record = vol->whole->record;
  blk->blockette_type = type;
  blk->file_offset = offset;
  blk->logical_sequence = record.number;
  blk->logical_length = static_cast<std::int32_t>(record.length);
  blk->record_offset = record.offset;
  blk->record_type = record.letter;
  blk->big_endian = 0;
  blk->vol = vol;
  blk->storage->reported = false;
  return blk;
}

// Gives a block that is complete its number.
void finish_block(SDBlkVol *vol, SDBlk *blk) {
  const std::int64_t number = vol->whole->counts.blocks++;
  blk->storage->number = number;
  blk->block_number = static_cast<std::int32_t>(number);
  vol->nblocks = static_cast<std::int32_t>(vol->whole->counts.blocks);
  set_position(vol, vol->whole->record.offset + std::max(vol->whole->pos, std::int64_t{0}));
}

int cut_data_record(SDBlkVol *vol, SDBlk **blkp) {
  const Record &record = vol->whole->record;
  SDBlk *blk = start_block(vol, blkp, SDBLK_DATA_RECORD, record.offset);
  if (blk == nullptr) return -1;
  blk->data_ptr = vol->image + record.offset;
  blk->blockette_length = static_cast<std::int32_t>(record.length);
  blk->storage->there = record.length;
  blk->blkdef = seed_blkdefs_index[SDBLK_DATA_RECORD];
  blk->big_endian = byte_order_of({blk->data_ptr, record.length}).big_endian ? 1 : 0;
  finish_block(vol, blk);
  return 0;
}

bool is_blank_or_nul(char c) { return c == ' ' || c == '\0'; }

// Goes to the next blockette of the record and reads its prefix; false at the end of what there is,
// with the record left.
bool find_blockette(SDBlkVol *vol, std::int32_t *type, std::int32_t *length) {
  SDBlkWhole *whole = vol->whole;
  const Record &record = whole->record;
  const char *bytes = vol->image + record.offset;
  std::int64_t pos = whole->pos;
  while (pos < record.length && (bytes[pos] == '\r' || bytes[pos] == '\n')) ++pos;
  whole->pos = 0;
  if (record.length - pos < kPrefixBytes) return false;
  const char *prefix = bytes + pos;
  if (is_blank_or_nul(prefix[0]) && is_blank_or_nul(prefix[1]) && is_blank_or_nul(prefix[2])) {
    return false;
  }
  *type = padded_number({prefix, kTypeBytes});
  *length = padded_number({prefix + kTypeBytes, kLengthBytes});
  if (*type < 1 || *length < kPrefixBytes) {
    report_skip(whole, SDBLK_SKIP_PREFIX, record.offset + pos, record.length - pos);
    return false;
  }
  whole->pos = pos;
  return true;
}

// Copies a blockette's bytes from its record, and from those that go on with it.
void assemble(SDBlkVol *vol, SDBlk *blk) {
  SDBlkWhole *whole = vol->whole;
  std::int64_t missing = blk->blockette_length;
  char *out = blk->blockette_raw;
  for (;;) {
    const std::int64_t taken = std::min(missing, whole->record.length - whole->pos);
    std::memcpy(out, vol->image + whole->record.offset + whole->pos,
                static_cast<std::size_t>(taken));
    out += taken;
    missing -= taken;
    whole->pos += taken;
    if (missing == 0 || !next_record_continues(vol)) break;
    enter_record(vol, Header::control);
  }
  blk->storage->there = blk->blockette_length - missing;
  std::memset(out, 0, static_cast<std::size_t>(missing) + 1);
}

int cut_blockette(SDBlkVol *vol, SDBlk **blkp, std::int32_t type, std::int32_t length) {
  SDBlkWhole *whole = vol->whole;
  SDBlk *blk = start_block(vol, blkp, type, whole->record.offset + whole->pos);
  if (blk == nullptr) return -1;
  blk->blockette_length = length;
  if (!block_take_raw(blk, length)) {
    elog_log(1, "sdblk_parseblk: no memory for the %d bytes of B%4.4d\n", length, type);
    return -1;
  }
  if (type < kFirstDataType) blk->blkdef = seed_blkdefs_index[type];
  assemble(vol, blk);
  finish_block(vol, blk);
  vol->current = blk;
  return length;
}

}  // namespace

int parse_whole(SDBlkVol *vol, SDBlk **blkp) {
  SDBlkWhole *whole = vol->whole;
  for (;;) {
    std::int32_t type = 0;
    std::int32_t length = 0;
    if (whole->pos > 0 && find_blockette(vol, &type, &length)) {
      return cut_blockette(vol, blkp, type, length);
    }
    Header kind = Header::none;
    if (!find_record(vol, &kind)) {
      set_position(vol, vol->image_size);
      return SDBLK_EOF;
    }
    enter_record(vol, kind);
    if (kind == Header::data) return cut_data_record(vol, blkp);
  }
}

void free_whole(SDBlkWhole *whole) {
  if (whole == nullptr) return;
  whole->~SDBlkWhole();
  memory_free(whole);
}

}  // namespace tarvik
