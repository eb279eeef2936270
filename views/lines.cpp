#include "views/lines.h"

#include <algorithm>
#include <cstring>

namespace tarvik {
namespace {

constexpr std::size_t kFirstBytes = std::size_t{128} << 10;
constexpr std::size_t kFlushBytes = std::size_t{64} << 10;

}  // namespace

void TextBuffer::put(std::string_view text) {
  if (text.empty()) return;  // and perhaps without a place
  char *out = reserve(text.size());
  std::memcpy(out, text.data(), text.size());
  out_ = out + text.size();
}

void TextBuffer::grow(std::size_t bytes) {
  const auto used = static_cast<std::size_t>(out_ - begin_);
  const std::size_t size =
      std::max({kFirstBytes, used + bytes, 2 * static_cast<std::size_t>(end_ - begin_)});
  auto larger = std::make_unique_for_overwrite<char[]>(size);
  if (used > 0) std::memcpy(larger.get(), begin_, used);
  storage_ = std::move(larger);
  begin_ = storage_.get();
  out_ = begin_ + used;
  end_ = begin_ + size;
}

bool LineBuffer::end_line() {
  put('\n');
  lines_ = static_cast<std::size_t>(out_ - begin_);
  return lines_ < kFlushBytes ? good_ : flush();
}

bool LineBuffer::flush() {
  if (lines_ == 0) return good_;
  good_ = good_ && sink_->write({begin_, lines_});
  const auto rest = static_cast<std::size_t>(out_ - begin_) - lines_;
  std::memmove(begin_, begin_ + lines_, rest);
  out_ = begin_ + rest;
  lines_ = 0;
  return good_;
}

}  // namespace tarvik
