// How the fields of the catalogue become JSON, worked out once for each definition.
#ifndef VIEWS_PLAN_H_
#define VIEWS_PLAN_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
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

// A key as it stands in an object, after another member: ,"key":
class MemberKey {
 public:
  explicit MemberKey(std::string_view key);

  // Writes all of the room, as a copy of a fixed size needs no call; the end of the key.
  static constexpr std::size_t kRoom = 32;
  char *put(char *out) const {
    std::memcpy(out, text_.data(), kRoom);
    return out + size_;
  }
  // As the first member: "key":
  [[nodiscard]] std::string_view as_first() const { return {text_.data() + 1, size_ - 1}; }

 private:
  std::array<char, kRoom> text_ = {};
  std::size_t size_ = 0;
};

// Fields that stand one after the other: those of a blockette, or of a group.
struct Plan {
  struct Field {
    const SDBlkFieldDef *def;
    Form form;
    bool refers;  // to an abbreviation
    MemberKey key;
    std::vector<Plan> group;  // of a group: its one plan
  };
  std::string name;  // of a definition, as a JSON text; of a group empty
  const SDBlkFieldDef *defs = nullptr;
  std::vector<Field> fields;
  bool has_references = false;  // fields of its own that refer to abbreviations
  bool defines = false;         // a code of an abbreviation
  // That all fields take, where each has its width and none has to do with abbreviations, so that
  // their text follows from so many bytes; else 0.
  std::size_t bytes = 0;
};

// The plans of the catalogue's definitions, in their order.  Made at the first call; any thread may
// ask.
const Plan *plans();
inline const Plan &plan_of(const SDBlkDef &def) { return plans()[&def - seed_blkdefs]; }

// The definition of a type that the catalogue has.
const SDBlkDef &definition_of(std::int32_t type);

// What a field's value is in JSON.
Form form_of(const SDBlkFieldDef &def);

}  // namespace tarvik

#endif  // VIEWS_PLAN_H_
