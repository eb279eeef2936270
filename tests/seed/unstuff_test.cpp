// One block of either kind.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "tests/seed/walked.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ControlBlockette;
using volume::VolumeWriter;

TEST(UnstuffBlk, BlocketteWithoutDefinitionIsLeftUndecoded) {
  BlockReader reader(one('S', ControlBlockette(999).raw("abc")));
  SDBlk *block = reader.next();
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(block->blkdef, nullptr);
  EXPECT_EQ(countarr(block->contents), 0);
}

TEST(UnstuffBlk, BlockWithoutRawBytesIsLeftUndecoded) {
  ASSERT_EQ(sdblk_blkdefs_init(), 0);
  SDBlk block = {};
  block.blkdef = seed_blkdefs_index[50];
  EXPECT_EQ(sdblk_unstuff_blk(nullptr, &block), 0);
  EXPECT_EQ(block.contents, nullptr);
}

TEST(UnstuffBlk, NullContentsGetANewArray) {
  BlockReader reader(one('A', unit(3)));
  std::string raw = "0330012007AB~";
  SDBlk block = {};
  block.blockette_raw = raw.data();
  block.blockette_length = 13;
  block.blkdef = seed_blkdefs_index[33];
  block.vol = reader.vol();
  reader.next();
  EXPECT_EQ(sdblk_unstuff_blk(reader.vol(), &block), 0);
  EXPECT_EQ(text_of(block.contents, "descr"), "AB");
  freearr(block.contents, free_sdblk_entry);
}

TEST(UnstuffBlk, FieldsStartAfterTypeAndLength) {
  BlockReader reader(one('S', ControlBlockette(50).fixed("DYNG", 5)));
  EXPECT_EQ(text_of(reader.decode_next()->contents, "sta"), "DYNG");
}

TEST(UnstuffBlk, LengthBelowThePrefixGivesNoFields) {
  for (const long length : {1, 6, 7}) {
    BlockReader reader(
        VolumeWriter(256)
            .control('S', ControlBlockette(50).fixed("DYNG", 5).text_with_length(length))
            .bytes());
    EXPECT_EQ(countarr(reader.decode_next()->contents), 0) << length;
  }
}

TEST(UnstuffBlk, DecodingAgainReplacesTheFields) {
  BlockReader reader(
      one('S', ControlBlockette(51).var("2021,075").var("").digits(7, 4).digits(1, 6)));
  SDBlk *block = reader.decode_next();
  block->blockette_raw[7 + 10] = '9';  // the code's first digit: 9007
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(countarr(block->contents), 4);
  EXPECT_EQ(integer_of(block->contents, "cid"), 9007);
}

// An entry of a text, all from malloc.
void add_by_hand(Arr *contents, const SDBlkFieldDef &def, std::string_view text) {
  auto *entry = static_cast<SDBlkEntry *>(std::calloc(1, sizeof(SDBlkEntry)));
  entry->def = &def;
  entry->count = 1;
  entry->value.s = strndup(text.data(), text.size());
  EXPECT_EQ(setarr(contents, def.key, entry), nullptr);
}

TEST(UnstuffBlk, EntryMadeByHandIsReplacedAndReleased) {
  const SDBlkFieldDef name = field("name", 'V', 0, "", SDBLK_STRING);
  BlockReader reader(one('A', unit(1)));
  SDBlk *block = reader.next();
  add_by_hand(block->contents, name, "by hand");
  ASSERT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(text_of(block->contents, "name"), "M/S");
  EXPECT_EQ(countarr(block->contents), 3);
  // A checker of memory sees what stays behind.
}

TEST(UnstuffBlk, ControlBlocketteOfType99IsNoDataRecord) {
  BlockReader reader(one('S', ControlBlockette(99).raw("abc")));
  const LogCapture log;
  EXPECT_EQ(sdblk_unstuffblk(reader.next()), -1);
  EXPECT_EQ(registered(),
            "sdblk_unstuff_dblk: B0099 at S:000001 is no data record\n"
            "sdblk_unstuffblk: sdblk_unstuff_dblk error for B0099 at S:000001\n");
}

}  // namespace
