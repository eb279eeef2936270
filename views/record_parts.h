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

// The parts of a record are what stands before and after the time in its fixed section, and each
// data blockette.  The text of one follows from its bytes, the byte order and its place in the
// record.  For one thread.
class RecordParts {
 public:
  static constexpr std::size_t kBeforeTime = 0;
  static constexpr std::size_t kAfterTime = 1;
  static constexpr std::size_t kChain = 2;  // the first data blockette

  RecordParts();

  // Forgets all texts: of a file that others write in while it is read they may be wrong.
  void clear() { repeats_.clear(); }

  // Looks for the parts of a record whose chain hangs on it.  False where the text of one is new.
  bool find(const SDBlk &record);
  // The text that was found of a part, or nothing; it lives until new ones are kept.
  [[nodiscard]] std::string_view text(std::size_t part) const {
    return part < count_ ? parts_[part].text : std::string_view();
  }

  // Where the new text of a part stands in what is being written.
  void note_new(std::size_t part, std::size_t start, std::size_t size);
  // Keeps the new texts of the record that was looked for last, which must have been decoded
  // without a note.  Throws std::bad_alloc.
  void keep_new(std::string_view written);

  // The fixed section, and the position of the time in it.
  [[nodiscard]] const Plan &fixed_section() const { return fixed_section_; }
  [[nodiscard]] std::size_t time() const { return time_; }

 private:
  struct Part {
    std::uint32_t kind;
    std::string_view bytes;  // none where the text follows from more, or hardly comes again
    std::string_view text;
    std::size_t new_start;  // where its new text stands
    std::size_t new_size;   // 0 where there is none
  };
  // Records have a few blockettes each; what stands after so many is always new.
  static constexpr std::size_t kMost = 16;
  // A few hundred numbers of samples, and as many corrections of the time.
  static constexpr std::size_t kMostTexts = 4096;

  bool find(std::uint32_t kind, std::string_view bytes);
  bool find_chained(const SDBlk &record, const SDBlk &chained);

  const Plan &fixed_section_;
  std::size_t time_ = 0;
  // By definition: the bytes of a data blockette that a text follows from, or 0.
  std::array<std::uint8_t, SEED_BLKDEFS_COUNT> bytes_ = {};
  Repeats repeats_ = Repeats(kMostTexts);
  std::array<Part, kMost> parts_ = {};
  std::size_t count_ = 0;
};

}  // namespace tarvik

#endif  // VIEWS_RECORD_PARTS_H_
