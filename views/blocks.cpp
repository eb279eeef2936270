#include "views/blocks.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

#include "support/line.h"
#include "views/counts.h"
#include "views/fields.h"
#include "views/json.h"
#include "views/record_parts.h"
#include "views/repeats.h"
#include "views/whole_view.h"

namespace tarvik {
namespace {

constexpr std::size_t kRawRecordBytes = 48;
constexpr std::size_t kRawChainedBytes = 64;

// So many of a volume's blockettes are kept for when they come again.
constexpr std::size_t kMostBlockettes = 1024;

// Room for the members of a line before its fields, but for the start.
constexpr std::size_t kHeadRoom = 256;

char *put_member(char *out, std::string_view key, std::int64_t value) {
  return put_integer(put_text(out, key), value);
}

std::string_view raw_bytes(const SDBlk &block) {
  std::int64_t size = 0;
  const char *bytes = sdblk_raw(&block, &size);
  return {bytes, static_cast<std::size_t>(size)};
}

// Which blocks are wanted.
class Choice {
 public:
  explicit Choice(const BlocksOptions &options) : options_(options) {}

  [[nodiscard]] bool takes(const SDBlk &block) const {
    return takes_letter(block.record_type) && takes_type(block);
  }

 private:
  [[nodiscard]] bool takes_letter(char letter) const {
    return options_.types.empty() || options_.types.find(letter) != std::string::npos;
  }
  // A data record, when any of its blockettes is.
  [[nodiscard]] bool takes_type(const SDBlk &block) const {
    const std::vector<std::int32_t> &types = options_.blockettes;
    if (types.empty()) return true;
    for (const SDBlk *b = &block; b != nullptr; b = b->next) {
      if (std::find(types.begin(), types.end(), b->blockette_type) != types.end()) return true;
    }
    return false;
  }

  const BlocksOptions &options_;
};

class BlocksView : public WholeView {
 public:
  BlocksView(const ViewOptions &options, const BlocksOptions &blocks)
      : WholeView(options, SDBLK_KEEP_NUMBERS), blocks_(blocks), choice_(blocks_) {}

 private:
  void begin(const Input &input) override;
  void before_block(const SDBlkFinding &finding) override;
  [[nodiscard]] bool decodes(SDBlk *block) override;
  void block(const SDBlk &block) override;
  void end(const SDBlkWholeCounts &counts) override;
  [[nodiscard]] bool wants_notes() const override { return true; }

  void put_number(std::string_view key, std::int64_t value) {
    char *at = out()->reserve(key.size() + kIntegerRoom);
    out()->commit(put_member(at, key, value));
  }
  [[nodiscard]] const Plan &plan_of(const SDBlk &block) const {
    return plans_[block.blkdef - seed_blkdefs];
  }
  [[nodiscard]] bool defines(const SDBlk &block) const;
  [[nodiscard]] bool has_notes() const { return notes_begin() != notes_end(); }
  // What was put since a size of the buffer.
  [[nodiscard]] std::string_view text_since(std::size_t start) {
    return out()->text().substr(start);
  }
  void put_content(const SDBlk &block);
  void put_hex(const SDBlk &block, std::size_t most);
  char *put_start(const std::string &start, const SDBlk &block);
  void put_blockette(const SDBlk &block);
  void put_own_members(const SDBlk &block);
  void put_record(const SDBlk &record);
  void put_fixed_section(const SDBlk &record);
  template <typename Write>
  void put_part(std::size_t part, Write write);
  void put_start_time();
  void put_chained(const SDBlk &record, const SDBlk &chained);

  BlocksOptions blocks_;
  Choice choice_;
  BlockCounts counts_;
  const Plan *plans_ = plans();
  // The start of a line, the same in all of a file: {"kind":K,"file":F,"block":
  std::string blockette_start_;
  std::string record_start_;
  // What follows from nothing but a blockette's bytes and the codes that are defined; and what is
  // kept for the present one, or nothing.
  Repeats repeats_ = Repeats(kMostBlockettes);
  std::string_view repeated_;
  // The same of data records, and the start time of the present one.
  RecordParts parts_;
  double start_ = 0;
  bool decoded_ = true;
};

void BlocksView::begin(const Input &input) {
  counts_ = {};
  repeats_.clear();
  parts_.clear();
  blockette_start_ = R"({"kind":"blockette","file":)" + file() + R"(,"block":)";
  record_start_ = R"({"kind":"record","file":)" + file() + R"(,"block":)";
  out()->put(R"({"kind":"volume","file":)");
  out()->put(file());
  out()->put(R"(,"schema":"sdblk-blocks/1")");
  put_number(R"(,"bytes":)", input.size());
  out()->put('}');
  end_line();
}

void BlocksView::before_block(const SDBlkFinding &finding) {
  put_finding(out(), file(), finding);
  end_line();
}

// ,"name":N,"fields":{...},"refs":{...}
void BlocksView::put_content(const SDBlk &block) {
  if (block.blkdef == nullptr) {
    out()->put(R"(,"name":null,"fields":null)");
    return;
  }
  const Plan &plan = plan_of(block);
  char *at = out()->reserve(plan.name.size() + 32);
  at = put_text(put_text(at, R"(,"name":)"), plan.name);
  out()->commit(put_text(at, R"(,"fields":)"));
  put_fields(out(), block, plan);
  put_references(out(), block, plan);
}

// ...N,"sequence":S,"record_type":L after the start, in the room of the members before the fields.
char *BlocksView::put_start(const std::string &start, const SDBlk &block) {
  char *at = put_text(out()->reserve(start.size() + kHeadRoom), start);
  at = put_integer(at, sdblk_block_number(&block));
  at = put_text(at, R"(,"sequence":)");
  at = block.logical_sequence < 0 ? put_text(at, "null") : put_integer(at, block.logical_sequence);
  at = put_text(at, R"(,"record_type":")");
  return put_char(put_char(at, block.record_type), '"');
}

void BlocksView::put_hex(const SDBlk &block, std::size_t most) {
  const std::string_view bytes = raw_bytes(block).substr(0, most);
  char *at = out()->reserve(16 + 2 * bytes.size() + kHexSurplus);
  at = put_text(at, R"(,"raw":")");
  out()->commit(put_char(tarvik::put_hex(at, bytes.data(), bytes.size()), '"'));
}

// Whether a block, or one of a data record's chain, defines a code, so that others may refer to it
// from here on.
bool BlocksView::defines(const SDBlk &block) const {
  for (const SDBlk *b = &block; b != nullptr; b = b->next) {
    if (b->blkdef != nullptr && plan_of(*b).defines) return true;
  }
  return false;
}

// A blockette whose bytes came before, without a note, and define nothing is the same again; so is
// a data record, part by part, but for its time.
bool BlocksView::decodes(SDBlk *block) {
  if (!is_data_record(*block)) {
    repeated_ = repeats_.find(0, raw_bytes(*block));
    return decoded_ = repeated_.empty();
  }
  const int chained = sdblk_chain(block, &start_);
  if (chained < 0) throw std::bad_alloc();
  return decoded_ = !parts_.find(*block) || chained == 0;
}

// ,"length":L,"type":T,"name":N,"fields":{...},"refs":{...}
void BlocksView::put_own_members(const SDBlk &block) {
  if (!repeated_.empty()) {
    out()->put(repeated_);
    return;
  }
  const std::size_t start = out()->size();
  char *at = out()->reserve(kHeadRoom);
  at = put_member(at, R"(,"length":)", block.blockette_length);
  out()->commit(put_member(at, R"(,"type":)", block.blockette_type));
  put_content(block);
  if (has_notes() || defines(block)) return;
  repeats_.keep(0, raw_bytes(block), text_since(start));
}

void BlocksView::put_blockette(const SDBlk &block) {
  char *at = put_start(blockette_start_, block);
  at = put_member(at, R"(,"record_offset":)", block.record_offset);
  out()->commit(put_member(at, R"(,"offset":)", block.file_offset));
  put_own_members(block);
  if (blocks_.raw) {
    out()->put(R"(,"raw":)");
    put_json_text(out(), raw_bytes(block));
  }
  out()->put('}');
}

// A part of the line of the present record, as it was written before, or as write writes it.
template <typename Write>
void BlocksView::put_part(std::size_t part, Write write) {
  const std::string_view text = parts_.text(part);
  if (!text.empty()) {
    out()->put(text);
    return;
  }
  const std::size_t start = out()->size();
  write();
  parts_.note_new(part, start, out()->size() - start);
}

// ,"time":T
void BlocksView::put_start_time() {
  char *at = out()->reserve(MemberKey::kRoom + kTimeRoom);
  at = parts_.fixed_section().fields[parts_.time()].key.put(at);
  at = start_ == SDBLK_NO_TIME ? put_text(at, "null") : put_json_time(at, start_);
  out()->commit(at);
}

// {...},"blockettes":[
void BlocksView::put_fixed_section(const SDBlk &record) {
  const Plan &plan = parts_.fixed_section();
  const std::size_t time = parts_.time();
  put_part(RecordParts::kBeforeTime, [&] { put_members(out(), record, plan, 0, time); });
  put_start_time();
  put_part(RecordParts::kAfterTime, [&] {
    put_members(out(), record, plan, time + 1, plan.fields.size());
    out()->put(R"(},"blockettes":[)");
  });
}

void BlocksView::put_chained(const SDBlk &record, const SDBlk &chained) {
  char *at = out()->reserve(kHeadRoom);
  at = put_member(at, R"({"type":)", chained.blockette_type);
  out()->commit(put_member(at, R"(,"offset":)", chained.file_offset - record.file_offset));
  put_content(chained);
}

void BlocksView::put_record(const SDBlk &record) {
  char *at = put_start(record_start_, record);
  at = put_member(at, R"(,"offset":)", record.file_offset);
  at = put_member(at, R"(,"length":)", record.blockette_length);
  at = put_text(at, record.big_endian != 0 ? R"(,"byte_order":"big","fields":)"
                                           : R"(,"byte_order":"little","fields":)");
  out()->commit(at);
  put_fixed_section(record);
  std::size_t part = RecordParts::kChain;
  for (const SDBlk *chained = record.next; chained != nullptr; chained = chained->next) {
    if (chained != record.next) out()->put(',');
    put_part(part++, [&] { put_chained(record, *chained); });
    if (blocks_.raw) put_hex(*chained, kRawChainedBytes);
    out()->put('}');
  }
  out()->put(']');
  if (blocks_.raw) put_hex(record, kRawRecordBytes);
  out()->put('}');
  if (decoded_ && !has_notes()) parts_.keep_new(out()->text());
}

void BlocksView::block(const SDBlk &block) {
  counts_.count(block);
  if (decoded_ && defines(block)) repeats_.clear();
  if (!choice_.takes(block)) return;
  if (is_data_record(block)) {
    put_record(block);
  } else {
    put_blockette(block);
  }
  end_line();
  for (const Note *note = notes_begin(); note != notes_end(); ++note) {
    put_finding(out(), file(), note->finding());
    end_line();
  }
}

void BlocksView::end(const SDBlkWholeCounts &counts) {
  out()->put(R"({"kind":"end","file":)");
  out()->put(file());
  put_number(R"(,"records":)", counts.records);
  put_number(R"(,"blocks":)", counts.blocks);
  out()->put(R"(,"counts":)");
  counts_.put(out());
  put_number(R"(,"sequence_breaks":)", counts.sequence_breaks);
  put_number(R"(,"padding_bytes":)", counts.padding_bytes);
  put_number(R"(,"skipped_bytes":)", counts.skipped_bytes);
  std::int64_t notes = 0;
  for (int cause = SDBLK_NOTE_LENGTH; cause < SDBLK_CAUSES; ++cause) {
    notes += counts.findings[cause];
  }
  put_number(R"(,"notes":)", notes);
  out()->put('}');
  end_line();
}

}  // namespace

std::unique_ptr<View> make_blocks_view(const ViewOptions &options, const BlocksOptions &blocks) {
  return std::make_unique<BlocksView>(options, blocks);
}

}  // namespace tarvik
