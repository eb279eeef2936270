// The command line of tarvik.
#ifndef CMD_OPTIONS_H_
#define CMD_OPTIONS_H_

#include <cstdint>

namespace tarvik {

struct Options {
  int verbosity = 0;
  bool station_summary = false;
  std::int32_t logical_size = 4096;
  const char *types = nullptr;  // record types to decode and print; null for all
  const char *volume = nullptr;
};

// Writes the usage line to standard error.
void usage();

// Reads the arguments.  False after a complaint and the usage line.
bool parse_options(int argc, char **argv, Options *options);

}  // namespace tarvik

#endif  // CMD_OPTIONS_H_
