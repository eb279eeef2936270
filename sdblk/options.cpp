#include "sdblk/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <thread>

namespace tarvik {

namespace {

constexpr std::int32_t kLeastRecordLength = 64;
constexpr std::int32_t kMostRecordLength = 131072;

constexpr char kVersion[] = "sdblk " SDBLK_VERSION;
constexpr char kAbout[] =
    "Writes what SEED volumes hold: JSON Lines, comma-separated values, StationXML.\n"
    "Files are read to their last byte; what is damaged is passed over and told.";
constexpr char kVerbFooter[] =
    "Exit status: 0 all was read; 1 a file could not be read, or output could not\n"
    "be written; 2 wrong usage; 3 all was read, but something in it is damaged.";
constexpr char kFooter[] = "'sdblk VERB --help' shows the options of a verb.";
constexpr char kHelpPurpose[] = "Print this help and exit";
constexpr char kVersionPurpose[] = "Print the version and exit";
constexpr std::size_t kNameColumns = 24;

std::string take_record_length(const std::string &argument, std::int32_t *length) {
  const bool fits = read_integer(argument, kLeastRecordLength, kMostRecordLength, length) &&
                    (*length & (*length - 1)) == 0;
  return fits ? "" : "'" + argument + "' is no power of two from 64 to 131072";
}

std::string take_workers(const std::string &argument, std::int32_t *workers) {
  if (!read_integer(argument, 0, std::numeric_limits<std::int32_t>::max(), workers)) {
    return "'" + argument + "' is no number of files";
  }
  if (*workers == 0) *workers = static_cast<std::int32_t>(std::thread::hardware_concurrency());
  return {};
}

void declare_common(const Verb &verb, OptionList *list, Options *options) {
  list->first("FILE...", &options->files, "Volumes, folders of them, - for standard input");
  list->path("--files-from", "LIST", &options->files_from,
             "Further paths, one a line; - is standard input");
  list->flag("-0", &options->nul, "The paths of LIST end in NUL instead");
  list->argument(
      "-j", "N",
      [options](const std::string &argument) { return take_workers(argument, &options->workers); },
      "Read N files at a time; 0: as many as processors");
  list->path("-o", "FILE", &options->output,
             "Write to FILE, which is there when the run ended well");
  list->argument(
      "--record-length", "BYTES",
      [options](const std::string &argument) {
        return take_record_length(argument, &options->view.record_length);
      },
      "Length of a record until one is known,\n"
      "a power of two from 64 to 131072 (4096)");
  if (verb.heading != nullptr) {
    list->flag("--csv", &options->view.csv, "Write comma-separated values");
  }
  if (verb.schema != nullptr) {
    list->flag("--schema", &options->schema, "Print the JSON Schema of the lines and exit");
  }
}

// What the options do not say one by one.
std::string find_fault(const Options &options, const std::vector<std::string> &extras) {
  for (const std::string &extra : extras) {
    if (extra.size() > 1 && extra.starts_with('-')) return "'" + extra + "' is no option";
  }
  if (options.schema) return {};
  if (options.files.empty() && options.files_from.empty()) return "no FILE is given";
  if (options.view.csv && !options.chosen.known.empty()) return "--known goes without --csv";
  return {};
}

std::string with_hint(const std::string &fault, const Options &options) {
  const std::string verb = options.verb == nullptr ? "" : std::string(" ") + options.verb->name;
  return "sdblk: " + fault + "\nTry 'sdblk" + verb + " --help'.\n";
}

std::string without_verb(int argc, const char *const *argv) {
  return argc < 2 ? "no verb is given" : std::string("'") + argv[1] + "' is no verb";
}

// In place of the library's sentence after the option's name.
std::string argument_fault(const CLI::ArgumentMismatch &error) {
  const std::string text = error.what();
  return text.substr(0, text.find(':')) + ": the argument is missing";
}

// The application that reads a command line into options.
class Reader {
 public:
  Reader(std::span<const Verb> verbs, Options *options) : app_(kAbout, "sdblk") {
    app_.require_subcommand(1);
    app_.footer(kFooter);
    app_.set_help_flag("-h,--help", kHelpPurpose);
    app_.set_version_flag("--version", kVersion, kVersionPurpose);
    app_.get_formatter()->column_width(kNameColumns);
    app_.get_formatter()->label("OPTIONS", "OPTION...");
    app_.get_formatter()->label("SUBCOMMAND", "VERB");
    app_.get_formatter()->label("Positionals", "Files");
    for (const Verb &verb : verbs) add(verb, options);
  }

  Parsed read(int argc, const char *const *argv, Options *options, std::string *text) {
    // What follows a mark is no option, whatever it looks like.
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto mark = std::find(arguments.begin(), arguments.end(), "--");
    const std::vector<std::string> rest(mark == arguments.end() ? mark : mark + 1, arguments.end());
    arguments.erase(mark, arguments.end());
    try {
      std::reverse(arguments.begin(), arguments.end());  // as they are taken off
      app_.parse(arguments);
    } catch (const CLI::CallForVersion &answer) {
      *text = std::string(answer.what()) + "\n";
      return Parsed::answer;
    } catch (const CLI::CallForHelp &) {
      *text = app_.help();
      return Parsed::answer;
    } catch (const CLI::ArgumentMismatch &error) {
      *text = with_hint(argument_fault(error), *options);
      return Parsed::fault;
    } catch (const CLI::ParseError &error) {
      const bool has_verb = options->verb != nullptr;
      *text = with_hint(has_verb ? error.what() : without_verb(argc, argv), *options);
      return Parsed::fault;
    }
    const std::vector<std::string> extras = app_.remaining(true);
    for (const auto &more : {extras, rest}) {
      options->files.insert(options->files.end(), more.begin(), more.end());
    }
    const std::string fault = find_fault(*options, extras);
    if (fault.empty()) return Parsed::options;
    *text = with_hint(fault, *options);
    return Parsed::fault;
  }

 private:
  // Options are declared when their verb is met, so those of one verb only.
  void add(const Verb &verb, Options *options) {
    CLI::App *command = app_.add_subcommand(verb.name, verb.purpose);
    command->group("Verbs");
    command->footer(kVerbFooter);
    command->allow_extras();
    command->set_version_flag("--version", kVersion, kVersionPurpose);
    command->preparse_callback([&verb, command, options](std::size_t) {
      options->verb = &verb;
      OptionList list(command);
      declare_common(verb, &list, options);
      verb.declare(&list, &options->chosen);
      // One thing is made of all files, one after the other.
      if (options->chosen.run) command->remove_option(command->get_option("-j"));
    });
  }

  CLI::App app_;
};

}  // namespace

Parsed parse_options(int argc, const char *const *argv, std::span<const Verb> verbs,
                     Options *options, std::string *text) {
  return Reader(verbs, options).read(argc, argv, options, text);
}

}  // namespace tarvik
