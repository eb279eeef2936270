#include "support/text.h"

#include <cstring>

#include "support/parse.h"

using namespace tarvik;

int blank(const char *text) { return text == nullptr || is_blank(text) ? 1 : 0; }

void chomp(char *text) {
  if (text == nullptr) return;
  const std::size_t length = std::strlen(text);
  if (length > 0 && text[length - 1] == '\n') text[length - 1] = '\0';
}

double fix_strtod(const char *text, char **end) {
  const RealPrefix real = read_real(text);
  // strtod's interface gives back a pointer to characters that may be constant.
  if (end != nullptr) std::memcpy(end, &text, sizeof(text));
  if (end != nullptr) *end += real.length;
  return real.value;
}
