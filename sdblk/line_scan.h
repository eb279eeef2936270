// A look at a line of an earlier run.
#ifndef SDBLK_LINE_SCAN_H_
#define SDBLK_LINE_SCAN_H_

#include <string>
#include <string_view>

namespace tarvik {

// Goes through the members of a JSON object that is a line, at the outermost level and in their
// order, no further than it is asked to.
class LineScan {
 public:
  explicit LineScan(std::string_view line);

  struct Member {
    std::string_view key;    // as it stands between its quotes
    std::string_view value;  // as it stands: a text with its quotes, an object with its braces
  };
  // False at the end of the object, and where the line is none.
  bool next(Member *member);

 private:
  void pass_blanks();
  bool pass(char c);
  bool pass_text();
  bool pass_value();

  std::string_view rest_;
};

// What a text with its quotes stands for, as UTF-8.  False when it is no such text.
bool unquote(std::string_view quoted, std::string *text);

}  // namespace tarvik

#endif  // SDBLK_LINE_SCAN_H_
