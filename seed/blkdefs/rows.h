// The builders from which the catalogue's rows are made, one row for one field.
//
// Columns, in the order in which they stand in a row:
//
//   builder      what the row is: field, refers, defines, repeated, refs or group
//   key          name of the decoded entry, unique in its array
//   type         'A', 'D', 'F' fixed-width text; 'V' text up to a "~"; 'B' binary
//   width        characters or bytes; for 'V' the most that the standard allows, 0 without a limit
//   format       picture ("####", "[UN]"), conversion word ("TIME", "UWORD"), or ""
//   kind         the kind of value; not given where the builder says it
//   repetition   repeated, refs, group: key of the earlier field that holds the count;
//     and        group: the array of the fields that repeat;
//   reference    refers, refs: key of the field that defines the lookup codes
//   title        the field's name
//   description  one sentence on what it holds
//
// What a row leaves out is worked out here: counts come from the arrays.  A row that ends in "sic"
// keeps a slip on purpose: the listings show it, and other programs look for it.
#ifndef SEED_BLKDEFS_ROWS_H_
#define SEED_BLKDEFS_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "seed/sdblk.h"

namespace tarvik::blkdefs {

// A field that stands once.
constexpr SDBlkFieldDef field(const char *key, char type, std::int32_t width, const char *format,
                              std::int32_t kind, const char *title, const char *description) {
  SDBlkFieldDef def{};
  def.key = key;
  def.title = title;
  def.description = description;
  def.stype = static_cast<unsigned char>(type);
  def.width = width;
  def.format = format;
  def.kind = kind;
  return def;
}

// A lookup code: an integer that refers to the abbreviation that abbr_key defines.
constexpr SDBlkFieldDef refers(const char *key, char type, std::int32_t width, const char *format,
                               const char *abbr_key, const char *title, const char *description) {
  SDBlkFieldDef def = field(key, type, width, format, SDBLK_INT, title, description);
  def.abbr_key = abbr_key;
  return def;
}

// The lookup code that makes its blockette an abbreviation.
constexpr SDBlkFieldDef defines(const char *key, char type, std::int32_t width, const char *format,
                                const char *title, const char *description) {
  return field(key, type, width, format, SDBLK_ABBR_KEY, title, description);
}

// A field that stands as often as number_entry says.
constexpr SDBlkFieldDef repeated(const char *key, char type, std::int32_t width, const char *format,
                                 std::int32_t kind, const char *number_entry, const char *title,
                                 const char *description) {
  SDBlkFieldDef def = field(key, type, width, format, kind, title, description);
  def.number_entry = number_entry;
  return def;
}

// A lookup code that stands as often as number_entry says.
constexpr SDBlkFieldDef refs(const char *key, char type, std::int32_t width, const char *format,
                             const char *number_entry, const char *abbr_key, const char *title,
                             const char *description) {
  SDBlkFieldDef def =
      repeated(key, type, width, format, SDBLK_REF_ARRAY, number_entry, title, description);
  def.abbr_key = abbr_key;
  return def;
}

// A group of fields that stands as often as number_entry says.
template <std::size_t N>
constexpr SDBlkFieldDef group(const char *key, const char *number_entry,
                              const SDBlkFieldDef (&sub)[N], const char *title,
                              const char *description) {
  SDBlkFieldDef def =
      repeated(key, '\0', 0, "", SDBLK_GROUP_ARRAY, number_entry, title, description);
  def.nsub = static_cast<std::int32_t>(N);
  def.sub = sub;
  return def;
}

// A blockette.
template <std::size_t N>
constexpr SDBlkDef blockette(std::int32_t type, const char *id, const char *name,
                             const char *rectypes, const SDBlkFieldDef (&fields)[N],
                             const char *description) {
  return {type, id, name, description, rectypes, static_cast<std::int32_t>(N), fields};
}

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_ROWS_H_
