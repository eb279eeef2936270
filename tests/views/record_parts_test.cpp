#include "views/record_parts.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

using namespace tarvik;
using volume::ByteOrder;
using volume::DataRecord;

namespace {

// The block of a record, with its chain.
class Chained {
 public:
  explicit Chained(const DataRecord &record, std::size_t length = 256)
      : reader_(record.bytes(length)), block_(reader_.next()) {
    double start = 0;
    if (sdblk_chain(block_, &start) < 0) throw std::runtime_error("no record");
  }
  const SDBlk &operator*() const { return *block_; }

 private:
  WholeReader reader_;
  SDBlk *block_;
};

DataRecord record(ByteOrder order = ByteOrder::kBig) {
  DataRecord data = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  data.order = order;
  data.samples = 5;
  return data.b1000(3, 1, 8).b1001(100, 50, 7);
}

// Keeps all parts of a record: its name with "<", ">", and the position of each blockette.
void keep(RecordParts *parts, const DataRecord &record, const std::string &name,
          std::size_t length = 256) {
  const Chained chained(record, length);
  parts->find(*chained);
  std::string written = "...";
  std::size_t part = 0;
  const auto write = [&](const std::string &text) {
    if (parts->text(part).empty()) parts->note_new(part, written.size(), text.size());
    written += text;
    ++part;
  };
  write(name + "<");
  write(name + ">");
  int position = 0;
  for (const SDBlk *blk = (*chained).next; blk != nullptr; blk = blk->next) {
    write(name + std::to_string(position++));
  }
  parts->keep_new(written);
}

// What is found of a record, part by part; "?" is new.
std::string found(RecordParts *parts, const DataRecord &record, std::size_t length = 256) {
  const Chained chained(record, length);
  const bool all = parts->find(*chained);
  std::string text;
  std::size_t count = RecordParts::kChain;
  for (const SDBlk *blk = (*chained).next; blk != nullptr; blk = blk->next) ++count;
  for (std::size_t part = 0; part < count; ++part) {
    const std::string_view one = parts->text(part);
    text += (part > 0 ? " " : "") + (one.empty() ? "?" : std::string(one));
  }
  EXPECT_EQ(all, text.find('?') == std::string::npos);
  return text;
}

TEST(RecordParts, FixedSectionHasItsTimeAtFive) {
  EXPECT_EQ(RecordParts().time(), 4U);
  EXPECT_EQ(RecordParts().fixed_section().fields[4].def->key, std::string_view("time"));
}

TEST(RecordPartsFind, NothingIsKeptAtFirst) {
  RecordParts parts;
  EXPECT_EQ(found(&parts, record()), "? ? ? ?");
}

TEST(RecordPartsFind, SameRecordAtAnotherTime) {
  RecordParts parts;
  keep(&parts, record(), "a");
  DataRecord later = record();
  later.time = {2022, 1, 23, 59, 59, 9999};
  EXPECT_EQ(found(&parts, later), "a< a> a0 a1");
}

TEST(RecordPartsFind, PartThatIsNew) {
  RecordParts parts;
  keep(&parts, record(), "a");
  DataRecord other = record();
  other.net = "XY";
  EXPECT_EQ(found(&parts, other), "? a> a0 a1");
  other = record();
  other.samples = 6;
  EXPECT_EQ(found(&parts, other), "a< ? a0 a1");
  DataRecord timing = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  timing.samples = 5;
  EXPECT_EQ(found(&parts, timing.b1000(3, 1, 8).b1001(100, 51, 7)), "a< a> a0 ?");
}

TEST(RecordPartsFind, PartsMayBeOfDifferentRecords) {
  RecordParts parts;
  keep(&parts, record(), "a");
  DataRecord other = record();
  other.net = "XY";
  other.samples = 6;
  keep(&parts, other, "b");
  other.samples = 5;
  EXPECT_EQ(found(&parts, other), "b< a> a0 a1");
}

TEST(RecordPartsFind, SameBytesInAnotherByteOrderAreNew) {
  // Nothing but zeros after the time.
  DataRecord zeros = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  RecordParts parts;
  keep(&parts, zeros, "a");
  EXPECT_EQ(found(&parts, zeros), "a< a>");
  zeros.order = ByteOrder::kLittle;
  EXPECT_EQ(found(&parts, zeros), "? ?");
}

TEST(RecordPartsFind, SameBlocketteAtAnotherPlaceIsNew) {
  DataRecord first = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  first.forced_count = 1;
  first.b1001(100, 50, 7);
  RecordParts parts;
  keep(&parts, first, "a");
  DataRecord second = first;
  second.chain.insert(second.chain.begin(), record().chain.front());
  keep(&parts, second, "b");
  EXPECT_EQ(found(&parts, first), "a< a> a0");
  EXPECT_EQ(found(&parts, second), "a< a> b0 b1");
}

TEST(RecordPartsFind, BlocketteThatIsCutIsNew) {
  // Of the second one the record has six bytes.
  RecordParts parts;
  keep(&parts, record(), "a");
  std::string bytes = record().bytes(256).substr(0, 62);
  WholeReader reader(bytes);
  SDBlk *block = reader.next();
  double start = 0;
  ASSERT_GE(sdblk_chain(block, &start), 0);
  ASSERT_NE(block->next->next, nullptr);
  EXPECT_FALSE(parts.find(*block));
  EXPECT_EQ(parts.text(RecordParts::kBeforeTime), "a<");
  EXPECT_EQ(parts.text(RecordParts::kChain), "a0");
  EXPECT_EQ(parts.text(RecordParts::kChain + 1), "");
}

TEST(RecordPartsFind, BlocketteWhoseTypeIsCutIsAlwaysNew) {
  // 1000 at byte 48, 1001 at 100, and from there to 49, within the type of the first.
  std::string bytes = DataRecord{.order = ByteOrder::kLittle, .forced_first_offset = 48}.bytes(256);
  bytes.replace(48, 5, std::string("\xE8\x03\x64\x00\x00", 5));
  bytes.replace(100, 4, std::string("\xE9\x03\x31\x00", 4));
  RecordParts parts;
  for (const std::string_view expected : {"", "b"}) {
    WholeReader reader(bytes);
    SDBlk *block = reader.next();
    double start = 0;
    ASSERT_EQ(sdblk_chain(block, &start), 1);
    EXPECT_EQ(block->next->blockette_length, 1);
    EXPECT_FALSE(parts.find(*block));
    EXPECT_EQ(parts.text(RecordParts::kChain), "");
    EXPECT_EQ(parts.text(RecordParts::kChain + 1), expected);
    parts.note_new(RecordParts::kChain, 0, 1);
    parts.note_new(RecordParts::kChain + 1, 1, 1);
    parts.keep_new("ab");
  }
}

TEST(RecordPartsFind, BlocketteWithinTheHeaderIsNoPartOfTheFixedSection) {
  // A chain from 48 to 19, within the time, where 1 stands as the next, and to 1, where the number of
  // the record makes a 57, of 18 bytes up to the one before.
  DataRecord record = {.sta = "AAAAA", .chan = "BH", .net = "0X"};
  record.time = {2048, 260};
  record.b1000(3, 1, 9).chain.back().forced_next = 19;
  const std::string bytes = record.bytes(512).replace(0, 6,
                                                      std::string(" \0"
                                                                  "9\0\0 ",
                                                                  6));
  // The same 18 bytes after the time.
  const std::string other = DataRecord{}.bytes(512).replace(30, 18, bytes, 1, 18);
  RecordParts parts;
  WholeReader reader(other + bytes);
  double start = 0;
  SDBlk *block = reader.next();
  ASSERT_GE(sdblk_chain(block, &start), 0);
  parts.find(*block);
  parts.note_new(RecordParts::kAfterTime, 0, 4);
  parts.keep_new("kept");
  block = reader.next();
  ASSERT_EQ(sdblk_chain(block, &start), 1);
  const SDBlk *third = block->next->next->next;
  EXPECT_EQ(third->blockette_type, 57);
  EXPECT_EQ(third->blockette_length, 18);
  EXPECT_FALSE(parts.find(*block));
  EXPECT_EQ(parts.text(RecordParts::kChain + 2), "");
}

TEST(RecordPartsFind, TextsUnknownTypesAndLongOnesAreAlwaysNew) {
  for (const unsigned type : {2000U, 1500U, 500U}) {
    DataRecord other = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
    other.blockette(type, std::string(200, ' '));
    RecordParts parts;
    keep(&parts, other, "a", 512);
    EXPECT_EQ(found(&parts, other, 512), "a< a> ?") << type;
  }
}

TEST(RecordPartsFind, WhatStandsAfterManyBlockettesIsNew) {
  DataRecord many = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  for (int i = 0; i < 14; ++i) many.b1001(100, 50, 7);
  RecordParts parts;
  keep(&parts, many, "a");
  EXPECT_EQ(found(&parts, many).find('?'), std::string::npos);
  many.b1001(100, 50, 7);
  keep(&parts, many, "b");
  EXPECT_TRUE(found(&parts, many).ends_with(" ?"));
}

TEST(RecordPartsKeep, TextsThatWereFoundStay) {
  RecordParts parts;
  keep(&parts, record(), "a");
  DataRecord other = record();
  other.net = "XY";
  keep(&parts, other, "b");
  EXPECT_EQ(found(&parts, other), "b< a> a0 a1");
  EXPECT_EQ(found(&parts, record()), "a< a> a0 a1");
}

TEST(RecordPartsClear, ForgetsAll) {
  RecordParts parts;
  keep(&parts, record(), "a");
  parts.clear();
  EXPECT_EQ(found(&parts, record()), "? ? ? ?");
}

// Many texts make room for others, and those of one record at the same time.
TEST(RecordPartsKeep, RoomIsMadeBetweenRecords) {
  RecordParts parts;
  for (int i = 0; i < 5000; ++i) {
    DataRecord other = record();
    other.samples = static_cast<unsigned>(i);
    keep(&parts, other, std::to_string(i) + ".");
    const std::string after = std::to_string(i) + ".>";
    ASSERT_NE(found(&parts, other).find(after), std::string::npos);
  }
}

}  // namespace
