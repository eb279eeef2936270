/* sdblk_getv with its arguments checked by the compiler, for C++ programs. */
#ifndef SEED_GETV_H_
#define SEED_GETV_H_

#include <cstdint>
#include <type_traits>

#include "seed/sdblk.h"

namespace sdblk {

namespace detail {

template <typename T>
inline constexpr bool is_result =
    std::is_same_v<T, std::int32_t> || std::is_same_v<T, double> || std::is_same_v<T, char *> ||
    std::is_same_v<T, const char *> || std::is_same_v<T, SDBlk *> || std::is_same_v<T, double *> ||
    std::is_same_v<T, char **> || std::is_same_v<T, Arr **> || std::is_same_v<T, SDBlkAbbrRef *>;

}  // namespace detail

/* The fields that no more pairs ask for. */
inline int get(const Arr * /*contents*/) { return 0; }

/* Reads decoded fields: pairs of a key and the address of a result, with no NULL at the end.
 * Results and messages are those of sdblk_getv; a result of a type that no field has does not
 * compile. */
template <typename Result, typename... More>
int get(const Arr *contents, const char *key, Result *result, More... more) {
  static_assert(detail::is_result<Result>, "no field kind decodes to this type");
  if (sdblk_getv(contents, key, result, static_cast<const char *>(nullptr)) < 0) return -1;
  return get(contents, more...);
}

}  // namespace sdblk

#endif /* SEED_GETV_H_ */
