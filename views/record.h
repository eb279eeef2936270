// What views need of a data record.
#ifndef VIEWS_RECORD_H_
#define VIEWS_RECORD_H_

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "seed/whole.h"

namespace tarvik {

// Whose data a record holds: codes without white space around them, padded with 0 bytes, so that
// they compare in byte order.
struct ChannelId {
  std::array<char, 2> network = {};
  std::array<char, 5> station = {};
  std::array<char, 2> location = {};
  std::array<char, 3> channel = {};
  char quality = '\0';  // the record type

  friend bool operator==(const ChannelId &, const ChannelId &) = default;
  // By codes and quality in the order of their bytes, which are not signed.
  friend bool operator<(const ChannelId &a, const ChannelId &b) {
    return std::memcmp(&a, &b, sizeof a) < 0;
  }
};

// A code without its padding.
template <std::size_t Size>
std::string_view code_text(const std::array<char, Size> &code) {
  std::size_t size = 0;
  while (size < Size && code[size] != '\0') ++size;
  return {code.data(), size};
}

inline constexpr std::int32_t kNoQuality = -1;

static_assert(sizeof(ChannelId) == 13, "the codes stand one after the other");

struct DataRecord {
  ChannelId id;
  bool has_start;      // false: its start time has no value
  std::int64_t start;  // microseconds since 1970, with all corrections
  std::int64_t samples;
  double rate;                  // samples a second; 0 without one
  std::int32_t timing_quality;  // the lowest of its blockettes 1001, or kNoQuality
};

// Reads a data record, which need not be decoded.
DataRecord data_record(const SDBlk &record);

}  // namespace tarvik

#endif  // VIEWS_RECORD_H_
