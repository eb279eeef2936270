#include "support/arena.h"

#include <algorithm>

#include "support/memory.h"

namespace tarvik {

bool Arena::one_piece_per_chunk = false;

Arena::~Arena() {
  while (first_ != nullptr) {
    Chunk *next = first_->next;
    memory_free(first_);
    first_ = next;
  }
}

std::size_t Arena::used() const noexcept {
  std::size_t bytes = 0;
  for (const Chunk *chunk = first_; chunk != current_; chunk = chunk->next) bytes += chunk->size;
  if (current_ != nullptr) bytes += current_->size - static_cast<std::size_t>(end_ - free_);
  return bytes;
}

bool Arena::enter(Chunk *chunk, std::size_t bytes) noexcept {
  if (chunk == nullptr || chunk->size < bytes) return false;
  current_ = chunk;
  free_ = reinterpret_cast<char *>(chunk + 1);
  end_ = free_ + chunk->size;
  return true;
}

void *Arena::take_from_new_chunk(std::size_t bytes) noexcept {
  // After a reset the chunks after the current one are empty and serve again.
  Chunk *following = current_ == nullptr ? first_ : current_->next;
  if (!enter(following, bytes)) {
    const std::size_t size = one_piece_per_chunk ? bytes : std::max(bytes, next_chunk_bytes_);
    if (size > SIZE_MAX - sizeof(Chunk)) return nullptr;
    auto *chunk = static_cast<Chunk *>(memory_get(sizeof(Chunk) + size));
    if (chunk == nullptr) return nullptr;
    chunk->size = size;
    chunk->next = following;
    (current_ == nullptr ? first_ : current_->next) = chunk;
    next_chunk_bytes_ = std::min<std::size_t>(size * 2, std::size_t{1} << 20);
    enter(chunk, bytes);
  }
  char *piece = free_;
  free_ += bytes;
  return piece;
}

}  // namespace tarvik
