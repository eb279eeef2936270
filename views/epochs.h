// Which blockettes belong to a station or channel epoch, and what their fields refer to.
//
// A reference stands for what defines its code before the block that holds it.  Asked while a
// volume is read, or later: blockettes that define a code after the block are left out.
#ifndef VIEWS_EPOCHS_H_
#define VIEWS_EPOCHS_H_

#include <cstdint>
#include <functional>

#include "seed/whole.h"

namespace tarvik {

// The abbreviation blockette that an integer of a block refers to, or null: the first one that
// defines the code, where it stands before the block.  Owned by the volume.
const SDBlk *referred(const SDBlk &block, const SDBlkEntry &entry);

// ---- epochs ----

// What a block is to the epochs of a volume.
enum class Role : std::uint8_t {
  none,             // also what belongs to no station or channel
  station,          // a blockette 50
  channel,          // a blockette 52
  station_comment,  // a blockette 51
  channel_comment,  // a blockette 59
  response          // a blockette 53 to 58 or 60 to 62
};

// Tells roles, block by block in the order of a volume.
class Roles {
 public:
  Role of(const SDBlk &block);

 private:
  bool in_station_ = false;
  bool in_channel_ = false;
};

// ---- responses ----

// One blockette of a response: one of a channel's own, or one of the dictionary that a blockette 60
// names, in the form of its counterpart.
struct Response {
  std::int32_t type;        // 53 to 58, 61 or 62
  const SDBlk *block;       // of this type, or of 41 to 48
  const SDBlkEntry *stage;  // that of the blockette 60 for one of 41 to 48; else null

  // The entry of a field, by its position in the counterpart; null where it is absent.
  [[nodiscard]] const SDBlkEntry *entry(std::int32_t position) const;
};

// A field of a response blockette, found once by its key in the counterpart.
class ResponseField {
 public:
  // The field must exist.
  ResponseField(std::int32_t type, const char *key);

  // The entry, or nullptr where the field is absent or has no value.
  [[nodiscard]] const SDBlkEntry *in(const Response &response) const {
    const SDBlkEntry *entry = response.entry(position_);
    return entry != nullptr && sdblk_has_value(entry) ? entry : nullptr;
  }

 private:
  std::int32_t position_ = 0;
};

// Hands out the blockettes that a block of the role response stands for, until take gives false.
void for_each_response(const SDBlk &block, const std::function<bool(const Response &)> &take);

}  // namespace tarvik

#endif  // VIEWS_EPOCHS_H_
