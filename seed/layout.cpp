#include "seed/layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "seed/binary.h"
#include "seed/blkdefs/data.h"
#include "seed/conversion.h"
#include "seed/scan.h"
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
    entry->value.s = decoded->texts.data() + kBefore.text_room;
    *put_text(entry->value.s, trimmed_field({bytes, static_cast<std::size_t>(kField.width)})) =
        '\0';
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
constexpr Layout kLayouts[] = {
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
[[gnu::noinline]] int walk(Arr **contents, Cursor cursor, const WalkContext &context,
                           const SDBlkDef &def) {
  return walk_fields(contents, &cursor, context, 1, list_of(def), nullptr);
}

}  // namespace

const Layout *find_layout(const SDBlkDef &def) {
  for (const Layout &layout : kLayouts) {
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

int unpack_fields(Arr **contents, Cursor cursor, const WalkContext &context, const SDBlkDef &def) {
  Arr *array = *contents;
  const Layout *layout = find_layout(def);
  if (layout == nullptr || !cursor.has(layout->bytes) || array == nullptr || array->count != 0 ||
      array->pool == nullptr) {
    return walk(contents, cursor, context, def);
  }
  return unpack_layout(*layout, array, cursor.bytes(), context.big_endian)
             ? 0
             : report_no_memory(def.fields[0]);
}

}  // namespace tarvik
