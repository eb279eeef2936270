#include "views/fields.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "support/line.h"
#include "views/json.h"

namespace tarvik {
namespace {

// Room for a key and a value of one piece.
constexpr std::size_t kValueRoom = std::max({kIntegerRoom, kRealRoom, kTimeRoom, kShortTextRoom});
constexpr std::size_t kMemberRoom = MemberKey::kRoom + kValueRoom;

char *put_null(char *out) { return put_text(out, "null"); }

// Writes a value of one piece at out; nullptr for any other.
char *put_piece(char *out, const SDBlkEntry &entry, Form form) {
  if (!sdblk_has_value(&entry)) return put_null(out);
  switch (form) {
    case Form::integer: return put_integer(out, entry.value.i);
    case Form::unsigned_integer: return put_integer(out, static_cast<std::uint32_t>(entry.value.i));
    case Form::real: return put_json_real(out, entry.value.d);
    case Form::time: return put_json_time(out, entry.value.d);
    case Form::text: return put_short_json_text(out, entry.value.s);
    default: return nullptr;
  }
}

// Writes the fields of one list of a volume's blocks.
class Writer {
 public:
  Writer(TextBuffer *out, const SDBlkVol *vol) : out_(out), vol_(vol) {}

  // "{...}"; that of a repetition has its references as last key.
  void object(const Arr *contents, const Plan &plan) {
    all_members(contents, plan);
    out_->put('}');
  }
  void repetition(const Arr *contents, const Plan &plan) {
    const bool any = all_members(contents, plan);
    if (plan.has_references) references(contents, plan, any);
    out_->put('}');
  }
  // "refs":{...}, after a comma where something stands before.
  void references(const Arr *contents, const Plan &plan, bool after_some);
  void value(const SDBlkEntry &entry, const Plan::Field &field);
  // The members from one position to another, "{" before the first of all; where it ended, or
  // what is absent began.
  std::size_t members(const Arr *contents, const Plan &plan, std::size_t from, std::size_t to);

 private:
  // "{" and all members; whether there are any.
  bool all_members(const Arr *contents, const Plan &plan);
  void long_value(const SDBlkEntry &entry, const Plan::Field &field);
  char *put_reference(char *out, std::int32_t definition);

  // "[...]" with the elements of an array.
  template <typename Put>
  void array(std::int32_t count, Put put) {
    out_->put('[');
    for (std::int32_t i = 0; i < count; ++i) {
      if (i > 0) out_->put(',');
      put(i);
    }
    out_->put(']');
  }
  // The same with elements of one piece, each written where put is told.
  template <typename Put>
  void pieces(std::int32_t count, Put put) {
    char separator = '[';
    for (std::int32_t i = 0; i < count; ++i) {
      out_->commit(put(put_char(out_->reserve(1 + kValueRoom), separator), i));
      separator = ',';
    }
    if (count <= 0) out_->put('[');
    out_->put(']');
  }

  TextBuffer *out_;
  const SDBlkVol *vol_;
};

void Writer::value(const SDBlkEntry &entry, const Plan::Field &field) {
  char *end = put_piece(out_->reserve(kValueRoom), entry, field.form);
  if (end != nullptr) {
    out_->commit(end);
  } else {
    long_value(entry, field);
  }
}

void Writer::long_value(const SDBlkEntry &entry, const Plan::Field &field) {
  const auto &value = entry.value;
  switch (field.form) {
    case Form::texts:
      array(entry.count, [&](std::int32_t i) { put_json_text(out_, value.sa[i]); });
      return;
    case Form::reals:
      pieces(entry.count, [&](char *out, std::int32_t i) {
        return std::isnan(value.da[i]) ? put_null(out) : put_json_real(out, value.da[i]);
      });
      return;
    case Form::integers:
      pieces(entry.count, [&](char *out, std::int32_t i) { return put_integer(out, value.ia[i]); });
      return;
    case Form::references:
      pieces(entry.count, [&](char *out, std::int32_t i) {
        const std::int32_t code = value.ra[i].code;
        return code == SDBLK_NO_CODE ? put_null(out) : put_integer(out, code);
      });
      return;
    case Form::group:
      array(entry.count, [&](std::int32_t i) { repetition(value.ea[i], field.group.front()); });
      return;
    default: put_json_text(out_, value.s); return;
  }
}

std::size_t Writer::members(const Arr *contents, const Plan &plan, std::size_t from,
                            std::size_t to) {
  std::size_t position = from;
  for (; position < to; ++position) {
    const Plan::Field &field = plan.fields[position];
    const SDBlkEntry *entry =
        sdblk_entry_at(contents, plan.defs, static_cast<std::int32_t>(position));
    if (entry == nullptr) break;  // what follows is absent too
    char *out = out_->reserve(kMemberRoom);
    char *value = field.key.put(out);
    if (position == 0) *out = '{';  // in the place of the comma
    char *end = put_piece(value, *entry, field.form);
    out_->commit(end != nullptr ? end : value);
    if (end == nullptr) long_value(*entry, field);
  }
  return position;
}

bool Writer::all_members(const Arr *contents, const Plan &plan) {
  const bool any = members(contents, plan, 0, plan.fields.size()) > 0;
  if (!any) out_->put('{');
  return any;
}

char *Writer::put_reference(char *out, std::int32_t definition) {
  if (definition <= 0) return put_null(out);
  return put_integer(out, sdblk_definition_number(vol_, definition, 0));
}

void Writer::references(const Arr *contents, const Plan &plan, bool after_some) {
  bool any = false;
  std::int32_t position = -1;
  for (const Plan::Field &field : plan.fields) {
    ++position;
    if (!field.refers) continue;
    const SDBlkEntry *entry = sdblk_entry_at(contents, plan.defs, position);
    if (entry == nullptr) break;
    if (!sdblk_has_value(entry)) continue;
    out_->put(any ? "," : after_some ? ",\"refs\":{" : "\"refs\":{");
    any = true;
    out_->put(field.key.as_first());
    if (field.form == Form::references) {
      pieces(entry->count, [&](char *out, std::int32_t i) {
        const std::int32_t code = entry->value.ra[i].code;
        return put_reference(out, sdblk_definition_of(vol_, field.def->abbr_key, code));
      });
    } else {
      out_->commit(put_reference(out_->reserve(kIntegerRoom), entry->definition));
    }
  }
  if (any) out_->put('}');
}

}  // namespace

void put_fields(TextBuffer *out, const SDBlk &block, const Plan &plan) {
  Writer(out, block.vol).object(block.contents, plan);
}

void put_members(TextBuffer *out, const SDBlk &block, const Plan &plan, std::size_t from,
                 std::size_t to) {
  Writer(out, block.vol).members(block.contents, plan, from, to);
}

void put_references(TextBuffer *out, const SDBlk &block, const Plan &plan) {
  if (plan.has_references) Writer(out, block.vol).references(block.contents, plan, true);
}

void put_value(TextBuffer *out, const SDBlk &block, const SDBlkEntry &entry,
               const Plan::Field &field) {
  Writer(out, block.vol).value(entry, field);
}

}  // namespace tarvik
