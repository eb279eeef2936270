#include "views/counts.h"

#include <gtest/gtest.h>

using namespace tarvik;

namespace {

SDBlk block(char letter, const SDBlkDef *definition) {
  SDBlk block = {};
  block.record_type = letter;
  block.blkdef = definition;
  return block;
}

std::string text(const BlockCounts &counts) {
  TextBuffer buffer;
  counts.put(&buffer);
  return std::string(buffer.text());
}

TEST(BlockCounts, NoneAreZerosForAllLetters) {
  EXPECT_EQ(text({}), R"({"U":0,"V":0,"A":0,"S":0,"T":0,"D":0,"R":0,"Q":0,"M":0})");
}

TEST(BlockCounts, BlocksCountByTheLetterOfTheirRecord) {
  BlockCounts counts;
  for (const char letter : std::string_view("VAASSSTDDRQMM")) {
    counts.count(block(letter, seed_blkdefs));
  }
  EXPECT_EQ(text(counts), R"({"U":0,"V":1,"A":2,"S":3,"T":1,"D":2,"R":1,"Q":1,"M":2})");
  EXPECT_EQ(counts.of('S'), 3);
}

TEST(BlockCounts, UnknownTypesCountTwice) {
  BlockCounts counts;
  counts.count(block('S', nullptr));
  EXPECT_EQ(text(counts), R"({"U":1,"V":0,"A":0,"S":1,"T":0,"D":0,"R":0,"Q":0,"M":0})");
}

}  // namespace
