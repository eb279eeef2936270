// What is worked out from a field's row: what the decoder does with its bytes, and how the listing
// names it.  For the catalogue that is done when it is compiled, for a definition that a program has
// made, copied or changed at each use.
#ifndef SEED_FACTS_H_
#define SEED_FACTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "seed/conversion.h"
#include "seed/line_format.h"
#include "seed/sdblk.h"

namespace tarvik {

struct FieldFacts {
  const SDBlkFieldDef *def;    // the row
  std::array<char, 24> label;  // "key        = ", as listed; not ended by a 0
  std::uint8_t label_size;     // characters in label; 0 for a key that is too long for it
  std::uint8_t key_size;       // characters in the key, where there is a label
  Conversion conversion;
  bool is_numbers;     // a group of the catalogue: its fields are numbers of one picture, and few
  std::int32_t inner;  // the same: how far after these facts those of its fields start

  [[nodiscard]] std::string_view key() const {
    return label_size == 0 ? std::string_view(def->key) : std::string_view(def->key, key_size);
  }
};

// Of a group of numbers: the width of each, and how many there are at most.
inline constexpr std::int32_t kPictureWidth = 12;
inline constexpr std::int32_t kMostNumbers = 8;

// What a row says on its own.
constexpr FieldFacts facts_of(const SDBlkFieldDef &field) {
  FieldFacts facts = {};
  facts.def = &field;
  facts.conversion = conversion_of(field.kind, field.format);
  const std::string_view key = field.key;
  static_assert(kNameColumns + kEquals.size() <= std::tuple_size_v<decltype(facts.label)>);
  if (key.size() + kEquals.size() > facts.label.size()) return facts;
  std::size_t size = 0;
  for (const char c : key) facts.label[size++] = c;
  facts.key_size = static_cast<std::uint8_t>(size);
  while (size < kNameColumns) facts.label[size++] = ' ';
  for (const char c : kEquals) facts.label[size++] = c;
  facts.label_size = static_cast<std::uint8_t>(size);
  return facts;
}

// Fields in their order, with their facts if they are the catalogue's own.
struct FieldList {
  const SDBlkFieldDef *fields;
  std::int64_t count;
  const FieldFacts *facts;  // or nullptr
  bool is_numbers;          // FieldFacts::is_numbers

  // Those of a field; what is not there yet is worked out into *made.
  const FieldFacts &facts_at(std::int64_t i, FieldFacts *made) const {
    if (facts != nullptr) [[likely]]
      return facts[i];
    *made = facts_of(fields[i]);
    return *made;
  }
};

// The facts of each definition of the catalogue: those of its fields in their order, and after them
// those of its groups' fields.
extern const std::array<const FieldFacts *, SEED_BLKDEFS_COUNT> catalogue_facts;

// Those of a definition.  Only a definition that stands in the catalogue has its facts there.
inline FieldList list_of(const SDBlkDef &def) {
  const std::uintptr_t distance =
      reinterpret_cast<std::uintptr_t>(&def) - reinterpret_cast<std::uintptr_t>(seed_blkdefs);
  const FieldFacts *facts = nullptr;
  if (distance < sizeof seed_blkdefs) [[likely]]
    facts = catalogue_facts[distance / sizeof(SDBlkDef)];
  return {def.fields, def.nfields, facts, false};
}

// Those of a group.
inline FieldList list_of(const FieldFacts &group) {
  return {group.def->sub, group.def->nsub, group.inner == 0 ? nullptr : &group + group.inner,
          group.is_numbers};
}

}  // namespace tarvik

#endif  // SEED_FACTS_H_
