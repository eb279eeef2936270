// The station and channel epochs of volumes, by codes and start: where they stand, not what they
// hold.
#ifndef VIEWS_EPOCH_INDEX_H_
#define VIEWS_EPOCH_INDEX_H_

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string_view>
#include <vector>

#include "seed/whole.h"
#include "views/time_text.h"

namespace tarvik {

// Codes as they stand in the volume, with NULs after them; those of a station have no location and
// no channel.
class EpochKey {
 public:
  EpochKey() = default;
  EpochKey(std::string_view network, std::string_view station, std::string_view location,
           std::string_view channel, const SDBlkEntry *start);

  [[nodiscard]] std::string_view network() const { return part(0, 2); }
  [[nodiscard]] std::string_view station() const { return part(2, 5); }
  [[nodiscard]] std::string_view location() const { return part(7, 2); }
  [[nodiscard]] std::string_view channel() const { return part(9, 3); }

  auto operator<=>(const EpochKey &) const = default;

 private:
  [[nodiscard]] std::string_view part(std::size_t begin, std::size_t most) const;
  void set(std::size_t begin, std::size_t most, std::string_view code);

  std::array<char, 12> codes_ = {};
  Ticks start_ = 0;
};

inline constexpr std::int32_t kLostEpoch = -1;

struct IndexedEpoch {
  EpochKey key;
  SDBlkPlace place;         // of its blockette 50 or 52
  std::int32_t volume = 0;  // by number
  // The last block that belongs to it, counted from its first; 0 for none but that.
  std::int32_t last = 0;
  std::int32_t station = 0;  // of a channel: its station's position
  // The position of the first that it equals: its own, at first; kLostEpoch for one that equals
  // none, because it cannot be written.
  std::int32_t same_as = 0;
  std::uint64_t digest = 0;  // of its elements, where another one has the same key
};
static_assert(sizeof(IndexedEpoch) <= 92);

// Epochs by position, in the order in which they were met.
class EpochIndex {
 public:
  // The position of what is added; it stays the last one until the next.
  std::int32_t add(const IndexedEpoch &epoch);
  // Marks one that cannot be written.
  void lose(std::int32_t position) { (*this)[position].same_as = kLostEpoch; }
  [[nodiscard]] std::int32_t count() const { return static_cast<std::int32_t>(epochs_.size()); }
  IndexedEpoch &operator[](std::int32_t position) {
    return epochs_[static_cast<std::size_t>(position)];
  }
  const IndexedEpoch &operator[](std::int32_t position) const {
    return epochs_[static_cast<std::size_t>(position)];
  }
  // Takes back all from a position on.
  void cut(std::int32_t position) { epochs_.resize(static_cast<std::size_t>(position)); }

  // All positions, ordered by key and then by position.
  [[nodiscard]] std::vector<std::int32_t> by_key() const;

 private:
  // Grows without moving, so that it takes no more than it holds.
  std::deque<IndexedEpoch> epochs_;
};

}  // namespace tarvik

#endif  // VIEWS_EPOCH_INDEX_H_
