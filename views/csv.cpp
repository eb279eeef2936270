#include "views/csv.h"

#include "views/json.h"

namespace tarvik {

std::string csv_text(std::string_view text) {
  std::string value = utf8_text(text);
  if (value.find_first_of(",\"\r\n") == std::string::npos) return value;
  std::string quoted = "\"";
  for (const char c : value) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted += '"';
}

}  // namespace tarvik
