#include "seed/whole/fields.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "seed/binary.h"
#include "seed/block.h"
#include "seed/conversion.h"
#include "seed/facts.h"
#include "seed/failure.h"
#include "seed/layout.h"
#include "seed/picture.h"
#include "seed/scan.h"
#include "seed/whole/findings.h"
#include "seed/whole/numbers.h"
#include "support/arr_impl.h"
#include "support/line.h"

namespace tarvik {
namespace {

constexpr std::int32_t kNoValue = -1;  // SDBlkEntry.definition
constexpr double kNoReal = std::numeric_limits<double>::quiet_NaN();

// Bytes that are still to be decoded.
class Source {
 public:
  Source(const char *bytes, std::int64_t size) : bytes_(bytes), size_(size) {}

  [[nodiscard]] bool is_empty() const { return size_ == 0; }
  [[nodiscard]] std::int64_t size() const { return size_; }
  [[nodiscard]] const char *bytes() const { return bytes_; }

  // Up to width bytes.
  std::string_view take(std::int64_t width) {
    const std::int64_t taken = std::clamp<std::int64_t>(width, 0, size_);
    const std::string_view text(bytes_, static_cast<std::size_t>(taken));
    bytes_ += taken;
    size_ -= taken;
    return text;
  }
  // Up to the next "~", which goes too, or to the end.
  std::string_view take_variable() {
    const std::string_view rest(bytes_, static_cast<std::size_t>(size_));
    const std::size_t tilde = rest.find('~');
    if (tilde == std::string_view::npos) return take(size_);
    const std::string_view text = take(static_cast<std::int64_t>(tilde));
    take(1);
    return text;
  }

 private:
  const char *bytes_;
  std::int64_t size_;
};

// The key of the count of a group or an array.  Five groups of the catalogue name another field,
// which strict reading looks for.
const char *count_key(const SDBlkFieldDef &field) {
  struct Counted {
    const char *key;
    const char *count;
  };
  constexpr std::array<Counted, 3> kCounted = {
      {{"corners", "ncorners"}, {"histories", "nhistories"}, {"segs", "nsegs"}}};
  for (const Counted &counted : kCounted) {
    if (std::strcmp(field.key, counted.key) == 0) return counted.count;
  }
  return field.number_entry;
}

bool is_counted(const SDBlkFieldDef &field) { return field.number_entry != nullptr; }

void start_entry(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  *entry = {};
  entry->def = &field;
  entry->count = 1;
  entry->pooled = 1;
}

// The elements that a count promises.
struct Count {
  std::int32_t promised;
  bool is_null;
};

// Of the fields that stand in an array so far.
Count count_of(const Arr *array, const SDBlkFieldDef &field) {
  const auto *entry = static_cast<const SDBlkEntry *>(getarr(array, count_key(field)));
  if (entry == nullptr) return {0, false};
  if (entry->definition == kNoValue) return {0, true};
  return {std::max(entry->value.i, 0), false};
}

// A field's path, ended by a 0.
using Path = std::array<char, 128>;

class Decoder {
 public:
  Decoder(const FieldsOf &of, const char *bytes, std::int64_t size)
      : of_(of), source_(bytes, size), big_endian_(of.block->big_endian != 0) {}

  // The fields of a list, into an empty array with room for them, with entries for its values.
  // False when memory runs out.
  bool list(Arr *array, SDBlkEntry *entries, const FieldList &list);

  // A binary time, which need not stand in a list.
  void binary_time(const SDBlkFieldDef &field, SDBlkEntry *entry);

  // What the block defines, or 0.
  [[nodiscard]] std::int32_t defined() const { return defined_; }

 private:
  bool field(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry);
  bool text(const SDBlkFieldDef &field, SDBlkEntry *entry);
  void integer(const SDBlkFieldDef &field, SDBlkEntry *entry);
  bool lookup_code(const SDBlkFieldDef &field, SDBlkEntry *entry);
  double real(const SDBlkFieldDef &field);
  void time(const SDBlkFieldDef &field, SDBlkEntry *entry);
  template <std::size_t Size, typename Load>
  void binary(const SDBlkFieldDef &field, SDBlkEntry *entry, Load load);
  bool group(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry);
  bool numbers(Arr *array, SDBlkEntry *entries, const SDBlkFieldDef &field);
  bool reals(const SDBlkFieldDef &field, SDBlkEntry *entry);
  bool integers(const SDBlkFieldDef &field, SDBlkEntry *entry);
  bool texts(const SDBlkFieldDef &field, SDBlkEntry *entry);
  bool references(const SDBlkFieldDef &field, SDBlkEntry *entry);

  // A field's bytes as its storage type cuts them.
  std::string_view cut(const SDBlkFieldDef &field) {
    return field.stype == 'V' ? source_.take_variable() : source_.take(field.width);
  }
  // Of a number, without the white space around it.  False when bytes are missing.
  bool cut_number(const SDBlkFieldDef &field, std::string_view *text);
  bool number(const SDBlkFieldDef &field, std::int32_t *value);

  SDBlk *refer(const SDBlkFieldDef &field, std::int32_t code, std::int32_t *definition) const;

  void check_count(const Count &count, const SDBlkFieldDef &field, std::int64_t there);
  // Takes the elements of an array while there are bytes, as many as its count says at most.  take
  // gets the first of so many elements and says how many it took; 0 ends all, for want of memory.
  template <typename T, typename Take>
  bool elements(const SDBlkFieldDef &field, SDBlkEntry *entry, std::int64_t width, T **result,
                Take take);

  bool no_memory(const SDBlkFieldDef &field) const;
  void note(SDBlkCause cause, const SDBlkFieldDef &field, const char *what) const;
  void note_value(const SDBlkFieldDef &field, const char *what, std::string_view value) const;
  void make_path(const SDBlkFieldDef &field, Path *path) const;

  FieldsOf of_;
  Source source_;
  bool big_endian_;
  Arr *array_ = nullptr;                  // the entries of the list that is decoded
  const SDBlkFieldDef *group_ = nullptr;  // the group that the list belongs to,
  std::int64_t repetition_ = 0;           // and which repetition of it
  std::int32_t defined_ = 0;
  bool stopped_ = false;  // a count without a value: where the next field begins is unknown
};

// ---- notes ----

void Decoder::make_path(const SDBlkFieldDef &field, Path *path) const {
  char *out = path->data();
  const auto put = [&](std::string_view part) {
    const auto room = static_cast<std::size_t>(path->data() + path->size() - 1 - out);
    out = put_text(out, part.substr(0, std::min(room, part.size())));
  };
  const auto put_index = [&](std::int64_t index) {
    std::array<char, 24> digits;
    const char *end = put_integer(digits.data(), index);
    put("[");
    put({digits.data(), static_cast<std::size_t>(end - digits.data())});
    put("].");
  };
  if (of_.chained >= 0) {
    put("blockettes");
    put_index(of_.chained);
  }
  if (group_ != nullptr) {
    put(group_->key);
    put_index(repetition_);
  }
  put(field.key);
  *out = '\0';
}

// A value as it can be shown in one line.
struct Shown {
  explicit Shown(std::string_view value) {
    constexpr std::size_t kMost = 40;
    char *out = text.data();
    for (const char c : value.substr(0, kMost)) *out++ = c >= ' ' && c <= '~' ? c : '?';
    if (value.size() > kMost) out = put_text(out, "...");
    *out = '\0';
  }
  std::array<char, 48> text;
};

void Decoder::note(SDBlkCause cause, const SDBlkFieldDef &field, const char *what) const {
  if (!of_.notes) return;
  Path path;
  make_path(field, &path);
  report_note(of_.whole, cause, of_.offset, of_.number, path.data(), "%s %s", path.data(), what);
}

void Decoder::note_value(const SDBlkFieldDef &field, const char *what,
                         std::string_view value) const {
  if (!of_.notes) return;
  Path path;
  make_path(field, &path);
  report_note(of_.whole, SDBLK_NOTE_VALUE, of_.offset, of_.number, path.data(), "%s %s: '%s'",
              path.data(), what, Shown(value).text.data());
}

bool Decoder::no_memory(const SDBlkFieldDef &field) const {
  elog_log(1, "sdblk_unstuffblk: no memory for field %s of B%4.4d at %c:%6.6d\n", field.key,
           of_.block->blockette_type, of_.block->record_type, of_.block->logical_sequence);
  note_failed_field(field.key);
  return false;
}

// ---- single values ----

bool Decoder::text(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  const std::string_view text = trimmed_field(cut(field));
  entry->value.s = static_cast<char *>(array_->pool->take(text.size() + 1));
  if (entry->value.s == nullptr) return no_memory(field);
  *put_text(entry->value.s, text) = '\0';
  return true;
}

bool Decoder::cut_number(const SDBlkFieldDef &field, std::string_view *text) {
  const std::string_view bytes = cut(field);
  *text = trimmed_field(bytes);
  if (field.stype == 'V' || static_cast<std::int64_t>(bytes.size()) == field.width) return true;
  note_value(field, "is cut short", *text);
  return false;
}

bool Decoder::number(const SDBlkFieldDef &field, std::int32_t *value) {
  std::string_view text;
  if (!cut_number(field, &text) || text.empty()) return false;
  if (read_whole_integer(text, value)) return true;
  note_value(field, "is not a number", text);
  return false;
}

void Decoder::integer(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  if (!number(field, &entry->value.i)) entry->definition = kNoValue;
}

double Decoder::real(const SDBlkFieldDef &field) {
  double value = kNoReal;
  if (field.stype == 'F' && source_.size() >= field.width &&
      picture::read_fields(source_.bytes(), field.width, 1, &value) == 1) [[likely]] {
    source_.take(field.width);
    return value;
  }
  std::string_view text;
  if (!cut_number(field, &text) || text.empty()) return kNoReal;
  if (read_whole_real(text, &value)) return value;
  note_value(field, "is not a number", text);
  return kNoReal;
}

void Decoder::time(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  entry->value.d = SDBLK_NO_TIME;
  entry->definition = kNoValue;
  const std::string_view text = trimmed_field(cut(field));
  if (text.empty()) return;
  if (read_whole_time(text, &entry->value.d)) {
    entry->definition = 0;
  } else {
    note_value(field, "is not a time", text);
  }
}

// Gives the bytes of a binary field to load, unless some are missing.
template <std::size_t Size, typename Load>
void Decoder::binary(const SDBlkFieldDef &field, SDBlkEntry *entry, Load load) {
  const std::string_view bytes = source_.take(field.width);
  if (bytes.size() >= Size) {
    load(bytes.data());
    return;
  }
  entry->definition = kNoValue;
  note(SDBLK_NOTE_VALUE, field, "is cut short");
}

void Decoder::binary_time(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  entry->value.d = SDBLK_NO_TIME;
  binary<kBinaryTimeSize>(field, entry, [&](const char *bytes) {
    if (read_whole_binary_time(bytes, big_endian_, &entry->value.d)) return;
    entry->definition = kNoValue;
    note(SDBLK_NOTE_VALUE, field, "is not a time");
  });
}

SDBlk *Decoder::refer(const SDBlkFieldDef &field, std::int32_t code,
                      std::int32_t *definition) const {
  if (field.abbr_key == nullptr) return nullptr;
  *definition = of_.whole->definitions.find(field.abbr_key, code);
  const Definition *found = of_.whole->definitions.get(*definition);
  return found == nullptr ? nullptr : found->first.block;
}

bool Decoder::lookup_code(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  integer(field, entry);
  if (entry->definition == kNoValue) return true;
  Definitions &definitions = of_.whole->definitions;
  const std::int32_t code = entry->value.i;
  entry->definition = definitions.find(field.key, code);
  if (!of_.notes) return true;
  if (entry->definition != 0) {
    report_note(of_.whole, SDBLK_NOTE_AGAIN, of_.offset, of_.number, nullptr,
                "%s %d is defined already", field.key, code);
  }
  defined_ = entry->definition = definitions.add(field.key, code, of_.number);
  return defined_ != 0 || no_memory(field);
}

// ---- groups and arrays ----

void Decoder::check_count(const Count &count, const SDBlkFieldDef &field, std::int64_t there) {
  if (count.is_null) {
    note(SDBLK_NOTE_SHORT, field, "is left empty, for its count has no value");
    stopped_ = true;
  } else if (there < count.promised) {
    note(SDBLK_NOTE_SHORT, field, "has fewer elements than its count says");
  }
}

// An element takes a byte at least, so no more are made room for than there are bytes.
template <typename T, typename Take>
bool Decoder::elements(const SDBlkFieldDef &field, SDBlkEntry *entry, std::int64_t width,
                       T **result, Take take) {
  const Count count = count_of(array_, field);
  const std::int64_t room = (source_.size() + width - 1) / width;
  const std::int64_t most = std::min<std::int64_t>(count.promised, room);
  *result = array_->pool->take_array<T>(static_cast<std::size_t>(most));
  if (*result == nullptr) return no_memory(field);
  std::int64_t there = 0;
  while (there < most && !source_.is_empty()) {
    const std::int64_t taken = take(&(*result)[there], most - there);
    if (taken == 0) return false;
    there += taken;
  }
  entry->count = static_cast<std::int32_t>(there);
  check_count(count, field, there);
  return true;
}

// Numbers of the pictures that nearly all have are read in one go.
bool Decoder::reals(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  const std::int64_t width = std::max(field.width, 1);
  return elements(field, entry, width, &entry->value.da, [&](double *elements, std::int64_t most) {
    const std::int64_t whole = std::min(most, source_.size() / width);
    const std::int32_t run = field.stype != 'F'
                                 ? 0
                                 : picture::read_fields(source_.bytes(), field.width,
                                                        static_cast<std::int32_t>(whole), elements);
    source_.take(run * width);
    if (run == 0) *elements = real(field);
    return std::max(run, 1);
  });
}

bool Decoder::integers(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  return elements(field, entry, std::max(field.width, 1), &entry->value.ia,
                  [&](std::int32_t *element, std::int64_t) {
                    *element = 0;
                    number(field, element);
                    return 1;
                  });
}

bool Decoder::texts(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  return elements(field, entry, 1, &entry->value.sa, [&](char **element, std::int64_t) {
    SDBlkEntry one = {};
    if (!text(field, &one)) return 0;
    *element = one.value.s;
    return 1;
  });
}

bool Decoder::references(const SDBlkFieldDef &field, SDBlkEntry *entry) {
  return elements(field, entry, std::max(field.width, 1), &entry->value.ra,
                  [&](SDBlkAbbrRef *element, std::int64_t) {
                    *element = {SDBLK_NO_CODE, nullptr};
                    std::int32_t definition = 0;
                    if (number(field, &element->code)) {
                      element->blk = refer(field, element->code, &definition);
                    }
                    return 1;
                  });
}

bool Decoder::group(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry) {
  Arr *const outer = array_;
  const FieldList inner = list_of(facts);
  repetition_ = 0;
  return elements(field, entry, 1, &entry->value.ea, [&](Arr **element, std::int64_t) {
    const auto capacity = static_cast<std::uint32_t>(field.nsub);
    *element = arr_new_nested(outer, capacity, capacity * sizeof(SDBlkEntry));
    if (*element == nullptr) {
      no_memory(field);
      return 0;
    }
    group_ = &field;
    auto *entries = reinterpret_cast<SDBlkEntry *>((*element)->pairs + capacity);
    const bool read =
        (inner.is_numbers && numbers(*element, entries, field)) || list(*element, entries, inner);
    group_ = nullptr;
    array_ = outer;
    ++repetition_;
    stopped_ = false;  // ends its own list only
    return read ? 1 : 0;
  });
}

// A repetition of nothing but numbers of one picture, where all of them are there in that form.
bool Decoder::numbers(Arr *array, SDBlkEntry *entries, const SDBlkFieldDef &field) {
  std::array<double, kMostNumbers> values;
  const std::int32_t count = field.nsub;
  const std::int64_t width = std::int64_t{count} * kPictureWidth;
  if (source_.size() < width ||
      picture::read_fields(source_.bytes(), kPictureWidth, count, values.data()) != count) {
    return false;
  }
  for (std::int32_t i = 0; i < count; ++i) {
    start_entry(field.sub[i], &entries[i]);
    entries[i].value.d = values[static_cast<std::size_t>(i)];
    arr_append_constant(array, field.sub[i].key, &entries[i]);
  }
  source_.take(width);
  return true;
}

// ---- lists ----

bool Decoder::field(const SDBlkFieldDef &field, const FieldFacts &facts, SDBlkEntry *entry) {
  const bool big = big_endian_;
  switch (facts.conversion) {
    case Conversion::text: return text(field, entry);
    case Conversion::digits: integer(field, entry); break;
    case Conversion::byte:
      binary<1>(field, entry, [&](const char *p) { entry->value.i = byte_at(p); });
      break;
    case Conversion::ubyte:
      binary<1>(field, entry, [&](const char *p) { entry->value.i = ubyte_at(p); });
      break;
    case Conversion::word:
      binary<2>(field, entry, [&](const char *p) { entry->value.i = word_at(p, big); });
      break;
    case Conversion::uword:
      binary<2>(field, entry, [&](const char *p) { entry->value.i = load_u16(p, big); });
      break;
    case Conversion::integer32:
      binary<4>(field, entry, [&](const char *p) { entry->value.i = integer32_at(p, big); });
      break;
    case Conversion::lookup_code: return lookup_code(field, entry);
    case Conversion::real:
      entry->value.d = real(field);
      if (std::isnan(entry->value.d)) entry->definition = kNoValue;
      break;
    case Conversion::time: time(field, entry); break;
    case Conversion::btime: binary_time(field, entry); break;
    case Conversion::ieee_float:
      entry->value.d = kNoReal;
      binary<4>(field, entry, [&](const char *p) { entry->value.d = load_float(p, big); });
      break;
    case Conversion::int_array: return integers(field, entry);
    case Conversion::double_array: return reals(field, entry);
    case Conversion::string_array: return texts(field, entry);
    case Conversion::group_array: return group(field, facts, entry);
    case Conversion::ref_array: return references(field, entry);
    case Conversion::nothing: entry->count = 0; return true;
  }
  if (entry->definition != kNoValue) entry->ref = refer(field, entry->value.i, &entry->definition);
  return true;
}

bool Decoder::list(Arr *array, SDBlkEntry *entries, const FieldList &list) {
  array_ = array;
  FieldFacts made;
  for (std::int64_t i = 0; i < list.count && !stopped_; ++i) {
    const SDBlkFieldDef &row = list.fields[i];
    if (source_.is_empty()) {
      if (is_counted(row)) check_count(count_of(array, row), row, 0);
      continue;
    }
    start_entry(row, &entries[i]);
    if (!field(row, list.facts_at(i, &made), &entries[i])) return false;
    arr_append_constant(array, row.key, &entries[i]);
  }
  return true;
}

// Keeps a copy of a blockette that defines a code, where copies are wanted.
bool keep_definition(const FieldsOf &of, std::int32_t defined) {
  if (defined == 0 || of.whole->options.keep == SDBLK_KEEP_NUMBERS) return true;
  const bool again = of.whole->definitions.get(defined)->count > 1;
  if (again && of.whole->options.keep == SDBLK_KEEP_FIRST) return true;
  SDBlk *copy = sdblk_copy(of.block);
  if (copy == nullptr) return false;
  copy->next = nullptr;
  of.whole->definitions.keep(defined, copy);
  return true;
}

bool no_memory_for(const SDBlk &block) {
  elog_log(1, "sdblk_unstuffblk: no memory for the fields of B%4.4d at %c:%6.6d\n",
           block.blockette_type, block.record_type, block.logical_sequence);
  return false;
}

// Takes the value from the time of a block that was decoded by its layout where it is none.
void check_time(const FieldsOf &of, const Layout &layout, const char *bytes) {
  if (layout.time_field < 0) return;
  const char *time = bytes + layout.time_offset;
  if (is_whole_binary_time(time, of.block->big_endian != 0)) return;
  const auto field = static_cast<std::uint32_t>(layout.time_field);
  auto *entry = static_cast<SDBlkEntry *>(of.block->contents->pairs[field].value);
  Decoder(of, time, kBinaryTimeSize).binary_time(*entry->def, entry);
}

}  // namespace

bool decode_fields(const FieldsOf &of, const char *bytes, std::int64_t size) {
  const SDBlkDef &def = *of.block->blkdef;
  Arr *array = of.block->contents;
  const auto count = static_cast<std::uint32_t>(def.nfields);
  if (arr_pool(array) == nullptr || !arr_reserve(array, count)) return no_memory_for(*of.block);
  auto *entries = array->pool->take_array<SDBlkEntry>(count);
  if (entries == nullptr) return no_memory_for(*of.block);
  Decoder decoder(of, bytes, size);
  return decoder.list(array, entries, list_of(def)) && keep_definition(of, decoder.defined());
}

bool decode_data_fields(const FieldsOf &of, const char *bytes, std::int64_t size) {
  const Layout *layout = find_layout(*of.block->blkdef);
  if (layout == nullptr || layout->bytes > size) return decode_fields(of, bytes, size);
  if (!unpack_layout(*layout, of.block->contents, bytes, of.block->big_endian != 0)) {
    return no_memory_for(*of.block);
  }
  check_time(of, *layout, bytes);
  return true;
}

}  // namespace tarvik
