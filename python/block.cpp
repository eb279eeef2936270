#include "python/block.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <utility>

#include "python/packed.h"

namespace py = pybind11;

namespace tarvik {
namespace {

constexpr int kStateVersion = 1;
constexpr std::size_t kStateSize = 15;

bool is_data(const SDBlk &block) { return block.data_ptr != nullptr; }

Block::Head head_of(const SDBlk &block) {
  return {sdblk_block_number(&block), block.record_offset,  block.file_offset,
          block.blockette_length,     block.blockette_type, block.logical_sequence,
          block.record_type,          is_data(block),       block.big_endian != 0};
}

constexpr std::int32_t kNoDefinition = -1;

const SDBlkDef *definition_of(std::int32_t type) {
  const bool known = type >= 0 && type < SEED_BLKDEFS_INDEX_SIZE;
  return known ? seed_blkdefs_index[type] : nullptr;
}

// "stages[2].resps" as its parts; index is -1 for a plain key.
struct Path {
  std::string group;
  py::ssize_t index = -1;
  std::string key;
};

Path parse_path(const std::string &path) {
  const std::size_t open = path.find('[');
  const std::size_t close = path.find("].");
  if (open == std::string::npos || close == std::string::npos || close < open) {
    return {{}, -1, path};
  }
  const std::string digits = path.substr(open + 1, close - open - 1);
  if (digits.empty() || digits.size() > 9 ||
      !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    throw py::key_error(path);
  }
  return {path.substr(0, open), static_cast<py::ssize_t>(std::stol(digits)),
          path.substr(close + 2)};
}

// The blocks of some numbers, each once.
std::vector<BlockPtr> find_all(std::vector<std::int64_t> numbers, const Definitions &definitions) {
  std::vector<BlockPtr> blocks;
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  for (const std::int64_t number : numbers) {
    const auto found = definitions.find(number);
    if (found != definitions.end()) blocks.push_back(found->second);
  }
  return blocks;
}

}  // namespace

BlockPtr Block::make(const SDBlk &block, std::shared_ptr<const std::string> bytes,
                     const Context &context) {
  BlockPtr made(new Block);
  made->head_ = head_of(block);
  made->definition_ = block.blkdef;
  std::vector<std::int64_t> referred;
  context.scratch->clear();
  pack_fields(block, context.scratch, &referred);
  made->packed_ = context.scratch->text();
  if (!referred.empty()) made->definitions_ = find_all(std::move(referred), *context.definitions);
  made->raw_size_ = bytes->size();
  made->bytes_ = std::move(bytes);
  return made;
}

BlockPtr Block::copy(const SDBlk &block, const Context &context) {
  std::int64_t size = 0;
  const char *raw = sdblk_raw(&block, &size);
  const auto bytes = std::make_shared<const std::string>(raw, raw + size);
  BlockPtr made = make(block, bytes, context);
  for (const SDBlk *chained = block.next; chained != nullptr; chained = chained->next) {
    BlockPtr one = make(*chained, bytes, context);
    const char *begin = sdblk_raw(chained, &size);
    one->raw_begin_ = std::min(static_cast<std::size_t>(begin - raw), bytes->size());
    one->raw_size_ = std::min(static_cast<std::size_t>(size), bytes->size() - one->raw_begin_);
    made->chain_.push_back(std::move(one));
  }
  return made;
}

py::tuple Block::state() const {
  return py::make_tuple(
      kStateVersion, head_.number, head_.record_offset, head_.offset, head_.length, head_.type,
      head_.sequence, py::bytes(&head_.record_type, 1), head_.is_data, head_.big_endian,
      definition_ == nullptr ? kNoDefinition : definition_->type,
      py::bytes(raw().data(), raw().size()), py::bytes(packed_), chain_, definitions_);
}

BlockPtr Block::from_state(const py::tuple &state) {
  if (state.size() != kStateSize || state[0].cast<int>() != kStateVersion) {
    throw py::value_error("state of a sdblk.Block of another version");
  }
  BlockPtr made(new Block);
  Head &head = made->head_;
  head.number = state[1].cast<std::int64_t>();
  head.record_offset = state[2].cast<std::int64_t>();
  head.offset = state[3].cast<std::int64_t>();
  head.length = state[4].cast<std::int64_t>();
  head.type = state[5].cast<std::int32_t>();
  head.sequence = state[6].cast<std::int32_t>();
  head.record_type = state[7].cast<std::string>().at(0);
  head.is_data = state[8].cast<bool>();
  head.big_endian = state[9].cast<bool>();
  made->definition_ = definition_of(state[10].cast<std::int32_t>());
  made->bytes_ = std::make_shared<const std::string>(state[11].cast<std::string>());
  made->raw_size_ = made->bytes_->size();
  made->packed_ = state[12].cast<std::string>();
  made->chain_ = state[13].cast<std::vector<BlockPtr>>();
  made->definitions_ = state[14].cast<std::vector<BlockPtr>>();
  return made;
}

void Block::unpack() {
  Unpacked unpacked;
  if (definition_ != nullptr) unpacked = unpack_fields(*definition_, packed_);
  fields_ = std::move(unpacked.fields);
  refs_ = std::move(unpacked.refs);
}

const py::dict &Block::fields() {
  if (!fields_) unpack();
  return *fields_;
}

const py::dict &Block::refs() {
  if (!refs_) unpack();
  return *refs_;
}

py::object Block::defining(const py::handle &number) const {
  if (number.is_none()) return py::none();
  const auto wanted = number.cast<std::int64_t>();
  const auto found = std::find_if(definitions_.begin(), definitions_.end(),
                                  [&](const auto &one) { return one->head().number == wanted; });
  return found == definitions_.end() ? py::object(py::none()) : py::cast(*found);
}

py::object Block::ref(const std::string &path) {
  const Path parts = parse_path(path);
  py::dict fields = this->fields();
  py::dict references = refs();
  if (parts.index >= 0) {
    if (!fields.contains(parts.group.c_str())) throw py::key_error(path);
    const py::list group = fields[parts.group.c_str()].cast<py::list>();
    fields = group[static_cast<std::size_t>(parts.index)].cast<py::dict>();
    references = fields.contains("refs") ? fields["refs"].cast<py::dict>() : py::dict();
  }
  const char *key = parts.key.c_str();
  if (!fields.contains(key)) throw py::key_error(path);
  if (!references.contains(key)) return py::none();
  const py::object numbers = references[key];
  if (!py::isinstance<py::list>(numbers)) return defining(numbers);
  py::list blocks;
  for (const py::handle number : numbers) blocks.append(defining(number));
  return blocks;
}

}  // namespace tarvik
