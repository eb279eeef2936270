// Comma-separated values, quoted as RFC 4180 says.
#ifndef VIEWS_CSV_H_
#define VIEWS_CSV_H_

#include <string>
#include <string_view>

namespace tarvik {

// A text of any bytes as a value: the characters that JSON would show, in quotes where a comma, a
// quote or an end of a line is among them.
std::string csv_text(std::string_view text);

}  // namespace tarvik

#endif  // VIEWS_CSV_H_
