// Continuous stretches of data, put together from data records.
#ifndef VIEWS_SEGMENT_LIST_H_
#define VIEWS_SEGMENT_LIST_H_

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "views/record.h"

namespace tarvik {

// Times in microseconds since 1970.
struct Segment {
  std::int64_t start;
  std::int64_t last_start;    // of its last record
  std::int64_t last_samples;  // of its last record
  double last_rate;           // of its last record
  double rate;                // of its first record
  std::int64_t samples;
  std::int64_t records;
  std::int64_t offset;  // of its first record in the file
  std::int32_t timing_quality;

  // The time of its last sample.
  [[nodiscard]] std::int64_t end() const;
  // Where the next sample is due.
  [[nodiscard]] std::int64_t next() const;
};

// The segments of one file.  Holds a piece of state a channel and the segments, no records.
class SegmentList {
 public:
  struct Channel {
    ChannelId id;
    std::vector<Segment> segments;
  };

  // Forgets the file before; memory is kept.
  void clear();
  // Takes the next data record of the file.
  void add(const DataRecord &record, std::int64_t offset);
  // Sorts and joins; then channels are by codes and quality, and their segments by start.
  void finish();

  [[nodiscard]] const std::vector<Channel> &channels() const { return channels_; }

 private:
  struct Hash {
    std::size_t operator()(const ChannelId &id) const;
  };
  Channel &channel_of(const ChannelId &id);

  std::vector<Channel> channels_;
  std::unordered_map<ChannelId, std::size_t, Hash> index_;
  std::size_t latest_ = 0;  // the channel of the record before: mostly the next one's, too
};

}  // namespace tarvik

#endif  // VIEWS_SEGMENT_LIST_H_
