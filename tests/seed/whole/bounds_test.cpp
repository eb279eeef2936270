// What hostile files cost: each is read to its end, and its records are as many as stand in it.
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "seed/whole/chain.h"
#include "tests/cmd/hostile_volumes.h"
#include "tests/util/whole_reader.h"

namespace {

// Processor time of reading a volume whole, seconds.
double cost_of(const std::string &bytes, std::int64_t *records) {
  const std::clock_t start = std::clock();
  WholeReader reader(bytes, 64);
  while (reader.decode_next() != nullptr) {
  }
  *records = reader.counts().records;
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(HostileVolumes, FarChainsHaveAThousandBlockettesEach) {
  const std::string bytes = hostile::far_chains(4096);
  tarvik::Chain chain;
  for (const std::int64_t start : {0, 64, 6400, 6464}) {
    chain.start({bytes.data() + start, static_cast<std::int64_t>(bytes.size()) - start}, true);
    tarvik::Link link = {};
    int count = 0;
    while (chain.next(&link)) ++count;
    EXPECT_EQ(count, 1024) << start;
  }
}

// Sixteen times as much must cost about sixteen times as much: at a cost that grows with the square
// it would be 256 times.
TEST(HostileVolumes, CostInProportion) {
  constexpr int kFew = 1000;
  constexpr int kMany = 16 * kFew;
  for (const auto make : {hostile::far_chains, hostile::shortest_records}) {
    std::int64_t records = 0;
    const double few = cost_of(make(kFew), &records);
    EXPECT_EQ(records, kFew);
    const double many = cost_of(make(kMany), &records);
    EXPECT_EQ(records, kMany);
    EXPECT_LT(many, 64 * few + 1.0);
  }
}

}  // namespace
