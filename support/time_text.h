// The text of an epoch as the listings have it, written fast.
#ifndef SUPPORT_TIME_TEXT_H_
#define SUPPORT_TIME_TEXT_H_

#include <string_view>

namespace tarvik {

// "%Y:%j:%T" of an epoch, as epoch2str gives it: at most 32 bytes.  Returns its end.
char *put_time(char *out, double epoch);

// The whole text for an epoch that has no date, else empty.
std::string_view undated_text(double epoch);

}  // namespace tarvik

#endif  // SUPPORT_TIME_TEXT_H_
