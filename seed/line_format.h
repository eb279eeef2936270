// What stands between a field's prefix and its value in the listing: its name, padded, and a sign.
#ifndef SEED_LINE_FORMAT_H_
#define SEED_LINE_FORMAT_H_

#include <cstddef>
#include <string_view>

namespace tarvik {

inline constexpr std::size_t kNameColumns = 10;
inline constexpr std::string_view kEquals = " = ";

}  // namespace tarvik

#endif  // SEED_LINE_FORMAT_H_
