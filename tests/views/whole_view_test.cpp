#include "views/whole_view.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/util/run_command.h"
#include "tests/util/volume_writer.h"
#include "tests/views/view_lines.h"

using namespace tarvik;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

namespace {

// Writes a line for each call.
class Calls : public WholeView {
 public:
  explicit Calls(bool with_notes = true, const ViewOptions &options = {})
      : WholeView(options, SDBLK_KEEP_NUMBERS), with_notes_(with_notes) {}

 private:
  void begin(const Input &input) override { put("begin " + std::to_string(input.size())); }
  void before_block(const SDBlkFinding &finding) override {
    put(std::string("before: ") + sdblk_cause_name(finding.cause));
  }
  void block(const SDBlk &block) override {
    put((is_data_record(block) ? "record " : "blockette ") +
        std::to_string(sdblk_block_number(&block)));
    for (const Note *note = notes_begin(); note != notes_end(); ++note) {
      const SDBlkFinding finding = note->finding();
      put(std::string("note: ") + sdblk_cause_name(finding.cause) + ' ' +
          (finding.field == nullptr ? "-" : finding.field));
    }
  }
  void end(const SDBlkWholeCounts &counts) override {
    put("end " + std::to_string(counts.blocks) + ' ' + file());
  }
  [[nodiscard]] bool wants_notes() const override { return with_notes_; }

  void put(const std::string &line) {
    out()->put(line);
    end_line();
  }

  bool with_notes_;
};

// Calls back at each write.
class Sink : public TextSink {
 public:
  bool write(std::string_view lines) override {
    TextSink::write(lines);
    return on_write == nullptr || on_write();
  }
  std::function<bool()> on_write;
};

Source source_of(const std::string &path) {
  Source source;
  source.name = "v";
  source.path = path;
  return source;
}

DataRecord record(unsigned exponent = 8) {
  DataRecord data = {.sta = "A", .chan = "BHZ", .net = "XX"};
  return data.b1000(3, 1, exponent);
}
ControlBlockette comment(const char *time) {
  return ControlBlockette(51).var(time).var("").digits(1, 4).digits(1, 6);
}

Outcome outcome_of(const std::string &bytes) {
  const command::ScratchDirectory scratch;
  Sink sink;
  LineBuffer lines(&sink);
  ViewOptions options;
  options.record_length = 256;
  return Calls(true, options).read(source_of(scratch.file("v", bytes)), &lines);
}

// ---- the pass ----

TEST(WholeView, CallsAreInTheOrderOfTheFile) {
  VolumeWriter volume(256);
  volume.control('S', {comment("2020,001"), comment("x")}).data(record(10)).data(record());
  Calls view;
  EXPECT_EQ(lines_of(&view, volume.bytes()),
            "begin 768\n"
            "blockette 0\n"
            "blockette 1\n"
            "note: value time\n"
            "before: length\n"
            "record 2\n"
            "record 3\n"
            "end 4 \"v\"\n");
}

TEST(WholeView, NotesAreThoseOfTheirBlock) {
  VolumeWriter volume(256);
  volume.control('S', {ControlBlockette(51).var("x").var("y").digits(1, 4), comment("2020,001"),
                       comment("z")});
  Calls view;
  EXPECT_EQ(between(lines_of(&view, volume.bytes()), "begin 256\n", "end 3"),
            "before: unconfirmed\n"
            "blockette 0\n"
            "note: value time\n"
            "note: value endtime\n"
            "blockette 1\n"
            "blockette 2\n"
            "note: value time\n");
}

TEST(WholeView, NotesThatAreNotWantedAreNotKept) {
  VolumeWriter volume(256);
  volume.control('S', comment("x")).data(record());
  Calls view(false);
  EXPECT_EQ(lines_of(&view, volume.bytes()).find("note"), std::string::npos);
}

TEST(WholeView, FileIsATextOfJsonOrOfCommaSeparatedValues) {
  const command::ScratchDirectory scratch;
  Source source = source_of(scratch.file("v", ""));
  source.name = "a,\"\xE9";
  for (const bool csv : {false, true}) {
    Sink sink;
    LineBuffer lines(&sink);
    ViewOptions options;
    options.csv = csv;
    Calls(true, options).read(source, &lines);
    lines.flush();
    EXPECT_EQ(sink.text(),
              csv ? "begin 0\nend 0 \"a,\"\"\xC3\xA9\"\n" : "begin 0\nend 0 \"a,\\\"\xC3\xA9\"\n");
  }
}

TEST(WholeView, PositionTellsHowMuchWasRead) {
  const command::ScratchDirectory scratch;
  VolumeWriter volume(256);
  for (int i = 0; i < 10; ++i) volume.data(record());
  Source source = source_of(scratch.file("v", volume.bytes()));
  std::atomic<std::int64_t> position = -1;
  source.position = &position;
  std::vector<std::int64_t> seen;
  Sink sink;
  LineBuffer lines(&sink);
  class Watch : public Calls {
   public:
    Watch(std::atomic<std::int64_t> *position, std::vector<std::int64_t> *seen)
        : position_(position), seen_(seen) {}

   private:
    void block(const SDBlk & /*block*/) override { seen_->push_back(*position_); }
    std::atomic<std::int64_t> *position_;
    std::vector<std::int64_t> *seen_;
  };
  EXPECT_EQ(Watch(&position, &seen).read(source, &lines), Outcome::read);
  EXPECT_EQ(position, 2560);
  ASSERT_EQ(seen.size(), 10U);
  for (std::size_t i = 1; i < seen.size(); ++i) EXPECT_GT(seen[i], seen[i - 1]);
}

// ---- how it ends ----

TEST(WholeView, SoundFileIsRead) {
  EXPECT_EQ(outcome_of(""), Outcome::read);
  EXPECT_EQ(outcome_of(VolumeWriter(256).data(record()).bytes()), Outcome::read);
}

TEST(WholeView, PaddingAndNotesOtherThanCutAreNoDamage) {
  VolumeWriter volume(256);
  volume.control('S', comment("x")).raw_record(std::string(100, ' ')).data(record(10));
  EXPECT_EQ(outcome_of(volume.data(record()).bytes()), Outcome::read);
}

TEST(WholeView, NoteOfAnyOtherCauseIsNoDamage) {
  DataRecord either = record();
  either.time = {2056, 257};
  DataRecord lost = record();
  lost.forced_first_offset = 9999;
  const ControlBlockette unit = ControlBlockette(34).digits(1, 3).var("M").var("");
  const auto control = [](std::initializer_list<ControlBlockette> blockettes) {
    return VolumeWriter(256).control('A', blockettes).bytes();
  };
  const std::vector<std::pair<std::string, std::string>> notes = {
      {"length", record(10).bytes(256) + record().bytes(256, 2)},
      {"unconfirmed", "000001V*  "},
      {"order", either.bytes(256)},
      {"chain", lost.bytes(256)},
      {"value", control({comment("x")})},
      {"short", control({ControlBlockette(11).digits(2, 3).fixed("B", 5)})},
      {"again", control({unit, unit})}};
  for (const auto &[cause, bytes] : notes) {
    Calls view;
    EXPECT_NE(lines_of(&view, bytes).find(cause), std::string::npos) << cause;
    EXPECT_EQ(outcome_of(bytes), Outcome::read) << cause;
  }
}

TEST(WholeView, GarbageIsDamage) {
  EXPECT_EQ(outcome_of(VolumeWriter(256).data(record()).bytes() + "no SEED"), Outcome::damaged);
}

TEST(WholeView, RestOfAControlRecordIsDamage) {
  EXPECT_EQ(outcome_of(VolumeWriter(256).control('S', "what is this?").bytes()), Outcome::damaged);
}

TEST(WholeView, WhatIsCutIsDamage) {
  EXPECT_EQ(outcome_of(VolumeWriter(256).data(record(9)).bytes()), Outcome::damaged);
  EXPECT_EQ(
      outcome_of(
          VolumeWriter(256).control('S', ControlBlockette(77).text_with_length(1000)).bytes()),
      Outcome::damaged);
}

TEST(WholeView, FileThatIsNotThereIsUnreadable) {
  const command::ScratchDirectory scratch;
  Sink sink;
  LineBuffer lines(&sink);
  Calls view;
  EXPECT_EQ(view.read(source_of(scratch / "none"), &lines), Outcome::unreadable);
  EXPECT_EQ(view.error(), "No such file or directory");
  lines.flush();
  EXPECT_EQ(sink.text(), "");
}

TEST(WholeView, FileAfterAnUnreadableOneIsRead) {
  const command::ScratchDirectory scratch;
  Sink sink;
  LineBuffer lines(&sink);
  Calls view;
  view.read(source_of(scratch / "none"), &lines);
  EXPECT_EQ(lines_of(&view, ""), "begin 0\nend 0 \"v\"\n");
}

// A volume of more than the buffer's lines, and of more than is read at once.
std::string large() {
  VolumeWriter volume(256);
  for (int i = 0; i < 12000; ++i) volume.data(record());
  return volume.bytes();
}

TEST(WholeView, OutputThatFailsEndsThePass) {
  const command::ScratchDirectory scratch;
  Sink sink;
  sink.on_write = [] { return false; };
  LineBuffer lines(&sink);
  Calls view;
  EXPECT_EQ(view.read(source_of(scratch.file("v", large())), &lines), Outcome::unwritten);
  EXPECT_EQ(sink.text().find("end"), std::string::npos);
  EXPECT_LT(split_lines(sink.text()).size(), 12000U);
}

TEST(WholeView, FileThatShrinksMeanwhileIsUnreadableAndHasNoEnd) {
  const command::ScratchDirectory scratch;
  const std::string path = scratch.file("v", large());
  Sink sink;
  sink.on_write = [&] { return truncate(path.c_str(), 512) == 0; };
  LineBuffer lines(&sink);
  Calls view;
  EXPECT_EQ(view.read(source_of(path), &lines), Outcome::unreadable);
  EXPECT_NE(view.error(), "");
  lines.flush();
  EXPECT_TRUE(sink.text().starts_with("begin 3072000\nrecord 0\n"));
  EXPECT_EQ(sink.text().find("end"), std::string::npos);
}

// ---- findings as objects ----

std::string text_of(const SDBlkFinding &finding) {
  Sink sink;
  LineBuffer lines(&sink);
  put_finding(&lines, "\"v\"", finding);
  return std::string(lines.text());
}

TEST(PutFinding, SkipHasOffsetLengthAndCause) {
  const char *names[] = {"padding", "garbage", "prefix"};
  for (int cause = SDBLK_SKIP_PADDING; cause <= SDBLK_SKIP_PREFIX; ++cause) {
    EXPECT_EQ(text_of({static_cast<SDBlkCause>(cause), 5000000000, 300, -1, nullptr, "x"}),
              R"({"kind":"skip","file":"v","offset":5000000000,"length":300,"why":")" +
                  std::string(names[cause]) + "\"}");
  }
}

TEST(PutFinding, NoteOfARecordHasNoBlock) {
  EXPECT_EQ(text_of({SDBLK_NOTE_LENGTH, 512, 0, -1, nullptr, "text"}),
            R"({"kind":"note","file":"v","why":"length","offset":512,"text":"text"})");
}

TEST(PutFinding, NoteOfABlockHasItsNumberAndField) {
  EXPECT_EQ(text_of({SDBLK_NOTE_VALUE, 8305, 0, 29, "level", "not a number: '\"\xFF'"}),
            "{\"kind\":\"note\",\"file\":\"v\",\"why\":\"value\",\"offset\":8305,\"block\":29,"
            "\"field\":\"level\",\"text\":\"not a number: '\\\"\xC3\xBF'\"}");
  EXPECT_EQ(text_of({SDBLK_NOTE_AGAIN, 8, 0, 0, nullptr, "t"}),
            R"({"kind":"note","file":"v","why":"again","offset":8,"block":0,"text":"t"})");
}

}  // namespace
