#include "views/fields.h"

#include <cmath>
#include <string_view>

#include "support/line.h"
#include "views/json.h"

namespace tarvik {
namespace {

// Writes the fields of one list of a volume's blocks.
class Writer {
 public:
  Writer(TextBuffer *out, const SDBlkVol *vol) : out_(out), vol_(vol) {}

  // "{...}"; that of a repetition has its references as last key.
  void object(const Arr *contents, const Plan &plan) {
    out_->put('{');
    members(contents, plan);
    out_->put('}');
  }
  void repetition(const Arr *contents, const Plan &plan) {
    out_->put('{');
    const bool any = members(contents, plan);
    if (plan.has_references) references(contents, plan, any);
    out_->put('}');
  }
  // "refs":{...}, after a comma where something stands before.
  void references(const Arr *contents, const Plan &plan, bool after_some);
  void value(const SDBlkEntry &entry, const Plan::Field &field);

 private:
  bool members(const Arr *contents, const Plan &plan);
  void reference(std::int32_t definition);
  void null() { out_->put("null"); }
  void integer(std::int64_t value) {
    out_->commit(put_integer(out_->reserve(kIntegerRoom), value));
  }
  void real(double value) { out_->commit(put_json_real(out_->reserve(kRealRoom), value)); }

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

  TextBuffer *out_;
  const SDBlkVol *vol_;
};

void Writer::value(const SDBlkEntry &entry, const Plan::Field &field) {
  if (!sdblk_has_value(&entry)) {
    null();
    return;
  }
  switch (field.form) {
    case Form::text: put_json_text(out_, entry.value.s); return;
    case Form::integer: integer(entry.value.i); return;
    case Form::unsigned_integer: integer(sdblk_integer(&entry)); return;
    case Form::real: real(entry.value.d); return;
    case Form::time: out_->commit(put_json_time(out_->reserve(kTimeRoom), entry.value.d)); return;
    case Form::texts:
      array(entry.count, [&](std::int32_t i) { put_json_text(out_, entry.value.sa[i]); });
      return;
    case Form::reals:
      array(entry.count, [&](std::int32_t i) {
        const double element = entry.value.da[i];
        std::isnan(element) ? null() : real(element);
      });
      return;
    case Form::integers:
      array(entry.count, [&](std::int32_t i) { integer(entry.value.ia[i]); });
      return;
    case Form::references:
      array(entry.count, [&](std::int32_t i) {
        const std::int32_t code = entry.value.ra[i].code;
        code == SDBLK_NO_CODE ? null() : integer(code);
      });
      return;
    case Form::group:
      array(entry.count,
            [&](std::int32_t i) { repetition(entry.value.ea[i], field.group.front()); });
      return;
  }
}

// Whether there are any.
bool Writer::members(const Arr *contents, const Plan &plan) {
  std::int32_t position = 0;
  for (const Plan::Field &field : plan.fields) {
    const SDBlkEntry *entry = sdblk_entry_at(contents, plan.defs, position);
    if (entry == nullptr) break;  // what follows is absent too
    char *out = out_->reserve(field.key.size() + 1);
    if (position > 0) *out++ = ',';
    out_->commit(put_text(out, field.key));
    value(*entry, field);
    ++position;
  }
  return position > 0;
}

void Writer::reference(std::int32_t definition) {
  if (definition > 0) {
    integer(sdblk_definition_number(vol_, definition, 0));
  } else {
    null();
  }
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
    out_->put(field.key);
    if (field.form == Form::references) {
      array(entry->count, [&](std::int32_t i) {
        reference(sdblk_definition_of(vol_, field.def->abbr_key, entry->value.ra[i].code));
      });
    } else {
      reference(entry->definition);
    }
  }
  if (any) out_->put('}');
}

}  // namespace

void put_fields(TextBuffer *out, const SDBlk &block) {
  if (block.blkdef == nullptr) {
    out->put("null");
  } else {
    Writer(out, block.vol).object(block.contents, plan_of(*block.blkdef));
  }
}

void put_references(TextBuffer *out, const SDBlk &block) {
  if (block.blkdef == nullptr) return;
  const Plan &plan = plan_of(*block.blkdef);
  if (plan.has_references) Writer(out, block.vol).references(block.contents, plan, true);
}

void put_value(TextBuffer *out, const SDBlk &block, const SDBlkEntry &entry,
               const Plan::Field &field) {
  Writer(out, block.vol).value(entry, field);
}

}  // namespace tarvik
