#include "views/epoch_index.h"

#include <gtest/gtest.h>

#include <vector>

using namespace tarvik;

namespace {

EpochKey key_of(const char *network, const char *station, const char *location, const char *channel,
                double start) {
  SDBlkEntry entry = {};
  entry.value.d = start;
  return {network, station, location, channel, &entry};
}

TEST(EpochKey, CodesStayAsTheyAre) {
  const EpochKey full = key_of("XX", "DYNGA", "00", "BHZ", 0);
  EXPECT_EQ(full.network(), "XX");
  EXPECT_EQ(full.station(), "DYNGA");
  EXPECT_EQ(full.location(), "00");
  EXPECT_EQ(full.channel(), "BHZ");
  const EpochKey empty = key_of("", "A", "", "", 0);
  EXPECT_EQ(empty.network(), "");
  EXPECT_EQ(empty.station(), "A");
  EXPECT_EQ(empty.channel(), "");
}

TEST(EpochKey, EveryPartMakesADifference) {
  const EpochKey key = key_of("XX", "A", "00", "BHZ", 1);
  EXPECT_EQ(key, key_of("XX", "A", "00", "BHZ", 1));
  EXPECT_NE(key, key_of("XY", "A", "00", "BHZ", 1));
  EXPECT_NE(key, key_of("XX", "B", "00", "BHZ", 1));
  EXPECT_NE(key, key_of("XX", "A", "", "BHZ", 1));
  EXPECT_NE(key, key_of("XX", "A", "00", "BHN", 1));
  EXPECT_NE(key, key_of("XX", "A", "00", "BHZ", 1.0001));
  EXPECT_NE(key, EpochKey("XX", "A", "00", "BHZ", nullptr));
}

TEST(EpochIndex, PositionsFollowOneAnother) {
  EpochIndex index;
  EXPECT_EQ(index.add({}), 0);
  EXPECT_EQ(index.add({}), 1);
  EXPECT_EQ(index.count(), 2);
  EXPECT_EQ(index[1].same_as, 1);
  index.cut(1);
  EXPECT_EQ(index.count(), 1);
  EXPECT_EQ(index.add({}), 1);
}

TEST(EpochIndex, ByKeyKeepsTheOrderOfTheSame) {
  EpochIndex index;
  for (const char *code : {"B", "A", "B", "A"}) {
    IndexedEpoch epoch;
    epoch.key = key_of("XX", code, "", "", 0);
    index.add(epoch);
  }
  EXPECT_EQ(index.by_key(), (std::vector<std::int32_t>{1, 3, 0, 2}));
}

}  // namespace
