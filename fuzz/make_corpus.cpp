// Writes the inputs that the fuzz targets start from:
//
//   make_corpus FOLDER volume...
//
// One folder a target.  The volumes are written here; the control blockettes and data records are
// cut out of them and of the volumes that are named.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "tests/cmd/hostile_volumes.h"
#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

constexpr std::size_t kShort = 256;

void write_file(const std::filesystem::path &path, std::string_view bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

std::string read_file(const char *path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(std::string("cannot read ") + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// ---- volumes ----

ControlBlockette identifier(int exponent) {
  return ControlBlockette(10)
      .raw("02.4")
      .digits(exponent, 2)
      .var(Time{})
      .var(Time{})
      .var(Time{})
      .var("XX")
      .var("");
}

void add_dictionary(VolumeWriter *out) {
  out->control(
      'A',
      {ControlBlockette(30).var("Int").digits(1, 4).digits(0, 3).digits(2, 2).var("M0").var("W4"),
       ControlBlockette(31).digits(1, 4).fixed("S", 1).var("Noise").digits(1, 3),
       ControlBlockette(33).digits(1, 3).var("Network"),
       ControlBlockette(34).digits(1, 3).var("M/S").var("Velocity")});
  out->control('A', ControlBlockette(41)
                        .digits(1, 4)
                        .var("FIR")
                        .fixed("A", 1)
                        .digits(1, 3)
                        .digits(1, 3)
                        .digits(2, 4)
                        .real(1, volume::kReal14)
                        .real(2, volume::kReal14));
  out->control('A', ControlBlockette(43)
                        .digits(2, 4)
                        .var("PZ")
                        .fixed("A", 1)
                        .digits(1, 3)
                        .digits(1, 3)
                        .real(1)
                        .real(1)
                        .digits(1, 3)
                        .real(0)
                        .real(0)
                        .real(0)
                        .real(0)
                        .digits(0, 3));
  out->control('A', ControlBlockette(48).digits(3, 4).var("Gain").real(1).real(1).digits(0, 2));
}

ControlBlockette station() {
  return volume::b50({.latitude = 64.9,
                      .longitude = -16.9,
                      .comments = 1,
                      .site = "Dyngja",
                      .begin = volume::seed_time(Time{})});
}

ControlBlockette channel(const std::string &code) {
  return volume::b52({.location = "00",
                      .code = code,
                      .calibration_units = 1,
                      .latitude = 64.9,
                      .longitude = -16.9,
                      .depth = 1,
                      .begin = volume::seed_time(Time{})});
}

ControlBlockette references() {
  return ControlBlockette(60)
      .digits(2, 2)
      .digits(1, 2)
      .digits(2, 2)
      .digits(1, 4)
      .digits(2, 4)
      .digits(2, 2)
      .digits(1, 2)
      .digits(3, 4);
}

ControlBlockette sensitivity() {
  return ControlBlockette(58).digits(0, 2).real(6e8).real(1).digits(0, 2);
}

void add_station(VolumeWriter *out) {
  out->control('S', station());
  out->control('S', ControlBlockette(51).var(Time{}).var("").digits(1, 4).digits(0, 6));
  out->control('S', {channel("BHZ"), references(), sensitivity()});
  out->control('S', channel("BHE"));
  out->control('S', ControlBlockette(61)
                        .digits(1, 2)
                        .var("F")
                        .fixed("A", 1)
                        .digits(1, 3)
                        .digits(1, 3)
                        .digits(2, 4)
                        .real(1, volume::kReal14)
                        .real(2, volume::kReal14));
}

DataRecord record(ByteOrder order) {
  return {.sta = "DYNGA",
          .loc = "00",
          .chan = "BHZ",
          .net = "XX",
          .samples = 10,
          .rate_factor = 20,
          .rate_multiplier = 1,
          .order = order};
}

std::string small_volume() {
  VolumeWriter out(kShort);
  out.control('V', identifier(8));
  add_dictionary(&out);
  add_station(&out);
  out.control('T', ControlBlockette(70).fixed("E", 1).var(Time{}).var(Time{}));
  out.data(record(ByteOrder::kBig).b1000(3, 1, 8).b1001(100, 12, 7));
  out.data(record(ByteOrder::kLittle).b1000(3, 0, 8).samples32({1, 2, 3}));
  return out.bytes();
}

std::string station_volume(std::size_t length, int exponent) {
  VolumeWriter out(length);
  out.control('V', identifier(exponent));
  add_dictionary(&out);
  add_station(&out);
  add_station(&out);
  return out.bytes();
}

// Every data blockette, a few in each record.
std::string data_volume(ByteOrder order) {
  VolumeWriter out(kShort);
  out.data(record(order).b100(20.0F).b200({.detector = "STA"}).b201({.detector = "LTA"}));
  out.data(record(order).b300({.channel = "BHZ"}).b310({.channel = "BHZ"}));
  out.data(record(order).b320({.channel = "BHZ"}).b395({}).b400(1, 2, 3).b405({1, 2, 3}));
  out.data(record(order).b390({.channel = "BHZ"}).b1000(3, order == ByteOrder::kBig ? 1 : 0, 8));
  out.data(record(order).b500({.type = "Valid", .model = "GPS", .status = "locked"}), 2 * kShort);
  out.data(record(order).b2000({.headers = {"one", "two"}, .data = "opaque"}).b1001(1, 2, 3));
  return out.bytes();
}

std::string telemetry_volume() {
  VolumeWriter out(kShort);
  out.control('V', ControlBlockette(8)
                       .raw("02.4")
                       .digits(8, 2)
                       .fixed("DYNGA", 5)
                       .fixed("00", 2)
                       .fixed("BHZ", 3)
                       .var(Time{})
                       .var(Time{})
                       .var(Time{})
                       .digits(1, 6)
                       .fixed("XX", 2));
  out.data(record(ByteOrder::kBig).b1000(3, 1, 8));
  return out.bytes();
}

// What strict reading stops at: garbage, numbers that do not run, a blockette that is cut, a code
// that is defined again, blank and unreadable numbers, records that state nothing.
std::string damaged_volume() {
  VolumeWriter out(kShort);
  out.control('A', {ControlBlockette(34).digits(1, 3).var("M").var(""),
                    ControlBlockette(34).digits(1, 3).var("S").var(""),
                    ControlBlockette(34).raw("  x").var("S").var("")});
  out.new_record().sequence(7);
  out.control('S', channel("BHZ").text_with_length(900));
  std::string bytes = out.bytes() + "garbage";
  bytes += record(ByteOrder::kBig).b1000(3, 1, 8).bytes(kShort, 42) + std::string(64, ' ');
  bytes += record(ByteOrder::kBig).bytes(128, 41) + record(ByteOrder::kLittle).bytes(128, 1);
  return bytes + record(ByteOrder::kBig).b1000(3, 1, 9).b100(20).bytes(100, 2);
}

std::vector<std::string> volumes() {
  return {small_volume(),
          station_volume(kShort, 8),
          station_volume(4096, 12),
          data_volume(ByteOrder::kBig),
          data_volume(ByteOrder::kLittle),
          telemetry_volume(),
          damaged_volume(),
          hostile::far_chains(200)};
}

// ---- pieces of volumes ----

// The place of a type in the catalogue, as fuzz_control's first byte.
int place_of(const SDBlkDef *definition) { return static_cast<int>(definition - seed_blkdefs); }

// The first blockettes of each type, and the first data records.
class Pieces {
 public:
  explicit Pieces(std::filesystem::path folder) : folder_(std::move(folder)) {}

  void cut(const std::string &bytes) {
    SDBlkVol *vol = sdblk_new(nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), 0);
    SDBlk *block = nullptr;
    while (true) {
      const int result = sdblk_parseblk(vol, &block);
      if (result < 0 || result == SDBLK_EOF) break;
      keep(*vol, *block);
    }
    sdblk_free(block);
    sdblk_closevol(vol);
  }

 private:
  void keep(const SDBlkVol &vol, const SDBlk &block) {
    constexpr int kOfEachType = 3;
    constexpr int kRecords = 24;
    const bool is_record = block.data_ptr != nullptr;
    int &kept = kept_[block.blockette_type];
    if (block.blkdef == nullptr || kept == (is_record ? kRecords : kOfEachType)) return;
    ++kept;
    const std::string name = std::to_string(block.blockette_type) + "-" + std::to_string(kept);
    if (is_record) {
      const auto length = static_cast<std::size_t>(vol.logical_length);
      write_file(folder_ / "fuzz_data" / name,
                 {block.data_ptr, std::min<std::size_t>(length, 512)});
      return;
    }
    const std::string fields(block.blockette_raw + 7,
                             static_cast<std::size_t>(std::max(0, block.blockette_length - 7)));
    write_file(folder_ / "fuzz_control" / name,
               std::string{static_cast<char>(place_of(block.blkdef)), '\0'} + fields);
  }

  std::filesystem::path folder_;
  std::map<int, int> kept_;
};

// ---- what the scanners read ----

// Inputs of one part of fuzz_scan, whose number is the first byte.
struct ScanInputs {
  char part;
  std::vector<std::string> texts;
};

std::vector<ScanInputs> scan_inputs() {
  using namespace std::string_literals;
  const std::vector<std::string> integers = {"0042", "  -7 ", "4 2", "99999999999999999999"};
  const std::vector<std::string> reals = {"-1.23456E-03", "0x1.8p3", "-infinity", "nan(12)"};
  const std::vector<std::string> texts = {"", "  Name of a site  ~next", "\0 text ~"s};
  return {{0, integers},
          {1, reals},
          {2, reals},
          {3, {"2021,075,12:30:15.0500", "2021,075,12", "2021"}},
          {4, texts},
          {5, texts},
          {6, {"\x04\x08\0 text ~next"s, "\0\x03\0  a b"s}},
          {7, {"\0\0\0\0\x65\xcd\xcd\x41%Y:%j:%T %F %s"s}},
          {8, {"\xe5\x07\0\0\x4b\0\0\0\x0c\0\0\0"s}},
          {9, {"_BH[ZNE]\nXX_DYNGA_BHZ_00"}},
          {10, {" line\n", " \t"}}};
}

void write_scan_inputs(const std::filesystem::path &folder) {
  for (const ScanInputs &inputs : scan_inputs()) {
    int number = 0;
    for (const std::string &text : inputs.texts) {
      const std::string name = std::to_string(inputs.part) + "-" + std::to_string(++number);
      write_file(folder / "fuzz_scan" / name, std::string(1, inputs.part) + text);
    }
  }
}

void make_corpus(const std::filesystem::path &folder, const std::vector<const char *> &named) {
  Pieces pieces(folder);
  int number = 0;
  for (const std::string &bytes : volumes()) {
    write_file(folder / "fuzz_volume" / ("volume-" + std::to_string(++number)), bytes);
    pieces.cut(bytes);
  }
  for (const char *path : named) pieces.cut(read_file(path));
  write_scan_inputs(folder);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2) {
    std::fputs("usage: make_corpus FOLDER volume...\n", stderr);
    return 1;
  }
  try {
    make_corpus(argv[1], {argv + 2, argv + argc});
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_corpus: %s\n", error.what());
    return 1;
  }
  return 0;
}
