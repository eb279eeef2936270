#include "views/segments.h"

#include "views/row.h"
#include "views/segment_list.h"
#include "views/whole_view.h"

namespace tarvik {
namespace {

double seconds(std::int64_t microseconds) { return static_cast<double>(microseconds) / 1e6; }

// The start of the lines of a channel.
void put_channel(Row *row, std::string_view file, const ChannelId &id) {
  row->start("segment", file);
  row->text("network", code_text(id.network));
  row->text("station", code_text(id.station));
  row->text("location", code_text(id.location));
  row->text("channel", code_text(id.channel));
  row->text("quality", {&id.quality, 1});
}

// The rest of a segment's line; before is the segment before it of its channel, or nullptr.
void put_segment(Row *row, const Segment &segment, const Segment *before) {
  row->microtime("start", segment.start);
  row->microtime("end", segment.end());
  row->real("sample_rate", segment.rate);
  row->integer("samples", segment.samples);
  row->integer("records", segment.records);
  if (before == nullptr) {
    row->null("gap");
  } else {
    row->real("gap", seconds(segment.start - before->next()));
  }
  if (segment.timing_quality == kNoQuality) {
    row->null("timing_quality");
  } else {
    row->integer("timing_quality", segment.timing_quality);
  }
  row->finish();
}

class SegmentsView : public WholeView {
 public:
  explicit SegmentsView(const ViewOptions &options) : WholeView(options, SDBLK_KEEP_NUMBERS) {}

 private:
  void begin(const Input & /*input*/) override { list_.clear(); }
  void before_block(const SDBlkFinding & /*finding*/) override {}
  // What is cut is told only when a blockette is decoded; a data record's header says it all.
  [[nodiscard]] bool decodes(SDBlk *block) override { return !is_data_record(*block); }
  void block(const SDBlk &block) override {
    if (is_data_record(block)) list_.add(data_record(block), block.file_offset);
  }
  void end(const SDBlkWholeCounts &counts) override;

  SegmentList list_;
  TextBuffer channel_;
};

void SegmentsView::end(const SDBlkWholeCounts & /*counts*/) {
  list_.finish();
  for (const SegmentList::Channel &channel : list_.channels()) {
    channel_.clear();
    Row head(&channel_, is_csv());
    put_channel(&head, file(), channel.id);
    const Segment *before = nullptr;
    for (const Segment &segment : channel.segments) {
      out()->put(channel_.text());
      Row row(out(), is_csv());
      put_segment(&row, segment, before);
      if (!end_line()) return;
      before = &segment;
    }
  }
}

}  // namespace

std::unique_ptr<View> make_segments_view(const ViewOptions &options) {
  return std::make_unique<SegmentsView>(options);
}

std::string segments_heading() {
  return "file,network,station,location,channel,quality,start,end,sample_rate,samples,records,gap,"
         "timing_quality";
}

}  // namespace tarvik
