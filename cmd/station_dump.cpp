#include "cmd/station_dump.h"

#include <array>

#include "seed/format.h"
#include "seed/getv.h"
#include "seed/time_text.h"
#include "support/output.h"

namespace tarvik {

namespace {

constexpr std::int32_t kItemsBeforeWrap = 10;

// Response items on the current line; 0 when no response line is open.  Lasts from block to block.
std::int32_t nresps = 0;

// Start and end of an epoch as text.
struct EpochText {
  std::array<char, 32> start;
  std::array<char, 32> end;

  EpochText(double time, double endtime) {
    mystrtime(start.data(), time);
    mystrtime(end.data(), endtime);
  }
};

void close_response_line() {
  if (nresps > 0) output_print("\n");
  nresps = 0;
}

// A text of a referenced abbreviation, empty when there is none.
const char *text_of(const SDBlk *abbreviation, const char *key) {
  const char *text = "";
  if (abbreviation != nullptr) sdblk::get(abbreviation->contents, key, &text);
  return text;
}

void dump_station_details(const SDBlk &block) {
  double lat = 0.0;
  double lon = 0.0;
  double elev = 0.0;
  const char *name = "";
  SDBlk *network = nullptr;
  sdblk::get(block.contents, "lat", &lat, "lon", &lon, "elev", &elev, "name", &name, "*net_gid",
             &network);
  output_print("         %s : %s\n         %.4f %.4f %.3f\n", name, text_of(network, "descr"), lat,
               lon, elev);
}

void dump_station(const SDBlk &block, int verbosity) {
  const char *net = "";
  if (sdblk::get(block.contents, "net", &net) < 0) {
    elog_clear_register(0);
    net = "??";
  }
  const char *sta = "";
  double time = SDBLK_NO_TIME;
  double endtime = SDBLK_NO_TIME;
  sdblk::get(block.contents, "sta", &sta, "time", &time, "endtime", &endtime);
  const EpochText epoch(time, endtime);
  close_response_line();
  output_print("%-2s %-5s %s %s\n", net, sta, epoch.start.data(), epoch.end.data());
  if (verbosity != 0) dump_station_details(block);
}

void dump_channel_details(const SDBlk &block) {
  double lat = 0.0;
  double lon = 0.0;
  double elev = 0.0;  // read in its place, not shown
  double depth = 0.0;
  double azimuth = 0.0;
  double dip = 0.0;
  double samprate = 0.0;
  SDBlk *instrument = nullptr;
  SDBlk *units = nullptr;
  sdblk::get(block.contents, "lat", &lat, "lon", &lon, "elev", &elev, "depth", &depth, "azimuth",
             &azimuth, "dip", &dip, "samprate", &samprate, "*inst_gid", &instrument, "*sunits",
             &units);
  const char *units_name = "";
  const char *units_descr = "";  // read in its place, not shown
  if (units != nullptr) sdblk::get(units->contents, "name", &units_name, "descr", &units_descr);
  output_print("                %s : %s\n                %.4f %.4f %.3f %.3f %.3f %.3f\n",
               text_of(instrument, "descr"), units_name, lat, lon, depth, azimuth, dip, samprate);
}

void dump_channel(const SDBlk &block, int verbosity) {
  const char *chan = "";
  const char *loc = "";
  double time = SDBLK_NO_TIME;
  double endtime = SDBLK_NO_TIME;
  sdblk::get(block.contents, "chan", &chan, "loc", &loc, "time", &time, "endtime", &endtime);
  const EpochText epoch(time, endtime);
  close_response_line();
  output_print("         %-3s %-2s %s %s\n", chan, loc, epoch.start.data(), epoch.end.data());
  if (verbosity != 0) dump_channel_details(block);
}

// Makes room for one more item: on a new line after the eleventh.
void place_item() {
  if (nresps > kItemsBeforeWrap) {
    output_print("\n");
    nresps = 0;
  }
  if (nresps == 0) output_print("               ");
  ++nresps;
}

void dump_reference(const SDBlk *response, long stage) {
  if (response == nullptr) {
    output_print("\?\?(%ld)", stage);
  } else {
    output_print("%d(%ld)", response->blockette_type, stage);
  }
}

// The responses that one stage of a response reference blockette refers to.  The first of the whole
// blockette follows its bracket.
void dump_stage(const Arr *stage_entries, bool *first) {
  std::int32_t stage = 0;
  std::int32_t count = 0;
  SDBlkAbbrRef *references = nullptr;
  sdblk::get(stage_entries, "stage", &stage, "nresps", &count, "resps", &references);
  if (references == nullptr) return;
  for (std::int32_t i = 0; i < count; ++i) {
    if (*first) {
      ++nresps;
    } else {
      place_item();
      output_print(" ");
    }
    *first = false;
    dump_reference(references[i].blk, stage);
  }
}

void dump_references(const SDBlk &block) {
  std::int32_t count = 0;
  Arr **stages = nullptr;
  sdblk::get(block.contents, "nstages", &count, "stages", &stages);
  output_print("->[");
  bool first = true;
  for (std::int32_t i = 0; stages != nullptr && i < count; ++i) dump_stage(stages[i], &first);
  output_print("]");
}

void dump_response(const SDBlk &block) {
  std::int32_t stage = -1;
  if (sdblk::get(block.contents, "stage", &stage) < 0) elog_clear_register(0);
  place_item();
  if (stage == -1) {
    output_print(" %d()", block.blockette_type);
  } else {
    output_print(" %d(%ld)", block.blockette_type, static_cast<long>(stage));
  }
  if (block.blockette_type == 60) dump_references(block);
}

}  // namespace

int station_dump(const SDBlk *block, int verbosity) {
  if (block->blockette_type == 50) {
    dump_station(*block, verbosity);
  } else if (block->blockette_type == 52) {
    dump_channel(*block, verbosity);
  } else if (is_response(block->blockette_type)) {
    dump_response(*block);
  }
  return 0;
}

int mystrtime(char *text, double epoch) {
  *put_time_or_null(text, epoch) = '\0';
  return 0;
}

}  // namespace tarvik
