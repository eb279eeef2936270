#include "views/record_parts.h"

#include <algorithm>

#include "seed/format.h"

namespace tarvik {
namespace {

constexpr std::size_t kMostBytes = 64;  // of fields; what is longer hardly comes again

// A number for the byte order and a place in a record: a part of the fixed section, or kChain and
// the offset of a blockette.
std::uint32_t kind_of(const SDBlk &record, std::size_t place) {
  return static_cast<std::uint32_t>(2 * place + (record.big_endian != 0 ? 1 : 0));
}

}  // namespace

RecordParts::RecordParts() : fixed_section_(plan_of(definition_of(SDBLK_DATA_RECORD))) {
  while (fixed_section_.fields[time_].form != Form::time) ++time_;
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    const std::size_t fields = plans()[i].bytes;
    if (fields > 0 && fields <= kMostBytes) {
      bytes_[i] = static_cast<std::uint8_t>(kLinkBytes + static_cast<std::int64_t>(fields));
    }
  }
}

bool RecordParts::find(std::uint32_t kind, std::string_view bytes) {
  if (count_ == kMost) return false;
  const std::string_view text = bytes.empty() ? bytes : repeats_.find(kind, bytes);
  parts_[count_++] = {kind, bytes, text, 0, 0};
  return !text.empty();
}

bool RecordParts::find_chained(const SDBlk &record, const SDBlk &chained) {
  // Another blockette may begin within its type.
  if (chained.blkdef == nullptr || chained.blockette_length < kLinkBytes) return find(0, {});
  const std::size_t size = bytes_[static_cast<std::size_t>(chained.blkdef - seed_blkdefs)];
  const auto there = static_cast<std::size_t>(chained.blockette_length);
  const auto offset = static_cast<std::size_t>(chained.file_offset - record.file_offset);
  return find(kind_of(record, kChain + offset), {chained.data_ptr, std::min(size, there)});
}

bool RecordParts::find(const SDBlk &record) {
  const std::string_view section(record.data_ptr, kDataHeaderBytes);
  const auto time_bytes = static_cast<std::size_t>(fixed_section_.fields[time_].def->width);
  count_ = 0;
  bool all =
      find(kind_of(record, kBeforeTime), section.substr(kHeaderBytes, kStartTime - kHeaderBytes));
  all &= find(kind_of(record, kAfterTime), section.substr(kStartTime + time_bytes));
  for (const SDBlk *chained = record.next; chained != nullptr; chained = chained->next) {
    all &= find_chained(record, *chained);
  }
  return all;
}

void RecordParts::note_new(std::size_t part, std::size_t start, std::size_t size) {
  if (part >= count_ || parts_[part].bytes.empty()) return;
  parts_[part].new_start = start;
  parts_[part].new_size = size;
}

void RecordParts::keep_new(std::string_view written) {
  for (std::size_t i = 0; i < count_; ++i) {
    const Part &part = parts_[i];
    if (part.new_size == 0) continue;
    repeats_.keep(part.kind, part.bytes, written.substr(part.new_start, part.new_size));
  }
}

}  // namespace tarvik
