// Bump storage: many small pieces that are released together.
#ifndef SUPPORT_ARENA_H_
#define SUPPORT_ARENA_H_

#include <cstddef>
#include <cstdint>

namespace tarvik {

class Arena {
 public:
  // The first chunk has at least first_chunk_bytes; it is allocated when it is needed.
  explicit Arena(std::size_t first_chunk_bytes = 2048) noexcept
      : next_chunk_bytes_(first_chunk_bytes) {}
  ~Arena();
  Arena(const Arena &) = delete;
  Arena &operator=(const Arena &) = delete;

  // A piece of bytes, aligned for any plain record, or nullptr.  Lives until reset or the end.
  void *take(std::size_t bytes) noexcept {
    const std::size_t rounded = (bytes + kAlign - 1) & ~(kAlign - 1);
    if (rounded < bytes) return nullptr;
    if (rounded <= static_cast<std::size_t>(end_ - free_)) {
      char *piece = free_;
      free_ += rounded;
      return piece;
    }
    return take_from_new_chunk(rounded);
  }

  // A piece for count elements of T, not initialised, or nullptr.
  template <typename T>
  T *take_array(std::size_t count) noexcept {
    static_assert(alignof(T) <= kAlign);
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    return static_cast<T *>(take(count * sizeof(T)));
  }

  // Takes everything back and keeps the memory for the next use.
  void reset() noexcept {
    current_ = first_;
    free_ = first_ == nullptr ? nullptr : reinterpret_cast<char *>(first_ + 1);
    end_ = first_ == nullptr ? nullptr : free_ + first_->size;
  }

  // Bytes handed out since the last reset, at most: what a copy of the contents needs.
  [[nodiscard]] std::size_t used() const noexcept;

  // Tests set this to make every piece a chunk, and so an allocation, of its own.
  static bool one_piece_per_chunk;

 private:
  struct Chunk {
    Chunk *next;
    std::size_t size;  // bytes after this header
  };
  static constexpr std::size_t kAlign = 8;

  void *take_from_new_chunk(std::size_t bytes) noexcept;
  bool enter(Chunk *chunk, std::size_t bytes) noexcept;

  char *free_ = nullptr;      // first free byte of the current chunk
  char *end_ = nullptr;       // its end
  Chunk *first_ = nullptr;    // chunks in the order in which they are used
  Chunk *current_ = nullptr;  // the one that free_ points into
  std::size_t next_chunk_bytes_;
};

}  // namespace tarvik

#endif  // SUPPORT_ARENA_H_
