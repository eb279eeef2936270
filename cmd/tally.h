// Counts of blocks by record type.
#ifndef CMD_TALLY_H_
#define CMD_TALLY_H_

#include <array>
#include <string_view>

#include "seed/sdblk.h"

class Tally {
 public:
  // Counts a block under its record type, and under U when the catalogue does not know it.
  void count(const SDBlk &block);
  // Prints the nine count lines to standard output.
  void print() const;

 private:
  // In the order in which they are printed.
  static constexpr std::string_view kLetters = "UVASTDRQM";

  std::array<long, kLetters.size()> counts_ = {};
};

#endif  // CMD_TALLY_H_
