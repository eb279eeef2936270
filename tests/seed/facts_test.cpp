#include "seed/facts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/util/decoded.h"
#include "tests/util/log_capture.h"

using namespace tarvik;

namespace {

// The definition of a type.
const SDBlkDef &definition(std::int32_t type) {
  sdblk_blkdefs_init();
  return *seed_blkdefs_index[type];
}

FieldFacts at(const FieldList &list, std::int64_t i) {
  FieldFacts made = {};
  return list.facts_at(i, &made);
}

const FieldFacts &find(const FieldList &list, std::string_view key) {
  for (std::int64_t i = 0; i < list.count; ++i) {
    if (key == list.fields[i].key) return list.facts[i];
  }
  throw std::out_of_range(std::string("no field ") + std::string(key));
}

std::string_view label_of(const FieldFacts &field) {
  return {field.label.data(), field.label_size};
}

struct ExpectedConversion {
  std::int32_t type;
  const char *key;
  Conversion conversion;
};

TEST(FieldFacts, ConversionFollowsKindAndFormat) {
  const ExpectedConversion expected[] = {
      {5, "version", Conversion::text},
      {5, "llenp", Conversion::digits},
      {5, "time", Conversion::time},
      {11, "stas", Conversion::group_array},
      {30, "did", Conversion::lookup_code},
      {30, "keys", Conversion::string_array},
      {41, "coefs", Conversion::double_array},
      {50, "lat", Conversion::real},
      {50, "net_gid", Conversion::digits},
      {99, "time", Conversion::btime},
      {99, "nsamp", Conversion::uword},
      {99, "srate_factor", Conversion::word},
      {99, "nblks", Conversion::ubyte},
      {99, "tcor", Conversion::integer32},
      {100, "samprate", Conversion::ieee_float},
      {300, "ramp", Conversion::integer32},
  };
  for (const ExpectedConversion &row : expected) {
    const FieldFacts &field = find(list_of(definition(row.type)), row.key);
    EXPECT_EQ(field.conversion, row.conversion) << row.type << ' ' << row.key;
  }
}

TEST(FieldFacts, OfAGroupHasThoseOfItsFields) {
  const FieldList stage = list_of(find(list_of(definition(60)), "stages"));
  ASSERT_EQ(stage.count, 3);
  EXPECT_EQ(find(stage, "resps").conversion, Conversion::ref_array);
  EXPECT_EQ(label_of(find(stage, "stage")), "stage      = ");
}

TEST(FieldFacts, GroupOfNumbersHasNothingElse) {
  EXPECT_TRUE(find(list_of(definition(53)), "poles").is_numbers);
  EXPECT_FALSE(find(list_of(definition(58)), "histories").is_numbers);  // each has a time
  EXPECT_FALSE(find(list_of(definition(60)), "stages").is_numbers);
  EXPECT_FALSE(find(list_of(definition(53)), "npoles").is_numbers);
}

TEST(FieldFacts, LabelIsThePaddedKey) {
  const FieldList header = list_of(definition(99));
  EXPECT_EQ(label_of(find(header, "sta")), "sta        = ");
  EXPECT_EQ(label_of(find(header, "srate_multiplier")), "srate_multiplier = ");
}

TEST(FieldFacts, OfEveryFieldIsThatOfItsRow) {
  for (const SDBlkDef &def : seed_blkdefs) {
    const FieldList list = list_of(def);
    for (std::int64_t i = 0; i < list.count; ++i) {
      const SDBlkFieldDef &row = def.fields[i];
      ASSERT_EQ(list.facts[i].def, &row) << def.id;
      EXPECT_EQ(list.facts[i].key(), row.key) << def.id;
      EXPECT_EQ(list.facts[i].conversion, conversion_of(row.kind, row.format)) << def.id << row.key;
      for (std::int32_t j = 0; j < row.nsub; ++j) {
        EXPECT_EQ(list_of(list.facts[i]).facts[j].def, &row.sub[j]) << def.id;
      }
    }
  }
}

TEST(FieldFacts, KeyTooLongForALabelHasNone) {
  SDBlkFieldDef row = definition(11).fields[0];
  row.key = "a_key_of_21_character";
  EXPECT_EQ(label_of(facts_of(row)), "a_key_of_21_character = ");
  row.key = "a_key_of_22_characters";
  EXPECT_EQ(label_of(facts_of(row)), "");
  EXPECT_EQ(facts_of(row).key(), "a_key_of_22_characters");
}

TEST(FieldFacts, CopyOfADefinitionHasNone) {
  const SDBlkDef copy = definition(50);
  EXPECT_EQ(list_of(copy).facts, nullptr);
  EXPECT_EQ(at(list_of(copy), 0).conversion, Conversion::text);
  EXPECT_EQ(label_of(at(list_of(copy), 0)), "sta        = ");
}

// What a program changes in a copy of a row counts, for the decoder and for the listing.
TEST(FieldFacts, ChangedRowIsDecodedAndListedAsItSays) {
  SDBlkFieldDef row = definition(11).fields[0];
  row.key = "count_of_all";
  row.kind = SDBLK_STRING;
  row.format = "";
  const SDBlkDef def = {11, "B0011", "Changed", "", "V", 1, &row};
  const std::string bytes = "000001V 0110010007";
  Reader reader(bytes);
  ASSERT_EQ(reader.next(), 10);
  reader.blk().blkdef = &def;
  ASSERT_EQ(sdblk_unstuffblk(&reader.blk()), 0);
  EXPECT_EQ(text_of(reader.blk().contents, "count_of_all"), "007");
  LogCapture log;
  sdblk_printblk(&reader.blk(), "", 1);
  EXPECT_TRUE(log.take().ends_with("        count_of_all = 007\n"));
}

}  // namespace
