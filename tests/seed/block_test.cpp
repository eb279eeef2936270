#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "seed/sdblk.h"
#include "support/arena.h"
#include "tests/seed/entries.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;
using namespace entries;

namespace {

using volume::ControlBlockette;
using volume::DataRecord;

// A channel's responses: two stages, the first with two references, the second cut off.
std::string stages() {
  return ControlBlockette(60)
      .digits(2, 2)
      .digits(1, 2)
      .digits(2, 2)
      .digits(11, 4)
      .digits(12, 4)
      .text();
}

TEST(CopyOfABlock, NestedGroupsAreCopied) {
  BlockReader reader("000001S " + stages());
  const SDBlk *blk = reader.decode_next();
  SDBlk *copy = sdblk_copy(blk);
  ASSERT_NE(copy, nullptr);
  const TreeView source = view_of(blk->contents);
  const TreeView view = view_of(copy->contents);
  EXPECT_EQ(source.text, "{nstages=2 stages={stage=1 nresps=2 resps=11 12 } {} }");
  EXPECT_EQ(view.text, source.text);
  EXPECT_EQ(view.owned.size(), source.owned.size());
  for (const void *address : view.owned) EXPECT_EQ(source.owned.count(address), 0U);
  sdblk_free(copy);
  EXPECT_EQ(view_of(blk->contents).text, source.text);
}

TEST(CopyOfABlock, MembersAreTakenAsTheyStand) {
  BlockReader reader("000007S " + stages());
  const SDBlk *blk = reader.decode_next();
  SDBlk *copy = sdblk_copy(blk);
  EXPECT_EQ(copy->logical_sequence, 7);
  EXPECT_EQ(copy->logical_length, blk->logical_length);
  EXPECT_EQ(copy->record_type, 'S');
  EXPECT_EQ(copy->block_number, 0);
  EXPECT_EQ(copy->blockette_length, 21);
  EXPECT_EQ(copy->file_offset, 8);
  EXPECT_EQ(copy->blockette_type, 60);
  EXPECT_EQ(copy->blkdef, blk->blkdef);
  EXPECT_EQ(copy->vol, reader.vol());
  EXPECT_NE(copy->blockette_raw, blk->blockette_raw);
  EXPECT_EQ(std::string(copy->blockette_raw, 21), stages());
  sdblk_free(copy);
}

TEST(CopyOfABlock, CopyOutlivesTheNextBlock) {
  BlockReader reader("000001S " + stages() + "0110007 ");
  SDBlk *copy = sdblk_copy(reader.decode_next());
  reader.next();
  EXPECT_EQ(view_of(copy->contents).text, "{nstages=2 stages={stage=1 nresps=2 resps=11 12 } {} }");
  EXPECT_EQ(std::string(copy->blockette_raw, 21), stages());
  sdblk_free(copy);
}

TEST(CopyOfABlock, NullGivesNull) {
  LogCapture log;
  EXPECT_EQ(sdblk_copy(nullptr), nullptr);
  EXPECT_EQ(log.registered(), "");
}

TEST(CopyOfABlock, BlockWithoutContentsIsCopied) {
  SDBlk blk = {};
  blk.blockette_type = 50;
  SDBlk *copy = sdblk_copy(&blk);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->contents, nullptr);
  EXPECT_EQ(copy->blockette_raw, nullptr);
  EXPECT_EQ(copy->blockette_type, 50);
  sdblk_free(copy);
}

std::string data_record() {
  return DataRecord{.sta = "STA", .chan = "BHZ", .net = "XX"}.b1000(3, 1, 9).b1001(50, 0, 7).bytes(
      512);
}

TEST(CopyOfABlock, OfNegativeLengthFails) {
  std::string raw = "050";
  SDBlk block = {};
  block.blockette_raw = raw.data();
  block.blockette_length = -1;
  EXPECT_EQ(sdblk_copy(&block), nullptr);
  EXPECT_EQ(registered().rfind("sdblk_copy: malloc (blockette_raw,-1) error.\n", 0), 0U);
}

TEST(CopyOfABlock, ChainStaysWithTheSource) {
  BlockReader reader(data_record());
  const SDBlk *blk = reader.decode_next();
  SDBlk *copy = sdblk_copy(blk);
  EXPECT_EQ(copy->next, blk->next);
  EXPECT_EQ(copy->data_ptr, blk->data_ptr);
  sdblk_free(copy);
  EXPECT_EQ(blk->next->blockette_type, 1000);
  EXPECT_EQ(integer_of(blk->next->contents, "dlenp"), 9);
  EXPECT_EQ(blk->next->next->blockette_type, 1001);
}

TEST(CopyOfABlock, CopyMayBeReleasedAfterItsSource) {
  SDBlk *copy = nullptr;
  {
    BlockReader reader(data_record());
    copy = sdblk_copy(reader.decode_next());
  }
  EXPECT_EQ(text_of(copy->contents, "sta"), "STA");
  sdblk_free(copy);
}

TEST(CopyOfABlock, EachFailedAllocationIsNamedAndNothingStays) {
  LogCapture log;
  BlockReader reader("000001S " + stages());
  const SDBlk *blk = reader.decode_next();
  const std::string before = view_of(blk->contents).text;
  Arena::one_piece_per_chunk = true;
  std::vector<std::string> failures;
  for (bool failed = true; failed;) {
    SDBlk *copy = nullptr;
    {
      const FailingMemory memory(static_cast<long>(failures.size()) + 1);
      copy = sdblk_copy(blk);
      failed = FailingMemory::failed();
    }
    EXPECT_EQ(copy == nullptr, failed);
    sdblk_free(copy);
    failures.push_back(log.registered());
  }
  Arena::one_piece_per_chunk = false;
  ASSERT_GT(failures.size(), 4U);
  EXPECT_EQ(failures.back(), "");
  failures.pop_back();
  EXPECT_EQ(failures[0], "sdblk_copy: malloc (SDBlk," + std::to_string(sizeof(SDBlk)) +
                             ") error.\n    Cannot allocate memory\n");
  EXPECT_EQ(failures[1],
            "sdblk_copy: malloc (blockette_raw,21) error.\n    Cannot allocate memory\n");
  for (std::size_t i = 2; i < failures.size(); ++i) {
    EXPECT_TRUE(failures[i].ends_with("sdblk_copy: sdblk_copy_entry_arr(contents) error.\n")) << i;
  }
  const std::string refs = malloc_message("resps:entryc->value.ra", 2 * sizeof(SDBlkAbbrRef)) +
                           "sdblk_copy_entry_arr: sdblk_copy_entry_arr(stages:entryc->value.ea[0]) "
                           "error.\nsdblk_copy: sdblk_copy_entry_arr(contents) error.\n";
  EXPECT_EQ(std::count(failures.begin(), failures.end(), refs), 1);
  EXPECT_EQ(view_of(blk->contents).text, before);
}

TEST(ClearBlock, WhatWasReadIsGone) {
  BlockReader reader("000007S " + stages());
  SDBlk *blk = reader.decode_next();
  sdblk_clear(blk);
  EXPECT_EQ(blk->blockette_raw, nullptr);
  EXPECT_EQ(blk->blkdef, nullptr);
  EXPECT_EQ(blk->next, nullptr);
  ASSERT_NE(blk->contents, nullptr);
  EXPECT_EQ(countarr(blk->contents), 0);
  // The rest is filled by the parser.
  EXPECT_EQ(blk->logical_sequence, 7);
}

TEST(ClearBlock, DataRecordLosesItsChainAndItsPointer) {
  std::string bytes = DataRecord{.sta = "STA", .payload = "samples"}.b1000(3, 1, 9).bytes(512);
  BlockReader reader(bytes);
  SDBlk *blk = reader.decode_next();
  ASSERT_NE(blk->next, nullptr);
  ASSERT_EQ(blk->data_offset, 64);
  sdblk_clear(blk);
  EXPECT_EQ(blk->next, nullptr);
  EXPECT_EQ(blk->data_ptr, nullptr);
  EXPECT_EQ(blk->data_offset, 0);
  EXPECT_EQ(countarr(blk->contents), 0);
}

TEST(ClearBlock, BlockWithoutContentsGetsThem) {
  SDBlk blk = {};
  sdblk_clear(&blk);
  ASSERT_NE(blk.contents, nullptr);
  EXPECT_EQ(countarr(blk.contents), 0);
  freearr(blk.contents, nullptr);
}

TEST(ClearBlock, MayBeDoneTwice) {
  BlockReader reader("000007S " + stages());
  SDBlk *blk = reader.decode_next();
  sdblk_clear(blk);
  sdblk_clear(blk);
  EXPECT_EQ(countarr(blk->contents), 0);
}

// A block as a program makes it by hand, all from malloc.
SDBlk *block_by_hand(std::int32_t type) {
  SDBlk *blk = zeroed<SDBlk>(1);
  blk->blockette_type = type;
  blk->blockette_raw = text_of_own("0500007");
  blk->contents = newarr();
  add_text(blk->contents, "by hand");
  return blk;
}

TEST(FreeBlock, NullDoesNothing) {
  LogCapture log;
  sdblk_free(nullptr);
  sdblk_free_single(nullptr);
  sdblk_clear(nullptr);
  EXPECT_EQ(log.registered(), "");
}

TEST(FreeBlock, BlockMadeByHandGoesWithItsNext) {
  SDBlk *blk = block_by_hand(99);
  blk->next = block_by_hand(1000);
  // A checker of memory sees what stays behind.
  sdblk_free(blk);
}

TEST(ClearBlock, NextThatWasSetByHandIsReleased) {
  SDBlk *blk = block_by_hand(99);
  blk->next = block_by_hand(1000);
  sdblk_clear(blk);
  EXPECT_EQ(blk->next, nullptr);
  sdblk_free(blk);
  BlockReader reader("000007S " + stages());
  SDBlk *parsed = reader.next();
  parsed->next = block_by_hand(1000);
  sdblk_clear(parsed);
  EXPECT_EQ(parsed->next, nullptr);
}

TEST(FreeBlock, BlocketteOfAChainStaysWithItsRecord) {
  const DataRecord record = DataRecord{.time = {2021, 75}}.b100(20);
  BlockReader reader(record.bytes(512));
  const SDBlk *block = reader.decode_next();
  ASSERT_NE(block->next, nullptr);
  sdblk_free_single(block->next);
  sdblk_free(block->next);
  EXPECT_EQ(block->next->blockette_type, 100);
}

TEST(FreeBlock, SingleReleaseLeavesTheNextAlone) {
  SDBlk *next = block_by_hand(1000);
  SDBlk *blk = block_by_hand(99);
  blk->next = next;
  sdblk_free_single(blk);
  EXPECT_EQ(next->blockette_type, 1000);
  sdblk_free(next);
}

// A data record with two blockettes in its chain, decoded; its block is the test's to release.
class ChainTest : public testing::Test {
 protected:
  ~ChainTest() override { sdblk_closevol(vol_); }
  SDBlk *decode() {
    SDBlk *block = nullptr;
    EXPECT_EQ(sdblk_parseblk(vol_, &block), 0);
    EXPECT_EQ(sdblk_unstuffblk(block), 0);
    return block;
  }

  const std::string bytes_ = data_record();
  SDBlkVol *vol_ = sdblk_new(nullptr, bytes_.data(), 512, 0);
};

TEST(ParsedBlock, BytesThatAProgramTakesOverAreItsOwn) {
  BlockReader reader("000001S " + stages() + "0110009XX");
  SDBlk *blk = reader.decode_next();
  char *raw = blk->blockette_raw;
  blk->blockette_raw = nullptr;
  reader.next();
  EXPECT_EQ(std::string(raw), stages());
  EXPECT_STREQ(blk->blockette_raw, "0110009XX");
  std::free(raw);
}

TEST(ParsedBlock, BytesThatAProgramPutsThereAreReleased) {
  BlockReader reader("000001S " + stages() + "0110009XX");
  SDBlk *blk = reader.next();
  std::free(blk->blockette_raw);
  blk->blockette_raw = text_of_own("0110007");
  EXPECT_STREQ(reader.next()->blockette_raw, "0110009XX");
}

TEST(ParsedBlock, MayBeReleasedAfterItsVolume) {
  const std::string bytes = "000001A 0340016003M~~000001S " + stages();
  SDBlk *blk = nullptr;
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  ASSERT_GT(sdblk_parseblk(vol, &blk), 0);
  ASSERT_EQ(sdblk_unstuffblk(blk), 0);
  sdblk_closevol(vol);
  EXPECT_EQ(text_of(blk->contents, "name"), "M");
  sdblk_free(blk);
}

// A block of the program's own, all zero.
SDBlk *zero_block() { return zeroed<SDBlk>(1); }

TEST(ZeroBlock, IsFilledWithAControlBlockette) {
  const std::string bytes = "000001S " + stages() + "0110007 ";
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  SDBlk *blk = zero_block();
  EXPECT_EQ(sdblk_parseblk(vol, &blk), 21);
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(integer_of(blk->contents, "nstages"), 2);
  EXPECT_EQ(sdblk_parseblk(vol, &blk), 7);
  sdblk_free(blk);
  sdblk_closevol(vol);
}

TEST_F(ChainTest, ZeroBlockIsFilledWithADataRecord) {
  SDBlk *blk = zero_block();
  EXPECT_EQ(sdblk_parseblk(vol_, &blk), 0);
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(integer_of(blk->next->next->contents, "qual"), 50);
  sdblk_free(blk);
}

TEST_F(ChainTest, ZeroBlockOfADataRecordIsDecoded) {
  SDBlk *blk = zero_block();
  blk->blockette_type = SDBLK_DATA_RECORD;
  blk->data_ptr = bytes_.data();
  vol_->logical_length = 512;
  blk->vol = vol_;
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(text_of(blk->contents, "sta"), "STA");
  EXPECT_EQ(integer_of(blk->next->contents, "dlenp"), 9);
  sdblk_free(blk);
}

TEST(ZeroBlock, HasNothingToDecode) {
  LogCapture log;
  SDBlk *blk = zero_block();
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  blk->blockette_type = SDBLK_DATA_RECORD;
  blk->data_ptr = "000001D ";
  EXPECT_EQ(sdblk_unstuffblk(blk), -1);
  sdblk_free(blk);
}

TEST(ZeroBlock, WithoutAVolumeRefersToNothingAndDefinesNothing) {
  ASSERT_EQ(sdblk_blkdefs_init(), 0);
  SDBlk *blk = zero_block();
  blk->blockette_raw = text_of_own("03100160001N~000");
  blk->blockette_length = 16;
  blk->blockette_type = 31;
  blk->blkdef = seed_blkdefs_index[31];
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(integer_of(blk->contents, "uid"), 0);
  EXPECT_EQ(entry_of(blk->contents, "uid").ref, nullptr);
  sdblk_free(blk);
}

TEST(ZeroBlock, WithoutMemoryIsNotFilled) {
  LogCapture log;
  const std::string bytes = "000001S " + stages();
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  SDBlk *blk = zero_block();
  blk->contents = newarr();
  {
    const FailingMemory memory(1);
    EXPECT_EQ(sdblk_parseblk(vol, &blk), -1);
  }
  EXPECT_EQ(sdblk_parseblk(vol, &blk), 21);
  sdblk_free(blk);
  sdblk_closevol(vol);
}

TEST_F(ChainTest, SingleReleaseOfARecordLeavesItsChain) {
  SDBlk *record = decode();
  SDBlk *first = record->next;
  sdblk_free_single(record);
  EXPECT_EQ(integer_of(first->contents, "dlenp"), 9);
  EXPECT_EQ(integer_of(first->next->contents, "qual"), 50);
  sdblk_free(first);
}

TEST_F(ChainTest, BlockettesAreReleasedOneByOne) {
  SDBlk *record = decode();
  SDBlk *first = record->next;
  sdblk_free_single(record);
  SDBlk *second = first->next;
  sdblk_free_single(first);
  EXPECT_EQ(integer_of(second->contents, "qual"), 50);
  sdblk_free_single(second);
}

TEST_F(ChainTest, SingleReleaseOfAClearedRecordReleasesTheSpareBlockettes) {
  SDBlk *record = decode();
  sdblk_clear(record);
  sdblk_free_single(record);
  // The volume does not miss it.
  record = nullptr;
  EXPECT_EQ(sdblk_parseblk(vol_, &record), SDBLK_EOF);
}

}  // namespace
