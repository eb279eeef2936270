// What the command's speed is measured against: the least that a reader of a volume must do.
//
//   yardstick frame LENGTH FILE   map the file and read 64 bytes of every record of LENGTH bytes
//   yardstick sum FILE            map the file and add up its bytes in a plain loop
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

constexpr std::size_t kHeaderBytes = 64;

std::string_view map_file(const char *path) {
  struct stat status = {};
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0 || fstat(fd, &status) < 0) return {};
  const auto size = static_cast<std::size_t>(status.st_size);
  void *mapping = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  close(fd);
  if (mapping == MAP_FAILED) return {};
  return {static_cast<const char *>(mapping), size};
}

std::uint64_t read_headers(std::string_view image, std::size_t length) {
  std::uint64_t sum = 0;
  for (std::size_t at = 0; at + kHeaderBytes <= image.size(); at += length) {
    for (std::size_t i = 0; i < kHeaderBytes; i += sizeof(std::uint64_t)) {
      std::uint64_t word = 0;
      std::memcpy(&word, image.data() + at + i, sizeof word);
      sum += word;
    }
  }
  return sum;
}

std::uint64_t add_bytes(std::string_view image) {
  std::uint64_t sum = 0;
  for (const char c : image) sum += static_cast<unsigned char>(c);
  return sum;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string_view mode = argc > 1 ? argv[1] : "";
  const bool frame = mode == "frame" && argc == 4;
  if (!frame && !(mode == "sum" && argc == 3)) {
    std::fputs("usage: yardstick frame LENGTH FILE | yardstick sum FILE\n", stderr);
    return 2;
  }
  const std::string_view image = map_file(argv[argc - 1]);
  const std::size_t length = frame ? std::strtoul(argv[2], nullptr, 10) : 1;
  if (image.empty() || length == 0) {
    std::fputs("yardstick: nothing to read\n", stderr);
    return 1;
  }
  const std::uint64_t sum = frame ? read_headers(image, length) : add_bytes(image);
  std::printf("%llu\n", static_cast<unsigned long long>(sum));
  return 0;
}
