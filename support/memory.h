// The one source of memory: every allocation of the library goes through it, so that a test can
// make any of them fail.
#ifndef SUPPORT_MEMORY_H_
#define SUPPORT_MEMORY_H_

#include <cstddef>
#include <cstdint>

namespace tarvik {

// Memory from malloc, or nullptr.  Released with memory_free (free serves as well).
void *memory_get(std::size_t bytes) noexcept;
void *memory_get_zeroed(std::size_t bytes) noexcept;
void *memory_resize(void *memory, std::size_t bytes) noexcept;
void memory_free(void *memory) noexcept;
// A copy of size bytes with a 0 byte after them.
char *memory_copy_text(const char *text, std::size_t size) noexcept;

// How many allocations of the thread have failed since its start.
std::int64_t memory_refused_ever() noexcept;

// Asked before every allocation of a size; false makes it fail.  nullptr lets all pass.
using MemoryGate = bool (*)(std::size_t bytes);
void memory_set_gate(MemoryGate gate) noexcept;

}  // namespace tarvik

#endif  // SUPPORT_MEMORY_H_
