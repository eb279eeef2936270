#include "python/reader.h"

#include <new>
#include <utility>

#include "views/plan.h"

namespace tarvik {
namespace {

// Blocks and bytes that are read without the interpreter's lock at a time.
constexpr std::size_t kBlocksAtATime = 64;
constexpr std::size_t kBytesAtATime = std::size_t{1} << 17;

constexpr char kNoMemory[] = "memory ran out";

}  // namespace

// ---- opening ----

OpenVolume::OpenVolume(const Material &material, const SDBlkWholeOptions &options)
    : material_(material) {
  try {
    if (material_.strict) {
      open_strictly();
    } else {
      open_whole(options);
    }
  } catch (const std::bad_alloc &) {
    fail(kNoMemory, {});
  }
}

OpenVolume::~OpenVolume() {
  guard_.release();
  sdblk_closevol(volume_);
}

void OpenVolume::fail(std::string text, std::vector<std::string> messages) const {
  throw ReadError{std::move(text), {}, std::move(messages), material_.path};
}

void OpenVolume::open_whole(const SDBlkWholeOptions &options) {
  Log log;
  if (material_.bytes == nullptr) {
    const Source source = {material_.path, material_.path, false};
    if (!input_.open(source, material_.record_length, options)) fail(input_.error(), log.lines());
    return;
  }
  volume_ =
      sdblk_open_whole_buffer(material_.bytes, material_.size, material_.record_length, &options);
  if (volume_ == nullptr) fail("the buffer cannot be opened", log.lines());
}

void OpenVolume::open_strictly() {
  Log log;
  const bool is_file = material_.bytes == nullptr;
  try {
    volume_ = is_file ? sdblk_new(material_.path.c_str(), nullptr, 0, material_.record_length)
                      : sdblk_open_buffer(material_.bytes, material_.size, material_.record_length);
  } catch (const Died &) {
  }
  if (volume_ == nullptr) fail("the volume cannot be opened", log.lines());
  if (is_file) guard_.guard(volume_->image, volume_->image_size);
}

void OpenVolume::check_unchanged() {
  if (input_.volume() != nullptr && input_.changed()) fail(input_.error(), {});
  if (guard_.was_hit()) fail("changed while it was read", {});
}

// ---- reading ----

Reader::Reader(const Material &material)
    : material_(material),
      volume_(std::make_unique<OpenVolume>(
          material, SDBlkWholeOptions{take_finding, this, SDBLK_KEEP_NUMBERS})) {}

void Reader::close() {
  if (volume_ == nullptr) return;
  counts_ = counts();
  ended_ = true;
  sdblk_free(block_);
  block_ = nullptr;
  definitions_.clear();
  volume_.reset();
}

SDBlkWholeCounts Reader::counts() const {
  if (volume_ == nullptr) return counts_;
  SDBlkWholeCounts counts = sdblk_whole_counts(volume_->get());
  counts.blocks = blocks_;
  return counts;
}

void Reader::take_finding(void *reader, const SDBlkFinding *finding) {
  std::optional<std::string> field;
  if (finding->field != nullptr) field = finding->field;
  static_cast<Reader *>(reader)->findings_.push_back({finding->cause, finding->offset,
                                                      finding->length, finding->block,
                                                      std::move(field), finding->text});
}

void Reader::fail(Log *log, std::string text, std::int64_t offset) {
  ended_ = true;
  throw ReadError{std::move(text), offset, log->lines(), material_.path};
}

// A blockette of length 0 stands still, whatever its type.
bool stands_still(const SDBlk &block) {
  return block.data_ptr == nullptr && block.blockette_length == 0;
}

// Whether a block is the one that references to a code lead to.
bool Reader::defines(const SDBlk &block) const {
  if (block.blkdef == nullptr) return false;
  const std::int32_t count = block.blkdef->nfields;
  const SDBlkFieldDef *fields = block.blkdef->fields;
  for (std::int32_t i = 0; i < count; ++i) {
    if (fields[i].kind != SDBLK_ABBR_KEY) continue;
    const SDBlkEntry *entry = sdblk_entry_at(block.contents, fields, i);
    if (entry == nullptr) return false;
    const SDBlkVol *vol = volume_->get();
    return vol->whole == nullptr ||
           sdblk_definition_number(vol, entry->definition, 0) == sdblk_block_number(&block);
  }
  return false;
}

// nullptr at the end of the volume.
BlockPtr Reader::take_block(Log *log) {
  SDBlkVol *vol = volume_->get();
  if (stuck_) fail(log, "a blockette of length 0 cannot be passed", vol->offset);
  const int result = sdblk_parseblk(vol, &block_);
  if (result == SDBLK_EOF) {
    ended_ = true;
    volume_->check_unchanged();
    return nullptr;
  }
  if (result < 0) fail(log, material_.strict ? "cannot read on" : kNoMemory, vol->offset);
  if (sdblk_unstuffblk(block_) < 0) {
    fail(log, material_.strict ? "a block cannot be decoded" : kNoMemory, block_->file_offset);
  }
  stuck_ = stands_still(*block_);
  ++blocks_;
  letters_.count(*block_);
  BlockPtr block = Block::copy(*block_, {&definitions_, &scratch_});
  if (defines(*block_)) definitions_[block->head().number] = block;
  return block;
}

void Reader::read_some(Log *log, std::deque<BlockPtr> *queue) {
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < kBlocksAtATime && bytes < kBytesAtATime; ++i) {
    BlockPtr block = take_block(log);
    if (block == nullptr) return;
    bytes += block->raw().size();
    queue->push_back(std::move(block));
  }
}

void Reader::read(std::deque<BlockPtr> *queue) {
  if (ended_) return;
  try {
    Log log;
    try {
      read_some(&log, queue);
    } catch (const Died &) {
      fail(&log, "cannot read on", volume_->get()->offset);
    }
    for (std::string &line : log.lines()) messages_.push_back(std::move(line));
  } catch (const std::bad_alloc &) {
    ended_ = true;
    throw ReadError{kNoMemory, volume_->get()->offset, {}, material_.path};
  }
}

}  // namespace tarvik
