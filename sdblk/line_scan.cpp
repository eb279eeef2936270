#include "sdblk/line_scan.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace tarvik {

namespace {

// What follows a backslash, but for "u".
constexpr std::string_view kEscapes = "\"\\/bfnrt";
constexpr std::string_view kEscaped = "\"\\/\b\f\n\r\t";
// What ends a number or a word.
constexpr std::string_view kAfterValue = ",} \t\r\n";

void append_utf8(std::uint32_t character, std::string *text) {
  const auto put = [text](std::uint32_t byte) { *text += static_cast<char>(byte); };
  const auto tail = [](std::uint32_t bits) { return 0x80U | (bits & 0x3FU); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0U | character >> 6);
    put(tail(character));
  } else if (character < 0x10000) {
    put(0xE0U | character >> 12);
    put(tail(character >> 6));
    put(tail(character));
  } else {
    put(0xF0U | character >> 18);
    put(tail(character >> 12));
    put(tail(character >> 6));
    put(tail(character));
  }
}

// Takes the four digits after "\u".
bool take_unit(std::string_view *rest, std::uint32_t *unit) {
  if (rest->size() < 4) return false;
  const auto [end, error] = std::from_chars(rest->data(), rest->data() + 4, *unit, 16);
  if (error != std::errc() || end != rest->data() + 4) return false;
  rest->remove_prefix(4);
  return true;
}

// Two units are one character where the first is from D800 to DBFF.
bool take_character(std::string_view *rest, std::string *text) {
  std::uint32_t character = 0;
  if (!take_unit(rest, &character)) return false;
  if (character >= 0xD800 && character < 0xDC00) {
    std::uint32_t low = 0;
    if (!rest->starts_with("\\u")) return false;
    rest->remove_prefix(2);
    if (!take_unit(rest, &low) || low < 0xDC00 || low > 0xDFFF) return false;
    character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
  }
  append_utf8(character, text);
  return true;
}

bool take_escape(std::string_view *rest, std::string *text) {
  if (rest->empty()) return false;
  const char letter = rest->front();
  rest->remove_prefix(1);
  if (letter == 'u') return take_character(rest, text);
  const std::size_t which = kEscapes.find(letter);
  if (which == std::string_view::npos) return false;
  *text += kEscaped[which];
  return true;
}

}  // namespace

LineScan::LineScan(std::string_view line) : rest_(line) {
  if (!pass('{')) rest_ = {};
}

bool LineScan::next(Member *member) {
  pass(',');
  pass_blanks();
  const char *key = rest_.data();
  if (!pass_text()) return false;
  member->key = {key + 1, static_cast<std::size_t>(rest_.data() - key) - 2};
  if (!pass(':')) return false;
  pass_blanks();
  const char *value = rest_.data();
  if (!pass_value()) return false;
  member->value = {value, static_cast<std::size_t>(rest_.data() - value)};
  return true;
}

void LineScan::pass_blanks() {
  const std::size_t blanks = rest_.find_first_not_of(" \t\r\n");
  rest_.remove_prefix(blanks == std::string_view::npos ? rest_.size() : blanks);
}

bool LineScan::pass(char c) {
  pass_blanks();
  if (!rest_.starts_with(c)) return false;
  rest_.remove_prefix(1);
  return true;
}

bool LineScan::pass_text() {
  if (!rest_.starts_with('"')) return false;
  std::size_t at = 1;
  while (true) {
    at = rest_.find_first_of("\"\\", at);
    if (at == std::string_view::npos) return false;
    if (rest_[at] == '"') break;
    at += 2;
  }
  rest_.remove_prefix(at + 1);
  return true;
}

// What nests is followed by its depth.
bool LineScan::pass_value() {
  std::size_t depth = 0;
  while (!rest_.empty()) {
    const char c = rest_.front();
    if (c == '"') {
      if (!pass_text()) return false;
      if (depth == 0) return true;
      continue;
    }
    if (depth == 0 && kAfterValue.find(c) != std::string_view::npos) return true;
    rest_.remove_prefix(1);
    if (c == '{' || c == '[') ++depth;
    if ((c == '}' || c == ']') && --depth == 0) return true;
  }
  return false;
}

bool unquote(std::string_view quoted, std::string *text) {
  if (quoted.size() < 2 || quoted.front() != '"' || quoted.back() != '"') return false;
  std::string_view rest = quoted.substr(1, quoted.size() - 2);
  text->clear();
  while (!rest.empty()) {
    const std::size_t plain = std::min(rest.find('\\'), rest.size());
    text->append(rest.substr(0, plain));
    rest.remove_prefix(plain);
    if (rest.empty()) break;
    rest.remove_prefix(1);
    if (!take_escape(&rest, text)) return false;
  }
  return true;
}

}  // namespace tarvik
