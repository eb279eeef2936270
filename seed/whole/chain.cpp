#include "seed/whole/chain.h"

#include "support/load.h"

namespace tarvik {
namespace {

// Offsets of what a data record's fixed section holds.
constexpr std::int64_t kYear = 20;
constexpr std::int64_t kDay = 22;
constexpr std::int64_t kTenThousandths = 28;
constexpr std::int64_t kFirstBlockette = 46;

struct Range {
  std::int64_t offset;
  std::int32_t least;
  std::int32_t most;
};
constexpr std::array<Range, 3> kRanges = {
    {{kDay, 1, 366}, {kYear, 1900, 2100}, {kTenThousandths, 0, 9999}}};

bool makes_sense(const RecordBytes &record, const Range &range, bool big_endian) {
  const std::int32_t value = load_u16(record.bytes + range.offset, big_endian);
  return value >= range.least && value <= range.most;
}

}  // namespace

ByteOrder byte_order_of(const RecordBytes &record) {
  for (const Range &range : kRanges) {
    const bool big = makes_sense(record, range, true);
    if (big != makes_sense(record, range, false)) return {big, true};
  }
  return {true, false};
}

void Chain::start(const RecordBytes &record, bool big_endian) {
  for (std::size_t i = 0; i < count_; ++i) visited_[taken_[i] / 64] = 0;
  count_ = 0;
  record_ = record;
  big_endian_ = big_endian;
  following_ = load_u16(record.bytes + kFirstBlockette, big_endian);
}

}  // namespace tarvik
