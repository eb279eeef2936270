// The options of a verb, as they are declared.
#ifndef SDBLK_OPTION_LIST_H_
#define SDBLK_OPTION_LIST_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace tarvik {

// Declares options and the variables that they set, which must live until the command line is read.
// Arguments are taken as they stand, brackets and commas included.  names are those of the option,
// separated by commas ("-o", "--types"); value is what help calls the argument ("FILE").
class OptionList {
 public:
  explicit OptionList(CLI::App *app) : app_(app) {}

  // Takes an argument; else says what is wrong with it, after "--name: ".
  using Take = std::function<std::string(const std::string &argument)>;

  void flag(const char *names, bool *variable, const char *purpose);
  // A path that is not empty.
  void path(const char *names, const char *value, std::string *variable, const char *purpose);
  // An argument that is looked at when it is read; at most one.
  void argument(const char *names, const char *value, const Take &take, const char *purpose);
  // The same, as often as the option is given.
  void arguments(const char *names, const char *value, const Take &take, const char *purpose);
  // The first argument that belongs to no option; the others are the application's extras.
  void first(const char *value, std::vector<std::string> *variable, const char *purpose);

 private:
  CLI::App *app_;
};

// Reads a decimal integer, all of a text, from least to most.
bool read_integer(const std::string &text, std::int32_t least, std::int32_t most,
                  std::int32_t *value);

}  // namespace tarvik

#endif  // SDBLK_OPTION_LIST_H_
