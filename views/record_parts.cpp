#include "views/record_parts.h"

#include <algorithm>

namespace tarvik {
namespace {

constexpr std::size_t kHeaderBytes = 8;  // of a record, before the fixed section
constexpr std::size_t kSectionEnd = 48;  // of the fixed section
constexpr std::size_t kLinkBytes = 4;    // of a data blockette, before its fields
constexpr std::size_t kMostBytes = 64;   // of fields; what is longer hardly comes again

// A number for the byte order and a place in a record: a part of the fixed section, or kChain and
// the offset of a blockette.
std::uint32_t kind_of(const SDBlk &record, std::size_t place) {
  return static_cast<std::uint32_t>(2 * place + (record.big_endian != 0 ? 1 : 0));
}

}  // namespace

RecordParts::RecordParts() : fixed_section_(plan_of(definition_of(SDBLK_DATA_RECORD))) {
  time_begin_ = kHeaderBytes;
  for (const Plan::Field &field : fixed_section_.fields) {
    const auto width = static_cast<std::size_t>(field.def->width);
    time_end_ = time_begin_ + width;
    if (field.form == Form::time) break;
    time_begin_ += width;
    ++time_;
  }
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    const std::size_t fields = plans()[i].bytes;
    if (fields > 0 && fields <= kMostBytes) {
      bytes_[i] = static_cast<std::uint8_t>(kLinkBytes + fields);
    }
  }
}

bool RecordParts::find(std::uint32_t kind, std::string_view bytes) {
  if (count_ == kMost) return false;
  const std::string_view text = bytes.empty() ? bytes : repeats_.find(kind, bytes);
  parts_[count_++] = {kind, bytes, text};
  return !text.empty();
}

bool RecordParts::find_chained(const SDBlk &record, const SDBlk &chained) {
  const auto there = static_cast<std::size_t>(chained.blockette_length);
  // Another blockette may begin within its type.
  if (chained.blkdef == nullptr || there < kLinkBytes) return find(0, {});
  const std::size_t size = bytes_[static_cast<std::size_t>(chained.blkdef - seed_blkdefs)];
  const auto offset = static_cast<std::size_t>(chained.file_offset - record.file_offset);
  return find(kind_of(record, kChain + offset), {chained.data_ptr, std::min(size, there)});
}

bool RecordParts::find(const SDBlk &record) {
  const char *bytes = record.data_ptr;
  count_ = 0;
  new_count_ = 0;
  bool all = find(kind_of(record, kBeforeTime), {bytes + kHeaderBytes, time_begin_ - kHeaderBytes});
  all &= find(kind_of(record, kAfterTime), {bytes + time_end_, kSectionEnd - time_end_});
  for (const SDBlk *chained = record.next; chained != nullptr; chained = chained->next) {
    all &= find_chained(record, *chained);
  }
  return all;
}

void RecordParts::note_new(std::size_t part, std::size_t start, std::size_t size) {
  if (part >= count_ || parts_[part].bytes.empty() || new_count_ == kMost) return;
  new_[new_count_++] = {part, start, size};
}

void RecordParts::keep_new(std::string_view written) {
  for (std::size_t i = 0; i < new_count_; ++i) {
    const auto &[place, start, size] = new_[i];
    const Part &part = parts_[place];
    repeats_.keep(part.kind, part.bytes, written.substr(start, size));
  }
}

}  // namespace tarvik
