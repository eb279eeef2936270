// What was written of bytes, for when the same bytes come again: the channels of a volume repeat
// the responses of their instruments, blockette by blockette.
#ifndef VIEWS_REPEATS_H_
#define VIEWS_REPEATS_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace tarvik {

// Keeps texts of bytes, up to kRoom of both together; where more come, all make room.  The kind
// tells apart what else a text follows from.  A text may be lost, so that no bytes can make the
// search for one long.  For one thread.
class Repeats {
 public:
  static constexpr std::size_t kRoom = std::size_t{512} << 10;

  // Keeps up to so many texts, a power of two.
  explicit Repeats(std::size_t most) : most_(most) {}

  // The text kept for these bytes, or nothing; it lives until more is kept.
  [[nodiscard]] std::string_view find(std::uint32_t kind, std::string_view bytes) const;
  // Keeps a text of one byte at least, unless there is one for these bytes.  Throws std::bad_alloc.
  void keep(std::uint32_t kind, std::string_view bytes, std::string_view text);
  // Forgets all, at no cost.
  void clear();

 private:
  struct Kept {
    std::uint32_t kind;
    std::uint32_t hash;
    std::uint32_t at;  // in the room: the bytes, the text after them
    std::uint32_t bytes;
    std::uint32_t text;
    std::uint16_t generation;  // in which it was kept
  };
  [[nodiscard]] Kept *slot_of(std::uint32_t kind, std::string_view bytes, std::uint32_t hash) const;
  [[nodiscard]] std::size_t slots() const { return 2 * most_; }

  std::size_t most_;
  // Both are made when the first text is kept.  Half of the slots is used at most.
  std::unique_ptr<Kept[]> slots_;
  std::unique_ptr<char[]> room_;
  std::uint16_t generation_ = 1;  // what was kept in another one is forgotten
  std::size_t count_ = 0;
  std::size_t used_ = 0;  // of the room
};

}  // namespace tarvik

#endif  // VIEWS_REPEATS_H_
