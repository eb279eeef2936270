#include "seed/whole/definitions.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/util/log_capture.h"

namespace {

using tarvik::Defining;
using tarvik::Definition;
using tarvik::Definitions;

std::vector<std::int64_t> numbers_of(const Definitions &definitions, std::int32_t handle) {
  std::vector<std::int64_t> numbers;
  const Definition *found = definitions.get(handle);
  for (std::int32_t i = 0; found != nullptr && i < found->count; ++i) {
    numbers.push_back(definitions.get(handle, i)->number);
  }
  return numbers;
}

TEST(Definitions, FindsWhatWasAdded) {
  Definitions definitions(true);
  EXPECT_EQ(definitions.find("uid", 3), 0);
  const std::int32_t handle = definitions.add("uid", 3, 17);
  EXPECT_GT(handle, 0);
  EXPECT_EQ(definitions.find("uid", 3), handle);
  EXPECT_EQ(numbers_of(definitions, handle), (std::vector<std::int64_t>{17}));
}

TEST(Definitions, CodesOfOtherKeysAndOtherCodesAreOthers) {
  Definitions definitions(true);
  definitions.add("uid", 3, 17);
  EXPECT_EQ(definitions.find("gid", 3), 0);
  EXPECT_EQ(definitions.find("uid", -3), 0);
  EXPECT_NE(definitions.add("gid", 3, 18), definitions.find("uid", 3));
}

TEST(Definitions, KeyIsComparedByItsText) {
  Definitions definitions(true);
  const std::int32_t handle = definitions.add("uid", 3, 17);
  const std::string key = "uid";
  EXPECT_EQ(definitions.find(key.c_str(), 3), handle);
}

TEST(Definitions, ListsAllThatDefineACodeInOrder) {
  Definitions definitions(true);
  const std::int32_t handle = definitions.add("rid", 1, 4);
  definitions.add("rid", 2, 5);
  EXPECT_EQ(definitions.add("rid", 1, 6), handle);
  EXPECT_EQ(definitions.add("rid", 1, 9), handle);
  EXPECT_EQ(numbers_of(definitions, handle), (std::vector<std::int64_t>{4, 6, 9}));
}

TEST(Definitions, AreAskedForInAnyOrder) {
  Definitions definitions(true);
  const std::int32_t handle = definitions.add("rid", 1, 4);
  definitions.add("rid", 1, 6);
  definitions.add("rid", 1, 9);
  for (const auto &[which, number] : {std::pair{2, 9}, {0, 4}, {1, 6}, {1, 6}, {2, 9}}) {
    EXPECT_EQ(definitions.get(handle, which)->number, number) << which;
  }
  EXPECT_EQ(definitions.get(handle, 3), nullptr);
  EXPECT_EQ(definitions.get(handle, -1), nullptr);
}

TEST(Definitions, HandleThatWasNotGivenHasNothing) {
  Definitions definitions(true);
  EXPECT_EQ(definitions.get(0), nullptr);
  const std::int32_t handle = definitions.add("rid", 1, 4);
  EXPECT_EQ(definitions.get(handle + 1), nullptr);
  EXPECT_EQ(definitions.get(-1), nullptr);
  EXPECT_EQ(definitions.get(handle + 1, 0), nullptr);
}

TEST(Definitions, OnlyCountsThoseThatDefineACodeAgainWhereToldSo) {
  Definitions definitions(false);
  const std::int32_t handle = definitions.add("rid", 1, 4);
  EXPECT_EQ(definitions.add("rid", 1, 6), handle);
  EXPECT_EQ(definitions.get(handle)->count, 2);
  EXPECT_EQ(definitions.get(handle, 0)->number, 4);
  EXPECT_EQ(definitions.get(handle, 1), nullptr);
}

TEST(Definitions, GrowWithAllThatTheyHold) {
  Definitions definitions(true);
  constexpr std::int32_t kMany = 3000;
  for (std::int32_t code = 0; code < kMany; ++code) {
    ASSERT_EQ(definitions.add("rid", code, code * 10), code + 1);
    if (code % 3 == 0) {
      ASSERT_EQ(definitions.add("rid", code, code * 10 + 1), code + 1);
    }
    // What was asked for before the list moved is asked for again after it.
    ASSERT_EQ(definitions.get(1, 0)->number, 0);
  }
  for (std::int32_t code = 0; code < kMany; ++code) {
    const std::int32_t handle = definitions.find("rid", code);
    ASSERT_EQ(handle, code + 1);
    const std::vector<std::int64_t> numbers = numbers_of(definitions, handle);
    ASSERT_EQ(numbers.size(), code % 3 == 0 ? 2U : 1U);
    ASSERT_EQ(numbers.front(), code * 10);
    ASSERT_EQ(numbers.back(), code * 10 + (code % 3 == 0 ? 1 : 0));
  }
}

TEST(Definitions, KeepACopyOfWhatWasAddedLast) {
  Definitions definitions(true);
  SDBlk block = {};
  const std::int32_t handle = definitions.add("rid", 1, 4);
  definitions.add("rid", 1, 6);
  definitions.keep(handle, sdblk_copy(&block));
  EXPECT_EQ(definitions.get(handle, 0)->block, nullptr);
  EXPECT_NE(definitions.get(handle, 1)->block, nullptr);
}

TEST(Definitions, AreAsBeforeWhereThereIsNoMemory) {
  // Two pieces for the first code, and one for what defines it again.
  for (long n = 1; n <= 2; ++n) {
    Definitions definitions(true);
    {
      const FailingMemory memory(n);
      EXPECT_EQ(definitions.add("rid", 1, 4), 0) << n;
    }
    EXPECT_EQ(definitions.find("rid", 1), 0);
    EXPECT_EQ(definitions.add("rid", 1, 4), 1) << n;
    {
      const FailingMemory memory(1);
      EXPECT_EQ(definitions.add("rid", 1, 6), 0);
    }
    EXPECT_EQ(numbers_of(definitions, 1), (std::vector<std::int64_t>{4}));
  }
}

}  // namespace
