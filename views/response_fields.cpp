#include "views/response_fields.h"

#include <string_view>

#include "views/fields.h"
#include "views/json.h"
#include "views/places.h"

namespace tarvik {
namespace {

using Uses = std::vector<FieldUse>;

Use use_of(const SDBlkDef &def, std::int32_t position) {
  const std::string_view key = def.fields[position].key;
  if (key == "stage") return Use::stage;
  if (key == "iunits") return Use::input_units;
  if (key == "ounits") return Use::output_units;
  if (def.type == kGainType && key == "sens") return Use::value;
  if (def.type == kGainType && key == "freq") return Use::frequency;
  if (!may_be_split(def.type)) return Use::plain;
  if (def.fields[position].number_entry != nullptr) return Use::elements;
  // A count stands directly before what it counts.
  const bool counts =
      position + 1 < def.nfields && def.fields[position + 1].number_entry != nullptr;
  return counts ? Use::count : Use::plain;
}

Uses make_uses(const SDBlkDef &def) {
  Uses uses;
  std::size_t repetition = 0;
  const Plan &plan = plan_of(def);
  for (std::int32_t i = 0; i < def.nfields; ++i) {
    const Use use = use_of(def, i);
    uses.push_back({&plan.fields[static_cast<std::size_t>(i)], use, repetition});
    if (use == Use::elements) ++repetition;
  }
  return uses;
}

constexpr std::int32_t kFirstType = 53;
constexpr std::int32_t kLastType = 62;

}  // namespace

const Uses &uses_of(std::int32_t type) {
  static const auto all = [] {
    std::vector<Uses> uses(kLastType - kFirstType + 1);
    for (const SDBlkDef &def : seed_blkdefs) {
      if (def.type < kFirstType || def.type > kLastType) continue;
      uses[static_cast<std::size_t>(def.type - kFirstType)] = make_uses(def);
    }
    return uses;
  }();
  return all[static_cast<std::size_t>(type - kFirstType)];
}

void put_response_value(TextBuffer *out, const Response &response, const SDBlkEntry &entry,
                        const Plan::Field &field) {
  static const Place unit_name(34, "name");
  if (!field.refers || !sdblk_has_value(&entry)) {
    put_value(out, *response.block, entry, field);
    return;
  }
  const SDBlk *unit = referred(*response.block, entry);
  const SDBlkEntry *name = unit == nullptr ? nullptr : unit_name.value(*unit);
  if (name == nullptr) {
    out->put("null");
  } else {
    put_json_text(out, name->value.s);
  }
}

}  // namespace tarvik
