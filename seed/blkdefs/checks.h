// What must hold for the catalogue, and is proved when it is compiled.
#ifndef SEED_BLKDEFS_CHECKS_H_
#define SEED_BLKDEFS_CHECKS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "seed/conversion.h"
#include "seed/format.h"
#include "seed/sdblk.h"

namespace tarvik::blkdefs {

using Definitions = std::span<const SDBlkDef>;
using Fields = std::span<const SDBlkFieldDef>;

// Groups that name a count which their blockette does not have, although it has one under another
// key.  Such a blockette decodes up to the group, and the listing shows the fault.  They stay as
// they are, because the listings of existing volumes depend on them.
struct MiscountedGroup {
  std::int32_t type;
  std::string_view key;
};
inline constexpr MiscountedGroup miscounted_groups[] = {
    {46, "corners"},    // names "nfaps"; the count is "ncorners"
    {48, "histories"},  // names "ndens"; the count is "nhistories"
    {56, "corners"},    // names "nfaps"; the count is "ncorners"
    {58, "histories"},  // names "ndens"; the count is "nhistories"
    {73, "segs"},       // names "ndata"; the count is "nsegs"
};

constexpr Fields fields_of(const SDBlkDef &def) {
  return {def.fields, static_cast<std::size_t>(def.nfields)};
}

constexpr Fields group_of(const SDBlkFieldDef &field) {
  return {field.sub, static_cast<std::size_t>(field.nsub)};
}

// Whether the check holds for an array of fields and for the groups in it.
template <typename Check>
constexpr bool holds_within(Fields fields, std::int32_t type, Check check) {
  if (!check(fields, type)) return false;
  for (const SDBlkFieldDef &field : fields) {
    if (field.nsub > 0 && !holds_within(group_of(field), type, check)) return false;
  }
  return true;
}

// Whether check(fields, blockette type) holds for every array of fields.
template <typename Check>
constexpr bool every_array(Definitions defs, Check check) {
  for (const SDBlkDef &def : defs) {
    if (!holds_within(fields_of(def), def.type, check)) return false;
  }
  return true;
}

// Whether check(field) holds for every field.
template <typename Check>
constexpr bool every_field(Definitions defs, Check check) {
  return every_array(defs, [check](Fields fields, std::int32_t) {
    return std::all_of(fields.begin(), fields.end(), check);
  });
}

constexpr bool types_ascend_within_index(Definitions defs) {
  std::int32_t previous = -1;
  for (const SDBlkDef &def : defs) {
    if (def.type <= previous || def.type >= SEED_BLKDEFS_INDEX_SIZE) return false;
    previous = def.type;
  }
  return true;
}

constexpr bool id_matches_type(const SDBlkDef &def) {
  const std::string_view id = def.id;
  if (def.type == SDBLK_DATA_RECORD) return id == "DATA";
  if (id.size() != 5 || id.front() != 'B') return false;
  std::int32_t number = 0;
  for (const char digit : id.substr(1)) number = number * 10 + (digit - '0');
  return number == def.type;
}

constexpr bool ids_match_types(Definitions defs) {
  return std::all_of(defs.begin(), defs.end(), id_matches_type);
}

constexpr bool keys_are_unique(Fields fields, std::int32_t) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (std::string_view(fields[i].key) == fields[j].key) return false;
    }
  }
  return true;
}

constexpr bool is_miscounted(std::int32_t type, std::string_view key) {
  for (const MiscountedGroup &group : miscounted_groups) {
    if (group.type == type && group.key == key) return true;
  }
  return false;
}

constexpr bool has_integer(Fields fields, std::string_view key) {
  for (const SDBlkFieldDef &field : fields) {
    if (key == field.key) return field.kind == SDBLK_INT;
  }
  return false;
}

// The count of what repeats stands before it, but for the miscounted groups, whose count stands
// nowhere.
constexpr bool counts_stand_before(Fields fields, std::int32_t type) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const SDBlkFieldDef &field = fields[i];
    if (field.number_entry == nullptr) continue;
    if (has_integer(fields.first(i), field.number_entry) == is_miscounted(type, field.key)) {
      return false;
    }
  }
  return true;
}

constexpr bool is_defined(Definitions defs, std::string_view abbr_key) {
  for (const SDBlkDef &def : defs) {
    for (const SDBlkFieldDef &field : fields_of(def)) {
      if (field.kind == SDBLK_ABBR_KEY && abbr_key == field.key) return true;
    }
  }
  return false;
}

constexpr bool reference_is_sane(Definitions defs, const SDBlkFieldDef &field) {
  if (field.abbr_key == nullptr) return field.kind != SDBLK_REF_ARRAY;
  return (field.kind == SDBLK_INT || field.kind == SDBLK_REF_ARRAY) &&
         is_defined(defs, field.abbr_key);
}

constexpr bool references_are_sane(Definitions defs) {
  return every_field(defs,
                     [defs](const SDBlkFieldDef &field) { return reference_is_sane(defs, field); });
}

// Bytes that a binary conversion takes, 0 for a text conversion.
constexpr std::int32_t binary_width(Conversion conversion) {
  switch (conversion) {
    case Conversion::byte:
    case Conversion::ubyte: return 1;
    case Conversion::word:
    case Conversion::uword: return 2;
    case Conversion::integer32:
    case Conversion::ieee_float: return 4;
    case Conversion::btime: return 10;
    default: return 0;
  }
}

// A picture of a number is as wide as its field; both are read within one number's reach.
constexpr bool number_width_is_sane(const SDBlkFieldDef &field) {
  return field.width <= kNumberWidth &&
         std::string_view(field.format).size() == static_cast<std::size_t>(field.width);
}

constexpr bool width_is_sane(const SDBlkFieldDef &field) {
  const std::int32_t binary = binary_width(conversion_of(field.kind, field.format));
  switch (field.stype) {
    case 'B': return binary > 0 && field.width == binary;
    case 'A': return binary == 0 && field.width > 0 && field.width < kFieldTextSize;
    case 'D':
    case 'F': return binary == 0 && field.width > 0 && number_width_is_sane(field);
    case 'V':
      if (field.width == 0) return field.kind == SDBLK_STRING_ARRAY;
      return binary == 0 && field.width > 0 && field.width < kFieldTextSize;
    default: return field.stype == 0 && field.width == 0;
  }
}

// A group's array is told by its count: g++ takes no test of an inline array's address against null
// for a constant when it adds the sanitizers' checks.
constexpr bool group_is_sane(const SDBlkFieldDef &field) {
  if (field.kind == SDBLK_GROUP_ARRAY) return field.stype == 0 && field.nsub > 0;
  return field.stype != 0 && field.nsub == 0 && field.sub == nullptr;
}

constexpr bool is_repeating_kind(std::int32_t kind) {
  return kind == SDBLK_INT_ARRAY || kind == SDBLK_DOUBLE_ARRAY || kind == SDBLK_STRING_ARRAY ||
         kind == SDBLK_GROUP_ARRAY || kind == SDBLK_REF_ARRAY;
}

constexpr bool repetition_is_sane(const SDBlkFieldDef &field) {
  return is_repeating_kind(field.kind) == (field.number_entry != nullptr);
}

constexpr bool text_is_there(const SDBlkFieldDef &field) {
  return *field.key != '\0' && *field.title != '\0' && *field.description != '\0';
}

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_CHECKS_H_
