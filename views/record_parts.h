// Parts of the lines of data records, kept for the records after them: those of a channel differ in
// their time and in little else.
#ifndef VIEWS_RECORD_PARTS_H_
#define VIEWS_RECORD_PARTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "seed/whole.h"
#include "views/plan.h"
#include "views/repeats.h"

namespace tarvik {

// The parts are what stands before and after the time in the fixed section, and each data
// blockette.  The text of one follows from its bytes, the byte order and its place in the record.
// For one thread.
class RecordParts {
 public:
  RecordParts();

  // Looks for the texts of all parts of a record whose chain hangs on it.  False where one is new.
  bool find(const SDBlk &record);
  // What was found, until more is kept; by the place in the chain.
  [[nodiscard]] std::string_view before_time() const { return found_[0]; }
  [[nodiscard]] std::string_view after_time() const { return found_[1]; }
  [[nodiscard]] std::string_view chained(std::size_t place) const { return found_[2 + place]; }

  // Keep a text of a record that was decoded without a note.  Throw std::bad_alloc.
  void keep_before_time(const SDBlk &record, std::string_view text) {
    keep(part_before_time(record), text);
  }
  void keep_after_time(const SDBlk &record, std::string_view text) {
    keep(part_after_time(record), text);
  }
  void keep_chained(const SDBlk &record, const SDBlk &chained, std::string_view text) {
    keep(part_of(record, chained), text);
  }

  // The fixed section, and the position of the time in it.
  [[nodiscard]] const Plan &fixed_section() const { return fixed_section_; }
  [[nodiscard]] std::size_t time() const { return time_; }

 private:
  struct Part {
    std::uint32_t kind;
    std::string_view bytes;  // none where the text follows from more, or hardly comes again
  };
  [[nodiscard]] Part part_before_time(const SDBlk &record) const;
  [[nodiscard]] Part part_after_time(const SDBlk &record) const;
  [[nodiscard]] Part part_of(const SDBlk &record, const SDBlk &chained) const;
  bool find(std::size_t place, const Part &part);
  void keep(const Part &part, std::string_view text);

  // Records have a few blockettes each; one with more is no repetition.
  static constexpr std::size_t kMostParts = 16;

  // By definition: the bytes of a data blockette that a text follows from, or 0.
  std::array<std::uint8_t, SEED_BLKDEFS_COUNT> bytes_ = {};
  const Plan &fixed_section_;
  std::size_t time_ = 0;
  std::size_t time_begin_ = 0;  // offsets in a record
  std::size_t time_end_ = 0;
  Repeats repeats_;
  std::array<std::string_view, kMostParts> found_;
};

}  // namespace tarvik

#endif  // VIEWS_RECORD_PARTS_H_
