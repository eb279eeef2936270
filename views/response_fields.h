// What the fields of response blockettes are for.
#ifndef VIEWS_RESPONSE_FIELDS_H_
#define VIEWS_RESPONSE_FIELDS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "views/epochs.h"
#include "views/lines.h"
#include "views/plan.h"

namespace tarvik {

inline constexpr std::int32_t kGainType = 58;

// Types of which a response may be split over several blockettes.
constexpr bool may_be_split(std::int32_t type) {
  return type == 53 || type == 54 || type == 55 || type == 61;
}

enum class Use : std::uint8_t {
  plain,
  stage,
  input_units,
  output_units,
  value,      // of a gain
  frequency,  // of a gain
  count,      // of elements, where a response may be split
  elements
};

struct FieldUse {
  const Plan::Field *field;
  Use use;
  std::size_t repetition;  // of count and elements: the first or the second
};

// The fields of a type from 53 to 62, in their order.
const std::vector<FieldUse> &uses_of(std::int32_t type);

// Writes a value as JSON, a reference to a unit as the unit's name.
void put_response_value(TextBuffer *out, const Response &response, const SDBlkEntry &entry,
                        const Plan::Field &field);

}  // namespace tarvik

#endif  // VIEWS_RESPONSE_FIELDS_H_
