// A decoded block as text, as far as both ways of reading must agree on it.
#ifndef TESTS_UTIL_BLOCK_TEXT_H_
#define TESTS_UTIL_BLOCK_TEXT_H_

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

#include "seed/whole.h"

namespace block_text {

inline std::string text_of(double value) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%.17g", value);
  return text.data();
}

// Of a decimal number that was left blank, the 0 of strict reading.
inline std::string decimal_text_of(const SDBlkEntry &entry, double value) {
  return std::isnan(value) && entry.def->stype != 'B' ? "0" : text_of(value);
}

// Strict reading leaves the white space before a NUL, at which the text ends.
inline std::string_view trimmed_text_of(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\n\v\f\r") + 1);
}

// Groups that strict reading counts by another field, which their blockettes do not have.
inline bool is_counted_otherwise(std::string_view key) {
  return key == "corners" || key == "histories" || key == "segs";
}

inline void add_fields(const Arr *contents, const SDBlkFieldDef *fields, std::int32_t nfields,
                       std::string *out);

inline void add_value(const SDBlkEntry &entry, std::int32_t i, std::string *out) {
  switch (entry.def->kind) {
    case SDBLK_INT:
    case SDBLK_ABBR_KEY: *out += std::to_string(entry.value.i); break;
    case SDBLK_DOUBLE: *out += decimal_text_of(entry, entry.value.d); break;
    case SDBLK_STRING: *out += trimmed_text_of(entry.value.s); break;
    case SDBLK_INT_ARRAY: *out += std::to_string(entry.value.ia[i]); break;
    case SDBLK_DOUBLE_ARRAY: *out += decimal_text_of(entry, entry.value.da[i]); break;
    case SDBLK_STRING_ARRAY: *out += trimmed_text_of(entry.value.sa[i]); break;
    case SDBLK_REF_ARRAY: {
      const std::int32_t code = entry.value.ra[i].code;
      *out += std::to_string(code == SDBLK_NO_CODE ? 0 : code);
      break;
    }
    case SDBLK_GROUP_ARRAY:
      add_fields(entry.value.ea[i], entry.def->sub, entry.def->nsub, out);
      break;
    default: throw std::logic_error(entry.def->key);
  }
}

inline void add_fields(const Arr *contents, const SDBlkFieldDef *fields, std::int32_t nfields,
                       std::string *out) {
  for (std::int32_t position = 0; position < nfields; ++position) {
    const SDBlkEntry *entry = sdblk_entry_at(contents, fields, position);
    if (entry == nullptr || is_counted_otherwise(entry->def->key)) continue;
    *out += std::string(" ") + entry->def->key + "=";
    for (std::int32_t i = 0; i < entry->count; ++i) {
      *out += '(';
      add_value(*entry, i, out);
      *out += ')';
    }
    if (entry->ref != nullptr) {
      *out += "->" + std::to_string(entry->ref->blockette_type) + "@" +
              std::to_string(entry->ref->file_offset);
    }
  }
}

// Strict reading gives fields to data types in control records, and to chained types that are too
// large for the catalogue.
inline bool has_same_fields(const SDBlk &part) {
  if (part.blkdef == nullptr) return false;
  const bool is_control = part.data_ptr == nullptr;
  return part.blockette_type < (is_control ? SDBLK_DATA_RECORD : SEED_BLKDEFS_INDEX_SIZE);
}

// Where a block stands: of a data record, its record.
inline std::string place_of(const SDBlk &block) {
  return std::to_string(block.blockette_type) + "@" + std::to_string(block.file_offset) + " in " +
         std::to_string(block.record_offset) + " " + block.record_type + " #" +
         std::to_string(block.logical_sequence);
}
inline std::string text_of(const SDBlk &block) {
  std::string text = place_of(block);
  for (const SDBlk *part = &block; part != nullptr; part = part->next) {
    if (!has_same_fields(*part)) continue;
    text += std::string("\n ") + part->blkdef->id;
    add_fields(part->contents, part->blkdef->fields, part->blkdef->nfields, &text);
  }
  if (block.data_ptr != nullptr) text += block.big_endian != 0 ? " big" : " little";
  return text;
}

}  // namespace block_text

#endif  // TESTS_UTIL_BLOCK_TEXT_H_
