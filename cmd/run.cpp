#include "cmd/run.h"

#include <cstring>

#include "cmd/mapping_guard.h"
#include "cmd/progress.h"
#include "cmd/station_dump.h"
#include "cmd/tally.h"
#include "seed/sdblk.h"
#include "support/output.h"

namespace tarvik {

namespace {

// The process ends with the run, and the volume and the block with it: they are not released, and
// stay in reach of whoever looks for leaks.
SDBlkVol *open_volume = nullptr;
SDBlk *last_block = nullptr;

bool is_wanted(const Options &options, const SDBlk &block) {
  return options.types == nullptr || std::strchr(options.types, block.record_type) != nullptr;
}

// Decodes a block and prints what the options ask for.
bool show(const Options &options, SDBlk *block) {
  if (sdblk_unstuffblk(block) < 0) {
    elog_complain(0, "sdblk_unstuffblk (%s) error.\n", options.volume);
    return false;
  }
  if (options.station_summary) {
    station_dump(block, options.verbosity);
  } else if (options.verbosity > 0) {
    sdblk_printblk(block, "", options.verbosity - 1);
  }
  return true;
}

// The parser hands out a control blockette of length 0 again and again, whatever type it states.
bool stands_still(const SDBlk &block) {
  return block.data_ptr == nullptr && block.blockette_length == 0;
}

void complain_of_reading(const Options &options) {
  elog_complain(0, "sdblk_parseblk (%s) error.\n", options.volume);
}

// Reads the volume to its end.  False after a complaint.
bool read_volume(const Options &options, Tally *tally) {
  Progress progress(progress_descriptor(options), open_volume->image_size);
  while (true) {
    const int result = sdblk_parseblk(open_volume, &last_block);
    SDBlk *block = last_block;
    if (result == SDBLK_EOF) return true;
    if (result < 0) {
      complain_of_reading(options);
      return false;
    }
    tally->count(*block);
    progress.at(open_volume->offset);
    if (is_wanted(options, *block) && !show(options, block)) return false;
    if (stands_still(*block)) {
      elog_log(0, "B%4.4d at %c:%6.6d has length 0: cannot read on.\n", block->blockette_type,
               block->record_type, block->logical_sequence);
      complain_of_reading(options);
      return false;
    }
  }
}

}  // namespace

int run(const Options &options) {
  open_volume = sdblk_new(options.volume, nullptr, 0, options.logical_size);
  if (open_volume == nullptr) elog_die(0, "sdblk_parse(%s) error.\n", options.volume);
  guard_mapping(*open_volume);
  Tally tally;
  const bool complete = read_volume(options, &tally);
  if (complete) output_print("EOF detected on %s.\n", options.volume);
  tally.print();
  return complete ? 0 : 1;
}

}  // namespace tarvik
