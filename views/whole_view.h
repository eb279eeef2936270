// The pass over a file that all views share: it is read whole, block by block.
#ifndef VIEWS_WHOLE_VIEW_H_
#define VIEWS_WHOLE_VIEW_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "seed/whole.h"
#include "views/input.h"
#include "views/view.h"

namespace tarvik {

// What a view makes of the pass.  The calls come in the order begin, then findings and blocks in
// the order of the file, then end; of a file that cannot be opened none, and of one that changed
// while it was read no end.
class WholeView : public View {
 public:
  WholeView(const ViewOptions &options, SDBlkKeep keep) : options_(options), keep_(keep) {}
  ~WholeView() override;
  WholeView(const WholeView &) = delete;
  WholeView &operator=(const WholeView &) = delete;

  Outcome read(const Source &source, LineBuffer *out) final;

 protected:
  virtual void begin(const Input &input) = 0;
  // A skip, or a note on a record: it stands before the next block.
  virtual void before_block(const SDBlkFinding &finding) = 0;
  // Whether a block's fields are wanted.  One that is not decoded brings no notes; its chain may be
  // hung on it here.
  [[nodiscard]] virtual bool decodes(SDBlk * /*block*/) { return true; }
  // A block, decoded where decodes says so.  Its notes are in notes().
  virtual void block(const SDBlk &block) = 0;
  virtual void end(const SDBlkWholeCounts &counts) = 0;

  // A note on a block, with texts of its own.
  class Note {
   public:
    void keep(const SDBlkFinding &finding);
    // What it points to lives as long as the note stays as it is.
    [[nodiscard]] SDBlkFinding finding() const;

   private:
    SDBlkFinding finding_ = {};
    bool has_field_ = false;
    std::string field_;
    std::string text_;
  };
  // Whether notes are kept for block().
  [[nodiscard]] virtual bool wants_notes() const { return false; }
  [[nodiscard]] const Note *notes_begin() const { return notes_.data(); }
  [[nodiscard]] const Note *notes_end() const { return notes_.data() + note_count_; }

  [[nodiscard]] const ViewOptions &options() const { return options_; }
  [[nodiscard]] LineBuffer *out() const { return out_; }
  [[nodiscard]] bool is_csv() const { return options_.csv; }
  [[nodiscard]] bool is_spooled() const { return spooled_; }
  // The file's name as a JSON text, or as one of comma-separated values.
  [[nodiscard]] const std::string &file() const { return file_; }
  // Ends a line; a failure ends the pass.
  bool end_line() { return good_ = out_->end_line() && good_; }

 private:
  static void take_finding(void *view, const SDBlkFinding *finding);
  void keep_note(const SDBlkFinding &finding);
  void decode();
  bool pass();
  Outcome fail();

  ViewOptions options_;
  SDBlkKeep keep_;
  Input input_;
  SDBlk *block_ = nullptr;  // kept from file to file
  LineBuffer *out_ = nullptr;
  std::string file_;
  bool spooled_ = false;
  std::atomic<std::int64_t> *position_ = nullptr;
  std::vector<Note> notes_;  // of the block that is being decoded; kept from block to block
  std::size_t note_count_ = 0;
  bool decoding_ = false;
  bool good_ = true;
};

inline bool is_data_record(const SDBlk &block) {
  return block.blockette_type == SDBLK_DATA_RECORD && block.data_ptr != nullptr;
}

// Writes a skip or a note as a JSON object.
void put_finding(LineBuffer *out, const std::string &file, const SDBlkFinding &finding);

}  // namespace tarvik

#endif  // VIEWS_WHOLE_VIEW_H_
