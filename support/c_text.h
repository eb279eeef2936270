// Texts that may be null.
#ifndef SUPPORT_C_TEXT_H_
#define SUPPORT_C_TEXT_H_

namespace tarvik {

inline const char *or_empty(const char *text) { return text == nullptr ? "" : text; }

}  // namespace tarvik

#endif  // SUPPORT_C_TEXT_H_
