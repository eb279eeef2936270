#include "views/mapping_guard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace tarvik {

namespace {

// Guards the list.  The handler takes it too: a thread that holds it touches no mapping, and so is
// never the one that faults.
std::atomic_flag list_taken;
GuardedMapping *first = nullptr;

std::uintptr_t page_bytes = 0;
struct sigaction handler_before = {};

class ListLock {
 public:
  ListLock() {
    while (list_taken.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~ListLock() { list_taken.clear(std::memory_order_release); }
  ListLock(const ListLock &) = delete;
  ListLock &operator=(const ListLock &) = delete;
};

// Puts zeros in the place of a mapping from the page of an address on.
bool replace_from(std::uintptr_t address, GuardedMapping *mapping) {
  const std::uintptr_t page = address / page_bytes * page_bytes;
  void *place = reinterpret_cast<void *>(page);  // NOLINT(performance-no-int-to-ptr): mmap's type
  if (mmap(place, mapping->end - page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) ==
      MAP_FAILED) {
    return false;
  }
  mapping->hit.store(true, std::memory_order_relaxed);
  return true;
}

bool is_outlived(const siginfo_t &info) {
  if (info.si_code <= 0) return false;  // sent by a process, not by a fault
  const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
  const ListLock lock;
  for (GuardedMapping *mapping = first; mapping != nullptr; mapping = mapping->next) {
    if (address >= mapping->begin && address < mapping->end) return replace_from(address, mapping);
  }
  return false;
}

// What would have happened without a guard.
void pass_on(int signal, siginfo_t *info, void *context) {
  if ((handler_before.sa_flags & SA_SIGINFO) != 0) {
    handler_before.sa_sigaction(signal, info, context);
  } else if (handler_before.sa_handler == SIG_DFL) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  } else if (handler_before.sa_handler != SIG_IGN) {
    handler_before.sa_handler(signal);
  }
}

void on_bus_error(int signal, siginfo_t *info, void *context) {
  const int saved_errno = errno;
  if (!is_outlived(*info)) pass_on(signal, info, context);
  errno = saved_errno;
}

bool install_handler() {
  page_bytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  sigaction(SIGBUS, nullptr, &handler_before);
  struct sigaction action = {};
  action.sa_sigaction = on_bus_error;
  action.sa_flags = SA_SIGINFO;
  return sigaction(SIGBUS, &action, nullptr) == 0;
}

}  // namespace

void MappingGuard::guard(const char *bytes, std::int64_t size) {
  [[maybe_unused]] static const bool installed = install_handler();
  release();
  mapping_.begin = reinterpret_cast<std::uintptr_t>(bytes);
  const std::uintptr_t pages = (static_cast<std::uintptr_t>(size) + page_bytes - 1) / page_bytes;
  mapping_.end = mapping_.begin + pages * page_bytes;
  mapping_.hit.store(false, std::memory_order_relaxed);
  const ListLock lock;
  mapping_.before = nullptr;
  mapping_.next = first;
  if (first != nullptr) first->before = &mapping_;
  first = &mapping_;
  active_ = true;
}

void MappingGuard::release() {
  if (!active_) return;
  const ListLock lock;
  (mapping_.before == nullptr ? first : mapping_.before->next) = mapping_.next;
  if (mapping_.next != nullptr) mapping_.next->before = mapping_.before;
  active_ = false;
}

}  // namespace tarvik
