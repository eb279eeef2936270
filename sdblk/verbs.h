// What the command can do: a row for each verb.
#ifndef SDBLK_VERBS_H_
#define SDBLK_VERBS_H_

#include <functional>
#include <memory>
#include <span>
#include <string>

#include "sdblk/option_list.h"
#include "views/view.h"

namespace tarvik {

struct Options;
enum Status : int;

// What a verb makes of its command line.
struct Chosen {
  std::function<std::unique_ptr<View>(const ViewOptions &options)> make_view;  // for any thread
  // Instead: makes one thing of all files.
  std::function<Status(const Options &options)> run;
  std::string known;  // the list of files that are passed over; empty for none
};

struct Verb {
  const char *name;
  const char *purpose;
  // Declares the options that are the verb's own; chosen is filled when they are read, and lives
  // as long as they do.
  void (*declare)(OptionList *options, Chosen *chosen);
  Heading (*heading)();     // of comma-separated values; nullptr for none
  std::string (*schema)();  // of its lines; nullptr for none, where they are no lines
};

std::span<const Verb> verbs();

}  // namespace tarvik

#endif  // SDBLK_VERBS_H_
