#include "views/row.h"

#include <array>

#include "support/line.h"
#include "views/csv.h"
#include "views/json.h"

namespace tarvik {
namespace {

template <std::size_t kRoom>
std::string_view text_of(const std::array<char, kRoom> &room, const char *end) {
  return {room.data(), static_cast<std::size_t>(end - room.data())};
}

}  // namespace

void Row::start(std::string_view kind, std::string_view file) {
  if (!csv_) {
    out_->put(R"({"kind":")");
    out_->put(kind);
    out_->put(R"(","file":)");
  }
  out_->put(file);
}

void Row::put_key(std::string_view key) {
  out_->put(',');
  if (csv_) return;
  out_->put('"');
  out_->put(key);
  out_->put("\":");
}

void Row::value(std::string_view key, std::string_view json) {
  put_key(key);
  if (csv_) {
    if (json == "null") return;
    if (json.front() == '"') json = json.substr(1, json.size() - 2);
  }
  out_->put(json);
}

void Row::text(std::string_view key, std::string_view bytes) {
  put_key(key);
  if (csv_) {
    out_->put(csv_text(bytes));
  } else {
    put_json_text(out_, bytes);
  }
}

void Row::integer(std::string_view key, std::int64_t number) {
  std::array<char, kIntegerRoom> room;
  value(key, text_of(room, put_integer(room.data(), number)));
}

void Row::real(std::string_view key, double number) {
  std::array<char, kRealRoom> room;
  value(key, text_of(room, put_json_real(room.data(), number)));
}

void Row::time(std::string_view key, double epoch) {
  std::array<char, kTimeRoom> room;
  value(key, text_of(room, put_json_time(room.data(), epoch)));
}

void Row::microtime(std::string_view key, std::int64_t microseconds) {
  std::array<char, kTimeRoom> room;
  value(key, text_of(room, put_json_microtime(room.data(), microseconds)));
}

void Row::cut_microtime(std::string_view key, std::int64_t microseconds) {
  std::array<char, kTimeRoom> room;
  value(key, text_of(room, put_json_tick_time(room.data(), microseconds)));
}

bool Row::nest(std::string_view key) {
  if (!csv_) put_key(key);
  return !csv_;
}

void Row::nanotime(std::string_view key, std::int64_t seconds, std::int64_t nanoseconds) {
  std::array<char, kTimeRoom> room;
  value(key, text_of(room, put_json_nanotime(room.data(), seconds, nanoseconds)));
}

}  // namespace tarvik
