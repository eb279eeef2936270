#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "support/arena.h"
#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

constexpr SDBlkFieldDef field(const char *key, std::int32_t kind) {
  SDBlkFieldDef def = {};
  def.key = key;
  def.title = "";
  def.description = "";
  def.format = "";
  def.kind = kind;
  return def;
}

constexpr SDBlkFieldDef kInt = field("int", SDBLK_INT);
constexpr SDBlkFieldDef kCode = field("code", SDBLK_ABBR_KEY);
constexpr SDBlkFieldDef kReal = field("real", SDBLK_DOUBLE);
constexpr SDBlkFieldDef kText = field("text", SDBLK_STRING);
constexpr SDBlkFieldDef kInts = field("ints", SDBLK_INT_ARRAY);
constexpr SDBlkFieldDef kReals = field("reals", SDBLK_DOUBLE_ARRAY);
constexpr SDBlkFieldDef kTexts = field("texts", SDBLK_STRING_ARRAY);
constexpr SDBlkFieldDef kGroups = field("groups", SDBLK_GROUP_ARRAY);
constexpr SDBlkFieldDef kRefs = field("refs", SDBLK_REF_ARRAY);
constexpr SDBlkFieldDef kOther = field("other", -42);
constexpr SDBlkFieldDef kInner = field("inner", SDBLK_GROUP_ARRAY);

// ---- entries made by hand ----

template <typename T>
T *zeroed(std::size_t count) {
  return static_cast<T *>(std::calloc(count, sizeof(T)));
}

char *text_of_own(std::string_view text) {
  char *copy = zeroed<char>(text.size() + 1);
  text.copy(copy, text.size());
  return copy;
}

// A new entry under its definition's key.
SDBlkEntry *add(Arr *arr, const SDBlkFieldDef &def, std::int32_t count = 1) {
  auto *entry = zeroed<SDBlkEntry>(1);
  entry->def = &def;
  entry->count = count;
  EXPECT_EQ(setarr(arr, def.key, entry), nullptr);
  return entry;
}

void add_int(Arr *arr, std::int32_t value, SDBlk *ref = nullptr) {
  SDBlkEntry *entry = add(arr, kInt);
  entry->value.i = value;
  entry->ref = ref;
}

void add_text(Arr *arr, std::string_view text) { add(arr, kText)->value.s = text_of_own(text); }

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

// ---- looking at a tree ----

// Every value of the tree, readable, and every address that the tree owns.
struct TreeView {
  std::string text;
  std::set<const void *> owned;

  void see(const Arr *arr);
  void see(const SDBlkEntry &entry);
};

void TreeView::see(const SDBlkEntry &entry) {
  owned.insert(&entry);
  for (std::int32_t i = 0; i < entry.count; ++i) {
    switch (entry.def->kind) {
      case SDBLK_INT:
      case SDBLK_ABBR_KEY:
        text += std::to_string(entry.value.i) + (entry.ref == nullptr ? "" : "*");
        break;
      case SDBLK_DOUBLE: text += std::to_string(entry.value.d); break;
      case SDBLK_STRING:
        owned.insert(entry.value.s);
        text += entry.value.s;
        break;
      case SDBLK_INT_ARRAY:
        owned.insert(entry.value.ia);
        text += std::to_string(entry.value.ia[i]);
        break;
      case SDBLK_DOUBLE_ARRAY:
        owned.insert(entry.value.da);
        text += std::to_string(entry.value.da[i]);
        break;
      case SDBLK_STRING_ARRAY:
        owned.insert(entry.value.sa);
        owned.insert(entry.value.sa[i]);
        text += entry.value.sa[i];
        break;
      case SDBLK_REF_ARRAY:
        owned.insert(entry.value.ra);
        text +=
            std::to_string(entry.value.ra[i].code) + (entry.value.ra[i].blk == nullptr ? "" : "*");
        break;
      case SDBLK_GROUP_ARRAY:
        owned.insert(entry.value.ea);
        see(entry.value.ea[i]);
        break;
      default: text += std::to_string(entry.value.d);
    }
    text += ' ';
  }
}

void TreeView::see(const Arr *arr) {
  text += '{';
  if (arr != nullptr) owned.insert(arr);
  Tbl *keys = keysarr(arr);
  for (long i = 0; i < counttbl(keys); ++i) {
    const char *key = static_cast<const char *>(gettbl(keys, i));
    text += std::string(key) + '=';
    const auto *entry = static_cast<const SDBlkEntry *>(getarr(arr, key));
    if (entry != nullptr) see(*entry);
  }
  freetbl(keys, nullptr);
  text += '}';
}

TreeView view_of(const Arr *arr) {
  TreeView view;
  view.see(arr);
  return view;
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
  std::int32_t behind = -1;
  EXPECT_EQ(sdblk_getv(tree_, "int", &before, "gone", &missing, "code", &behind, nullptr), -1);
  EXPECT_EQ(before, 42);
  EXPECT_EQ(missing, -1);
  EXPECT_EQ(behind, -1);
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

constexpr const char *kNoMemory = "    Cannot allocate memory\n";

std::string malloc_message(const std::string &what, std::size_t bytes) {
  return "sdblk_copy_entry_arr: malloc(" + what + "," + std::to_string(bytes) + ") error.\n" +
         kNoMemory;
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

// ---- blocks ----

// A channel's responses: two stages, the first with two references, the second cut off.
std::string stages() {
  return ControlBlockette(60)
      .digits(2, 2)
      .digits(1, 2)
      .digits(2, 2)
      .digits(11, 4)
      .digits(12, 4)
      .text();
}

TEST(CopyOfABlock, NestedGroupsAreCopied) {
  BlockReader reader("000001S " + stages());
  const SDBlk *blk = reader.decode_next();
  SDBlk *copy = sdblk_copy(blk);
  ASSERT_NE(copy, nullptr);
  const TreeView source = view_of(blk->contents);
  const TreeView view = view_of(copy->contents);
  EXPECT_EQ(source.text, "{nstages=2 stages={stage=1 nresps=2 resps=11 12 } {} }");
  EXPECT_EQ(view.text, source.text);
  EXPECT_EQ(view.owned.size(), source.owned.size());
  for (const void *address : view.owned) EXPECT_EQ(source.owned.count(address), 0U);
  sdblk_free(copy);
  EXPECT_EQ(view_of(blk->contents).text, source.text);
}

TEST(CopyOfABlock, MembersAreTakenAsTheyStand) {
  BlockReader reader("000007S " + stages());
  const SDBlk *blk = reader.decode_next();
  SDBlk *copy = sdblk_copy(blk);
  EXPECT_EQ(copy->logical_sequence, 7);
  EXPECT_EQ(copy->logical_length, blk->logical_length);
  EXPECT_EQ(copy->record_type, 'S');
  EXPECT_EQ(copy->block_number, 0);
  EXPECT_EQ(copy->blockette_length, 21);
  EXPECT_EQ(copy->file_offset, 8);
  EXPECT_EQ(copy->blockette_type, 60);
  EXPECT_EQ(copy->blkdef, blk->blkdef);
  EXPECT_EQ(copy->vol, reader.vol());
  EXPECT_NE(copy->blockette_raw, blk->blockette_raw);
  EXPECT_EQ(std::string(copy->blockette_raw, 21), stages());
  sdblk_free(copy);
}

TEST(CopyOfABlock, CopyOutlivesTheNextBlock) {
  BlockReader reader("000001S " + stages() + "0110007 ");
  SDBlk *copy = sdblk_copy(reader.decode_next());
  reader.next();
  EXPECT_EQ(view_of(copy->contents).text, "{nstages=2 stages={stage=1 nresps=2 resps=11 12 } {} }");
  EXPECT_EQ(std::string(copy->blockette_raw, 21), stages());
  sdblk_free(copy);
}

TEST(CopyOfABlock, NullGivesNull) {
  LogCapture log;
  EXPECT_EQ(sdblk_copy(nullptr), nullptr);
  EXPECT_EQ(log.registered(), "");
}

TEST(CopyOfABlock, BlockWithoutContentsIsCopied) {
  SDBlk blk = {};
  blk.blockette_type = 50;
  SDBlk *copy = sdblk_copy(&blk);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->contents, nullptr);
  EXPECT_EQ(copy->blockette_raw, nullptr);
  EXPECT_EQ(copy->blockette_type, 50);
  sdblk_free(copy);
}

std::string data_record() {
  return DataRecord{.sta = "STA", .chan = "BHZ", .net = "XX"}.b1000(3, 1, 9).b1001(50, 0, 7).bytes(
      512);
}

TEST(CopyOfABlock, OfNegativeLengthFails) {
  std::string raw = "050";
  SDBlk block = {};
  block.blockette_raw = raw.data();
  block.blockette_length = -1;
  EXPECT_EQ(sdblk_copy(&block), nullptr);
  EXPECT_EQ(registered().rfind("sdblk_copy: malloc (blockette_raw,-1) error.\n", 0), 0U);
}

TEST(CopyOfABlock, ChainStaysWithTheSource) {
  BlockReader reader(data_record());
  const SDBlk *blk = reader.decode_next();
  SDBlk *copy = sdblk_copy(blk);
  EXPECT_EQ(copy->next, blk->next);
  EXPECT_EQ(copy->data_ptr, blk->data_ptr);
  sdblk_free(copy);
  EXPECT_EQ(blk->next->blockette_type, 1000);
  EXPECT_EQ(integer_of(blk->next->contents, "dlenp"), 9);
  EXPECT_EQ(blk->next->next->blockette_type, 1001);
}

TEST(CopyOfABlock, CopyMayBeReleasedAfterItsSource) {
  SDBlk *copy = nullptr;
  {
    BlockReader reader(data_record());
    copy = sdblk_copy(reader.decode_next());
  }
  EXPECT_EQ(text_of(copy->contents, "sta"), "STA");
  sdblk_free(copy);
}

TEST(CopyOfABlock, EachFailedAllocationIsNamedAndNothingStays) {
  LogCapture log;
  BlockReader reader("000001S " + stages());
  const SDBlk *blk = reader.decode_next();
  const std::string before = view_of(blk->contents).text;
  Arena::one_piece_per_chunk = true;
  std::vector<std::string> failures;
  for (bool failed = true; failed;) {
    SDBlk *copy = nullptr;
    {
      const FailingMemory memory(static_cast<long>(failures.size()) + 1);
      copy = sdblk_copy(blk);
      failed = FailingMemory::failed();
    }
    EXPECT_EQ(copy == nullptr, failed);
    sdblk_free(copy);
    failures.push_back(log.registered());
  }
  Arena::one_piece_per_chunk = false;
  ASSERT_GT(failures.size(), 4U);
  EXPECT_EQ(failures.back(), "");
  failures.pop_back();
  EXPECT_EQ(failures[0], "sdblk_copy: malloc (SDBlk," + std::to_string(sizeof(SDBlk)) +
                             ") error.\n    Cannot allocate memory\n");
  EXPECT_EQ(failures[1],
            "sdblk_copy: malloc (blockette_raw,21) error.\n    Cannot allocate memory\n");
  for (std::size_t i = 2; i < failures.size(); ++i) {
    EXPECT_TRUE(failures[i].ends_with("sdblk_copy: sdblk_copy_entry_arr(contents) error.\n")) << i;
  }
  const std::string refs = malloc_message("resps:entryc->value.ra", 2 * sizeof(SDBlkAbbrRef)) +
                           "sdblk_copy_entry_arr: sdblk_copy_entry_arr(stages:entryc->value.ea[0]) "
                           "error.\nsdblk_copy: sdblk_copy_entry_arr(contents) error.\n";
  EXPECT_EQ(std::count(failures.begin(), failures.end(), refs), 1);
  EXPECT_EQ(view_of(blk->contents).text, before);
}

TEST(ClearBlock, WhatWasReadIsGone) {
  BlockReader reader("000007S " + stages());
  SDBlk *blk = reader.decode_next();
  sdblk_clear(blk);
  EXPECT_EQ(blk->blockette_raw, nullptr);
  EXPECT_EQ(blk->blkdef, nullptr);
  EXPECT_EQ(blk->next, nullptr);
  ASSERT_NE(blk->contents, nullptr);
  EXPECT_EQ(countarr(blk->contents), 0);
  // The rest is filled by the parser.
  EXPECT_EQ(blk->logical_sequence, 7);
}

TEST(ClearBlock, DataRecordLosesItsChainAndItsPointer) {
  std::string bytes = DataRecord{.sta = "STA", .payload = "samples"}.b1000(3, 1, 9).bytes(512);
  BlockReader reader(bytes);
  SDBlk *blk = reader.decode_next();
  ASSERT_NE(blk->next, nullptr);
  ASSERT_EQ(blk->data_offset, 64);
  sdblk_clear(blk);
  EXPECT_EQ(blk->next, nullptr);
  EXPECT_EQ(blk->data_ptr, nullptr);
  EXPECT_EQ(blk->data_offset, 0);
  EXPECT_EQ(countarr(blk->contents), 0);
}

TEST(ClearBlock, BlockWithoutContentsGetsThem) {
  SDBlk blk = {};
  sdblk_clear(&blk);
  ASSERT_NE(blk.contents, nullptr);
  EXPECT_EQ(countarr(blk.contents), 0);
  freearr(blk.contents, nullptr);
}

TEST(ClearBlock, MayBeDoneTwice) {
  BlockReader reader("000007S " + stages());
  SDBlk *blk = reader.decode_next();
  sdblk_clear(blk);
  sdblk_clear(blk);
  EXPECT_EQ(countarr(blk->contents), 0);
}

// A block as a program makes it by hand, all from malloc.
SDBlk *block_by_hand(std::int32_t type) {
  SDBlk *blk = zeroed<SDBlk>(1);
  blk->blockette_type = type;
  blk->blockette_raw = text_of_own("0500007");
  blk->contents = newarr();
  add_text(blk->contents, "by hand");
  return blk;
}

TEST(FreeBlock, NullDoesNothing) {
  LogCapture log;
  sdblk_free(nullptr);
  sdblk_free_single(nullptr);
  sdblk_clear(nullptr);
  EXPECT_EQ(log.registered(), "");
}

TEST(FreeBlock, BlockMadeByHandGoesWithItsNext) {
  SDBlk *blk = block_by_hand(99);
  blk->next = block_by_hand(1000);
  // A checker of memory sees what stays behind.
  sdblk_free(blk);
}

TEST(ClearBlock, NextThatWasSetByHandIsReleased) {
  SDBlk *blk = block_by_hand(99);
  blk->next = block_by_hand(1000);
  sdblk_clear(blk);
  EXPECT_EQ(blk->next, nullptr);
  sdblk_free(blk);
  BlockReader reader("000007S " + stages());
  SDBlk *parsed = reader.next();
  parsed->next = block_by_hand(1000);
  sdblk_clear(parsed);
  EXPECT_EQ(parsed->next, nullptr);
}

TEST(FreeBlock, BlocketteOfAChainStaysWithItsRecord) {
  const DataRecord record = DataRecord{.time = {2021, 75}}.b100(20);
  BlockReader reader(record.bytes(512));
  const SDBlk *block = reader.decode_next();
  ASSERT_NE(block->next, nullptr);
  sdblk_free_single(block->next);
  sdblk_free(block->next);
  EXPECT_EQ(block->next->blockette_type, 100);
}

TEST(FreeBlock, SingleReleaseLeavesTheNextAlone) {
  SDBlk *next = block_by_hand(1000);
  SDBlk *blk = block_by_hand(99);
  blk->next = next;
  sdblk_free_single(blk);
  EXPECT_EQ(next->blockette_type, 1000);
  sdblk_free(next);
}

// A data record with two blockettes in its chain, decoded; its block is the test's to release.
class ChainTest : public testing::Test {
 protected:
  ~ChainTest() override { sdblk_closevol(vol_); }
  SDBlk *decode() {
    SDBlk *block = nullptr;
    EXPECT_EQ(sdblk_parseblk(vol_, &block), 0);
    EXPECT_EQ(sdblk_unstuffblk(block), 0);
    return block;
  }

  const std::string bytes_ = data_record();
  SDBlkVol *vol_ = sdblk_new(nullptr, bytes_.data(), 512, 0);
};

TEST(ParsedBlock, BytesThatAProgramTakesOverAreItsOwn) {
  BlockReader reader("000001S " + stages() + "0110009XX");
  SDBlk *blk = reader.decode_next();
  char *raw = blk->blockette_raw;
  blk->blockette_raw = nullptr;
  reader.next();
  EXPECT_EQ(std::string(raw), stages());
  EXPECT_STREQ(blk->blockette_raw, "0110009XX");
  std::free(raw);
}

TEST(ParsedBlock, BytesThatAProgramPutsThereAreReleased) {
  BlockReader reader("000001S " + stages() + "0110009XX");
  SDBlk *blk = reader.next();
  std::free(blk->blockette_raw);
  blk->blockette_raw = text_of_own("0110007");
  EXPECT_STREQ(reader.next()->blockette_raw, "0110009XX");
}

TEST(ParsedBlock, MayBeReleasedAfterItsVolume) {
  const std::string bytes = "000001A 0340016003M~~000001S " + stages();
  SDBlk *blk = nullptr;
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  ASSERT_GT(sdblk_parseblk(vol, &blk), 0);
  ASSERT_EQ(sdblk_unstuffblk(blk), 0);
  sdblk_closevol(vol);
  EXPECT_EQ(text_of(blk->contents, "name"), "M");
  sdblk_free(blk);
}

// A block of the program's own, all zero.
SDBlk *zero_block() { return zeroed<SDBlk>(1); }

TEST(ZeroBlock, IsFilledWithAControlBlockette) {
  const std::string bytes = "000001S " + stages() + "0110007 ";
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  SDBlk *blk = zero_block();
  EXPECT_EQ(sdblk_parseblk(vol, &blk), 21);
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(integer_of(blk->contents, "nstages"), 2);
  EXPECT_EQ(sdblk_parseblk(vol, &blk), 7);
  sdblk_free(blk);
  sdblk_closevol(vol);
}

TEST_F(ChainTest, ZeroBlockIsFilledWithADataRecord) {
  SDBlk *blk = zero_block();
  EXPECT_EQ(sdblk_parseblk(vol_, &blk), 0);
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(integer_of(blk->next->next->contents, "qual"), 50);
  sdblk_free(blk);
}

TEST_F(ChainTest, ZeroBlockOfADataRecordIsDecoded) {
  SDBlk *blk = zero_block();
  blk->blockette_type = SDBLK_DATA_RECORD;
  blk->data_ptr = bytes_.data();
  vol_->logical_length = 512;
  blk->vol = vol_;
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(text_of(blk->contents, "sta"), "STA");
  EXPECT_EQ(integer_of(blk->next->contents, "dlenp"), 9);
  sdblk_free(blk);
}

TEST(ZeroBlock, HasNothingToDecode) {
  LogCapture log;
  SDBlk *blk = zero_block();
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  blk->blockette_type = SDBLK_DATA_RECORD;
  blk->data_ptr = "000001D ";
  EXPECT_EQ(sdblk_unstuffblk(blk), -1);
  sdblk_free(blk);
}

TEST(ZeroBlock, WithoutAVolumeRefersToNothingAndDefinesNothing) {
  ASSERT_EQ(sdblk_blkdefs_init(), 0);
  SDBlk *blk = zero_block();
  blk->blockette_raw = text_of_own("03100160001N~000");
  blk->blockette_length = 16;
  blk->blockette_type = 31;
  blk->blkdef = seed_blkdefs_index[31];
  EXPECT_EQ(sdblk_unstuffblk(blk), 0);
  EXPECT_EQ(integer_of(blk->contents, "uid"), 0);
  EXPECT_EQ(entry_of(blk->contents, "uid").ref, nullptr);
  sdblk_free(blk);
}

TEST(ZeroBlock, WithoutMemoryIsNotFilled) {
  LogCapture log;
  const std::string bytes = "000001S " + stages();
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  SDBlk *blk = zero_block();
  blk->contents = newarr();
  {
    const FailingMemory memory(1);
    EXPECT_EQ(sdblk_parseblk(vol, &blk), -1);
  }
  EXPECT_EQ(sdblk_parseblk(vol, &blk), 21);
  sdblk_free(blk);
  sdblk_closevol(vol);
}

TEST_F(ChainTest, SingleReleaseOfARecordLeavesItsChain) {
  SDBlk *record = decode();
  SDBlk *first = record->next;
  sdblk_free_single(record);
  EXPECT_EQ(integer_of(first->contents, "dlenp"), 9);
  EXPECT_EQ(integer_of(first->next->contents, "qual"), 50);
  sdblk_free(first);
}

TEST_F(ChainTest, BlockettesAreReleasedOneByOne) {
  SDBlk *record = decode();
  SDBlk *first = record->next;
  sdblk_free_single(record);
  SDBlk *second = first->next;
  sdblk_free_single(first);
  EXPECT_EQ(integer_of(second->contents, "qual"), 50);
  sdblk_free_single(second);
}

TEST_F(ChainTest, SingleReleaseOfAClearedRecordReleasesTheSpareBlockettes) {
  SDBlk *record = decode();
  sdblk_clear(record);
  sdblk_free_single(record);
  // The volume does not miss it.
  record = nullptr;
  EXPECT_EQ(sdblk_parseblk(vol_, &record), SDBLK_EOF);
}

}  // namespace
