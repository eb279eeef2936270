// The header parser of libmseed over a volume of data records of one length, as a peer to compare
// the command's speed with:
//
//   mseed_headers LENGTH FILE
#include <fcntl.h>
#include <libmseed.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  const int length = static_cast<int>(std::strtol(argv[1], nullptr, 10));
  struct stat status = {};
  const int fd = open(argv[2], O_RDONLY | O_CLOEXEC);
  if (length <= 0 || fd < 0 || fstat(fd, &status) < 0) return 1;
  const auto size = static_cast<std::size_t>(status.st_size);
  // The parser swaps nothing in place unless samples are unpacked, but wants bytes it may write.
  void *mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, fd, 0);
  if (mapping == MAP_FAILED) return 1;
  MSRecord *record = nullptr;
  long parsed = 0;
  for (std::size_t at = 0; at + static_cast<std::size_t>(length) <= size;
       at += static_cast<std::size_t>(length)) {
    if (msr_parse(static_cast<char *>(mapping) + at, length, &record, length, 0, 0) != MS_NOERROR) {
      return 1;
    }
    ++parsed;
  }
  msr_free(&record);
  std::printf("%ld\n", parsed);
  return 0;
}
