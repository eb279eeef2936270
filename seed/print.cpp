// The listing of decoded blocks.  Every line is built straight in the error log's buffer.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "seed/conversion.h"
#include "seed/sdblk.h"
#include "seed/time_text.h"
#include "support/arr_impl.h"
#include "support/bounded.h"
#include "support/line.h"

namespace {

constexpr std::size_t kPrefixBuffer = 128;       // prefix of a block's fields
constexpr std::size_t kRepetitionBuffer = 512;   // prefix of one repetition of a group
constexpr std::size_t kNameBuffer = 4096;        // name of an array element, prefix of a group
constexpr std::size_t kNameColumns = 10;
constexpr std::int64_t kTextRow = 64;            // characters
constexpr std::int64_t kHexRow = 32;             // bytes
constexpr std::size_t kRowColumns = 64;
constexpr std::int64_t kFixedSection = 48;       // bytes of a data record's fixed section
constexpr std::size_t kNumberRoom = 512;         // more than any number and fixed text of a line
constexpr std::string_view kIndent = "        ";         // of raw bytes and fields
constexpr std::string_view kChainIndent = "           ";  // of a data blockette's header

// A text built from parts in a buffer that it must fit.
template <std::size_t Size>
class Bounded {
 public:
  explicit Bounded(const char *function) : function_(function) {}

  Bounded &add(std::string_view text) {
    require_fit(function_, size_ + text.size(), Size);
    put_text(text_.data() + size_, text);
    size_ += text.size();
    return *this;
  }
  // "[%4.4ld]"
  Bounded &add_index(std::int64_t index) {
    std::array<char, 24> text;
    char *end = put_char(put_digits(put_char(text.data(), '['), index, 4), ']');
    return add({text.data(), static_cast<std::size_t>(end - text.data())});
  }
  [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }

 private:
  const char *function_;
  std::size_t size_ = 0;
  std::array<char, Size> text_;
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
    out = put_hex(put_text(put_text(out, prefix), kIndent), bytes + position, count);
    out = put_padded(out, {}, kRowColumns - 2 * count);
    elog_commit(put_char(out, '\n'));
  }
}

// Bytes of a data record or blockette that lie in the volume's image, at most length.
std::int64_t bytes_there(const SDBlk &block, std::int64_t length) {
  if (block.vol == nullptr) return length;
  return std::min(length, block.vol->image + block.vol->image_size - block.data_ptr);
}

void print_raw(const SDBlk &block, std::string_view prefix) {
  if (block.blockette_raw != nullptr) {
    print_text_rows(prefix, block.blockette_raw, block.blockette_length);
  } else if (block.data_ptr != nullptr) {
    print_hex_rows(prefix, block.data_ptr, bytes_there(block, kFixedSection));
  }
}

// ---- header lines ----

char *put_type(char *out, std::int32_t type) { return put_digits(put_char(out, 'B'), type, 4); }

// "[%6.6d,%9.9ld,%4.4d]: " and the name, to the line's end.
void finish_header(char *out, const SDBlk &block, std::int64_t file_offset, std::string_view name) {
  out = put_digits(put_char(out, '['), block.block_number, 6);
  out = put_digits(put_char(out, ','), file_offset, 9);
  out = put_digits(put_char(out, ','), block.blockette_length, 4);
  elog_commit(put_char(put_text(put_text(out, "]: "), name), '\n'));
}

void print_header(const SDBlk &block, std::string_view prefix) {
  const std::string_view name = block.blkdef == nullptr ? "" : block.blkdef->name;
  char *out = elog_reserve(prefix.size() + name.size() + kNumberRoom);
  out = put_text(put_digits(put_text(out, prefix), block.logical_sequence, 6), ": ");
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

// Room for a field's line with a value of value_size bytes, and "%s%-10s = " in it.
char *start_field(std::string_view prefix, std::string_view name, std::size_t value_size = 0) {
  char *out = elog_reserve(prefix.size() + name.size() + value_size + kNumberRoom);
  out = put_padded(put_text(out, prefix), name, kNameColumns);
  return put_text(out, " = ");
}

void print_text_field(std::string_view prefix, std::string_view name, const char *value) {
  const std::string_view text = value == nullptr ? std::string_view() : std::string_view(value);
  char *out = put_text(start_field(prefix, name, text.size()), text);
  elog_commit(put_char(out, '\n'));
}

void print_real_field(std::string_view prefix, std::string_view name, double value) {
  elog_commit(put_char(put_fixed(start_field(prefix, name), value, 6), '\n'));
}

void print_time_field(std::string_view prefix, std::string_view name, double value) {
  elog_commit(put_char(put_time_or_null(start_field(prefix, name), value), '\n'));
}

void print_block(const SDBlk &block, std::string_view prefix, std::int32_t level);

// An integer, and the abbreviation that it refers to.
void print_integer_field(std::string_view prefix, std::string_view name, std::int32_t value,
                         const SDBlk *reference) {
  char *out = put_integer(start_field(prefix, name), value);
  if (reference == nullptr) {
    elog_commit(put_char(out, '\n'));
    return;
  }
  elog_commit(put_text(out, " ->\n"));
  print_block(*reference, prefix, 1);
}

bool is_time(const SDBlkFieldDef &field) {
  const std::string_view format = field.format;
  return format == "TIME" || format == "BTIME";
}

void print_fields(Arr *const *arrays, std::int64_t count, std::string_view prefix,
                  std::int64_t nfields, const SDBlkFieldDef *fields);

std::string_view key_of(const SDBlkFieldDef &field) {
  return field.key_length == 0 ? std::string_view(field.key)
                               : std::string_view(field.key, field.key_length);
}

// Calls print(name, index) for every element of an array, with its name "key[0007]".
template <typename Print>
void for_each_element(const SDBlkFieldDef &field, const SDBlkEntry &entry, Print print) {
  for (std::int32_t i = 0; i < entry.count; ++i) {
    Bounded<kNameBuffer> name("sdblk_print_sblk");
    print(name.add(key_of(field)).add_index(i).text(), i);
  }
}

void print_group(const SDBlkFieldDef &field, const SDBlkEntry &entry, std::string_view prefix) {
  Bounded<kNameBuffer> group_prefix("sdblk_print_sblk");
  group_prefix.add(prefix).add(key_of(field));
  print_fields(entry.value.ea, entry.count, group_prefix.text(), field.nsub, field.sub);
}

void print_array(const SDBlkFieldDef &field, const SDBlkEntry &entry, std::string_view prefix) {
  switch (entry.def->kind) {
    case SDBLK_INT_ARRAY:
      for_each_element(field, entry, [&](std::string_view name, std::int32_t i) {
        print_integer_field(prefix, name, entry.value.ia[i], nullptr);
      });
      return;
    case SDBLK_DOUBLE_ARRAY:
      for_each_element(field, entry, [&](std::string_view name, std::int32_t i) {
        print_real_field(prefix, name, entry.value.da[i]);
      });
      return;
    case SDBLK_STRING_ARRAY:
      for_each_element(field, entry, [&](std::string_view name, std::int32_t i) {
        print_text_field(prefix, name, entry.value.sa[i]);
      });
      return;
    case SDBLK_REF_ARRAY:
      for_each_element(field, entry, [&](std::string_view name, std::int32_t i) {
        print_integer_field(prefix, name, entry.value.ra[i].code, entry.value.ra[i].blk);
      });
      return;
    default: return;
  }
}

void print_entry(const SDBlkFieldDef &field, const SDBlkEntry &entry, std::string_view prefix) {
  const std::string_view name = key_of(field);
  switch (entry.def->kind) {
    case SDBLK_INT: print_integer_field(prefix, name, entry.value.i, entry.ref); return;
    case SDBLK_ABBR_KEY: print_integer_field(prefix, name, entry.value.i, nullptr); return;
    case SDBLK_DOUBLE:
      if (is_time(field)) {
        print_time_field(prefix, name, entry.value.d);
      } else {
        print_real_field(prefix, name, entry.value.d);
      }
      return;
    case SDBLK_STRING: print_text_field(prefix, name, entry.value.s); return;
    case SDBLK_GROUP_ARRAY: print_group(field, entry, prefix); return;
    default: print_array(field, entry, prefix); return;
  }
}

void print_repetition(const Arr *array, std::string_view prefix, std::int64_t nfields,
                      const SDBlkFieldDef *fields) {
  for (std::int64_t i = 0; i < nfields; ++i) {
    const SDBlkFieldDef &field = fields[i];
    const auto *entry = static_cast<const SDBlkEntry *>(
        arr_get_at(array, static_cast<std::uint32_t>(i), field.key));
    if (entry == nullptr) {
      elog_commit(put_text(start_field(prefix, key_of(field)), "UNDEFINED\n"));
    } else {
      print_entry(field, *entry, prefix);
    }
  }
}

void print_fields(Arr *const *arrays, std::int64_t count, std::string_view prefix,
                  std::int64_t nfields, const SDBlkFieldDef *fields) {
  for (std::int64_t i = 0; i < count; ++i) {
    Bounded<kRepetitionBuffer> repetition("sdblk_print_sblk");
    repetition.add(prefix);
    if (count > 1) repetition.add_index(i).add(".");
    print_repetition(arrays[i], repetition.text(), nfields, fields);
  }
}

// ---- blocks ----

void print_chained(const SDBlk &record, const SDBlk &chained, std::string_view prefix,
                   std::string_view field_prefix) {
  print_chained_header(chained, prefix, record.file_offset);
  if (record.data_ptr != nullptr && chained.data_ptr != nullptr) {
    print_hex_rows(prefix, chained.data_ptr, bytes_there(chained, chained.blockette_length));
  }
  if (chained.blkdef == nullptr) return;
  print_fields(&chained.contents, 1, field_prefix, chained.blkdef->nfields, chained.blkdef->fields);
}

void print_block(const SDBlk &block, std::string_view prefix, std::int32_t level) {
  print_header(block, prefix);
  if (level == 0) return;
  print_raw(block, prefix);
  if (block.blkdef == nullptr) return;
  Bounded<kPrefixBuffer> field_prefix("sdblk_printblk");
  field_prefix.add(prefix).add(kIndent);
  print_fields(&block.contents, 1, field_prefix.text(), block.blkdef->nfields, block.blkdef->fields);
  for (const SDBlk *chained = block.next; chained != nullptr; chained = chained->next) {
    print_chained(block, *chained, prefix, field_prefix.text());
  }
}

}  // namespace

int sdblk_printblk(const SDBlk *block, const char *prefix, std::int32_t level) {
  print_block(*block, prefix, level);
  return 0;
}

int sdblk_print_sblk(Arr *const *arrays, std::int64_t count, const char *prefix,
                     std::int64_t nfields, const SDBlkFieldDef *fields) {
  print_fields(arrays, count, prefix, nfields, fields);
  return 0;
}

int sdblk_printbuf(const char *prefix, const char *bytes, std::int64_t length) {
  print_text_rows(prefix, bytes, length);
  return 0;
}
