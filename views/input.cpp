#include "views/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tarvik {

namespace {

constexpr char kNotRegular[] = "not a regular file";
constexpr char kChanged[] = "changed while it was read";
constexpr char kUnread[] = "cannot be read to its end";

// Closes a descriptor with its scope, and leaves errno as it is.
class Closing {
 public:
  explicit Closing(int descriptor) : descriptor_(descriptor) {}
  ~Closing() {
    const int saved_errno = errno;
    ::close(descriptor_);
    errno = saved_errno;
  }
  Closing(const Closing &) = delete;
  Closing &operator=(const Closing &) = delete;

 private:
  int descriptor_;
};

// Reads up to size bytes.  How many there were, or -1.
std::int64_t read_up_to(int descriptor, char *bytes, std::int64_t size) {
  std::int64_t have = 0;
  while (have < size) {
    const ssize_t got = read(descriptor, bytes + have, static_cast<std::size_t>(size - have));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    have += got;
  }
  return have;
}

}  // namespace

bool Input::open(const Source &source, std::int32_t record_length,
                 const SDBlkWholeOptions &options) {
  close();
  error_.clear();
  missing_ = 0;
  // A pipe without a writer is not waited for.
  const int descriptor = ::open(source.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return fail();
  const Closing closing(descriptor);
  return open_descriptor(descriptor, source, {record_length, &options});
}

bool Input::open_descriptor(int descriptor, const Source &source, const Wanted &wanted) {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0) return fail();
  if (!S_ISREG(status.st_mode)) {
    error_ = kNotRegular;
    return false;
  }
  size_ = status.st_size;
  modified_ = status.st_mtim;
  return size_ <= kReadBytes ? read_all(descriptor, wanted) : map(source, wanted);
}

bool Input::read_all(int descriptor, const Wanted &wanted) {
  if (buffer_ == nullptr) buffer_ = std::make_unique_for_overwrite<char[]>(kReadBytes);
  const std::int64_t have = read_up_to(descriptor, buffer_.get(), size_);
  if (have < 0) return fail();
  missing_ = size_ - have;
  errno = 0;
  volume_ = sdblk_open_whole_buffer(buffer_.get(), have, wanted.record_length, wanted.options);
  return volume_ != nullptr || fail();
}

// The library opens the path itself, which may lead to another file by now.
bool Input::map(const Source &source, const Wanted &wanted) {
  errno = 0;
  volume_ = sdblk_open_whole(source.path.c_str(), wanted.record_length, wanted.options);
  if (volume_ == nullptr) return fail();
  size_ = volume_->image_size;
  if (!is_mapped()) return true;
  guard_.guard(volume_->image, size_);
  struct stat status = {};
  if (fstat(volume_->fd, &status) == 0) modified_ = status.st_mtim;
  return true;
}

bool Input::fail() {
  elog_clear_register(0);
  error_ = errno != 0 ? std::generic_category().message(errno) : kNotRegular;
  return false;
}

void Input::close() {
  guard_.release();
  sdblk_closevol(volume_);
  volume_ = nullptr;
}

bool Input::changed() {
  struct stat status = {};
  const bool mapped = is_mapped();
  const bool shorter =
      missing_ > 0 || (mapped && fstat(volume_->fd, &status) == 0 && status.st_size < size_);
  if (!shorter && !(mapped && guard_.was_hit())) return false;
  error_ = shorter ? kChanged : kUnread;
  return true;
}

}  // namespace tarvik
