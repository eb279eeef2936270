// The byte order of a data record, and the chain of its data blockettes.
#ifndef SEED_WHOLE_CHAIN_H_
#define SEED_WHOLE_CHAIN_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "seed/format.h"
#include "support/load.h"

namespace tarvik {

// The bytes of a record, at least kDataHeaderBytes.
struct RecordBytes {
  const char *bytes;
  std::int64_t size;
};

struct ByteOrder {
  bool big_endian;
  bool deduced;  // false: nothing in the record decides
};

// Deduced from the parts of the start time: the first that makes sense one way only.
ByteOrder byte_order_of(const RecordBytes &record);

struct Link {
  std::int32_t type;
  std::int32_t offset;  // of the blockette, from the record's start
};

// Follows a chain, one blockette after the other, and remembers where it has been.  One object
// serves many records, for it is cleared at the cost of what was visited.
class Chain {
 public:
  // Starts at the offset that the record's fixed section names.
  void start(const RecordBytes &record, bool big_endian);

  // The next blockette; false at the chain's end.
  bool next(Link *link);

  // After the end: whether the chain ended with an offset of 0, not with one that was refused.
  [[nodiscard]] bool ended_well() const { return following_ == 0; }
  // The offset that was refused.
  [[nodiscard]] std::int32_t refused() const { return following_; }

  // The offsets of the blockettes that were taken since start, in their order.
  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] std::int32_t taken(std::size_t at) const { return taken_[at]; }

  static constexpr std::size_t kMost = 1024;  // blockettes that are taken

 private:
  [[nodiscard]] bool accepts(std::int32_t offset) const;
  void visit(std::int32_t offset);

  RecordBytes record_ = {};
  bool big_endian_ = true;
  std::int32_t following_ = 0;
  std::size_t count_ = 0;
  std::array<std::uint16_t, kMost> taken_ = {};
  std::array<std::uint64_t, 65536 / 64> visited_ = {};  // one bit an offset
};

inline bool Chain::accepts(std::int32_t offset) const {
  if (offset == 0 || count_ == kMost || record_.size - offset < kLinkBytes) return false;
  const auto at = static_cast<std::size_t>(offset);
  return (visited_[at / 64] >> at % 64 & 1) == 0;
}

inline void Chain::visit(std::int32_t offset) {
  const auto at = static_cast<std::size_t>(offset);
  visited_[at / 64] |= std::uint64_t{1} << at % 64;
  taken_[count_++] = static_cast<std::uint16_t>(offset);
}

inline bool Chain::next(Link *link) {
  if (!accepts(following_)) return false;
  visit(following_);
  const char *blockette = record_.bytes + following_;
  *link = {load_u16(blockette, big_endian_), following_};
  following_ = load_u16(blockette + 2, big_endian_);
  return true;
}

}  // namespace tarvik

#endif  // SEED_WHOLE_CHAIN_H_
