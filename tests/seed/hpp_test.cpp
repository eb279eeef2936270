// The layer for C++.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "seed/sdblk.hpp"
#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

std::string data(long number) {
  return DataRecord{.sta = "ABC"}.b1000(3, 1, 7).b100(20).bytes(128, number);
}
std::string control(const ControlBlockette &blockette) {
  return VolumeWriter(512).control('S', blockette).bytes();
}
sdblk::Volume::Options records_of(std::int32_t length) { return {length, SDBLK_KEEP_FIRST}; }

std::vector<std::string> keys_of(const sdblk::Fields &fields) {
  std::vector<std::string> keys;
  for (const sdblk::Field field : fields) keys.emplace_back(field.key());
  return keys;
}

TEST(CxxVolume, IsARangeOfBlocks) {
  const std::string bytes = data(1) + data(2);
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes);
  std::vector<std::int64_t> numbers;
  for (const sdblk::Block block : volume) numbers.push_back(block.number());
  EXPECT_EQ(numbers, (std::vector<std::int64_t>{0, 1}));
  EXPECT_FALSE(volume.next().has_value());
  EXPECT_EQ(volume.counts().records, 2);
  EXPECT_EQ(volume.size(), 256);
}

TEST(CxxVolume, ReportsFindingsAlsoAfterItMoved) {
  const std::string bytes = "xx" + data(1);
  Lines lines;
  sdblk::Volume first = sdblk::Volume::open_whole_bytes(
      bytes, {}, [&](const SDBlkFinding &finding) { lines.push_back(line_of(finding)); });
  sdblk::Volume volume = std::move(first);
  EXPECT_TRUE(volume.next().has_value());
  EXPECT_EQ(lines, (Lines{"garbage 0+2"}));
}

TEST(CxxVolume, OpensFilesInBothWays) {
  const command::ScratchDirectory folder;
  const std::string path = folder.file("v", data(1));
  EXPECT_TRUE(sdblk::Volume::open(path.c_str(), 128).next().has_value());
  EXPECT_TRUE(sdblk::Volume::open_whole(path.c_str()).next().has_value());
}

TEST(CxxVolume, ThrowsWhereItCannotBeOpened) {
  try {
    sdblk::Volume::open_whole("/no/such/volume");
    FAIL();
  } catch (const sdblk::Error &error) {
    EXPECT_STREQ(error.what(), "sdblk_open_whole: stat(/no/such/volume) error.");
    EXPECT_EQ(error.failure().code, SDBLK_NO_FAILURE);
  }
  std::size_t size = 0;
  EXPECT_EQ(elog_registered(0, &size), nullptr);
}

TEST(CxxVolume, ThrowsWhatStrictReadingFailsOn) {
  const std::string bytes = control(ControlBlockette(50).raw("DYNGAnot number"));
  sdblk::Volume volume = sdblk::Volume::open_bytes(bytes);
  const sdblk::Block block = *volume.next();
  try {
    block.decode();
    FAIL();
  } catch (const sdblk::Error &error) {
    EXPECT_STREQ(error.what(), "scan_double: Failed double input: 'not number'");
    EXPECT_STREQ(error.failure().field, "lat");
    EXPECT_EQ(error.failure().offset, 8);
  }
}

TEST(CxxVolume, EndsAtABlocketteOfLengthZero) {
  const std::string bytes =
      VolumeWriter(512).control('S', ControlBlockette(50).text_with_length(0)).bytes();
  sdblk::Volume volume = sdblk::Volume::open_bytes(bytes);
  EXPECT_TRUE(volume.next().has_value());
  EXPECT_THROW(volume.next(), sdblk::Error);
}

TEST(CxxBlock, HasItsFieldsInTheOrderOfTheCatalogue) {
  const std::string bytes = control(ControlBlockette(33).digits(7, 3).var(" Name "));
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  const sdblk::Block block = *volume.next();
  block.decode();
  EXPECT_EQ(keys_of(block.fields()), (std::vector<std::string>{"gid", "descr"}));
  EXPECT_EQ(block.field("gid")->integer(), 7);
  EXPECT_EQ(block.field("descr")->text(), "Name");
  EXPECT_EQ(block.field("descr")->bytes(), " Name ");
  EXPECT_FALSE(block.field("none").has_value());
  EXPECT_STREQ(block.name(), "Generic Abbreviation Blockette");
}

TEST(CxxBlock, AbsentFieldsAreLeftOut) {
  const std::string bytes = control(ControlBlockette(33).digits(7, 3));
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  const sdblk::Block block = *volume.next();
  block.decode();
  EXPECT_EQ(keys_of(block.fields()), (std::vector<std::string>{"gid"}));
}

TEST(CxxBlock, UnknownOnesHaveNoFields) {
  const std::string bytes = control(ControlBlockette(90).raw("xyz"));
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  const sdblk::Block block = *volume.next();
  block.decode();
  EXPECT_TRUE(keys_of(block.fields()).empty());
  EXPECT_STREQ(block.name(), "unknown blockette");
  EXPECT_EQ(block.bytes(), "0900010xyz");
}

TEST(CxxBlock, HasAChainAndSamples) {
  const std::string bytes = data(1);
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes);
  const sdblk::Block block = *volume.next();
  block.decode();
  std::vector<int> types;
  for (const sdblk::Block chained : block.chain()) types.push_back(chained.type());
  EXPECT_EQ(types, (std::vector<int>{1000, 100}));
  EXPECT_TRUE(block.is_data_record());
  EXPECT_EQ(block.samples().rate, 20.0);
}

TEST(CxxBlock, SamplesOfAControlBlocketteThrow) {
  const std::string bytes = control(ControlBlockette(33));
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  EXPECT_THROW(static_cast<void>(volume.next()->samples()), sdblk::Error);
}

TEST(CxxField, WithoutAValueIsNone) {
  const std::string bytes =
      control(ControlBlockette(50).fixed("ABC", 5).fixed("", 10).fixed("", 32));
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  const sdblk::Block block = *volume.next();
  block.decode();
  EXPECT_FALSE(block.field("lat")->real().has_value());
  EXPECT_FALSE(block.field("nchans")->integer().has_value());
}

TEST(CxxField, OfAnotherKindOrElementThrows) {
  const std::string bytes = control(ControlBlockette(33).digits(7, 3).var("Name"));
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  const sdblk::Block block = *volume.next();
  block.decode();
  EXPECT_THROW(static_cast<void>(block.field("descr")->integer()), std::logic_error);
  EXPECT_THROW(static_cast<void>(block.field("gid")->real()), std::logic_error);
  EXPECT_THROW(static_cast<void>(block.field("gid")->text()), std::logic_error);
  EXPECT_THROW(static_cast<void>(block.field("gid")->fields(0)), std::logic_error);
  EXPECT_THROW(static_cast<void>(block.field("gid")->integer(1)), std::out_of_range);
  EXPECT_THROW(static_cast<void>(block.field("gid")->integer(-1)), std::out_of_range);
}

TEST(CxxField, LeadsThroughGroupsToReferences) {
  VolumeWriter writer(512);
  writer.control('A', ControlBlockette(48).digits(3, 4).var("Gain").real(1).real(1).digits(0, 2));
  writer.control('S', ControlBlockette(60).raw("010102"
                                               "0003"
                                               "    "));
  const std::string bytes = writer.bytes();
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  volume.next()->decode();
  const sdblk::Block block = *volume.next();
  block.decode();
  std::vector<std::string> names;
  for (const sdblk::Field field : block.field("stages")->fields(0)) {
    if (field.kind() != SDBLK_REF_ARRAY) continue;
    EXPECT_EQ(field.integer(0), 3);
    EXPECT_FALSE(field.integer(1).has_value());
    EXPECT_FALSE(field.reference(1).has_value());
    names.emplace_back(field.reference(0)->field("name")->text());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"Gain"}));
}

TEST(CxxCopy, OutlivesTheNextBlock) {
  const std::string bytes = VolumeWriter(512)
                                .control('A', {ControlBlockette(33).digits(1, 3).var("one"),
                                               ControlBlockette(33).digits(2, 3).var("two")})
                                .bytes();
  sdblk::Volume volume = sdblk::Volume::open_whole_bytes(bytes, records_of(512));
  const sdblk::Block first = *volume.next();
  first.decode();
  const sdblk::Copy copy(first);
  volume.next()->decode();
  EXPECT_EQ(copy.block().field("descr")->text(), "one");
}

}  // namespace
