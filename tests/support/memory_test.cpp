#include "support/memory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

using namespace tarvik;

namespace {

TEST(Memory, ZeroBytesAreAPieceToo) {
  void *memory = memory_get(0);
  EXPECT_NE(memory, nullptr);
  memory_free(memory);
}

TEST(Memory, ZeroedMemoryIsZero) {
  char *memory = static_cast<char *>(memory_get_zeroed(100));
  ASSERT_NE(memory, nullptr);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(memory[i], '\0');
  memory_free(memory);
}

TEST(Memory, ZeroBytesOfEveryKindAreAPiece) {
  void *zeroed = memory_get_zeroed(0);
  EXPECT_NE(zeroed, nullptr);
  void *resized = memory_resize(zeroed, 0);
  EXPECT_NE(resized, nullptr);
  memory_free(resized);
}

TEST(Memory, ResizeKeepsTheContents) {
  char *memory = static_cast<char *>(memory_resize(nullptr, 4));
  ASSERT_NE(memory, nullptr);
  std::memcpy(memory, "abc", 4);
  memory = static_cast<char *>(memory_resize(memory, 100000));
  ASSERT_NE(memory, nullptr);
  EXPECT_STREQ(memory, "abc");
  memory_free(memory);
}

TEST(Memory, CopiedTextEndsInAZero) {
  char *copy = memory_copy_text("abcdef", 3);
  EXPECT_STREQ(copy, "abc");
  memory_free(copy);
}

TEST(Memory, EmptyTextNeedsNoSource) {
  char *copy = memory_copy_text(nullptr, 0);
  EXPECT_STREQ(copy, "");
  memory_free(copy);
}

TEST(Memory, FreeingNullDoesNothing) { EXPECT_NO_FATAL_FAILURE(memory_free(nullptr)); }

TEST(MemoryGate, RefusalIsAFailureForWantOfMemory) {
  memory_set_gate([](std::size_t bytes) { return bytes < 10; });
  errno = 0;
  EXPECT_EQ(memory_get(10), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(memory_get_zeroed(10), nullptr);
  EXPECT_EQ(memory_copy_text("0123456789", 10), nullptr);
  void *small = memory_get(9);
  EXPECT_NE(small, nullptr);
  EXPECT_EQ(memory_resize(small, 10), nullptr);
  memory_set_gate(nullptr);
  memory_free(small);
}

TEST(MemoryGate, NullLetsAllPass) {
  memory_set_gate([](std::size_t) { return false; });
  memory_set_gate(nullptr);
  void *memory = memory_get(1);
  EXPECT_NE(memory, nullptr);
  memory_free(memory);
}

}  // namespace
