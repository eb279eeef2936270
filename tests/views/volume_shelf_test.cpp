#include "views/volume_shelf.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;
using volume::ControlBlockette;
using volume::VolumeWriter;

namespace {

constexpr int kMany = 20;  // more than are open at a time

std::string volume_with(const std::string &text) {
  return VolumeWriter(512)
      .control('A', ControlBlockette(33).digits(1, 3).var(text))
      .data({})
      .bytes();
}

class VolumeShelfTest : public testing::Test {
 protected:
  Source source(const std::string &name, const std::string &bytes) {
    Source source;
    source.name = name;
    source.path = scratch_.file(name, bytes);
    return source;
  }
  void add_many() {
    for (int i = 0; i < kMany; ++i) {
      const std::string name = std::to_string(i);
      EXPECT_EQ(shelf_.add(source(name, volume_with(name)), nullptr), Outcome::read);
    }
  }
  // The text of the abbreviation that a volume defines.
  std::string text_of(std::int32_t number) {
    const SDBlkVol *vol = shelf_.open(number);
    if (vol == nullptr) return "lost";
    const SDBlk *block = sdblk_definition_block(vol, sdblk_definition_of(vol, "gid", 1), 0);
    const char *text = "";
    sdblk_get_text(block->contents, "descr", &text);
    return text;
  }

  command::ScratchDirectory scratch_;
  std::vector<std::string> lost_;
  VolumeShelf shelf_{4096, [this](const std::string &name, const std::string &why) {
                       lost_.push_back(name + ": " + why);
                     }};
};

TEST_F(VolumeShelfTest, ControlBlocksAreHandedOut) {
  std::vector<std::int32_t> types;
  shelf_.add(source("v", volume_with("x")), [&](const SDBlk &block, const SDBlkPlace &place) {
    types.push_back(block.blockette_type);
    EXPECT_EQ(place.block, 0);
  });
  EXPECT_EQ(types, std::vector<std::int32_t>{33});
}

TEST_F(VolumeShelfTest, AnyVolumeIsOpenedAgainWithItsAbbreviations) {
  add_many();
  for (const std::int32_t number : {0, kMany - 1, 7, 0}) {
    EXPECT_EQ(text_of(number), std::to_string(number));
  }
  EXPECT_EQ(lost_, std::vector<std::string>());
}

TEST_F(VolumeShelfTest, VolumeThatIsGoneIsToldOnce) {
  add_many();
  std::filesystem::remove(scratch_ / "0");
  EXPECT_EQ(text_of(0), "lost");
  EXPECT_EQ(text_of(0), "lost");
  EXPECT_EQ(lost_, std::vector<std::string>{"0: No such file or directory"});
}

TEST_F(VolumeShelfTest, VolumeThatIsAnotherOneIsLost) {
  add_many();
  std::ofstream(scratch_ / "0", std::ios::app) << "more";
  EXPECT_EQ(text_of(0), "lost");
  EXPECT_EQ(lost_, std::vector<std::string>{"0: changed while it was read"});
}

TEST_F(VolumeShelfTest, DamageIsTold) {
  EXPECT_EQ(shelf_.add(source("v", "garbage" + volume_with("x")), nullptr), Outcome::damaged);
  // A blockette that is cut, without being decoded.
  VolumeWriter cut(512);
  cut.control('S', ControlBlockette(53).raw(std::string(600, ' ')));
  EXPECT_EQ(shelf_.add(source("cut", cut.bytes().substr(0, 512)), nullptr), Outcome::damaged);
}

TEST_F(VolumeShelfTest, LastVolumeIsTakenBack) {
  add_many();
  shelf_.add(source("last", volume_with("last")), nullptr);
  shelf_.drop_last();
  EXPECT_EQ(shelf_.count(), kMany);
  shelf_.add(source("other", volume_with("other")), nullptr);
  EXPECT_EQ(text_of(kMany), "other");
  EXPECT_EQ(shelf_.name(kMany), "other");
}

}  // namespace
