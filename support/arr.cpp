#include "support/arr.h"

#include <cstring>
#include <new>

#include "support/arr_impl.h"
#include "support/elog.h"
#include "support/memory.h"

namespace tarvik {

namespace {

constexpr std::size_t kFirstChunkBytes = 512;
constexpr std::uint32_t kFirstCapacity = 8;
constexpr std::uint32_t kNotFound = UINT32_MAX;

// FNV-1a.
std::uint32_t hash(const char *key) {
  std::uint32_t value = 2166136261U;
  for (; *key != '\0'; ++key) value = (value ^ static_cast<unsigned char>(*key)) * 16777619U;
  return value;
}

std::uint32_t find_by_scan(const Arr &arr, const char *key) {
  for (std::uint32_t i = 0; i < arr.count; ++i) {
    if (arr.pairs[i].key == key) return i;
  }
  for (std::uint32_t i = 0; i < arr.count; ++i) {
    if (arr.pairs[i].key[0] == key[0] && std::strcmp(arr.pairs[i].key, key) == 0) return i;
  }
  return kNotFound;
}

std::uint32_t find_by_index(const Arr &arr, const char *key) {
  const std::uint32_t mask = arr.index_size - 1;
  for (std::uint32_t slot = hash(key) & mask; arr.index[slot] != 0; slot = (slot + 1) & mask) {
    const std::uint32_t position = arr.index[slot] - 1;
    if (std::strcmp(arr.pairs[position].key, key) == 0) return position;
  }
  return kNotFound;
}

std::uint32_t find(const Arr &arr, const char *key) {
  return arr.index == nullptr ? find_by_scan(arr, key) : find_by_index(arr, key);
}

void index_position(Arr &arr, std::uint32_t position) {
  const std::uint32_t mask = arr.index_size - 1;
  std::uint32_t slot = hash(arr.pairs[position].key) & mask;
  while (arr.index[slot] != 0) slot = (slot + 1) & mask;
  arr.index[slot] = position + 1;
}

// A new index over all pairs, of four slots a key, so that it serves until the keys have doubled.
// Without memory for it the array is scanned.
void make_index(Arr &arr) {
  arr.index_size = 1;
  while (arr.index_size < arr.count * 4) arr.index_size *= 2;
  arr.index = arr.pool->take_array<std::uint32_t>(arr.index_size);
  if (arr.index == nullptr) return;
  std::memset(arr.index, 0, arr.index_size * sizeof(std::uint32_t));
  for (std::uint32_t i = 0; i < arr.count; ++i) index_position(arr, i);
}

void index_newest(Arr &arr) {
  if (arr.count < kArrIndexFrom) return;
  if (arr.index != nullptr && arr.count * 2 <= arr.index_size) {
    index_position(arr, arr.count - 1);
  } else {
    make_index(arr);
  }
}

bool append(Arr &arr, const char *key, void *value) {
  if (arr.count == arr.capacity &&
      !arr_reserve(&arr, arr.capacity < kFirstCapacity ? kFirstCapacity : arr.capacity * 2)) {
    return false;
  }
  arr_append_constant(&arr, key, value);
  index_newest(arr);
  return true;
}

const char *copy_key(Arr &arr, const char *key) {
  Arena *pool = arr_pool(&arr);
  if (pool == nullptr) return nullptr;
  const std::size_t size = std::strlen(key) + 1;
  void *copy = pool->take(size);
  return copy == nullptr ? nullptr : static_cast<const char *>(std::memcpy(copy, key, size));
}

void release_foreign_values(const Arr &arr, void (*free_value)(void *)) {
  if (!arr.root->foreign || free_value == nullptr) return;
  for (std::uint32_t i = 0; i < arr.count; ++i) {
    if (arr.pairs[i].value != nullptr) free_value(arr.pairs[i].value);
  }
}

}  // namespace

Arr *arr_new_pooled(std::size_t first_chunk_bytes) noexcept {
  void *piece = memory_get(sizeof(Arr));
  if (piece == nullptr) return nullptr;
  Arr *arr = new (piece) Arr{};
  arr->root = arr;
  if (first_chunk_bytes == 0) return arr;
  void *memory = memory_get(sizeof(Arena));
  if (memory == nullptr) {
    memory_free(arr);
    return nullptr;
  }
  arr->pool = new (memory) Arena(first_chunk_bytes);
  return arr;
}

Arr *arr_new_nested(Arr *parent, std::uint32_t capacity, std::size_t value_bytes) noexcept {
  Arena *pool = arr_pool(parent);
  if (pool == nullptr) return nullptr;
  char *piece =
      static_cast<char *>(pool->take(sizeof(Arr) + capacity * sizeof(ArrPair) + value_bytes));
  if (piece == nullptr) return nullptr;
  Arr *arr = new (piece) Arr{};
  arr->pairs = reinterpret_cast<ArrPair *>(piece + sizeof(Arr));
  arr->capacity = capacity;
  arr->pool = pool;
  arr->root = parent->root;
  return arr;
}

Arena *arr_pool(Arr *arr) noexcept {
  if (arr->pool != nullptr) return arr->pool;
  void *memory = memory_get(sizeof(Arena));
  if (memory != nullptr) arr->pool = new (memory) Arena(kFirstChunkBytes);
  return arr->pool;
}

bool arr_reserve(Arr *arr, std::uint32_t capacity) noexcept {
  if (capacity <= arr->capacity) return true;
  Arena *pool = arr_pool(arr);
  if (pool == nullptr) return false;
  auto *pairs = pool->take_array<ArrPair>(capacity);
  if (pairs == nullptr) return false;
  if (arr->count > 0) std::memcpy(pairs, arr->pairs, arr->count * sizeof(ArrPair));
  arr->pairs = pairs;
  arr->capacity = capacity;
  return true;
}

void arr_clear(Arr *arr, void (*free_value)(void *)) noexcept {
  if (arr->pairs == nullptr) return;  // as it was left the last time
  release_foreign_values(*arr, free_value);
  Arena *pool = arr->pool;
  if (pool != nullptr) pool->reset();
  *arr = Arr{};
  arr->pool = pool;
  arr->root = arr;
}

bool arr_set_constant(Arr *arr, const char *key, void *value) noexcept {
  const std::uint32_t position = find(*arr, key);
  if (position == kNotFound) return append(*arr, key, value);
  arr->pairs[position].value = value;
  return true;
}

bool arr_set(Arr *arr, const char *key, void *value, void **old_value) noexcept {
  *old_value = nullptr;
  const std::uint32_t position = find(*arr, key);
  if (position == kNotFound) {
    const char *copy = copy_key(*arr, key);
    if (copy == nullptr || !append(*arr, copy, value)) return false;
  } else {
    *old_value = arr->pairs[position].value;
    arr->pairs[position].value = value;
  }
  arr->root->foreign = true;
  return true;
}

}  // namespace tarvik

using namespace tarvik;

Arr *newarr(void) { return arr_new_pooled(0); }

void *setarr(Arr *arr, const char *key, void *value) {
  void *old_value = nullptr;
  if (!arr_set(arr, key, value, &old_value)) elog_die(0, "setarr: no memory for key '%s'.\n", key);
  return old_value;
}

void *getarr(const Arr *arr, const char *key) {
  if (arr == nullptr) return nullptr;
  const std::uint32_t position = find(*arr, key);
  return position == kNotFound ? nullptr : arr->pairs[position].value;
}

Tbl *keysarr(const Arr *arr) {
  Tbl *keys = newtbl();
  if (keys == nullptr || arr == nullptr) return keys;
  for (std::uint32_t i = 0; i < arr->count; ++i) {
    // A list holds plain pointers; its reader gets the keys as const text.
    if (settbl(keys, -1, const_cast<char *>(arr->pairs[i].key)) < 0) {  // NOLINT
      freetbl(keys, nullptr);
      return nullptr;
    }
  }
  return keys;
}

long countarr(const Arr *arr) { return arr == nullptr ? 0 : static_cast<long>(arr->count); }

void freearr(Arr *arr, void (*free_value)(void *)) {
  if (arr == nullptr) return;
  release_foreign_values(*arr, free_value);
  if (arr->root != arr) return;  // goes with the pool that it lies in
  if (arr->pool != nullptr) {
    arr->pool->~Arena();
    memory_free(arr->pool);
  }
  memory_free(arr);
}
