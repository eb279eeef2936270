#include "views/record.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "views/places.h"

namespace tarvik {
namespace {

constexpr std::int32_t kRateType = 100;
constexpr std::int32_t kTimingType = 1001;
constexpr double kLowestRate = 0.000001;
constexpr std::int64_t kMicrosPerTick = 100;  // a ten-thousandth of a second
constexpr double kTicksPerSecond = 10000.0;
constexpr std::int32_t kCorrectionApplied = 2;  // bit 1 of the activity flags

// Where the fields stand in their definitions.
struct Places {
  Place station{SDBLK_DATA_RECORD, "sta"};
  Place location{SDBLK_DATA_RECORD, "loc"};
  Place channel{SDBLK_DATA_RECORD, "chan"};
  Place network{SDBLK_DATA_RECORD, "net"};
  Place time{SDBLK_DATA_RECORD, "time"};
  Place samples{SDBLK_DATA_RECORD, "nsamp"};
  Place factor{SDBLK_DATA_RECORD, "srate_factor"};
  Place multiplier{SDBLK_DATA_RECORD, "srate_multiplier"};
  Place activity{SDBLK_DATA_RECORD, "activity_flags"};
  Place correction{SDBLK_DATA_RECORD, "tcor"};
  Place rate{kRateType, "samprate"};
  Place quality{kTimingType, "qual"};
  Place microseconds{kTimingType, "usec"};
};

const Places &places() {
  static const Places all;
  return all;
}

template <std::size_t Size>
void set_code(const SDBlk &record, const Place &place, std::array<char, Size> *code) {
  const char *text = place.text(record);
  std::memcpy(code->data(), text, std::min(std::strlen(text), Size));
}

double nominal_rate(double factor, double multiplier) {
  if (factor == 0 || multiplier == 0) return 0;
  if (factor > 0) return multiplier > 0 ? factor * multiplier : -factor / multiplier;
  return multiplier > 0 ? -multiplier / factor : 1 / (factor * multiplier);
}

// What the chain says.
struct Chained {
  bool has_rate = false;  // a blockette 100 was met
  double rate = 0;
  bool has_timing = false;  // a blockette 1001 was met
  std::int32_t microseconds = 0;
  std::int32_t quality = kNoQuality;
};

void read_timing(const SDBlk &blockette, Chained *chained) {
  std::int32_t quality = 0;
  if (places().quality.integer(blockette, &quality) &&
      (chained->quality == kNoQuality || quality < chained->quality)) {
    chained->quality = quality;
  }
  if (chained->has_timing) return;
  chained->has_timing = true;
  std::int32_t microseconds = 0;
  // The byte has a sign.
  if (places().microseconds.integer(blockette, &microseconds)) {
    chained->microseconds = microseconds < 128 ? microseconds : microseconds - 256;
  }
}

Chained read_chain(const SDBlk &record) {
  Chained chained;
  for (const SDBlk *blockette = record.next; blockette != nullptr; blockette = blockette->next) {
    if (blockette->blockette_type == kTimingType) {
      read_timing(*blockette, &chained);
    } else if (blockette->blockette_type == kRateType && !chained.has_rate) {
      chained.has_rate = true;
      if (!places().rate.real(*blockette, &chained.rate)) chained.rate = 0;
    }
  }
  return chained;
}

double rate_of(const SDBlk &record, const Chained &chained) {
  double rate = chained.rate;
  if (!(std::isfinite(rate) && rate > 0)) {
    std::int32_t factor = 0;
    std::int32_t multiplier = 0;
    places().factor.integer(record, &factor);
    places().multiplier.integer(record, &multiplier);
    rate = nominal_rate(factor, multiplier);
  }
  return rate < kLowestRate ? 0 : rate;
}

std::int64_t corrections(const SDBlk &record, const Chained &chained) {
  std::int32_t activity = 0;
  std::int32_t ticks = 0;
  places().activity.integer(record, &activity);
  if ((activity & kCorrectionApplied) == 0) places().correction.integer(record, &ticks);
  return chained.microseconds + ticks * kMicrosPerTick;
}

}  // namespace

DataRecord data_record(const SDBlk &record) {
  const Places &at = places();
  DataRecord data = {};
  set_code(record, at.network, &data.id.network);
  set_code(record, at.station, &data.id.station);
  set_code(record, at.location, &data.id.location);
  set_code(record, at.channel, &data.id.channel);
  data.id.quality = record.record_type;
  const Chained chained = read_chain(record);
  data.rate = rate_of(record, chained);
  data.timing_quality = chained.quality;
  std::int32_t samples = 0;
  at.samples.integer(record, &samples);
  data.samples = samples;
  double epoch = 0;
  data.has_start = at.time.real(record, &epoch);
  if (data.has_start) {
    data.start =
        std::llround(epoch * kTicksPerSecond) * kMicrosPerTick + corrections(record, chained);
  }
  return data;
}

}  // namespace tarvik
