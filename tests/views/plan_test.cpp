#include "views/plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

using namespace tarvik;

namespace {

const Plan::Field &field(const Plan &plan, std::string_view key) {
  return *std::find_if(plan.fields.begin(), plan.fields.end(),
                       [&](const Plan::Field &f) { return f.def->key == key; });
}
const Plan::Field &field(int type, std::string_view key) {
  return field(plan_of(definition_of(type)), key);
}

TEST(FormOf, NumbersAndTexts) {
  EXPECT_EQ(field(50, "sta").form, Form::text);
  EXPECT_EQ(field(10, "version").form, Form::text);
  EXPECT_EQ(field(50, "nchans").form, Form::integer);
  EXPECT_EQ(field(34, "uid").form, Form::integer);
  EXPECT_EQ(field(50, "lat").form, Form::real);
  EXPECT_EQ(field(100, "samprate").form, Form::real);
}

TEST(FormOf, TimesAreTextsAndBinaryOnes) {
  EXPECT_EQ(field(50, "time").form, Form::time);
  EXPECT_EQ(field(SDBLK_DATA_RECORD, "time").form, Form::time);
}

TEST(FormOf, UlongIsUnsignedAndLongIsNot) {
  EXPECT_EQ(field(500, "count").form, Form::unsigned_integer);
  EXPECT_EQ(field(2000, "record").form, Form::unsigned_integer);
  EXPECT_EQ(field(SDBLK_DATA_RECORD, "tcor").form, Form::integer);
}

TEST(FormOf, WhatRepeats) {
  EXPECT_EQ(field(30, "keys").form, Form::texts);
  EXPECT_EQ(field(41, "coefs").form, Form::reals);
  EXPECT_EQ(field(53, "zeros").form, Form::group);
  EXPECT_EQ(field(field(60, "stages").group.front(), "resps").form, Form::references);
}

std::string put(const MemberKey &key) {
  std::array<char, MemberKey::kRoom> room;
  return {room.data(), key.put(room.data())};
}

TEST(MemberKeyPut, HasACommaBefore) {
  EXPECT_EQ(put(MemberKey("time")), ",\"time\":");
  EXPECT_EQ(MemberKey("time").as_first(), "\"time\":");
}

TEST(MemberKeyPut, LongestThatFitsIsWhole) {
  const std::string longest(MemberKey::kRoom - 4, 'k');
  EXPECT_EQ(put(MemberKey(longest)), ",\"" + longest + "\":");
  EXPECT_THROW(MemberKey(longest + "k"), std::out_of_range);
}

TEST(PlanOf, HasTheFieldsOfTheCatalogueInOrder) {
  const SDBlkDef &def = definition_of(51);
  const Plan &plan = plan_of(def);
  ASSERT_EQ(plan.fields.size(), 4U);
  EXPECT_EQ(plan.defs, def.fields);
  EXPECT_EQ(plan.fields[0].key.as_first(), "\"time\":");
  EXPECT_EQ(plan.fields[1].key.as_first(), "\"endtime\":");
  EXPECT_EQ(plan.fields[2].key.as_first(), "\"cid\":");
  EXPECT_EQ(plan.fields[3].key.as_first(), "\"level\":");
}

TEST(PlanOf, HasTheNameAsAJsonText) {
  EXPECT_EQ(plan_of(definition_of(51)).name, "\"Station Comment Blockette\"");
}

TEST(PlanOf, EveryDefinitionHasItsOwn) {
  for (const SDBlkDef &def : seed_blkdefs) {
    EXPECT_EQ(plan_of(def).defs, def.fields) << def.type;
    EXPECT_EQ(plan_of(def).fields.size(), static_cast<std::size_t>(def.nfields)) << def.type;
  }
}

TEST(PlanOf, TellsWhatRefersToAbbreviations) {
  EXPECT_TRUE(plan_of(definition_of(51)).has_references);
  EXPECT_TRUE(field(51, "cid").refers);
  EXPECT_FALSE(field(51, "level").refers);
  EXPECT_FALSE(field(31, "cid").refers);
  EXPECT_TRUE(field(31, "uid").refers);
}

TEST(PlanOf, TellsWhatDefinesACode) {
  EXPECT_TRUE(plan_of(definition_of(34)).defines);
  EXPECT_TRUE(plan_of(definition_of(41)).defines);
  EXPECT_FALSE(plan_of(definition_of(51)).defines);
  EXPECT_FALSE(plan_of(definition_of(61)).defines);
}

TEST(PlanOf, CountsTheBytesOfFieldsThatStandAlone) {
  EXPECT_EQ(plan_of(definition_of(SDBLK_DATA_RECORD)).bytes, 40U);
  EXPECT_EQ(plan_of(definition_of(1001)).bytes, 4U);
  EXPECT_EQ(plan_of(definition_of(57)).bytes, 44U);
}

TEST(PlanOf, CountsNoBytesOfTextsGroupsCodesAndReferences) {
  EXPECT_EQ(plan_of(definition_of(70)).bytes, 0U);
  EXPECT_EQ(plan_of(definition_of(58)).bytes, 0U);
  EXPECT_EQ(plan_of(definition_of(34)).bytes, 0U);
  EXPECT_EQ(plan_of(definition_of(62)).bytes, 0U);
}

TEST(DefinitionOf, IsThatOfTheType) {
  EXPECT_STREQ(definition_of(5).id, "B0005");
  EXPECT_STREQ(definition_of(SDBLK_DATA_RECORD).id, "DATA");
  EXPECT_STREQ(definition_of(2000).id, "B2000");
}

TEST(PlanOf, ReferencesOfAGroupAreItsOwn) {
  EXPECT_FALSE(plan_of(definition_of(60)).has_references);
  EXPECT_TRUE(field(60, "stages").group.front().has_references);
  EXPECT_TRUE(plan_of(definition_of(71)).has_references);
  EXPECT_TRUE(field(71, "mags").group.front().has_references);
}

}  // namespace
