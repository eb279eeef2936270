#include "sdblk/line_reader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tarvik {

namespace {

constexpr std::size_t kReadBytes = std::size_t{64} << 10;

}  // namespace

bool LineReader::next(std::string_view *line) {
  std::size_t looked = 0;
  while (true) {
    const char *start = bytes_.data() + at_;
    const std::size_t have = ready_ - at_;
    const void *found = have > looked ? std::memchr(start + looked, end_, have - looked) : nullptr;
    if (found != nullptr) {
      *line = {start, static_cast<std::size_t>(static_cast<const char *>(found) - start)};
      at_ += line->size() + 1;
      return true;
    }
    looked = have;
    if (fill()) continue;
    if (error_ != 0 || have == 0) return false;
    *line = {bytes_.data() + at_, have};
    at_ = ready_;
    return true;
  }
}

// Reads more after what is there, which moves to the front.  False when there is none.
bool LineReader::fill() {
  if (at_ > 0) {
    std::memmove(bytes_.data(), bytes_.data() + at_, ready_ - at_);
    ready_ -= at_;
    at_ = 0;
  }
  if (bytes_.size() - ready_ < kReadBytes) bytes_.resize(2 * bytes_.size() + 2 * kReadBytes);
  ssize_t got = 0;
  do {
    got = read(descriptor_, bytes_.data() + ready_, bytes_.size() - ready_);
  } while (got < 0 && errno == EINTR);
  if (got < 0) error_ = errno;
  if (got <= 0) return false;
  ready_ += static_cast<std::size_t>(got);
  return true;
}

}  // namespace tarvik
