// Fields that views ask for, found once by their key.
#ifndef VIEWS_PLACES_H_
#define VIEWS_PLACES_H_

#include <cstdint>

#include "seed/whole.h"
#include "views/plan.h"

namespace tarvik {

// A field of a definition of the catalogue.  Any thread may ask.
class Place {
 public:
  // The field must exist.
  Place(std::int32_t type, const char *key);

  // The entry in a block of the type, or nullptr where the field is absent.
  [[nodiscard]] const SDBlkEntry *in(const SDBlk &block) const {
    return sdblk_entry_at(block.contents, fields_, position_);
  }
  // The same, but nullptr also where the field has no value.
  [[nodiscard]] const SDBlkEntry *value(const SDBlk &block) const {
    const SDBlkEntry *entry = in(block);
    return entry != nullptr && sdblk_has_value(entry) ? entry : nullptr;
  }
  // "" where the field is absent.
  [[nodiscard]] const char *text(const SDBlk &block) const;

  // What its value is in JSON.
  [[nodiscard]] const Plan::Field &field() const { return *field_; }

 private:
  const SDBlkFieldDef *fields_ = nullptr;
  std::int32_t position_ = 0;
  const Plan::Field *field_ = nullptr;
};

}  // namespace tarvik

#endif  // VIEWS_PLACES_H_
