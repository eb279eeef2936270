// Prints the channels that have data in a SEED volume: the number of records, and the times at
// which the first and the last of them start.
//
//   channels FILE [LENGTH]
//
// A file that is no longer than 4096 bytes and has shorter records needs their length.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include "seed/getv.h"
#include "seed/sdblk.h"
#include "support/epoch.h"

namespace {

struct Release {
  void operator()(SDBlkVol *vol) const { sdblk_closevol(vol); }
  void operator()(char *text) const { std::free(text); }
};

struct Channel {
  long records = 0;
  double first = std::numeric_limits<double>::infinity();
  double last = -first;
};
using Channels = std::map<std::string, Channel>;

// Seconds with four decimals, as the start times of records have them.
void print_time(double time) {
  const double ticks = std::round(time * 10000);
  const double seconds = std::floor(ticks / 10000);
  const std::unique_ptr<char, Release> text(epoch2str(seconds, "%Y,%j,%H:%M:%S"));
  std::printf("  %s.%04.0f", text ? text.get() : "?", ticks - seconds * 10000);
}

// False when the record lacks a field; the log has a message then.
bool count(const SDBlk &record, Channels *channels) {
  const char *net = nullptr, *sta = nullptr, *loc = nullptr, *chan = nullptr;
  double time = 0;
  if (sdblk::get(record.contents, "net", &net, "sta", &sta, "loc", &loc, "chan", &chan, "time",
                 &time) < 0) {
    return false;
  }
  Channel &channel = (*channels)[std::string(net) + "_" + sta + "_" + loc + "_" + chan];
  ++channel.records;
  channel.first = std::min(channel.first, time);
  channel.last = std::max(channel.last, time);
  return true;
}

// Reads the volume to its end.  Returns the exit status.
int read_volume(SDBlkVol *vol, Channels *channels) {
  SDBlk *block = nullptr;
  int status = 0;
  int result = 0;
  while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
    if (block->data_ptr == nullptr) {           // a control blockette
      if (block->blockette_length == 0) break;  // there is no way to read on
    } else if (sdblk_unstuffblk(block) < 0 || !count(*block, channels)) {
      elog_complain(0, "channels: block %d is left out.\n", block->block_number);
      status = 1;
    }
  }
  sdblk_free(block);
  if (result == SDBLK_EOF) return status;
  elog_complain(0, "channels: the volume cannot be read to its end.\n");
  return 1;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2 && argc != 3) elog_die(0, "usage: channels FILE [LENGTH]\n");
  const int length = argc == 3 ? static_cast<int>(std::strtol(argv[2], nullptr, 10)) : 0;
  const std::unique_ptr<SDBlkVol, Release> vol(sdblk_new(argv[1], nullptr, 0, length));
  if (!vol) elog_die(0, "channels: %s cannot be opened.\n", argv[1]);
  Channels channels;
  const int status = read_volume(vol.get(), &channels);
  for (const auto &[name, channel] : channels) {
    std::printf("%-15s %6ld", name.c_str(), channel.records);
    print_time(channel.first);
    print_time(channel.last);
    std::printf("\n");
  }
  return status;
}
