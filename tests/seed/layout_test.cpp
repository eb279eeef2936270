// Definitions with a layout decode by places to what the field walker makes of the same bytes.
#include "seed/layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "seed/block.h"
#include "seed/sdblk.h"
#include "support/arena.h"
#include "support/arr_impl.h"
#include "support/memory.h"
#include "tests/util/log_capture.h"

using namespace tarvik;

namespace {

struct Release {
  void operator()(Arr *array) const { freearr(array, free_sdblk_entry); }
};
using Contents = std::unique_ptr<Arr, Release>;

struct Decoded {
  Contents contents;
  int result;
};

Decoded unpack(const SDBlkDef &def, std::string_view bytes, bool big_endian) {
  SDBlkVol vol = {};
  // No byte more than given, so that the sanitizers see a step after them.
  const std::vector<char> image(bytes.begin(), bytes.end());
  Arr *contents = arr_new_pooled(512);
  const Cursor cursor(image.data(), static_cast<std::int64_t>(image.size()));
  const int result = unpack_fields(&contents, cursor, {&vol, big_endian}, def);
  return {Contents(contents), result};
}

const SDBlkDef &definition(std::int32_t type) {
  return *std::find_if(std::begin(seed_blkdefs), std::end(seed_blkdefs),
                       [&](const SDBlkDef &def) { return def.type == type; });
}

std::string value_of(const SDBlkEntry &entry) {
  switch (entry.def->kind) {
    case SDBLK_STRING: return entry.value.s;
    case SDBLK_DOUBLE: return std::to_string(std::bit_cast<std::uint64_t>(entry.value.d));
    default: return std::to_string(entry.value.i);
  }
}

// Key, kind and value of each entry, in order.
std::vector<std::string> entries_of(const Arr *contents) {
  std::vector<std::string> entries;
  for (std::uint32_t i = 0; i < contents->count; ++i) {
    const auto &entry = *static_cast<const SDBlkEntry *>(contents->pairs[i].value);
    entries.push_back(std::string(contents->pairs[i].key) + " " + std::to_string(entry.def->kind) +
                      " " + std::to_string(entry.count) + " " + std::to_string(entry.pooled) +
                      (entry.ref == nullptr ? " " : " -> ") + value_of(entry));
  }
  return entries;
}

// What the walker, which knows no layout for copied fields, makes of the bytes.
std::vector<std::string> walked(const SDBlkDef &def, std::string_view bytes, bool big_endian) {
  const std::vector<SDBlkFieldDef> fields(def.fields, def.fields + def.nfields);
  SDBlkDef copy = def;
  copy.fields = fields.data();
  const Decoded decoded = unpack(copy, bytes, big_endian);
  EXPECT_EQ(decoded.result, 0);
  return entries_of(decoded.contents.get());
}

std::int32_t layout_bytes(std::int32_t type) { return find_layout(definition(type))->bytes; }

std::vector<std::int32_t> types_with_layout() {
  std::vector<std::int32_t> types;
  for (const SDBlkDef &def : seed_blkdefs) {
    if (find_layout(def) != nullptr) types.push_back(def.type);
  }
  return types;
}

TEST(Layout, OfDataBlockettesWithoutVariableTexts) {
  EXPECT_EQ(types_with_layout(), (std::vector<std::int32_t>{99, 100, 200, 201, 300, 310, 320, 390,
                                                            395, 400, 405, 500, 1000, 1001}));
}

TEST(Layout, BytesAreThoseOfTheManual) {
  EXPECT_EQ(layout_bytes(99), 40);
  EXPECT_EQ(layout_bytes(100), 5);
  EXPECT_EQ(layout_bytes(200), 48);
  EXPECT_EQ(layout_bytes(1000), 3);
  EXPECT_EQ(layout_bytes(1001), 4);
}

TEST(Layout, OfOtherFieldsIsNotKnown) {
  SDBlkDef fewer = definition(1000);
  fewer.nfields = 2;
  EXPECT_EQ(find_layout(fewer), nullptr);
  const std::vector<SDBlkFieldDef> fields(fewer.fields, fewer.fields + 3);
  SDBlkDef other = definition(1000);
  other.fields = fields.data();
  EXPECT_EQ(find_layout(other), nullptr);
}

TEST(Unpack, AnyBytesGiveWhatTheWalkerGives) {
  std::mt19937 random(7);
  for (const std::int32_t type : types_with_layout()) {
    const SDBlkDef &def = definition(type);
    std::string bytes(static_cast<std::size_t>(layout_bytes(type)), '\0');
    for (int round = 0; round < 300; ++round) {
      for (char &byte : bytes) byte = static_cast<char>(random());
      for (const bool big_endian : {false, true}) {
        const Decoded decoded = unpack(def, bytes, big_endian);
        ASSERT_EQ(decoded.result, 0);
        ASSERT_EQ(entries_of(decoded.contents.get()), walked(def, bytes, big_endian)) << type;
      }
    }
  }
}

// Every text of up to five characters out of those that trimming tells apart.
TEST(Unpack, TextsAreTrimmedAsByTheWalker) {
  constexpr std::string_view kCharacters("A \t\0\xa0", 5);
  const SDBlkDef &def = definition(SDBLK_DATA_RECORD);
  std::string bytes(40, '\x01');
  for (int number = 0; number < 5 * 5 * 5 * 5 * 5; ++number) {
    int rest = number;
    for (std::size_t i = 0; i < 5; ++i, rest /= 5) {
      bytes[i] = kCharacters[static_cast<std::size_t>(rest % 5)];
    }
    const Decoded decoded = unpack(def, bytes, true);
    const auto &sta = *static_cast<const SDBlkEntry *>(getarr(decoded.contents.get(), "sta"));
    const std::string expected = walked(def, bytes, true)[0];
    ASSERT_EQ("sta -4 1 1 " + std::string(sta.value.s), expected) << number;
  }
}

TEST(Unpack, FewerBytesGiveTheFieldsThatTheWalkerFinds) {
  const std::string bytes(40, 'x');
  for (const std::int32_t type : {99, 1000, 1001}) {
    const SDBlkDef &def = definition(type);
    for (std::int32_t size = 0; size < layout_bytes(type); ++size) {
      const std::string_view some =
          std::string_view(bytes).substr(0, static_cast<std::size_t>(size));
      const Decoded decoded = unpack(def, some, true);
      EXPECT_EQ(decoded.result, 0);
      EXPECT_EQ(entries_of(decoded.contents.get()), walked(def, some, true)) << size;
    }
  }
}

TEST(Unpack, EntriesThatAProgramSetStay) {
  const SDBlkDef &def = definition(1000);
  SDBlkFieldDef mine = {};
  mine.key = "mine";
  mine.kind = SDBLK_INT;
  SDBlkEntry entry = {&mine, nullptr, 1, {}, 1, 0};
  SDBlkVol vol = {};
  Contents contents(newarr());
  setarr(contents.get(), "mine", &entry);
  Arr *array = contents.get();
  EXPECT_EQ(unpack_fields(&array, {"\x0b\x01\x09", 3}, {&vol, true}, def), 0);
  EXPECT_EQ(array, contents.get());
  EXPECT_EQ(countarr(array), 4);
  EXPECT_EQ(getarr(array, "mine"), &entry);
  std::int32_t format = 0;
  EXPECT_EQ(sdblk_getv(array, "format", &format, nullptr), 0);
  EXPECT_EQ(format, 11);
}

TEST(Unpack, AnArrayIsMadeWhereThereIsNone) {
  SDBlkVol vol = {};
  Arr *array = nullptr;
  EXPECT_EQ(unpack_fields(&array, {"\x0b\x01\x09", 3}, {&vol, true}, definition(1000)), 0);
  const Contents contents(array);
  EXPECT_EQ(countarr(array), 3);
}

TEST(Unpack, WithoutMemoryTheFirstFieldIsNamed) {
  Arena::one_piece_per_chunk = true;
  SDBlkVol vol = {};
  const Contents contents(arr_new_pooled(8));
  Arr *array = contents.get();
  LogCapture log;
  {
    const FailingMemory memory(1);
    EXPECT_EQ(unpack_fields(&array, {"\x0b\x01\x09", 3}, {&vol, true}, definition(1000)), -1);
  }
  Arena::one_piece_per_chunk = false;
  EXPECT_EQ(log.registered(),
            "sdblk_unstuff_sblk: malloc(entry=format,40) error.\n"
            "    Cannot allocate memory\n");
  EXPECT_EQ(countarr(array), 0);
}

}  // namespace
