// Faults of reading.  What happens to the output that is under way is tested with the command.
#include "cmd/mapping_guard.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "tests/support/child.h"
#include "tests/util/run_command.h"

using namespace tarvik;

namespace {

// Reads a page of a file that has no bytes any more.
void read_after_a_files_end() {
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
    read_after_a_files_end();
  };
  EXPECT_EXIT(fault(), testing::KilledBySignal(SIGBUS), "^$");
}

// Reads a byte of a volume whose file has lost all but its first size bytes; its name is no plain
// one.
void read_what_a_volume_has_lost(const command::ScratchDirectory &directory, off_t size = 4096,
                                 std::size_t offset = 8191) {
  if (chdir(directory.path().c_str()) != 0) return;
  const std::string name = "a\x1b[2J\xc2\x9b\x9b\xc3\x9b";
  static_cast<void>(directory.file(name, std::string(8192, ' ')));
  const SDBlkVol *vol = sdblk_new(name.c_str(), nullptr, 0, 0);
  if (vol == nullptr || truncate(name.c_str(), size) != 0) return;
  guard_mapping(*vol);
  std::printf("%d", *static_cast<const volatile char *>(vol->image + offset));
}

TEST(MappingGuard, NameOfTheVolumeReachesAPipeAsItIs) {
  const command::ScratchDirectory directory;
  const ChildResult child = run_child([&] { read_what_a_volume_has_lost(directory); });
  EXPECT_EQ(child.bytes, "tarvik: a\x1b[2J\xc2\x9b\x9b\xc3\x9b changed while it was read.\n");
  EXPECT_EQ(child.status, 1);
}

TEST(MappingGuard, FirstAndLastByteBelongToTheVolume) {
  const command::ScratchDirectory directory;
  for (const std::size_t offset : {std::size_t{0}, std::size_t{8191}}) {
    const ChildResult child = run_child([&] { read_what_a_volume_has_lost(directory, 0, offset); });
    EXPECT_EQ(child.status, 1) << offset;
    EXPECT_TRUE(child.bytes.ends_with(" changed while it was read.\n")) << offset;
  }
}

TEST(MappingGuard, ControlCharactersOfTheNameDoNotReachATerminal) {
  const command::ScratchDirectory directory;
  const ChildResult child = run_child_on_terminal([&] { read_what_a_volume_has_lost(directory); });
  EXPECT_EQ(child.bytes, "tarvik: a?[2J??\xc3\x9b changed while it was read.\r\n");
  EXPECT_EQ(child.status, 1);
}

}  // namespace
