#include "views/whole_view.h"

#include <new>

#include "support/line.h"
#include "views/csv.h"
#include "views/json.h"

namespace tarvik {
namespace {

bool is_damaged(const SDBlkWholeCounts &counts) {
  return counts.findings[SDBLK_SKIP_GARBAGE] > 0 || counts.findings[SDBLK_SKIP_PREFIX] > 0 ||
         counts.findings[SDBLK_NOTE_CUT] > 0;
}

}  // namespace

WholeView::~WholeView() { sdblk_free(block_); }

void WholeView::take_finding(void *view, const SDBlkFinding *finding) {
  auto *self = static_cast<WholeView *>(view);
  if (!self->decoding_) {
    self->before_block(*finding);
  } else if (self->wants_notes()) {
    self->keep_note(*finding);
  }
}

void WholeView::keep_note(const SDBlkFinding &finding) {
  if (note_count_ == notes_.size()) notes_.emplace_back();
  notes_[note_count_++].keep(finding);
}

void WholeView::Note::keep(const SDBlkFinding &finding) {
  finding_ = finding;
  has_field_ = finding.field != nullptr;
  field_ = has_field_ ? finding.field : "";
  text_ = finding.text;
}

SDBlkFinding WholeView::Note::finding() const {
  SDBlkFinding finding = finding_;
  finding.field = has_field_ ? field_.c_str() : nullptr;
  finding.text = text_.c_str();
  return finding;
}

void WholeView::decode() {
  decoding_ = true;
  const int decoded = sdblk_unstuffblk(block_);
  decoding_ = false;
  if (decoded < 0) throw std::bad_alloc();
}

// False when the lines cannot be written.
bool WholeView::pass() {
  int result = 0;
  while (good_ && (result = sdblk_parseblk(input_.volume(), &block_)) >= 0 && result != SDBLK_EOF) {
    if (position_ != nullptr) {
      position_->store(input_.volume()->offset, std::memory_order_relaxed);
    }
    note_count_ = 0;
    if (decodes(block_)) decode();
    block(*block_);
  }
  if (result < 0) throw std::bad_alloc();
  return good_;
}

Outcome WholeView::read(const Source &source, LineBuffer *out) {
  out_ = out;
  good_ = true;
  file_ = options_.csv ? csv_text(source.name) : json_text(source.name);
  spooled_ = source.spooled;
  position_ = source.position;
  if (!input_.open(source, options_.record_length, {take_finding, this, keep_})) return fail();
  begin(input_);
  if (!pass()) return Outcome::unwritten;
  if (input_.changed()) return fail();
  if (position_ != nullptr) position_->store(input_.size(), std::memory_order_relaxed);
  const SDBlkWholeCounts counts = sdblk_whole_counts(input_.volume());
  end(counts);
  if (!good_) return Outcome::unwritten;
  return is_damaged(counts) ? Outcome::damaged : Outcome::read;
}

Outcome WholeView::fail() {
  error_ = input_.error();
  return Outcome::unreadable;
}

void put_finding(LineBuffer *out, const std::string &file, const SDBlkFinding &finding) {
  const bool is_skip = finding.cause <= SDBLK_SKIP_PREFIX;
  const auto put_number = [&](std::string_view key, std::int64_t value) {
    out->put(key);
    out->commit(put_integer(out->reserve(kIntegerRoom), value));
  };
  out->put(is_skip ? R"({"kind":"skip","file":)" : R"({"kind":"note","file":)");
  out->put(file);
  if (is_skip) {
    put_number(R"(,"offset":)", finding.offset);
    put_number(R"(,"length":)", finding.length);
  }
  out->put(R"(,"why":")");
  out->put(sdblk_cause_name(finding.cause));
  out->put('"');
  if (!is_skip) {
    put_number(R"(,"offset":)", finding.offset);
    if (finding.block >= 0) put_number(R"(,"block":)", finding.block);
    if (finding.field != nullptr) {
      out->put(R"(,"field":)");
      put_json_text(out, finding.field);
    }
    out->put(R"(,"text":)");
    put_json_text(out, finding.text);
  }
  out->put('}');
}

}  // namespace tarvik
