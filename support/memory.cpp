#include "support/memory.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "support/per_thread.h"

namespace tarvik {

namespace {

std::atomic<MemoryGate> gate_in_force = nullptr;

bool refused(std::size_t bytes) {
  const MemoryGate gate = gate_in_force.load(std::memory_order_relaxed);
  if (gate == nullptr || gate(bytes)) return false;
  errno = ENOMEM;
  return true;
}

TARVIK_THREAD_LOCAL std::int64_t refused_ever = 0;

void *counted(void *memory) {
  if (memory == nullptr) ++refused_ever;
  return memory;
}

}  // namespace

std::int64_t memory_refused_ever() noexcept { return refused_ever; }

void *memory_get(std::size_t bytes) noexcept {
  return counted(refused(bytes) ? nullptr : std::malloc(bytes == 0 ? 1 : bytes));
}

void *memory_get_zeroed(std::size_t bytes) noexcept {
  return counted(refused(bytes) ? nullptr : std::calloc(1, bytes == 0 ? 1 : bytes));
}

void *memory_resize(void *memory, std::size_t bytes) noexcept {
  return counted(refused(bytes) ? nullptr : std::realloc(memory, bytes == 0 ? 1 : bytes));
}

void memory_free(void *memory) noexcept { std::free(memory); }

char *memory_copy_text(const char *text, std::size_t size) noexcept {
  char *copy = static_cast<char *>(memory_get(size + 1));
  if (copy == nullptr) return nullptr;
  if (size > 0) std::memcpy(copy, text, size);
  copy[size] = '\0';
  return copy;
}

void memory_set_gate(MemoryGate gate) noexcept {
  gate_in_force.store(gate, std::memory_order_relaxed);
}

}  // namespace tarvik
