#include "seed/whole/reader.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/util/volume_writer.h"
#include "tests/util/whole_reader.h"

namespace {

using namespace std::string_literals;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

// A data record of 128 bytes that says so.
std::string data(long number) { return DataRecord{.sta = "ABC"}.b1000(3, 1, 7).bytes(128, number); }
// A record of a header and a payload, with blanks up to a length.
std::string record(const std::string &header, const std::string &payload,
                   std::size_t length = 128) {
  std::string bytes = header + payload;
  bytes.resize(length, ' ');
  return bytes;
}
// A blockette of so many bytes that the catalogue does not have.
std::string unknown(std::size_t length, int type = 90) {
  return ControlBlockette(type).raw(std::string(length - 7, 'u')).text();
}

// ---- between records ----

TEST(ParseWhole, EmptyFileHandsOutNothing) { EXPECT_EQ(lines_of(""), (Lines{})); }

TEST(ParseWhole, RecordsThatFollowEachOtherNeedNoSkip) {
  EXPECT_EQ(lines_of(data(1) + data(2)), (Lines{"block 0: D 99 @0", "block 1: D 99 @128"}));
}

TEST(ParseWhole, NumbersNeedNotRun) {
  EXPECT_EQ(lines_of(data(7) + data(7) + data(1)),
            (Lines{"block 0: D 99 @0", "block 1: D 99 @128", "block 2: D 99 @256"}));
}

TEST(ParseWhole, BytesWithoutAHeaderAreOneSkip) {
  EXPECT_EQ(lines_of("garbage" + data(1)), (Lines{"garbage 0+7", "block 0: D 99 @7"}));
  EXPECT_EQ(lines_of(std::string(500, 'x')), (Lines{"garbage 0+500"}));
  EXPECT_EQ(lines_of("x"), (Lines{"garbage 0+1"}));
}

TEST(ParseWhole, DigitsBlanksNulsAndLineEndsArePadding) {
  EXPECT_EQ(lines_of("0123456789 \0\r\n"s + data(1)), (Lines{"padding 0+14", "block 0: D 99 @14"}));
  EXPECT_EQ(lines_of("0123456789 \0\r\n\t"s + data(1)),
            (Lines{"garbage 0+15", "block 0: D 99 @15"}));
  EXPECT_EQ(lines_of("\t    " + data(1)), (Lines{"garbage 0+5", "block 0: D 99 @5"}));
}

TEST(ParseWhole, SkipBetweenRecordsStandsBeforeTheBlock) {
  EXPECT_EQ(lines_of(data(1) + std::string(64, ' ') + data(2) + "      "),
            (Lines{"block 0: D 99 @0", "padding 128+64", "block 1: D 99 @192", "padding 320+6"}));
}

TEST(ParseWhole, LongSkipIsOne) {
  const std::string hole(std::size_t{20} << 20, 'x');
  EXPECT_EQ(lines_of(hole + data(1)), (Lines{"garbage 0+20971520", "block 0: D 99 @20971520"}));
  const std::string blank(std::size_t{20} << 20, ' ');
  EXPECT_EQ(lines_of(blank + data(1)), (Lines{"padding 0+20971520", "block 0: D 99 @20971520"}));
  EXPECT_EQ(lines_of(blank + "x"), (Lines{"garbage 0+20971521"}));
}

// ---- notes of records ----

TEST(ParseWhole, NotesOfARecordStandBeforeItsBlocks) {
  const std::string states512 = DataRecord{}.b1000(3, 1, 9).bytes(128);
  EXPECT_EQ(lines_of("x" + states512 + data(2)),
            (Lines{"garbage 0+1", "length @1", "block 0: D 99 @1", "block 1: D 99 @129"}));
  EXPECT_EQ(lines_of(states512), (Lines{"cut @0", "block 0: D 99 @0"}));
  EXPECT_EQ(lines_of(states512 + std::string(1000, 'x')),
            (Lines{"unconfirmed @0", "block 0: D 99 @0", "garbage 512+616"}));
}

TEST(ParseWhole, NotesOfRecordsHaveSentences) {
  const std::string states512 = DataRecord{}.b1000(3, 1, 9).bytes(128);
  EXPECT_EQ(WholeReader(states512 + data(2)).read_all().text(),
            "the record has 128 bytes, but states 512");
  EXPECT_EQ(WholeReader(states512 + std::string(1000, 'x')).read_all().lines().size(), 3U);
  WholeReader unconfirmed(states512 + std::string(1000, 'x'));
  unconfirmed.next();
  EXPECT_EQ(unconfirmed.text(), "nothing confirms that the record has 512 bytes");
}

// ---- the length in force ----

TEST(ParseWhole, LengthInForceIs4096OrWhatIsAskedFor) {
  const std::string record = DataRecord{}.bytes(5000);
  EXPECT_EQ(lines_of(record), (Lines{"unconfirmed @0", "block 0: D 99 @0", "padding 4096+904"}));
  EXPECT_EQ(lines_of(record, 1000),
            (Lines{"unconfirmed @0", "block 0: D 99 @0", "padding 1000+4000"}));
  EXPECT_EQ(lines_of(record, -1)[2], "padding 4096+904");
}

TEST(ParseWhole, ConfirmedLengthComesIntoForce) {
  const std::string silent = DataRecord{}.bytes(5000);
  EXPECT_EQ(lines_of(data(1) + silent), (Lines{"block 0: D 99 @0", "unconfirmed @128",
                                               "block 1: D 99 @128", "padding 256+4872"}));
}

TEST(ParseWhole, ConfirmedLengthOtherThanTheStatedOneComesIntoForce) {
  const std::string states512 = DataRecord{}.b1000(3, 1, 9).bytes(128);
  std::string silent = DataRecord{}.bytes(48, 2);
  silent.resize(5000, 'x');
  EXPECT_EQ(lines_of(states512 + silent),
            (Lines{"length @0", "block 0: D 99 @0", "unconfirmed @128", "block 1: D 99 @128",
                   "garbage 256+4872"}));
}

TEST(ParseWhole, LengthOfAControlRecordIsInForceForData) {
  std::string silent = DataRecord{}.bytes(48, 2);
  silent.resize(5000, 'x');
  EXPECT_EQ(
      lines_of(record("000001S ", unknown(10)) + silent),
      (Lines{"block 0: S 90 @8", "unconfirmed @128", "block 1: D 99 @128", "garbage 256+4872"}));
}

TEST(ParseWhole, UnconfirmedLengthDoesNot) {
  const std::string states64 = DataRecord{}.b1000(3, 1, 6).bytes(64) + "xx";
  const std::string silent = DataRecord{}.bytes(5000);
  EXPECT_EQ(lines_of(states64 + silent, 100),
            (Lines{"unconfirmed @0", "block 0: D 99 @0", "garbage 64+2", "unconfirmed @66",
                   "block 1: D 99 @66", "padding 166+4900"}));
}

// ---- sequence breaks ----

std::int64_t breaks(const std::string &bytes) {
  return WholeReader(bytes).read_all().counts().sequence_breaks;
}
std::string unnumbered() { return data(1).replace(0, 6, 6, ' '); }

TEST(ParseWhole, SequenceBreaksAreCounted) {
  EXPECT_EQ(breaks(data(7)), 0);
  EXPECT_EQ(breaks(data(7) + data(8) + data(9)), 0);
  EXPECT_EQ(breaks(data(7) + data(9) + data(10)), 1);
  EXPECT_EQ(breaks(data(7) + data(7) + data(6)), 2);
  EXPECT_EQ(breaks(data(999999) + data(1) + data(2)), 0);
}

TEST(ParseWhole, ControlRecordsBreakTheSequenceToo) {
  EXPECT_EQ(breaks(record("000001S ", unknown(10)) + record("000002T ", unknown(10)) + data(3)), 0);
  EXPECT_EQ(breaks(record("000001S ", unknown(10)) + record("000003T ", unknown(10)) + data(4)), 1);
}

TEST(ParseWhole, MissingNumberBreaksTwice) {
  EXPECT_EQ(breaks(unnumbered()), 0);
  EXPECT_EQ(breaks(data(1) + unnumbered() + data(2)), 2);
  EXPECT_EQ(breaks(unnumbered() + unnumbered()), 1);
}

TEST(ParseWhole, SkipBetweenDoesNotBreakTheSequence) {
  EXPECT_EQ(breaks(data(1) + "xx" + data(2)), 0);
}

// ---- control records ----

TEST(ParseWhole, BlockettesFollowEachOther) {
  EXPECT_EQ(lines_of(record("000001S ", unknown(10) + unknown(20))),
            (Lines{"unconfirmed @0", "block 0: S 90 @8", "block 1: S 90 @18"}));
}

TEST(ParseWhole, LineEndsBeforeABlocketteArePassedOver) {
  EXPECT_EQ(lines_of(record("000001S*", "\n\r\n" + unknown(10) + "\r" + unknown(20))),
            (Lines{"unconfirmed @0", "block 0: S 90 @11", "block 1: S 90 @22"}));
}

TEST(ParseWhole, ThreeBlanksOrNulsEndTheRecord) {
  const std::string rest = "   " + unknown(10);
  EXPECT_EQ(lines_of(record("000001S ", unknown(10) + rest) + record("000002S ", unknown(10))),
            (Lines{"block 0: S 90 @8", "block 1: S 90 @136"}));
  const std::string nuls = " \0 "s + unknown(10);
  EXPECT_EQ(lines_of(record("000001S ", unknown(10) + nuls) + record("000002S ", unknown(10))),
            (Lines{"block 0: S 90 @8", "block 1: S 90 @136"}));
}

TEST(ParseWhole, FewerThanSevenBytesEndTheRecord) {
  // 114 of 120 payload bytes are taken: six are left.
  EXPECT_EQ(lines_of(record("000001S ", unknown(114) + "xxxxxx") + record("000002S ", unknown(7))),
            (Lines{"block 0: S 90 @8", "block 1: S 90 @136"}));
  EXPECT_EQ(lines_of(record("000001S ", unknown(113) + "xxxxxxx") + record("000002S ", unknown(7))),
            (Lines{"block 0: S 90 @8", "prefix 121+7", "block 1: S 90 @136"}));
}

TEST(ParseWhole, BytesLeftAreCountedAfterTheLineEnds) {
  const std::string next = record("000002S ", unknown(7));
  EXPECT_EQ(lines_of(record("000001S ", unknown(112) + "\r\nxxxxxx") + next),
            (Lines{"block 0: S 90 @8", "block 1: S 90 @136"}));
  EXPECT_EQ(lines_of(record("000001S ", unknown(111) + "\r\nxxxxxxx") + next),
            (Lines{"block 0: S 90 @8", "prefix 121+7", "block 1: S 90 @136"}));
}

TEST(ParseWhole, TwoBlanksOrNulsDoNotEndTheRecord) {
  EXPECT_EQ(lines_of(record("000001S*", "  x0010")), (Lines{"unconfirmed @0", "prefix 8+120"}));
  EXPECT_EQ(lines_of(record("000001S*", "\0 90010"s)), (Lines{"unconfirmed @0", "prefix 8+120"}));
}

TEST(ParseWhole, PrefixIsBlanksThenDigitsToTheEnd) {
  EXPECT_EQ(lines_of(record("000001S*", " 90  10uuu")),
            (Lines{"unconfirmed @0", "block 0: S 90 @8"}));
  EXPECT_EQ(lines_of(record("000001S*", "  1   7")), (Lines{"unconfirmed @0", "block 0: S 1 @8"}));
  for (const char *prefix :
       {"9 00010", "90 0010", "x900010", "0900x10", "0900 10", "090    ", "09000-9", "+900010"}) {
    EXPECT_EQ(lines_of(record("000001S*", prefix + "uuu"s)),
              (Lines{"unconfirmed @0", "prefix 8+120"}))
        << prefix;
  }
}

TEST(ParseWhole, TypeIsOneAtLeastAndLengthSeven) {
  EXPECT_EQ(lines_of(record("000001S*", "0000010uuu")), (Lines{"unconfirmed @0", "prefix 8+120"}));
  EXPECT_EQ(lines_of(record("000001S*", "0010007")), (Lines{"unconfirmed @0", "block 0: S 1 @8"}));
  EXPECT_EQ(lines_of(record("000001S*", "0010006")), (Lines{"unconfirmed @0", "prefix 8+120"}));
}

TEST(ParseWhole, SkipOfAPrefixIsTheRestOfTheRecord) {
  EXPECT_EQ(lines_of(record("000001S ", unknown(10) + "\r\nlost bytes") +
                     record("000002S ", unknown(10))),
            (Lines{"block 0: S 90 @8", "prefix 20+108", "block 1: S 90 @136"}));
}

TEST(ParseWhole, LengthZeroIsNoBlockette) {
  EXPECT_EQ(lines_of(record("000001S ", "0500000") + record("000002S ", unknown(10))),
            (Lines{"prefix 8+120", "block 0: S 90 @136"}));
}

// ---- blockettes in more than one record ----

TEST(ParseWhole, BlocketteGoesOnInTheNextRecord) {
  const std::string text = unknown(200);
  WholeReader reader(record("000001S ", text.substr(0, 120)) +
                     record("000002S*", text.substr(120) + unknown(10)));
  const SDBlk *block = reader.next();
  EXPECT_EQ(line_of(*block), "block 0: S 90 @8");
  std::int64_t size = 0;
  EXPECT_EQ(std::string(sdblk_raw(block, &size), 200), text);
  EXPECT_EQ(size, 200);
  EXPECT_EQ(block->logical_sequence, 1);
  EXPECT_EQ(block->record_offset, 0);
  EXPECT_EQ(line_of(*reader.next()), "block 1: S 90 @216");
}

TEST(ParseWhole, LineEndsInsideABlocketteAreItsBytes) {
  // The second record's payload begins with them.
  const std::string text =
      ControlBlockette(90).raw(std::string(113, 'u') + "\r\n" + std::string(78, 'v')).text();
  WholeReader reader(record("000001S ", text.substr(0, 120)) +
                     record("000002S*", text.substr(120) + unknown(10)));
  std::int64_t size = 0;
  EXPECT_EQ(std::string(sdblk_raw(reader.next(), &size), 200), text);
  EXPECT_EQ(line_of(*reader.next()), "block 1: S 90 @216");
}

TEST(ParseWhole, BlocketteGoesOnOverSeveralRecords) {
  const std::string text = unknown(1000);
  VolumeWriter writer(128);
  writer.control('S', text).control('S', unknown(10));
  WholeReader reader(writer.bytes());
  std::int64_t size = 0;
  EXPECT_EQ(std::string(sdblk_raw(reader.next(), &size), 1000), text);
  // 1000 bytes take eight records of 120 and 40 of the ninth.
  EXPECT_EQ(line_of(*reader.next()), "block 1: S 90 @" + std::to_string(8 * 128 + 8 + 40));
}

// The first blockette's last 80 bytes would stand in a second record with this header.
Lines continued_in(const std::string &header) {
  const std::string text = unknown(200);
  return lines_of(record("000001S ", text.substr(0, 120)) + record(header, text.substr(120)));
}
const Lines kWhole = {"block 0: S 90 @8"};
const Lines kCut = {"block 0: S 90 @8", "cut @8 block 0", "prefix 136+120"};

TEST(ParseWhole, TwoOfThreeSignsContinueABlockette) {
  EXPECT_EQ(continued_in("000002S*"), kWhole);
  EXPECT_EQ(continued_in("000009S*"), kWhole);
  EXPECT_EQ(continued_in("000002A*"), kWhole);
}

TEST(ParseWhole, OneSignDoesNot) {
  EXPECT_EQ(continued_in("000009A*"), kCut);
  // A record that goes on with nothing begins with a blockette or blanks.
  const std::string text = unknown(200);
  EXPECT_EQ(lines_of(record("000001S ", text.substr(0, 120)) + record("000009S ", unknown(10))),
            (Lines{"block 0: S 90 @8", "cut @8 block 0", "block 1: S 90 @136"}));
  EXPECT_EQ(lines_of(record("000001S ", text.substr(0, 120)) + record("000002A ", unknown(10))),
            (Lines{"block 0: S 90 @8", "cut @8 block 0", "block 1: A 90 @136"}));
}

TEST(ParseWhole, LetterAndNumberAreSignsEnough) {
  const std::string text = unknown(200);
  const std::string rest = unknown(80);  // a header needs a prefix after a blank flag
  WholeReader reader(record("000001S ", text.substr(0, 120)) + record("000002S ", rest));
  std::int64_t size = 0;
  EXPECT_EQ(std::string(sdblk_raw(reader.next(), &size), 200), text.substr(0, 120) + rest);
}

TEST(ParseWhole, NumberAfterTheLargestIsASign) {
  const std::string text = unknown(200);
  const std::string rest = unknown(80);
  WholeReader reader(record("999999S ", text.substr(0, 120)) + record("000001S ", rest));
  std::int64_t size = 0;
  EXPECT_EQ(std::string(sdblk_raw(reader.next(), &size), 200), text.substr(0, 120) + rest);
}

TEST(ParseWhole, SignsAreThoseOfTheRecordDirectlyBefore) {
  // The third record has the letter of the second and its number plus one, not those of the first.
  const std::string text = unknown(300);
  const std::string rest = unknown(60);
  WholeReader reader(record("000001S ", text.substr(0, 120)) +
                     record("000002A*", text.substr(120, 120)) + record("000003A ", rest));
  std::int64_t size = 0;
  const SDBlk *block = reader.next();
  EXPECT_EQ(std::string(sdblk_raw(block, &size), 300), text.substr(0, 240) + rest);
  EXPECT_EQ(block->record_type, 'S');
  EXPECT_EQ(reader.next(), nullptr);
}

TEST(ParseWhole, NextRecordMustStandDirectlyAfter) {
  const std::string text = unknown(200);
  const std::string first = record("000001S ", text.substr(0, 120));
  EXPECT_EQ(lines_of(first + "   " + record("000002S*", text.substr(120)), 128),
            (Lines{"unconfirmed @0", "block 0: S 90 @8", "cut @8 block 0", "padding 128+3",
                   "prefix 139+120"}));
}

TEST(ParseWhole, DataRecordDoesNotContinue) {
  EXPECT_EQ(lines_of(record("000001S ", unknown(200).substr(0, 120)) + data(2)),
            (Lines{"block 0: S 90 @8", "cut @8 block 0", "block 1: D 99 @128"}));
}

TEST(ParseWhole, EndOfTheFileCutsABlockette) {
  WholeReader reader(record("000001S ", unknown(200).substr(0, 120)), 128);
  const SDBlk *block = reader.next();
  std::int64_t size = 0;
  EXPECT_EQ(std::string(sdblk_raw(block, &size), 120), unknown(200).substr(0, 120));
  EXPECT_EQ(size, 120);
  EXPECT_EQ(block->blockette_length, 200);
  EXPECT_EQ(std::string(block->blockette_raw + 120, 81), std::string(81, '\0'));
  EXPECT_EQ(reader.next(), nullptr);
}

TEST(ParseWhole, NoteOfTheRecordThatContinuesStandsBeforeTheBlock) {
  const std::string text = unknown(200);
  EXPECT_EQ(
      lines_of(record("000001S ", text.substr(0, 120)) + record("000002S*", text.substr(120), 100),
               128),
      (Lines{"unconfirmed @128", "block 0: S 90 @8"}));
}

TEST(ParseWhole, BlocketteMayEndWhereItsRecordDoes) {
  EXPECT_EQ(lines_of(record("000001S ", unknown(120)) + record("000002S ", unknown(10))),
            (Lines{"block 0: S 90 @8", "block 1: S 90 @136"}));
}

// ---- what a block says of itself ----

TEST(ParseWhole, DataRecordIsOneBlock) {
  WholeReader reader("x" + data(42));
  const SDBlk *block = reader.next();
  EXPECT_EQ(block->blockette_type, SDBLK_DATA_RECORD);
  EXPECT_EQ(block->logical_sequence, 42);
  EXPECT_EQ(block->logical_length, 128);
  EXPECT_EQ(block->blockette_length, 128);
  EXPECT_EQ(block->record_offset, 1);
  EXPECT_EQ(block->file_offset, 1);
  EXPECT_EQ(block->record_type, 'D');
  EXPECT_EQ(block->big_endian, 1);
}

TEST(ParseWhole, RecordWithoutANumberSaysSo) {
  WholeReader reader(unnumbered());
  EXPECT_EQ(reader.next()->logical_sequence, -1);
}

TEST(ParseWhole, TypesFrom99OnAreUnknownInControlRecords) {
  WholeReader reader(record("000001S*", unknown(10, 99) + unknown(10, 100) + unknown(10, 74)));
  EXPECT_EQ(reader.next()->blkdef, nullptr);
  EXPECT_EQ(reader.next()->blkdef, nullptr);
  EXPECT_EQ(reader.next()->blkdef, seed_blkdefs_index[74]);
}

TEST(ParseWhole, EndStaysTheEnd) {
  WholeReader reader(data(1));
  EXPECT_NE(reader.next(), nullptr);
  EXPECT_EQ(reader.next(), nullptr);
  EXPECT_EQ(reader.next(), nullptr);
  EXPECT_EQ(reader.vol()->offset, 128);
  EXPECT_EQ(reader.vol()->cursor, reader.vol()->image + 128);
}

// Bytes of the skips between records that were told.
std::int64_t between_records(const Lines &lines) {
  std::int64_t sum = 0;
  for (const std::string &line : lines) {
    if (!line.starts_with("padding ") && !line.starts_with("garbage ")) continue;
    sum += std::stoll(line.substr(line.find('+') + 1));
  }
  return sum;
}

TEST(ParseWhole, RecordsAndSkipsTileTheFileWhereverItIsCut) {
  const std::string text = unknown(200);
  const std::string bytes = "xx" + data(1) + "     " + record("000002S ", text.substr(0, 120)) +
                            record("000003S*", text.substr(120) + "lost") +
                            DataRecord{}.b1000(3, 1, 9).bytes(100, 4) + data(9) + "\t";
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    WholeReader reader(bytes.substr(0, size));
    reader.read_all();
    EXPECT_EQ(between_records(reader.lines()) + reader.counts().record_bytes,
              static_cast<std::int64_t>(size))
        << size;
  }
}

TEST(ParseWhole, CountsWhatItMeets) {
  const std::string bytes =
      "xx" + data(1) + "     " + data(5) + record("000006S ", unknown(10) + "lost bytes");
  const SDBlkWholeCounts counts = WholeReader(bytes).read_all().counts();
  EXPECT_EQ(counts.records, 3);
  EXPECT_EQ(counts.blocks, 3);
  EXPECT_EQ(counts.sequence_breaks, 1);
  EXPECT_EQ(counts.padding_bytes, 5);
  EXPECT_EQ(counts.skipped_bytes, 2 + 110);  // 128 less the header and the blockette
  EXPECT_EQ(counts.record_bytes, 3 * 128);
  EXPECT_EQ(counts.first_record_length, 128);
  EXPECT_EQ(counts.findings[SDBLK_SKIP_GARBAGE], 1);
  EXPECT_EQ(counts.findings[SDBLK_SKIP_PADDING], 1);
  EXPECT_EQ(counts.findings[SDBLK_SKIP_PREFIX], 1);
}

}  // namespace
