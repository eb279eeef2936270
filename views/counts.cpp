#include "views/counts.h"

#include <string_view>

#include "support/line.h"
#include "views/json.h"

namespace tarvik {

void BlockCounts::put(TextBuffer *out) const {
  char separator = '{';
  for (const char letter : std::string_view("UVASTDRQM")) {
    char *at = out->reserve(kIntegerRoom + 8);
    at = put_char(put_char(put_char(at, separator), '"'), letter);
    out->commit(put_integer(put_text(at, "\":"), of(letter)));
    separator = ',';
  }
  out->put('}');
}

}  // namespace tarvik
