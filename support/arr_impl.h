// The inside of an associative array, for the library's own C++ code.
//
// A few keys are a flat run of pairs: a lookup compares addresses first, which always succeeds for
// keys that are constants of the catalogue, then text.  From some two dozen keys on a hash index
// stands on top.  All that an array needs lies in a bump storage, its pool, which it makes at the
// first need; values that the library makes for the array lie there too, and so do nested arrays,
// which share the pool of the array at their root.
#ifndef SUPPORT_ARR_IMPL_H_
#define SUPPORT_ARR_IMPL_H_

#include <cstddef>
#include <cstdint>

#include "support/arena.h"
#include "support/arr.h"

namespace tarvik {

struct ArrPair {
  const char *key;
  void *value;
};

}  // namespace tarvik

struct Arr {
  tarvik::ArrPair *pairs;
  std::uint32_t count;
  std::uint32_t capacity;
  std::uint32_t *index;      // hash slot -> position + 1; null for a few keys
  std::uint32_t index_size;  // slots of index, a power of two
  bool foreign;              // at the root: some array of the tree holds values outside the pool
  tarvik::Arena *pool;       // bump storage; null until needed
  Arr *root;                 // owner of the pool; the array itself unless it is nested
};

namespace tarvik {

// A new array whose pool starts with a chunk of first_chunk_bytes, released with freearr; or
// nullptr.
Arr *arr_new_pooled(std::size_t first_chunk_bytes) noexcept;

// A new array in the pool of parent, with room for capacity keys and, after arr->pairs + capacity,
// for value_bytes of values; or nullptr.
Arr *arr_new_nested(Arr *parent, std::uint32_t capacity, std::size_t value_bytes = 0) noexcept;

// The array's pool, made now if it has none; or nullptr.
Arena *arr_pool(Arr *arr) noexcept;

// Makes room for capacity keys.  False when memory runs out.
[[nodiscard]] bool arr_reserve(Arr *arr, std::uint32_t capacity) noexcept;

// Empties an array that is not nested and keeps its memory.  Values that are not in the pool go
// through free_value.
void arr_clear(Arr *arr, void (*free_value)(void *)) noexcept;

// setarr that reports when memory runs out (false; nothing has changed).
[[nodiscard]] bool arr_set(Arr *arr, const char *key, void *value, void **old_value) noexcept;

// Sets a key that is a constant (it is not copied) to a value in the array's pool, replacing what
// is there.  False when memory runs out.
[[nodiscard]] bool arr_set_constant(Arr *arr, const char *key, void *value) noexcept;

// The same for a key that is not in the array yet, with room reserved, as long as the array is
// small.
inline void arr_append_constant(Arr *arr, const char *key, void *value) noexcept {
  arr->pairs[arr->count++] = {key, value};
}

// From this many keys on an array has an index; below, a scan over the pairs is faster.
inline constexpr std::uint32_t kArrIndexFrom = 32;

// getarr for a key that most likely stands at position.
inline void *arr_get_at(const Arr *arr, std::uint32_t position, const char *key) noexcept {
  if (arr != nullptr && position < arr->count && arr->pairs[position].key == key) {
    return arr->pairs[position].value;
  }
  return getarr(arr, key);
}

}  // namespace tarvik

#endif  // SUPPORT_ARR_IMPL_H_
