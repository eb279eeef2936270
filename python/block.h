// Blocks that own all they hold: sdblk.Block.
#ifndef PYTHON_BLOCK_H_
#define PYTHON_BLOCK_H_

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "seed/whole.h"
#include "views/lines.h"

namespace tarvik {

class Block;
using BlockPtr = std::shared_ptr<Block>;
using Definitions = std::unordered_map<std::int64_t, BlockPtr>;  // by block number

// One control blockette, data record, or data blockette of a record.
class Block {
 public:
  // What stands beside the fields; offsets and lengths in bytes.
  struct Head {
    std::int64_t number;  // from 0; of a data blockette its record's
    std::int64_t record_offset;
    std::int64_t offset;  // from the start of the volume
    std::int64_t length;
    std::int32_t type;
    std::int32_t sequence;  // below 0: none
    char record_type;
    bool is_data;  // a data record, or a blockette of one
    bool big_endian;
  };

  struct Context {
    const Definitions *definitions;  // that codes can refer to
    TextBuffer *scratch;
  };

  // Copies a block that was decoded, with its chain.  Needs no Python.  Throws std::bad_alloc.
  static BlockPtr copy(const SDBlk &block, const Context &context);

  // For pickle.
  static BlockPtr from_state(const pybind11::tuple &state);
  [[nodiscard]] pybind11::tuple state() const;

  [[nodiscard]] const Head &head() const { return head_; }
  // Of a type that the catalogue does not have, nullptr.
  [[nodiscard]] const SDBlkDef *definition() const { return definition_; }
  [[nodiscard]] std::string_view raw() const {
    return std::string_view(*bytes_).substr(raw_begin_, raw_size_);
  }
  [[nodiscard]] const std::vector<BlockPtr> &chain() const { return chain_; }

  // Made when they are asked for first.
  const pybind11::dict &fields();
  const pybind11::dict &refs();

  // The block that the code in a field refers to, None, or of an array a list of them.
  pybind11::object ref(const std::string &path);

 private:
  Block() = default;
  // bytes are those of the control blockette or of the whole record.
  static BlockPtr make(const SDBlk &block, std::shared_ptr<const std::string> bytes,
                       const Context &context);
  void unpack();
  pybind11::object defining(const pybind11::handle &number) const;

  Head head_ = {};
  const SDBlkDef *definition_ = nullptr;
  std::shared_ptr<const std::string> bytes_;  // a record and its chain share theirs
  std::size_t raw_begin_ = 0;
  std::size_t raw_size_ = 0;
  std::string packed_;
  std::vector<BlockPtr> chain_;
  std::vector<BlockPtr> definitions_;  // that its fields refer to
  std::optional<pybind11::dict> fields_;
  std::optional<pybind11::dict> refs_;
};

}  // namespace tarvik

#endif  // PYTHON_BLOCK_H_
