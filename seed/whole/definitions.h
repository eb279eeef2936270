// The abbreviations that a volume has defined so far, in whole reading.
#ifndef SEED_WHOLE_DEFINITIONS_H_
#define SEED_WHOLE_DEFINITIONS_H_

#include <cstddef>
#include <cstdint>

#include "seed/sdblk.h"

namespace tarvik {

// One blockette that defines a code.
struct Defining {
  std::int64_t number;  // of the block
  SDBlk *block;         // a copy, or null; owned
  Defining *next;       // the one that defines the same code again
};

// One code.
struct Definition {
  const char *key;  // of the field that defines such codes: "uid"
  std::int32_t code;
  std::int32_t count;  // blockettes that define it
  Defining first;
  Defining *last;
};

class Definitions {
 public:
  // Whether the blockettes that define a code again are listed, not only counted.
  explicit Definitions(bool lists_all) : lists_all_(lists_all) {}
  ~Definitions();
  Definitions(const Definitions &) = delete;
  Definitions &operator=(const Definitions &) = delete;

  // The handle of a code, from 1 on, or 0 when it is not defined.
  [[nodiscard]] std::int32_t find(const char *key, std::int32_t code) const;

  // Registers that a block defines a code, which may be defined already.  key is a constant.
  // Returns the handle, or 0 when memory runs out.
  std::int32_t add(const char *key, std::int32_t code, std::int64_t number);

  // Hands a copy over to what was added last under a handle.
  void keep(std::int32_t handle, SDBlk *copy) { at(handle).last->block = copy; }

  // What stands under a handle; nullptr for one that is out of range.
  [[nodiscard]] const Definition *get(std::int32_t handle) const;
  // One of the blockettes that define it, counted from 0; nullptr for one that is not there or not
  // listed.
  [[nodiscard]] const Defining *get(std::int32_t handle, std::int32_t which) const;

 private:
  static constexpr std::uint32_t kFirstSlots = 256;

  Definition &at(std::int32_t handle) { return items_[handle - 1]; }
  [[nodiscard]] std::uint32_t slot_of(const char *key, std::int32_t code) const;
  bool grow();

  struct Asked {
    std::int32_t handle;
    std::int32_t which;
    const Defining *defining;
  };

  bool lists_all_;
  mutable Asked asked_ = {};
  Definition *items_ = nullptr;
  std::int32_t count_ = 0;
  std::int32_t *slots_ = nullptr;  // handles by hash; 0 is free; at most half are taken
  std::uint32_t nslots_ = 0;       // a power of two
};

}  // namespace tarvik

#endif  // SEED_WHOLE_DEFINITIONS_H_
