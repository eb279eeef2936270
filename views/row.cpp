#include "views/row.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "support/line.h"
#include "views/csv.h"
#include "views/json.h"

namespace tarvik {
namespace {

constexpr std::size_t kKeyRoom = 4;  // beside the key
constexpr std::size_t kValueRoom = std::max({kIntegerRoom, kRealRoom, kTimeRoom});

// Makes JSON a comma-separated value in its place: bare, and nothing for null.  Its new end.
char *make_bare(char *json, char *end) {
  const std::string_view text(json, static_cast<std::size_t>(end - json));
  if (text == "null") return json;
  if (text.front() != '"') return end;
  std::memmove(json, json + 1, text.size() - 2);
  return end - 2;
}

}  // namespace

void Row::start(std::string_view kind, std::string_view file) {
  if (!csv_) {
    char *at = out_->reserve(kind.size() + 32);
    at = put_text(put_text(at, R"({"kind":")"), kind);
    out_->commit(put_text(at, R"(","file":)"));
  }
  out_->put(file);
}

char *Row::put_key(char *out, std::string_view key) const {
  out = put_char(out, ',');
  if (csv_) return out;
  return put_text(put_text(put_char(out, '"'), key), "\":");
}

template <typename Put>
void Row::value(std::string_view key, Put put) {
  char *at = put_key(out_->reserve(key.size() + kKeyRoom + kValueRoom), key);
  char *end = put(at);
  out_->commit(csv_ ? make_bare(at, end) : end);
}

void Row::null(std::string_view key) {
  value(key, [](char *out) { return put_text(out, "null"); });
}

void Row::text(std::string_view key, std::string_view bytes) {
  out_->commit(put_key(out_->reserve(key.size() + kKeyRoom), key));
  if (csv_) {
    out_->put(csv_text(bytes));
  } else {
    put_json_text(out_, bytes);
  }
}

void Row::integer(std::string_view key, std::int64_t number) {
  value(key, [number](char *out) { return put_integer(out, number); });
}

void Row::real(std::string_view key, double number) {
  value(key, [number](char *out) { return put_json_real(out, number); });
}

void Row::time(std::string_view key, double epoch) {
  value(key, [epoch](char *out) { return put_json_time(out, epoch); });
}

void Row::microtime(std::string_view key, std::int64_t microseconds) {
  value(key, [microseconds](char *out) { return put_json_microtime(out, microseconds); });
}

void Row::cut_microtime(std::string_view key, std::int64_t microseconds) {
  value(key, [microseconds](char *out) { return put_json_tick_time(out, microseconds); });
}

void Row::nanotime(std::string_view key, std::int64_t seconds, std::int64_t nanoseconds) {
  value(key, [=](char *out) { return put_json_nanotime(out, seconds, nanoseconds); });
}

bool Row::nest(std::string_view key) {
  if (!csv_) out_->commit(put_key(out_->reserve(key.size() + kKeyRoom), key));
  return !csv_;
}

}  // namespace tarvik
