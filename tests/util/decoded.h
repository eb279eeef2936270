// Reading a volume that a test has built, and looking at what was decoded.
#ifndef TESTS_UTIL_DECODED_H_
#define TESTS_UTIL_DECODED_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "seed/sdblk.h"
#include "tests/util/reader.h"

// Blocks one after the other; it ends the test where there is none.
class BlockReader {
 public:
  explicit BlockReader(std::string_view bytes, std::int32_t logical_length = 0)
      : reader_(bytes, logical_length) {}

  // The next block, as the parser leaves it; lives until the next call.
  SDBlk *next() {
    const int result = reader_.next();
    if (result < 0 || result == SDBLK_EOF) throw std::runtime_error("there is no further block");
    return &reader_.blk();
  }
  // The next block, decoded.
  SDBlk *decode_next() {
    SDBlk *block = next();
    if (sdblk_unstuffblk(block) != 0) throw std::runtime_error("the block cannot be decoded");
    return block;
  }
  [[nodiscard]] SDBlkVol *vol() const { return &reader_.vol(); }

 private:
  Reader reader_;
};

// The entry of a key; a key that is not there ends the test.
inline const SDBlkEntry &entry_of(const Arr *contents, const char *key) {
  const auto *entry = static_cast<const SDBlkEntry *>(getarr(contents, key));
  if (entry == nullptr) throw std::out_of_range(std::string("no entry ") + key);
  return *entry;
}
inline std::int32_t integer_of(const Arr *contents, const char *key) {
  return entry_of(contents, key).value.i;
}
inline double real_of(const Arr *contents, const char *key) {
  return entry_of(contents, key).value.d;
}
inline std::string text_of(const Arr *contents, const char *key) {
  return entry_of(contents, key).value.s;
}
// One repetition of a group; NULL where the data ended before it.
inline const Arr *repetition_of(const Arr *contents, const char *key, std::int32_t index) {
  const SDBlkEntry &entry = entry_of(contents, key);
  if (index >= entry.count) throw std::out_of_range(std::string("too few of ") + key);
  return entry.value.ea[index];
}

#endif  // TESTS_UTIL_DECODED_H_
