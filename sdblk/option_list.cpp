#include "sdblk/option_list.h"

#include <CLI/CLI.hpp>
#include <charconv>

namespace tarvik {

namespace {

enum class Times { once, any };

// An option that is given at most so many times, each time with one argument.  What looks like a
// list is not taken apart; that is switched off last, for expected switches it on.
void add(CLI::App *app, const char *names, const char *value, Times times,
         const OptionList::Take &take, const char *purpose) {
  const auto take_all = [=](const std::vector<std::string> &arguments) {
    if (times == Times::once && arguments.size() > 1) {
      throw CLI::ValidationError(names, "is given more than once");
    }
    for (const std::string &argument : arguments) {
      const std::string fault = take(argument);
      if (!fault.empty()) throw CLI::ValidationError(names, fault);
    }
    return true;
  };
  CLI::Option *option = app->add_option(names, take_all, purpose);
  option->type_name(value)->type_size(1)->expected(1);
  option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  option->allow_extra_args(false);
}

}  // namespace

void OptionList::flag(const char *names, bool *variable, const char *purpose) {
  app_->add_flag(names, *variable, purpose);
}

void OptionList::path(const char *names, const char *value, std::string *variable,
                      const char *purpose) {
  const auto take = [variable](const std::string &argument) {
    *variable = argument;
    return argument.empty() ? "the path is empty" : "";
  };
  argument(names, value, take, purpose);
}

void OptionList::argument(const char *names, const char *value, const Take &take,
                          const char *purpose) {
  add(app_, names, value, Times::once, take, purpose);
}

void OptionList::arguments(const char *names, const char *value, const Take &take,
                           const char *purpose) {
  add(app_, names, value, Times::any, take, purpose);
}

void OptionList::first(const char *value, std::vector<std::string> *variable, const char *purpose) {
  const auto take = [variable](const std::string &argument) {
    variable->push_back(argument);
    return std::string();
  };
  argument(value, "", take, purpose);
}

bool read_integer(const std::string &text, std::int32_t least, std::int32_t most,
                  std::int32_t *value) {
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *value);
  return error == std::errc() && stop == end && *value >= least && *value <= most;
}

}  // namespace tarvik
