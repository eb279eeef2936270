#include "cmd/options.h"

#include <string_view>

#include "support/elog.h"
#include "support/parse.h"

namespace tarvik {

namespace {

// The arguments, from the one that is looked at on.
class Arguments {
 public:
  Arguments(int argc, char **argv) : argc_(argc), argv_(argv) {}

  [[nodiscard]] const char *current() const {
    return position_ < argc_ ? argv_[position_] : nullptr;
  }
  void next() { ++position_; }

  // The argument after an option, or null after a complaint.
  const char *value_of(const char *option) {
    next();
    if (current() == nullptr) elog_complain(0, "Need %s argument.\n", option);
    return current();
  }

 private:
  int argc_;
  char **argv_;
  int position_ = 1;
};

bool parse_option(Arguments *arguments, Options *options) {
  const std::string_view option = arguments->current();
  if (option == "-v") {
    options->verbosity = 1;
  } else if (option == "-vv") {
    options->verbosity = 2;
  } else if (option == "-sta") {
    options->station_summary = true;
  } else if (option == "-lsize") {
    const char *value = arguments->value_of("-lsize");
    if (value == nullptr) return false;
    options->logical_size = static_cast<std::int32_t>(read_integer(value).value);
  } else if (option == "-types") {
    options->types = arguments->value_of("-types");
    if (options->types == nullptr) return false;
  } else {
    elog_complain(0, "Unrecognized option '%s'.\n", arguments->current());
    return false;
  }
  arguments->next();
  return true;
}

bool parse_arguments(Arguments *arguments, Options *options) {
  while (arguments->current() != nullptr && arguments->current()[0] == '-') {
    if (!parse_option(arguments, options)) return false;
  }
  options->volume = arguments->current();
  if (options->volume == nullptr) elog_complain(0, "Need seedfile argument.\n");
  return options->volume != nullptr;
}

}  // namespace

void usage() {
  elog_notify(0, "usage: tarvik [-lsize logical_size] [-types tlist] [-v[v]] [-sta] seedfile\n");
}

bool parse_options(int argc, char **argv, Options *options) {
  Arguments arguments(argc, argv);
  if (parse_arguments(&arguments, options)) return true;
  usage();
  return false;
}

}  // namespace tarvik
