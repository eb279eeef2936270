// What a data record says of its samples: sdblk_samples.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "seed/binary.h"
#include "seed/format.h"
#include "seed/scan.h"
#include "seed/whole.h"
#include "seed/whole/chain.h"
#include "seed/whole/numbers.h"
#include "seed/whole/state.h"
#include "support/load.h"

using namespace tarvik;

namespace {

// Offsets in a record of what its header and fixed section hold.
constexpr std::int64_t kStation = 8;
constexpr std::int64_t kLocation = 13;
constexpr std::int64_t kChannel = 15;
constexpr std::int64_t kNetwork = 18;
constexpr std::int64_t kSampleCount = 30;
constexpr std::int64_t kRateFactor = 32;
constexpr std::int64_t kRateMultiplier = 34;
constexpr std::int64_t kActivityFlags = 36;
constexpr std::int64_t kTimeCorrection = 40;
constexpr std::int64_t kDataOffset = 44;

constexpr char kCorrectionApplied = 2;  // bit 1 of the activity flags
constexpr double kTicksPerSecond = 10000.0;
constexpr std::int64_t kMicrosPerTick = 100;
constexpr std::int64_t kNanosPerMicro = 1000;
constexpr double kLowestRate = 0.000001;

constexpr std::int32_t kRateType = 100;
constexpr std::int32_t kTimingType = 1001;

RecordBytes bytes_of(const SDBlk &record) {
  std::int64_t size = 0;
  const char *bytes = sdblk_raw(&record, &size);
  return {bytes, size};
}

// A code of the header, trimmed.
template <std::size_t Size>
void copy_code(const RecordBytes &record, std::int64_t offset, char (&code)[Size]) {
  const std::string_view text = trimmed_field({record.bytes + offset, Size - 1});
  std::memset(code, 0, Size);
  std::memcpy(code, text.data(), text.size());
}

double nominal_rate(double factor, double multiplier) {
  if (factor == 0 || multiplier == 0) return 0;
  if (factor > 0) return multiplier > 0 ? factor * multiplier : -factor / multiplier;
  return multiplier > 0 ? -multiplier / factor : 1 / (factor * multiplier);
}

// Goes along a record's chain.
class ChainReader {
 public:
  ChainReader(const RecordBytes &record, bool big_endian, Chain *chain, SDBlkSamples *samples)
      : record_(record), big_endian_(big_endian), chain_(chain), samples_(samples) {}

  void read() {
    chain_->start(record_, big_endian_);
    Link link = {};
    while (chain_->next(&link)) {
      if (is_wanted(link.type)) wanted_ = true;
    }
    if (!wanted_) return;
    for (std::size_t i = 0; i < chain_->count(); ++i) {
      const std::int32_t offset = chain_->taken(i);
      read_blockette(load_u16(record_.bytes + offset, big_endian_), offset);
    }
  }
  [[nodiscard]] double rate() const { return rate_; }
  [[nodiscard]] std::int32_t microseconds() const { return microseconds_; }

 private:
  static bool is_wanted(std::int32_t type) {
    return type == kRateType || type == kDataOnlyType || type == kTimingType;
  }

  void read_blockette(std::int32_t type, std::int32_t offset) {
    if (type == kRateType && !has_rate_) {
      has_rate_ = true;
      if (has(offset, 8)) rate_ = load_float(record_.bytes + offset + 4, big_endian_);
    } else if (type == kDataOnlyType && !has_data_only_) {
      has_data_only_ = true;
      if (has(offset, 5)) samples_->encoding = ubyte_at(record_.bytes + offset + 4);
      if (has(offset, 6)) samples_->big_endian = record_.bytes[offset + 5] != 0 ? 1 : 0;
    } else if (type == kTimingType) {
      read_timing(offset);
    }
  }

  void read_timing(std::int32_t offset) {
    if (has(offset, 5)) {
      const std::int32_t quality = ubyte_at(record_.bytes + offset + 4);
      std::int32_t &lowest = samples_->timing_quality;
      lowest = lowest < 0 ? quality : std::min(lowest, quality);
    }
    if (has_timing_) return;
    has_timing_ = true;
    if (has(offset, 6)) microseconds_ = byte_at(record_.bytes + offset + 5);
  }

  // Whether a blockette has so many bytes: before the record's end, and before the next higher of
  // the chain begins.
  [[nodiscard]] bool has(std::int32_t offset, std::int32_t bytes) const {
    if (record_.size - offset < bytes) return false;
    for (std::size_t i = 0; i < chain_->count(); ++i) {
      const std::int32_t other = chain_->taken(i);
      if (other > offset && other - offset < bytes) return false;
    }
    return true;
  }

  RecordBytes record_;
  bool big_endian_;
  Chain *chain_;
  SDBlkSamples *samples_;
  bool wanted_ = false;
  bool has_rate_ = false;
  bool has_data_only_ = false;
  bool has_timing_ = false;
  double rate_ = 0;
  std::int32_t microseconds_ = 0;
};

double rate_of(const RecordBytes &record, bool big_endian, double actual) {
  double rate = actual;
  if (!(std::isfinite(rate) && rate > 0)) {
    rate = nominal_rate(word_at(record.bytes + kRateFactor, big_endian),
                        word_at(record.bytes + kRateMultiplier, big_endian));
  }
  return rate < kLowestRate ? 0 : rate;
}

std::int64_t start_of(const RecordBytes &record, bool big_endian, std::int32_t microseconds) {
  const double epoch = binary_time_at(record.bytes + kStartTime, big_endian);
  std::int64_t ticks = std::llround(epoch * kTicksPerSecond);
  const bool applied = (record.bytes[kActivityFlags] & kCorrectionApplied) != 0;
  if (!applied) ticks += integer32_at(record.bytes + kTimeCorrection, big_endian);
  return ticks * kMicrosPerTick + microseconds;
}

// A binary year goes further than nanoseconds in 64 bits.
std::int64_t nanoseconds(std::int64_t microseconds) {
  constexpr std::int64_t kMost = INT64_MAX / kNanosPerMicro;
  if (microseconds > kMost) return INT64_MAX;
  return microseconds < -kMost ? INT64_MIN : microseconds * kNanosPerMicro;
}

void find_data(const RecordBytes &record, bool big_endian, SDBlkSamples *samples) {
  const std::int64_t offset = load_u16(record.bytes + kDataOffset, big_endian);
  if (offset == 0 || offset >= record.size) return;
  samples->data = record.bytes + offset;
  samples->bytes = record.size - offset;
}

void read_samples(const RecordBytes &record, Chain *chain, SDBlkSamples *samples) {
  const bool big_endian = byte_order_of(record).big_endian;
  *samples = {};
  copy_code(record, kStation, samples->station);
  copy_code(record, kLocation, samples->location);
  copy_code(record, kChannel, samples->channel);
  copy_code(record, kNetwork, samples->network);
  samples->encoding = -1;
  samples->big_endian = big_endian ? 1 : 0;
  samples->timing_quality = -1;
  samples->samples = load_u16(record.bytes + kSampleCount, big_endian);
  find_data(record, big_endian, samples);
  ChainReader reader(record, big_endian, chain, samples);
  reader.read();
  samples->rate = rate_of(record, big_endian, reader.rate());
  samples->has_start = is_whole_binary_time(record.bytes + kStartTime, big_endian) ? 1 : 0;
  if (samples->has_start != 0) {
    samples->start_us = start_of(record, big_endian, reader.microseconds());
    samples->start = nanoseconds(samples->start_us);
  }
}

}  // namespace

int sdblk_samples(const SDBlk *record, SDBlkSamples *samples) {
  const RecordBytes bytes = bytes_of(*record);
  if (record->data_ptr == nullptr || record->blockette_type != SDBLK_DATA_RECORD ||
      bytes.size < kDataHeaderBytes) {
    elog_log(0, "sdblk_samples: B%4.4d at %c:%6.6d is no data record\n", record->blockette_type,
             record->record_type, record->logical_sequence);
    return -1;
  }
  if (record->vol != nullptr && record->vol->whole != nullptr) {
    read_samples(bytes, &record->vol->whole->chain, samples);
  } else {
    Chain chain;
    read_samples(bytes, &chain, samples);
  }
  return 0;
}
