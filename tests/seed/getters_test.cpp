// The getters whose kind is checked.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "seed/sdblk.h"
#include "tests/util/log_capture.h"

namespace {

SDBlkFieldDef definition(std::int32_t kind) {
  SDBlkFieldDef def = {};
  def.kind = kind;
  return def;
}

// An array with an entry of each kind, under the kind's name.
class Getters : public testing::Test {
 protected:
  Getters() {
    add("int", &int_, SDBLK_INT, 1).value.i = 42;
    int_.ref = &abbreviation_;
    add("code", &code_, SDBLK_ABBR_KEY, 1).value.i = 7;
    add("real", &real_, SDBLK_DOUBLE, 1).value.d = 1.5;
    add("text", &text_, SDBLK_STRING, 1).value.s = letters_.data();
    add("ints", &ints_, SDBLK_INT_ARRAY, 3).value.ia = integers_.data();
    add("reals", &reals_, SDBLK_DOUBLE_ARRAY, 2).value.da = doubles_.data();
    add("texts", &texts_, SDBLK_STRING_ARRAY, 1).value.sa = strings_.data();
    add("groups", &groups_, SDBLK_GROUP_ARRAY, 2).value.ea = arrays_.data();
    add("refs", &refs_, SDBLK_REF_ARRAY, 1).value.ra = references_.data();
    add("other", &other_, -42, 1);
  }
  ~Getters() override { freearr(contents_, nullptr); }

  struct Field : SDBlkEntry {
    SDBlkFieldDef def_of_kind;
  };
  SDBlkEntry &add(const char *key, Field *field, std::int32_t kind, std::int32_t count) {
    *field = {};
    field->def_of_kind = definition(kind);
    field->def = &field->def_of_kind;
    field->count = count;
    setarr(contents_, key, static_cast<SDBlkEntry *>(field));
    return *field;
  }

  LogCapture log_;
  Arr *contents_ = newarr();
  SDBlk abbreviation_ = {};
  std::array<char, 6> letters_ = {"hello"};
  std::array<std::int32_t, 3> integers_ = {1, -2, 3};
  std::array<double, 2> doubles_ = {0.5, 2.5};
  std::array<char *, 1> strings_ = {letters_.data()};
  std::array<Arr *, 2> arrays_ = {contents_, nullptr};
  std::array<SDBlkAbbrRef, 1> references_ = {{{4, &abbreviation_}}};
  Field int_, code_, real_, text_, ints_, reals_, texts_, groups_, refs_, other_;
};

TEST_F(Getters, IntegersAndCodesAreIntegers) {
  std::int32_t value = 0;
  EXPECT_EQ(sdblk_get_int(contents_, "int", &value), 0);
  EXPECT_EQ(value, 42);
  EXPECT_EQ(sdblk_get_int(contents_, "code", &value), 0);
  EXPECT_EQ(value, 7);
}

TEST_F(Getters, RealNumberAndText) {
  double value = 0;
  const char *text = nullptr;
  EXPECT_EQ(sdblk_get_double(contents_, "real", &value), 0);
  EXPECT_EQ(value, 1.5);
  EXPECT_EQ(sdblk_get_text(contents_, "text", &text), 0);
  EXPECT_STREQ(text, "hello");
}

TEST_F(Getters, AbbreviationOfAnInteger) {
  const SDBlk *block = nullptr;
  EXPECT_EQ(sdblk_get_abbr(contents_, "int", &block), 0);
  EXPECT_EQ(block, &abbreviation_);
  EXPECT_EQ(sdblk_get_abbr(contents_, "code", &block), 0);
  EXPECT_EQ(block, nullptr);
}

TEST_F(Getters, ArraysComeWithTheirCount) {
  std::int32_t count = 0;
  const std::int32_t *integers = nullptr;
  EXPECT_EQ(sdblk_get_ints(contents_, "ints", &integers, &count), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(integers[1], -2);
  const double *reals = nullptr;
  EXPECT_EQ(sdblk_get_doubles(contents_, "reals", &reals, &count), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(reals[1], 2.5);
  const char *const *texts = nullptr;
  EXPECT_EQ(sdblk_get_texts(contents_, "texts", &texts, &count), 0);
  EXPECT_EQ(count, 1);
  EXPECT_STREQ(texts[0], "hello");
  Arr *const *groups = nullptr;
  EXPECT_EQ(sdblk_get_groups(contents_, "groups", &groups, &count), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(groups[1], nullptr);
  const SDBlkAbbrRef *references = nullptr;
  EXPECT_EQ(sdblk_get_refs(contents_, "refs", &references, &count), 0);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(references[0].code, 4);
}

TEST_F(Getters, CountMayBeLeftOut) {
  const double *reals = nullptr;
  EXPECT_EQ(sdblk_get_doubles(contents_, "reals", &reals, nullptr), 0);
  EXPECT_EQ(reals[0], 0.5);
}

TEST_F(Getters, MissingFieldLeavesTheResult) {
  double value = -1;
  std::int32_t count = -1;
  const double *values = nullptr;
  EXPECT_EQ(sdblk_get_double(contents_, "gone", &value), -1);
  EXPECT_EQ(sdblk_get_doubles(nullptr, "reals", &values, &count), -1);
  EXPECT_EQ(value, -1);
  EXPECT_EQ(count, -1);
  EXPECT_EQ(log_.registered(),
            "sdblk_getv: entry 'gone' not defined.\n"
            "sdblk_getv: entry 'reals' not defined.\n");
}

TEST_F(Getters, FieldOfAnotherKindLeavesTheResult) {
  std::int32_t integer = -1;
  EXPECT_EQ(sdblk_get_int(contents_, "real", &integer), -1);
  EXPECT_EQ(integer, -1);
  EXPECT_EQ(log_.registered(),
            "sdblk_get_entry: entry 'real' holds a real number, not an integer.\n");
}

TEST_F(Getters, EveryKindIsNamed) {
  struct Expected {
    const char *key;
    std::int32_t asked;
    const char *message;
  };
  const Expected all[] = {
      {"int", SDBLK_DOUBLE, "'int' holds an integer, not a real number"},
      {"int", SDBLK_ABBR_KEY, "'int' holds an integer, not a lookup code"},
      {"code", SDBLK_STRING, "'code' holds a lookup code, not a text"},
      {"text", SDBLK_INT_ARRAY, "'text' holds a text, not integers"},
      {"ints", SDBLK_DOUBLE_ARRAY, "'ints' holds integers, not real numbers"},
      {"reals", SDBLK_STRING_ARRAY, "'reals' holds real numbers, not texts"},
      {"texts", SDBLK_GROUP_ARRAY, "'texts' holds texts, not groups"},
      {"groups", SDBLK_REF_ARRAY, "'groups' holds groups, not references"},
      {"refs", SDBLK_INT, "'refs' holds references, not an integer"},
      {"other", SDBLK_INT, "'other' holds nothing, not an integer"},
  };
  for (const Expected &expected : all) {
    EXPECT_EQ(sdblk_get_entry(contents_, expected.key, expected.asked), nullptr);
    EXPECT_EQ(log_.registered(), std::string("sdblk_get_entry: entry ") + expected.message + ".\n");
  }
}

}  // namespace
