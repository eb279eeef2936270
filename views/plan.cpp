#include "views/plan.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <string_view>

#include "views/json.h"

namespace tarvik {
namespace {

// Whether its width is known, and what it says follows from its bytes alone.
bool stands_alone(const SDBlkFieldDef &def) {
  return def.stype != 'V' && def.stype != 0 && def.number_entry == nullptr &&
         def.abbr_key == nullptr && def.kind != SDBLK_ABBR_KEY;
}

Plan make_plan(std::int32_t count, const SDBlkFieldDef *fields) {
  Plan plan;
  plan.defs = fields;
  bool alone = true;
  for (std::int32_t i = 0; i < count; ++i) {
    const SDBlkFieldDef &def = fields[i];
    Plan::Field field = {&def, form_of(def), def.abbr_key != nullptr, MemberKey(def.key), {}};
    if (field.form == Form::group) field.group.push_back(make_plan(def.nsub, def.sub));
    plan.has_references = plan.has_references || field.refers;
    plan.defines = plan.defines || def.kind == SDBLK_ABBR_KEY;
    plan.fields.push_back(std::move(field));
    plan.bytes += static_cast<std::size_t>(def.width);
    alone = alone && stands_alone(def);
  }
  if (!alone) plan.bytes = 0;
  return plan;
}

std::vector<Plan> make_plans() {
  std::vector<Plan> plans;
  plans.reserve(SEED_BLKDEFS_COUNT);
  for (const SDBlkDef &def : seed_blkdefs) {
    plans.push_back(make_plan(def.nfields, def.fields));
    plans.back().name = json_text(def.name);
  }
  return plans;
}

Form form_of_real(std::string_view format) {
  return format == "TIME" || format == "BTIME" ? Form::time : Form::real;
}

}  // namespace

// All keys of the catalogue fit.
MemberKey::MemberKey(std::string_view key) {
  for (const std::string_view part : {std::string_view(",\""), key, std::string_view("\":")}) {
    for (const char c : part) text_.at(size_++) = c;
  }
}

Form form_of(const SDBlkFieldDef &def) {
  const std::string_view format = def.format;
  switch (def.kind) {
    case SDBLK_INT:
    case SDBLK_ABBR_KEY: return format == "ULONG" ? Form::unsigned_integer : Form::integer;
    case SDBLK_DOUBLE: return form_of_real(format);
    case SDBLK_INT_ARRAY: return Form::integers;
    case SDBLK_DOUBLE_ARRAY: return Form::reals;
    case SDBLK_STRING_ARRAY: return Form::texts;
    case SDBLK_GROUP_ARRAY: return Form::group;
    case SDBLK_REF_ARRAY: return Form::references;
    default: return Form::text;
  }
}

const SDBlkDef &definition_of(std::int32_t type) {
  const auto *const end = seed_blkdefs + SEED_BLKDEFS_COUNT;
  const SDBlkDef *def =
      std::find_if(seed_blkdefs, end, [&](const SDBlkDef &d) { return d.type == type; });
  assert(def != end);
  return *def;
}

const Plan *plans() {
  static const std::vector<Plan> plans = make_plans();
  return plans.data();
}

}  // namespace tarvik
