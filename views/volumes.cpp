#include "views/volumes.h"

#include <optional>
#include <unordered_set>

#include "seed/format.h"
#include "support/line.h"
#include "views/counts.h"
#include "views/json.h"
#include "views/places.h"
#include "views/row.h"
#include "views/segment_list.h"
#include "views/whole_view.h"

namespace tarvik {
namespace {

constexpr std::int32_t kStationType = 50;
constexpr std::int32_t kChannelType = 52;
constexpr std::int32_t kLeastExponent = 6;
constexpr std::int32_t kMostExponent = 17;

// What the first volume identifier, blockette 5, 8 or 10, says.
struct Label {
  std::optional<std::string> version;
  std::optional<std::string> label;
  std::optional<std::string> organization;
  std::optional<double> start;
  std::optional<double> end;
  std::int64_t record_length = 0;  // 0 where none is stated
};

const SDBlkEntry *entry_of(const SDBlk &block, const char *key) {
  return static_cast<const SDBlkEntry *>(getarr(block.contents, key));
}

std::optional<std::string> text_of(const SDBlk &block, const char *key) {
  const SDBlkEntry *entry = entry_of(block, key);
  if (entry == nullptr) return std::nullopt;
  return entry->value.s;
}

std::optional<double> time_of(const SDBlk &block, const char *key) {
  const SDBlkEntry *entry = entry_of(block, key);
  if (entry == nullptr || !sdblk_has_value(entry)) return std::nullopt;
  return entry->value.d;
}

std::int64_t stated_length(const SDBlk &block) {
  const SDBlkEntry *entry = entry_of(block, "llenp");
  if (entry == nullptr || !sdblk_has_value(entry)) return 0;
  const std::int32_t exponent = entry->value.i;
  const bool fits = exponent >= kLeastExponent && exponent <= kMostExponent;
  return fits ? std::int64_t{1} << exponent : 0;
}

Label label_of(const SDBlk &block) {
  return {text_of(block, "version"), text_of(block, "label"),   text_of(block, "orig_org"),
          time_of(block, "time"),    time_of(block, "endtime"), stated_length(block)};
}

// What one file holds.
struct Summary {
  std::int64_t bytes = 0;
  std::optional<std::timespec> modified;
  std::optional<Label> label;
  std::int64_t stations = 0;
  std::int64_t channels = 0;
  std::int64_t epochs = 0;
  std::int64_t responses = 0;
  std::int64_t data_records = 0;
  std::int64_t samples = 0;
  std::optional<std::int64_t> data_start;  // microseconds since 1970
  std::optional<std::int64_t> data_end;
  BlockCounts blocks;
  SDBlkWholeCounts counts = {};
};

const char *content_of(const Summary &summary) {
  const bool has_data = summary.data_records > 0;
  if (summary.stations > 0) return has_data ? "full" : "dataless";
  if (has_data) return "data";
  return summary.counts.records > 0 ? "control" : "none";
}

void put_optional(Row *row, std::string_view key, const std::optional<std::string> &text) {
  text ? row->text(key, *text) : row->null(key);
}

void put_epoch(Row *row, std::string_view key, const std::optional<double> &epoch) {
  epoch ? row->time(key, *epoch) : row->null(key);
}

// With four decimals; what is finer is cut off.
void put_micros(Row *row, std::string_view key, const std::optional<std::int64_t> &micros) {
  micros ? row->cut_microtime(key, *micros) : row->null(key);
}

void put_modified(Row *row, const std::optional<std::timespec> &time) {
  time ? row->nanotime("modified", time->tv_sec, time->tv_nsec) : row->null("modified");
}

void put_record_length(Row *row, const Summary &summary) {
  const std::int64_t stated = summary.label ? summary.label->record_length : 0;
  if (stated == 0 && summary.counts.records == 0) {
    row->null("record_length");
  } else {
    row->integer("record_length", stated != 0 ? stated : summary.counts.first_record_length);
  }
}

// {"value":1}: the notes by cause, without those that did not come.
void put_notes(TextBuffer *out, const SDBlkWholeCounts &counts) {
  char separator = '{';
  for (int cause = SDBLK_NOTE_LENGTH; cause < SDBLK_CAUSES; ++cause) {
    if (counts.findings[cause] == 0) continue;
    out->put(separator);
    out->put('"');
    out->put(sdblk_cause_name(static_cast<SDBlkCause>(cause)));
    out->put("\":");
    out->commit(put_integer(out->reserve(kIntegerRoom), counts.findings[cause]));
    separator = ',';
  }
  out->put(separator == '{' ? "{}" : "}");
}

void put_row(Row *row, TextBuffer *out, std::string_view file, const Summary &summary) {
  const Label label = summary.label.value_or(Label());
  row->start("volume", file);
  row->integer("bytes", summary.bytes);
  put_modified(row, summary.modified);
  row->text("content", content_of(summary));
  put_optional(row, "version", label.version);
  put_record_length(row, summary);
  put_optional(row, "label", label.label);
  put_optional(row, "organization", label.organization);
  put_epoch(row, "start", label.start);
  put_epoch(row, "end", label.end);
  row->integer("stations", summary.stations);
  row->integer("channels", summary.channels);
  row->integer("epochs", summary.epochs);
  row->integer("responses", summary.responses);
  put_micros(row, "data_start", summary.data_start);
  put_micros(row, "data_end", summary.data_end);
  row->integer("data_records", summary.data_records);
  row->integer("samples", summary.samples);
  row->integer("records", summary.counts.records);
  row->integer("blocks", summary.counts.blocks);
  if (row->nest("counts")) summary.blocks.put(out);
  row->integer("sequence_breaks", summary.counts.sequence_breaks);
  row->integer("padding_bytes", summary.counts.padding_bytes);
  row->integer("skipped_bytes", summary.counts.skipped_bytes);
  if (row->nest("notes")) put_notes(out, summary.counts);
  row->finish();
}

class VolumesView : public WholeView {
 public:
  explicit VolumesView(const ViewOptions &options) : WholeView(options, SDBLK_KEEP_NUMBERS) {}

 private:
  void begin(const Input &input) override;
  void before_block(const SDBlkFinding & /*finding*/) override {}
  void block(const SDBlk &block) override;
  void end(const SDBlkWholeCounts &counts) override;

  void add_record(const SDBlk &record);
  void add_blockette(const SDBlk &blockette);
  void add_station(const SDBlk &station);
  void add_channel(const SDBlk &channel);
  void add_times();

  Summary summary_;
  SegmentList segments_;
  std::unordered_set<std::string> stations_;
  std::unordered_set<std::string> channels_;
  std::string station_;  // codes of the present one
};

void VolumesView::begin(const Input &input) {
  summary_ = {};
  summary_.bytes = input.size();
  if (!is_spooled()) summary_.modified = input.modified();
  segments_.clear();
  stations_.clear();
  channels_.clear();
  station_ = std::string(2, '\0');
}

void VolumesView::add_record(const SDBlk &record) {
  const DataRecord data = data_record(record);
  ++summary_.data_records;
  summary_.samples += data.samples;
  segments_.add(data, record.file_offset);
}

void VolumesView::add_station(const SDBlk &station) {
  static const Place network(kStationType, "net");
  static const Place code(kStationType, "sta");
  station_ = std::string(network.text(station)) + '\0' + code.text(station) + '\0';
  stations_.insert(station_);
}

void VolumesView::add_channel(const SDBlk &channel) {
  static const Place code(kChannelType, "chan");
  static const Place location(kChannelType, "loc");
  ++summary_.epochs;
  channels_.insert(station_ + code.text(channel) + '\0' + location.text(channel));
}

void VolumesView::add_blockette(const SDBlk &blockette) {
  const std::int32_t type = blockette.blockette_type;
  if (type == kStationType) add_station(blockette);
  if (type == kChannelType) add_channel(blockette);
  if (tarvik::is_response(type)) ++summary_.responses;
  if (tarvik::is_volume_identifier(type) && !summary_.label) summary_.label = label_of(blockette);
}

void VolumesView::block(const SDBlk &block) {
  summary_.blocks.count(block);
  if (is_data_record(block)) {
    add_record(block);
  } else {
    add_blockette(block);
  }
}

void VolumesView::add_times() {
  for (const SegmentList::Channel &channel : segments_.channels()) {
    for (const Segment &segment : channel.segments) {
      const std::int64_t end = segment.end();
      if (!summary_.data_start || segment.start < *summary_.data_start) {
        summary_.data_start = segment.start;
      }
      if (!summary_.data_end || end > *summary_.data_end) summary_.data_end = end;
    }
  }
}

void VolumesView::end(const SDBlkWholeCounts &counts) {
  segments_.finish();
  add_times();
  summary_.counts = counts;
  summary_.stations = static_cast<std::int64_t>(stations_.size());
  summary_.channels = static_cast<std::int64_t>(channels_.size());
  Row row(out(), is_csv());
  put_row(&row, out(), file(), summary_);
  end_line();
}

}  // namespace

std::unique_ptr<View> make_volumes_view(const ViewOptions &options) {
  return std::make_unique<VolumesView>(options);
}

std::string volumes_heading() {
  return "file,bytes,modified,content,version,record_length,label,organization,start,end,stations,"
         "channels,epochs,responses,data_start,data_end,data_records,samples,records,blocks,"
         "sequence_breaks,padding_bytes,skipped_bytes";
}

}  // namespace tarvik
