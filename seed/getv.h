/* Decoded fields by name for C++ programs: the compiler checks the types of the results, the
 * library the kinds of the fields. */
#ifndef TARVIK_SEED_GETV_H_
#define TARVIK_SEED_GETV_H_

#include <cstdint>
#include <type_traits>

#include "../seed/sdblk.h"

namespace sdblk {

namespace detail {

using Values = decltype(SDBlkEntry::value);

/* A kind of field, and where its entries hold the value. */
template <std::int32_t kKind, auto kMember>
struct Field {
  static constexpr std::int32_t kind = kKind;
  static auto value(const SDBlkEntry &entry) { return entry.value.*kMember; }
};

/* The field that gives a result of a type. */
template <typename Result>
struct FieldOf {
  static constexpr std::int32_t kind = 0;
};
template <>
struct FieldOf<std::int32_t> : Field<SDBLK_INT, &Values::i> {};
template <>
struct FieldOf<double> : Field<SDBLK_DOUBLE, &Values::d> {};
template <>
struct FieldOf<char *> : Field<SDBLK_STRING, &Values::s> {};
template <>
struct FieldOf<const char *> : FieldOf<char *> {};
template <>
struct FieldOf<std::int32_t *> : Field<SDBLK_INT_ARRAY, &Values::ia> {};
template <>
struct FieldOf<double *> : Field<SDBLK_DOUBLE_ARRAY, &Values::da> {};
template <>
struct FieldOf<char **> : Field<SDBLK_STRING_ARRAY, &Values::sa> {};
template <>
struct FieldOf<Arr **> : Field<SDBLK_GROUP_ARRAY, &Values::ea> {};
template <>
struct FieldOf<SDBlkAbbrRef *> : Field<SDBLK_REF_ARRAY, &Values::ra> {};
template <>
struct FieldOf<SDBlk *> {
  static constexpr std::int32_t kind = SDBLK_INT;
  static SDBlk *value(const SDBlkEntry &entry) { return entry.ref; }
};

}  // namespace detail

/* The fields that no more pairs ask for. */
inline int get(const Arr * /*contents*/) { return 0; }

/* Reads decoded fields: pairs of a key and the address of a result, with no NULL at the end.  A
 * SDBlk * takes the abbreviation block that the integer of "key" or "*key" refers to, or null; an
 * array of integers comes as int32_t *, the other kinds as with sdblk_getv.  A result of a type
 * that no field has does not compile.  Returns 0, or -1 at the first key that is missing, with the
 * message of sdblk_getv, or whose field is of another kind, with that of sdblk_get_entry; results
 * before it are stored, later ones are not. */
template <typename Result, typename... More>
int get(const Arr *contents, const char *key, Result *result, More... more) {
  using Field = detail::FieldOf<Result>;
  static_assert(Field::kind != 0, "no field kind decodes to this type");
  const bool star = key[0] == '*' && std::is_same_v<Result, SDBlk *>;
  const SDBlkEntry *entry = sdblk_get_entry(contents, star ? key + 1 : key, Field::kind);
  if (entry == nullptr) return -1;
  *result = Field::value(*entry);
  return get(contents, more...);
}

}  // namespace sdblk

#endif /* TARVIK_SEED_GETV_H_ */
