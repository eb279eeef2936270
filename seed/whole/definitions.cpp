#include "seed/whole/definitions.h"

#include <cstring>

#include "support/memory.h"

namespace tarvik {
namespace {

std::uint32_t hash_of(const char *key, std::int32_t code) {
  std::uint32_t hash = static_cast<std::uint32_t>(code);
  for (; *key != '\0'; ++key) hash = hash * 31 + static_cast<unsigned char>(*key);
  return hash * 2654435769U >> 8;
}

bool same_key(const char *a, const char *b) { return a == b || std::strcmp(a, b) == 0; }

}  // namespace

Definitions::~Definitions() {
  for (std::int32_t i = 0; i < count_; ++i) {
    sdblk_free(items_[i].first.block);
    for (Defining *again = items_[i].first.next; again != nullptr;) {
      Defining *next = again->next;
      sdblk_free(again->block);
      memory_free(again);
      again = next;
    }
  }
  memory_free(items_);
  memory_free(slots_);
}

// The slot that holds a code, or the free one where it would stand.
std::uint32_t Definitions::slot_of(const char *key, std::int32_t code) const {
  std::uint32_t slot = hash_of(key, code) & (nslots_ - 1);
  while (slots_[slot] != 0) {
    const Definition &item = items_[slots_[slot] - 1];
    if (item.code == code && same_key(item.key, key)) break;
    slot = (slot + 1) & (nslots_ - 1);
  }
  return slot;
}

std::int32_t Definitions::find(const char *key, std::int32_t code) const {
  return nslots_ == 0 ? 0 : slots_[slot_of(key, code)];
}

// Room for one more code.
bool Definitions::grow() {
  if (static_cast<std::uint32_t>(count_) < nslots_ / 2) return true;
  const std::uint32_t nslots = nslots_ == 0 ? kFirstSlots : nslots_ * 2;
  auto *items = static_cast<Definition *>(memory_resize(items_, nslots / 2 * sizeof(Definition)));
  if (items == nullptr) return false;
  // An only definition is its own last one, also where it moved to.
  for (std::int32_t i = 0; i < count_; ++i) {
    if (items[i].count == 1) items[i].last = &items[i].first;
  }
  items_ = items;
  auto *slots = static_cast<std::int32_t *>(memory_get_zeroed(nslots * sizeof(std::int32_t)));
  if (slots == nullptr) return false;
  memory_free(slots_);
  slots_ = slots;
  nslots_ = nslots;
  for (std::int32_t i = 0; i < count_; ++i) slots_[slot_of(items_[i].key, items_[i].code)] = i + 1;
  return true;
}

std::int32_t Definitions::add(const char *key, std::int32_t code, std::int64_t number) {
  const std::int32_t known = find(key, code);
  if (known != 0 && !lists_all_) {
    ++at(known).count;
    return known;
  }
  if (known != 0) {
    auto *again = static_cast<Defining *>(memory_get(sizeof(Defining)));
    if (again == nullptr) return 0;
    *again = {number, nullptr, nullptr};
    Definition &item = at(known);
    item.last->next = again;
    item.last = again;
    ++item.count;
    return known;
  }
  if (!grow()) return 0;
  Definition &item = items_[count_++];
  item = {key, code, 1, {number, nullptr, nullptr}, nullptr};
  item.last = &item.first;
  slots_[slot_of(key, code)] = count_;
  return count_;
}

const Definition *Definitions::get(std::int32_t handle) const {
  return handle >= 1 && handle <= count_ ? &items_[handle - 1] : nullptr;
}

// Those of one code are mostly asked for one after the other, so the last answer is the best start.
const Defining *Definitions::get(std::int32_t handle, std::int32_t which) const {
  const Definition *item = get(handle);
  if (item == nullptr || which < 0 || which >= item->count) return nullptr;
  if (asked_.handle != handle || asked_.which > which) asked_ = {handle, 0, &item->first};
  // items_ may have moved since.
  if (asked_.which == 0) asked_.defining = &item->first;
  for (; asked_.which < which && asked_.defining->next != nullptr; ++asked_.which) {
    asked_.defining = asked_.defining->next;
  }
  return asked_.which == which ? asked_.defining : nullptr;
}

}  // namespace tarvik
