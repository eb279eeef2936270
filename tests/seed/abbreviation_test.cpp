// The abbreviation dictionary.
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

TEST(Dictionary, AbbreviationIsKeptUnderItsKey) {
  BlockReader reader(one('A', unit(3)));
  reader.decode_next();
  const SDBlk *kept = abbreviation(reader, "uid:3");
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->blockette_type, 34);
  EXPECT_EQ(text_of(kept->contents, "name"), "M/S");
  EXPECT_EQ(text_of(kept->contents, "descr"), "Velocity");
  EXPECT_EQ(countarr(reader.vol()->abbrs), 1);
}

TEST(Dictionary, KeepsACopyOfItsOwn) {
  VolumeWriter writer(4096);
  BlockReader reader(writer.control('A', {unit(3), unit(4, "PA", "Pressure")}).bytes());
  const SDBlk *block = reader.decode_next();
  const SDBlk *kept = abbreviation(reader, "uid:3");
  ASSERT_NE(kept, nullptr);
  EXPECT_NE(kept, block);
  EXPECT_NE(kept->blockette_raw, block->blockette_raw);
  EXPECT_NE(entry_of(kept->contents, "name").value.s, entry_of(block->contents, "name").value.s);
  EXPECT_EQ(kept->next, nullptr);
  reader.decode_next();
  EXPECT_EQ(text_of(kept->contents, "name"), "M/S");
}

TEST(Dictionary, EveryAbbreviationHasItsKey) {
  struct Case {
    ControlBlockette blockette;
    const char *key;
  };
  const std::vector<Case> cases = {
      {ControlBlockette(30).var("Steim").digits(1, 4), "did:1"},
      {ControlBlockette(31).digits(2, 4), "cid:2"},
      {ControlBlockette(32).digits(3, 2), "sid:3"},
      {ControlBlockette(33).digits(4, 3), "gid:4"},
      {ControlBlockette(34).digits(5, 3), "uid:5"},
      {ControlBlockette(35).digits(6, 3), "bid:6"},
      {ControlBlockette(41).digits(41, 4), "rid:41"},
      {ControlBlockette(42).digits(42, 4), "rid:42"},
      {ControlBlockette(43).digits(43, 4), "rid:43"},
      {ControlBlockette(44).digits(44, 4), "rid:44"},
      {ControlBlockette(45).digits(45, 4), "rid:45"},
      {ControlBlockette(46).digits(46, 4), "rid:46"},
      {ControlBlockette(47).digits(47, 4), "rid:47"},
      {ControlBlockette(48).digits(48, 4), "rid:48"},
  };
  for (const Case &c : cases) {
    BlockReader reader(one('A', c.blockette));
    reader.decode_next();
    EXPECT_NE(abbreviation(reader, c.key), nullptr) << c.key;
  }
}

TEST(Dictionary, ReferenceFindsItsAbbreviation) {
  VolumeWriter writer(4096);
  writer.control('A', {unit(3), unit(4)});
  writer.control('S',
                 channel_with_subchannel("0000").digits(9, 3).var("").digits(3, 3).digits(5, 3));
  BlockReader reader(writer.bytes());
  reader.decode_next();
  reader.decode_next();
  const Arr *contents = reader.decode_next()->contents;
  EXPECT_EQ(entry_of(contents, "sunits").ref, abbreviation(reader, "uid:3"));
  EXPECT_NE(entry_of(contents, "sunits").ref, nullptr);
  EXPECT_EQ(entry_of(contents, "cunits").ref, nullptr) << "a code that nothing defines";
  EXPECT_EQ(entry_of(contents, "inst_gid").ref, nullptr) << "a code of another kind";
  EXPECT_EQ(entry_of(contents, "subchan").ref, nullptr) << "no code at all";
}

TEST(Dictionary, AbbreviationRefersToAnother) {
  VolumeWriter writer(4096);
  writer.control('A', {unit(3), ControlBlockette(31).raw("0007").raw("X").var("Gap").raw("003")});
  BlockReader reader(writer.bytes());
  reader.decode_next();
  reader.decode_next();
  const SDBlk *comment = abbreviation(reader, "cid:7");
  ASSERT_NE(comment, nullptr);
  EXPECT_EQ(entry_of(comment->contents, "uid").ref, abbreviation(reader, "uid:3"));
}

TEST(Dictionary, SecondDefinitionIsRefused) {
  VolumeWriter writer(4096);
  BlockReader reader(writer.control('A', {unit(3), unit(3, "PA", "Pressure")}).bytes());
  reader.decode_next();
  const LogCapture log;
  EXPECT_EQ(sdblk_unstuffblk(reader.next()), -1);
  EXPECT_EQ(registered(),
            "sdblk_unstuff_sblk: Abbreviation uid:3 already defined.\n"
            "sdblk_unstuffblk: sdblk_unstuff_blk error for B0034 at A:000001\n");
  EXPECT_EQ(text_of(abbreviation(reader, "uid:3")->contents, "name"), "M/S");
}

TEST(Dictionary, SameCodeOfAnotherKindIsNoSecondDefinition) {
  VolumeWriter writer(4096);
  writer.control('A', {unit(3), ControlBlockette(33).raw("003").var("Net")});
  BlockReader reader(writer.bytes());
  reader.decode_next();
  EXPECT_EQ(sdblk_unstuffblk(reader.next()), 0);
  EXPECT_EQ(countarr(reader.vol()->abbrs), 2);
}

TEST(Dictionary, BlocketteThatFailsIsNotKept) {
  BlockReader reader(one('A', ControlBlockette(48).raw("0009").var("GAIN").raw("one")));
  const LogCapture log;
  EXPECT_EQ(sdblk_unstuffblk(reader.next()), -1);
  EXPECT_EQ(countarr(reader.vol()->abbrs), 0);
}

TEST(Dictionary, WithoutACurrentBlockTheCopyFails) {
  Walk walk("7", {field("uid", 'D', 1, "#", SDBLK_ABBR_KEY)});
  const LogCapture log;
  EXPECT_EQ(walk.run(), -1);
  EXPECT_EQ(registered(), "sdblk_unstuff_sblk: sdblk_copy(abbr_ref) error.\n");
}

}  // namespace
