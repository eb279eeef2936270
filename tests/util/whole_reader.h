// Reading bytes whole, as a test sees it: each block, and before it, as short lines, what was told.
#ifndef TESTS_UTIL_WHOLE_READER_H_
#define TESTS_UTIL_WHOLE_READER_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "seed/whole.h"

using Lines = std::vector<std::string>;

// A finding as a line: "padding 100+28" (a skip of 28 bytes from byte 100 on), "length @512" (a
// note on the record there), "value @520 block 3 sta" (a note on a field of block 3).
inline std::string line_of(const SDBlkFinding &finding) {
  std::string line = sdblk_cause_name(finding.cause);
  if (finding.cause <= SDBLK_SKIP_PREFIX) {
    return line + " " + std::to_string(finding.offset) + "+" + std::to_string(finding.length);
  }
  line += " @" + std::to_string(finding.offset);
  if (finding.block >= 0) line += " block " + std::to_string(finding.block);
  if (finding.field != nullptr) line += std::string(" ") + finding.field;
  return line;
}

// A block as a line: "block 3: V 10 @8".
inline std::string line_of(const SDBlk &block) {
  return "block " + std::to_string(sdblk_block_number(&block)) + ": " + block.record_type + " " +
         std::to_string(block.blockette_type) + " @" + std::to_string(block.file_offset);
}

// Reads a volume block by block.  Its image has exactly the bytes given, so that the sanitizers see
// a step past them.
class WholeReader {
 public:
  explicit WholeReader(std::string_view bytes, std::int32_t record_length = 0,
                       SDBlkKeep keep = SDBLK_KEEP_FIRST)
      : image_(bytes.begin(), bytes.end()) {
    const SDBlkWholeOptions options = {take, this, keep};
    vol_ = sdblk_open_whole_buffer(image_.data(), static_cast<std::int64_t>(image_.size()),
                                   record_length, &options);
    if (vol_ == nullptr) throw std::runtime_error("the volume cannot be opened");
  }
  ~WholeReader() {
    sdblk_free(block_);
    sdblk_closevol(vol_);
  }
  WholeReader(const WholeReader &) = delete;
  WholeReader &operator=(const WholeReader &) = delete;

  // The next block, not decoded; NULL at the end.  It lives until the next call.
  SDBlk *next() {
    const int result = sdblk_parseblk(vol_, &block_);
    if (result < 0) throw std::runtime_error("the volume cannot be read");
    return result == SDBLK_EOF ? nullptr : block_;
  }
  // The next block, decoded; NULL at the end.
  SDBlk *decode_next() {
    SDBlk *block = next();
    if (block != nullptr) decode(block);
    return block;
  }
  static void decode(SDBlk *block) {
    if (sdblk_unstuffblk(block) != 0) throw std::runtime_error("the block cannot be decoded");
  }
  // Reads to the end.
  WholeReader &read_all() {
    while (SDBlk *block = next()) {
      lines_.push_back(line_of(*block));
      decode(block);
    }
    return *this;
  }

  // What was told so far, with the blocks of read_all in between.
  [[nodiscard]] const Lines &lines() const { return lines_; }
  // The sentence for people of the last finding.
  [[nodiscard]] const std::string &text() const { return text_; }
  [[nodiscard]] SDBlkVol *vol() const { return vol_; }
  [[nodiscard]] SDBlkWholeCounts counts() const { return sdblk_whole_counts(vol_); }

 private:
  static void take(void *context, const SDBlkFinding *finding) {
    auto *reader = static_cast<WholeReader *>(context);
    reader->lines_.push_back(line_of(*finding));
    reader->text_ = finding->text;
  }

  std::vector<char> image_;
  Lines lines_;
  std::string text_;
  SDBlkVol *vol_ = nullptr;
  SDBlk *block_ = nullptr;
};

// Everything that a volume hands out, in order.
inline Lines lines_of(std::string_view bytes, std::int32_t record_length = 0) {
  return WholeReader(bytes, record_length).read_all().lines();
}

#endif  // TESTS_UTIL_WHOLE_READER_H_
