#include "support/arr.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "support/arr_impl.h"
#include "tests/util/log_capture.h"

using namespace tarvik;

namespace {

// Values are addresses; these are some.
std::array<int, 4> values;
std::vector<void *> released;

void release(void *value) { released.push_back(value); }

std::vector<std::string> keys_of(const Arr *arr) {
  std::vector<std::string> keys;
  Tbl *list = keysarr(arr);
  for (long i = 0; i < counttbl(list); ++i) {
    keys.emplace_back(static_cast<const char *>(gettbl(list, i)));
  }
  freetbl(list, nullptr);
  return keys;
}

TEST(Array, NewOneIsEmpty) {
  Arr *arr = newarr();
  ASSERT_NE(arr, nullptr);
  EXPECT_EQ(countarr(arr), 0);
  EXPECT_EQ(getarr(arr, "key"), nullptr);
  EXPECT_TRUE(keys_of(arr).empty());
  freearr(arr, nullptr);
}

TEST(Array, SetValueIsFound) {
  Arr *arr = newarr();
  EXPECT_EQ(setarr(arr, "one", &values[1]), nullptr);
  EXPECT_EQ(setarr(arr, "two", &values[2]), nullptr);
  EXPECT_EQ(getarr(arr, "one"), &values[1]);
  EXPECT_EQ(getarr(arr, "two"), &values[2]);
  EXPECT_EQ(getarr(arr, "three"), nullptr);
  EXPECT_EQ(countarr(arr), 2);
  freearr(arr, nullptr);
}

TEST(Array, ReplacedValueIsGivenBack) {
  Arr *arr = newarr();
  setarr(arr, "key", &values[0]);
  EXPECT_EQ(setarr(arr, "key", &values[1]), &values[0]);
  EXPECT_EQ(setarr(arr, "key", nullptr), &values[1]);
  EXPECT_EQ(setarr(arr, "key", &values[2]), nullptr);
  EXPECT_EQ(getarr(arr, "key"), &values[2]);
  EXPECT_EQ(countarr(arr), 1);
  freearr(arr, nullptr);
}

TEST(Array, KeyIsCopied) {
  Arr *arr = newarr();
  std::string key = "key";
  setarr(arr, key.c_str(), &values[0]);
  key = "yek";
  EXPECT_EQ(getarr(arr, "key"), &values[0]);
  EXPECT_EQ(getarr(arr, key.c_str()), nullptr);
  freearr(arr, nullptr);
}

TEST(Array, KeysAreComparedWhole) {
  Arr *arr = newarr();
  setarr(arr, "", &values[0]);
  setarr(arr, "a", &values[1]);
  setarr(arr, "ab", &values[2]);
  setarr(arr, "A", &values[3]);
  EXPECT_EQ(getarr(arr, ""), &values[0]);
  EXPECT_EQ(getarr(arr, "a"), &values[1]);
  EXPECT_EQ(getarr(arr, "ab"), &values[2]);
  EXPECT_EQ(getarr(arr, "A"), &values[3]);
  EXPECT_EQ(getarr(arr, "abc"), nullptr);
  freearr(arr, nullptr);
}

TEST(Array, KeysComeInTheOrderInWhichTheyWereFirstSet) {
  Arr *arr = newarr();
  for (const char *key : {"zebra", "ant", "monkey", "ant", "zebra"}) setarr(arr, key, &values[0]);
  EXPECT_EQ(keys_of(arr), (std::vector<std::string>{"zebra", "ant", "monkey"}));
  freearr(arr, nullptr);
}

TEST(Array, NullValueKeepsItsKey) {
  Arr *arr = newarr();
  setarr(arr, "nothing", nullptr);
  EXPECT_EQ(getarr(arr, "nothing"), nullptr);
  EXPECT_EQ(keys_of(arr), (std::vector<std::string>{"nothing"}));
  freearr(arr, release);
}

TEST(Array, NullArrayIsEmpty) {
  EXPECT_EQ(getarr(nullptr, "key"), nullptr);
  EXPECT_EQ(countarr(nullptr), 0);
  Tbl *keys = keysarr(nullptr);
  ASSERT_NE(keys, nullptr);
  EXPECT_EQ(counttbl(keys), 0);
  freetbl(keys, nullptr);
  freearr(nullptr, release);
}

TEST(Array, EachValueIsReleasedOnce) {
  released.clear();
  Arr *arr = newarr();
  setarr(arr, "a", &values[0]);
  setarr(arr, "b", nullptr);
  setarr(arr, "c", &values[2]);
  setarr(arr, "a", &values[3]);
  freearr(arr, release);
  EXPECT_EQ(released, (std::vector<void *>{&values[3], &values[2]}));
}

TEST(Array, WithoutACallbackValuesStay) {
  released.clear();
  Arr *arr = newarr();
  setarr(arr, "a", &values[0]);
  freearr(arr, nullptr);
  EXPECT_TRUE(released.empty());
}

TEST(Array, ManyKeysAreAllFound) {
  std::vector<int> many(5000);
  Arr *arr = newarr();
  for (std::size_t i = 0; i < many.size(); ++i) {
    ASSERT_EQ(setarr(arr, ("key" + std::to_string(i)).c_str(), &many[i]), nullptr);
    // The newest and the oldest at every size, the index's first one included.
    ASSERT_EQ(getarr(arr, ("key" + std::to_string(i)).c_str()), &many[i]) << i;
    ASSERT_EQ(getarr(arr, "key0"), many.data()) << i;
  }
  for (std::size_t i = 0; i < many.size(); ++i) {
    ASSERT_EQ(getarr(arr, ("key" + std::to_string(i)).c_str()), &many[i]) << i;
  }
  EXPECT_EQ(getarr(arr, "key5000"), nullptr);
  EXPECT_EQ(countarr(arr), 5000);
  EXPECT_EQ(keys_of(arr)[4321], "key4321");
  freearr(arr, nullptr);
}

TEST(Array, ValueIsReplacedAmongManyKeys) {
  Arr *arr = newarr();
  for (int i = 0; i < 100; ++i) setarr(arr, std::to_string(i).c_str(), &values[0]);
  EXPECT_EQ(setarr(arr, "57", &values[1]), &values[0]);
  EXPECT_EQ(getarr(arr, "57"), &values[1]);
  EXPECT_EQ(countarr(arr), 100);
  freearr(arr, nullptr);
}

// ---- the inside ----

TEST(PooledArray, ValuesInThePoolAreNotReleasedOneByOne) {
  released.clear();
  Arr *arr = arr_new_pooled(256);
  ASSERT_NE(arr, nullptr);
  void *value = arr_pool(arr)->take(8);
  ASSERT_TRUE(arr_set_constant(arr, "pooled", value));
  EXPECT_EQ(getarr(arr, "pooled"), value);
  freearr(arr, release);
  EXPECT_TRUE(released.empty());
}

TEST(PooledArray, ForeignValueMakesAllGoThroughTheCallback) {
  released.clear();
  Arr *arr = arr_new_pooled(256);
  void *pooled = arr_pool(arr)->take(8);
  ASSERT_TRUE(arr_set_constant(arr, "pooled", pooled));
  setarr(arr, "foreign", &values[0]);
  freearr(arr, release);
  EXPECT_EQ(released, (std::vector<void *>{pooled, &values[0]}));
}

TEST(PooledArray, ConstantKeyIsReplacedNotAdded) {
  Arr *arr = arr_new_pooled(256);
  ASSERT_TRUE(arr_set_constant(arr, "key", &values[0]));
  ASSERT_TRUE(arr_set_constant(arr, "key", &values[1]));
  EXPECT_EQ(getarr(arr, "key"), &values[1]);
  EXPECT_EQ(countarr(arr), 1);
  freearr(arr, nullptr);
}

TEST(PooledArray, AppendedConstantsAreFoundByTextAndByPosition) {
  static constexpr char kFirst[] = "first";
  static constexpr char kSecond[] = "second";
  Arr *arr = arr_new_pooled(256);
  ASSERT_TRUE(arr_reserve(arr, 2));
  arr_append_constant(arr, kFirst, &values[0]);
  arr_append_constant(arr, kSecond, &values[1]);
  EXPECT_EQ(getarr(arr, std::string("second").c_str()), &values[1]);
  EXPECT_EQ(arr_get_at(arr, 1, kSecond), &values[1]);
  // A wrong guess costs time, not the value.
  EXPECT_EQ(arr_get_at(arr, 0, kSecond), &values[1]);
  EXPECT_EQ(arr_get_at(arr, 99, kFirst), &values[0]);
  EXPECT_EQ(arr_get_at(nullptr, 0, kFirst), nullptr);
  freearr(arr, nullptr);
}

TEST(PooledArray, ClearedOneKeepsItsMemory) {
  Arr *arr = arr_new_pooled(256);
  const auto fill = [arr] {
    for (int i = 0; i < 100; ++i) setarr(arr, std::to_string(i).c_str(), &values[0]);
  };
  fill();
  arr_clear(arr, nullptr);
  EXPECT_EQ(countarr(arr), 0);
  EXPECT_EQ(getarr(arr, "7"), nullptr);
  const FailingMemory memory(0);
  fill();
  EXPECT_EQ(FailingMemory::count(), 0);
  EXPECT_EQ(countarr(arr), 100);
  freearr(arr, nullptr);
}

TEST(PooledArray, ClearingReleasesForeignValues) {
  released.clear();
  Arr *arr = newarr();
  setarr(arr, "key", &values[0]);
  arr_clear(arr, release);
  EXPECT_EQ(released, (std::vector<void *>{&values[0]}));
  freearr(arr, release);
  EXPECT_EQ(released.size(), 1U);
}

TEST(NestedArray, LivesInThePoolOfItsParent) {
  Arr *parent = arr_new_pooled(256);
  Arr *nested = arr_new_nested(parent, 1);
  ASSERT_NE(nested, nullptr);
  Arr *innermost = arr_new_nested(nested, 0);
  ASSERT_NE(innermost, nullptr);
  EXPECT_EQ(nested->pool, parent->pool);
  EXPECT_EQ(innermost->root, parent);
  ASSERT_TRUE(arr_set_constant(nested, "key", &values[0]));
  ASSERT_TRUE(arr_set_constant(nested, "one more than reserved", &values[1]));
  EXPECT_EQ(getarr(nested, "key"), &values[0]);
  // They go with their parent; released on its own, a nested one does nothing.
  freearr(nested, nullptr);
  EXPECT_EQ(getarr(nested, "key"), &values[0]);
  freearr(parent, nullptr);
}

TEST(NestedArray, ParentWithoutAPoolGetsOne) {
  Arr *parent = newarr();
  ASSERT_EQ(parent->pool, nullptr);
  ASSERT_NE(arr_new_nested(parent, 3), nullptr);
  EXPECT_NE(parent->pool, nullptr);
  freearr(parent, nullptr);
}

// ---- without memory ----

TEST(ArrayWithoutMemory, NewOneIsNull) {
  {
    const FailingMemory memory(1);
    EXPECT_EQ(newarr(), nullptr);
  }
  for (long n = 1; n <= 2; ++n) {
    const FailingMemory memory(n);
    EXPECT_EQ(arr_new_pooled(64), nullptr);
  }
}

TEST(ArrayWithoutMemory, SettingEndsTheProgram) {
  LogCapture log;
  const FatalHook hook;
  Arr *arr = newarr();
  {
    const FailingMemory memory(1);
    EXPECT_THROW(setarr(arr, "some key", &values[0]), Fatal);
  }
  EXPECT_EQ(log.text(), "setarr: no memory for key 'some key'.\n");
  EXPECT_EQ(countarr(arr), 0);
  freearr(arr, nullptr);
}

TEST(ArrayWithoutMemory, FailedSettingChangesNothing) {
  Arr *arr = newarr();
  void *old_value = &values[3];
  Arena::one_piece_per_chunk = true;
  ASSERT_TRUE(arr_set(arr, "first", &values[0], &old_value));
  EXPECT_EQ(old_value, nullptr);
  {
    const FailingMemory memory(1, true);
    EXPECT_FALSE(arr_set(arr, "second", &values[1], &old_value));
    EXPECT_FALSE(arr_reserve(arr, 1000));
    EXPECT_EQ(arr_new_nested(arr, 2), nullptr);
    // There is nothing to allocate for a key that is there.
    EXPECT_TRUE(arr_set(arr, "first", &values[2], &old_value));
  }
  Arena::one_piece_per_chunk = false;
  EXPECT_EQ(old_value, &values[0]);
  EXPECT_EQ(keys_of(arr), (std::vector<std::string>{"first"}));
  EXPECT_EQ(getarr(arr, "first"), &values[2]);
  freearr(arr, nullptr);
}

TEST(ArrayWithoutMemory, KeysAreFoundWithoutAnIndex) {
  Arr *arr = newarr();
  Arena::one_piece_per_chunk = true;
  ASSERT_TRUE(arr_reserve(arr, 64));
  static constexpr std::array<const char *, 8> kKeys = {"a", "b", "c", "d", "e", "f", "g", "h"};
  for (int i = 0; i < 31; ++i) {
    setarr(arr, (kKeys[static_cast<std::size_t>(i) % 8] + std::to_string(i)).c_str(), &values[0]);
  }
  {
    // The 32nd key would bring the index.
    const FailingMemory memory(1, true);
    ASSERT_TRUE(arr_set_constant(arr, "last", &values[1]));
  }
  EXPECT_EQ(arr->index, nullptr);
  EXPECT_EQ(getarr(arr, "last"), &values[1]);
  EXPECT_EQ(getarr(arr, "a0"), &values[0]);
  setarr(arr, "one more", &values[2]);
  EXPECT_NE(arr->index, nullptr);
  EXPECT_EQ(getarr(arr, "last"), &values[1]);
  Arena::one_piece_per_chunk = false;
  freearr(arr, nullptr);
}

TEST(ArrayWithoutMemory, KeyListIsNull) {
  Arr *arr = newarr();
  setarr(arr, "key", &values[0]);
  for (long n = 1; n <= 2; ++n) {
    const FailingMemory memory(n);
    EXPECT_EQ(keysarr(arr), nullptr) << n;
  }
  freearr(arr, nullptr);
}

}  // namespace
