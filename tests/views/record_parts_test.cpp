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
  parts->keep_before_time(*chained, name + "<");
  parts->keep_after_time(*chained, name + ">");
  int position = 0;
  for (const SDBlk *blk = (*chained).next; blk != nullptr; blk = blk->next) {
    parts->keep_chained(*chained, *blk, name + std::to_string(position++));
  }
}

// What is found of a record, or "new".
std::string found(RecordParts *parts, const DataRecord &record, std::size_t length = 256) {
  const Chained chained(record, length);
  if (!parts->find(*chained)) return "new";
  std::string text = std::string(parts->before_time()) + " " + std::string(parts->after_time());
  std::size_t place = 0;
  for (const SDBlk *blk = (*chained).next; blk != nullptr; blk = blk->next) {
    text += " " + std::string(parts->chained(place++));
  }
  return text;
}

TEST(RecordParts, FixedSectionHasItsTimeAtFive) {
  EXPECT_EQ(RecordParts().time(), 4U);
  EXPECT_EQ(RecordParts().fixed_section().fields[4].def->key, std::string_view("time"));
}

TEST(RecordPartsFind, NothingIsKeptAtFirst) {
  RecordParts parts;
  EXPECT_EQ(found(&parts, record()), "new");
}

TEST(RecordPartsFind, SameRecordAtAnotherTime) {
  RecordParts parts;
  keep(&parts, record(), "a");
  DataRecord later = record();
  later.time = {2022, 1, 23, 59, 59, 9999};
  EXPECT_EQ(found(&parts, later), "a< a> a0 a1");
}

TEST(RecordPartsFind, AnyPartThatIsNewMakesTheRecordNew) {
  RecordParts parts;
  keep(&parts, record(), "a");
  DataRecord other = record();
  other.net = "XY";
  EXPECT_EQ(found(&parts, other), "new");
  other = record();
  other.samples = 6;
  EXPECT_EQ(found(&parts, other), "new");
  DataRecord timing = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  timing.samples = 5;
  EXPECT_EQ(found(&parts, timing.b1000(3, 1, 8).b1001(100, 51, 7)), "new");
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
  EXPECT_EQ(found(&parts, zeros), "new");
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
}

TEST(RecordPartsFind, TextsUnknownTypesAndLongOnesAreAlwaysNew) {
  for (const unsigned type : {2000U, 1500U, 500U}) {
    DataRecord other = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
    other.blockette(type, std::string(200, ' '));
    RecordParts parts;
    keep(&parts, other, "a", 512);
    EXPECT_EQ(found(&parts, other, 512), "new") << type;
  }
}

TEST(RecordPartsFind, RecordOfManyBlockettesIsNew) {
  DataRecord many = {.sta = "DYNGA", .chan = "BHZ", .net = "XX"};
  for (int i = 0; i < 14; ++i) many.b1001(100, 50, 7);
  RecordParts parts;
  keep(&parts, many, "a");
  EXPECT_NE(found(&parts, many), "new");
  many.b1001(100, 50, 7);
  keep(&parts, many, "b");
  EXPECT_EQ(found(&parts, many), "new");
}

}  // namespace
