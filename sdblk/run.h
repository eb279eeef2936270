// One run of the command.
#ifndef SDBLK_RUN_H_
#define SDBLK_RUN_H_

#include "sdblk/options.h"

namespace tarvik {

// What the program ends with.
enum Status : int {
  kAllRead = 0,
  kFailed = 1,  // a file could not be read, or output could not be written
  kWrongUsage = 2,
  kDamaged = 3  // all was read, but something is garbage, has no prefix or is cut
};

// Reads the files and writes their lines.
Status run(const Options &options);

// Writes a text that answers the command line to standard output.
Status answer(const std::string &text);

}  // namespace tarvik

#endif  // SDBLK_RUN_H_
