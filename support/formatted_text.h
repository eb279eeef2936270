// A formatted text that is kept.
#ifndef SUPPORT_FORMATTED_TEXT_H_
#define SUPPORT_FORMATTED_TEXT_H_

#include <cstdarg>
#include <cstddef>
#include <string_view>

#include "support/api.h"

namespace tarvik {

// Memory of which all bytes are 0 is an empty text.  A short one needs no memory, and without
// memory a long one is cut.
class FormattedText {
 public:
  // Replaces the text, with room for spare more bytes after it (fewer than fit a short text).
  void format(const char *format, std::va_list arguments, std::size_t spare) noexcept
      SDBLK_PRINTF(2, 0);
  // Adds as much of a text as there is room for.
  void append(std::string_view text) noexcept;
  // Releases what it holds.
  void clear() noexcept;

  [[nodiscard]] std::string_view view() const noexcept {
    return {long_ == nullptr ? short_ : long_, size_};
  }

 private:
  static constexpr std::size_t kShortBytes = 1024;

  [[nodiscard]] std::size_t room() const noexcept {
    return long_ == nullptr ? kShortBytes : long_bytes_;
  }

  char *long_;  // the text when short_ is too small for it
  std::size_t long_bytes_;
  std::size_t size_;
  char short_[kShortBytes];
};

}  // namespace tarvik

#endif  // SUPPORT_FORMATTED_TEXT_H_
