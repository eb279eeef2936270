// How the fields of the catalogue become JSON, worked out once for each definition.
#ifndef VIEWS_PLAN_H_
#define VIEWS_PLAN_H_

#include <cstdint>
#include <string>
#include <vector>

#include "seed/sdblk.h"

namespace tarvik {

// What a field's value is in JSON.
enum class Form : std::uint8_t {
  text,
  integer,
  unsigned_integer,
  real,
  time,
  texts,
  reals,
  integers,
  references,
  group
};

// Fields that stand one after the other: those of a blockette, or of a group.
struct Plan {
  struct Field {
    const SDBlkFieldDef *def;
    Form form;
    bool refers;              // to an abbreviation
    std::string key;          // "key": with its quotes and colon
    std::vector<Plan> group;  // of a group: its one plan
  };
  const SDBlkFieldDef *defs = nullptr;
  std::vector<Field> fields;
  bool has_references = false;  // fields of its own that refer to abbreviations
};

// The plan of a definition of the catalogue.  Made at the first call for all of them; any thread
// may ask.
const Plan &plan_of(const SDBlkDef &def);

// What a field's value is in JSON.
Form form_of(const SDBlkFieldDef &def);

}  // namespace tarvik

#endif  // VIEWS_PLAN_H_
