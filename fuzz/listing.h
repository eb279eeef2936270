// What the log has written, as far as one listing must be told from another.
#ifndef FUZZ_LISTING_H_
#define FUZZ_LISTING_H_

#include <cstdint>
#include <string_view>

#include "fuzz/harness.h"
#include "support/elog.h"

namespace fuzz {

class Listing {
 public:
  void add(std::string_view text) {
    for (const char c : text) hash_ = (hash_ ^ static_cast<unsigned char>(c)) * kPrime;
    bytes_ += text.size();
  }
  void add(const Listing &other) {
    hash_ = (hash_ ^ other.hash_) * kPrime;
    bytes_ += other.bytes_;
  }
  [[nodiscard]] std::uint64_t bytes() const { return bytes_; }
  bool operator==(const Listing &) const = default;

 private:
  static constexpr std::uint64_t kPrime = 0x100000001b3;

  std::uint64_t hash_ = 0xcbf29ce484222325;
  std::uint64_t bytes_ = 0;
};

// All that was written since the last call.
Listing take_listing();

// Calls read, which a fatal error of the library may end, and leaves the log empty.  False after
// such an error.
template <typename Read>
bool until_fatal(Read read) {
  bool ended = true;
  try {
    read();
  } catch (const Fatal &) {
    ended = false;
  }
  elog_clear_register(0);
  take_listing();
  return ended;
}

}  // namespace fuzz

#endif  // FUZZ_LISTING_H_
