#include "views/repeats.h"

#include <algorithm>
#include <cstring>

#include "support/digits.h"
#include "support/load.h"

namespace tarvik {
namespace {

// What takes more of the room than this would soon drive out all else.
constexpr std::size_t kLargest = Repeats::kRoom / 4;

constexpr std::size_t kWord = sizeof(std::uint64_t);

// Up to eight bytes as a word of two halves that may overlap.  Nothing after them is touched, as
// std::memcmp does on some machines: it may stand in a line of the cache that nobody else needs.
std::uint64_t word_of(const char *bytes, std::size_t size) {
  constexpr std::size_t kHalf = kWord / 2;
  if (size >= kHalf) {
    const std::uint64_t last = load_u32(bytes + size - kHalf, false);
    return load_u32(bytes, false) | last << 32;
  }
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < size; ++i) word = word << 8 | static_cast<unsigned char>(bytes[i]);
  return word;
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
  constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;
  const std::uint64_t product = (hash ^ word) * kSpread;
  return product ^ product >> 32;  // the high half depends on all bits
}

// Of few bytes all count, of many some three dozen words, evenly spread, and the last one: a
// comparison follows, and bytes that differ elsewhere only just stand in a slot beside.
[[gnu::always_inline]] inline std::uint32_t hash_of(std::uint32_t kind, std::string_view bytes) {
  const char *at = bytes.data();
  const std::size_t size = bytes.size();
  std::uint64_t hash = kind + size;
  if (size <= kWord) {
    hash = mix(hash, word_of(at, size));
  } else {
    constexpr std::size_t kSamples = 32;
    const std::size_t step = std::max(kWord, size / kSamples);
    const char *last = at + size - kWord;
    for (; at < last; at += step) hash = mix(hash, load_eight(at));
    hash = mix(hash, load_eight(last));
  }
  return static_cast<std::uint32_t>(hash);
}

[[gnu::always_inline]] inline bool are_same(const char *left, const char *right, std::size_t size) {
  if (size <= kWord) return word_of(left, size) == word_of(right, size);
  return std::memcmp(left, right, size) == 0;
}

}  // namespace

// The slot of these bytes or a free one where they may be kept; nullptr where others have taken all
// that are looked at.
inline Repeats::Kept *Repeats::slot_of(std::uint32_t kind, std::string_view bytes,
                                       std::uint32_t hash) const {
  constexpr std::size_t kLooks = 16;
  const std::size_t mask = slots() - 1;
  for (std::size_t i = 0; i < kLooks; ++i) {
    Kept &kept = slots_[(hash + i) & mask];
    if (kept.generation != generation_) return &kept;
    if (kept.hash == hash && kept.kind == kind && kept.bytes == bytes.size() &&
        are_same(&room_[kept.at], bytes.data(), bytes.size())) {
      return &kept;
    }
  }
  return nullptr;
}

std::string_view Repeats::find(std::uint32_t kind, std::string_view bytes) const {
  if (count_ == 0) return {};
  const Kept *kept = slot_of(kind, bytes, hash_of(kind, bytes));
  if (kept == nullptr || kept->generation != generation_) return {};
  return {&room_[kept->at] + kept->bytes, kept->text};
}

void Repeats::keep(std::uint32_t kind, std::string_view bytes, std::string_view text) {
  const std::size_t size = bytes.size() + text.size();
  if (size > kLargest) return;
  if (!room_) room_ = std::make_unique_for_overwrite<char[]>(kRoom);  // touched as it is used
  if (!slots_) slots_ = std::make_unique<Kept[]>(slots());
  if (count_ == most_ || size > kRoom - used_) clear();
  const std::uint32_t hash = hash_of(kind, bytes);
  Kept *kept = slot_of(kind, bytes, hash);
  if (kept == nullptr || kept->generation == generation_) return;
  *kept = {kind,
           hash,
           static_cast<std::uint32_t>(used_),
           static_cast<std::uint32_t>(bytes.size()),
           static_cast<std::uint32_t>(text.size()),
           generation_};
  char *out = room_.get() + used_;
  std::memcpy(out, bytes.data(), bytes.size());
  std::memcpy(out + bytes.size(), text.data(), text.size());
  used_ += size;
  ++count_;
}

// When the generations have all been used, they begin anew.
void Repeats::clear() {
  if (count_ == 0) return;
  if (++generation_ == 0) {
    std::fill_n(slots_.get(), slots(), Kept{});
    generation_ = 1;
  }
  count_ = 0;
  used_ = 0;
}

}  // namespace tarvik
