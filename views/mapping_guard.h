// Outliving a mapped file that becomes shorter while it is read.
#ifndef VIEWS_MAPPING_GUARD_H_
#define VIEWS_MAPPING_GUARD_H_

#include <atomic>
#include <cstdint>

namespace tarvik {

// A mapping that is guarded; they form a list.
struct GuardedMapping {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;         // that of the last page
  std::atomic<bool> hit = false;  // whether pages were replaced
  GuardedMapping *next = nullptr;
  GuardedMapping *before = nullptr;
};

// While one guards a mapping, touching a page of it that its file no longer has does not end the
// process: from that page on the mapping is replaced by zeros, and the guard knows that it was.
//
// The first guard installs a handler of SIGBUS for the whole process.  Faults at other addresses go
// to the handler that was there before.  Any number of guards may be at work; each one serves one
// thread at a time.
class MappingGuard {
 public:
  MappingGuard() = default;
  ~MappingGuard() { release(); }
  MappingGuard(const MappingGuard &) = delete;
  MappingGuard &operator=(const MappingGuard &) = delete;

  // Begins to guard the size bytes, at least 1, of a mapping, and ends to guard another one.
  void guard(const char *bytes, std::int64_t size);
  // Ends it.  Must be called before the mapping goes.
  void release();
  // Whether bytes of the mapping that was guarded last were replaced.
  [[nodiscard]] bool was_hit() const { return mapping_.hit.load(std::memory_order_relaxed); }

 private:
  GuardedMapping mapping_;
  bool active_ = false;
};

}  // namespace tarvik

#endif  // VIEWS_MAPPING_GUARD_H_
