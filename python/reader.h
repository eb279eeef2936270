// Reads a volume into blocks that own all they hold.  Nothing here needs the interpreter.
#ifndef PYTHON_READER_H_
#define PYTHON_READER_H_

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "python/block.h"
#include "python/log.h"
#include "seed/whole.h"
#include "views/counts.h"
#include "views/input.h"
#include "views/mapping_guard.h"

namespace tarvik {

// What is read: a file, or bytes in memory that stay as long as the reader.
struct Material {
  std::string path;             // of a file
  const void *bytes = nullptr;  // else
  std::int64_t size = 0;
  std::int32_t record_length = 0;  // in force at first, bytes
  bool strict = false;
};

// A skip or a note; see SDBlkFinding.
struct Finding {
  SDBlkCause cause;
  std::int64_t offset;
  std::int64_t length;
  std::int64_t block;
  std::optional<std::string> field;
  std::string text;
};

// An open volume.  Its functions throw ReadError.
class OpenVolume {
 public:
  OpenVolume(const Material &material, const SDBlkWholeOptions &options);
  ~OpenVolume();
  OpenVolume(const OpenVolume &) = delete;
  OpenVolume &operator=(const OpenVolume &) = delete;

  [[nodiscard]] SDBlkVol *get() const { return volume_ != nullptr ? volume_ : input_.volume(); }
  // To be called at the end of the volume: throws when the file changed meanwhile.
  void check_unchanged();

 private:
  void open_whole(const SDBlkWholeOptions &options);
  void open_strictly();
  [[noreturn]] void fail(std::string text, std::vector<std::string> messages) const;

  Material material_;
  Input input_;                 // a file that is read whole
  SDBlkVol *volume_ = nullptr;  // any other volume
  MappingGuard guard_;
};

class Reader {
 public:
  explicit Reader(const Material &material);
  ~Reader() { close(); }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  // Reads some blocks and puts them at the end of a queue; none at the end of the volume.  A
  // ReadError can leave blocks that were read before it in the queue.
  void read(std::deque<BlockPtr> *queue);
  // Closes the volume; what was found and counted stays.
  void close();

  [[nodiscard]] const std::vector<Finding> &findings() const { return findings_; }
  [[nodiscard]] const BlockCounts &letters() const { return letters_; }
  [[nodiscard]] SDBlkWholeCounts counts() const;
  // What the library said, strict reading's warnings for one.
  [[nodiscard]] const std::vector<std::string> &messages() const { return messages_; }

 private:
  static void take_finding(void *reader, const SDBlkFinding *finding);
  void read_some(Log *log, std::deque<BlockPtr> *queue);
  BlockPtr take_block(Log *log);
  [[nodiscard]] bool defines(const SDBlk &block) const;
  [[noreturn]] void fail(Log *log, std::string text, std::int64_t offset);

  Material material_;
  std::vector<Finding> findings_;
  std::vector<std::string> messages_;
  BlockCounts letters_;
  Definitions definitions_;
  TextBuffer scratch_;
  SDBlkWholeCounts counts_ = {};  // of a closed volume
  std::int64_t blocks_ = 0;
  std::unique_ptr<OpenVolume> volume_;  // null when closed
  SDBlk *block_ = nullptr;
  bool ended_ = false;
  bool stuck_ = false;  // strict reading cannot leave a blockette of length 0
};

}  // namespace tarvik

#endif  // PYTHON_READER_H_
