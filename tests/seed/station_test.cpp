#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "seed/sdblk.h"
#include "support/arena.h"
#include "support/epoch.h"
#include "tests/util/log_capture.h"
#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

using volume::ControlBlockette;
using volume::VolumeWriter;
using Blocks = std::vector<ControlBlockette>;
using Results = std::vector<int>;
using Texts = std::vector<std::string>;

// ---- What is fed

struct Years {
  int begin = 2010;
  int end = 0;  // 0: open
};

std::string first_day(int year) { return year == 0 ? "" : volume::seed_time(year, 1); }
double epoch_of(int year) { return h2e(year, 1, 0, 0, 0.0); }

ControlBlockette station(const std::string &sta, Years years = {}, const std::string &net = "XX") {
  return volume::b50(
      {.code = sta, .begin = first_day(years.begin), .end = first_day(years.end), .network = net});
}

ControlBlockette comment(int type, Years years = {}) {
  return ControlBlockette(type)
      .var(first_day(years.begin))
      .var(first_day(years.end))
      .digits(1, 4)
      .digits(0, 6);
}

ControlBlockette channel(const std::string &loc, const std::string &chan, Years years = {}) {
  return volume::b52({.location = loc,
                      .code = chan,
                      .begin = first_day(years.begin),
                      .end = first_day(years.end)});
}

// A response: nothing of it is looked at but its type.
ControlBlockette response(int type) { return ControlBlockette(type); }

// A blockette that belongs to no station.
ControlBlockette time_span() {
  return ControlBlockette(70).fixed("E", 1).var(first_day(2010)).var(first_day(2011));
}

std::string volume_of(const Blocks &blocks) {
  VolumeWriter writer(4096);
  for (const ControlBlockette &block : blocks) writer.control('S', block);
  return writer.bytes();
}

// A list of patterns.
class Patterns {
 public:
  explicit Patterns(Texts texts) : texts_(std::move(texts)), list_(newtbl()) {
    for (std::string &text : texts_) settbl(list_, -1, text.data());
  }
  ~Patterns() { freetbl(list_, nullptr); }
  Patterns(const Patterns &) = delete;
  Patterns &operator=(const Patterns &) = delete;

  [[nodiscard]] Tbl *list() const { return list_; }

 private:
  Texts texts_;
  Tbl *list_;
};

// Feeds the blocks of a volume in memory, one by one, to a buffer of its own.
class Feeder {
 public:
  explicit Feeder(const Blocks &blocks)
      : bytes_(volume_of(blocks)),
        vol_(sdblk_new(nullptr, bytes_.data(), static_cast<std::int32_t>(bytes_.size()), 0)) {}
  ~Feeder() {
    sdblk_free_stabuf(station_);
    sdblk_free(block_);
    sdblk_closevol(vol_);
  }
  Feeder(const Feeder &) = delete;
  Feeder &operator=(const Feeder &) = delete;

  // How every call is made.
  Tbl *accept = nullptr;
  Tbl *reject = nullptr;
  std::int32_t verbosity = 0;
  double start = 0.0;
  double end = 0.0;

  // The next block, decoded.
  SDBlk *decode() {
    const int result = sdblk_parseblk(vol_, &block_);
    if (result < 0 || result == SDBLK_EOF) throw std::runtime_error("there is no further block");
    if (sdblk_unstuffblk(block_) != 0) throw std::runtime_error("the block cannot be decoded");
    return block_;
  }
  // Feeds the block that was decoded last.
  int again() {
    return sdblk_setup_stabuf(block_, &station_, accept, reject, verbosity, start, end);
  }
  int feed() {
    decode();
    return again();
  }
  Results feed(int count) {
    Results results;
    for (int i = 0; i < count; ++i) results.push_back(feed());
    return results;
  }
  [[nodiscard]] const SDBlk *block() const { return block_; }
  [[nodiscard]] SDBlkSta *station() const { return station_; }
  // The channel of a key; one that is not there ends the test.
  [[nodiscard]] const SDBlkChan &channel(const char *key) const {
    const auto *found = static_cast<const SDBlkChan *>(getarr(station_->chans, key));
    if (found == nullptr) throw std::out_of_range(std::string("no channel ") + key);
    return *found;
  }

 private:
  std::string bytes_;
  SDBlkVol *vol_;
  SDBlk *block_ = nullptr;
  SDBlkSta *station_ = nullptr;
};

// ---- What is found

Texts keys_of(const SDBlkSta &station) {
  Tbl *keys = keysarr(station.chans);
  Texts texts;
  for (long i = 0; i < counttbl(keys); ++i)
    texts.emplace_back(static_cast<char *>(gettbl(keys, i)));
  freetbl(keys, nullptr);
  return texts;
}

std::vector<int> types_in(const Tbl *blocks) {
  std::vector<int> types;
  for (long i = 0; i < counttbl(blocks); ++i) {
    types.push_back(static_cast<const SDBlk *>(gettbl(blocks, i))->blockette_type);
  }
  return types;
}

const SDBlkChanSpan &span_of(const SDBlkChan &channel, long position) {
  const auto *span = static_cast<const SDBlkChanSpan *>(gettbl(channel.spans, position));
  if (span == nullptr) throw std::out_of_range("no such epoch");
  return *span;
}

// The blockettes whose header lines a listing holds, in order.
std::string listed_types(const std::string &listing) {
  static const std::regex kHeader(R"((^|\n)\d{6}: S: (B\d{4})\[)");
  std::string types;
  for (std::sregex_iterator match(listing.begin(), listing.end(), kHeader), none; match != none;
       ++match) {
    types += (*match)[2].str() + " ";
  }
  return types;
}

std::string text_of(const Arr *contents, const char *key) {
  const char *text = nullptr;
  return sdblk_getv(contents, key, &text, nullptr) == 0 ? text : "";
}

// Makes a decoded text longer than any volume could.
void lengthen(const SDBlk *block, const char *key, std::string *text) {
  static_cast<SDBlkEntry *>(getarr(block->contents, key))->value.s = text->data();
}
void set_real(const SDBlk *block, const char *key, double value) {
  static_cast<SDBlkEntry *>(getarr(block->contents, key))->value.d = value;
}

// ---- Stations

TEST(StationBuffer, ABlockOutsideAStationIsRefusedAndMakesNoRecord) {
  Feeder feeder({comment(51), channel("", "BHZ"), response(53), comment(59), time_span()});
  EXPECT_EQ(feeder.feed(5), (Results{0, 0, 0, 0, 0}));
  EXPECT_EQ(feeder.station(), nullptr);
}

TEST(StationBuffer, AStationHeaderStartsAStation) {
  Feeder feeder({station("ABC", {2010, 2012}, "YZ")});
  EXPECT_EQ(feeder.feed(), 1);
  const SDBlkSta &found = *feeder.station();
  EXPECT_STREQ(found.net, "YZ");
  EXPECT_STREQ(found.sta, "ABC");
  EXPECT_EQ(found.state, 1);
  EXPECT_EQ(types_in(found.station_blks), std::vector<int>{50});
  EXPECT_EQ(counttbl(found.comment_blks), 0);
  EXPECT_EQ(countarr(found.chans), 0);
}

TEST(StationBuffer, WhatIsKeptIsACopyThatOutlivesTheBlock) {
  Feeder feeder({station("ABC"), time_span()});
  feeder.feed();
  feeder.decode();
  const auto *kept = static_cast<const SDBlk *>(gettbl(feeder.station()->station_blks, 0));
  EXPECT_EQ(kept->blockette_type, 50);
  EXPECT_EQ(text_of(kept->contents, "sta"), "ABC");
}

TEST(StationBuffer, TwoHeadersOfOneStationAreBothKept) {
  Feeder feeder({station("ABC", {2010, 2012}), station("ABC", {2012})});
  EXPECT_EQ(feeder.feed(2), (Results{1, 1}));
  EXPECT_EQ(types_in(feeder.station()->station_blks), (std::vector<int>{50, 50}));
  EXPECT_EQ(feeder.station()->state, 1);
}

TEST(StationBuffer, AnotherStationCompletesAndFedAgainStarts) {
  Feeder feeder({station("ABC"), comment(51), station("DEF")});
  EXPECT_EQ(feeder.feed(3), (Results{1, 1, 2}));
  const SDBlkSta *record = feeder.station();
  EXPECT_STREQ(record->sta, "ABC");
  EXPECT_EQ(record->state, 0);
  EXPECT_EQ(counttbl(record->station_blks), 1);
  EXPECT_EQ(feeder.again(), 1);
  EXPECT_EQ(feeder.station(), record);
  EXPECT_STREQ(record->sta, "DEF");
  EXPECT_EQ(counttbl(record->station_blks), 1);
  EXPECT_EQ(counttbl(record->comment_blks), 0);
}

TEST(StationBuffer, TheSameCodeInAnotherNetworkIsAnotherStation) {
  Feeder feeder({station("ABC", {}, "XX"), station("ABC", {}, "YZ")});
  EXPECT_EQ(feeder.feed(2), (Results{1, 2}));
  EXPECT_EQ(feeder.again(), 1);
  EXPECT_STREQ(feeder.station()->net, "YZ");
}

TEST(StationBuffer, AStationStartedAgainHasNoneOfTheOldChannels) {
  Feeder feeder({station("ABC"), channel("", "BHZ"), response(53), station("DEF")});
  EXPECT_EQ(feeder.feed(4), (Results{1, 1, 1, 2}));
  EXPECT_EQ(countarr(feeder.station()->chans), 1);
  EXPECT_EQ(feeder.again(), 1);
  EXPECT_EQ(countarr(feeder.station()->chans), 0);
}

TEST(StationBuffer, AStationWithoutChannelsIsCompletedByATimeSpan) {
  Feeder feeder({station("ABC"), time_span()});
  EXPECT_EQ(feeder.feed(2), (Results{1, 2}));
  EXPECT_EQ(feeder.station()->state, 0);
  EXPECT_EQ(feeder.again(), 0);
}

TEST(StationBuffer, AResponseBeforeAnyChannelCompletesTheStation) {
  Feeder feeder({station("ABC"), response(53)});
  EXPECT_EQ(feeder.feed(2), (Results{1, 2}));
}

TEST(StationBuffer, StationCommentsAreKept) {
  Feeder feeder({station("ABC"), comment(51), comment(51)});
  EXPECT_EQ(feeder.feed(3), (Results{1, 1, 1}));
  EXPECT_EQ(types_in(feeder.station()->comment_blks), (std::vector<int>{51, 51}));
}

TEST(StationBuffer, AStateThatIsNoneTakesEverythingAndDoesNothing) {
  Feeder feeder({station("ABC"), channel("", "BHZ")});
  feeder.feed();
  feeder.station()->state = 4;
  EXPECT_EQ(feeder.feed(), 1);
  EXPECT_EQ(feeder.station()->state, 4);
  EXPECT_EQ(countarr(feeder.station()->chans), 0);
}

TEST(StationBuffer, NothingIsReleasedForNull) {
  sdblk_free_stabuf(nullptr);
  free_chan(nullptr);
  free_span(nullptr);
}

// ---- The range

TEST(StationBuffer, TwoZerosTakeEveryStation) {
  Feeder feeder({station("OLD", {1800, 1801}), station("NEW", {2500, 0})});
  EXPECT_EQ(feeder.feed(2), (Results{1, 2}));
  EXPECT_EQ(feeder.again(), 1);
}

TEST(StationBuffer, ARangeThatEndsBeforeAStationRefusesAllOfIt) {
  Feeder feeder({station("ABC", {2010}), comment(51), channel("", "BHZ"), response(53)});
  feeder.start = epoch_of(2000);
  feeder.end = epoch_of(2009);
  EXPECT_EQ(feeder.feed(4), (Results{0, 0, 0, 0}));
  EXPECT_EQ(feeder.station(), nullptr);
}

TEST(StationBuffer, ARangeThatStartsAfterAStationRefusesIt) {
  Feeder feeder({station("ABC", {2010, 2012})});
  feeder.start = epoch_of(2013);
  feeder.end = epoch_of(2014);
  EXPECT_EQ(feeder.feed(), 0);
}

TEST(StationBuffer, TheBoundsBelongToTheRange) {
  Feeder ends({station("ABC", {2010, 2012})});
  ends.start = epoch_of(2012);
  ends.end = epoch_of(2013);
  EXPECT_EQ(ends.feed(), 1);
  Feeder begins({station("ABC", {2010, 2012})});
  begins.start = epoch_of(2009);
  begins.end = epoch_of(2010);
  EXPECT_EQ(begins.feed(), 1);
}

TEST(StationBuffer, OneZeroIsABound) {
  Feeder feeder({station("ABC", {1960, 1965}), station("DEF", {1965, 1975})});
  feeder.end = epoch_of(1980);
  EXPECT_EQ(feeder.feed(2), (Results{0, 1}));
  EXPECT_STREQ(feeder.station()->sta, "DEF");
}

TEST(StationBuffer, AnOpenEndIsNeverBeforeTheRange) {
  Feeder feeder({station("ABC", {2010})});
  feeder.start = epoch_of(2280);
  feeder.end = epoch_of(2286);
  EXPECT_EQ(feeder.feed(), 1);
}

TEST(StationBuffer, ATimeThatIsNoNumberIsInTheRange) {
  Feeder feeder({station("ABC", {2010, 2012})});
  feeder.start = epoch_of(2013);
  feeder.end = epoch_of(2014);
  set_real(feeder.decode(), "endtime", std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(feeder.again(), 1);
}

TEST(StationBuffer, AnotherStationOutsideTheRangeIsRefusedAndCompletesNothing) {
  Feeder feeder({station("ABC", {2010}), station("DEF", {2020})});
  feeder.start = epoch_of(2009);
  feeder.end = epoch_of(2015);
  EXPECT_EQ(feeder.feed(2), (Results{1, 0}));
  EXPECT_EQ(feeder.station()->state, 1);
  EXPECT_EQ(counttbl(feeder.station()->station_blks), 1);
}

TEST(StationBuffer, CommentsOutsideTheRangeAreRefused) {
  Feeder feeder({station("ABC"), comment(51, {2001, 2002}), channel("", "BHZ"),
                 comment(59, {2001, 2002}), comment(59, {2012, 2013})});
  feeder.start = epoch_of(2011);
  feeder.end = epoch_of(2015);
  EXPECT_EQ(feeder.feed(5), (Results{1, 0, 1, 0, 1}));
  EXPECT_EQ(counttbl(feeder.station()->comment_blks), 0);
  EXPECT_EQ(counttbl(feeder.channel("BHZ").comment_blks), 1);
}

TEST(StationBuffer, AnEpochOutsideTheRangeIsRefusedWithItsResponses) {
  Feeder feeder({station("ABC"), channel("", "BHZ", {2001, 2002}), response(53), comment(59),
                 channel("", "BHZ", {2011}), response(58)});
  feeder.start = epoch_of(2011);
  feeder.end = epoch_of(2015);
  EXPECT_EQ(feeder.feed(6), (Results{1, 0, 0, 0, 1, 1}));
  EXPECT_EQ(counttbl(feeder.channel("BHZ").spans), 1);
  EXPECT_EQ(types_in(span_of(feeder.channel("BHZ"), 0).resp_blks), std::vector<int>{58});
}

// ---- Channels

TEST(StationBuffer, AnEpochHoldsItsHeaderAndTimes) {
  Feeder feeder({station("ABC"), channel("10", "LHZ", {2010, 2012})});
  EXPECT_EQ(feeder.feed(2), (Results{1, 1}));
  EXPECT_EQ(feeder.station()->state, 3);
  const SDBlkChan &found = feeder.channel("LHZ_10");
  EXPECT_STREQ(found.chan, "LHZ");
  EXPECT_STREQ(found.loc, "10");
  const SDBlkChanSpan &span = span_of(found, 0);
  EXPECT_EQ(span.time, epoch_of(2010));
  EXPECT_EQ(span.endtime, epoch_of(2012));
  EXPECT_EQ(span.chan_blk->blockette_type, 52);
  EXPECT_EQ(text_of(span.chan_blk->contents, "chan"), "LHZ");
  EXPECT_EQ(feeder.station()->current_resps, span.resp_blks);
  EXPECT_EQ(feeder.station()->current_chan, &found);
}

TEST(StationBuffer, AnOpenEpochEndsAtNoTime) {
  Feeder feeder({station("ABC"), channel("", "BHZ", {2010})});
  feeder.feed(2);
  EXPECT_EQ(span_of(feeder.channel("BHZ"), 0).endtime, SDBLK_NO_TIME);
}

TEST(StationBuffer, AChannelsKeyLosesOneUnderscoreAtItsEnd) {
  Feeder feeder({station("ABC"), channel("", "BHZ"), channel("00", "BHZ"), channel("0_", "BHZ"),
                 channel("__", "BHZ")});
  feeder.feed(5);
  EXPECT_EQ(keys_of(*feeder.station()), (Texts{"BHZ", "BHZ_00", "BHZ_0", "BHZ__"}));
}

TEST(StationBuffer, ASecondHeaderOfAChannelAddsAnEpoch) {
  Feeder feeder({station("ABC"), channel("", "BHZ", {2010, 2012}), response(53), channel("", "BHN"),
                 channel("", "BHZ", {2012}), response(58)});
  EXPECT_EQ(feeder.feed(6), (Results{1, 1, 1, 1, 1, 1}));
  const SDBlkChan &found = feeder.channel("BHZ");
  ASSERT_EQ(counttbl(found.spans), 2);
  EXPECT_EQ(types_in(span_of(found, 0).resp_blks), std::vector<int>{53});
  EXPECT_EQ(types_in(span_of(found, 1).resp_blks), std::vector<int>{58});
}

TEST(StationBuffer, ResponsesAreKeptInTheirOrder) {
  const std::vector<int> types = {62, 53, 54, 55, 56, 57, 58, 60, 61, 53};
  Blocks blocks = {station("ABC"), channel("", "BHZ")};
  for (const int type : types) blocks.push_back(response(type));
  Feeder feeder(blocks);
  EXPECT_EQ(feeder.feed(12), Results(12, 1));
  EXPECT_EQ(types_in(span_of(feeder.channel("BHZ"), 0).resp_blks), types);
}

TEST(StationBuffer, ResponsesHaveNoRange) {
  Feeder feeder({station("ABC"), channel("", "BHZ"), response(53)});
  feeder.start = epoch_of(2011);
  feeder.end = epoch_of(2012);
  EXPECT_EQ(feeder.feed(3), (Results{1, 1, 1}));
}

TEST(StationBuffer, ChannelCommentsAreSharedByItsEpochs) {
  Feeder feeder({station("ABC"), channel("", "BHZ", {2010, 2012}), comment(59),
                 channel("", "BHZ", {2012}), comment(59)});
  EXPECT_EQ(feeder.feed(5), (Results{1, 1, 1, 1, 1}));
  EXPECT_EQ(types_in(feeder.channel("BHZ").comment_blks), (std::vector<int>{59, 59}));
  EXPECT_EQ(counttbl(span_of(feeder.channel("BHZ"), 0).resp_blks), 0);
}

TEST(StationBuffer, AnEpochIsFollowedByNothingButItsOwn) {
  for (const ControlBlockette &after :
       {station("ABC"), comment(51), time_span(), ControlBlockette(49), ControlBlockette(63)}) {
    Feeder feeder({station("ABC"), channel("", "BHZ"), after});
    EXPECT_EQ(feeder.feed(3), (Results{1, 1, 2})) << after.text();
    EXPECT_EQ(feeder.station()->state, 0);
  }
}

TEST(StationBuffer, BetweenChannelsOnlyAStationHeaderCompletes) {
  const Patterns none({});
  Feeder feeder({station("ABC"), channel("", "BHZ"), response(53), comment(51), comment(59),
                 time_span(), station("ABC")});
  feeder.accept = none.list();
  EXPECT_EQ(feeder.feed(7), (Results{1, 0, 0, 0, 0, 0, 2}));
}

// ---- Filters

TEST(StationBuffer, AChannelMustBeAccepted) {
  const Patterns accept({"_BHZ$", "_00$"});
  Feeder feeder({station("ABC"), channel("", "BHZ"), channel("", "BHN"), channel("00", "BHN"),
                 channel("10", "BHZ")});
  feeder.accept = accept.list();
  EXPECT_EQ(feeder.feed(5), (Results{1, 1, 0, 1, 0}));
  EXPECT_EQ(keys_of(*feeder.station()), (Texts{"BHZ", "BHN_00"}));
}

TEST(StationBuffer, AChannelMustNotBeRejected) {
  const Patterns reject({"BHN", "_00$"});
  Feeder feeder({station("ABC"), channel("", "BHZ"), channel("", "BHN"), channel("00", "BHZ")});
  feeder.reject = reject.list();
  EXPECT_EQ(feeder.feed(4), (Results{1, 1, 0, 0}));
}

TEST(StationBuffer, WhatIsAcceptedCanStillBeRejected) {
  const Patterns accept({"BH."});
  const Patterns reject({"BHN"});
  Feeder feeder({station("ABC"), channel("", "BHZ"), channel("", "BHN")});
  feeder.accept = accept.list();
  feeder.reject = reject.list();
  EXPECT_EQ(feeder.feed(3), (Results{1, 1, 0}));
}

TEST(StationBuffer, TheFilterKeyHasAllFourCodes) {
  const Patterns accept({"^YZ_ABC_BHZ_00$", "^YZ_ABC_LHZ$"});
  Feeder feeder({station("ABC", {}, "YZ"), channel("00", "BHZ"), channel("", "LHZ"),
                 channel("", "BHZ"), channel("00", "LHZ")});
  feeder.accept = accept.list();
  EXPECT_EQ(feeder.feed(5), (Results{1, 1, 1, 0, 0}));
}

TEST(StationBuffer, NoPatternAcceptsNothingAndRejectsNothing) {
  const Patterns none({});
  Feeder accepting({station("ABC"), channel("", "BHZ")});
  accepting.accept = none.list();
  EXPECT_EQ(accepting.feed(2), (Results{1, 0}));
  Feeder rejecting({station("ABC"), channel("", "BHZ")});
  rejecting.reject = none.list();
  EXPECT_EQ(rejecting.feed(2), (Results{1, 1}));
}

TEST(StationBuffer, ARejectedChannelTakesAllThatBelongsToItAlong) {
  const Patterns reject({"BHN"});
  Blocks blocks = {station("ABC"), channel("", "BHZ"), response(53), channel("", "BHN")};
  for (int type = 53; type <= 58; ++type) blocks.push_back(response(type));
  blocks.push_back(comment(59));
  for (int type = 60; type <= 62; ++type) blocks.push_back(response(type));
  blocks.insert(blocks.end(), {channel("", "BHZ"), response(58)});
  Feeder feeder(blocks);
  feeder.reject = reject.list();
  EXPECT_EQ(feeder.feed(4), (Results{1, 1, 1, 0}));
  EXPECT_EQ(feeder.feed(10), Results(10, 0));
  EXPECT_EQ(feeder.station()->state, 2);
  EXPECT_EQ(feeder.feed(2), (Results{1, 1}));
  EXPECT_EQ(feeder.station()->state, 3);
  EXPECT_EQ(types_in(span_of(feeder.channel("BHZ"), 0).resp_blks), std::vector<int>{53});
  EXPECT_EQ(types_in(span_of(feeder.channel("BHZ"), 1).resp_blks), std::vector<int>{58});
}

TEST(StationBuffer, APatternThatIsNoExpressionIsReported) {
  const Patterns wrong({"("});
  LogCapture log;
  Feeder feeder({station("ABC"), channel("00", "BHZ")});
  feeder.accept = wrong.list();
  EXPECT_EQ(feeder.feed(2), (Results{1, -1}));
  EXPECT_EQ(log.registered(), "sdblk_setup_stabuf: tblgrep(accept,XX_ABC_BHZ_00) error.\n");
  feeder.accept = nullptr;
  feeder.reject = wrong.list();
  EXPECT_EQ(feeder.again(), -1);
  EXPECT_EQ(log.registered(), "sdblk_setup_stabuf: tblgrep(reject,XX_ABC_BHZ_00) error.\n");
}

// ---- Missing fields

TEST(StationBuffer, AStationHeaderWithoutItsFieldsIsReported) {
  LogCapture log;
  Feeder feeder({ControlBlockette(50).fixed("ABC", 5)});
  EXPECT_EQ(feeder.feed(), -1);
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'net' not defined.\n"
            "sdblk_setup_stabuf: sdblk_getv(B0050,net,sta) error.\n");
  EXPECT_EQ(feeder.station(), nullptr);
}

TEST(StationBuffer, ASecondStationHeaderWithoutItsFieldsIsReported) {
  LogCapture log;
  Feeder feeder({station("ABC"), ControlBlockette(50)});
  EXPECT_EQ(feeder.feed(2), (Results{1, -1}));
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'sta' not defined.\n"
            "sdblk_setup_stabuf: sdblk_getv(B0050,net,sta) error.\n");
  EXPECT_EQ(feeder.station()->state, 1);
}

TEST(StationBuffer, AStationCommentWithoutTimesIsReported) {
  LogCapture log;
  Feeder feeder({station("ABC"), ControlBlockette(51).var(first_day(2010))});
  EXPECT_EQ(feeder.feed(2), (Results{1, -1}));
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'endtime' not defined.\n"
            "sdblk_setup_stabuf: sdblk_getv(B0051,time,endtime) error.\n");
}

TEST(StationBuffer, AChannelHeaderWithoutItsFieldsIsReportedAndIsBetweenChannels) {
  LogCapture log;
  Feeder feeder({station("ABC"), ControlBlockette(52).fixed("00", 2), response(53)});
  errno = ENOENT;  // of some earlier call: no part of the message
  EXPECT_EQ(feeder.feed(2), (Results{1, -1}));
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'chan' not defined.\n"
            "sdblk_setup_stabuf: sdblk_getv(B0052,chan,loc) error.\n");
  EXPECT_EQ(feeder.station()->state, 2);
  EXPECT_EQ(feeder.feed(), 0);
}

TEST(StationBuffer, AChannelCommentWithoutTimesIsReported) {
  LogCapture log;
  Feeder feeder({station("ABC"), channel("", "BHZ"), ControlBlockette(59)});
  EXPECT_EQ(feeder.feed(3), (Results{1, 1, -1}));
  EXPECT_EQ(log.registered(),
            "sdblk_getv: entry 'time' not defined.\n"
            "sdblk_setup_stabuf: sdblk_getv(B0059,time,endtime) error.\n");
}

// ---- Listing

TEST(StationBuffer, NothingIsListedWithoutVerbosity) {
  const LogCapture log;
  Feeder feeder({station("ABC"), comment(51), channel("", "BHZ"), response(53), comment(59)});
  feeder.feed(5);
  EXPECT_EQ(log.text(), "");
}

TEST(StationBuffer, AStationIsListedOnceItHasAChannel) {
  const LogCapture log;
  Feeder feeder({station("ABC", {2010, 2012}), station("ABC", {2012}), comment(51),
                 channel("", "BHZ"), response(53), comment(59)});
  feeder.verbosity = 1;
  feeder.feed(3);
  EXPECT_EQ(log.text(), "");
  feeder.feed();
  EXPECT_EQ(listed_types(log.text()), "B0050 B0050 B0051 B0052 ");
  feeder.feed(2);
  EXPECT_EQ(listed_types(log.text()), "B0050 B0050 B0051 B0052 B0053 B0059 ");
}

TEST(StationBuffer, AStationIsListedAgainForEachNewChannelOnly) {
  LogCapture log;
  Feeder feeder({station("ABC"), channel("", "BHZ", {2010, 2012}), channel("", "BHZ", {2012}),
                 channel("", "BHN")});
  feeder.verbosity = 1;
  feeder.feed(2);
  EXPECT_EQ(listed_types(log.take()), "B0050 B0052 ");
  feeder.feed();
  EXPECT_EQ(listed_types(log.take()), "B0052 ");
  feeder.feed();
  EXPECT_EQ(listed_types(log.take()), "B0050 B0052 ");
}

TEST(StationBuffer, WhatIsRefusedIsNotListed) {
  const LogCapture log;
  const Patterns reject({"BHN"});
  Feeder feeder({station("ABC"), channel("", "BHN"), response(53), channel("", "BHZ"),
                 comment(59, {2001, 2002})});
  feeder.verbosity = 1;
  feeder.reject = reject.list();
  feeder.start = epoch_of(2010);
  feeder.end = epoch_of(2020);
  feeder.feed(5);
  EXPECT_EQ(listed_types(log.text()), "B0050 B0052 ");
}

// ---- Codes that do not fit

struct CodeLimit {
  const char *key;
  std::size_t longest;
};

TEST(StationBuffer, AStationCodeThatDoesNotFitEndsTheProgram) {
  for (const CodeLimit &limit : {CodeLimit{"net", 3}, CodeLimit{"sta", 15}}) {
    LogCapture log;
    const FatalHook hook;
    Feeder feeder({station("ABC")});
    std::string fits(limit.longest, 'Q');
    std::string too_long(limit.longest + 1, 'Q');
    lengthen(feeder.decode(), limit.key, &too_long);
    EXPECT_THROW(feeder.again(), Fatal);
    const std::string buffer = std::to_string(limit.longest + 1);
    EXPECT_EQ(log.take(), "sdblk_setup_stabuf: text of " + std::to_string(limit.longest + 2) +
                              " bytes does not fit the " + buffer + " byte buffer\n");
    lengthen(feeder.block(), limit.key, &fits);
    EXPECT_EQ(feeder.again(), 1);
  }
}

TEST(StationBuffer, AChannelCodeThatDoesNotFitEndsTheProgram) {
  for (const CodeLimit &limit : {CodeLimit{"chan", 7}, CodeLimit{"loc", 3}}) {
    LogCapture log;
    const FatalHook hook;
    Feeder feeder({station("ABC"), channel("00", "BHZ")});
    std::string fits(limit.longest, 'Q');
    std::string too_long(limit.longest + 1, 'Q');
    feeder.feed();
    lengthen(feeder.decode(), limit.key, &too_long);
    EXPECT_THROW(feeder.again(), Fatal);
    const std::string buffer = std::to_string(limit.longest + 1);
    EXPECT_EQ(log.take(), "sdblk_setup_stabuf: text of " + std::to_string(limit.longest + 2) +
                              " bytes does not fit the " + buffer + " byte buffer\n");
    lengthen(feeder.block(), limit.key, &fits);
    EXPECT_EQ(feeder.again(), 1);
  }
}

TEST(StationBuffer, AFilterKeyThatDoesNotFitEndsTheProgram) {
  LogCapture log;
  const FatalHook hook;
  Feeder feeder({station("ABC"), channel("00", "BHZ")});
  feeder.feed();
  // "XX_ABC_" + 118 + "_00" is 128 characters, one too many.
  std::string code(118, 'Q');
  lengthen(feeder.decode(), "chan", &code);
  EXPECT_THROW(feeder.again(), Fatal);
  EXPECT_EQ(log.take(), "sdblk_setup_stabuf: text of 129 bytes does not fit the 128 byte buffer\n");
}

TEST(StationBuffer, AChannelKeyThatDoesNotFitEndsTheProgram) {
  LogCapture log;
  const FatalHook hook;
  Feeder feeder({station("ABC"), channel("00", "BHZ")});
  feeder.feed();
  // 61 + "_00" is 64 characters, one too many.
  std::string code(61, 'Q');
  lengthen(feeder.decode(), "chan", &code);
  EXPECT_THROW(feeder.again(), Fatal);
  EXPECT_EQ(log.take(), "sdblk_setup_stabuf: text of 65 bytes does not fit the 64 byte buffer\n");
}

// ---- Memory

const char kNoMemory[] = "    Cannot allocate memory\n";

// The last message that the buffer itself registered, with the line of the system after it.
std::string own_message(const std::string &registered) {
  const std::size_t start = registered.rfind("sdblk_setup_stabuf: ");
  return start == std::string::npos ? registered : registered.substr(start);
}

// Feeds the last of the blocks once for each allocation that this takes, each time with another one
// failing, then again with none failing.  The messages met.
std::set<std::string> messages_without_memory(const Blocks &blocks, const Texts &accepted) {
  std::set<std::string> messages;
  LogCapture log;
  Arena::one_piece_per_chunk = true;
  for (long n = 1; n < 1000; ++n) {
    const Patterns accept(accepted);
    Feeder feeder(blocks);
    if (!accepted.empty()) feeder.accept = accept.list();
    feeder.feed(static_cast<int>(blocks.size()) - 1);
    feeder.decode();
    int result = 0;
    bool failed = false;
    {
      const FailingMemory memory(n);
      result = feeder.again();
      failed = FailingMemory::failed();
    }
    EXPECT_EQ(result, failed ? -1 : 1) << n;
    if (!failed) break;
    messages.insert(own_message(log.registered()));
    EXPECT_EQ(feeder.again(), 1) << n;
  }
  Arena::one_piece_per_chunk = false;
  return messages;
}

TEST(StationBuffer, AStationWithoutMemoryIsReported) {
  const std::string size = std::to_string(sizeof(SDBlkSta));
  EXPECT_EQ(messages_without_memory({station("ABC")}, {}),
            (std::set<std::string>{
                "sdblk_setup_stabuf: malloc(SDBlkSta," + size + ") error.\n" + kNoMemory,
                "sdblk_setup_stabuf: newtbl(station_blks) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: newtbl(comment_blks) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: newarr(chans) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: sdblk_copy(B0050) error.\n",
                "sdblk_setup_stabuf: settbl(station_blks) error.\n" + std::string(kNoMemory)}));
}

TEST(StationBuffer, AStationCommentWithoutMemoryIsReported) {
  EXPECT_EQ(messages_without_memory({station("ABC"), comment(51)}, {}),
            (std::set<std::string>{
                "sdblk_setup_stabuf: sdblk_copy(B0051) error.\n",
                "sdblk_setup_stabuf: settbl(comment_blks) error.\n" + std::string(kNoMemory)}));
}

TEST(StationBuffer, AChannelWithoutMemoryIsReported) {
  const std::string channel_size = std::to_string(sizeof(SDBlkChan));
  const std::string span_size = std::to_string(sizeof(SDBlkChanSpan));
  EXPECT_EQ(messages_without_memory({station("ABC"), channel("00", "BHZ")}, {"BHZ"}),
            (std::set<std::string>{
                "sdblk_setup_stabuf: tblgrep(accept,XX_ABC_BHZ_00) error.\n",
                "sdblk_setup_stabuf: malloc(SDBlkChan," + channel_size + ") error.\n" + kNoMemory,
                "sdblk_setup_stabuf: newtbl(spans) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: newtbl(comment_blks) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: setarr(chans) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: malloc(SDBlkChanSpan," + span_size + ") error.\n" + kNoMemory,
                "sdblk_setup_stabuf: sdblk_copy(B0052) error.\n",
                "sdblk_setup_stabuf: newtbl(resp_blks) error.\n" + std::string(kNoMemory),
                "sdblk_setup_stabuf: settbl(spans) error.\n" + std::string(kNoMemory)}));
}

TEST(StationBuffer, AResponseWithoutMemoryIsReported) {
  EXPECT_EQ(messages_without_memory({station("ABC"), channel("", "BHZ"),
                                     response(58).digits(1, 2).real(1).real(1).digits(0, 2)},
                                    {}),
            (std::set<std::string>{
                "sdblk_setup_stabuf: sdblk_copy(B0058) error.\n",
                "sdblk_setup_stabuf: settbl(resp_blks) error.\n" + std::string(kNoMemory)}));
}

TEST(StationBuffer, AChannelCommentWithoutMemoryIsReported) {
  EXPECT_EQ(messages_without_memory({station("ABC"), channel("", "BHZ"), comment(59)}, {}),
            (std::set<std::string>{
                "sdblk_setup_stabuf: sdblk_copy(B0059) error.\n",
                "sdblk_setup_stabuf: settbl(comment_blks) error.\n" + std::string(kNoMemory)}));
}

TEST(StationBuffer, ACopyThatFailsLeavesTheReasonInFront) {
  LogCapture log;
  Feeder feeder({station("ABC"), channel("", "BHZ"), response(53)});
  feeder.feed(2);
  feeder.decode();
  {
    const FailingMemory memory(1);
    EXPECT_EQ(feeder.again(), -1);
  }
  EXPECT_EQ(log.registered(), "sdblk_copy: malloc (SDBlk," + std::to_string(sizeof(SDBlk)) +
                                  ") error.\n" + kNoMemory +
                                  "sdblk_setup_stabuf: sdblk_copy(B0053) error.\n");
}

// ---- Whole volumes

std::string sample_volume() {
  std::ifstream file(TARVIK_SOURCE_DIR "/samples/demo.seed", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// "DYNGA BHZ:9,9 LHZ_00:12": the channels of a station, with the responses of each epoch.
std::string summary(const SDBlkSta &station) {
  std::string text = station.sta;
  for (const std::string &key : keys_of(station)) {
    const auto *found = static_cast<const SDBlkChan *>(getarr(station.chans, key.c_str()));
    text += " " + key;
    for (long i = 0; i < counttbl(found->spans); ++i) {
      text += (i == 0 ? ":" : ",") + std::to_string(counttbl(span_of(*found, i).resp_blks));
    }
  }
  return text;
}

// The stations of a volume in a buffer, each as its summary.
Texts stations_in(const std::string &bytes, Tbl *accept) {
  SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
  SDBlk *block = nullptr;
  SDBlkSta *station = nullptr;
  Texts stations;
  int result = 0;
  while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
    if (block->data_ptr != nullptr) continue;
    EXPECT_EQ(sdblk_unstuffblk(block), 0);
    int taken = sdblk_setup_stabuf(block, &station, accept, nullptr, 0, 0.0, 0.0);
    if (taken == 2) {
      stations.push_back(summary(*station));
      taken = sdblk_setup_stabuf(block, &station, accept, nullptr, 0, 0.0, 0.0);
    }
    EXPECT_TRUE(taken == 0 || taken == 1);
  }
  EXPECT_EQ(result, SDBLK_EOF);
  if (station != nullptr && station->state != 0) stations.push_back(summary(*station));
  sdblk_free_stabuf(station);
  sdblk_free(block);
  sdblk_closevol(vol);
  return stations;
}

TEST(StationBuffer, AWholeVolumeGivesItsStations) {
  EXPECT_EQ(
      stations_in(sample_volume(), nullptr),
      (Texts{"DYNGA BHZ:9,9 LHZ_00:12 ACE:0", "SKERA BHZ_00:1", "FJELL BHZ_00:9 LKI_00:4 OCF:0"}));
}

TEST(StationBuffer, AWholeVolumeIsFiltered) {
  const Patterns accept({"_00$"});
  EXPECT_EQ(stations_in(sample_volume(), accept.list()),
            (Texts{"DYNGA LHZ_00:12", "SKERA BHZ_00:1", "FJELL BHZ_00:9 LKI_00:4"}));
}

TEST(StationBuffer, AtTheEndOfTheVolumeTheLastStationIsLeft) {
  EXPECT_EQ(stations_in(volume_of({station("ABC"), channel("", "BHZ"), station("DEF"),
                                   channel("10", "LHZ"), response(53)}),
                        nullptr),
            (Texts{"ABC BHZ:0", "DEF LHZ_10:1"}));
}

}  // namespace
