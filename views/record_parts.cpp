#include "views/record_parts.h"

#include <algorithm>

namespace tarvik {
namespace {

constexpr std::size_t kHeaderBytes = 8;  // of a record, before the fixed section
constexpr std::size_t kSectionEnd = 48;  // of the fixed section
constexpr std::size_t kLinkBytes = 4;    // of a data blockette, before its fields
constexpr std::size_t kMostBytes = 64;   // of fields; what is longer hardly comes again
constexpr std::int64_t kBeforeTime = 0;  // places where no blockette stands
constexpr std::int64_t kAfterTime = 1;

// A number for a place in a record and the byte order.
std::uint32_t kind_of(const SDBlk &record, std::int64_t place) {
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

RecordParts::Part RecordParts::part_before_time(const SDBlk &record) const {
  return {kind_of(record, kBeforeTime),
          {record.data_ptr + kHeaderBytes, time_begin_ - kHeaderBytes}};
}

RecordParts::Part RecordParts::part_after_time(const SDBlk &record) const {
  return {kind_of(record, kAfterTime), {record.data_ptr + time_end_, kSectionEnd - time_end_}};
}

RecordParts::Part RecordParts::part_of(const SDBlk &record, const SDBlk &chained) const {
  if (chained.blkdef == nullptr) return {};
  const std::size_t size = bytes_[static_cast<std::size_t>(chained.blkdef - seed_blkdefs)];
  const auto there = static_cast<std::size_t>(chained.blockette_length);
  return {kind_of(record, chained.file_offset - record.file_offset),
          {chained.data_ptr, std::min(size, there)}};
}

bool RecordParts::find(std::size_t place, const Part &part) {
  if (place == kMostParts || part.bytes.empty()) return false;
  found_[place] = repeats_.find(part.kind, part.bytes);
  return !found_[place].empty();
}

bool RecordParts::find(const SDBlk &record) {
  if (!find(0, part_before_time(record)) || !find(1, part_after_time(record))) return false;
  std::size_t place = 2;
  for (const SDBlk *chained = record.next; chained != nullptr; chained = chained->next) {
    if (!find(place++, part_of(record, *chained))) return false;
  }
  return true;
}

void RecordParts::keep(const Part &part, std::string_view text) {
  if (!part.bytes.empty()) repeats_.keep(part.kind, part.bytes, text);
}

}  // namespace tarvik
