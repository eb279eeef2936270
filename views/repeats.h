// What was written of bytes, for when the same bytes come again: the channels of a volume repeat
// the responses of their instruments, blockette by blockette.
#ifndef VIEWS_REPEATS_H_
#define VIEWS_REPEATS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace tarvik {

// Keeps texts of bytes, up to kRoom of both together; where more come, all make room.  The kind
// tells apart what else a text follows from.  For one thread.
class Repeats {
 public:
  static constexpr std::size_t kRoom = std::size_t{512} << 10;

  // The text kept for these bytes, or nothing; it lives until more is kept.
  [[nodiscard]] std::string_view find(std::uint32_t kind, std::string_view bytes) const;
  // Keeps a text of one byte at least, unless there is one for these bytes.  Throws std::bad_alloc.
  void keep(std::uint32_t kind, std::string_view bytes, std::string_view text);
  // Forgets all.
  void clear();

 private:
  struct Kept {
    std::uint32_t kind;
    std::uint32_t hash;
    std::uint32_t at;  // in the room: the bytes, the text after them
    std::uint32_t bytes;
    std::uint32_t text;  // 0 where nothing is kept
  };
  // A table of which half is used at most.
  static constexpr std::size_t kSlots = 2048;
  static constexpr std::size_t kMost = kSlots / 2;
  struct Store {
    std::array<Kept, kSlots> slots;
    std::array<char, kRoom> room;
  };

  [[nodiscard]] std::size_t slot_of(std::uint32_t kind, std::string_view bytes,
                                    std::uint32_t hash) const;
  void make_store();

  std::unique_ptr<Store> store_;  // made when the first text is kept
  std::size_t count_ = 0;
  std::size_t used_ = 0;  // of the room
};

}  // namespace tarvik

#endif  // VIEWS_REPEATS_H_
