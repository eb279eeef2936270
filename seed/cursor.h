// A reading position and the bytes from there on: the one place of strict reading that moves one.
// Whatever is asked for, nothing outside of these bytes is handed out.
#ifndef SEED_CURSOR_H_
#define SEED_CURSOR_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "seed/sdblk.h"

namespace tarvik {

class Cursor {
 public:
  // A size below 0 stands for no bytes, here and wherever bytes are asked for.
  constexpr Cursor(const char *bytes, std::int64_t size) : bytes_(bytes), size_(size) {}

  [[nodiscard]] const char *bytes() const { return bytes_; }
  [[nodiscard]] std::int64_t size() const { return size_; }
  [[nodiscard]] bool has(std::int64_t size) const { return size <= size_; }
  [[nodiscard]] std::string_view rest() const { return first(size_); }

  // The next bytes, at most as many as are left.
  [[nodiscard]] std::string_view first(std::int64_t size) const {
    const std::int64_t there = std::max<std::int64_t>(std::min(size, size_), 0);
    return {bytes_, static_cast<std::size_t>(there)};
  }
  // The same, and moves past them.
  std::string_view take(std::int64_t size) {
    const std::string_view taken = first(size);
    bytes_ += taken.size();
    size_ -= static_cast<std::int64_t>(taken.size());
    return taken;
  }
  void skip(std::int64_t size) { take(size); }

  // The next bytes, with 0 for those that are not there.
  template <std::size_t Size>
  [[nodiscard]] std::array<char, Size> padded() const {
    std::array<char, Size> copy = {};
    if (has(Size)) [[likely]] {
      std::memcpy(copy.data(), bytes_, Size);  // of a size that the compiler knows: no call
    } else {
      rest().copy(copy.data(), Size);
    }
    return copy;
  }

  // A cursor that is moved on from this one.
  [[nodiscard]] Cursor from(std::int64_t offset) const {
    Cursor moved = *this;
    moved.skip(offset);
    return moved;
  }

 private:
  const char *bytes_;
  std::int64_t size_;
};

// The bytes of a volume from an offset on, and from one of them on.
inline Cursor image_at(const SDBlkVol &vol, std::int64_t offset) {
  return {vol.image + offset, vol.image_size - offset};
}
inline Cursor image_from(const SDBlkVol &vol, const char *byte) {
  return image_at(vol, byte - vol.image);
}

// Moves a volume's reading position, never past the end of the image.
inline void move_to(SDBlkVol *vol, std::int64_t offset) {
  vol->offset = std::min(offset, vol->image_size);
  vol->cursor = vol->image + vol->offset;
}

}  // namespace tarvik

#endif  // SEED_CURSOR_H_
