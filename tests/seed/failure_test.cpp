// What a volume keeps of a failure.
#include "seed/failure.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/util/log_capture.h"
#include "tests/util/reader.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

TEST(SdblkFailure, IsNoneBeforeTheFirst) {
  const std::string bytes = VolumeWriter(512).control('S', ControlBlockette(50).raw("B")).bytes();
  Reader reader(bytes);
  const SDBlkFailure &failure = *sdblk_failure(&reader.vol());
  EXPECT_EQ(failure.code, SDBLK_NO_FAILURE);
  EXPECT_STREQ(failure.text, "");
  EXPECT_STREQ(failure.field, "");
}

TEST(SdblkFailure, NamesBlockPlaceFieldAndReasonOfDecoding) {
  VolumeWriter writer(512);
  writer.control('A', ControlBlockette(33).digits(1, 3).var("x"));
  writer.control('S', ControlBlockette(50).fixed("DYNGA", 5).raw("not number"));
  Reader reader(writer.bytes(), 512);
  reader.next();
  reader.next();
  EXPECT_EQ(sdblk_unstuffblk(&reader.blk()), -1);
  const SDBlkFailure &failure = *sdblk_failure(&reader.vol());
  EXPECT_EQ(failure.code, SDBLK_FAILURE_DAMAGED);
  EXPECT_EQ(failure.block, 1);
  EXPECT_EQ(failure.offset, 512 + 8);
  EXPECT_STREQ(failure.field, "lat");
  EXPECT_STREQ(failure.text, "scan_double: Failed double input: 'not number'");
  elog_clear_register(0);
}

TEST(SdblkFailure, NamesTheFieldInsideAGroup) {
  Reader reader(
      VolumeWriter(512)
          .control(
              'S',
              ControlBlockette(54).raw("A01001002").digits(1, 4).raw("   not a one         1.5"))
          .bytes());
  reader.next();
  EXPECT_EQ(sdblk_unstuffblk(&reader.blk()), -1);
  EXPECT_STREQ(sdblk_failure(&reader.vol())->field, "coef");
  elog_clear_register(0);
}

TEST(SdblkFailure, OfReadingHasNoField) {
  Reader reader(VolumeWriter(512).control('S', "xxxxxxx").bytes());
  EXPECT_EQ(reader.next(), -1);
  const SDBlkFailure &failure = *sdblk_failure(&reader.vol());
  EXPECT_EQ(failure.code, SDBLK_FAILURE_DAMAGED);
  EXPECT_STREQ(failure.field, "");
  EXPECT_EQ(failure.block, 0);
  EXPECT_STREQ(failure.text, "scan_int: Failed integer input: 'xxx'");
  elog_clear_register(0);
}

TEST(SdblkFailure, TakesTheFirstMessageOfItsOwnCall) {
  elog_log(0, "of another call\n");
  Reader reader(
      VolumeWriter(512).control('S', ControlBlockette(50).raw("DYNGAnot number")).bytes());
  reader.next();
  sdblk_unstuffblk(&reader.blk());
  EXPECT_STREQ(sdblk_failure(&reader.vol())->text,
               "scan_double: Failed double input: 'not number'");
  elog_clear_register(0);
}

TEST(SdblkFailure, TellsRefusedMemoryInBothWays) {
  const std::string bytes = VolumeWriter(512).control('S', ControlBlockette(50).raw("B")).bytes();
  Reader strict(bytes);
  const WholeReader whole(bytes);
  elog_log(0, "the register has its memory\n");
  for (SDBlkVol *vol : {&strict.vol(), whole.vol()}) {
    SDBlk *block = nullptr;
    {
      const FailingMemory memory(1);
      EXPECT_EQ(sdblk_parseblk(vol, &block), -1);
    }
    EXPECT_EQ(sdblk_failure(vol)->code, SDBLK_FAILURE_MEMORY);
    EXPECT_NE(std::string(sdblk_failure(vol)->text), "");
  }
  elog_clear_register(0);
}

TEST(SdblkOpenBuffer, ReadsStrictly) {
  const std::string bytes = DataRecord{}.b1000(3, 1, 7).bytes(128);
  SDBlkVol *vol = sdblk_open_buffer(bytes.data(), 128, 128);
  SDBlk *block = nullptr;
  EXPECT_EQ(sdblk_parseblk(vol, &block), 0);
  EXPECT_EQ(sdblk_parseblk(vol, &block), SDBLK_EOF);
  sdblk_free(block);
  sdblk_closevol(vol);
}

TEST(SdblkOpenBuffer, TakesMoreThanTwoGibibytes) {
  // The size is kept, and the bytes are not looked at before they are read.
  constexpr std::int64_t kSize = std::int64_t{3} << 30;
  SDBlkVol *vol = sdblk_open_buffer("000001D ", kSize, 0);
  EXPECT_EQ(vol->image_size, kSize);
  sdblk_closevol(vol);
}

TEST(SdblkVersion, IsThatOfTheHeaderAndTheProject) {
  EXPECT_EQ(std::string(sdblk_version()), std::to_string(SDBLK_VERSION_MAJOR) + "." +
                                              std::to_string(SDBLK_VERSION_MINOR) + "." +
                                              std::to_string(SDBLK_VERSION_PATCH));
  EXPECT_STREQ(sdblk_version(), TARVIK_PROJECT_VERSION);
}

TEST(ElogRegistered, GivesTheTextsFromTheOldestOn) {
  elog_clear_register(0);
  elog_log(0, "one");
  elog_log(0, "two\n");
  std::size_t size = 0;
  const char *text = elog_registered(0, &size);
  EXPECT_EQ(std::string(text, size), "one\n");
  text = elog_registered(1, &size);
  EXPECT_EQ(std::string(text, size), "two\n");
  EXPECT_EQ(elog_registered(2, &size), nullptr);
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(elog_registered(-1, &size), nullptr);
  elog_clear_register(0);
}

// Nothing is written where nobody asked: what whole reading has to say goes to its report.
TEST(UnstuffWhole, WritesNothingToTheLog) {
  const LogCapture log;
  std::string bytes = DataRecord{.time = {2056, 257}, .forced_first_offset = 5000}.bytes(128);
  bytes +=
      "garbage" + VolumeWriter(128).control('S', ControlBlockette(50).raw("not valid")).bytes();
  WholeReader reader(bytes, 128);
  reader.read_all();
  EXPECT_GT(reader.lines().size(), 4U);
  EXPECT_EQ(log.text(), "");
}

}  // namespace
