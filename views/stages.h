// The response of a channel epoch as JSON: its stages and its sensitivity.
#ifndef VIEWS_STAGES_H_
#define VIEWS_STAGES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "views/epochs.h"
#include "views/lines.h"

namespace tarvik {

// Takes the blockettes of a response as they are met and keeps their text; only the order of the
// stages, and which blockettes are one response in parts, is settled at the end.
class Stages {
 public:
  static constexpr std::size_t kMost = 1000;  // blockettes that are taken

  void clear();
  // False when no more blockettes are taken.
  bool add(const Response &response);
  // Puts ",\"sensitivity\":...,\"stages\":[...]".
  void put(TextBuffer *out);

 private:
  // A part of the text.
  struct Piece {
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  // A count and the elements that it counts.
  struct Repetition {
    bool has_count = false;
    bool has_elements = false;
    std::int64_t count = 0;  // of the elements that are there
    Piece elements;          // without the brackets
  };
  // A blockette.
  struct Item {
    std::int32_t type = 0;
    std::int32_t from = 0;
    std::int64_t block = 0;
    std::int64_t stage = 0;  // kNoStage for none
    Piece fields;            // without the braces
    Piece head;              // the fields before the first count
    std::array<Repetition, 2> repetitions;
    Piece input_units;
    Piece output_units;
    Piece value;
    Piece frequency;
  };
  using Iterator = std::vector<Item>::const_iterator;

  [[nodiscard]] std::string_view text(const Piece &piece) const {
    return text_.text().substr(piece.begin, piece.end - piece.begin);
  }
  [[nodiscard]] bool is_joined(const Item &first, const Item &next) const;
  [[nodiscard]] Iterator end_of_joined(Iterator first) const;
  void put_sensitivity(TextBuffer *out) const;
  [[nodiscard]] std::string_view first_value(Piece Item::*unit, bool from_end) const;
  void put_stages(TextBuffer *out) const;
  void put_item(TextBuffer *out, Iterator first, Iterator last) const;
  void put_joined(TextBuffer *out, Iterator first, Iterator last) const;
  void put_repetition(TextBuffer *out, Iterator first, Iterator last, std::size_t which) const;

  TextBuffer text_;
  std::vector<Item> items_;
};

}  // namespace tarvik

#endif  // VIEWS_STAGES_H_
