#include "views/segment_list.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <tuple>

namespace tarvik {
namespace {

constexpr double kMicrosPerSecond = 1e6;

// The time that samples take at a rate.
std::int64_t duration(std::int64_t samples, double rate) {
  return static_cast<std::int64_t>(
      std::floor(static_cast<double>(samples) * kMicrosPerSecond / rate + 0.5));
}

// Whether data that begin at a time, at a rate, continue a segment: at its rate within one part in
// 10,000, and within half a sample of the time that is due.
bool continues(const Segment &segment, std::int64_t start, double rate) {
  if (!(std::fabs(rate - segment.last_rate) * 10000 < segment.last_rate)) return false;
  const auto off = static_cast<double>(start - segment.next());
  return std::fabs(off) <= 0.5 * kMicrosPerSecond / segment.last_rate;
}

std::int32_t lower_quality(std::int32_t a, std::int32_t b) {
  if (a == kNoQuality || b == kNoQuality) return std::max(a, b);
  return std::min(a, b);
}

void append(Segment *segment, const Segment &next) {
  segment->last_start = next.last_start;
  segment->last_samples = next.last_samples;
  segment->last_rate = next.last_rate;
  segment->samples += next.samples;
  segment->records += next.records;
  segment->timing_quality = lower_quality(segment->timing_quality, next.timing_quality);
}

bool is_before(const Segment &a, const Segment &b) {
  return std::tie(a.start, a.offset) < std::tie(b.start, b.offset);
}

// Most files are in order already.
void join(std::vector<Segment> *segments) {
  if (!std::is_sorted(segments->begin(), segments->end(), is_before)) {
    std::sort(segments->begin(), segments->end(), is_before);
  }
  std::size_t kept = 0;
  for (std::size_t i = 1; i < segments->size(); ++i) {
    Segment &before = (*segments)[kept];
    const Segment &next = (*segments)[i];
    if (continues(before, next.start, next.rate)) {
      append(&before, next);
    } else {
      (*segments)[++kept] = next;
    }
  }
  segments->resize(kept + 1);
}

}  // namespace

std::int64_t Segment::end() const { return last_start + duration(last_samples - 1, last_rate); }

std::int64_t Segment::next() const { return last_start + duration(last_samples, last_rate); }

std::size_t SegmentList::Hash::operator()(const ChannelId &id) const {
  return std::hash<std::string_view>()({reinterpret_cast<const char *>(&id), sizeof id});
}

void SegmentList::clear() {
  channels_.clear();
  index_.clear();
  latest_ = 0;
}

SegmentList::Channel &SegmentList::channel_of(const ChannelId &id) {
  if (latest_ < channels_.size() && channels_[latest_].id == id) return channels_[latest_];
  const auto [found, is_new] = index_.try_emplace(id, channels_.size());
  if (is_new) channels_.push_back({id, {}});
  latest_ = found->second;
  return channels_[latest_];
}

void SegmentList::add(const DataRecord &record, std::int64_t offset) {
  if (!record.has_start || record.samples == 0 || record.rate == 0) return;
  const Segment next = {record.start,
                        record.start,
                        record.samples,
                        record.rate,
                        record.rate,
                        record.samples,
                        1,
                        offset,
                        record.timing_quality};
  std::vector<Segment> &segments = channel_of(record.id).segments;
  if (!segments.empty() && continues(segments.back(), next.start, next.rate)) {
    append(&segments.back(), next);
  } else {
    segments.push_back(next);
  }
}

void SegmentList::finish() {
  for (Channel &channel : channels_) join(&channel.segments);
  std::sort(channels_.begin(), channels_.end(),
            [](const Channel &a, const Channel &b) { return a.id < b.id; });
  index_.clear();
}

}  // namespace tarvik
