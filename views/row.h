// A line of named values, as a JSON object or as comma-separated values.
#ifndef VIEWS_ROW_H_
#define VIEWS_ROW_H_

#include <cstdint>
#include <string_view>

#include "views/lines.h"

namespace tarvik {

// Writes one value after the other, each after a comma; one object serves any number of lines and
// parts of lines.  Keys stand in JSON only, where they are put as they are.
class Row {
 public:
  Row(TextBuffer *out, bool csv) : out_(out), csv_(csv) {}

  // Begins a line with its kind, which stands in JSON only, and the file as WholeView::file() gives
  // it.
  void start(std::string_view kind, std::string_view file);

  void text(std::string_view key, std::string_view bytes);
  void integer(std::string_view key, std::int64_t number);
  void real(std::string_view key, double number);
  // The times of views/json.h.
  void time(std::string_view key, double epoch);
  void microtime(std::string_view key, std::int64_t microseconds);
  void cut_microtime(std::string_view key, std::int64_t microseconds);
  void nanotime(std::string_view key, std::int64_t seconds, std::int64_t nanoseconds);
  void null(std::string_view key);

  // Starts an object or an array, which the caller puts as JSON where the result is true; it has no
  // place in comma-separated values.
  bool nest(std::string_view key);

  // Ends the line, without its LF.
  void finish() {
    if (!csv_) out_->put('}');
  }

 private:
  char *put_key(char *out, std::string_view key) const;
  // A value that put writes as JSON where it is told: no text, or one of plain characters.
  template <typename Put>
  void value(std::string_view key, Put put);

  TextBuffer *out_;
  bool csv_;
};

}  // namespace tarvik

#endif  // VIEWS_ROW_H_
