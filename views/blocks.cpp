#include "views/blocks.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "support/line.h"
#include "views/counts.h"
#include "views/fields.h"
#include "views/json.h"
#include "views/whole_view.h"

namespace tarvik {
namespace {

constexpr std::int64_t kRawRecordBytes = 48;
constexpr std::int64_t kRawChainedBytes = 64;

// Room for the members of a line before its fields, but for the start.
constexpr std::size_t kHeadRoom = 256;

char *put_member(char *out, std::string_view key, std::int64_t value) {
  return put_integer(put_text(out, key), value);
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
  void put_content(const SDBlk &block);
  void put_hex(const SDBlk &block, std::int64_t most);
  char *put_start(const std::string &start, const SDBlk &block);
  void put_blockette(const SDBlk &block);
  void put_record(const SDBlk &record);
  void put_chained(const SDBlk &record, const SDBlk &chained);

  BlocksOptions blocks_;
  Choice choice_;
  BlockCounts counts_;
  const Plan *plans_ = plans();
  // The start of a line, the same in all of a file: {"kind":K,"file":F,"block":
  std::string blockette_start_;
  std::string record_start_;
};

void BlocksView::begin(const Input &input) {
  counts_ = {};
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

void BlocksView::put_hex(const SDBlk &block, std::int64_t most) {
  std::int64_t size = 0;
  const char *bytes = sdblk_raw(&block, &size);
  const auto count = static_cast<std::size_t>(std::min(size, most));
  char *at = out()->reserve(16 + 2 * count + kHexSurplus);
  at = put_text(at, R"(,"raw":")");
  out()->commit(put_char(tarvik::put_hex(at, bytes, count), '"'));
}

void BlocksView::put_blockette(const SDBlk &block) {
  char *at = put_start(blockette_start_, block);
  at = put_member(at, R"(,"record_offset":)", block.record_offset);
  at = put_member(at, R"(,"offset":)", block.file_offset);
  at = put_member(at, R"(,"length":)", block.blockette_length);
  out()->commit(put_member(at, R"(,"type":)", block.blockette_type));
  put_content(block);
  if (blocks_.raw) {
    std::int64_t size = 0;
    const char *bytes = sdblk_raw(&block, &size);
    out()->put(R"(,"raw":)");
    put_json_text(out(), {bytes, static_cast<std::size_t>(size)});
  }
  out()->put('}');
}

void BlocksView::put_chained(const SDBlk &record, const SDBlk &chained) {
  char *at = out()->reserve(kHeadRoom);
  if (&chained != record.next) at = put_char(at, ',');
  at = put_member(at, R"({"type":)", chained.blockette_type);
  out()->commit(put_member(at, R"(,"offset":)", chained.file_offset - record.file_offset));
  put_content(chained);
  if (blocks_.raw) put_hex(chained, kRawChainedBytes);
  out()->put('}');
}

void BlocksView::put_record(const SDBlk &record) {
  char *at = put_start(record_start_, record);
  at = put_member(at, R"(,"offset":)", record.file_offset);
  at = put_member(at, R"(,"length":)", record.blockette_length);
  at = put_text(at, record.big_endian != 0 ? R"(,"byte_order":"big","fields":)"
                                           : R"(,"byte_order":"little","fields":)");
  out()->commit(at);
  put_fields(out(), record, plan_of(record));
  out()->put(R"(,"blockettes":[)");
  for (const SDBlk *chained = record.next; chained != nullptr; chained = chained->next) {
    put_chained(record, *chained);
  }
  out()->put(']');
  if (blocks_.raw) put_hex(record, kRawRecordBytes);
  out()->put('}');
}

void BlocksView::block(const SDBlk &block) {
  counts_.count(block);
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
