#include "support/arena.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "support/memory.h"

using namespace tarvik;

namespace {

int allocations = 0;
bool count_allocation(std::size_t) {
  ++allocations;
  return true;
}

// Counts allocations as long as it lives.
class AllocationCount {
 public:
  AllocationCount() {
    allocations = 0;
    memory_set_gate(count_allocation);
  }
  ~AllocationCount() { memory_set_gate(nullptr); }
  AllocationCount(const AllocationCount &) = delete;
  AllocationCount &operator=(const AllocationCount &) = delete;
};

TEST(Arena, NothingIsAllocatedBeforeTheFirstPiece) {
  const AllocationCount count;
  const Arena arena;
  EXPECT_EQ(allocations, 0);
  EXPECT_EQ(arena.used(), 0U);
}

TEST(Arena, PiecesAreAlignedAndApart) {
  Arena arena;
  char *first = static_cast<char *>(arena.take(3));
  char *second = static_cast<char *>(arena.take(1));
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % 8, 0U);
  EXPECT_EQ(second - first, 8);
  EXPECT_EQ(arena.used(), 16U);
}

TEST(Arena, SmallPiecesShareAChunk) {
  const AllocationCount count;
  Arena arena(800);
  for (int i = 0; i < 100; ++i) ASSERT_NE(arena.take(8), nullptr);
  EXPECT_EQ(allocations, 1);
  ASSERT_NE(arena.take(8), nullptr);
  EXPECT_EQ(allocations, 2);
}

TEST(Arena, PieceLargerThanAChunkIsGiven) {
  Arena arena(64);
  char *piece = static_cast<char *>(arena.take(100000));
  ASSERT_NE(piece, nullptr);
  std::memset(piece, 'x', 100000);
  EXPECT_EQ(piece[99999], 'x');
}

TEST(Arena, ContentsStayWhenChunksAreAdded) {
  Arena arena(16);
  std::vector<int *> pieces;
  for (int i = 0; i < 1000; ++i) {
    pieces.push_back(arena.take_array<int>(1));
    ASSERT_NE(pieces.back(), nullptr);
    *pieces.back() = i;
  }
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(*pieces[static_cast<std::size_t>(i)], i);
}

TEST(Arena, ResetKeepsTheMemory) {
  Arena arena(64);
  for (int i = 0; i < 100; ++i) ASSERT_NE(arena.take(40), nullptr);
  arena.reset();
  EXPECT_EQ(arena.used(), 0U);
  const AllocationCount count;
  for (int i = 0; i < 100; ++i) ASSERT_NE(arena.take(40), nullptr);
  EXPECT_EQ(allocations, 0);
}

TEST(Arena, LargerPieceAfterAResetStillFits) {
  Arena arena(64);
  ASSERT_NE(arena.take(64), nullptr);
  ASSERT_NE(arena.take(64), nullptr);
  arena.reset();
  ASSERT_NE(arena.take(8), nullptr);
  char *piece = static_cast<char *>(arena.take(5000));
  ASSERT_NE(piece, nullptr);
  std::memset(piece, 'x', 5000);
  ASSERT_NE(arena.take(64), nullptr);
  EXPECT_GE(arena.used(), 8U + 5000U + 64U);
}

TEST(Arena, ResetOfAnUnusedArenaLeavesItUsable) {
  Arena arena;
  arena.reset();
  EXPECT_NE(arena.take(8), nullptr);
}

TEST(Arena, SizesThatOverflowAreRefused) {
  Arena arena;
  EXPECT_EQ(arena.take(SIZE_MAX), nullptr);
  EXPECT_EQ(arena.take(SIZE_MAX - 7), nullptr);
  EXPECT_EQ(arena.take_array<std::uint64_t>(SIZE_MAX / 8 + 1), nullptr);
  EXPECT_NE(arena.take(8), nullptr);
}

TEST(Arena, MemoryExhaustedGivesNullAndLeavesTheArenaUsable) {
  Arena arena(16);
  char *piece = static_cast<char *>(arena.take(16));
  ASSERT_NE(piece, nullptr);
  std::memcpy(piece, "kept", 5);
  memory_set_gate([](std::size_t) { return false; });
  EXPECT_EQ(arena.take(8), nullptr);
  memory_set_gate(nullptr);
  EXPECT_NE(arena.take(8), nullptr);
  EXPECT_STREQ(piece, "kept");
}

TEST(Arena, OnePiecePerChunkAllocatesEach) {
  Arena::one_piece_per_chunk = true;
  {
    const AllocationCount count;
    Arena arena;
    for (int i = 0; i < 5; ++i) EXPECT_NE(arena.take(8), nullptr);
    EXPECT_EQ(allocations, 5);
  }
  Arena::one_piece_per_chunk = false;
}

}  // namespace
