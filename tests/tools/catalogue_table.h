// The catalogue as a table of tab-separated columns, to be compared with one that was made apart
// from the code.
#ifndef TESTS_TOOLS_CATALOGUE_TABLE_H_
#define TESTS_TOOLS_CATALOGUE_TABLE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"

namespace catalogue {

inline constexpr std::string_view headings =
    "# blockette\ttype\tid\tname\trecord types\tfields\tarray\tdescription\n"
    "# group\tarray\tfields\n"
    "# field\tarray\t#\tkey\ttype\twidth\tformat\tkind\tcounted by\tgroup\trefers to\ttitle\n";

// The groups by name, each with one field that repeats it.
struct NamedGroup {
  const char *name;
  std::int32_t type;
  std::string_view key;
};
inline constexpr NamedGroup named_groups[] = {
    {"B0011_stas", 11, "stas"},      {"B0012_spans", 12, "spans"},
    {"B0035_comps", 35, "comps"},    {"BXXXX_coefs", 42, "coefs"},
    {"BXXXX_pz", 43, "zeros"},       {"BXXXX_fap", 45, "faps"},
    {"BXXXX_corner", 46, "corners"}, {"BXXXX_calhist", 48, "histories"},
    {"B0060_stage", 60, "stages"},   {"BXXXX_mags", 71, "mags"},
    {"B0073_segs", 73, "segs"},      {"B0074_accels", 74, "accels"},
};

// The field that repeats the group, or a field without one when there is no such field.
inline SDBlkFieldDef field_with(const NamedGroup &group) {
  for (const SDBlkDef &def : seed_blkdefs) {
    if (def.type != group.type) continue;
    for (std::int32_t i = 0; i < def.nfields; ++i) {
      if (group.key == def.fields[i].key) return def.fields[i];
    }
  }
  return {};
}

// Groups are told apart by where they stand, so a copy of a shared group has no name.
inline std::string group_name(const SDBlkFieldDef *sub) {
  if (sub == nullptr) return "-";
  for (const NamedGroup &group : named_groups) {
    if (field_with(group).sub == sub) return group.name;
  }
  return "unknown";
}

inline std::string array_name(const SDBlkDef &def) {
  const std::string prefix = def.type == SDBLK_DATA_RECORD ? "B" : "";
  return prefix + def.id + "_blkdef";
}

inline std::string text_or_dash(const char *text) {
  return text == nullptr || *text == '\0' ? "-" : text;
}

inline std::string line(const std::vector<std::string> &columns) {
  std::string text;
  for (const std::string &column : columns) {
    if (!text.empty()) text += '\t';
    text += column;
  }
  return text + '\n';
}

inline std::string blockette_line(const SDBlkDef &def) {
  return line({"blockette", std::to_string(def.type), def.id, def.name, def.rectypes,
               std::to_string(def.nfields), array_name(def), text_or_dash(def.description)});
}

inline std::string field_line(const std::string &array, std::int32_t number,
                              const SDBlkFieldDef &field) {
  const bool cut = field.stype != 0;
  return line({"field", array, std::to_string(number), field.key,
               cut ? std::string(1, static_cast<char>(field.stype)) : "-",
               cut ? std::to_string(field.width) : "-", text_or_dash(field.format),
               std::to_string(field.kind), text_or_dash(field.number_entry), group_name(field.sub),
               text_or_dash(field.abbr_key), field.title});
}

inline std::string field_lines(const std::string &array, const SDBlkFieldDef *fields,
                               std::int32_t count) {
  std::string text;
  for (std::int32_t i = 0; i < count; ++i) text += field_line(array, i + 1, fields[i]);
  return text;
}

// Three heading lines, then a line for each blockette, for each group of fields and for each field,
// in catalogue order.  A column without a value shows as "-".
inline std::string table() {
  std::string text(headings);
  for (const SDBlkDef &def : seed_blkdefs) text += blockette_line(def);
  for (const NamedGroup &group : named_groups) {
    text += line({"group", group.name, std::to_string(field_with(group).nsub)});
  }
  for (const SDBlkDef &def : seed_blkdefs) {
    text += field_lines(array_name(def), def.fields, def.nfields);
  }
  for (const NamedGroup &group : named_groups) {
    const SDBlkFieldDef field = field_with(group);
    text += field_lines(group.name, field.sub, field.nsub);
  }
  return text;
}

}  // namespace catalogue

#endif  // TESTS_TOOLS_CATALOGUE_TABLE_H_
