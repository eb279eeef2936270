#include "views/stages.h"

#include <algorithm>
#include <limits>

#include "support/line.h"
#include "views/json.h"
#include "views/response_fields.h"

namespace tarvik {
namespace {

constexpr std::int64_t kNoStage = std::numeric_limits<std::int64_t>::max();  // comes last
constexpr std::string_view kNull = "null";

void put_number(TextBuffer *out, std::int64_t value) {
  out->commit(put_integer(out->reserve(kIntegerRoom), value));
}

}  // namespace

void Stages::clear() {
  text_.clear();
  items_.clear();
}

bool Stages::add(const Response &response) {
  if (items_.size() == kMost) return false;
  Item &item = items_.emplace_back();
  item.type = response.type;
  item.from = response.block->blockette_type;
  item.block = sdblk_block_number(response.block);
  item.stage = kNoStage;
  item.fields.begin = item.head.begin = text_.size();
  std::int32_t position = -1;
  for (const FieldUse &use : uses_of(response.type)) {
    const SDBlkEntry *entry = response.entry(++position);
    if (entry == nullptr) continue;
    if (text_.size() > item.fields.begin) text_.put(',');
    text_.put(use.field->key.as_first());
    Piece value = {text_.size(), 0};
    put_response_value(&text_, response, *entry, *use.field);
    value.end = text_.size();
    Repetition &repetition =
        item.repetitions[std::min(use.repetition, item.repetitions.size() - 1)];
    switch (use.use) {
      case Use::plain: break;
      case Use::stage: item.stage = sdblk_has_value(entry) ? entry->value.i : kNoStage; break;
      case Use::input_units: item.input_units = value; break;
      case Use::output_units: item.output_units = value; break;
      case Use::value: item.value = value; break;
      case Use::frequency: item.frequency = value; break;
      case Use::count: repetition.has_count = true; continue;
      case Use::elements:
        repetition = {repetition.has_count, true, entry->count, {value.begin + 1, value.end - 1}};
        continue;
    }
    item.head.end = text_.size();
  }
  item.fields.end = text_.size();
  item.head.end = std::max(item.head.end, item.head.begin);
  return true;
}

void Stages::put(TextBuffer *out) {
  std::stable_sort(items_.begin(), items_.end(),
                   [](const Item &a, const Item &b) { return a.stage < b.stage; });
  put_sensitivity(out);
  put_stages(out);
}

// ---- sensitivity ----

// The first value of the items that stand in a stage other than 0 and have one.
std::string_view Stages::first_value(Piece Item::*unit, bool from_end) const {
  const auto has_value = [&](const Item &item) {
    const std::string_view value = text(item.*unit);
    return item.stage != 0 && !value.empty() && value != kNull;
  };
  const auto value_of = [&](auto found, auto end) {
    return found == end ? kNull : text((*found).*unit);
  };
  if (from_end) {
    return value_of(std::find_if(items_.rbegin(), items_.rend(), has_value), items_.rend());
  }
  return value_of(std::find_if(items_.begin(), items_.end(), has_value), items_.end());
}

void Stages::put_sensitivity(TextBuffer *out) const {
  out->put(R"(,"sensitivity":)");
  const auto found = std::find_if(items_.begin(), items_.end(), [](const Item &item) {
    return item.stage == 0 && item.type == kGainType;
  });
  if (found == items_.end()) {
    out->put(kNull);
    return;
  }
  const auto put_value = [&](std::string_view key, std::string_view value) {
    out->put(key);
    out->put(value.empty() ? kNull : value);
  };
  put_value(R"({"value":)", text(found->value));
  put_value(R"(,"frequency":)", text(found->frequency));
  put_value(R"(,"input_units":)", first_value(&Item::input_units, false));
  put_value(R"(,"output_units":)", first_value(&Item::output_units, true));
  out->put('}');
}

// ---- stages ----

bool Stages::is_joined(const Item &first, const Item &next) const {
  return may_be_split(first.type) && next.stage == first.stage && next.type == first.type &&
         next.from == first.from && text(next.head) == text(first.head);
}

Stages::Iterator Stages::end_of_joined(Iterator first) const {
  return std::find_if(first + 1, items_.end(),
                      [&](const Item &next) { return !is_joined(*first, next); });
}

void Stages::put_stages(TextBuffer *out) const {
  out->put(R"(,"stages":[)");
  for (Iterator first = items_.begin(); first != items_.end();) {
    if (first == items_.begin() || first->stage != (first - 1)->stage) {
      out->put(first == items_.begin() ? R"({"stage":)" : R"(]},{"stage":)");
      if (first->stage == kNoStage) {
        out->put(kNull);
      } else {
        put_number(out, first->stage);
      }
      out->put(R"(,"blockettes":[)");
    } else {
      out->put(',');
    }
    const Iterator last = end_of_joined(first);
    put_item(out, first, last);
    first = last;
  }
  out->put(items_.empty() ? "]" : "]}]");
}

void Stages::put_item(TextBuffer *out, Iterator first, Iterator last) const {
  out->put(R"({"type":)");
  put_number(out, first->type);
  out->put(R"(,"from":)");
  put_number(out, first->from);
  out->put(R"(,"block":)");
  put_number(out, first->block);
  out->put(R"(,"fields":{)");
  if (last - first == 1) {
    out->put(text(first->fields));
  } else {
    put_joined(out, first, last);
  }
  out->put("}}");
}

void Stages::put_joined(TextBuffer *out, Iterator first, Iterator last) const {
  const std::size_t start = out->size();
  const auto put_comma = [&] {
    if (out->size() > start) out->put(',');
  };
  out->put(text(first->head));
  for (const FieldUse &use : uses_of(first->type)) {
    const auto has = [&](bool Repetition::*part) {
      return std::any_of(first, last,
                         [&](const Item &item) { return item.repetitions[use.repetition].*part; });
    };
    if (use.use == Use::count && has(&Repetition::has_count)) {
      put_comma();
      out->put(use.field->key.as_first());
      std::int64_t count = 0;
      for (Iterator i = first; i != last; ++i) count += i->repetitions[use.repetition].count;
      put_number(out, count);
    }
    if (use.use == Use::elements && has(&Repetition::has_elements)) {
      put_comma();
      out->put(use.field->key.as_first());
      put_repetition(out, first, last, use.repetition);
    }
  }
}

// The elements of all parts, one after the other.
void Stages::put_repetition(TextBuffer *out, Iterator first, Iterator last,
                            std::size_t which) const {
  out->put('[');
  bool any = false;
  for (Iterator i = first; i != last; ++i) {
    const Repetition &repetition = i->repetitions[which];
    if (repetition.count == 0) continue;
    if (any) out->put(',');
    out->put(text(repetition.elements));
    any = true;
  }
  out->put(']');
}

}  // namespace tarvik
