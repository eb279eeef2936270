// Opening a volume for whole reading, and what a program asks of one.
#include "seed/open.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include "seed/whole.h"
#include "seed/whole/state.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

std::string data(long number) { return DataRecord{.sta = "ABC"}.b1000(3, 1, 7).bytes(128, number); }

ControlBlockette unit(int code, const std::string &name) {
  return ControlBlockette(34).digits(code, 3).var(name).var("");
}
// Two units of one code, and a comment that refers to it.
std::string volume_with_two() {
  const ControlBlockette comment =
      ControlBlockette(31).digits(1, 4).fixed("S", 1).var("Noise").digits(7, 3);
  return VolumeWriter(512).control('A', {unit(7, "M"), unit(7, "S"), comment}).bytes();
}

// How many blocks a volume has, and released.
int count_and_close(SDBlkVol *vol) {
  SDBlk *block = nullptr;
  int count = 0;
  while (sdblk_parseblk(vol, &block) == 0) ++count;
  sdblk_free(block);
  sdblk_closevol(vol);
  return count;
}

// ---- opening ----

TEST(SdblkOpenWhole, ReadsAFile) {
  const command::ScratchDirectory folder;
  SDBlkVol *vol = sdblk_open_whole(folder.file("v", data(1) + data(9)).c_str(), 0, nullptr);
  ASSERT_NE(vol, nullptr);
  EXPECT_EQ(count_and_close(vol), 2);
}

TEST(SdblkOpenWhole, TakesEmptyAndShortFiles) {
  const command::ScratchDirectory folder;
  for (const char *bytes : {"", "x", "123456789"}) {
    SDBlkVol *vol = sdblk_open_whole(folder.file("v", bytes).c_str(), 0, nullptr);
    ASSERT_NE(vol, nullptr) << bytes;
    EXPECT_EQ(count_and_close(vol), 0);
  }
}

TEST(SdblkOpenWhole, SaysWhatCannotBeOpened) {
  const command::ScratchDirectory folder;
  const LogCapture log;
  EXPECT_EQ(sdblk_open_whole((folder / "none").c_str(), 0, nullptr), nullptr);
  EXPECT_EQ(registered(), "sdblk_open_whole: stat(" + (folder / "none") +
                              ") error.\n    No such file or directory\n");
  EXPECT_EQ(sdblk_open_whole(folder.path().c_str(), 0, nullptr), nullptr);
  EXPECT_EQ(registered(), "sdblk_open_whole: " + folder.path() + " is not a regular file.\n");
}

TEST(SdblkOpenWholeBuffer, TakesNoBytesAtAll) {
  SDBlkVol *vol = sdblk_open_whole_buffer(nullptr, 0, 0, nullptr);
  ASSERT_NE(vol, nullptr);
  EXPECT_EQ(count_and_close(vol), 0);
  vol = sdblk_open_whole_buffer("x", -1, 0, nullptr);
  ASSERT_NE(vol, nullptr);
  EXPECT_EQ(vol->image_size, 0);
  EXPECT_EQ(count_and_close(vol), 0);
}

TEST(SdblkOpenWholeBuffer, RefusedMemoryGivesAMessage) {
  const std::string bytes = data(1);
  sdblk_closevol(sdblk_open_whole_buffer(bytes.data(), 128, 0, nullptr));  // the log has its memory
  long n = 1;
  for (bool opened = false; !opened; ++n) {
    SDBlkVol *vol = nullptr;
    bool refused = false;
    {
      const FailingMemory memory(n);
      vol = sdblk_open_whole_buffer(bytes.data(), 128, 0, nullptr);
      refused = FailingMemory::failed();
    }
    opened = vol != nullptr;
    EXPECT_EQ(opened, !refused);
    EXPECT_EQ(registered().empty(), opened);
    sdblk_closevol(vol);
  }
  EXPECT_EQ(n, 5);  // the volume, its dictionary of two pieces, what whole reading keeps
}

TEST(SdblkReadWhole, MakesWholeReadingOfAnOpenVolume) {
  const std::string bytes = data(1) + data(9) + data(7);
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  EXPECT_EQ(sdblk_read_whole(vol, nullptr), 0);
  EXPECT_EQ(count_and_close(vol), 3);
}

TEST(SdblkReadWhole, RefusedMemorySaysWhatTheSystemSays) {
  SDBlkVol *vol = sdblk_new(nullptr, "", 0, 0);
  {
    const FailingMemory memory(1);
    EXPECT_EQ(sdblk_read_whole(vol, nullptr), -1);
  }
  EXPECT_EQ(registered(), "sdblk_read_whole: no memory for " + std::to_string(sizeof(SDBlkWhole)) +
                              " bytes.\n    Cannot allocate memory\n");
  sdblk_closevol(vol);
}

TEST(SdblkReadWhole, IsTooLateAfterTheFirstBlock) {
  const std::string bytes = data(1) + data(2);
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  SDBlk *block = nullptr;
  sdblk_parseblk(vol, &block);
  EXPECT_EQ(sdblk_read_whole(vol, nullptr), -1);
  EXPECT_EQ(registered(), "sdblk_read_whole: the volume is being read already.\n");
  sdblk_free(block);
  sdblk_closevol(vol);
}

TEST(SdblkReadWhole, IsAskedForOnce) {
  SDBlkVol *vol = sdblk_open_whole_buffer("", 0, 0, nullptr);
  EXPECT_EQ(sdblk_read_whole(vol, nullptr), -1);
  EXPECT_EQ(registered(), "sdblk_read_whole: the volume is being read already.\n");
  sdblk_closevol(vol);
}

// ---- counts and numbers ----

TEST(SdblkWholeCounts, AreZeroWhereNothingIsReadWhole) {
  const std::string bytes = data(1);
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), 128, 0);
  EXPECT_EQ(sdblk_whole_counts(vol).records, 0);
  EXPECT_EQ(sdblk_whole_counts(nullptr).blocks, 0);
  sdblk_closevol(vol);
}

TEST(SdblkBlockNumber, IsTheBlocksInBothWays) {
  WholeReader reader(data(1) + data(2));
  EXPECT_EQ(sdblk_block_number(reader.next()), 0);
  EXPECT_EQ(sdblk_block_number(reader.next()), 1);
  BlockReader strict(data(1) + data(2), 128);
  EXPECT_EQ(sdblk_block_number(strict.next()), 0);
  EXPECT_EQ(sdblk_block_number(strict.next()), 1);
}

// ---- definitions ----

TEST(SdblkDefinitions, NameTheBlocksThatDefineACode) {
  WholeReader reader(volume_with_two(), 512);
  reader.read_all();
  const std::int32_t definition = sdblk_definition_of(reader.vol(), "uid", 7);
  EXPECT_GT(definition, 0);
  EXPECT_EQ(sdblk_definitions(reader.vol(), definition), 2);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), definition, 0), 0);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), definition, 1), 1);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), definition, 2), -1);
  EXPECT_EQ(sdblk_definition_of(reader.vol(), "uid", 8), 0);
  EXPECT_EQ(sdblk_definition_of(reader.vol(), "gid", 7), 0);
}

// What the two definitions of the code keep: their units, or "-" for no copy.
std::string kept(SDBlkKeep keep) {
  WholeReader reader(volume_with_two(), 512, keep);
  reader.read_all();
  const std::int32_t definition = sdblk_definition_of(reader.vol(), "uid", 7);
  std::string texts;
  for (int i = 0; i < 2; ++i) {
    const SDBlk *block = sdblk_definition_block(reader.vol(), definition, i);
    texts += block == nullptr ? "-" : text_of(block->contents, "name");
  }
  return texts;
}

TEST(SdblkDefinitionBlock, IsKeptAsTold) {
  EXPECT_EQ(kept(SDBLK_KEEP_FIRST), "M-");
  EXPECT_EQ(kept(SDBLK_KEEP_NUMBERS), "--");
  EXPECT_EQ(kept(SDBLK_KEEP_ALL), "MS");
}

TEST(SdblkDefinitionNumber, IsThatOfTheFirstWhereOnlyNumbersAreKept) {
  WholeReader reader(volume_with_two(), 512, SDBLK_KEEP_NUMBERS);
  reader.read_all();
  const std::int32_t definition = sdblk_definition_of(reader.vol(), "uid", 7);
  EXPECT_EQ(sdblk_definitions(reader.vol(), definition), 2);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), definition, 0), 0);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), definition, 1), -1);
}

TEST(SdblkDefinitions, OfAStrictVolumeAreNone) {
  BlockReader reader(volume_with_two());
  reader.decode_next();
  EXPECT_EQ(sdblk_definition_of(reader.vol(), "uid", 7), 0);
  EXPECT_EQ(sdblk_definitions(reader.vol(), 1), 0);
  EXPECT_EQ(sdblk_definition_number(reader.vol(), 1, 0), -1);
  EXPECT_EQ(sdblk_definition_block(reader.vol(), 1, 0), nullptr);
}

// ---- a value that is not there, as a program reads it ----

TEST(SdblkGetv, GivesZeroNanAndNoTimeForWhatHasNoValue) {
  WholeReader reader(VolumeWriter(512)
                         .control('S', ControlBlockette(50)
                                           .fixed("DYNGA", 5)
                                           .fixed("", 10)
                                           .fixed("", 11)
                                           .fixed("", 7)
                                           .fixed("", 4)
                                           .fixed("", 3)
                                           .var("")
                                           .fixed("", 3)
                                           .fixed("", 4)
                                           .fixed("", 2)
                                           .var("")
                                           .var(""))
                         .bytes(),
                     512);
  const SDBlk *block = reader.decode_next();
  double lat = 1;
  double time = 1;
  std::int32_t nchans = 1;
  ASSERT_EQ(sdblk_getv(block->contents, "lat", &lat, "time", &time, "nchans", &nchans, nullptr), 0);
  EXPECT_TRUE(std::isnan(lat));
  EXPECT_EQ(time, SDBLK_NO_TIME);
  EXPECT_EQ(nchans, 0);
}

TEST(SdblkPrintblk, ListsABlockThatWasReadWhole) {
  WholeReader reader(volume_with_two(), 512);
  SDBlk *block = reader.decode_next();
  LogCapture log;
  sdblk_printblk(block, "", 0);
  EXPECT_EQ(log.text(), "000001: A: B0034[000000,000000008,0013]: Units Abbreviation Blockette\n");
}

}  // namespace
