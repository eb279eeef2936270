// The command line.
#ifndef SDBLK_OPTIONS_H_
#define SDBLK_OPTIONS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "sdblk/verbs.h"

namespace tarvik {

struct Options {
  const Verb *verb = nullptr;
  Chosen chosen;
  ViewOptions view;
  std::vector<std::string> files;
  std::string files_from;    // the list of further files; empty for none
  bool nul = false;          // the list's lines end in NUL
  std::int32_t workers = 1;  // files that are read at a time
  std::string output;        // empty for standard output
  bool schema = false;       // only the schema is asked for
};

enum class Parsed {
  options,  // there is a run to be made
  answer,   // the text answers the command line
  fault     // the text says what is wrong with it
};

// Reads the command line of a program that has some verbs.  text is for people, ended by LF.
Parsed parse_options(int argc, const char *const *argv, std::span<const Verb> verbs,
                     Options *options, std::string *text);

}  // namespace tarvik

#endif  // SDBLK_OPTIONS_H_
