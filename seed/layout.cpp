#include "seed/layout.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "seed/binary.h"
#include "seed/blkdefs/data.h"
#include "seed/conversion.h"
#include "seed/scan.h"
#include "support/digits.h"
#include "support/line.h"

namespace tarvik {

namespace {

// ---- places ----

consteval bool is_text(const SDBlkFieldDef &field) {
  return field.stype == 'A' && field.kind == SDBLK_STRING;
}

// A binary field of the catalogue is as wide as its conversion.
consteval bool has_place(const SDBlkFieldDef &field) {
  return (field.stype == 'B' || is_text(field)) && field.abbr_key == nullptr;
}

// The memory that a field's text takes, its 0 byte included; a multiple of eight.
consteval std::int32_t text_room(const SDBlkFieldDef &field) {
  return is_text(field) ? (field.width + 8) / 8 * 8 : 0;
}

// What the fields before a position take.
struct Extent {
  std::int32_t bytes;
  std::int32_t text_room;
};
consteval Extent extent(const SDBlkFieldDef *fields, std::size_t position) {
  Extent sum = {0, 0};
  for (std::size_t i = 0; i < position; ++i) {
    sum.bytes += fields[i].width;
    sum.text_room += text_room(fields[i]);
  }
  return sum;
}

// The only binary time among the fields, or -1.
consteval std::int32_t time_field(const SDBlkFieldDef *fields, std::size_t count) {
  std::int32_t found = -1;
  for (std::size_t i = 0; i < count; ++i) {
    if (conversion_of(fields[i].kind, fields[i].format) != Conversion::btime) continue;
    if (found >= 0) throw "a layout with two times";
    found = static_cast<std::int32_t>(i);
  }
  return found;
}

// ---- texts ----

// The lowest count bytes, seven at most.
constexpr std::uint64_t mask_of_first(std::uint32_t count) {
  return (std::uint64_t{1} << 8 * count % 64) - 1;
}

// trimmed_field of up to seven characters, of which the first is the lowest byte of word, after
// which all is 0.  The result is in the same form.
inline std::uint64_t trimmed_word(std::uint64_t word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  // The lowest of the bits set here is exact: the first 0 byte's highest.
  const std::uint64_t zeros = (word - kOnes) & ~word & (kOnes << 7);
  auto size = static_cast<std::uint32_t>(std::countr_zero(zeros)) / 8;
  const auto byte = [&](std::uint32_t at) { return static_cast<char>(word >> (8 * at)); };
  while (size > 0 && is_space(byte(size - 1))) --size;
  word &= mask_of_first(size);
  while (is_space(byte(0))) word >>= 8;
  return word;
}

// Keeps the text of a field; from it on the fields take kRest bytes.
template <std::int32_t kWidth, std::int32_t kRest>
void keep_text(const char *field, char *text) {
  if constexpr (kWidth < 8 && kRest >= 8) {
    store_eight(text, trimmed_word(load_eight(field) & mask_of_first(kWidth)));
  } else {
    *put_text(text, trimmed_field({field, static_cast<std::size_t>(kWidth)})) = '\0';
  }
}

// ---- fields ----

template <Conversion kConversion, bool kBigEndian>
std::int32_t integer_at(const char *bytes) {
  switch (kConversion) {
    case Conversion::byte: return byte_at(bytes);
    case Conversion::ubyte: return ubyte_at(bytes);
    case Conversion::word: return word_at(bytes, kBigEndian);
    case Conversion::uword: return load_u16(bytes, kBigEndian);
    default: return integer32_at(bytes, kBigEndian);
  }
}

// The decoded fields of one definition, in one piece of an array's pool.
template <const auto &kFields>
struct Decoded {
  static constexpr std::size_t kCount = std::size(kFields);
  static constexpr Extent kAll = extent(kFields, kCount);

  std::array<ArrPair, kCount> pairs;
  std::array<SDBlkEntry, kCount> entries;
  std::array<char, static_cast<std::size_t>(kAll.text_room)> texts;
};

template <const auto &kFields, std::size_t kPosition, bool kBigEndian>
void unpack_field(const char *record, Decoded<kFields> *decoded) {
  constexpr const SDBlkFieldDef &kField = kFields[kPosition];
  constexpr Conversion kConversion = conversion_of(kField.kind, kField.format);
  constexpr Extent kBefore = extent(kFields, kPosition);
  static_assert(has_place(kField));
  const char *bytes = record + kBefore.bytes;
  SDBlkEntry *entry = &decoded->entries[kPosition];
  decoded->pairs[kPosition] = {kField.key, entry};
  entry->def = &kField;
  entry->ref = nullptr;
  entry->count = 1;
  entry->pooled = 1;
  entry->definition = 0;
  if constexpr (kConversion == Conversion::text) {
    constexpr std::int32_t kRest = Decoded<kFields>::kAll.bytes - kBefore.bytes;
    entry->value.s = decoded->texts.data() + kBefore.text_room;
    keep_text<kField.width, kRest>(bytes, entry->value.s);
  } else if constexpr (kConversion == Conversion::btime) {
    entry->value.d = binary_time_at(bytes, kBigEndian);
  } else if constexpr (kConversion == Conversion::ieee_float) {
    entry->value.d = load_float(bytes, kBigEndian);
  } else {
    entry->value.i = integer_at<kConversion, kBigEndian>(bytes);
  }
}

template <const auto &kFields, bool kBigEndian>
void unpack(const char *record, void *memory) {
  auto *decoded = static_cast<Decoded<kFields> *>(memory);
  [&]<std::size_t... kPositions>(std::index_sequence<kPositions...>) {
    (unpack_field<kFields, kPositions, kBigEndian>(record, decoded), ...);
  }
  (std::make_index_sequence<std::size(kFields)>());
}

template <const auto &kFields>
consteval Layout make_layout() {
  static_assert(std::size(kFields) < kArrIndexFrom);
  static_assert(offsetof(Decoded<kFields>, pairs) == 0);
  constexpr std::int32_t kTime = time_field(kFields, std::size(kFields));
  return {kFields,
          static_cast<std::int32_t>(std::size(kFields)),
          Decoded<kFields>::kAll.bytes,
          sizeof(Decoded<kFields>),
          kTime,
          kTime < 0 ? 0 : extent(kFields, static_cast<std::size_t>(kTime)).bytes,
          unpack<kFields, true>,
          unpack<kFields, false>};
}

// Those that stand in nearly every record are found first.
constexpr Layout layouts[] = {
    make_layout<blkdefs::BDATA_blkdef>(), make_layout<blkdefs::B1000_blkdef>(),
    make_layout<blkdefs::B1001_blkdef>(), make_layout<blkdefs::B0100_blkdef>(),
    make_layout<blkdefs::B0200_blkdef>(), make_layout<blkdefs::B0201_blkdef>(),
    make_layout<blkdefs::B0300_blkdef>(), make_layout<blkdefs::B0310_blkdef>(),
    make_layout<blkdefs::B0320_blkdef>(), make_layout<blkdefs::B0390_blkdef>(),
    make_layout<blkdefs::B0395_blkdef>(), make_layout<blkdefs::B0400_blkdef>(),
    make_layout<blkdefs::B0405_blkdef>(), make_layout<blkdefs::B0500_blkdef>(),
};

// Apart from unpack_fields, which keeps everything in registers as long as it calls nothing that
// takes an address: it runs for each block of a data record.
[[gnu::noinline]] int walk(Arr **contents, Feed feed, const WalkContext &context,
                           const SDBlkDef &def) {
  return walk_fields(contents, &feed, context, 1, list_of(def), nullptr);
}

}  // namespace

const Layout *find_layout(const SDBlkDef &def) {
  for (const Layout &layout : layouts) {
    if (layout.fields == def.fields && layout.nfields == def.nfields) return &layout;
  }
  return nullptr;
}

bool unpack_layout(const Layout &layout, Arr *array, const char *bytes, bool big_endian) {
  void *memory = array->pool->take(layout.memory);
  if (memory == nullptr) return false;
  (big_endian ? layout.unpack_big : layout.unpack_little)(bytes, memory);
  array->pairs = static_cast<ArrPair *>(memory);
  array->count = static_cast<std::uint32_t>(layout.nfields);
  array->capacity = array->count;
  return true;
}

int unpack_fields(Arr **contents, Feed feed, const WalkContext &context, const SDBlkDef &def) {
  Arr *array = *contents;
  const Layout *layout = find_layout(def);
  if (layout == nullptr || layout->bytes > feed.remaining || array == nullptr ||
      array->count != 0 || array->pool == nullptr) {
    return walk(contents, feed, context, def);
  }
  return unpack_layout(*layout, array, feed.cursor, context.big_endian)
             ? 0
             : report_no_memory(def.fields[0]);
}

}  // namespace tarvik
