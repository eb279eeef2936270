// Entries, the decoded fields: reading them by name, copying and releasing them.
#include <cstdarg>
#include <cstring>
#include <string_view>

#include "seed/sdblk.h"
#include "support/arr_impl.h"
#include "support/bounded.h"
#include "support/memory.h"

using namespace tarvik;

namespace {

constexpr std::size_t kKeyBuffer = 512;

// ---- lookup ----

struct Key {
  const char *name;
  bool wants_reference;
};

Key parse_key(const char *key) {
  const bool star = key[0] == '*';
  const char *name = star ? key + 1 : key;
  require_fit("sdblk_getv", std::strlen(name), kKeyBuffer);
  return {name, star};
}

// Stores an entry's value through the next argument, whose type follows from the entry's kind.
void store_value(const SDBlkEntry &entry, bool wants_reference, std::va_list *arguments) {
  void *result = va_arg(*arguments, void *);
  switch (entry.def->kind) {
    case SDBLK_INT:
    case SDBLK_ABBR_KEY:
      if (wants_reference) {
        *static_cast<SDBlk **>(result) = entry.def->kind == SDBLK_INT ? entry.ref : nullptr;
      } else {
        *static_cast<std::int32_t *>(result) = entry.value.i;
      }
      return;
    case SDBLK_DOUBLE: *static_cast<double *>(result) = entry.value.d; return;
    case SDBLK_STRING: *static_cast<char **>(result) = entry.value.s; return;
    case SDBLK_DOUBLE_ARRAY: *static_cast<double **>(result) = entry.value.da; return;
    case SDBLK_STRING_ARRAY: *static_cast<char ***>(result) = entry.value.sa; return;
    case SDBLK_GROUP_ARRAY: *static_cast<Arr ***>(result) = entry.value.ea; return;
    case SDBLK_REF_ARRAY: *static_cast<SDBlkAbbrRef **>(result) = entry.value.ra; return;
    default: return;
  }
}

// ---- copy ----

constexpr std::size_t kCopyBytes = 1024;

bool fail_copy(const char *key, const char *member, std::size_t bytes) {
  elog_log(1, "sdblk_copy_entry_arr: malloc(%s:entryc%s,%ld) error.\n", key, member,
           static_cast<long>(bytes));
  return false;
}

// A copy of count plain elements of T in the pool; member names it in the message.
template <typename T>
bool copy_elements(Arena &pool, const char *key, const char *member, std::int32_t count,
                   T **elements) {
  const auto size = static_cast<std::size_t>(count < 0 ? 0 : count);
  T *copy = pool.take_array<T>(size);
  if (copy == nullptr) return fail_copy(key, member, size * sizeof(T));
  if (size > 0) std::memcpy(copy, *elements, size * sizeof(T));
  *elements = copy;
  return true;
}

char *copy_string(Arena &pool, const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  void *copy = pool.take(size);
  return copy == nullptr ? nullptr : static_cast<char *>(std::memcpy(copy, text, size));
}

bool copy_single_string(Arena &pool, const char *key, char **text) {
  if (*text == nullptr) return true;
  *text = copy_string(pool, *text);
  if (*text != nullptr) return true;
  elog_log(0, "sdblk_copy_entry_arr: strdup(%s:entryc->value.s) error.\n", key);
  return false;
}

bool copy_strings(Arena &pool, const char *key, SDBlkEntry *entry) {
  if (!copy_elements(pool, key, "->value.sa", entry->count, &entry->value.sa)) return false;
  for (std::int32_t i = 0; i < entry->count; ++i) {
    char *&text = entry->value.sa[i];
    if (text == nullptr) continue;
    text = copy_string(pool, text);
    if (text != nullptr) continue;
    elog_log(1, "sdblk_copy_entry_arr: strdup(%s:entryc->value.sa[%ld]) error.\n", key,
             static_cast<long>(i));
    return false;
  }
  return true;
}

bool copy_entries(Arr *copy, const Arr &source);

// Elements that were never filled stay null.
bool copy_groups(Arr *parent, const char *key, SDBlkEntry *entry) {
  if (!copy_elements(*parent->pool, key, "->value.ea", entry->count, &entry->value.ea))
    return false;
  for (std::int32_t i = 0; i < entry->count; ++i) {
    Arr *&group = entry->value.ea[i];
    if (group == nullptr) continue;
    Arr *copy = arr_new_nested(parent, group->count);
    const bool copied = copy != nullptr && copy_entries(copy, *group);
    group = copy;
    if (copied) continue;
    elog_log(0, "sdblk_copy_entry_arr: sdblk_copy_entry_arr(%s:entryc->value.ea[%ld]) error.\n",
             key, static_cast<long>(i));
    return false;
  }
  return true;
}

// Makes what a copied entry holds its own.
bool deepen(Arr *parent, const char *key, SDBlkEntry *entry) {
  Arena &pool = *parent->pool;
  switch (entry->def->kind) {
    case SDBLK_REF_ARRAY:
      return copy_elements(pool, key, "->value.ra", entry->count, &entry->value.ra);
    case SDBLK_GROUP_ARRAY: return copy_groups(parent, key, entry);
    case SDBLK_STRING_ARRAY: return copy_strings(pool, key, entry);
    case SDBLK_DOUBLE_ARRAY:
      return copy_elements(pool, key, "->value.da", entry->count, &entry->value.da);
    case SDBLK_INT_ARRAY:
      return copy_elements(pool, key, "->value.ia", entry->count, &entry->value.ia);
    case SDBLK_STRING: return copy_single_string(pool, key, &entry->value.s);
    default: return true;
  }
}

bool copy_entries(Arr *copy, const Arr &source) {
  for (std::uint32_t i = 0; i < source.count; ++i) {
    const char *key = source.pairs[i].key;
    const auto *entry = static_cast<const SDBlkEntry *>(source.pairs[i].value);
    SDBlkEntry *entry_copy = nullptr;
    if (entry != nullptr) {
      entry_copy = copy->pool->take_array<SDBlkEntry>(1);
      if (entry_copy == nullptr) return fail_copy(key, "", sizeof(SDBlkEntry));
      *entry_copy = *entry;
      entry_copy->pooled = 1;
      if (!deepen(copy, key, entry_copy)) return false;
    }
    // An entry that was decoded stands under its definition's key, which is a constant.
    const bool constant_key = entry != nullptr && entry->def->key == key;
    const char *constant = constant_key ? key : copy_string(*copy->pool, key);
    if (constant == nullptr || !arr_set_constant(copy, constant, entry_copy)) {
      return fail_copy(key, "", sizeof(SDBlkEntry));
    }
  }
  return true;
}

// Room for the entries; the first one's name stands for all in the message.
bool reserve_entries(Arr *copy, const Arr &source) {
  return arr_reserve(copy, source.count) || fail_copy(source.pairs[0].key, "", sizeof(SDBlkEntry));
}

// ---- release ----

void free_groups(const SDBlkEntry &entry) {
  if (entry.value.ea == nullptr) return;
  for (std::int32_t i = 0; i < entry.count; ++i) freearr(entry.value.ea[i], free_sdblk_entry);
}

void free_strings(const SDBlkEntry &entry) {
  if (entry.value.sa == nullptr) return;
  for (std::int32_t i = 0; i < entry.count; ++i) memory_free(entry.value.sa[i]);
}

void free_value(const SDBlkEntry &entry) {
  switch (entry.def->kind) {
    case SDBLK_REF_ARRAY: memory_free(entry.value.ra); return;
    case SDBLK_DOUBLE_ARRAY: memory_free(entry.value.da); return;
    case SDBLK_INT_ARRAY: memory_free(entry.value.ia); return;
    case SDBLK_STRING: memory_free(entry.value.s); return;
    case SDBLK_GROUP_ARRAY:
      free_groups(entry);
      memory_free(entry.value.ea);
      return;
    case SDBLK_STRING_ARRAY:
      free_strings(entry);
      memory_free(entry.value.sa);
      return;
    default: return;
  }
}

}  // namespace

int sdblk_getv(const Arr *contents, ...) {
  std::va_list arguments;
  va_start(arguments, contents);
  int result = 0;
  while (const char *key = va_arg(arguments, const char *)) {
    const Key wanted = parse_key(key);
    const auto *entry = static_cast<const SDBlkEntry *>(getarr(contents, wanted.name));
    if (entry == nullptr) {
      elog_log(0, "sdblk_getv: entry '%s' not defined.\n", wanted.name);
      result = -1;
      break;
    }
    store_value(*entry, wanted.wants_reference, &arguments);
  }
  va_end(arguments);
  return result;
}

Arr *sdblk_copy_entry_arr(const Arr *entries) {
  const bool whole_tree =
      entries != nullptr && entries->root == entries && entries->pool != nullptr;
  Arr *copy = arr_new_pooled(whole_tree ? entries->pool->used() + kCopyBytes / 8 : kCopyBytes);
  if (copy == nullptr) {
    elog_log(1, "sdblk_copy_entry_arr: malloc(arrayc,%ld) error.\n",
             static_cast<long>(sizeof(Arr)));
    return nullptr;
  }
  if (entries == nullptr) return copy;
  if (reserve_entries(copy, *entries) && copy_entries(copy, *entries)) return copy;
  freearr(copy, free_sdblk_entry);
  return nullptr;
}

void free_sdblk_entry(void *entry) {
  auto *whole = static_cast<SDBlkEntry *>(entry);
  if (whole == nullptr) return;
  if (whole->pooled != 0) {
    // Nothing to release but what a program put into nested arrays by hand.
    if (whole->def->kind == SDBLK_GROUP_ARRAY) free_groups(*whole);
    return;
  }
  free_value(*whole);
  memory_free(whole);
}
