// A whole volume, read whole: what must hold of every input.
#include <algorithm>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/blocks.h"
#include "fuzz/harness.h"
#include "seed/whole.h"
#include "support/epoch.h"
#include "support/load.h"
#include "tests/util/block_text.h"

namespace fuzz {

namespace {

// What one input may cost: processor time is told apart from a cost that grows faster than the
// input, of which 64 KiB would take much longer.
constexpr double kSeconds = 0.5;
constexpr double kSecondsAByte = 20e-6;

double processor_seconds() {
  std::timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// The blocks of one reading, as text.
struct Blocks {
  std::vector<std::string> places;
  std::vector<std::string> texts;
  bool complete = false;

  void add(const SDBlk &block) {
    places.push_back(block_text::place_of(block));
    texts.push_back(block_text::text_of(block));
  }
};

// Follows what is handed out, and requires it to be in order.
class Course {
 public:
  explicit Course(std::int64_t size) : size_(size) {}

  static void take(void *context, const SDBlkFinding *finding) {
    static_cast<Course *>(context)->find(*finding);
  }
  void enter_block(const SDBlk &block) {
    require(sdblk_block_number(&block) == block_++, "blocks are numbered in order");
    require(block.record_offset >= record_, "records come in order");
    const bool is_new = block.record_offset > record_ || block_ == 1;
    require(!is_new || block.record_offset >= covered_, "no record begins in what is passed over");
    record_ = block.record_offset;
    std::int64_t bytes = 0;
    require(sdblk_raw(&block, &bytes) != nullptr, "a block has bytes");
    require(bytes > 0 && bytes <= size_, "a block has no more bytes than the file");
    in_blocks_ += bytes;
    decoding_ = true;
  }
  void leave_block(const SDBlk &block) {
    decoding_ = false;
    const SDBlk *chained = block.next;
    for (; chained != nullptr; chained = chained->next) ++chained_;
  }
  void end(const SDBlkWholeCounts &counts) const {
    require(between_ + counts.record_bytes == size_, "skips and records tile the file");
    require(counts.blocks == block_, "all blocks are counted");
    require(in_blocks_ <= size_, "no byte is in two blocks");
    require(chained_ <= size_, "no byte begins two data blockettes");
    // A byte begins a skip, a record, or a field at most, and each gives one note or two.
    require(findings_ <= 8 * size_, "what is told is in proportion to the file");
  }

 private:
  void find(const SDBlkFinding &finding) {
    ++findings_;
    require(finding.text != nullptr && *finding.text != '\0', "a finding has a text");
    require((finding.field != nullptr) ==
                (finding.cause == SDBLK_NOTE_VALUE || finding.cause == SDBLK_NOTE_SHORT),
            "notes on fields name them");
    if (finding.cause > SDBLK_SKIP_PREFIX) {
      require(finding.block == (decoding_ ? block_ - 1 : -1), "a note names its block");
      require(finding.offset >= 0 && finding.offset < size_, "a note is on something in the file");
      return;
    }
    require(!decoding_, "nothing is passed over while a block is decoded");
    require(finding.length > 0 && finding.offset + finding.length <= size_,
            "what is passed over lies in the file");
    require(finding.offset >= covered_, "no byte is passed over twice");
    covered_ = finding.offset + finding.length;
    if (finding.cause != SDBLK_SKIP_PREFIX) between_ += finding.length;
  }

  std::int64_t size_;
  std::int64_t covered_ = 0;    // the end of the last skip
  std::int64_t record_ = 0;     // where the record of the last block begins
  std::int64_t between_ = 0;    // bytes in skips between records
  std::int64_t in_blocks_ = 0;  // bytes in blocks
  std::int64_t block_ = 0;      // blocks so far
  std::int64_t chained_ = 0;    // data blockettes so far
  std::int64_t findings_ = 0;
  bool decoding_ = false;
};

// The bytes that a data blockette's fields take; of a text without a width, all that could be there.
std::int64_t bytes_of_fields(const SDBlkDef &def) {
  std::int64_t bytes = 4;  // type and next offset
  for (std::int32_t i = 0; i < def.nfields; ++i) {
    bytes += def.fields[i].stype == 'V' ? 65536 : def.fields[i].width;
  }
  return bytes;
}

// Whether a field's text is taken by strict reading in a way of its own: one of variable length ends
// at a NUL, and a time that is only a year becomes the day before it.
bool is_odd_text(const SDBlk &block, const SDBlkEntry &entry, std::int32_t element) {
  std::int64_t size = 0;
  const char *bytes = sdblk_field_bytes(&block, &entry, element, &size);
  const std::string_view text(bytes == nullptr ? "" : bytes, static_cast<std::size_t>(size));
  if (text.find('\0') != std::string_view::npos) return true;
  const bool is_time = entry.def->kind == SDBLK_DOUBLE;
  return is_time && !text.empty() && text.find(',') == std::string_view::npos;
}

bool has_odd_text(const SDBlk &block, const Arr *contents, const SDBlkFieldDef *fields,
                  std::int32_t nfields) {
  for (std::int32_t position = 0; position < nfields; ++position) {
    const SDBlkEntry *entry = sdblk_entry_at(contents, fields, position);
    if (entry == nullptr) continue;
    for (std::int32_t i = 0; i < entry->count; ++i) {
      if (entry->def->kind == SDBLK_GROUP_ARRAY) {
        if (has_odd_text(block, entry->value.ea[i], entry->def->sub, entry->def->nsub)) return true;
      } else if (entry->def->stype == 'V' && is_odd_text(block, *entry, i)) {
        return true;
      }
    }
  }
  return false;
}

// Whether a blockette holds what strict reading takes in a way of its own: a NUL in one of text
// alone, also where that stands in the chain of a data record, or an odd text.
bool is_odd_blockette(const SDBlk &block) {
  if (block.blkdef == nullptr) return false;
  std::int64_t size = 0;
  const char *bytes = sdblk_raw(&block, &size);
  const bool is_text = block.blkdef->type < SDBLK_DATA_RECORD;
  if (is_text && std::memchr(bytes, 0, static_cast<std::size_t>(size)) != nullptr) return true;
  return has_odd_text(block, block.contents, block.blkdef->fields, block.blkdef->nfields);
}

// Whether a data record is of a year that is yet to come: strict reading, which knows the time, then
// does not deduce the byte order from it.
bool is_of_the_future(const SDBlk &block) {
  if (block.data_ptr == nullptr) return false;
  constexpr std::ptrdiff_t kYear = 20;
  const std::int32_t year = tarvik::load_u16(block.data_ptr + kYear, block.big_endian != 0);
  return year > yearday(std_now()) / 1000 + 1;
}

bool is_odd(const SDBlk &block) {
  if (is_of_the_future(block)) return true;
  for (const SDBlk *blk = &block; blk != nullptr; blk = blk->next) {
    if (is_odd_blockette(*blk)) return true;
  }
  return false;
}

// Whether a blockette of a record's chain ends where another begins before its fields do: strict
// reading goes on then.
bool has_overlaps(const SDBlk &record) {
  for (const SDBlk *blk = record.next; blk != nullptr; blk = blk->next) {
    const std::int64_t end = blk->file_offset + blk->blockette_length;
    if (end == record.file_offset + record.blockette_length || blk->blkdef == nullptr) continue;
    if (blk->blockette_length < bytes_of_fields(*blk->blkdef)) return true;
  }
  return false;
}

bool found_nothing(const SDBlkWholeCounts &counts) {
  return std::all_of(std::begin(counts.findings), std::end(counts.findings),
                     [](std::int64_t count) { return count == 0; });
}

Blocks read_whole(std::string_view bytes, std::int32_t record_length, bool *sound) {
  const auto size = static_cast<std::int64_t>(bytes.size());
  Course course(size);
  const SDBlkWholeOptions options = {Course::take, &course, SDBLK_KEEP_FIRST};
  const Volume vol(sdblk_open_whole_buffer(bytes.data(), size, record_length, &options));
  require(vol != nullptr, "any bytes can be opened");
  Blocks blocks;
  Block block;
  const double start = processor_seconds();
  double aside = 0;  // what looking at the blocks costs
  bool odd = false;
  for (;;) {
    const int result = parse(vol.get(), &block);
    if (result == SDBLK_EOF) break;
    require(result >= 0, "whole reading fails on no content");
    course.enter_block(*block);
    require(sdblk_unstuffblk(block.get()) == 0, "any block can be decoded");
    course.leave_block(*block);
    const double before = processor_seconds();
    odd = odd || is_odd(*block) || has_overlaps(*block);
    blocks.add(*block);
    aside += processor_seconds() - before;
  }
  require(
      processor_seconds() - start - aside <= kSeconds + kSecondsAByte * static_cast<double>(size),
      "the work is in proportion to the file");
  const SDBlkWholeCounts counts = sdblk_whole_counts(vol.get());
  course.end(counts);
  *sound = found_nothing(counts) && !odd;
  blocks.complete = true;
  return blocks;
}

Blocks read_strictly(std::string_view bytes, std::int32_t record_length) {
  Blocks blocks;
  until_fatal([&] {
    const Volume vol(
        sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), record_length));
    Block block;
    int result = 0;
    while ((result = parse(vol.get(), &block)) >= 0 && result != SDBLK_EOF) {
      if (sdblk_unstuffblk(block.get()) < 0 || stands_still(*block)) return;
      blocks.add(*block);
    }
    blocks.complete = result == SDBLK_EOF;
  });
  return blocks;
}

}  // namespace

void exercise_whole(std::string_view bytes, std::int32_t record_length) {
  bool sound = false;
  const Blocks whole = read_whole(bytes, record_length, &sound);
  if (!sound) return;
  const Blocks strict = read_strictly(bytes, record_length);
  if (!strict.complete || strict.places != whole.places) return;
  require(strict.texts == whole.texts, "both ways read a sound volume alike");
}

}  // namespace fuzz
