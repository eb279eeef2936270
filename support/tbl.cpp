#include "support/tbl.h"

#include <regex.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

#include "support/c_locale.h"
#include "support/memory.h"

struct Tbl {
  void **elements;
  long count;
  long capacity;
  regex_t **compiled;  // tblgrep's: the element at the same position compiled, or null
  long compiled_count;
};

using namespace tarvik;

namespace {

constexpr long kMostElements = LONG_MAX / static_cast<long>(sizeof(void *));

std::size_t bytes_for(long pointers) { return static_cast<std::size_t>(pointers) * sizeof(void *); }

bool make_room(Tbl *tbl, long count) {
  if (count <= tbl->capacity) return true;
  if (count > kMostElements) return false;
  const long capacity = std::max({count, std::min(tbl->capacity * 2, kMostElements), 8L});
  void *elements = memory_resize(tbl->elements, bytes_for(capacity));
  if (elements == nullptr) return false;
  tbl->elements = static_cast<void **>(elements);
  tbl->capacity = capacity;
  return true;
}

void drop_compiled(Tbl *tbl, long position) {
  if (position >= tbl->compiled_count || tbl->compiled[position] == nullptr) return;
  regfree(tbl->compiled[position]);
  memory_free(tbl->compiled[position]);
  tbl->compiled[position] = nullptr;
}

// Makes a place for every element's compiled pattern.
bool make_compiled_places(Tbl *tbl) {
  if (tbl->compiled_count >= tbl->count) return true;
  void *compiled = memory_resize(tbl->compiled, bytes_for(tbl->count));
  if (compiled == nullptr) return false;
  tbl->compiled = static_cast<regex_t **>(compiled);
  std::fill(tbl->compiled + tbl->compiled_count, tbl->compiled + tbl->count, nullptr);
  tbl->compiled_count = tbl->count;
  return true;
}

// The pattern at position, compiled; null when it is no valid expression or memory runs out.
const regex_t *compiled_pattern(Tbl *tbl, long position) {
  if (tbl->compiled[position] != nullptr) return tbl->compiled[position];
  const char *pattern = static_cast<const char *>(tbl->elements[position]);
  if (pattern == nullptr) return nullptr;
  auto *compiled = static_cast<regex_t *>(memory_get(sizeof(regex_t)));
  if (compiled == nullptr) return nullptr;
  const InCLocale same_everywhere;
  if (regcomp(compiled, pattern, REG_EXTENDED | REG_NOSUB) != 0) {
    memory_free(compiled);
    return nullptr;
  }
  tbl->compiled[position] = compiled;
  return compiled;
}

// Appends the patterns that match text to matches.
bool collect_matches(Tbl *patterns, const char *text, Tbl *matches) {
  if (!make_compiled_places(patterns)) return false;
  for (long i = 0; i < patterns->count; ++i) {
    const regex_t *compiled = compiled_pattern(patterns, i);
    if (compiled == nullptr) return false;
    const int result = regexec(compiled, text, 0, nullptr, 0);
    if (result == REG_NOMATCH) continue;
    if (result != 0 || settbl(matches, -1, patterns->elements[i]) < 0) return false;
  }
  return true;
}

}  // namespace

Tbl *newtbl(void) { return static_cast<Tbl *>(memory_get_zeroed(sizeof(Tbl))); }

long settbl(Tbl *tbl, long position, void *value) {
  if (tbl == nullptr || position < -1 || position == LONG_MAX) return -1;
  if (position == -1) position = tbl->count;
  if (!make_room(tbl, position + 1)) return -1;
  drop_compiled(tbl, position);
  while (tbl->count <= position) tbl->elements[tbl->count++] = nullptr;
  tbl->elements[position] = value;
  return position;
}

void *gettbl(const Tbl *tbl, long position) {
  if (tbl == nullptr || position < 0 || position >= tbl->count) return nullptr;
  return tbl->elements[position];
}

long counttbl(const Tbl *tbl) { return tbl == nullptr ? 0 : tbl->count; }

void freetbl(Tbl *tbl, void (*free_element)(void *)) {
  if (tbl == nullptr) return;
  for (long i = 0; i < tbl->compiled_count; ++i) drop_compiled(tbl, i);
  for (long i = 0; free_element != nullptr && i < tbl->count; ++i) {
    if (tbl->elements[i] != nullptr) free_element(tbl->elements[i]);
  }
  memory_free(tbl->compiled);
  memory_free(tbl->elements);
  memory_free(tbl);
}

Tbl *tblgrep(Tbl *patterns, const char *text) {
  Tbl *matches = newtbl();
  if (matches == nullptr || patterns == nullptr) return matches;
  if (collect_matches(patterns, text, matches)) return matches;
  freetbl(matches, nullptr);
  return nullptr;
}
