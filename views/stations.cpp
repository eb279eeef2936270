#include "views/stations.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "views/epochs.h"
#include "views/fields.h"
#include "views/places.h"
#include "views/row.h"
#include "views/stages.h"
#include "views/whole_view.h"

namespace tarvik {
namespace {

// ---- what stands in a line ----

// A value of an epoch: a field of the station's or channel's blockette, or one of the abbreviation
// that the field refers to.
struct Column {
  std::string_view key;
  Place place;
  std::optional<Place> of_referred;
};

constexpr std::int32_t kStation = 50;
constexpr std::int32_t kChannel = 52;

Column of_station(std::string_view key, const char *field) { return {key, {kStation, field}, {}}; }
Column of_channel(std::string_view key, const char *field) { return {key, {kChannel, field}, {}}; }
Column of_channel(std::string_view key, const char *field, std::int32_t abbreviation,
                  const char *text) {
  return {key, {kChannel, field}, Place(abbreviation, text)};
}

using Columns = std::vector<Column>;

const Columns &station_codes() {
  static const Columns columns = {of_station("network", "net"), of_station("station", "sta")};
  return columns;
}

const Columns &channel_columns() {
  static const Columns columns = {
      of_channel("location", "loc"),
      of_channel("channel", "chan"),
      of_channel("start", "time"),
      of_channel("end", "endtime"),
      of_channel("latitude", "lat"),
      of_channel("longitude", "lon"),
      of_channel("elevation", "elev"),
      of_channel("depth", "depth"),
      of_channel("azimuth", "azimuth"),
      of_channel("dip", "dip"),
      of_channel("sample_rate", "samprate"),
      of_channel("max_clock_drift", "maxdrift"),
      of_channel("instrument", "inst_gid", 33, "descr"),
      of_channel("units", "sunits", 34, "name"),
      of_channel("units_description", "sunits", 34, "descr"),
      of_channel("calibration_units", "cunits", 34, "name"),
      of_channel("calibration_units_description", "cunits", 34, "descr"),
      of_channel("format", "df_did", 30, "name"),
      of_channel("flags", "flags"),
      of_channel("comment", "comment"),
  };
  return columns;
}

const Columns &station_columns() {
  static const Columns columns = {
      of_station("site", "name"),
      {"network_description", {kStation, "net_gid"}, Place(33, "descr")},
      of_station("station_start", "time"),
      of_station("station_end", "endtime"),
      of_station("station_latitude", "lat"),
      of_station("station_longitude", "lon"),
      of_station("station_elevation", "elev"),
  };
  return columns;
}

const SDBlkEntry *value_of(const SDBlk *block, const Column &column) {
  const SDBlkEntry *entry = block == nullptr ? nullptr : column.place.value(*block);
  if (entry == nullptr || !column.of_referred) return entry;
  const SDBlk *abbreviation = referred(*block, *entry);
  return abbreviation == nullptr ? nullptr : column.of_referred->value(*abbreviation);
}

void put_cell(Row *row, std::string_view key, const SDBlkEntry *entry, Form form) {
  if (entry == nullptr) {
    row->null(key);
  } else if (form == Form::text) {
    row->text(key, entry->value.s);
  } else if (form == Form::time) {
    row->time(key, entry->value.d);
  } else {
    row->real(key, entry->value.d);
  }
}

// The values of a blockette, or of none.
void put_cells(Row *row, const SDBlk *block, const Columns &columns) {
  for (const Column &column : columns) {
    const Place &shown = column.of_referred ? *column.of_referred : column.place;
    put_cell(row, column.key, value_of(block, column), shown.field().form);
  }
}

// ---- comments ----

// The comments of a station or a channel, as the elements of an array.
class Comments {
 public:
  // Of blockettes 51 or 59.
  explicit Comments(std::int32_t type)
      : start_(type, "time"), end_(type, "endtime"), code_(type, "cid"), level_(type, "level") {}

  void clear() {
    text_.clear();
    count_ = 0;
  }
  void add(const SDBlk &block);
  [[nodiscard]] std::string_view text() const { return text_.text(); }

 private:
  static constexpr std::int32_t kMost = 1000;

  void put(std::string_view key, const SDBlk *block, const Place &place);

  Place start_;
  Place end_;
  Place code_;
  Place level_;
  TextBuffer text_;
  std::int32_t count_ = 0;
};

void Comments::put(std::string_view key, const SDBlk *block, const Place &place) {
  text_.put(key);
  const SDBlkEntry *entry = block == nullptr ? nullptr : place.value(*block);
  if (entry == nullptr) {
    text_.put("null");
  } else {
    put_value(&text_, *block, *entry, place.field());
  }
}

void Comments::add(const SDBlk &block) {
  static const Place comment(31, "comment");
  if (count_ == kMost) return;
  if (count_++ > 0) text_.put(',');
  const SDBlkEntry *code = code_.value(block);
  put(R"({"start":)", &block, start_);
  put(R"(,"end":)", &block, end_);
  put(R"(,"text":)", code == nullptr ? nullptr : referred(block, *code), comment);
  put(R"(,"level":)", &block, level_);
  text_.put('}');
}

// ---- the view ----

class StationsView : public WholeView {
 public:
  StationsView(const ViewOptions &options, const EpochOptions &epochs)
      : WholeView(options, options.csv ? SDBLK_KEEP_FIRST : SDBLK_KEEP_ALL), choice_(epochs) {}

 private:
  // What the next line is about.
  enum class Open : std::uint8_t { nothing, station, channel };

  void begin(const Input &input) override;
  void before_block(const SDBlkFinding & /*finding*/) override {}
  void block(const SDBlk &block) override;
  void end(const SDBlkWholeCounts & /*counts*/) override { finish_line(); }

  // Begins a station or, with null, what stands without one.
  void begin_station(const SDBlk *block);
  void begin_channel(const SDBlk &block);
  void put_cells(TextBuffer *text, const SDBlk *block, const Columns &columns);
  void finish_line();
  void put_arrays(bool has_channel);

  EpochChoice choice_;
  Roles roles_;
  Open open_ = Open::nothing;
  bool wanted_ = false;
  // Parts of the line.
  TextBuffer codes_;
  TextBuffer channel_;
  TextBuffer station_;
  Stages stages_;
  Comments comments_ = Comments(59);
  Comments station_comments_ = Comments(51);
  // For the choice.
  std::string network_code_;
  std::string station_code_;
};

void StationsView::begin(const Input & /*input*/) {
  roles_ = {};
  open_ = Open::nothing;
  begin_station(nullptr);
}

void StationsView::block(const SDBlk &block) {
  const Role role = roles_.of(block);
  switch (role) {
    case Role::none: return;
    case Role::station: begin_station(&block); return;
    case Role::channel: begin_channel(block); return;
    default: break;
  }
  if (options().csv) return;
  if (role == Role::station_comment) {
    station_comments_.add(block);
  } else if (!wanted_) {
    return;
  } else if (role == Role::channel_comment) {
    comments_.add(block);
  } else {
    for_each_response(block, [&](const Response &response) { return stages_.add(response); });
  }
}

void StationsView::put_cells(TextBuffer *text, const SDBlk *block, const Columns &columns) {
  text->clear();
  Row row(text, options().csv);
  tarvik::put_cells(&row, block, columns);
}

void StationsView::begin_station(const SDBlk *block) {
  static const Place network(kStation, "net");
  static const Place station(kStation, "sta");
  static const Place start(kStation, "time");
  static const Place end(kStation, "endtime");
  finish_line();
  put_cells(&codes_, block, station_codes());
  put_cells(&station_, block, station_columns());
  put_cells(&channel_, nullptr, channel_columns());
  station_comments_.clear();
  network_code_ = block == nullptr ? "" : network.text(*block);
  station_code_ = block == nullptr ? "" : station.text(*block);
  if (block == nullptr) return;
  open_ = Open::station;
  wanted_ =
      choice_.takes({network_code_, station_code_, "", ""}, start.value(*block), end.value(*block));
}

void StationsView::begin_channel(const SDBlk &block) {
  static const Place location(kChannel, "loc");
  static const Place channel(kChannel, "chan");
  static const Place start(kChannel, "time");
  static const Place end(kChannel, "endtime");
  if (open_ == Open::channel) finish_line();
  open_ = Open::channel;
  wanted_ = choice_.takes({network_code_, station_code_, location.text(block), channel.text(block)},
                          start.value(block), end.value(block));
  if (wanted_) put_cells(&channel_, &block, channel_columns());
  stages_.clear();
  comments_.clear();
}

void StationsView::finish_line() {
  const Open open = open_;
  open_ = Open::nothing;
  if (open == Open::nothing || !wanted_) return;
  Row row(out(), options().csv);
  row.start("epoch", file());
  out()->put(codes_.text());
  out()->put(channel_.text());
  out()->put(station_.text());
  if (!options().csv) put_arrays(open == Open::channel);
  row.finish();
  end_line();
}

void StationsView::put_arrays(bool has_channel) {
  if (has_channel) {
    stages_.put(out());
    out()->put(R"(,"comments":[)");
    out()->put(comments_.text());
    out()->put("]");
  } else {
    out()->put(R"(,"sensitivity":null,"stages":null,"comments":null)");
  }
  out()->put(R"(,"station_comments":[)");
  out()->put(station_comments_.text());
  out()->put(']');
}

}  // namespace

std::unique_ptr<View> make_stations_view(const ViewOptions &options, const EpochOptions &epochs) {
  return std::make_unique<StationsView>(options, epochs);
}

Heading stations_heading() {
  Heading heading = "file";
  for (const Columns *columns : {&station_codes(), &channel_columns(), &station_columns()}) {
    for (const Column &column : *columns) heading.append(",").append(column.key);
  }
  return heading;
}

}  // namespace tarvik
