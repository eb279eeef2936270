#include "views/record.h"

#include <cstring>

#include "seed/whole.h"

namespace tarvik {
namespace {

// The code's text ends in a 0 byte; it fits the array without that.
template <std::size_t Size>
void set_code(const char (&text)[Size], std::array<char, Size - 1> *code) {
  std::memcpy(code->data(), text, Size - 1);
}

}  // namespace

DataRecord data_record(const SDBlk &record) {
  SDBlkSamples samples;
  sdblk_samples(&record, &samples);
  DataRecord data = {};
  set_code(samples.network, &data.id.network);
  set_code(samples.station, &data.id.station);
  set_code(samples.location, &data.id.location);
  set_code(samples.channel, &data.id.channel);
  data.id.quality = record.record_type;
  data.has_start = samples.has_start != 0;
  data.start = samples.start_us;
  data.samples = samples.samples;
  data.rate = samples.rate;
  data.timing_quality = samples.timing_quality;
  return data;
}

}  // namespace tarvik
