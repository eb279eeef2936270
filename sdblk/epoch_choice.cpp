#include "sdblk/epoch_choice.h"

#include <optional>
#include <string>

namespace tarvik {

namespace {

std::string take_pattern(const std::string &argument, std::vector<std::string> *patterns) {
  const std::string fault = pattern_fault(argument);
  if (!fault.empty()) return "'" + argument + "': " + fault;
  patterns->push_back(argument);
  return {};
}

std::string take_time(const std::string &argument, std::optional<Ticks> *time) {
  *time = parse_time_text(argument);
  return *time ? "" : "'" + argument + "' is no time such as 2021-03-16 or 2021-03-16T06:15:52.6";
}

}  // namespace

void declare_epoch_choice(OptionList *options, const std::shared_ptr<EpochOptions> &epochs) {
  options->arguments(
      "--accept", "RE",
      [epochs](const std::string &argument) { return take_pattern(argument, &epochs->accept); },
      "Only epochs with RE, an extended regular expression,\n"
      "in NET_STA_CHA_LO");
  options->arguments(
      "--reject", "RE",
      [epochs](const std::string &argument) { return take_pattern(argument, &epochs->reject); },
      "No epochs with RE in NET_STA_CHA_LO");
  options->argument(
      "--from", "TIME",
      [epochs](const std::string &argument) { return take_time(argument, &epochs->from); },
      "Only epochs that end at TIME or after, or are open");
  options->argument(
      "--to", "TIME",
      [epochs](const std::string &argument) { return take_time(argument, &epochs->to); },
      "Only epochs that begin at TIME or before");
}

}  // namespace tarvik
