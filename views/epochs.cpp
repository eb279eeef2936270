#include "views/epochs.h"

#include <array>
#include <string_view>
#include <vector>

#include "seed/format.h"
#include "views/places.h"

namespace tarvik {
namespace {

constexpr std::int32_t kByDictionary = 60;
constexpr std::int32_t kFirstDictionary = 41;
// The counterparts of 41 to 48.
constexpr std::array<std::int32_t, 8> kCounterparts = {61, 62, 53, 54, 55, 56, 57, 58};

bool has_field(const SDBlkDef &def, std::string_view key) {
  for (std::int32_t i = 0; i < def.nfields; ++i) {
    if (key == def.fields[i].key) return true;
  }
  return false;
}

// Where the fields of a counterpart stand in its dictionary blockette: one after the other, but for
// those that only one of them has.
constexpr std::int32_t kStage = -1;

std::vector<std::int32_t> positions_in(std::int32_t dictionary) {
  const SDBlkDef &from = definition_of(dictionary);
  const SDBlkDef &to =
      definition_of(kCounterparts[static_cast<std::size_t>(dictionary - kFirstDictionary)]);
  std::vector<std::int32_t> positions;
  std::int32_t next = 1;  // the first is the code
  if (!has_field(to, "name")) ++next;
  for (std::int32_t i = 0; i < to.nfields; ++i) {
    const bool is_stage = std::string_view(to.fields[i].key) == "stage";
    positions.push_back(is_stage ? kStage : next++);
  }
  return next == from.nfields ? positions : std::vector<std::int32_t>();
}

const std::vector<std::int32_t> &dictionary_positions(std::int32_t type) {
  static const auto positions = [] {
    std::array<std::vector<std::int32_t>, kCounterparts.size()> all;
    for (std::size_t i = 0; i < all.size(); ++i) {
      all[i] = positions_in(kFirstDictionary + static_cast<std::int32_t>(i));
    }
    return all;
  }();
  return positions[static_cast<std::size_t>(type - kFirstDictionary)];
}

using Take = std::function<bool(const Response &)>;

// The blockettes of a code that stand before a blockette 60.
bool take_definitions(const SDBlk &block, std::int32_t definition, const SDBlkEntry *stage,
                      const Take &take) {
  const std::int64_t before = sdblk_block_number(&block);
  const std::int32_t count = sdblk_definitions(block.vol, definition);
  for (std::int32_t i = 0; i < count; ++i) {
    if (sdblk_definition_number(block.vol, definition, i) >= before) return true;
    const SDBlk *found = sdblk_definition_block(block.vol, definition, i);
    const std::int32_t from = found->blockette_type - kFirstDictionary;
    if (!take({kCounterparts[static_cast<std::size_t>(from)], found, stage})) return false;
  }
  return true;
}

bool take_stage(const SDBlk &block, const Arr *stage, const Take &take) {
  constexpr std::int32_t kNumber = 0;
  constexpr std::int32_t kResponses = 2;
  static const SDBlkFieldDef *const fields =
      Place(kByDictionary, "stages").field().group.front().defs;
  const SDBlkEntry *number = sdblk_entry_at(stage, fields, kNumber);
  const SDBlkEntry *responses = sdblk_entry_at(stage, fields, kResponses);
  if (responses == nullptr) return true;
  for (std::int32_t i = 0; i < responses->count; ++i) {
    const std::int32_t code = responses->value.ra[i].code;
    if (code == SDBLK_NO_CODE) continue;
    const std::int32_t definition =
        sdblk_definition_of(block.vol, fields[kResponses].abbr_key, code);
    if (!take_definitions(block, definition, number, take)) return false;
  }
  return true;
}

}  // namespace

const SDBlk *referred(const SDBlk &block, const SDBlkEntry &entry) {
  if (entry.definition <= 0) return nullptr;
  const bool before =
      sdblk_definition_number(block.vol, entry.definition, 0) < sdblk_block_number(&block);
  return before ? sdblk_definition_block(block.vol, entry.definition, 0) : nullptr;
}

// ---- epochs ----

Role Roles::of(const SDBlk &block) {
  switch (block.blockette_type) {
    case 50:
      in_station_ = true;
      in_channel_ = false;
      return Role::station;
    case 52: in_channel_ = true; return Role::channel;
    case 51: return in_station_ ? Role::station_comment : Role::none;
    case 59: return in_channel_ ? Role::channel_comment : Role::none;
    default: break;
  }
  return in_channel_ && is_response(block.blockette_type) ? Role::response : Role::none;
}

// ---- responses ----

const SDBlkEntry *Response::entry(std::int32_t position) const {
  const SDBlkFieldDef *fields = block->blkdef->fields;
  if (block->blockette_type == type) return sdblk_entry_at(block->contents, fields, position);
  const std::int32_t from =
      dictionary_positions(block->blockette_type)[static_cast<std::size_t>(position)];
  return from == kStage ? stage : sdblk_entry_at(block->contents, fields, from);
}

ResponseField::ResponseField(std::int32_t type, const char *key) {
  const SDBlkDef &def = definition_of(type);
  while (std::string_view(def.fields[position_].key) != key) ++position_;
}

void for_each_response(const SDBlk &block, const Take &take) {
  if (block.blockette_type != kByDictionary) {
    take({block.blockette_type, &block, nullptr});
    return;
  }
  static const Place stages(kByDictionary, "stages");
  const SDBlkEntry *entry = stages.value(block);
  if (entry == nullptr) return;
  for (std::int32_t i = 0; i < entry->count; ++i) {
    if (!take_stage(block, entry->value.ea[i], take)) return;
  }
}

}  // namespace tarvik
