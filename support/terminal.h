// What a terminal may be shown of bytes that come from a file.
#ifndef SUPPORT_TERMINAL_H_
#define SUPPORT_TERMINAL_H_

#include <cstddef>

namespace tarvik {

// Puts "?" in the place of each control character other than newline and tab, so that the text does
// not drive the reader's terminal: the bytes below 32, 127, the bytes from 128 to 159 that do not
// stand inside valid UTF-8, and the characters U+0080 to U+009F.  Returns the text's new size.
std::size_t hide_control_characters(char *text, std::size_t size) noexcept;

}  // namespace tarvik

#endif  // SUPPORT_TERMINAL_H_
