#include "views/epoch_index.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace tarvik {

EpochKey::EpochKey(std::string_view network, std::string_view station, std::string_view location,
                   std::string_view channel, const SDBlkEntry *start) {
  set(0, 2, network);
  set(2, 5, station);
  set(7, 2, location);
  set(9, 3, channel);
  start_ = start == nullptr ? std::numeric_limits<Ticks>::min() : ticks_of(start->value.d);
}

// Codes have a fixed width in volumes, so none is longer.
void EpochKey::set(std::size_t begin, std::size_t most, std::string_view code) {
  code.copy(codes_.data() + begin, most);
}

std::string_view EpochKey::part(std::size_t begin, std::size_t most) const {
  const std::string_view text(codes_.data() + begin, most);
  return text.substr(0, text.find('\0'));
}

std::int32_t EpochIndex::add(const IndexedEpoch &epoch) {
  const std::int32_t position = count();
  epochs_.push_back(epoch);
  epochs_.back().same_as = position;
  return position;
}

std::vector<std::int32_t> EpochIndex::by_key() const {
  std::vector<std::int32_t> positions(epochs_.size());
  std::iota(positions.begin(), positions.end(), 0);
  std::sort(positions.begin(), positions.end(), [this](std::int32_t a, std::int32_t b) {
    const EpochKey &first = (*this)[a].key;
    const EpochKey &second = (*this)[b].key;
    return first == second ? a < b : first < second;
  });
  return positions;
}

}  // namespace tarvik
