#include "seed/getv.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ControlBlockette;

// A response with one pole and no zero.
std::string poles() {
  return ControlBlockette(53)
      .fixed("A", 1)
      .digits(2, 2)
      .digits(3, 3)
      .digits(4, 3)
      .real(1.5)
      .real(2.5)
      .digits(0, 3)
      .digits(1, 3)
      .real(-0.5)
      .real(0.25)
      .real(0)
      .real(0)
      .text();
}

TEST(Get, PairsAreReadWithoutAFinalNull) {
  BlockReader reader("000001S " + poles());
  const SDBlk *blk = reader.decode_next();
  std::int32_t stage = 0;
  double factor = 0;
  const char *type = nullptr;
  ASSERT_EQ(sdblk::get(blk->contents, "resp", &type, "stage", &stage, "norm", &factor), 0);
  EXPECT_STREQ(type, "A");
  EXPECT_EQ(stage, 2);
  EXPECT_EQ(factor, 1.5);
}

TEST(Get, GroupsAreReadInSteps) {
  BlockReader reader("000001S " + poles());
  const SDBlk *blk = reader.decode_next();
  Arr **groups = nullptr;
  ASSERT_EQ(sdblk::get(blk->contents, "poles", &groups), 0);
  double real = 0;
  ASSERT_EQ(sdblk::get(groups[0], "real", &real), 0);
  EXPECT_EQ(real, -0.5);
}

TEST(Get, StarGivesTheReferencedBlock) {
  BlockReader reader("000001S " + poles());
  const SDBlk *blk = reader.decode_next();
  SDBlk stays;
  SDBlk *units = &stays;
  EXPECT_EQ(sdblk::get(blk->contents, "*iunits", &units), 0);
  EXPECT_EQ(units, nullptr);
}

TEST(Get, FirstMissingKeyEndsIt) {
  LogCapture log;
  BlockReader reader("000001S " + poles());
  const SDBlk *blk = reader.decode_next();
  std::int32_t before = 0;
  std::int32_t missing = -1;
  double after = -1;
  EXPECT_EQ(sdblk::get(blk->contents, "stage", &before, "gone", &missing, "norm", &after), -1);
  EXPECT_EQ(before, 2);
  EXPECT_EQ(missing, -1);
  EXPECT_EQ(after, -1);
  EXPECT_EQ(log.registered(), "sdblk_getv: entry 'gone' not defined.\n");
}

TEST(Get, FieldOfAnotherKindEndsIt) {
  LogCapture log;
  BlockReader reader("000001S " + poles());
  const SDBlk *blk = reader.decode_next();
  std::int32_t integer = -1;
  EXPECT_EQ(sdblk::get(blk->contents, "norm", &integer), -1);
  EXPECT_EQ(integer, -1);
  EXPECT_EQ(log.registered(),
            "sdblk_get_entry: entry 'norm' holds a real number, not an integer.\n");
}

TEST(Get, StarIsForReferencesAlone) {
  LogCapture log;
  BlockReader reader("000001S " + poles());
  const SDBlk *blk = reader.decode_next();
  std::int32_t integer = -1;
  EXPECT_EQ(sdblk::get(blk->contents, "*stage", &integer), -1);
  EXPECT_EQ(log.registered(), "sdblk_getv: entry '*stage' not defined.\n");
}

TEST(Get, NoPairsGiveZero) { EXPECT_EQ(sdblk::get(nullptr), 0); }

}  // namespace
