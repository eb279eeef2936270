// Decoded fields by name, their kind checked.
#include <cstdint>

#include "seed/sdblk.h"

namespace {

using Values = decltype(SDBlkEntry::value);

// What an entry of a kind holds, for messages.
const char *name_of_kind(std::int32_t kind) {
  switch (kind) {
    case SDBLK_INT: return "an integer";
    case SDBLK_ABBR_KEY: return "a lookup code";
    case SDBLK_DOUBLE: return "a real number";
    case SDBLK_STRING: return "a text";
    case SDBLK_INT_ARRAY: return "integers";
    case SDBLK_DOUBLE_ARRAY: return "real numbers";
    case SDBLK_STRING_ARRAY: return "texts";
    case SDBLK_GROUP_ARRAY: return "groups";
    case SDBLK_REF_ARRAY: return "references";
    default: return "nothing";
  }
}

// A result that an entry holds as member, and the number of its elements unless count is null.
template <typename Member, typename Result>
int get_value(const Arr *contents, const char *key, std::int32_t kind, Member member,
              Result *result, std::int32_t *count = nullptr) {
  const SDBlkEntry *entry = sdblk_get_entry(contents, key, kind);
  if (entry == nullptr) return -1;
  *result = entry->value.*member;
  if (count != nullptr) *count = entry->count;
  return 0;
}

}  // namespace

const SDBlkEntry *sdblk_get_entry(const Arr *contents, const char *key, std::int32_t kind) {
  const auto *entry = static_cast<const SDBlkEntry *>(getarr(contents, key));
  if (entry == nullptr) {
    // One message for a missing field, whichever way it is asked for.
    elog_log(0, "sdblk_getv: entry '%s' not defined.\n", key);
    return nullptr;
  }
  const std::int32_t found = entry->def->kind;
  if (found == kind || (found == SDBLK_ABBR_KEY && kind == SDBLK_INT)) return entry;
  elog_log(0, "sdblk_get_entry: entry '%s' holds %s, not %s.\n", key, name_of_kind(found),
           name_of_kind(kind));
  return nullptr;
}

int sdblk_get_int(const Arr *contents, const char *key, std::int32_t *value) {
  return get_value(contents, key, SDBLK_INT, &Values::i, value);
}

int sdblk_get_double(const Arr *contents, const char *key, double *value) {
  return get_value(contents, key, SDBLK_DOUBLE, &Values::d, value);
}

int sdblk_get_text(const Arr *contents, const char *key, const char **text) {
  return get_value(contents, key, SDBLK_STRING, &Values::s, text);
}

int sdblk_get_abbr(const Arr *contents, const char *key, const SDBlk **block) {
  const SDBlkEntry *entry = sdblk_get_entry(contents, key, SDBLK_INT);
  if (entry == nullptr) return -1;
  *block = entry->ref;
  return 0;
}

int sdblk_get_ints(const Arr *contents, const char *key, const std::int32_t **values,
                   std::int32_t *count) {
  return get_value(contents, key, SDBLK_INT_ARRAY, &Values::ia, values, count);
}

int sdblk_get_doubles(const Arr *contents, const char *key, const double **values,
                      std::int32_t *count) {
  return get_value(contents, key, SDBLK_DOUBLE_ARRAY, &Values::da, values, count);
}

int sdblk_get_texts(const Arr *contents, const char *key, const char *const **texts,
                    std::int32_t *count) {
  return get_value(contents, key, SDBLK_STRING_ARRAY, &Values::sa, texts, count);
}

int sdblk_get_groups(const Arr *contents, const char *key, Arr *const **groups,
                     std::int32_t *count) {
  return get_value(contents, key, SDBLK_GROUP_ARRAY, &Values::ea, groups, count);
}

int sdblk_get_refs(const Arr *contents, const char *key, const SDBlkAbbrRef **references,
                   std::int32_t *count) {
  return get_value(contents, key, SDBLK_REF_ARRAY, &Values::ra, references, count);
}
