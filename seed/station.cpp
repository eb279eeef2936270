// The station buffer: whole stations, assembled from the control blockettes of a volume.
#include <array>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "seed/format.h"
#include "seed/getv.h"
#include "seed/sdblk.h"
#include "support/arr_impl.h"
#include "support/bounded.h"
#include "support/c_text.h"
#include "support/memory.h"

using namespace tarvik;

namespace {

constexpr char kFunction[] = "sdblk_setup_stabuf";
constexpr double kForever = 1e30;

// Results of sdblk_setup_stabuf.
enum Result { kFailed = -1, kRefused = 0, kTaken = 1, kStationComplete = 2 };

// Assembly states of a station.
enum State { kNone = 0, kStarted = 1, kBetweenChannels = 2, kInEpoch = 3 };

struct Epoch {
  double time;
  double endtime;
};

// What every step needs to know of the call.
struct Call {
  const SDBlk &block;
  Tbl *accept;
  Tbl *reject;
  std::int32_t verbosity;
  double start;
  double end;

  // A comparison with a NaN counts as in the range.
  [[nodiscard]] bool wants(const Epoch &epoch) const {
    return !(epoch.time > end || epoch.endtime < start);
  }
  void list(const SDBlk &listed) const {
    if (verbosity > 0) sdblk_printblk(&listed, "", verbosity);
  }
};

template <std::size_t Size>
using Text = std::array<char, Size>;

// Copies a code into a member that it must fit.
template <std::size_t Size>
void copy_code(char (&member)[Size], const char *code) {
  const std::size_t size = std::strlen(code);
  require_fit(kFunction, size, Size);
  std::memcpy(member, code, size + 1);
}

// The texts joined by "_".
template <std::size_t Size>
Text<Size> joined(std::initializer_list<std::string_view> texts) {
  std::size_t size = texts.size() - 1;
  for (const std::string_view text : texts) size += text.size();
  require_fit(kFunction, size, Size);
  Text<Size> key;
  char *end = key.data();
  for (const std::string_view text : texts) {
    std::memcpy(end, text.data(), text.size());
    end += text.size();
    *end++ = '_';
  }
  end[-1] = '\0';
  return key;
}

// The channel code alone when the location is empty.
Text<64> channel_key(const char *chan, const char *loc) {
  Text<64> key = joined<64>({chan, loc});
  const std::size_t size = std::strlen(key.data());
  if (size > 0 && key[size - 1] == '_') key[size - 1] = '\0';
  return key;
}

Text<128> filter_key(const SDBlkSta &station, const char *chan, const char *loc) {
  if (loc[0] == '\0') return joined<128>({station.net, station.sta, chan});
  return joined<128>({station.net, station.sta, chan, loc});
}

// ---- allocation ----

// A zeroed record, or nullptr with a message.
template <typename Record>
Record *new_record(const char *name) {
  auto *record = static_cast<Record *>(memory_get_zeroed(sizeof(Record)));
  if (record == nullptr) {
    elog_log(1, "sdblk_setup_stabuf: malloc(%s,%ld) error.\n", name,
             static_cast<long>(sizeof(Record)));
  }
  return record;
}

// Memory for a list or for its growth.
Result fail_list(const char *call, const char *list) {
  elog_log(1, "sdblk_setup_stabuf: %s(%s) error.\n", call, list);
  return kFailed;
}

// A new list, or nullptr with a message that names it.
Tbl *new_list(const char *name) {
  Tbl *list = newtbl();
  if (list == nullptr) fail_list("newtbl", name);
  return list;
}

// Appends a copy of the block to a list of the station; name is for the message.
Result keep_copy(const SDBlk &block, Tbl *list, const char *name) {
  SDBlk *copy = sdblk_copy(&block);
  if (copy == nullptr) {
    elog_log(0, "sdblk_setup_stabuf: sdblk_copy(B%4.4d) error.\n", block.blockette_type);
    return kFailed;
  }
  if (settbl(list, -1, copy) >= 0) return kTaken;
  sdblk_free(copy);
  return fail_list("settbl", name);
}

// ---- stations ----

void release_contents(SDBlkSta *station) {
  freetbl(station->station_blks, sdblk_free);
  freetbl(station->comment_blks, sdblk_free);
  freearr(station->chans, free_chan);
  *station = {};
}

struct StationCode {
  const char *net;
  const char *sta;
};

bool read_station(const SDBlk &block, StationCode *code, Epoch *epoch) {
  if (sdblk::get(block.contents, "sta", &code->sta, "net", &code->net, "time", &epoch->time,
                 "endtime", &epoch->endtime) == 0) {
    // A code of a block that a program made by hand may be null.
    *code = {or_empty(code->net), or_empty(code->sta)};
    return true;
  }
  elog_log(0, "sdblk_setup_stabuf: sdblk_getv(B0050,net,sta) error.\n");
  return false;
}

// Empties the buffer, or makes it, and prepares it for a station.
bool prepare_station(SDBlkSta **stap, const StationCode &code) {
  if (*stap == nullptr) {
    *stap = new_record<SDBlkSta>("SDBlkSta");
    if (*stap == nullptr) return false;
  } else {
    release_contents(*stap);
  }
  SDBlkSta *station = *stap;
  copy_code(station->net, code.net);
  copy_code(station->sta, code.sta);
  station->station_blks = new_list("station_blks");
  station->comment_blks = new_list("comment_blks");
  station->chans = newarr();
  if (station->chans == nullptr) fail_list("newarr", "chans");
  return station->station_blks != nullptr && station->comment_blks != nullptr &&
         station->chans != nullptr;
}

Result begin_station(const Call &call, SDBlkSta **stap) {
  if (call.block.blockette_type != 50) return kRefused;
  StationCode code = {};
  Epoch epoch = {};
  if (!read_station(call.block, &code, &epoch)) return kFailed;
  if (!call.wants(epoch)) return kRefused;
  if (!prepare_station(stap, code)) return kFailed;
  const Result result = keep_copy(call.block, (*stap)->station_blks, "station_blks");
  if (result == kTaken) (*stap)->state = kStarted;
  return result;
}

Result complete_station(SDBlkSta *station) {
  station->state = kNone;
  return kStationComplete;
}

Result add_station_epoch(const Call &call, SDBlkSta *station) {
  StationCode code = {};
  Epoch epoch = {};
  if (!read_station(call.block, &code, &epoch)) return kFailed;
  if (!call.wants(epoch)) return kRefused;
  if (std::strcmp(code.net, station->net) != 0 || std::strcmp(code.sta, station->sta) != 0) {
    return complete_station(station);
  }
  return keep_copy(call.block, station->station_blks, "station_blks");
}

// A comment of the station (blockette 51) or of a channel (59).
Result add_comment(const Call &call, Tbl *comments, bool listed) {
  const std::int32_t type = call.block.blockette_type;
  Epoch epoch = {};
  if (sdblk::get(call.block.contents, "time", &epoch.time, "endtime", &epoch.endtime) < 0) {
    elog_log(0, "sdblk_setup_stabuf: sdblk_getv(B%4.4d,time,endtime) error.\n", type);
    return kFailed;
  }
  if (!call.wants(epoch)) return kRefused;
  if (listed) call.list(call.block);
  return keep_copy(call.block, comments, "comment_blks");
}

// ---- channels ----

struct ChannelCode {
  const char *chan;
  const char *loc;
};

// Number of patterns of a list that match, or -1 with a message that names the list.
long count_matches(Tbl *patterns, const char *key, const char *name) {
  Tbl *matches = tblgrep(patterns, key);
  if (matches == nullptr) {
    elog_log(0, "sdblk_setup_stabuf: tblgrep(%s,%s) error.\n", name, key);
    return -1;
  }
  const long count = counttbl(matches);
  freetbl(matches, nullptr);
  return count;
}

// Whether the filters let a channel through.
Result filter_channel(const Call &call, const char *key) {
  if (call.accept != nullptr) {
    const long matches = count_matches(call.accept, key, "accept");
    if (matches < 1) return matches < 0 ? kFailed : kRefused;
  }
  if (call.reject != nullptr) {
    const long matches = count_matches(call.reject, key, "reject");
    if (matches != 0) return matches < 0 ? kFailed : kRefused;
  }
  return kTaken;
}

void list_blocks(const Call &call, const Tbl *blocks) {
  for (long i = 0; i < counttbl(blocks); ++i)
    call.list(*static_cast<const SDBlk *>(gettbl(blocks, i)));
}

// A code that does not fit ends the call while there is nothing to release yet.
SDBlkChan *new_channel(const ChannelCode &code) {
  SDBlkChan filled = {};
  copy_code(filled.chan, code.chan);
  copy_code(filled.loc, code.loc);
  auto *channel = new_record<SDBlkChan>("SDBlkChan");
  if (channel == nullptr) return nullptr;
  *channel = filled;
  channel->spans = new_list("spans");
  channel->comment_blks = new_list("comment_blks");
  if (channel->spans != nullptr && channel->comment_blks != nullptr) return channel;
  free_chan(channel);
  return nullptr;
}

// The station's channel of a code, made and announced by a listing of the station when it is new.
SDBlkChan *find_channel(const Call &call, SDBlkSta *station, const ChannelCode &code) {
  const Text<64> key = channel_key(code.chan, code.loc);
  auto *channel = static_cast<SDBlkChan *>(getarr(station->chans, key.data()));
  if (channel != nullptr) return channel;
  channel = new_channel(code);
  if (channel == nullptr) return nullptr;
  void *nothing = nullptr;
  if (!arr_set(station->chans, key.data(), channel, &nothing)) {
    fail_list("setarr", "chans");
    free_chan(channel);
    return nullptr;
  }
  list_blocks(call, station->station_blks);
  list_blocks(call, station->comment_blks);
  return channel;
}

// An epoch of a channel with a copy of its blockette 52, or nullptr with a message.
SDBlkChanSpan *new_span(const SDBlk &block, const Epoch &epoch) {
  auto *span = new_record<SDBlkChanSpan>("SDBlkChanSpan");
  if (span == nullptr) return nullptr;
  span->time = epoch.time;
  span->endtime = epoch.endtime;
  span->chan_blk = sdblk_copy(&block);
  if (span->chan_blk == nullptr) {
    elog_log(0, "sdblk_setup_stabuf: sdblk_copy(B0052) error.\n");
    free_span(span);
    return nullptr;
  }
  span->resp_blks = new_list("resp_blks");
  if (span->resp_blks != nullptr) return span;
  free_span(span);
  return nullptr;
}

Result begin_channel(const Call &call, SDBlkSta *station) {
  station->state = kBetweenChannels;
  ChannelCode code = {};
  Epoch epoch = {};
  if (sdblk::get(call.block.contents, "chan", &code.chan, "loc", &code.loc, "time", &epoch.time,
                 "endtime", &epoch.endtime) < 0) {
    elog_log(0, "sdblk_setup_stabuf: sdblk_getv(B0052,chan,loc) error.\n");
    return kFailed;
  }
  code = {or_empty(code.chan), or_empty(code.loc)};
  if (!call.wants(epoch)) return kRefused;
  const Result filtered = filter_channel(call, filter_key(*station, code.chan, code.loc).data());
  if (filtered != kTaken) return filtered;
  SDBlkChan *channel = find_channel(call, station, code);
  if (channel == nullptr) return kFailed;
  call.list(call.block);
  SDBlkChanSpan *span = new_span(call.block, epoch);
  if (span == nullptr) return kFailed;
  if (settbl(channel->spans, -1, span) < 0) {
    free_span(span);
    return fail_list("settbl", "spans");
  }
  station->state = kInEpoch;
  station->current_resps = span->resp_blks;
  station->current_chan = channel;
  return kTaken;
}

// ---- states ----

Result in_started(const Call &call, SDBlkSta *station) {
  switch (call.block.blockette_type) {
    case 50: return add_station_epoch(call, station);
    case 51: return add_comment(call, station->comment_blks, false);
    case 52: return begin_channel(call, station);
    default: return complete_station(station);
  }
}

Result between_channels(const Call &call, SDBlkSta *station) {
  switch (call.block.blockette_type) {
    case 50: return complete_station(station);
    case 52: return begin_channel(call, station);
    default: return kRefused;
  }
}

Result in_epoch(const Call &call, SDBlkSta *station) {
  const std::int32_t type = call.block.blockette_type;
  if (type == 52) return begin_channel(call, station);
  if (type == 59) return add_comment(call, station->current_chan->comment_blks, true);
  if (!is_response(type)) return complete_station(station);
  call.list(call.block);
  return keep_copy(call.block, station->current_resps, "resp_blks");
}

}  // namespace

int sdblk_setup_stabuf(const SDBlk *block, SDBlkSta **stap, Tbl *accept, Tbl *reject,
                       std::int32_t verbosity, double start, double end) {
  const bool all = start == 0.0 && end == 0.0;
  const Call call = {
      *block, accept, reject, verbosity, all ? -kForever : start, all ? kForever : end};
  switch (*stap == nullptr ? kNone : (*stap)->state) {
    case kNone: return begin_station(call, stap);
    case kStarted: return in_started(call, *stap);
    case kBetweenChannels: return between_channels(call, *stap);
    case kInEpoch: return in_epoch(call, *stap);
    default: return kTaken;
  }
}

void sdblk_free_stabuf(SDBlkSta *station) {
  if (station == nullptr) return;
  release_contents(station);
  memory_free(station);
}

void free_chan(void *channel) {
  auto *whole = static_cast<SDBlkChan *>(channel);
  if (whole == nullptr) return;
  freetbl(whole->spans, free_span);
  freetbl(whole->comment_blks, sdblk_free);
  memory_free(whole);
}

void free_span(void *span) {
  auto *whole = static_cast<SDBlkChanSpan *>(span);
  if (whole == nullptr) return;
  sdblk_free(whole->chan_blk);
  freetbl(whole->resp_blks, sdblk_free);
  memory_free(whole);
}
