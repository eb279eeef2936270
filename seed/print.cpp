// The listing of decoded blocks.  Every line is built straight in the error log's buffer.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "seed/conversion.h"
#include "seed/cursor.h"
#include "seed/facts.h"
#include "seed/format.h"
#include "seed/line_format.h"
#include "seed/sdblk.h"
#include "seed/time_text.h"
#include "support/arr_impl.h"
#include "support/bounded.h"
#include "support/c_text.h"
#include "support/elog_impl.h"
#include "support/line.h"

using namespace tarvik;

namespace {

constexpr std::size_t kPrefixBuffer = 128;      // prefix of a block's fields
constexpr std::size_t kRepetitionBuffer = 512;  // prefix of one repetition of a group
constexpr std::size_t kNameBuffer = 4096;       // name of an array element, prefix of a group
constexpr std::int64_t kTextRow = 64;           // characters
constexpr std::int64_t kHexRow = 32;            // bytes
constexpr std::size_t kRowColumns = 64;
constexpr std::size_t kNumberRoom = 512;          // more than any number and fixed text of a line
constexpr std::string_view kIndent = "        ";  // of raw bytes and fields
constexpr std::string_view kChainIndent = "           ";  // of a data blockette's header

// A text of two parts in a buffer that it must fit.
template <std::size_t Size>
class Bounded {
 public:
  Bounded(const char *function, std::string_view first, std::string_view second)
      : size_(first.size() + second.size()) {
    require_fit(function, size_, Size);
    put_text(put_text(text_.data(), first), second);
  }
  [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }

 private:
  std::size_t size_;
  std::array<char, Size> text_;
};

// "[%4.4ld]" and what stands after it, one character at most.
class IndexText {
 public:
  explicit IndexText(std::int64_t index, std::string_view after = {}) {
    char *end = put_char(put_digits<4>(put_char(text_.data(), '['), index), ']');
    size_ = static_cast<std::size_t>(put_text(end, after) - text_.data());
  }
  [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }

 private:
  std::size_t size_;
  std::array<char, 24> text_;
};

// ---- rows of raw bytes ----

void print_text_rows(std::string_view prefix, const char *bytes, std::int64_t length) {
  for (std::int64_t position = 0; position < length; position += kTextRow) {
    const auto size = static_cast<std::size_t>(std::min(length - position, kTextRow));
    const std::string_view row(bytes + position, strnlen(bytes + position, size));
    char *out = elog_reserve(prefix.size() + kNumberRoom);
    out = put_text(put_text(out, prefix), kIndent);
    elog_commit(put_char(put_padded(out, row, kRowColumns), '\n'));
  }
}

void print_hex_rows(std::string_view prefix, const char *bytes, std::int64_t length) {
  for (std::int64_t position = 0; position < length; position += kHexRow) {
    const auto count = static_cast<std::size_t>(std::min(length - position, kHexRow));
    char *out = elog_reserve(prefix.size() + kNumberRoom);
    out = put_text(put_text(out, prefix), kIndent);
    // Blanks up to the row's end, and over what put_hex leaves after its digits.
    std::memset(out, ' ', kRowColumns);
    std::memset(put_hex(out, bytes + position, count), ' ', kHexSurplus);
    elog_commit(put_char(out + kRowColumns, '\n'));
  }
}

// Bytes of a data record or blockette that lie in the volume's image, at most length.
std::int64_t bytes_there(const SDBlk &block, std::int64_t length) {
  if (block.vol == nullptr) return length;
  return std::min(length, image_from(*block.vol, block.data_ptr).size());
}

void print_raw(const SDBlk &block, std::string_view prefix) {
  if (block.blockette_raw != nullptr) {
    print_text_rows(prefix, block.blockette_raw, block.blockette_length);
  } else if (block.data_ptr != nullptr) {
    print_hex_rows(prefix, block.data_ptr, bytes_there(block, kDataHeaderBytes));
  }
}

// ---- header lines ----

char *put_type(char *out, std::int32_t type) { return put_digits<4>(put_char(out, 'B'), type); }

// "[%6.6d,%9.9ld,%4.4d]: " and the name, to the line's end.
void finish_header(char *out, const SDBlk &block, std::int64_t file_offset, std::string_view name) {
  out = put_digits<6>(put_char(out, '['), block.block_number);
  out = put_digits<9>(put_char(out, ','), file_offset);
  out = put_digits<4>(put_char(out, ','), block.blockette_length);
  elog_commit(put_char(put_text(put_text(out, "]: "), name), '\n'));
}

void print_header(const SDBlk &block, std::string_view prefix) {
  const std::string_view name = block.blkdef == nullptr ? "" : block.blkdef->name;
  char *out = elog_reserve(prefix.size() + name.size() + kNumberRoom);
  out = put_text(put_digits<6>(put_text(out, prefix), block.logical_sequence), ": ");
  out = put_text(put_char(out, block.record_type), ": ");
  if (block.blkdef == nullptr) {
    elog_commit(put_text(put_type(out, block.blockette_type), ": UNDEFINED\n"));
    return;
  }
  const bool is_record = block.blockette_type == SDBLK_DATA_RECORD;
  out = is_record ? put_text(out, "BDATA") : put_type(out, block.blockette_type);
  finish_header(out, block, block.file_offset, name);
}

// A data blockette's header states the file offset of its record.
void print_chained_header(const SDBlk &chained, std::string_view prefix, std::int64_t file_offset) {
  const std::string_view name = chained.blkdef == nullptr ? "UNDEFINED" : chained.blkdef->name;
  char *out = elog_reserve(prefix.size() + name.size() + kNumberRoom);
  out = put_type(put_text(put_text(out, prefix), kChainIndent), chained.blockette_type);
  finish_header(out, chained, file_offset, name);
}

// ---- fields ----

// A text that many lines begin with.  Nearly all are short: those are copied in one piece of fixed
// size, and what comes next overwrites the surplus.
template <std::size_t Size>
class LineStart {
 public:
  [[nodiscard]] char *put(char *out) const {
    std::memcpy(out, text_.data(), kPiece);
    if (size_ > kPiece) std::memcpy(out + kPiece, text_.data() + kPiece, size_ - kPiece);
    return out + size_;
  }
  [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }
  [[nodiscard]] std::size_t size() const { return size_; }

 protected:
  void append(std::string_view text) {
    put_text(text_.data() + size_, text);
    size_ += text.size();
  }
  void cut(std::size_t size) { size_ = size; }

  std::size_t size_ = 0;
  std::array<char, Size> text_;

 private:
  static constexpr std::size_t kPiece = 32;
  static_assert(Size >= kPiece);
};

// Whether an index, one more than that before it, differs from it in its four digits alone.
bool only_digits_change(std::int64_t index) { return index > 0 && index < 10000; }

// What stands before every field of one repetition: the prefix of all, and "[0007]." where
// there are several.
class LinePrefix : public LineStart<kRepetitionBuffer> {
 public:
  LinePrefix() = default;
  // That of a block's own fields.
  explicit LinePrefix(std::string_view prefix) {
    require_fit("sdblk_printblk", prefix.size() + kIndent.size(), kPrefixBuffer);
    append(prefix);
    append(kIndent);
  }
  // For indexes from 0 to count - 1, each one more than the one before.
  void number(std::string_view prefix, std::int64_t index, std::int64_t count) {
    if (count == 1) {
      set(prefix, {});
    } else if (only_digits_change(index)) {
      put_digits<4>(text_.data() + prefix.size() + 1, index);
    } else {
      set(prefix, IndexText(index, ".").text());
    }
  }

 private:
  void set(std::string_view prefix, std::string_view index) {
    require_fit("sdblk_print_sblk", prefix.size() + index.size(), kRepetitionBuffer);
    cut(0);
    append(prefix);
    append(index);
  }
};

// What stands before the values of an array's elements: prefix and "key[0007] = ".
class ElementStart : public LineStart<kRepetitionBuffer + kNameBuffer + kNameColumns> {
 public:
  ElementStart(const LinePrefix &prefix, std::string_view key)
      : key_size_(key.size()), bracket_(prefix.size() + key.size()) {
    require_fit("sdblk_print_sblk", key_size_, kNameBuffer);
    append(prefix.text());
    append(key);
  }
  // For indexes from 0 on, each one more than the one before.
  void number(std::int64_t index) {
    index_ = index;
    if (only_digits_change(index)) return;
    const IndexText text(index);
    const std::size_t name_size = key_size_ + text.text().size();
    require_fit("sdblk_print_sblk", name_size, kNameBuffer);
    constexpr std::string_view kBlanks = "          ";
    static_assert(kBlanks.size() == kNameColumns);
    cut(bracket_);
    append(text.text());
    append(kBlanks.substr(std::min(name_size, kNameColumns)));
    append(kEquals);
  }
  // The digits are changed after the copy: a change before would hold it up.
  [[nodiscard]] char *put(char *out) const {
    char *end = LineStart::put(out);
    if (only_digits_change(index_)) put_digits<4>(out + bracket_ + 1, index_);
    return end;
  }

 private:
  std::size_t key_size_;
  std::size_t bracket_;  // where the index stands
  std::int64_t index_ = 0;
};

// One line of the listing, up to its value: the place of the value.
class FieldLine {
 public:
  // "%s%-10s = " of a field, with room for a value of value_size bytes.
  FieldLine(const LinePrefix &prefix, const FieldFacts &field, std::size_t value_size = 0) {
    if (field.label_size == 0) {
      start(prefix, field.key(), value_size);
      return;
    }
    out_ = prefix.put(elog_reserve(prefix.size() + value_size + kNumberRoom));
    std::memcpy(out_, field.label.data(), field.label.size());
    out_ += field.label_size;
  }
  // The same of an element of an array, with its name there.
  explicit FieldLine(const ElementStart &start, std::size_t value_size = 0)
      : out_(start.put(elog_reserve(start.size() + value_size + kNumberRoom))) {}

  void finish_text(std::string_view value) { elog_commit(put_char(put_text(out_, value), '\n')); }
  void finish_real(double value) { elog_commit(put_char(put_fixed(out_, value, 6), '\n')); }
  void finish_time(double value) { elog_commit(put_char(put_time_or_null(out_, value), '\n')); }
  void finish_integer(std::int32_t value) { elog_commit(put_char(put_integer(out_, value), '\n')); }
  void finish_reference(std::int32_t value) {
    elog_commit(put_text(put_integer(out_, value), " ->\n"));
  }

 private:
  void start(const LinePrefix &prefix, std::string_view name, std::size_t value_size) {
    out_ = prefix.put(elog_reserve(prefix.size() + name.size() + value_size + kNumberRoom));
    out_ = put_text(put_padded(out_, name, kNameColumns), kEquals);
  }

  char *out_;
};

void print_block(const SDBlk &block, std::string_view prefix, std::int32_t level);

// A lookup code, and the abbreviation that it refers to.
void print_reference(FieldLine line, const LinePrefix &prefix, std::int32_t code,
                     const SDBlk &abbreviation) {
  line.finish_reference(code);
  print_block(abbreviation, prefix.text(), 1);
}

bool is_time(Conversion conversion) {
  return conversion == Conversion::time || conversion == Conversion::btime;
}

void print_fields(Arr *const *arrays, std::int64_t count, std::string_view prefix,
                  const FieldList &list);

void print_group(const FieldFacts &field, const SDBlkEntry &entry, const LinePrefix &prefix) {
  const Bounded<kNameBuffer> group_prefix("sdblk_print_sblk", prefix.text(), field.key());
  print_fields(entry.value.ea, entry.count, group_prefix.text(), list_of(field));
}

// Calls print(line, index) for the elements of an array.
template <typename Print>
void for_each_element(const FieldFacts &field, const SDBlkEntry &entry, const LinePrefix &prefix,
                      Print print) {
  ElementStart start(prefix, field.key());
  for (std::int32_t i = 0; i < entry.count; ++i) {
    start.number(i);
    print(FieldLine(start), i);
  }
}

void print_string_array(const FieldFacts &field, const SDBlkEntry &entry,
                        const LinePrefix &prefix) {
  ElementStart start(prefix, field.key());
  for (std::int32_t i = 0; i < entry.count; ++i) {
    const std::string_view text = or_empty(entry.value.sa[i]);
    start.number(i);
    FieldLine(start, text.size()).finish_text(text);
  }
}

void print_array(const FieldFacts &field, const SDBlkEntry &entry, const LinePrefix &prefix) {
  switch (entry.def->kind) {
    case SDBLK_INT_ARRAY:
      for_each_element(field, entry, prefix, [&](FieldLine line, std::int32_t i) {
        line.finish_integer(entry.value.ia[i]);
      });
      return;
    case SDBLK_DOUBLE_ARRAY:
      for_each_element(field, entry, prefix, [&](FieldLine line, std::int32_t i) {
        line.finish_real(entry.value.da[i]);
      });
      return;
    case SDBLK_STRING_ARRAY: print_string_array(field, entry, prefix); return;
    case SDBLK_REF_ARRAY:
      for_each_element(field, entry, prefix, [&](FieldLine line, std::int32_t i) {
        const SDBlkAbbrRef &reference = entry.value.ra[i];
        if (reference.blk == nullptr) {
          line.finish_integer(reference.code);
        } else {
          print_reference(line, prefix, reference.code, *reference.blk);
        }
      });
      return;
    default: return;
  }
}

void print_text(const FieldFacts &field, std::string_view text, const LinePrefix &prefix) {
  FieldLine(prefix, field, text.size()).finish_text(text);
}

// In place where fields are listed, one after the other: gcc finds them too long, and the calls are
// 5 % of a listing of data records.
[[gnu::always_inline]] inline void print_number(const FieldFacts &field, const SDBlkEntry &entry,
                                                const LinePrefix &prefix) {
  const std::int32_t kind = entry.def->kind;
  FieldLine line(prefix, field);
  if (kind == SDBLK_INT && entry.ref != nullptr) {
    print_reference(line, prefix, entry.value.i, *entry.ref);
  } else if (kind != SDBLK_DOUBLE) {
    line.finish_integer(entry.value.i);
  } else if (is_time(field.conversion)) {
    line.finish_time(entry.value.d);
  } else {
    line.finish_real(entry.value.d);
  }
}

[[gnu::always_inline]] inline void print_entry(const FieldFacts &field, const SDBlkEntry &entry,
                                               const LinePrefix &prefix) {
  switch (entry.def->kind) {
    case SDBLK_INT:
    case SDBLK_ABBR_KEY:
    case SDBLK_DOUBLE: print_number(field, entry, prefix); return;
    case SDBLK_STRING: print_text(field, or_empty(entry.value.s), prefix); return;
    case SDBLK_GROUP_ARRAY: print_group(field, entry, prefix); return;
    default: print_array(field, entry, prefix); return;
  }
}

// Long, with all that it has in place: called, not copied.
[[gnu::noinline]] void print_repetition(const Arr *array, const LinePrefix &prefix,
                                        std::int64_t count, const FieldFacts *facts) {
  for (std::int64_t i = 0; i < count; ++i) {
    const FieldFacts &field = facts[i];
    const auto *entry = static_cast<const SDBlkEntry *>(
        arr_get_at(array, static_cast<std::uint32_t>(i), field.def->key));
    if (entry == nullptr) {
      print_text(field, "UNDEFINED", prefix);
    } else {
      print_entry(field, *entry, prefix);
    }
  }
}

// The same of fields whose facts have to be worked out.
void print_without_facts(const Arr *array, const LinePrefix &prefix, const FieldList &list) {
  for (std::int64_t i = 0; i < list.count; ++i) {
    const FieldFacts facts = facts_of(list.fields[i]);
    print_repetition(array, prefix, 1, &facts);
  }
}

void print_list(const Arr *array, const LinePrefix &prefix, const FieldList &list) {
  if (list.facts == nullptr) {
    print_without_facts(array, prefix, list);
  } else {
    print_repetition(array, prefix, list.count, list.facts);
  }
}

void print_fields(Arr *const *arrays, std::int64_t count, std::string_view prefix,
                  const FieldList &list) {
  LinePrefix repetition;
  for (std::int64_t i = 0; i < count; ++i) {
    repetition.number(prefix, i, count);
    print_list(arrays[i], repetition, list);
  }
}

// ---- blocks ----

void print_chained(const SDBlk &record, const SDBlk &chained, std::string_view prefix,
                   const LinePrefix &field_prefix) {
  print_chained_header(chained, prefix, record.file_offset);
  if (record.data_ptr != nullptr && chained.data_ptr != nullptr) {
    print_hex_rows(prefix, chained.data_ptr, bytes_there(chained, chained.blockette_length));
  }
  if (chained.blkdef == nullptr) return;
  print_list(chained.contents, field_prefix, list_of(*chained.blkdef));
}

void print_block(const SDBlk &block, std::string_view prefix, std::int32_t level) {
  print_header(block, prefix);
  if (level == 0) return;
  print_raw(block, prefix);
  if (block.blkdef == nullptr) return;
  const LinePrefix field_prefix(prefix);
  print_list(block.contents, field_prefix, list_of(*block.blkdef));
  for (const SDBlk *chained = block.next; chained != nullptr; chained = chained->next) {
    print_chained(block, *chained, prefix, field_prefix);
  }
}

}  // namespace

int sdblk_printblk(const SDBlk *block, const char *prefix, std::int32_t level) {
  print_block(*block, prefix, level);
  return 0;
}

int sdblk_printblk_to(const SDBlk *block, const char *prefix, std::int32_t level,
                      void (*lines)(void *context, const char *bytes, std::size_t size),
                      void *context) {
  const ElogDiversion diversion(lines, context);
  print_block(*block, prefix, level);
  return 0;
}

int sdblk_print_sblk(Arr *const *arrays, std::int64_t count, const char *prefix,
                     std::int64_t nfields, const SDBlkFieldDef *fields) {
  print_fields(arrays, count, prefix, {fields, nfields, nullptr, false});
  return 0;
}

int sdblk_printbuf(const char *prefix, const char *bytes, std::int64_t length) {
  print_text_rows(prefix, bytes, length);
  return 0;
}
