// What the command tells people, on standard error.
#ifndef SDBLK_MESSAGES_H_
#define SDBLK_MESSAGES_H_

#include <string_view>

namespace tarvik {

// Writes a text as a line at once, for any thread.  Control characters show as "?", and the progress makes
// room.
void say(std::string_view text);

// Writes "sdblk: ", the text and a line end at once, for any thread.  On a terminal control
// characters show as "?", and the progress makes room.
void complain(std::string_view text);

}  // namespace tarvik

#endif  // SDBLK_MESSAGES_H_
