#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "seed/sdblk.h"
#include "support/arena.h"
#include "tests/seed/entries.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;
using namespace entries;

namespace {

using volume::ControlBlockette;
using volume::VolumeWriter;

constexpr SDBlkFieldDef kInt = field("int", SDBLK_INT);
constexpr SDBlkFieldDef kCode = field("code", SDBLK_ABBR_KEY);
constexpr SDBlkFieldDef kReal = field("real", SDBLK_DOUBLE);
constexpr SDBlkFieldDef kInts = field("ints", SDBLK_INT_ARRAY);
constexpr SDBlkFieldDef kReals = field("reals", SDBLK_DOUBLE_ARRAY);
constexpr SDBlkFieldDef kTexts = field("texts", SDBLK_STRING_ARRAY);
constexpr SDBlkFieldDef kGroups = field("groups", SDBLK_GROUP_ARRAY);
constexpr SDBlkFieldDef kRefs = field("refs", SDBLK_REF_ARRAY);
constexpr SDBlkFieldDef kOther = field("other", -42);
constexpr SDBlkFieldDef kInner = field("inner", SDBLK_GROUP_ARRAY);

// ---- entries made by hand ----

void add_int(Arr *arr, std::int32_t value, SDBlk *ref = nullptr) {
  SDBlkEntry *entry = add(arr, kInt);
  entry->value.i = value;
  entry->ref = ref;
}

template <typename T>
T *copied(std::initializer_list<T> values) {
  T *array = zeroed<T>(values.size());
  std::copy(values.begin(), values.end(), array);
  return array;
}

void add_groups(Arr *arr, const SDBlkFieldDef &def, std::initializer_list<Arr *> groups) {
  add(arr, def, static_cast<std::int32_t>(groups.size()))->value.ea = copied(groups);
}

// One entry of each kind; the groups have three repetitions, of which the first holds groups again
// and the second was never filled.
Arr *tree_of_all_kinds(SDBlk *referenced) {
  Arr *arr = newarr();
  add_int(arr, 42, referenced);
  add(arr, kCode)->value.i = 7;
  add(arr, kReal)->value.d = 1.5;
  add_text(arr, "some text");
  add(arr, kInts, 2)->value.ia = copied<std::int32_t>({1, -2});
  add(arr, kReals, 3)->value.da = copied<double>({0.5, 1.5, 2.5});
  add(arr, kTexts, 2)->value.sa = copied<char *>({text_of_own("first"), text_of_own("")});
  add(arr, kRefs, 2)->value.ra = copied<SDBlkAbbrRef>({{3, referenced}, {4, nullptr}});
  Arr *innermost = newarr();
  add_text(innermost, "deep");
  Arr *first = newarr();
  add_groups(first, kInner, {innermost});
  Arr *third = newarr();
  add(third, kReal)->value.d = 2.5;
  add_groups(arr, kGroups, {first, nullptr, third});
  add(arr, kOther)->value.d = 3.5;
  EXPECT_EQ(setarr(arr, "nothing", nullptr), nullptr);
  return arr;
}

// A tree of all kinds with the block that it refers to.
class EntryTree : public testing::Test {
 protected:
  EntryTree() : referenced_(sdblk_block()), tree_(tree_of_all_kinds(referenced_)) {}
  ~EntryTree() override {
    Arena::one_piece_per_chunk = false;
    freearr(tree_, free_sdblk_entry);
    sdblk_free(referenced_);
  }

  // Some block, from the parser.
  static SDBlk *sdblk_block() {
    BlockReader reader("000001V 0110007");
    return sdblk_copy(reader.next());
  }

  LogCapture log_;
  SDBlk *referenced_;
  Arr *tree_;
};

// ---- sdblk_getv ----

TEST_F(EntryTree, GetvWithoutKeysGivesZero) {
  EXPECT_EQ(sdblk_getv(tree_, nullptr), 0);
  EXPECT_EQ(sdblk_getv(nullptr, nullptr), 0);
  EXPECT_EQ(log_.registered(), "");
}

TEST_F(EntryTree, GetvGivesEveryKindByName) {
  std::int32_t integer = 0;
  std::int32_t code = 0;
  double real = 0;
  char *text = nullptr;
  double *reals = nullptr;
  char **texts = nullptr;
  Arr **groups = nullptr;
  SDBlkAbbrRef *refs = nullptr;
  ASSERT_EQ(sdblk_getv(tree_, "int", &integer, "code", &code, "real", &real, "text", &text, "reals",
                       &reals, "texts", &texts, "groups", &groups, "refs", &refs, nullptr),
            0);
  EXPECT_EQ(integer, 42);
  EXPECT_EQ(code, 7);
  EXPECT_EQ(real, 1.5);
  EXPECT_STREQ(text, "some text");
  EXPECT_EQ(reals[2], 2.5);
  EXPECT_STREQ(texts[0], "first");
  EXPECT_EQ(groups[1], nullptr);
  EXPECT_EQ(countarr(groups[2]), 1);
  EXPECT_EQ(refs[1].code, 4);
  EXPECT_EQ(refs[0].blk, referenced_);
}

TEST_F(EntryTree, GetvGivesWhatTheTreeHoldsNotACopy) {
  char *text = nullptr;
  ASSERT_EQ(sdblk_getv(tree_, "text", &text, nullptr), 0);
  EXPECT_EQ(text, static_cast<SDBlkEntry *>(getarr(tree_, "text"))->value.s);
}

TEST_F(EntryTree, GetvWithStarGivesTheReference) {
  SDBlk *reference = nullptr;
  EXPECT_EQ(sdblk_getv(tree_, "*int", &reference, nullptr), 0);
  EXPECT_EQ(reference, referenced_);
}

TEST_F(EntryTree, GetvWithStarGivesNullForACode) {
  SDBlk *reference = referenced_;
  EXPECT_EQ(sdblk_getv(tree_, "*code", &reference, nullptr), 0);
  EXPECT_EQ(reference, nullptr);
}

TEST_F(EntryTree, GetvWithStarChangesOnlyIntegers) {
  double real = 0;
  char *text = nullptr;
  SDBlkAbbrRef *refs = nullptr;
  EXPECT_EQ(sdblk_getv(tree_, "*real", &real, "*text", &text, "*refs", &refs, nullptr), 0);
  EXPECT_EQ(real, 1.5);
  EXPECT_STREQ(text, "some text");
  EXPECT_EQ(refs[0].code, 3);
}

TEST_F(EntryTree, GetvFindsAnIntegerArrayButStoresNothing) {
  std::int32_t *ints = nullptr;
  std::int32_t integer = 0;
  EXPECT_EQ(sdblk_getv(tree_, "ints", &ints, "int", &integer, nullptr), 0);
  EXPECT_EQ(ints, nullptr);
  EXPECT_EQ(integer, 42);
}

TEST_F(EntryTree, GetvStoresNothingForAnUnknownKind) {
  double other = -1;
  EXPECT_EQ(sdblk_getv(tree_, "other", &other, nullptr), 0);
  EXPECT_EQ(other, -1);
}

TEST_F(EntryTree, GetvStopsAtTheFirstMissingKey) {
  std::int32_t before = 0;
  std::int32_t missing = -1;
  std::int32_t after = -1;
  EXPECT_EQ(sdblk_getv(tree_, "int", &before, "gone", &missing, "code", &after, nullptr), -1);
  EXPECT_EQ(before, 42);
  EXPECT_EQ(missing, -1);
  EXPECT_EQ(after, -1);
  EXPECT_EQ(log_.registered(), "sdblk_getv: entry 'gone' not defined.\n");
}

TEST_F(EntryTree, GetvReportsAMissingKeyWithoutItsStar) {
  SDBlk *reference = referenced_;
  EXPECT_EQ(sdblk_getv(tree_, "*gone", &reference, nullptr), -1);
  EXPECT_EQ(reference, referenced_);
  EXPECT_EQ(log_.registered(), "sdblk_getv: entry 'gone' not defined.\n");
}

TEST_F(EntryTree, GetvDropsOneStarOnly) {
  std::int32_t value = 0;
  EXPECT_EQ(sdblk_getv(tree_, "**int", &value, nullptr), -1);
  EXPECT_EQ(log_.registered(), "sdblk_getv: entry '*int' not defined.\n");
}

TEST_F(EntryTree, GetvOfAnEmptyKeyReportsIt) {
  std::int32_t value = 0;
  EXPECT_EQ(sdblk_getv(tree_, "", &value, nullptr), -1);
  EXPECT_EQ(sdblk_getv(tree_, "*", &value, nullptr), -1);
  EXPECT_EQ(log_.registered(),
            "sdblk_getv: entry '' not defined.\n"
            "sdblk_getv: entry '' not defined.\n");
}

TEST_F(EntryTree, GetvOfANullEntryReportsItsKey) {
  std::int32_t value = 0;
  EXPECT_EQ(sdblk_getv(tree_, "nothing", &value, nullptr), -1);
  EXPECT_EQ(log_.registered(), "sdblk_getv: entry 'nothing' not defined.\n");
}

TEST_F(EntryTree, GetvOfANullArrayReportsTheKey) {
  std::int32_t value = 0;
  EXPECT_EQ(sdblk_getv(nullptr, "int", &value, nullptr), -1);
  EXPECT_EQ(log_.registered(), "sdblk_getv: entry 'int' not defined.\n");
}

TEST_F(EntryTree, GetvTakesAKeyOf511Characters) {
  const std::string longest(511, 'k');
  std::int32_t value = 0;
  EXPECT_EQ(sdblk_getv(tree_, longest.c_str(), &value, nullptr), -1);
  EXPECT_EQ(sdblk_getv(tree_, ("*" + longest).c_str(), &value, nullptr), -1);
  EXPECT_EQ(log_.registered(), "sdblk_getv: entry '" + longest +
                                   "' not defined.\n"
                                   "sdblk_getv: entry '" +
                                   longest + "' not defined.\n");
}

TEST_F(EntryTree, GetvOfALongerKeyEndsTheProgram) {
  const FatalHook hook;
  const std::string key(600, 'k');
  std::int32_t value = 0;
  EXPECT_THROW(sdblk_getv(tree_, key.c_str(), &value, nullptr), Fatal);
  EXPECT_EQ(log_.text(), "sdblk_getv: text of 601 bytes does not fit the 512 byte buffer\n");
}

// ---- references of decoded blocks ----

// A unit abbreviation, and a channel whose signal units are `units`.
VolumeWriter channel_with_units(int units) {
  VolumeWriter writer(512);
  writer.control('A', ControlBlockette(34).digits(3, 3).var("M/S").var("Velocity"));
  writer.control(
      'S',
      ControlBlockette(52).fixed("", 2).fixed("BHZ", 3).digits(0, 4).digits(1, 3).var("").digits(
          units, 3));
  return writer;
}

TEST(GetvOfADecodedBlock, StarGivesTheAbbreviation) {
  BlockReader reader(channel_with_units(3).bytes(), 512);
  reader.decode_next();
  const SDBlk *channel = reader.decode_next();
  SDBlk *units = nullptr;
  ASSERT_EQ(sdblk_getv(channel->contents, "*sunits", &units, nullptr), 0);
  ASSERT_NE(units, nullptr);
  EXPECT_EQ(units->blockette_type, 34);
  EXPECT_EQ(text_of(units->contents, "descr"), "Velocity");
}

TEST(GetvOfADecodedBlock, StarGivesNullWithoutAnAbbreviation) {
  BlockReader reader(channel_with_units(4).bytes(), 512);
  reader.decode_next();
  const SDBlk *channel = reader.decode_next();
  SDBlk stays;
  SDBlk *units = &stays;
  std::int32_t code = 0;
  EXPECT_EQ(sdblk_getv(channel->contents, "*sunits", &units, "sunits", &code, nullptr), 0);
  EXPECT_EQ(units, nullptr);
  EXPECT_EQ(code, 4);
}

// ---- sdblk_copy_entry_arr ----

TEST_F(EntryTree, CopyHoldsTheSameValues) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(view_of(copy).text, view_of(tree_).text);
  EXPECT_EQ(view_of(tree_).text,
            "{int=42* code=7 real=1.500000 text=some text ints=1 -2 reals=0.500000 1.500000 "
            "2.500000 texts=first  refs=3* 4 groups={inner={text=deep } } {} {real=2.500000 } "
            "other=3.500000 nothing=}");
  freearr(copy, free_sdblk_entry);
}

TEST_F(EntryTree, CopySharesNothingThatTheSourceOwns) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  const TreeView source = view_of(tree_);
  const TreeView view = view_of(copy);
  EXPECT_EQ(view.owned.size(), source.owned.size());
  for (const void *address : view.owned) EXPECT_EQ(source.owned.count(address), 0U);
  freearr(copy, free_sdblk_entry);
}

TEST_F(EntryTree, CopyOutlivesItsSource) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  const std::string text = view_of(tree_).text;
  freearr(tree_, free_sdblk_entry);
  tree_ = nullptr;
  EXPECT_EQ(view_of(copy).text, text);
  freearr(copy, free_sdblk_entry);
}

TEST_F(EntryTree, ReleasedCopyLeavesItsSource) {
  const std::string text = view_of(tree_).text;
  freearr(sdblk_copy_entry_arr(tree_), free_sdblk_entry);
  EXPECT_EQ(view_of(tree_).text, text);
}

TEST_F(EntryTree, CopyOfACopyIsTheSame) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  Arr *again = sdblk_copy_entry_arr(copy);
  freearr(copy, free_sdblk_entry);
  EXPECT_EQ(view_of(again).text, view_of(tree_).text);
  freearr(again, free_sdblk_entry);
}

TEST_F(EntryTree, CopySharesDefinitionsAndReferences) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  const auto *integer = static_cast<const SDBlkEntry *>(getarr(copy, "int"));
  EXPECT_EQ(integer->def, &kInt);
  EXPECT_EQ(integer->ref, referenced_);
  EXPECT_EQ(static_cast<const SDBlkEntry *>(getarr(copy, "refs"))->value.ra[0].blk, referenced_);
  freearr(copy, free_sdblk_entry);
}

TEST_F(EntryTree, UnfilledGroupIsEmptyInTheCopy) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  EXPECT_EQ(countarr(static_cast<const SDBlkEntry *>(getarr(copy, "groups"))->value.ea[1]), 0);
  freearr(copy, free_sdblk_entry);
}

TEST_F(EntryTree, CopyOfANullArrayIsEmpty) {
  Arr *copy = sdblk_copy_entry_arr(nullptr);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(countarr(copy), 0);
  freearr(copy, free_sdblk_entry);
}

TEST_F(EntryTree, EntriesMayBeAddedToACopy) {
  Arr *copy = sdblk_copy_entry_arr(tree_);
  constexpr SDBlkFieldDef kAdded = field("added", SDBLK_STRING);
  add(copy, kAdded)->value.s = text_of_own("by hand");
  free_sdblk_entry(setarr(copy, "text", nullptr));
  // A checker of memory sees when the entry made by hand stays behind.
  freearr(copy, free_sdblk_entry);
}

TEST(CopyOfEntries, NullTextsStayNull) {
  Arr *arr = newarr();
  add(arr, kText);
  add(arr, kTexts, 2)->value.sa = copied<char *>({nullptr, nullptr});
  Arr *copy = sdblk_copy_entry_arr(arr);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(entry_of(copy, "text").value.s, nullptr);
  EXPECT_EQ(entry_of(copy, "texts").value.sa[1], nullptr);
  freearr(copy, free_sdblk_entry);
  freearr(arr, free_sdblk_entry);
}

TEST_F(EntryTree, ArraysWithoutElementsAreCopied) {
  Arr *empty = newarr();
  add(empty, kTexts, 0)->value.sa = zeroed<char *>(1);
  add(empty, kGroups, 0)->value.ea = zeroed<Arr *>(1);
  add(empty, kRefs, 0)->value.ra = zeroed<SDBlkAbbrRef>(1);
  add(empty, kReals, -1)->value.da = zeroed<double>(1);
  Arr *copy = sdblk_copy_entry_arr(empty);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(view_of(copy).text, "{texts=groups=refs=reals=}");
  freearr(copy, free_sdblk_entry);
  freearr(empty, free_sdblk_entry);
}

// What is registered when the n-th allocation of a copy fails, for every n.  With every piece an
// allocation of its own, none is left out.
std::vector<std::string> failures_of_copy(const Arr *tree, LogCapture &log) {
  std::vector<std::string> failures;
  Arena::one_piece_per_chunk = true;
  for (long n = 1;; ++n) {
    Arr *copy = nullptr;
    bool failed = false;
    {
      const FailingMemory memory(n);
      copy = sdblk_copy_entry_arr(tree);
      failed = FailingMemory::failed();
    }
    EXPECT_EQ(copy == nullptr, failed) << n;
    freearr(copy, free_sdblk_entry);
    if (!failed) return failures;
    failures.push_back(log.registered());
  }
}

TEST_F(EntryTree, EachFailedAllocationOfACopyIsNamed) {
  const std::string before = view_of(tree_).text;
  const std::vector<std::string> failures = failures_of_copy(tree_, log_);
  EXPECT_EQ(view_of(tree_).text, before);
  for (const std::string &text : failures) EXPECT_EQ(text.find("sdblk_copy_entry_arr: "), 0U);
  const auto reported = [&](const std::string &text) {
    return std::count(failures.begin(), failures.end(), text) > 0;
  };
  for (const char *key :
       {"int", "code", "real", "text", "ints", "reals", "texts", "refs", "groups", "other"}) {
    EXPECT_TRUE(reported(malloc_message(key + std::string(":entryc"), sizeof(SDBlkEntry)))) << key;
  }
  EXPECT_TRUE(reported(malloc_message("ints:entryc->value.ia", 8)));
  EXPECT_TRUE(reported(malloc_message("reals:entryc->value.da", 24)));
  EXPECT_TRUE(reported(malloc_message("texts:entryc->value.sa", 2 * sizeof(char *))));
  EXPECT_TRUE(reported(malloc_message("refs:entryc->value.ra", 2 * sizeof(SDBlkAbbrRef))));
  EXPECT_TRUE(reported(malloc_message("groups:entryc->value.ea", 3 * sizeof(Arr *))));
  EXPECT_TRUE(reported("sdblk_copy_entry_arr: strdup(text:entryc->value.s) error.\n"));
  for (const char *index : {"0", "1"}) {
    EXPECT_TRUE(reported(std::string("sdblk_copy_entry_arr: strdup(texts:entryc->value.sa[") +
                         index + "]) error.\n" + kNoMemory));
  }
}

TEST_F(EntryTree, FailureInsideAGroupIsNamedAtEveryLevel) {
  const std::vector<std::string> failures = failures_of_copy(tree_, log_);
  const std::string expected =
      "sdblk_copy_entry_arr: strdup(text:entryc->value.s) error.\n"
      "sdblk_copy_entry_arr: sdblk_copy_entry_arr(inner:entryc->value.ea[0]) error.\n"
      "sdblk_copy_entry_arr: sdblk_copy_entry_arr(groups:entryc->value.ea[0]) error.\n";
  EXPECT_EQ(std::count(failures.begin(), failures.end(), expected), 1);
  const std::string third =
      malloc_message("real:entryc", sizeof(SDBlkEntry)) +
      "sdblk_copy_entry_arr: sdblk_copy_entry_arr(groups:entryc->value.ea[2]) error.\n";
  EXPECT_GE(std::count(failures.begin(), failures.end(), third), 1);
}

TEST_F(EntryTree, FailedCopyOfAnEmptyArrayIsReported) {
  const FailingMemory memory(1);
  EXPECT_EQ(sdblk_copy_entry_arr(nullptr), nullptr);
  EXPECT_EQ(log_.registered().find("sdblk_copy_entry_arr: malloc("), 0U);
}

// ---- free_sdblk_entry ----

TEST(FreeEntry, NullDoesNothing) {
  LogCapture log;
  free_sdblk_entry(nullptr);
  EXPECT_EQ(log.registered(), "");
}

TEST(FreeEntry, EachKindMayHaveNoValue) {
  // A checker of memory sees what is released wrongly, or not at all.
  for (const SDBlkFieldDef *def :
       {&kInt, &kCode, &kReal, &kText, &kInts, &kReals, &kTexts, &kGroups, &kRefs, &kOther}) {
    auto *entry = zeroed<SDBlkEntry>(1);
    entry->def = def;
    entry->count = 3;
    free_sdblk_entry(entry);
  }
}

TEST(FreeEntry, ElementsMayBeNull) {
  auto *texts = zeroed<SDBlkEntry>(1);
  texts->def = &kTexts;
  texts->count = 3;
  texts->value.sa = copied<char *>({nullptr, text_of_own("middle"), nullptr});
  free_sdblk_entry(texts);
  Arr *group = newarr();
  add_text(group, "in a group");
  auto *groups = zeroed<SDBlkEntry>(1);
  groups->def = &kGroups;
  groups->count = 3;
  groups->value.ea = copied<Arr *>({nullptr, group, nullptr});
  free_sdblk_entry(groups);
}

TEST_F(EntryTree, ReferencedBlocksAreNotReleased) {
  freearr(tree_, free_sdblk_entry);
  tree_ = nullptr;
  EXPECT_EQ(referenced_->blockette_type, 11);
}

}  // namespace
