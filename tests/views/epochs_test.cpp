#include "views/epochs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/util/whole_reader.h"
#include "tests/views/station_blockettes.h"
#include "views/places.h"

using namespace tarvik;
using namespace station_blockettes;

namespace {

std::vector<Role> roles_of(std::initializer_list<int> types) {
  std::vector<Role> found;
  Roles roles;
  SDBlk block = {};
  for (const int type : types) {
    block.blockette_type = type;
    found.push_back(roles.of(block));
  }
  return found;
}

TEST(Roles, WhatFollowsAStationAndAChannelBelongsToThem) {
  EXPECT_EQ(
      roles_of({50, 51, 52, 59, 53, 60, 62, 51}),
      (std::vector<Role>{Role::station, Role::station_comment, Role::channel, Role::channel_comment,
                         Role::response, Role::response, Role::response, Role::station_comment}));
}

TEST(Roles, WhatStandsBeforeBelongsToNothing) {
  EXPECT_EQ(roles_of({51, 59, 53, 50, 59, 58}),
            (std::vector<Role>{Role::none, Role::none, Role::none, Role::station, Role::none,
                               Role::none}));
}

TEST(Roles, StationEndsTheChannelBefore) {
  EXPECT_EQ(roles_of({50, 52, 50, 53}),
            (std::vector<Role>{Role::station, Role::channel, Role::station, Role::none}));
}

TEST(Roles, OtherTypesAreNone) {
  EXPECT_EQ(roles_of({50, 52, 10, 63, 70, 99}),
            (std::vector<Role>{Role::station, Role::channel, Role::none, Role::none, Role::none,
                               Role::none}));
}

// ---- references ----

TEST(Referred, DefinitionAfterTheBlockIsLeftOutAlsoWhenItIsReadAgain) {
  const Place units(52, "sunits");
  VolumeWriter volume(4096);
  volume.control('S', channel("BHZ"));
  volume.control('A', unit(1, "M/S"));
  volume.control('S', channel("BHN"));
  WholeReader reader(volume.bytes(), 0, SDBLK_KEEP_ALL);
  const SDBlkPlace start = sdblk_place(reader.vol());
  std::vector<bool> defined;
  const auto ask = [&](const SDBlk &block) {
    const SDBlkEntry *entry = units.value(block);
    defined.push_back(entry != nullptr && referred(block, *entry) != nullptr);
  };
  while (const SDBlk *block = reader.decode_next()) {
    if (block->blockette_type == 52) ask(*block);
  }
  sdblk_go_to(reader.vol(), &start);
  while (SDBlk *block = reader.next()) {
    if (block->blockette_type != 52) continue;
    WholeReader::decode(block);
    ask(*block);
  }
  EXPECT_EQ(defined, (std::vector<bool>{false, true, false, true}));
}

// ---- responses ----

TEST(ForEachResponse, EndsWhenNoMoreAreTaken) {
  VolumeWriter volume(4096);
  for (const int code : {4, 5, 6}) {
    volume.control('A', named(47, code).real(80, volume::kReal10));
  }
  volume.control('S', by_dictionary(2, {4, 5, 6}));
  WholeReader reader(volume.bytes(), 0, SDBLK_KEEP_ALL);
  while (const SDBlk *block = reader.decode_next()) {
    if (block->blockette_type != 60) continue;
    int taken = 0;
    for_each_response(*block, [&](const Response &response) {
      EXPECT_EQ(response.type, 57);
      EXPECT_EQ(response.block->blockette_type, 47);
      return ++taken < 2;
    });
    EXPECT_EQ(taken, 2);
  }
}

TEST(Response, FieldsAreThoseOfTheCounterpart) {
  VolumeWriter volume(4096);
  volume.control('A', named(47, 4).real(80, volume::kReal10).digits(3, 5));
  volume.control('S', by_dictionary(2, {4}));
  WholeReader reader(volume.bytes(), 0, SDBLK_KEEP_ALL);
  int taken = 0;
  while (const SDBlk *block = reader.decode_next()) {
    if (block->blockette_type != 60) continue;
    for_each_response(*block, [&](const Response &response) {
      ++taken;
      EXPECT_EQ(ResponseField(57, "stage").in(response)->value.i, 2);
      EXPECT_EQ(ResponseField(57, "isamprate").in(response)->value.d, 80);
      EXPECT_EQ(ResponseField(57, "decfac").in(response)->value.i, 3);
      EXPECT_EQ(ResponseField(57, "delay").in(response), nullptr);
      return true;
    });
  }
  EXPECT_EQ(taken, 1);
}

}  // namespace
