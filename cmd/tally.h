// Counts of blocks by record type.
#ifndef CMD_TALLY_H_
#define CMD_TALLY_H_

#include <array>

#include "seed/sdblk.h"

namespace tarvik {

class Tally {
 public:
  // Counts a block under its record type, and under U when the catalogue does not know it.
  void count(const SDBlk &block);
  // Prints the nine count lines to standard output.
  void print() const;

 private:
  long unknown_ = 0;
  std::array<long, 256> by_type_ = {};  // of every record type that there may be
};

}  // namespace tarvik

#endif  // CMD_TALLY_H_
