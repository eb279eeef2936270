// Logical records and the blocks in them: sdblk_parseblk.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "seed/block.h"
#include "seed/cursor.h"
#include "seed/failure.h"
#include "seed/format.h"
#include "seed/paging.h"
#include "seed/scan.h"
#include "seed/sdblk.h"
#include "seed/whole/reader.h"
#include "support/digits.h"
#include "support/line.h"

using namespace tarvik;

namespace {

constexpr std::int32_t kSequenceSize = 6;  // digits of a sequence number
constexpr std::int32_t kShortestRecord = 64;
constexpr std::int32_t kLongestRecord = 131072;
constexpr std::int32_t kDataStep = 64;  // a data record's header is looked for in such steps
constexpr std::int64_t kPrefetchAhead = 2048;

bool is_data_letter(char letter) {
  return letter == 'D' || letter == 'R' || letter == 'Q' || letter == 'M';
}

bool is_control_letter(char letter) {
  return letter == 'V' || letter == 'A' || letter == 'S' || letter == 'T';
}

// ---- the reading position ----

Cursor rest_of_image(const SDBlkVol *vol) { return image_from(*vol, vol->cursor); }

void advance(SDBlkVol *vol, std::int32_t bytes) {
  move_to(vol, vol->offset + bytes);
  vol->record_pos += bytes;
}

void skip_record(SDBlkVol *vol) {
  move_to(vol, vol->record_offset + vol->logical_length);
  vol->record_pos = 0;
}

std::int32_t remaining_in_record(const SDBlkVol *vol) {
  return vol->logical_length - vol->record_pos;
}

// ---- record headers ----

// The first six characters of a sequence number in six digits.
std::array<char, kSequenceSize> sequence_text(std::int32_t sequence) {
  std::array<char, 24> text;
  put_digits<kSequenceSize>(text.data(), sequence);
  std::array<char, kSequenceSize> first;
  std::memcpy(first.data(), text.data(), first.size());
  return first;
}

// Whether a header with the expected sequence number stands at the offset, which is in the image.
bool header_stands_at(const SDBlkVol *vol, std::int64_t offset,
                      const std::array<char, kSequenceSize> &expected) {
  const Cursor image = image_at(*vol, offset);
  const char *header = image.bytes();
  if (!image.has(kHeaderBytes - 1) || std::memcmp(header, expected.data(), expected.size()) != 0) {
    return false;
  }
  const char letter = header[kSequenceSize];
  if (is_data_letter(letter)) return image.has(kHeaderBytes) && header[kSequenceSize + 1] == ' ';
  return is_control_letter(letter);
}

// Finds the length of the current record by looking for the header of the next one: first where the
// length in force puts it, then at every power of two from 64 to 131072.  A record that would reach
// the end of the image ends there.
bool measure_record(SDBlkVol *vol) {
  const auto expected = sequence_text(vol->logical_sequence + 1);
  const std::int64_t rest = image_at(*vol, vol->record_offset).size();
  std::int32_t candidate = vol->logical_length;
  for (std::int32_t next = kShortestRecord; candidate < rest; next *= 2) {
    if (header_stands_at(vol, vol->record_offset + candidate, expected)) {
      vol->logical_length = candidate;
      return true;
    }
    if (next > kLongestRecord) {
      elog_log(0, "sdblk_parseblk: Cannot find next logical record.\n");
      return false;
    }
    candidate = next;
  }
  vol->logical_length = static_cast<std::int32_t>(rest);
  return true;
}

// The sequence number at the start of a header, which is in the image whole.
bool read_sequence(const char *header, std::int32_t *sequence) {
  std::uint64_t number = 0;
  if (read_eight_digits(first_of_eight<kSequenceSize>(header), &number)) [[likely]] {
    *sequence = static_cast<std::int32_t>(number);
    return true;
  }
  return scan_integer(until_zero({header, kSequenceSize}), nullptr, sequence) >= 0;
}

bool read_header(SDBlkVol *vol) {
  vol->record_offset = vol->offset;
  give_back_pages(vol);
  const char *header = vol->cursor;
  if (!read_sequence(header, &vol->logical_sequence)) {
    elog_log(
        0, "sdblk_parseblk: scan_int(logical_sequence,'%c%c%c%c%c%c') error at %ld bytes offset\n",
        header[0], header[1], header[2], header[3], header[4], header[5],
        static_cast<long>(vol->record_offset));
    return false;
  }
  vol->record_type = header[kSequenceSize];
  vol->continuation = header[kSequenceSize + 1];
  advance(vol, kHeaderBytes);
  if (!measure_record(vol)) return false;
  if (is_data_letter(vol->record_type)) {
    // A data block starts at its header.
    move_to(vol, vol->record_offset);
    vol->record_pos = 0;
  }
  return true;
}

// ---- blocks ----

// The caller's block, emptied, or a new one; with what every block holds filled in.
SDBlk *start_block(SDBlkVol *vol, SDBlk **blkp, std::int32_t type) {
  SDBlk *blk = block_start(blkp);
  if (blk == nullptr) return nullptr;
  blk->block_number = vol->nblocks;
  // Wraps in volumes of more than 2^31 blocks.
  vol->nblocks = static_cast<std::int32_t>(static_cast<std::uint32_t>(vol->nblocks) + 1);
  blk->blockette_type = type;
  blk->file_offset = vol->offset;
  blk->logical_sequence = vol->logical_sequence;
  blk->logical_length = vol->logical_length;
  blk->record_offset = vol->record_offset;
  blk->record_type = vol->record_type;
  blk->blockette_length = 0;
  blk->big_endian = 0;
  blk->vol = vol;
  return blk;
}

// Walks the rest of a data record in steps and stops where its header stands again, as at its start.
// False at the record's end, which it moves on to.
bool find_data_block(SDBlkVol *vol) {
  const Cursor image = image_at(*vol, vol->record_offset);
  const char *record = image.bytes();
  // The first position counts even where it lies past the record's end.
  const std::int64_t last = std::min<std::int64_t>(std::max(vol->logical_length, vol->record_pos),
                                                   image.size() - kHeaderBytes);
  for (std::int64_t pos = vol->record_pos; pos <= last; pos += kDataStep) {
    // The walk touches every line of the cache, faster than the machine foresees.
    if (pos + kPrefetchAhead < image.size()) __builtin_prefetch(record + pos + kPrefetchAhead);
    if (std::memcmp(record + pos, record, kHeaderBytes) == 0) {
      move_to(vol, vol->record_offset + pos);
      vol->record_pos = static_cast<std::int32_t>(pos);
      return true;
    }
  }
  skip_record(vol);
  return false;
}

int cut_data_block(SDBlkVol *vol, SDBlk **blkp) {
  SDBlk *blk = start_block(vol, blkp, SDBLK_DATA_RECORD);
  if (blk == nullptr) {
    elog_log(1, "sdblk_parseblk: malloc(blockette,%ld) error for BDATA at %c:%6.6d\n", block_size(),
             vol->record_type, vol->logical_sequence);
    return -1;
  }
  blk->data_ptr = vol->cursor;
  blk->blkdef = seed_blkdefs_index[SDBLK_DATA_RECORD];
  if (remaining_in_record(vol) >= kDataStep) {
    advance(vol, kDataStep);
  } else {
    skip_record(vol);
  }
  return 0;
}

bool read_type(const SDBlkVol *vol, std::string_view text, std::int32_t *type) {
  if (scan_integer(until_zero(text), nullptr, type) >= 0) return true;
  elog_log(0, "sdblk_parseblk: scan_int(blockette_type,'%c%c%c') error at %c:%6.6d\n", text[0],
           text[1], text[2], vol->record_type, vol->logical_sequence);
  return false;
}

bool read_length(const SDBlkVol *vol, std::string_view text, SDBlk *blk) {
  if (scan_integer(until_zero(text), nullptr, &blk->blockette_length) >= 0) return true;
  elog_log(0,
           "sdblk_parseblk: scan_int(blockette_length,'%c%c%c%c') error for B%4.4d at %c:%6.6d\n",
           text[0], text[1], text[2], text[3], blk->blockette_type, vol->record_type,
           vol->logical_sequence);
  return false;
}

// Whether the rest of a blockette, with copied bytes read, lies inside the image.
bool is_complete(const SDBlkVol *vol, const SDBlk *blk, std::int32_t copied) {
  if (rest_of_image(vol).has(blk->blockette_length - copied)) return true;
  elog_log(0, "sdblk_parseblk: Incomplete B%4.4d at %c:%6.6d\n", blk->blockette_type,
           vol->record_type, vol->logical_sequence);
  return false;
}

bool take_raw(const SDBlkVol *vol, SDBlk *blk) {
  const std::int32_t length = blk->blockette_length;
  if (length >= 0 && block_take_raw(blk, length)) return true;
  elog_log(length < 0 ? 0 : 1, "sdblk_parseblk: malloc(seedbuf,%d) error for B%4.4d at %c:%6.6d\n",
           length, blk->blockette_type, vol->record_type, vol->logical_sequence);
  return false;
}

// Reads type and length at the cursor into the caller's block.  0, SDBLK_EOF or -1.
int start_control_block(SDBlkVol *vol, SDBlk **blkp) {
  Cursor prefix = rest_of_image(vol);
  std::int32_t type = 0;
  if (!read_type(vol, prefix.take(kTypeBytes), &type)) return -1;
  SDBlk *blk = start_block(vol, blkp, type);
  if (blk == nullptr) {
    elog_log(1, "sdblk_parseblk: malloc(blockette,%ld) error for B%4.4d at %c:%6.6d\n",
             block_size(), type, vol->record_type, vol->logical_sequence);
    return -1;
  }
  if (!read_length(vol, prefix.take(kLengthBytes), blk)) return -1;
  if (!is_complete(vol, blk, 0)) return SDBLK_EOF;
  if (!take_raw(vol, blk)) return -1;
  if (type >= 0 && type < SEED_BLKDEFS_INDEX_SIZE) blk->blkdef = seed_blkdefs_index[type];
  vol->current = blk;
  return 0;
}

// The logical record length that a volume identifier blockette states takes effect at once.
bool adopt_record_length(SDBlkVol *vol, SDBlk *blk) {
  const std::int32_t type = blk->blockette_type;
  if (sdblk_unstuff_blk(vol, blk) < 0) {
    elog_log(0, "sdblk_parseblk: sdblk_unstuff_blk error for B%4.4d at %c:%6.6d\n", type,
             blk->record_type, blk->logical_sequence);
    return false;
  }
  std::int32_t exponent = 9;
  if (sdblk_getv(blk->contents, "llenp", &exponent, nullptr) < 0) {
    elog_log(0, "sdblk_parseblk: sdblk_getv(llenp) error for B%4.4d at %c:%6.6d\n", type,
             blk->record_type, blk->logical_sequence);
    return false;
  }
  const std::uint32_t length = 1U << (static_cast<std::uint32_t>(exponent) % 32);
  if (length > INT32_MAX) {
    elog_log(0,
             "sdblk_parseblk: logical record length 2^%d is out of range for B%4.4d at %c:%6.6d\n",
             exponent, type, blk->record_type, blk->logical_sequence);
    return false;
  }
  vol->logical_length = static_cast<std::int32_t>(length);
  return true;
}

// Copies bytes of the blockette from the cursor.
void copy_raw(SDBlkVol *vol, SDBlk *blk, std::int32_t bytes, std::int32_t *copied) {
  const std::string_view text = rest_of_image(vol).first(bytes);
  text.copy(blk->blockette_raw + *copied, text.size());
  *copied += bytes;
  advance(vol, bytes);
}

int finish_control_block(SDBlkVol *vol, SDBlk *blk, std::int32_t *copied) {
  copy_raw(vol, blk, blk->blockette_length - *copied, copied);
  blk->blockette_raw[blk->blockette_length] = '\0';
  if (is_volume_identifier(blk->blockette_type) && !adopt_record_length(vol, blk)) return -1;
  return blk->blockette_length;
}

bool only_padding_left(const SDBlkVol *vol) {
  return remaining_in_record(vol) < kTypeBytes || rest_of_image(vol).first(kTypeBytes) == "   ";
}

int parse_strictly(SDBlkVol *vol, SDBlk **blkp) {
  SDBlk *assembling = nullptr;  // a blockette that runs on into the next record
  std::int32_t copied = 0;
  while (rest_of_image(vol).has(kHeaderBytes)) {
    if (vol->record_pos == 0 && !read_header(vol)) return -1;
    if (!rest_of_image(vol).has(kPrefixBytes)) return SDBLK_EOF;
    if (is_data_letter(vol->record_type)) {
      assembling = nullptr;
      copied = 0;
      if (find_data_block(vol)) return cut_data_block(vol, blkp);
      continue;
    }
    if (assembling == nullptr) {
      if (only_padding_left(vol)) {
        skip_record(vol);
        continue;
      }
      const int started = start_control_block(vol, blkp);
      if (started != 0) return started;
      assembling = *blkp;
    }
    if (!is_complete(vol, assembling, copied)) return SDBLK_EOF;
    const std::int32_t remaining = remaining_in_record(vol);
    if (assembling->blockette_length - copied <= remaining) {
      return finish_control_block(vol, assembling, &copied);
    }
    copy_raw(vol, assembling, std::max(remaining, 0), &copied);
    skip_record(vol);
  }
  return SDBLK_EOF;
}

}  // namespace

int sdblk_parseblk(SDBlkVol *vol, SDBlk **blkp) {
  const Attempt attempt;
  const int result = vol->whole != nullptr ? parse_whole(vol, blkp) : parse_strictly(vol, blkp);
  if (result < 0) attempt.keep(vol, vol->offset, vol->nblocks);
  return result;
}
