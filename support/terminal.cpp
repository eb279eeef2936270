#include "support/terminal.h"

#include <cstring>

namespace tarvik {

namespace {

struct Range {
  unsigned char least;
  unsigned char most;

  [[nodiscard]] bool has(char c) const {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= least && byte <= most;
  }
};

constexpr Range kContinuation = {0x80, 0xBF};

// The well-formed sequences of UTF-8 of more than one byte, by their first: what may come second,
// and how many there are.  The characters U+0080 to U+009F are left out.
struct Sequence {
  Range first;
  Range second;
  std::size_t bytes;
};
constexpr Sequence kSequences[] = {
    {{0xC2, 0xC2}, {0xA0, 0xBF}, 2}, {{0xC3, 0xDF}, kContinuation, 2},
    {{0xE0, 0xE0}, {0xA0, 0xBF}, 3}, {{0xE1, 0xEC}, kContinuation, 3},
    {{0xED, 0xED}, {0x80, 0x9F}, 3}, {{0xEE, 0xEF}, kContinuation, 3},
    {{0xF0, 0xF0}, {0x90, 0xBF}, 4}, {{0xF1, 0xF3}, kContinuation, 4},
    {{0xF4, 0xF4}, {0x80, 0x8F}, 4},
};

// Bytes of the sequence at the start of a text of size bytes, one at least; 0 when there is none.
std::size_t sequence_length(const char *text, std::size_t size) {
  for (const Sequence &sequence : kSequences) {
    if (!sequence.first.has(text[0])) continue;
    if (size < sequence.bytes || !sequence.second.has(text[1])) return 0;
    for (std::size_t i = 2; i < sequence.bytes; ++i) {
      if (!kContinuation.has(text[i])) return 0;
    }
    return sequence.bytes;
  }
  return 0;
}

bool is_control_character(const char *text, std::size_t size) {
  constexpr Range kControls = {0x80, 0x9F};
  return text[0] == '\xC2' && size >= 2 && kControls.has(text[1]);
}

bool is_control_byte(char c) {
  constexpr Range kLow = {0x00, 0x1F};
  constexpr Range kHigh = {0x7F, 0x9F};
  return (kLow.has(c) && c != '\n' && c != '\t') || kHigh.has(c);
}

}  // namespace

std::size_t hide_control_characters(char *text, std::size_t size) noexcept {
  char *out = text;
  for (std::size_t at = 0; at < size;) {
    std::size_t length = sequence_length(text + at, size - at);
    if (length > 0) {
      std::memmove(out, text + at, length);
      out += length;
    } else {
      length = is_control_character(text + at, size - at) ? 2 : 1;
      *out++ = length == 2 || is_control_byte(text[at]) ? '?' : text[at];
    }
    at += length;
  }
  return static_cast<std::size_t>(out - text);
}

}  // namespace tarvik
