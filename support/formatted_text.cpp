#include "support/formatted_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "support/memory.h"

namespace tarvik {

void FormattedText::format(const char *format, std::va_list arguments, std::size_t spare) noexcept {
  clear();
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(short_, kShortBytes, format, arguments);
  if (length > 0) {
    size_ = static_cast<std::size_t>(length);
    const std::size_t needed = size_ + spare + 1;
    if (needed > kShortBytes) long_ = static_cast<char *>(memory_get(needed));
    if (long_ != nullptr) {
      long_bytes_ = needed;
      std::vsnprintf(long_, needed, format, again);
    }
    // What a cut text loses makes room for its line end.
    size_ = std::min(size_, room() - 1 - spare);
  }
  va_end(again);
}

void FormattedText::append(std::string_view text) noexcept {
  const std::size_t size = std::min(text.size(), room() - size_);
  if (size > 0) std::memcpy((long_ == nullptr ? short_ : long_) + size_, text.data(), size);
  size_ += size;
}

void FormattedText::clear() noexcept {
  memory_free(long_);
  long_ = nullptr;
  size_ = 0;
}

}  // namespace tarvik
