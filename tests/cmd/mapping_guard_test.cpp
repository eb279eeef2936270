// A fault of reading that is not the volume's.  What happens at one of the volume's is tested with
// the command.
#include "cmd/mapping_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

using namespace tarvik;

namespace {

// Reads a page of a file that has no bytes any more.
void read_behind_a_files_end() {
  std::FILE *file = std::tmpfile();
  constexpr std::size_t kSize = 4096;
  if (file == nullptr || ftruncate(fileno(file), kSize) != 0) return;
  void *mapping = mmap(nullptr, kSize, PROT_READ, MAP_SHARED, fileno(file), 0);
  if (mapping == MAP_FAILED || ftruncate(fileno(file), 0) != 0) return;
  std::printf("%d", *static_cast<const volatile char *>(mapping));
}

TEST(MappingGuardDeathTest, FaultElsewhereIsLeftToTheSystem) {
  const std::string image(64, ' ');
  std::string name = "v.seed";
  SDBlkVol vol = {};
  vol.image = image.data();
  vol.image_size = 64;
  vol.filename = name.data();
  const auto fault = [&vol] {
    guard_mapping(vol);
    read_behind_a_files_end();
  };
  EXPECT_EXIT(fault(), testing::KilledBySignal(SIGBUS), "^$");
}

}  // namespace
