#include <dirent.h>

#include <fstream>
#include <string>

#include "gtest/gtest.h"
#include "seed/sdblk.h"

namespace {

constexpr int kVolumes = 1000;
constexpr char kVolume[] = TARVIK_SOURCE_DIR "/samples/demo.seed";

// What of a thousand volumes would add up.
struct Holdings {
  int descriptors = 0;
  int mappings = 0;  // of the volume
};

Holdings count_holdings() {
  Holdings held;
  DIR *directory = opendir("/proc/self/fd");
  while (readdir(directory) != nullptr) ++held.descriptors;
  closedir(directory);
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("demo.seed") != std::string::npos) ++held.mappings;
  }
  return held;
}

// Reads a volume to its end, decodes it, and counts its blocks.
int read_volume(SDBlkVol *vol) {
  int blocks = 0;
  int result = 0;
  SDBlk *block = nullptr;
  while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
    if (sdblk_unstuffblk(block) == 0) ++blocks;
  }
  sdblk_free(block);
  return blocks;
}

TEST(ManyVolumes, AnOpenVolumeHoldsADescriptorAndAMapping) {
  const Holdings before = count_holdings();
  SDBlkVol *vol = sdblk_new(kVolume, nullptr, 0, 0);
  ASSERT_NE(vol, nullptr);
  const Holdings open = count_holdings();
  EXPECT_EQ(open.descriptors, before.descriptors + 1);
  EXPECT_EQ(open.mappings, before.mappings + 1);
  sdblk_closevol(vol);
}

TEST(ManyVolumes, AThousandVolumesLeaveNothingBehind) {
  SDBlkVol *first = sdblk_new(kVolume, nullptr, 0, 0);
  ASSERT_NE(first, nullptr);
  const int blocks = read_volume(first);
  sdblk_closevol(first);
  ASSERT_GT(blocks, 0);
  const Holdings before = count_holdings();
  for (int i = 0; i < kVolumes; ++i) {
    SDBlkVol *vol = sdblk_new(kVolume, nullptr, 0, 0);
    ASSERT_NE(vol, nullptr);
    ASSERT_EQ(read_volume(vol), blocks);
    sdblk_closevol(vol);
  }
  const Holdings after = count_holdings();
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_EQ(after.mappings, before.mappings);
}

}  // namespace
