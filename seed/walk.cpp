#include "seed/walk.h"

#include <array>
#include <cerrno>
#include <cstring>

#include "seed/abbreviation.h"
#include "seed/binary.h"
#include "seed/conversion.h"
#include "seed/failure.h"
#include "seed/picture.h"
#include "seed/scan.h"
#include "support/arr_impl.h"
#include "support/bounded.h"
#include "support/line.h"
#include "support/load.h"

namespace tarvik {

namespace {

// The numbers of one repetition.
using Numbers = std::array<double, kMostNumbers>;

// Decodes the fields of one repetition after the other.
class Walker {
 public:
  Walker(const Cursor &cursor, const WalkContext &context)
      : cursor_(cursor), start_(cursor), context_(context) {}

  [[nodiscard]] bool has_more() const { return cursor_.has(1); }
  [[nodiscard]] const Cursor &rest() const { return cursor_; }

  // 0 or -1.
  int repetition(Arr **array, const FieldList &list, Arr *parent);
  // The same of a group of numbers of one picture (FieldFacts::is_numbers), as long as they are
  // there in that form.
  int repetition_of_numbers(Arr **array, const FieldList &list, Arr *parent);

 private:
  // Decodes one field into an entry.  0 or -1.
  int decode(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry);
  int decode_text(const SDBlkFieldDef &field, SDBlkEntry *entry);
  int decode_digits(const SDBlkFieldDef &field, SDBlkEntry *entry);
  int decode_real(const SDBlkFieldDef &field, SDBlkEntry *entry);
  int decode_int_array(const SDBlkFieldDef &field, SDBlkEntry *entry);
  int decode_double_array(const SDBlkFieldDef &field, SDBlkEntry *entry);
  int decode_string_array(const SDBlkFieldDef &field, SDBlkEntry *entry);
  int decode_group_array(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry);
  int decode_ref_array(const SDBlkFieldDef &field, SDBlkEntry *entry);

  // Size bytes of a binary field, given to load.
  template <std::size_t Size, typename Load>
  auto binary(const SDBlkFieldDef &field, Load load);

  std::int32_t scan_run(const SDBlkFieldDef &field, std::int32_t count, double *values);
  int scan_field(const SDBlkFieldDef &field, double *value);
  int scan_digits(std::string_view text, const SDBlkFieldDef &field, std::int32_t *value);
  void refer(const SDBlkFieldDef &field, SDBlkEntry *entry);
  bool read_count(const SDBlkFieldDef &field, SDBlkEntry *entry);
  char *keep_text(std::string_view text);
  void dump() const { sdblk_printbuf("", start_.bytes(), start_.size()); }

  // A zeroed array of the entry's count, or nullptr with a message that has the member's name.
  template <typename T>
  T *take_elements(const SDBlkFieldDef &field, const SDBlkEntry &entry, const char *member);

  Cursor cursor_;
  Cursor start_;
  WalkContext context_;
  Arr *array_ = nullptr;              // the repetition's entries
  Arena *pool_ = nullptr;             // where they lie
  const SDBlkEntry *code_ = nullptr;  // the lookup code that the repetition defines
};

int report_integer(std::string_view text) {
  elog_log(0, "sdblk_unstuff_sblk: scan_int(%.*s) error.\n", static_cast<int>(text.size()),
           text.data());
  return -1;
}

// The integer of a text field.  Non-digits under the field's picture are fatal.
int Walker::scan_digits(std::string_view text, const SDBlkFieldDef &field, std::int32_t *value) {
  const int nondigits = scan_integer(until_zero(text), field.format, value);
  if (nondigits <= 0) return nondigits;
  if (context_.vol != nullptr) context_.vol->nondigits += nondigits;
  const SDBlk *current = context_.vol == nullptr ? nullptr : context_.vol->current;
  elog_die(0,
           "SEEDERROR - Non-digit characters in integer field B%4.4d:%s = '%.*s' - program "
           "exiting.\n",
           current == nullptr ? 0 : current->blockette_type, field.key,
           static_cast<int>(text.size()), text.data());
}

char *Walker::keep_text(std::string_view text) {
  char *kept = static_cast<char *>(pool_->take(text.size() + 1));
  if (kept == nullptr) return nullptr;
  *put_text(kept, text) = '\0';
  return kept;
}

// Of a field that is cut short, the missing bytes are zero.
template <std::size_t Size, typename Load>
auto Walker::binary(const SDBlkFieldDef &field, Load load) {
  const std::string_view text = extract(field, &cursor_);
  return load(Cursor(text.data(), static_cast<std::int64_t>(text.size())).padded<Size>().data());
}

void Walker::refer(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (field.abbr_key == nullptr) return;
  entry->ref = referenced_block(context_.vol, field.abbr_key, entry->value.i);
}

int Walker::decode_text(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  std::string_view text = extract(field, &cursor_);
  if (field.stype == 'B') text = until_zero(text);
  entry->value.s = keep_text(text);
  if (entry->value.s != nullptr) return 0;
  elog_log(1, "sdblk_unstuff_sblk: malloc(entry=%s,%ld) error.\n", field.key,
           static_cast<long>(text.size() + 1));
  return -1;
}

int Walker::decode_digits(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  const std::string_view text = extract(field, &cursor_);
  if (scan_digits(text, field, &entry->value.i) == 0) return 0;
  report_integer(text);
  dump();
  return -1;
}

// 0, or -1 with messages registered.
int Walker::scan_field(const SDBlkFieldDef &field, double *value) {
  if (field.stype == 'F' && cursor_.has(field.width) &&
      picture::read_fields(cursor_.bytes(), field.width, 1, value) == 1) [[likely]] {
    cursor_.skip(field.width);
    return 0;
  }
  const std::string_view text = extract(field, &cursor_);
  if (scan_real(until_zero(text), value) == 0) return 0;
  elog_log(0, "sdblk_unstuff_sblk: scan_double(%.*s) error.\n", static_cast<int>(text.size()),
           text.data());
  return -1;
}

// Reads numbers of the manual's pictures as far as they go, count at most; returns how many.
std::int32_t Walker::scan_run(const SDBlkFieldDef &field, std::int32_t count, double *values) {
  if (field.stype != 'F' || field.width < 1) return 0;
  const std::int64_t there = cursor_.size() / field.width;
  if (there < count) count = static_cast<std::int32_t>(there);
  const std::int32_t read = picture::read_fields(cursor_.bytes(), field.width, count, values);
  cursor_.skip(std::int64_t{read} * field.width);
  return read;
}

int Walker::decode_real(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (scan_field(field, &entry->value.d) == 0) return 0;
  dump();
  return -1;
}

bool Walker::read_count(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  const char *key = field.number_entry == nullptr ? "" : field.number_entry;
  const auto *count = static_cast<const SDBlkEntry *>(getarr(array_, key));
  if (count == nullptr) {
    elog_log(0, "sdblk_unstuff_sblk: Cannot find number_entry, '%s', for entry '%s'.\n", key,
             field.key);
    return false;
  }
  entry->count = count->value.i;
  return true;
}

template <typename T>
T *Walker::take_elements(const SDBlkFieldDef &field, const SDBlkEntry &entry, const char *member) {
  T *elements = nullptr;
  errno = ENOMEM;  // also of a count that no memory can hold
  if (entry.count >= 0) elements = pool_->take_array<T>(static_cast<std::size_t>(entry.count));
  if (elements == nullptr) {
    elog_log(1, "sdblk_unstuff_sblk: malloc(entry->%s=%s,%ld) error.\n", member, field.key,
             static_cast<long>(entry.count) * static_cast<long>(sizeof(T)));
    return nullptr;
  }
  if (entry.count > 0) std::memset(elements, 0, static_cast<std::size_t>(entry.count) * sizeof(T));
  return elements;
}

int Walker::decode_int_array(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (!read_count(field, entry)) return -1;
  entry->value.ia = take_elements<std::int32_t>(field, *entry, "ia");
  if (entry->value.ia == nullptr) return -1;
  // Elements without bytes are 0, and stay so.
  for (std::int32_t i = 0; i < entry->count && has_more(); ++i) {
    const std::string_view text = extract(field, &cursor_);
    if (scan_digits(text, field, &entry->value.ia[i]) < 0) return report_integer(text);
  }
  return 0;
}

int Walker::decode_double_array(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (!read_count(field, entry)) return -1;
  entry->value.da = take_elements<double>(field, *entry, "da");
  if (entry->value.da == nullptr) return -1;
  // A count of 9999 over a few bytes costs no more than the zeros that are there already.
  std::int32_t i = scan_run(field, entry->count, entry->value.da);
  for (; i < entry->count && has_more(); ++i) {
    if (scan_field(field, &entry->value.da[i]) < 0) return -1;
  }
  return 0;
}

int Walker::decode_string_array(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (!read_count(field, entry)) return -1;
  entry->value.sa = take_elements<char *>(field, *entry, "sa");
  if (entry->value.sa == nullptr) return -1;
  for (std::int32_t i = 0; i < entry->count; ++i) {
    const std::string_view text = until_zero(extract(field, &cursor_));
    entry->value.sa[i] = keep_text(text);
    if (entry->value.sa[i] != nullptr) continue;
    elog_log(1, "sdblk_unstuff_sblk: malloc(entry->sa=%s,%ld) error.\n", field.key,
             static_cast<long>(text.size() + 1));
    return -1;
  }
  return 0;
}

int Walker::decode_ref_array(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (!read_count(field, entry)) return -1;
  entry->value.ra = take_elements<SDBlkAbbrRef>(field, *entry, "ra");
  if (entry->value.ra == nullptr) return -1;
  for (std::int32_t i = 0; i < entry->count; ++i) {
    SDBlkAbbrRef *reference = &entry->value.ra[i];
    const std::string_view text = extract(field, &cursor_);
    if (scan_integer(until_zero(text), nullptr, &reference->code) < 0) return report_integer(text);
    if (field.abbr_key == nullptr) continue;
    reference->blk = referenced_block(context_.vol, field.abbr_key, reference->code);
  }
  return 0;
}

int Walker::decode_group_array(const SDBlkFieldDef &field, const FieldFacts &facts,
                               SDBlkEntry *entry) {
  if (!read_count(field, entry)) return -1;
  entry->value.ea = take_elements<Arr *>(field, *entry, "ea");
  if (entry->value.ea == nullptr) return -1;
  return walk_fields(entry->value.ea, &cursor_, context_, entry->count, list_of(facts), array_);
}

int Walker::decode(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry) {
  const bool big_endian = context_.big_endian;
  switch (facts.conversion) {
    case Conversion::text: return decode_text(field, entry);
    case Conversion::byte: entry->value.i = binary<1>(field, byte_at); break;
    case Conversion::ubyte: entry->value.i = binary<1>(field, ubyte_at); break;
    case Conversion::word:
      entry->value.i = binary<2>(field, [=](const char *p) { return word_at(p, big_endian); });
      break;
    case Conversion::uword:
      entry->value.i = binary<2>(field, [=](const char *p) { return load_u16(p, big_endian); });
      break;
    case Conversion::integer32:
      entry->value.i = binary<4>(field, [=](const char *p) { return integer32_at(p, big_endian); });
      break;
    case Conversion::digits:
      if (decode_digits(field, entry) < 0) return -1;
      break;
    case Conversion::lookup_code: code_ = entry; return decode_digits(field, entry);
    case Conversion::real: return decode_real(field, entry);
    case Conversion::time:
      entry->value.d = seed_time(until_zero(extract(field, &cursor_)));
      return 0;
    case Conversion::btime:
      entry->value.d = binary<kBinaryTimeSize>(
          field, [=](const char *p) { return binary_time_at(p, big_endian); });
      return 0;
    case Conversion::ieee_float:
      entry->value.d = binary<4>(field, [=](const char *p) { return load_float(p, big_endian); });
      return 0;
    case Conversion::int_array: return decode_int_array(field, entry);
    case Conversion::double_array: return decode_double_array(field, entry);
    case Conversion::string_array: return decode_string_array(field, entry);
    case Conversion::group_array: return decode_group_array(field, facts, entry);
    case Conversion::ref_array: return decode_ref_array(field, entry);
    case Conversion::nothing: entry->count = 0; return 0;
  }
  refer(field, entry);
  return 0;
}

// Room for count entries of an array, which is made if there is none: nested in parent, or one of
// its own.  nullptr when memory runs out.
SDBlkEntry *take_entries(Arr **array, Arr *parent, std::uint32_t count) {
  if (*array == nullptr && parent != nullptr) {
    *array = arr_new_nested(parent, count, count * sizeof(SDBlkEntry));
    return *array == nullptr ? nullptr : reinterpret_cast<SDBlkEntry *>((*array)->pairs + count);
  }
  if (*array == nullptr) *array = newarr();
  if (*array == nullptr || !arr_reserve(*array, count)) return nullptr;
  return (*array)->pool->take_array<SDBlkEntry>(count);
}

void set_entry(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  entry->def = &field;
  entry->ref = nullptr;
  entry->count = 1;
  entry->value = {};
  entry->pooled = 1;
  entry->definition = 0;
}

int Walker::repetition_of_numbers(Arr **array, const FieldList &list, Arr *parent) {
  const auto count = static_cast<std::int32_t>(list.count);
  Numbers numbers;
  const std::int64_t bytes = list.count * kPictureWidth;
  const Cursor after = cursor_.from(bytes);
  if (!cursor_.has(bytes) ||
      picture::read_fields(cursor_.bytes(), kPictureWidth, count, numbers.data()) < count) {
    return repetition(array, list, parent);
  }
  const auto capacity = static_cast<std::uint32_t>(count);
  SDBlkEntry *entries = take_entries(array, parent, capacity);
  if (entries == nullptr) return report_no_memory(list.fields[0]);
  for (std::uint32_t i = 0; i < capacity; ++i) {
    set_entry(list.fields[i], &entries[i]);
    entries[i].value.d = numbers[i];
    (*array)->pairs[i] = {list.fields[i].key, &entries[i]};
  }
  (*array)->count = capacity;
  cursor_ = after;
  return 0;
}

int Walker::repetition(Arr **array, const FieldList &list, Arr *parent) {
  if (list.count < 1) return 0;
  const auto capacity = static_cast<std::uint32_t>(list.count);
  SDBlkEntry *entries = take_entries(array, parent, capacity);
  if (entries == nullptr) return report_no_memory(list.fields[0]);
  array_ = *array;
  pool_ = array_->pool;
  code_ = nullptr;
  // The catalogue's keys are unique in their array; others may come twice.
  const bool append = array_->count == 0 && capacity < kArrIndexFrom && list.facts != nullptr;
  FieldFacts made;
  for (std::int64_t i = 0; i < list.count && has_more(); ++i) {
    const SDBlkFieldDef &field = list.fields[i];
    SDBlkEntry *entry = &entries[i];
    set_entry(field, entry);
    if (decode(field, list.facts_at(i, &made), entry) < 0) {
      // A group's own fields say which of them it is.
      if (field.kind != SDBLK_GROUP_ARRAY) note_failed_field(field.key);
      return -1;
    }
    if (append) {
      arr_append_constant(array_, field.key, entry);
      continue;
    }
    // What a program or an earlier field put there goes.
    free_sdblk_entry(getarr(array_, field.key));
    if (!arr_set_constant(array_, field.key, entry)) return report_no_memory(field);
  }
  if (code_ == nullptr) return 0;
  return define_abbreviation(context_.vol, code_->def->key, code_->value.i);
}

}  // namespace

int report_no_memory(const SDBlkFieldDef &field) {
  elog_log(1, "sdblk_unstuff_sblk: malloc(entry=%s,%ld) error.\n", field.key,
           static_cast<long>(sizeof(SDBlkEntry)));
  return -1;
}

int walk_fields(Arr **arrays, Cursor *cursor, const WalkContext &context, std::int32_t repetitions,
                const FieldList &list, Arr *parent) {
  Walker walker(*cursor, context);
  int result = 0;
  for (std::int32_t i = 0; i < repetitions && result == 0 && walker.has_more(); ++i) {
    result = list.is_numbers ? walker.repetition_of_numbers(&arrays[i], list, parent)
                             : walker.repetition(&arrays[i], list, parent);
  }
  *cursor = walker.rest();
  return result;
}

}  // namespace tarvik

using namespace tarvik;

int sdblk_unstuff_sblk(Arr **arrays, const char **cursor, std::int32_t *remaining,
                       std::int32_t big_endian, std::int32_t repetitions, SDBlkVol *vol,
                       std::int32_t nfields, const SDBlkFieldDef *fields) {
  Cursor rest(*cursor, *remaining);
  const FieldList list = {fields, nfields, nullptr, false};
  const int result = walk_fields(arrays, &rest, {vol, big_endian != 0}, repetitions, list, nullptr);
  *remaining -= static_cast<std::int32_t>(rest.bytes() - *cursor);
  *cursor = rest.bytes();
  return result;
}
