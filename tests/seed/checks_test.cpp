// Each check of the catalogue passes a sound definition and sees the fault that it is there for.
#include "seed/blkdefs/checks.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "seed/blkdefs/rows.h"
#include "seed/sdblk.h"

using namespace tarvik;

namespace {

using namespace tarvik::blkdefs;

SDBlkFieldDef integer(const char *key) {
  return field(key, 'D', 2, "##", SDBLK_INT, "Title", "Description");
}
SDBlkFieldDef text(const char *key) {
  return field(key, 'A', 5, "[UN]", SDBLK_STRING, "Title", "Description");
}
SDBlkFieldDef binary(const char *key, std::int32_t width, const char *format) {
  return field(key, 'B', width, format, SDBLK_INT, "Title", "Description");
}
SDBlkFieldDef definer_of(const char *key) {
  return defines(key, 'D', 3, "###", "Title", "Description");
}
SDBlkFieldDef reference_to(const char *abbr_key) {
  return refers("code", 'D', 3, "###", abbr_key, "Title", "Description");
}
SDBlkFieldDef references_to(const char *abbr_key) {
  return refs("codes", 'D', 3, "###", "n", abbr_key, "Title", "Description");
}
SDBlkFieldDef reals(const char *key, const char *count) {
  return repeated(key, 'F', 12, "-#.#####E-##", SDBLK_DOUBLE_ARRAY, count, "Title", "Description");
}

TEST(Types, MustAscendWithinTheIndex) {
  const SDBlkFieldDef fields[] = {integer("n")};
  const auto types = [&](std::int32_t first, std::int32_t second) {
    const std::array<SDBlkDef, 2> defs = {blockette(first, "B", "Name", "S", fields, ""),
                                          blockette(second, "B", "Name", "S", fields, "")};
    return types_ascend_within_index(defs);
  };
  EXPECT_TRUE(types(5, 2047));
  EXPECT_FALSE(types(5, 5));
  EXPECT_FALSE(types(6, 5));
  EXPECT_FALSE(types(5, 2048));
  EXPECT_FALSE(types(-1, 5));
}

TEST(Ids, MustSpellTheType) {
  const SDBlkFieldDef fields[] = {integer("n")};
  const auto id = [&](std::int32_t type, const char *text) {
    const std::array<SDBlkDef, 1> defs = {blockette(type, text, "Name", "S", fields, "")};
    return ids_match_types(defs);
  };
  EXPECT_TRUE(id(5, "B0005"));
  EXPECT_TRUE(id(99, "DATA"));
  EXPECT_FALSE(id(99, "B0099"));
  EXPECT_FALSE(id(5, "B0006"));
  EXPECT_FALSE(id(5, "B05"));
  EXPECT_FALSE(id(5, "C0005"));
}

TEST(Keys, MustBeUniqueInTheirArray) {
  const SDBlkFieldDef unique[] = {integer("a"), integer("b")};
  const SDBlkFieldDef twice[] = {integer("a"), integer("b"), integer("a")};
  EXPECT_TRUE(keys_are_unique(unique, 50));
  EXPECT_FALSE(keys_are_unique(twice, 50));
  const SDBlkFieldDef later[] = {integer("a"), integer("b"), integer("c"), integer("b")};
  EXPECT_FALSE(keys_are_unique(later, 50));
}

TEST(Keys, OfGroupsAreLookedAtToo) {
  static const SDBlkFieldDef twice[] = {integer("a"), integer("a")};
  const SDBlkFieldDef fields[] = {integer("n"), group("g", "n", twice, "Title", "Description")};
  const std::array<SDBlkDef, 1> defs = {blockette(50, "B0050", "Name", "S", fields, "")};
  EXPECT_FALSE(every_array(defs, keys_are_unique));
}

TEST(Counts, MustStandBeforeWhatTheyCount) {
  const SDBlkFieldDef before[] = {integer("n"), reals("values", "n")};
  const SDBlkFieldDef after[] = {reals("values", "n"), integer("n")};
  const SDBlkFieldDef no_number[] = {text("n"), reals("values", "n")};
  EXPECT_TRUE(counts_stand_before(before, 53));
  EXPECT_FALSE(counts_stand_before(after, 53));
  EXPECT_FALSE(counts_stand_before(no_number, 53));
}

TEST(Counts, OfTheMiscountedGroupsMustBeMissing) {
  static const SDBlkFieldDef sub[] = {integer("a")};
  const SDBlkFieldDef missing[] = {integer("ncorners"),
                                   group("corners", "nfaps", sub, "Title", "Description")};
  const SDBlkFieldDef mended[] = {integer("ncorners"),
                                  group("corners", "ncorners", sub, "Title", "Description")};
  EXPECT_TRUE(counts_stand_before(missing, 56));
  EXPECT_FALSE(counts_stand_before(mended, 56));
  EXPECT_FALSE(counts_stand_before(missing, 55));
}

TEST(References, MustHaveADefinition) {
  const SDBlkFieldDef definer[] = {definer_of("uid")};
  const SDBlkFieldDef known[] = {reference_to("uid")};
  const SDBlkFieldDef unknown[] = {reference_to("xid")};
  const auto sound = [&](const SDBlkFieldDef(&fields)[1]) {
    const std::array<SDBlkDef, 2> defs = {blockette(34, "B0034", "Name", "A", definer, ""),
                                          blockette(52, "B0052", "Name", "S", fields, "")};
    return references_are_sane(defs);
  };
  EXPECT_TRUE(sound(known));
  EXPECT_FALSE(sound(unknown));
}

TEST(References, AreIntegersOrReferenceArrays) {
  const SDBlkFieldDef definer[] = {definer_of("cid")};
  const std::array<SDBlkDef, 1> defs = {blockette(31, "B0031", "Name", "A", definer, "")};
  SDBlkFieldDef codes = references_to("cid");
  EXPECT_TRUE(reference_is_sane(defs, codes));
  codes.abbr_key = nullptr;
  EXPECT_FALSE(reference_is_sane(defs, codes));
  SDBlkFieldDef name = text("name");
  EXPECT_TRUE(reference_is_sane(defs, name));
  name.abbr_key = "cid";
  EXPECT_FALSE(reference_is_sane(defs, name));
}

TEST(Widths, OfBinaryFieldsAreThoseOfTheirConversion) {
  EXPECT_TRUE(width_is_sane(binary("v", 1, "BYTE")));
  EXPECT_TRUE(width_is_sane(binary("v", 1, "UBYTE")));
  EXPECT_TRUE(width_is_sane(binary("v", 2, "WORD")));
  EXPECT_TRUE(width_is_sane(binary("v", 2, "UWORD")));
  EXPECT_TRUE(width_is_sane(binary("v", 4, "LONG")));
  EXPECT_TRUE(width_is_sane(field("v", 'B', 4, "FLOAT", SDBLK_DOUBLE, "Title", "Description")));
  EXPECT_TRUE(width_is_sane(field("v", 'B', 10, "BTIME", SDBLK_DOUBLE, "Title", "Description")));
  EXPECT_FALSE(width_is_sane(binary("v", 2, "LONG")));
  EXPECT_FALSE(width_is_sane(binary("v", 2, "##")));
}

TEST(Widths, OfTextFieldsFitTheBuffer) {
  const auto width = [](char type, std::int32_t size, std::int32_t kind) {
    return width_is_sane(field("v", type, size, "", kind, "Title", "Description"));
  };
  EXPECT_TRUE(width('A', 4095, SDBLK_STRING));
  EXPECT_FALSE(width('A', 4096, SDBLK_STRING));
  EXPECT_FALSE(width('A', 0, SDBLK_STRING));
  EXPECT_TRUE(width('V', 80, SDBLK_STRING));
  EXPECT_FALSE(width('V', 4096, SDBLK_STRING));
  EXPECT_TRUE(width('V', 0, SDBLK_STRING_ARRAY));
  EXPECT_FALSE(width('V', 0, SDBLK_STRING));
}

TEST(Widths, OfNumbersAreThoseOfTheirPicture) {
  const auto width = [](std::int32_t size, const char *picture) {
    return width_is_sane(field("v", 'D', size, picture, SDBLK_INT, "Title", "Description"));
  };
  EXPECT_TRUE(width(3, "###"));
  EXPECT_FALSE(width(4, "###"));
  EXPECT_FALSE(width(81,
                     "#################################################################"
                     "################"));
}

TEST(Widths, OfGroupsAreNone) {
  static const SDBlkFieldDef sub[] = {integer("a")};
  SDBlkFieldDef def = group("g", "n", sub, "Title", "Description");
  EXPECT_TRUE(width_is_sane(def));
  def.width = 1;
  EXPECT_FALSE(width_is_sane(def));
}

TEST(GroupFields, StandInGroupsAlone) {
  static const SDBlkFieldDef sub[] = {integer("a")};
  SDBlkFieldDef def = group("g", "n", sub, "Title", "Description");
  EXPECT_TRUE(group_is_sane(def));
  def.nsub = 0;
  EXPECT_FALSE(group_is_sane(def));
  SDBlkFieldDef plain = integer("n");
  EXPECT_TRUE(group_is_sane(plain));
  plain.nsub = 1;
  EXPECT_FALSE(group_is_sane(plain));
}

TEST(RepetitionCounts, StandWithRepeatingKindsAlone) {
  SDBlkFieldDef def = reals("values", "n");
  EXPECT_TRUE(repetition_is_sane(def));
  def.number_entry = nullptr;
  EXPECT_FALSE(repetition_is_sane(def));
  SDBlkFieldDef plain = integer("n");
  EXPECT_TRUE(repetition_is_sane(plain));
  plain.number_entry = "n";
  EXPECT_FALSE(repetition_is_sane(plain));
}

TEST(Texts, MustBeThere) {
  EXPECT_TRUE(text_is_there(integer("n")));
  EXPECT_FALSE(text_is_there(integer("")));
  EXPECT_FALSE(text_is_there(field("n", 'D', 2, "##", SDBLK_INT, "", "Description")));
  EXPECT_FALSE(text_is_there(field("n", 'D', 2, "##", SDBLK_INT, "Title", "")));
}

}  // namespace
