#include "seed/layout.h"

#include <bit>
#include <cstddef>
#include <cstdint>

#include "seed/binary.h"
#include "seed/blkdefs/blkdefs.h"
#include "seed/conversion.h"
#include "seed/scan.h"
#include "support/arr_impl.h"
#include "support/digits.h"
#include "support/line.h"

namespace {

// Where the decoded fields of one definition go: one piece of the array's pool.
struct Place {
  ArrPair *pairs;
  SDBlkEntry *entries;
  char *texts;
};

// False when memory runs out.
bool take_place(const SDBlkDef &def, const blkdefs::Layout &layout, Arena *pool, Place *place) {
  const auto count = static_cast<std::size_t>(def.nfields);
  const std::size_t fields = count * (sizeof(ArrPair) + sizeof(SDBlkEntry));
  char *piece =
      static_cast<char *>(pool->take(fields + static_cast<std::size_t>(layout.text_room)));
  if (piece == nullptr) return false;
  place->pairs = reinterpret_cast<ArrPair *>(piece);
  place->entries = reinterpret_cast<SDBlkEntry *>(piece + count * sizeof(ArrPair));
  place->texts = piece + fields;
  return true;
}

// Texts of up to so many characters are trimmed in one register.
constexpr std::int32_t kWordText = 7;

constexpr std::uint64_t first_bytes(std::int32_t count) {
  return (std::uint64_t{1} << (8 * count)) - 1;
}

// trimmed_field of up to seven characters, of which the first is the lowest byte of word, behind
// which all is 0.  The result is in the same form.
std::uint64_t trimmed_word(std::uint64_t word, std::int32_t width) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  // The lowest of the bits set here is exact: the first 0 byte's highest.
  const std::uint64_t zeros = (word - kOnes) & ~word & (kOnes << 7);
  std::int32_t size = std::countr_zero(zeros) / 8;
  if (size < width) word &= first_bytes(size);
  const auto byte = [&](std::int32_t at) { return static_cast<char>(word >> (8 * at)); };
  while (size > 0 && is_space(byte(size - 1))) --size;
  word &= first_bytes(size);
  while (is_space(byte(0))) word >>= 8;
  return word;
}

// Eight bytes must be readable at the field and writable at the text.
void keep_word(const char *field, std::int32_t width, char *text) {
  store_eight(text, trimmed_word(load_eight(field) & first_bytes(width), width));
}

// A text behind which the fields go on for rest bytes, itself included.
void keep_text(const char *field, std::int32_t width, std::int32_t rest, char *text) {
  if (width <= kWordText && rest >= 8) {
    keep_word(field, width, text);
  } else {
    *put_text(text, trimmed_field({field, static_cast<std::size_t>(width)})) = '\0';
  }
}

template <bool big_endian>
void unpack(const SDBlkDef &def, const char *bytes, const char *end, Place place) {
  const SDBlkFieldDef *last = def.fields + def.nfields;
  SDBlkEntry *entry = place.entries;
  ArrPair *pair = place.pairs;
  for (const SDBlkFieldDef *field = def.fields; field != last; ++field, ++entry, ++pair) {
    pair->key = field->key;
    pair->value = entry;
    entry->def = field;
    entry->ref = nullptr;
    entry->count = 1;
    entry->pooled = 1;
    const std::int32_t width = field->width;
    switch (static_cast<Conversion>(field->conversion)) {
      case Conversion::byte: entry->value.i = byte_at(bytes); break;
      case Conversion::ubyte: entry->value.i = ubyte_at(bytes); break;
      case Conversion::word: entry->value.i = word_at(bytes, big_endian); break;
      case Conversion::uword: entry->value.i = load_u16(bytes, big_endian); break;
      case Conversion::integer32: entry->value.i = integer32_at(bytes, big_endian); break;
      case Conversion::ieee_float: entry->value.d = load_float(bytes, big_endian); break;
      case Conversion::btime: entry->value.d = binary_time_at(bytes, big_endian); break;
      default:
        keep_text(bytes, width, static_cast<std::int32_t>(end - bytes), place.texts);
        entry->value.s = place.texts;
        place.texts += blkdefs::layout_text_room(width);
        break;
    }
    bytes += width;
  }
}

}  // namespace

int unpack_fields(Arr **contents, Feed feed, const WalkContext &context, const SDBlkDef &def) {
  Arr *array = *contents;
  const blkdefs::Layout layout = blkdefs::find_layout(def);
  const bool fits = layout.bytes > 0 && layout.bytes <= feed.remaining &&
                    def.nfields < static_cast<std::int32_t>(kArrIndexFrom);
  if (!fits || array == nullptr || array->count != 0 || array->pool == nullptr) {
    return walk_fields(contents, &feed, context, 1, def.nfields, def.fields, nullptr);
  }
  Place place = {};
  if (!take_place(def, layout, array->pool, &place)) return report_entry(def.fields[0]);
  const char *end = feed.cursor + layout.bytes;
  if (context.big_endian) {
    unpack<true>(def, feed.cursor, end, place);
  } else {
    unpack<false>(def, feed.cursor, end, place);
  }
  array->pairs = place.pairs;
  array->count = static_cast<std::uint32_t>(def.nfields);
  array->capacity = array->count;
  return 0;
}
