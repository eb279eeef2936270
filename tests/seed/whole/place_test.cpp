// Going back, or on, in a volume that is read whole.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "seed/whole.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

// A block, with its bytes and its record, as text.
std::string all_of(const SDBlk &block) {
  std::int64_t size = 0;
  const char *bytes = sdblk_raw(&block, &size);
  return line_of(block) + " in " + std::to_string(block.record_offset) + "+" +
         std::to_string(block.logical_length) + " number " +
         std::to_string(block.logical_sequence) + ": " +
         std::string(bytes, static_cast<std::size_t>(size));
}

// Reads a volume once, then goes to the place before each block, from the last to the first, and
// reads two blocks there.
void expect_same_blocks(std::string_view bytes) {
  WholeReader reader(bytes);
  std::vector<std::pair<SDBlkPlace, std::string>> blocks;
  for (;;) {
    const SDBlkPlace place = sdblk_place(reader.vol());
    const SDBlk *block = reader.next();
    if (block == nullptr) break;
    blocks.emplace_back(place, all_of(*block));
  }
  ASSERT_GT(blocks.size(), 1U);
  for (std::size_t i = blocks.size(); i-- > 0;) {
    sdblk_go_to(reader.vol(), &blocks[i].first);
    for (std::size_t j = i; j < i + 2; ++j) {
      const SDBlk *block = reader.next();
      ASSERT_EQ(block == nullptr, j == blocks.size()) << i;
      if (block != nullptr) {
        EXPECT_EQ(all_of(*block), blocks[j].second) << i;
      }
    }
  }
}

ControlBlockette comment(const std::string &text) {
  return ControlBlockette(31).digits(1, 4).fixed("S", 1).var(text).digits(0, 3);
}

TEST(SdblkGoTo, BlockettesOfARecordComeAgain) {
  expect_same_blocks(
      VolumeWriter(512).control('A', {comment("one"), comment("two"), comment("three")}).bytes());
}

TEST(SdblkGoTo, BlocketteOverSeveralRecordsComesAgain) {
  expect_same_blocks(
      VolumeWriter(256).control('A', {comment(std::string(600, 'x')), comment("two")}).bytes());
}

TEST(SdblkGoTo, DataRecordsComeAgain) {
  VolumeWriter volume(512);
  volume.control('A', comment("one"));
  for (int i = 0; i < 3; ++i) volume.data(DataRecord{.sta = "ABC"}.b1000(3, 1, 9));
  expect_same_blocks(volume.bytes());
}

TEST(SdblkGoTo, BlocksAfterGarbageComeAgain) {
  const std::string volume =
      VolumeWriter(512).control('A', {comment("one"), comment("two")}).bytes();
  expect_same_blocks("garbage" + volume + std::string(100, '?') + volume);
}

TEST(SdblkGoTo, LengthInForceComesAgain) {
  // Nothing but the length in force says where the last record ends.
  std::string last = VolumeWriter(512).control('A', comment("last")).bytes();
  expect_same_blocks(VolumeWriter(512).control('A', {comment("one"), comment("two")}).bytes() +
                     VolumeWriter(512).sequence(2).control('S', comment("three")).bytes() + last);
}

TEST(SdblkGoTo, PlaceAtTheStartIsThatBeforeTheFirstBlock) {
  WholeReader reader(VolumeWriter(512).control('A', comment("one")).bytes());
  const SDBlkPlace start = sdblk_place(reader.vol());
  EXPECT_EQ(start.block, 0);
  while (reader.next() != nullptr) {
  }
  sdblk_go_to(reader.vol(), &start);
  const SDBlk *block = reader.next();
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(line_of(*block), "block 0: A 31 @8");
}

}  // namespace
