/* Whole volumes, blocks and fields for C++17 and newer, without a library of its own.
 *
 *     sdblk::Volume volume = sdblk::Volume::open_whole("old.seed");
 *     for (sdblk::Block block : volume) {
 *       block.decode();
 *       for (sdblk::Field field : block.fields()) std::puts(field.key());
 *     }
 *
 * A Volume releases itself.  A Block and a Field are small values that point into it: a block is
 * that of the volume until the next one is read, a field lives as long as its block is not read
 * over.  sdblk::Copy keeps a block for longer.  What fails throws sdblk::Error, whose failure() says
 * what sdblk_failure does; the register of messages is empty then.  The catalogue, values and threads
 * are those of sdblk.h and whole.h; the texts of a volume are views of bytes that need not be
 * UTF-8. */
#ifndef TARVIK_SEED_SDBLK_HPP_
#define TARVIK_SEED_SDBLK_HPP_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "../seed/whole.h"

namespace sdblk {

/* A failure, with the text that says why. */
class Error : public std::runtime_error {
 public:
  Error(const std::string &text, const SDBlkFailure &failure)
      : std::runtime_error(text), failure_(failure) {}
  /* Its code is 0 for a volume that could not be opened. */
  [[nodiscard]] const SDBlkFailure &failure() const noexcept { return failure_; }

 private:
  SDBlkFailure failure_;
};

namespace detail {

/* The first registered message, without its line end; the register is emptied. */
inline std::string take_message() {
  std::size_t size = 0;
  const char *text = elog_registered(0, &size);
  std::string message = text == nullptr ? "out of memory" : std::string(text, size);
  elog_clear_register(0);
  return message.substr(0, message.find('\n'));
}

[[noreturn]] inline void fail(const SDBlkVol *vol) {
  const SDBlkFailure &failure = *sdblk_failure(vol);
  elog_clear_register(0);
  throw Error(failure.text, failure);
}

/* A range of values that are made from a place and one step on. */
template <typename Iterator>
class Range {
 public:
  Range(Iterator begin, Iterator end) : begin_(begin), end_(end) {}
  [[nodiscard]] Iterator begin() const { return begin_; }
  [[nodiscard]] Iterator end() const { return end_; }

 private:
  Iterator begin_;
  Iterator end_;
};

/* What the standard library asks of an iterator that gives each value once, as a copy. */
template <typename Value>
struct GivesOnce {
  using iterator_category = std::input_iterator_tag;
  using value_type = Value;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = Value;
};

}  // namespace detail

class Block;
class Field;

/* Goes over the fields of a list that are there, in the order of the catalogue. */
class FieldIterator : public detail::GivesOnce<Field> {
 public:
  FieldIterator(const SDBlk *block, const Arr *contents, const SDBlkFieldDef *fields,
                std::int32_t position, std::int32_t end)
      : block_(block), contents_(contents), fields_(fields), position_(position), end_(end) {
    skip_absent();
  }
  Field operator*() const;
  FieldIterator &operator++() {
    ++position_;
    skip_absent();
    return *this;
  }
  bool operator==(const FieldIterator &other) const { return position_ == other.position_; }
  bool operator!=(const FieldIterator &other) const { return position_ != other.position_; }

 private:
  void skip_absent() {
    while (position_ < end_ && sdblk_entry_at(contents_, fields_, position_) == nullptr) {
      ++position_;
    }
  }

  const SDBlk *block_;
  const Arr *contents_;
  const SDBlkFieldDef *fields_;
  std::int32_t position_;
  std::int32_t end_;
};
using Fields = detail::Range<FieldIterator>;

/* A field that is there.  The accessors of its value take the number of an element, 0 for a single
 * value; std::out_of_range and std::logic_error for one that the field does not have. */
class Field {
 public:
  Field(const SDBlk *block, const SDBlkEntry *entry) : block_(block), entry_(entry) {}

  [[nodiscard]] const SDBlkEntry &raw() const { return *entry_; }
  [[nodiscard]] const SDBlkFieldDef &definition() const { return *entry_->def; }
  [[nodiscard]] const char *key() const { return entry_->def->key; }
  [[nodiscard]] std::int32_t kind() const { return entry_->def->kind; }
  /* How many elements; 1 for a single value. */
  [[nodiscard]] std::int32_t size() const { return entry_->count; }

  /* The value of an integer or of a lookup code, or none. */
  [[nodiscard]] std::optional<std::int64_t> integer(std::int32_t element = 0) const {
    check(element);
    switch (kind()) {
      case SDBLK_INT:
      case SDBLK_ABBR_KEY:
        if (!sdblk_has_value(entry_)) return {};
        return sdblk_integer(entry_);
      case SDBLK_INT_ARRAY: return entry_->value.ia[element];
      case SDBLK_REF_ARRAY:
        if (entry_->value.ra[element].code == SDBLK_NO_CODE) return {};
        return entry_->value.ra[element].code;
      default: throw std::logic_error(std::string(key()) + " holds no integer");
    }
  }
  /* That of a real number, or of a time in seconds since 1970-01-01T00:00:00 UTC, or none.  An
   * element of an array without a value is a NaN. */
  [[nodiscard]] std::optional<double> real(std::int32_t element = 0) const {
    check(element);
    if (kind() == SDBLK_DOUBLE_ARRAY) return entry_->value.da[element];
    if (kind() != SDBLK_DOUBLE)
      throw std::logic_error(std::string(key()) + " holds no real number");
    if (!sdblk_has_value(entry_)) return {};
    return entry_->value.d;
  }
  [[nodiscard]] std::string_view text(std::int32_t element = 0) const {
    check(element);
    if (kind() == SDBLK_STRING_ARRAY) return entry_->value.sa[element];
    if (kind() != SDBLK_STRING) throw std::logic_error(std::string(key()) + " holds no text");
    return entry_->value.s;
  }
  /* The fields of a repetition of a group. */
  [[nodiscard]] Fields fields(std::int32_t repetition) const {
    check(repetition);
    if (kind() != SDBLK_GROUP_ARRAY) throw std::logic_error(std::string(key()) + " is no group");
    const SDBlkFieldDef &def = definition();
    const Arr *contents = entry_->value.ea[repetition];
    return {{block_, contents, def.sub, 0, def.nsub},
            {block_, contents, def.sub, def.nsub, def.nsub}};
  }
  /* The abbreviation that an integer or an element refers to, or none. */
  [[nodiscard]] std::optional<Block> reference(std::int32_t element = 0) const;
  /* The bytes as they stand in the block; empty for a group. */
  [[nodiscard]] std::string_view bytes(std::int32_t element = 0) const {
    std::int64_t size = 0;
    const char *first = sdblk_field_bytes(block_, entry_, element, &size);
    return {first == nullptr ? "" : first, static_cast<std::size_t>(size)};
  }

 private:
  void check(std::int32_t element) const {
    if (element < 0 || element >= entry_->count) throw std::out_of_range(key());
  }

  const SDBlk *block_;
  const SDBlkEntry *entry_;
};

inline Field FieldIterator::operator*() const {
  return {block_, sdblk_entry_at(contents_, fields_, position_)};
}

/* Goes over the data blockettes of a record. */
class ChainIterator : public detail::GivesOnce<Block> {
 public:
  explicit ChainIterator(SDBlk *block) : block_(block) {}
  Block operator*() const;
  ChainIterator &operator++() {
    block_ = block_->next;
    return *this;
  }
  bool operator==(const ChainIterator &other) const { return block_ == other.block_; }
  bool operator!=(const ChainIterator &other) const { return block_ != other.block_; }

 private:
  SDBlk *block_;
};
using Chain = detail::Range<ChainIterator>;

/* A control blockette, a data record or a data blockette; not owned. */
class Block {
 public:
  explicit Block(SDBlk *block) : block_(block) {}

  [[nodiscard]] SDBlk &raw() const { return *block_; }
  [[nodiscard]] bool is_data_record() const {
    return block_->blockette_type == SDBLK_DATA_RECORD && block_->data_ptr != nullptr;
  }
  [[nodiscard]] std::int32_t type() const { return block_->blockette_type; }
  [[nodiscard]] std::int64_t number() const { return sdblk_block_number(block_); }
  [[nodiscard]] std::int64_t offset() const { return block_->file_offset; }
  /* The blockette's name, or "unknown blockette". */
  [[nodiscard]] const char *name() const {
    return block_->blkdef == nullptr ? "unknown blockette" : block_->blkdef->name;
  }
  [[nodiscard]] std::string_view bytes() const {
    std::int64_t size = 0;
    const char *first = sdblk_raw(block_, &size);
    return {first == nullptr ? "" : first, static_cast<std::size_t>(size)};
  }

  /* Decodes the fields and the chain; before the next block is read.  Throws Error. */
  void decode() const {
    if (sdblk_unstuffblk(block_) < 0) detail::fail(block_->vol);
  }
  /* The fields that are there, once decoded, in the order of the catalogue. */
  [[nodiscard]] Fields fields() const {
    const SDBlkDef *def = block_->blkdef;
    const SDBlkFieldDef *list = def == nullptr ? nullptr : def->fields;
    const std::int32_t count = def == nullptr ? 0 : def->nfields;
    return {{block_, block_->contents, list, 0, count},
            {block_, block_->contents, list, count, count}};
  }
  /* The field of a key, or none where it is absent. */
  [[nodiscard]] std::optional<Field> field(const char *key) const {
    const auto *entry = static_cast<const SDBlkEntry *>(getarr(block_->contents, key));
    if (entry == nullptr) return {};
    return Field(block_, entry);
  }
  /* The data blockettes of a record, once decoded. */
  [[nodiscard]] Chain chain() const {
    return {ChainIterator(block_->next), ChainIterator(nullptr)};
  }
  /* What a data record says of its samples.  Throws Error for any other block. */
  [[nodiscard]] SDBlkSamples samples() const {
    SDBlkSamples samples = {};
    if (sdblk_samples(block_, &samples) < 0) throw Error(detail::take_message(), {});
    return samples;
  }

 private:
  SDBlk *block_;
};

inline Block ChainIterator::operator*() const { return Block(block_); }

inline std::optional<Block> Field::reference(std::int32_t element) const {
  check(element);
  SDBlk *block = kind() == SDBLK_REF_ARRAY ? entry_->value.ra[element].blk : entry_->ref;
  if (block == nullptr) return {};
  return Block(block);
}

/* A copy of a block that lives on its own, but for its chain and references (see sdblk.h). */
class Copy {
 public:
  /* Throws Error. */
  explicit Copy(const Block &block) : block_(sdblk_copy(&block.raw())) {
    if (block_ == nullptr) throw Error(detail::take_message(), {});
  }
  [[nodiscard]] Block block() const { return Block(block_.get()); }

 private:
  struct Free {
    void operator()(SDBlk *block) const { sdblk_free(block); }
  };
  std::unique_ptr<SDBlk, Free> block_;
};

/* An open volume: one pass over its blocks, by begin and end or by next.  It can be moved; blocks
 * and fields go with it. */
class Volume {
 public:
  /* Takes findings of whole reading; it must not throw. */
  using Report = std::function<void(const SDBlkFinding &)>;
  struct Options {
    std::int32_t record_length = 0; /* the length at first; below 1 means 4096 */
    SDBlkKeep keep = SDBLK_KEEP_FIRST;
  };

  /* Opens a file or bytes, which must outlive the volume.  Throws Error. */
  static Volume open(const char *path, std::int32_t record_length = 0) {
    return Volume(sdblk_new(path, nullptr, 0, record_length), nullptr);
  }
  static Volume open_bytes(std::string_view bytes, std::int32_t record_length = 0) {
    const auto size = static_cast<std::int64_t>(bytes.size());
    return Volume(sdblk_open_buffer(bytes.data(), size, record_length), nullptr);
  }
  /* The same for whole reading. */
  static Volume open_whole(const char *path, const Options &options, Report report = {}) {
    Reporter reporter = make_reporter(std::move(report));
    const SDBlkWholeOptions whole = to_c(options, reporter);
    return Volume(sdblk_open_whole(path, options.record_length, &whole), std::move(reporter));
  }
  static Volume open_whole(const char *path) { return open_whole(path, Options()); }
  static Volume open_whole_bytes(std::string_view bytes, const Options &options,
                                 Report report = {}) {
    Reporter reporter = make_reporter(std::move(report));
    const SDBlkWholeOptions whole = to_c(options, reporter);
    const auto size = static_cast<std::int64_t>(bytes.size());
    return Volume(sdblk_open_whole_buffer(bytes.data(), size, options.record_length, &whole),
                  std::move(reporter));
  }
  static Volume open_whole_bytes(std::string_view bytes) {
    return open_whole_bytes(bytes, Options());
  }

  /* The next block, or none at the end.  Throws Error; there is no way to read on then. */
  std::optional<Block> next() {
    SDBlk *block = held_->block;
    if (block != nullptr && stands_still(*block)) {
      throw Error("a blockette has the length 0", *sdblk_failure(held_->vol));
    }
    const int result = sdblk_parseblk(held_->vol, &held_->block);
    if (result < 0) detail::fail(held_->vol);
    if (result == SDBLK_EOF) return {};
    return Block(held_->block);
  }

  class Iterator : public detail::GivesOnce<Block> {
   public:
    explicit Iterator(Volume *volume) : volume_(volume) {
      if (volume_ != nullptr) block_ = volume_->next();
    }
    Block operator*() const { return *block_; }
    Iterator &operator++() {
      block_ = volume_->next();
      return *this;
    }
    bool operator==(const Iterator &other) const {
      return block_.has_value() == other.block_.has_value();
    }
    bool operator!=(const Iterator &other) const { return !(*this == other); }

   private:
    Volume *volume_;
    std::optional<Block> block_;
  };
  /* The blocks that were not read yet. */
  Iterator begin() { return Iterator(this); }
  static Iterator end() { return Iterator(nullptr); }

  [[nodiscard]] SDBlkVol &raw() const { return *held_->vol; }
  [[nodiscard]] std::int64_t size() const { return held_->vol->image_size; }
  [[nodiscard]] SDBlkWholeCounts counts() const { return sdblk_whole_counts(held_->vol); }

 private:
  using Reporter = std::unique_ptr<Report>;

  /* The volume with the block that it fills, released in the right order. */
  struct Held {
    SDBlkVol *vol = nullptr;
    SDBlk *block = nullptr;
    Reporter reporter;

    Held() = default;
    ~Held() {
      sdblk_free(block);
      sdblk_closevol(vol);
    }
    Held(const Held &) = delete;
    Held &operator=(const Held &) = delete;
  };

  Volume(SDBlkVol *vol, Reporter reporter) {
    if (vol == nullptr) throw Error(detail::take_message(), {});
    std::unique_ptr<SDBlkVol, void (*)(SDBlkVol *)> opened(vol, sdblk_closevol);
    held_ = std::make_unique<Held>();
    held_->vol = opened.release();
    held_->reporter = std::move(reporter);
  }

  static Reporter make_reporter(Report report) {
    return report ? std::make_unique<Report>(std::move(report)) : nullptr;
  }
  static SDBlkWholeOptions to_c(const Options &options, const Reporter &reporter) {
    return {reporter == nullptr ? nullptr : tell, reporter.get(), options.keep};
  }
  static void tell(void *report, const SDBlkFinding *finding) {
    (*static_cast<Report *>(report))(*finding);
  }
  /* Strict reading would hand it out again and again. */
  static bool stands_still(const SDBlk &block) {
    return block.vol != nullptr && block.vol->whole == nullptr && block.data_ptr == nullptr &&
           block.blockette_raw != nullptr && block.blockette_length == 0;
  }

  std::unique_ptr<Held> held_;
};

}  // namespace sdblk

#endif /* TARVIK_SEED_SDBLK_HPP_ */
