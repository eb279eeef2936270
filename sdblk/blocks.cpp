#include "sdblk/blocks.h"

#include <memory>
#include <sstream>

#include "views/blocks.h"

namespace tarvik {

namespace {

constexpr char kLetters[] = "VASTDRQM";
constexpr std::int32_t kMostType = 65535;  // what a data blockette can state

std::string take_letters(const std::string &argument, std::string *letters) {
  if (argument.empty() || argument.find_first_not_of(kLetters) != std::string::npos) {
    return "'" + argument + "' holds other letters than " + kLetters;
  }
  *letters = argument;
  return {};
}

std::string take_types(const std::string &argument, std::vector<std::int32_t> *types) {
  std::istringstream parts(argument + ",");
  for (std::string part; std::getline(parts, part, ',');) {
    std::int32_t type = 0;
    if (!read_integer(part, 0, kMostType, &type)) return "'" + part + "' is no blockette type";
    types->push_back(type);
  }
  return {};
}

}  // namespace

void declare_blocks(OptionList *options, Chosen *chosen) {
  const auto blocks = std::make_shared<BlocksOptions>();
  options->flag("--raw", &blocks->raw, "With the bytes of each block");
  options->argument(
      "--types", "LETTERS",
      [blocks](const std::string &argument) { return take_letters(argument, &blocks->types); },
      "Only blocks of these record types, such as VAS");
  options->argument(
      "--blockettes", "TYPES",
      [blocks](const std::string &argument) { return take_types(argument, &blocks->blockettes); },
      "Only these blockette types, such as 50,52,1000;\n"
      "99 is a data record");
  chosen->make_view = [blocks](const ViewOptions &common) {
    return make_blocks_view(common, *blocks);
  };
}

}  // namespace tarvik
