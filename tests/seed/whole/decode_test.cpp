// Blocks that are read whole: what is decoded, and the order of its notes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "seed/whole.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using volume::BinaryFields;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

std::string put16(std::string bytes, std::size_t at, unsigned value) {
  return bytes.replace(at, 2, BinaryFields(ByteOrder::kBig).u16(value).bytes());
}

// ---- blocks that a program has made by hand ----

SDBlk *hand_made(SDBlkVol *vol) {
  auto *block = static_cast<SDBlk *>(std::calloc(1, sizeof(SDBlk)));
  block->vol = vol;
  return block;
}

TEST(UnstuffWhole, ZeroFilledBlockHasNoFields) {
  WholeReader reader("");
  SDBlk *block = hand_made(reader.vol());
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(countarr(block->contents), 0);
  EXPECT_EQ(sdblk_block_number(block), -1);
  block->blkdef = &seed_blkdefs[0];
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(countarr(block->contents), 0);
  sdblk_free(block);
}

TEST(UnstuffWhole, RawBytesSetByHandAreDecoded) {
  WholeReader reader("");
  SDBlk *block = hand_made(reader.vol());
  block->blkdef = &seed_blkdefs[8];
  ASSERT_STREQ(block->blkdef->id, "B0033");
  block->blockette_length = 18;
  block->blockette_raw = strdup("0330018001Network~");
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(integer_of(block->contents, "gid"), 1);
  EXPECT_EQ(text_of(block->contents, "descr"), "Network");
  EXPECT_EQ(reader.lines(), (Lines{}));
  sdblk_free(block);
}

TEST(UnstuffWhole, DataBlockTooShortForARecordHasNoFields) {
  WholeReader reader("");
  SDBlk *block = hand_made(reader.vol());
  block->blockette_type = SDBLK_DATA_RECORD;
  block->blkdef = &seed_blkdefs[37];
  ASSERT_STREQ(block->blkdef->id, "DATA");
  block->data_ptr = "000001D ";
  block->blockette_length = 8;
  EXPECT_EQ(sdblk_unstuffblk(block), 0);
  EXPECT_EQ(countarr(block->contents), 0);
  sdblk_free(block);
}

// ---- control blockettes ----

TEST(UnstuffWhole, DecodesWhatACutBlocketteHas) {
  // Latitude and longitude take bytes 12 to 32 of the blockette; it ends within the latter.
  const std::string text = ControlBlockette(50).raw("DYNGA+64.993100-016.").text_with_length(117);
  WholeReader reader(VolumeWriter(35).control('S', text.substr(0, 27)).bytes(), 35);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(reader.lines(), (Lines{"cut @8 block 0", "value @8 block 0 lon"}));
  EXPECT_EQ(text_of(block->contents, "sta"), "DYNGA");
  EXPECT_EQ(real_of(block->contents, "lat"), 64.9931);
  EXPECT_EQ(countarr(block->contents), 3);
}

TEST(UnstuffWhole, BlocketteIsCutWhereOneByteIsMissing) {
  // The record has 57 bytes after its header.
  const auto notes = [](long length) {
    const std::string text =
        ControlBlockette(90).raw(std::string(50, 'x')).text_with_length(length);
    return WholeReader(VolumeWriter(65).control('S', text).bytes(), 65).read_all().lines();
  };
  EXPECT_EQ(notes(57), (Lines{"block 0: S 90 @8"}));
  EXPECT_EQ(notes(58), (Lines{"block 0: S 90 @8", "cut @8 block 0"}));
}

TEST(UnstuffWhole, CutHasASentence) {
  const std::string text = ControlBlockette(90).raw("xxx").text_with_length(117);
  EXPECT_EQ(WholeReader(VolumeWriter(35).control('S', text).bytes(), 35).read_all().text(),
            "the blockette has 27 bytes of the 117 that it states");
}

TEST(UnstuffWhole, BlocketteOfNothingButItsPrefixHasNoFields) {
  WholeReader reader(VolumeWriter(64).control('S', ControlBlockette(50)).bytes(), 64);
  EXPECT_EQ(countarr(reader.decode_next()->contents), 0);
  EXPECT_EQ(reader.lines(), (Lines{}));
}

TEST(UnstuffWhole, UnknownBlocketteHasNoFields) {
  WholeReader reader(VolumeWriter(64).control('S', ControlBlockette(90).raw("abc")).bytes(), 64);
  EXPECT_EQ(countarr(reader.decode_next()->contents), 0);
}

TEST(UnstuffWhole, DecodingAgainGivesTheSameFieldsAndNoFurtherNotes) {
  WholeReader reader(
      VolumeWriter(64).control('A', ControlBlockette(34).raw("x12").var("M").var("")).bytes(), 64);
  SDBlk *block = reader.decode_next();
  EXPECT_EQ(reader.lines(), (Lines{"value @8 block 0 uid"}));
  WholeReader::decode(block);
  EXPECT_EQ(reader.lines().size(), 1U);
  EXPECT_EQ(text_of(block->contents, "name"), "M");
  EXPECT_EQ(countarr(block->contents), 3);
}

TEST(UnstuffWhole, DecodingAgainDefinesNothingAgain) {
  WholeReader reader(
      VolumeWriter(64).control('A', ControlBlockette(34).digits(1, 3).var("M").var("")).bytes(),
      64);
  SDBlk *block = reader.decode_next();
  WholeReader::decode(block);
  EXPECT_EQ(reader.lines(), (Lines{}));
  EXPECT_EQ(sdblk_definitions(reader.vol(), sdblk_definition_of(reader.vol(), "uid", 1)), 1);
}

// ---- data records ----

TEST(UnstuffWhole, DecodesTheFixedSection) {
  for (const ByteOrder order : {ByteOrder::kBig, ByteOrder::kLittle}) {
    DataRecord record{.sta = "ABC", .loc = "10", .chan = "BHZ", .net = "YZ", .order = order};
    record.time = {1970, 1, 0, 0, 1, 5000};
    record.rate_factor = -10;
    record.time_correction = -7;
    record.samples32({1, 2, 3});
    WholeReader reader(record.bytes(128));
    const SDBlk *block = reader.decode_next();
    EXPECT_EQ(block->big_endian != 0, order == ByteOrder::kBig);
    EXPECT_EQ(text_of(block->contents, "sta"), "ABC");
    EXPECT_EQ(text_of(block->contents, "loc"), "10");
    EXPECT_EQ(text_of(block->contents, "chan"), "BHZ");
    EXPECT_EQ(text_of(block->contents, "net"), "YZ");
    EXPECT_EQ(real_of(block->contents, "time"), 1.5);
    EXPECT_EQ(integer_of(block->contents, "nsamp"), 3);
    EXPECT_EQ(integer_of(block->contents, "srate_factor"), -10);
    EXPECT_EQ(integer_of(block->contents, "tcor"), -7);
    EXPECT_EQ(block->data_offset, 64);
    EXPECT_EQ(block->next, nullptr);
    EXPECT_EQ(reader.lines(), (Lines{}));
  }
}

TEST(UnstuffWhole, TextOfADataRecordIsCutAtTheFirstNul) {
  std::string bytes = DataRecord{.sta = "ABCDE", .loc = "10"}.bytes(64);
  bytes[10] = '\0';
  bytes[13] = '\t';
  WholeReader reader(bytes);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(text_of(block->contents, "sta"), "AB");
  EXPECT_EQ(text_of(block->contents, "loc"), "0");
}

// The day and the year make sense in both orders, the ten-thousandths too.
std::string undecided() { return DataRecord{.time = {2056, 257}}.bytes(64); }

TEST(UnstuffWhole, OrderThatNothingDecidesIsNotedFirst) {
  std::string bytes = undecided();
  bytes[24] = 23;
  bytes = put16(bytes, 46, 62);  // a chain that leads to where two bytes are
  WholeReader reader(bytes);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(reader.lines(), (Lines{"order @0 block 0", "chain @0 block 0"}));
  EXPECT_EQ(block->big_endian, 1);
}

TEST(UnstuffWhole, FirstNoteIsTheOrder) {
  WholeReader reader(undecided());
  reader.decode_next();
  EXPECT_EQ(reader.text(), "the byte order cannot be deduced; the high byte is taken to be first");
}

TEST(UnstuffWhole, WordOrderOfBlockette1000IsThatOfTheSamplesOnly) {
  EXPECT_EQ(WholeReader(DataRecord{.order = ByteOrder::kLittle}.b1000(3, 1, 7).bytes(128))
                .decode_next()
                ->big_endian,
            0);
  EXPECT_EQ(WholeReader(DataRecord{}.b1000(3, 0, 7).bytes(128)).decode_next()->big_endian, 1);
}

// ---- chains ----

TEST(UnstuffWhole, ChainHasABlockEach) {
  const DataRecord record = DataRecord{.time = {1970}}.b1000(3, 1, 8).b100(20).b405({1});
  WholeReader reader("x" + record.bytes(256));
  const SDBlk *block = reader.decode_next();
  const SDBlk *first = block->next;
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->blockette_type, 1000);
  EXPECT_EQ(first->file_offset, 1 + 48);
  EXPECT_EQ(first->blockette_length, 8);
  EXPECT_EQ(integer_of(first->contents, "dlenp"), 8);
  const SDBlk *second = first->next;
  EXPECT_EQ(second->blockette_type, 100);
  EXPECT_EQ(real_of(second->contents, "samprate"), 20.0);
  const SDBlk *third = second->next;
  EXPECT_EQ(third->blockette_type, 405);
  // To the record's end.
  EXPECT_EQ(third->blockette_length, 256 - (third->file_offset - 1));
  EXPECT_EQ(third->next, nullptr);
  EXPECT_EQ(sdblk_block_number(third), 0);
  EXPECT_EQ(reader.lines(), (Lines{"garbage 0+1"}));
}

TEST(UnstuffWhole, EachEndsWhereTheNextHigherOneBegins) {
  // 100, then back to 60, then on to 200.
  std::string bytes = DataRecord{.forced_first_offset = 100}.bytes(256);
  bytes = put16(put16(bytes, 100, 3000), 102, 60);
  bytes = put16(put16(bytes, 60, 3001), 62, 200);
  bytes = put16(put16(bytes, 200, 3002), 202, 0);
  WholeReader reader(bytes);
  std::vector<std::pair<std::int64_t, int>> places;
  for (const SDBlk *blk = reader.decode_next()->next; blk != nullptr; blk = blk->next) {
    places.emplace_back(blk->file_offset, blk->blockette_length);
  }
  const std::vector<std::pair<std::int64_t, int>> expected = {{100, 100}, {60, 40}, {200, 56}};
  EXPECT_EQ(places, expected);
}

TEST(UnstuffWhole, BlocketteThatAnotherCutsShortDecodesWhatIsLeft) {
  // A blockette 100 whose rate would be the four bytes from 52 on; another begins at 54.
  std::string bytes = DataRecord{.forced_first_offset = 48}.bytes(64);
  bytes = put16(put16(bytes, 48, 100), 50, 54);
  bytes = put16(put16(bytes, 54, 1001), 56, 0);
  WholeReader reader(bytes);
  const SDBlk *block = reader.decode_next();
  EXPECT_EQ(reader.lines(), (Lines{"value @0 block 0 blockettes[0].samprate"}));
  EXPECT_EQ(block->next->blockette_length, 6);
  EXPECT_EQ(countarr(block->next->contents), 1);
  EXPECT_FALSE(sdblk_has_value(&entry_of(block->next->contents, "samprate")));
}

TEST(UnstuffWhole, BlocketteMayBeginInTheFirstFourBytesOfAnother) {
  // That at 48 has its type and two bytes of its next offset, 50, which are the type of another.
  std::string bytes = DataRecord{.forced_first_offset = 48}.bytes(128);
  bytes = put16(put16(bytes, 48, 100), 50, 50);
  WholeReader reader(bytes);
  const SDBlk *first = reader.decode_next()->next;
  EXPECT_EQ(first->blockette_type, 100);
  EXPECT_EQ(first->blockette_length, 2);
  EXPECT_EQ(countarr(first->contents), 0);
  const SDBlk *second = first->next;
  EXPECT_EQ(second->blockette_type, 50);
  EXPECT_EQ(second->blockette_length, 128 - 50);
  EXPECT_EQ(text_of(second->contents, "sta"), "");
  EXPECT_EQ(second->next, nullptr);
  EXPECT_EQ(reader.lines(), (Lines{}));
}

TEST(UnstuffWhole, ChainStaysInItsRecordAlsoWhereTheFileGoesOn) {
  const auto chain_at = [](unsigned offset) {
    return DataRecord{.forced_first_offset = offset}.bytes(128) + DataRecord{}.bytes(128, 2);
  };
  WholeReader inside(chain_at(124));
  EXPECT_NE(inside.decode_next()->next, nullptr);
  EXPECT_EQ(inside.lines(), (Lines{}));
  WholeReader across(chain_at(125));
  EXPECT_EQ(across.decode_next()->next, nullptr);
  EXPECT_EQ(across.lines(), (Lines{"chain @0 block 0"}));
  WholeReader beyond(chain_at(128));
  EXPECT_EQ(beyond.decode_next()->next, nullptr);
  EXPECT_EQ(beyond.lines(), (Lines{"chain @0 block 0"}));
}

TEST(UnstuffWhole, BlocketteOfFourBytesHasNoFields) {
  std::string bytes = DataRecord{.forced_first_offset = 60}.bytes(64);
  bytes = put16(bytes, 60, 100);
  WholeReader reader(bytes);
  EXPECT_EQ(countarr(reader.decode_next()->next->contents), 0);
  EXPECT_EQ(reader.lines(), (Lines{}));
}

TEST(UnstuffWhole, TypesWithoutADefinitionHaveNoFields) {
  for (const unsigned type : {0U, 7U, 1002U, 2047U, 2048U, 65535U}) {
    WholeReader reader(DataRecord{}.blockette(type, "some bytes").b100(20).bytes(128));
    const SDBlk *first = reader.decode_next()->next;
    EXPECT_EQ(first->blockette_type, static_cast<std::int32_t>(type));
    EXPECT_EQ(first->blkdef, nullptr);
    EXPECT_EQ(countarr(first->contents), 0);
    EXPECT_EQ(first->next->blockette_type, 100);
    EXPECT_EQ(reader.lines(), (Lines{}));
  }
}

TEST(UnstuffWhole, ControlTypesInAChainHaveTheirFields) {
  WholeReader reader(DataRecord{}.blockette(33, "001text~").bytes(128));
  const SDBlk *first = reader.decode_next()->next;
  EXPECT_EQ(text_of(first->contents, "descr"), "text");
}

TEST(UnstuffWhole, RefusedOffsetIsNotedAfterTheFieldsOfTheChain) {
  std::string bytes = DataRecord{.forced_first_offset = 48}.bytes(64);
  bytes = put16(put16(bytes, 48, 100), 50, 54);
  bytes = put16(put16(bytes, 54, 1001), 56, 48);
  WholeReader reader(bytes);
  reader.decode_next();
  EXPECT_EQ(reader.lines(), (Lines{"value @0 block 0 blockettes[0].samprate", "chain @0 block 0"}));
  EXPECT_EQ(reader.text(), "the chain of data blockettes leads to 48, where none is taken");
}

TEST(UnstuffWhole, NotesOfAChainHaveTheOffsetOfTheirRecord) {
  // A blockette 100 with a byte of its rate, and one from which the chain leads out of the record.
  const DataRecord lost =
      DataRecord{}.b1000(3, 1, 7).blockette(100, "\x41").blockette(3000, "", 9999);
  EXPECT_EQ(lines_of(DataRecord{}.b1000(3, 1, 7).bytes(128) + lost.bytes(128, 2)),
            (Lines{"block 0: D 99 @0", "block 1: D 99 @128",
                   "value @128 block 1 blockettes[1].samprate", "chain @128 block 1"}));
}

TEST(UnstuffWhole, PathOfARepetitionInAChainHasBothIndices) {
  // A blockette 54 of one numerator, whose error is unreadable; NULs follow it in the record.
  const DataRecord record = DataRecord{}.blockette(54, "A010010020001 1.00000E+00         bad");
  WholeReader reader(record.bytes(128));
  reader.decode_next();
  EXPECT_EQ(reader.lines(), (Lines{"value @0 block 0 blockettes[0].nums[0].coef_err",
                                   "short @0 block 0 blockettes[0].dens"}));
}

TEST(UnstuffWhole, LongChainIsTakenUpToItsBound) {
  std::string bytes = DataRecord{.forced_first_offset = 48}.bytes(8192);
  for (unsigned i = 0; i < 1100; ++i) {
    const unsigned at = 48 + 4 * i;
    bytes = put16(put16(bytes, at, 3000), at + 2, at + 4);
  }
  WholeReader reader(bytes, 8192);
  int count = 0;
  for (const SDBlk *blk = reader.decode_next()->next; blk != nullptr; blk = blk->next) ++count;
  EXPECT_EQ(count, 1024);
  EXPECT_EQ(reader.lines(), (Lines{"chain @0 block 0"}));
}

TEST(UnstuffWhole, ChainOfTheNextRecordIsItsOwn) {
  const std::string bytes = DataRecord{}.b1000(3, 1, 7).b100(20).bytes(128) +
                            DataRecord{}.b1000(3, 1, 7).bytes(128, 2) +
                            DataRecord{}.b100(20).b1000(3, 1, 7).bytes(128, 3);
  WholeReader reader(bytes);
  EXPECT_NE(reader.decode_next()->next->next, nullptr);
  EXPECT_EQ(reader.decode_next()->next->next, nullptr);
  EXPECT_EQ(reader.decode_next()->next->blockette_type, 100);
}

// ---- chains without fields ----

// What sdblk_chain says of the first block of some bytes.
struct Chained {
  explicit Chained(const std::string &bytes) : reader(bytes), block(reader.next()) {
    result = sdblk_chain(block, &start);
  }
  WholeReader reader;
  SDBlk *block;
  double start = 0;
  int result;
};

TEST(ChainWhole, HangsTheBlockettesOnTheRecordWithoutFields) {
  const Chained chained(DataRecord{}.b1000(3, 1, 8).b100(20).bytes(256));
  EXPECT_EQ(chained.result, 1);
  EXPECT_EQ(countarr(chained.block->contents), 0);
  const SDBlk *first = chained.block->next;
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->blockette_type, 1000);
  EXPECT_EQ(first->file_offset, 48);
  EXPECT_EQ(first->blockette_length, 8);
  EXPECT_EQ(countarr(first->contents), 0);
  const SDBlk *second = first->next;
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->blockette_type, 100);
  EXPECT_EQ(second->blockette_length, 256 - 56);
  EXPECT_EQ(second->next, nullptr);
}

TEST(ChainWhole, GivesTheStartTimeInEitherByteOrder) {
  for (const ByteOrder order : {ByteOrder::kBig, ByteOrder::kLittle}) {
    const Chained chained(
        DataRecord{.time = {2021, 75, 6, 15, 52, 6000}, .order = order}.bytes(64));
    EXPECT_EQ(chained.result, 1);
    EXPECT_DOUBLE_EQ(chained.start, 1615875352.6);
    EXPECT_EQ(chained.block->big_endian, order == ByteOrder::kBig ? 1 : 0);
  }
}

TEST(ChainWhole, SaysThatTheByteOrderWillBeNotedAndNotesNothing) {
  const Chained chained(undecided());
  EXPECT_EQ(chained.result, 0);
  EXPECT_EQ(chained.reader.lines(), (Lines{}));
}

TEST(ChainWhole, SaysThatTheChainWillBeNotedAndNotesNothing) {
  DataRecord record = DataRecord{}.b100(20);
  record.chain.back().forced_next = 9999;
  const Chained chained(record.bytes(64));
  EXPECT_EQ(chained.result, 0);
  EXPECT_NE(chained.block->next, nullptr);
  EXPECT_EQ(chained.reader.lines(), (Lines{}));
}

// No record of a file is without a start time, for its header is known by it.
TEST(ChainWhole, SaysThatTheStartTimeWillBeNoted) {
  WholeReader reader("");
  SDBlk *block = hand_made(reader.vol());
  std::string bytes = DataRecord{}.bytes(64);
  bytes[24] = 24;
  block->blockette_type = SDBLK_DATA_RECORD;
  block->data_ptr = bytes.data();
  block->blockette_length = 64;
  double start = 0;
  EXPECT_EQ(sdblk_chain(block, &start), 0);
  EXPECT_EQ(start, SDBLK_NO_TIME);
  sdblk_free(block);
}

TEST(ChainWhole, DecodingAfterItGivesAllAndNotesOnce) {
  DataRecord record = DataRecord{.sta = "ABC"}.b100(20).b1000(3, 1, 8);
  record.chain.back().forced_next = 9999;
  Chained chained(record.bytes(256));
  WholeReader::decode(chained.block);
  EXPECT_EQ(text_of(chained.block->contents, "sta"), "ABC");
  ASSERT_NE(chained.block->next, nullptr);
  EXPECT_EQ(real_of(chained.block->next->contents, "samprate"), 20.0);
  ASSERT_NE(chained.block->next->next, nullptr);
  EXPECT_EQ(chained.block->next->next->next, nullptr);
  EXPECT_EQ(chained.reader.lines(), (Lines{"chain @0 block 0"}));
}

TEST(ChainWhole, TakesTheFieldsOffARecordThatWasDecoded) {
  Chained chained(DataRecord{}.b100(20).bytes(64));
  WholeReader::decode(chained.block);
  EXPECT_EQ(sdblk_chain(chained.block, &chained.start), 1);
  EXPECT_EQ(countarr(chained.block->contents), 0);
  EXPECT_EQ(countarr(chained.block->next->contents), 0);
  EXPECT_EQ(chained.block->next->next, nullptr);
}

TEST(ChainWhole, FailsForABlockette) {
  Chained chained(VolumeWriter(64).control('S', ControlBlockette(77).raw("x")).bytes());
  EXPECT_EQ(chained.result, -1);
  EXPECT_NE(registered().find("sdblk_chain: B0077 at S:000001 is no data record"),
            std::string::npos);
}

TEST(ChainWhole, FailsForAVolumeThatIsReadStrictly) {
  BlockReader reader(DataRecord{.sta = "ABC"}.b1000(3, 1, 8).bytes(256), 256);
  double start = 0;
  EXPECT_EQ(sdblk_chain(reader.next(), &start), -1);
  EXPECT_NE(registered().find("sdblk_chain: B0099 at D:000001 is not read whole"),
            std::string::npos);
}

TEST(ChainWhole, EachAllocationThatIsRefusedGivesAMessageAndFailure) {
  const std::string bytes = DataRecord{}.b1000(3, 1, 8).b100(20).bytes(256);
  long n = 1;
  for (;; ++n) {
    WholeReader reader(bytes);
    SDBlk *block = reader.next();
    double start = 0;
    const FailingMemory memory(n);
    const int result = sdblk_chain(block, &start);
    if (!FailingMemory::failed()) {
      EXPECT_EQ(result, 1);
      break;
    }
    EXPECT_EQ(result, -1) << n;
    EXPECT_NE(registered(), "") << n;
    EXPECT_EQ(sdblk_failure(reader.vol())->code, SDBLK_FAILURE_MEMORY) << n;
  }
  EXPECT_GT(n, 2);
}

// ---- memory ----

// Everything that needs memory while a volume is read: blockettes of each kind, a long one, a
// dictionary, a chain.
std::string volume_with_all() {
  VolumeWriter out(512);
  out.control('A', ControlBlockette(34).digits(1, 3).var("M/S").var("Velocity"));
  out.control('A', ControlBlockette(34).digits(1, 3).var("M").var(std::string(2000, 'x')));
  out.control(
      'A',
      ControlBlockette(30).var("Int").digits(1, 4).digits(0, 3).digits(2, 2).var("M0").var("W4"));
  out.control(
      'S', ControlBlockette(60).digits(1, 2).digits(1, 2).digits(2, 2).digits(1, 4).digits(2, 4));
  out.control('S', ControlBlockette(54)
                       .raw("A01001002")
                       .digits(2, 4)
                       .real(1)
                       .real(0)
                       .raw("bad")
                       .raw("         ")
                       .real(0));
  out.control('S', ControlBlockette(61)
                       .digits(1, 2)
                       .var("F")
                       .raw("A001002")
                       .digits(2, 4)
                       .real(1, volume::kReal14)
                       .real(2, volume::kReal14));
  out.data(DataRecord{.sta = "ABC"}.b1000(3, 1, 9).b100(20).blockette(3000, "x"));
  return out.bytes();
}

struct Outcome {
  bool failed = false;
  std::string messages;
};
Outcome read(const std::string &bytes, SDBlkKeep keep) {
  const SDBlkWholeOptions options = {nullptr, nullptr, keep};
  SDBlkVol *vol =
      sdblk_open_whole_buffer(bytes.data(), static_cast<std::int64_t>(bytes.size()), 0, &options);
  if (vol == nullptr) return {true, registered()};
  SDBlk *block = nullptr;
  int result = 0;
  while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
    if (sdblk_unstuffblk(block) != 0) result = -1;
    if (result < 0) break;
  }
  sdblk_free(block);
  sdblk_closevol(vol);
  return {result < 0, registered()};
}

TEST(WholeMemory, EachAllocationThatIsRefusedGivesAMessageAndFailure) {
  const std::string bytes = volume_with_all();
  for (const SDBlkKeep keep : {SDBLK_KEEP_FIRST, SDBLK_KEEP_NUMBERS, SDBLK_KEEP_ALL}) {
    long n = 1;
    for (;; ++n) {
      Outcome outcome;
      bool refused = false;
      {
        const FailingMemory memory(n);
        outcome = read(bytes, keep);
        refused = FailingMemory::failed();
      }
      if (!refused) {
        EXPECT_FALSE(outcome.failed);
        EXPECT_EQ(outcome.messages, "");
        break;
      }
      EXPECT_TRUE(outcome.failed) << n;
      EXPECT_NE(outcome.messages, "") << n;
    }
    EXPECT_GT(n, 20);
  }
}

}  // namespace
