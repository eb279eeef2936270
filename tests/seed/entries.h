// Entries as a program makes them by hand, and looking at what a tree of entries holds and owns.
#ifndef TESTS_SEED_ENTRIES_H_
#define TESTS_SEED_ENTRIES_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "seed/sdblk.h"

namespace entries {

constexpr SDBlkFieldDef field(const char *key, std::int32_t kind) {
  SDBlkFieldDef def = {};
  def.key = key;
  def.title = "";
  def.description = "";
  def.format = "";
  def.kind = kind;
  return def;
}

inline constexpr SDBlkFieldDef kText = field("text", SDBLK_STRING);

template <typename T>
T *zeroed(std::size_t count) {
  return static_cast<T *>(std::calloc(count, sizeof(T)));
}

inline char *text_of_own(std::string_view text) {
  char *copy = zeroed<char>(text.size() + 1);
  text.copy(copy, text.size());
  return copy;
}

// A new entry under its definition's key.
inline SDBlkEntry *add(Arr *arr, const SDBlkFieldDef &def, std::int32_t count = 1) {
  auto *entry = zeroed<SDBlkEntry>(1);
  entry->def = &def;
  entry->count = count;
  EXPECT_EQ(setarr(arr, def.key, entry), nullptr);
  return entry;
}

inline void add_text(Arr *arr, std::string_view text) {
  add(arr, kText)->value.s = text_of_own(text);
}

// Every value of the tree, readable, and every address that the tree owns.
struct TreeView {
  std::string text;
  std::set<const void *> owned;

  void see(const Arr *arr);
  void see(const SDBlkEntry &entry);
};

inline void TreeView::see(const SDBlkEntry &entry) {
  owned.insert(&entry);
  for (std::int32_t i = 0; i < entry.count; ++i) {
    switch (entry.def->kind) {
      case SDBLK_INT:
      case SDBLK_ABBR_KEY:
        text += std::to_string(entry.value.i) + (entry.ref == nullptr ? "" : "*");
        break;
      case SDBLK_DOUBLE: text += std::to_string(entry.value.d); break;
      case SDBLK_STRING:
        owned.insert(entry.value.s);
        text += entry.value.s;
        break;
      case SDBLK_INT_ARRAY:
        owned.insert(entry.value.ia);
        text += std::to_string(entry.value.ia[i]);
        break;
      case SDBLK_DOUBLE_ARRAY:
        owned.insert(entry.value.da);
        text += std::to_string(entry.value.da[i]);
        break;
      case SDBLK_STRING_ARRAY:
        owned.insert(entry.value.sa);
        owned.insert(entry.value.sa[i]);
        text += entry.value.sa[i];
        break;
      case SDBLK_REF_ARRAY:
        owned.insert(entry.value.ra);
        text +=
            std::to_string(entry.value.ra[i].code) + (entry.value.ra[i].blk == nullptr ? "" : "*");
        break;
      case SDBLK_GROUP_ARRAY:
        owned.insert(entry.value.ea);
        see(entry.value.ea[i]);
        break;
      default: text += std::to_string(entry.value.d);
    }
    text += ' ';
  }
}

inline void TreeView::see(const Arr *arr) {
  text += '{';
  if (arr != nullptr) owned.insert(arr);
  Tbl *keys = keysarr(arr);
  for (long i = 0; i < counttbl(keys); ++i) {
    const char *key = static_cast<const char *>(gettbl(keys, i));
    text += std::string(key) + '=';
    const auto *entry = static_cast<const SDBlkEntry *>(getarr(arr, key));
    if (entry != nullptr) see(*entry);
  }
  freetbl(keys, nullptr);
  text += '}';
}

inline TreeView view_of(const Arr *arr) {
  TreeView view;
  view.see(arr);
  return view;
}

inline constexpr const char *kNoMemory = "    Cannot allocate memory\n";

// What a copy registers that could not get its bytes.
inline std::string malloc_message(const std::string &what, std::size_t bytes) {
  return "sdblk_copy_entry_arr: malloc(" + what + "," + std::to_string(bytes) + ") error.\n" +
         kNoMemory;
}

}  // namespace entries

#endif  // TESTS_SEED_ENTRIES_H_
