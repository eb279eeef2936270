// The functions that a volume's reading, decoding and listing spend their time in.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "seed/picture.h"
#include "seed/scan.h"
#include "seed/sdblk.h"
#include "support/epoch.h"
#include "support/line.h"
#include "support/time_text.h"
#include "tests/util/volume_writer.h"

using namespace tarvik;

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

constexpr int kRecords = 2000;

// 512-byte data records with blockettes 1000 and 1001.
const std::string &data_volume() {
  static const std::string bytes = [] {
    VolumeWriter writer(512);
    for (int i = 0; i < kRecords; ++i) {
      DataRecord record{.sta = "DYNGA", .loc = "00", .chan = "BHZ", .net = "XX"};
      record.time = {2021, 1 + i % 365, i % 24, i % 60, i % 59, i};
      writer.data(record.b1000(11, 1, 9).b1001(100, 12, 7));
    }
    return writer.bytes();
  }();
  return bytes;
}

// One long FIR response.
const std::string &response_volume() {
  static const std::string bytes = [] {
    ControlBlockette fir(61);
    fir.digits(1, 2).var("FIR").fixed("A", 1).digits(0, 3).digits(0, 3).digits(600, 4);
    for (int i = 0; i < 600; ++i) fir.real(1.0 / (1 + i), volume::kReal14);
    return VolumeWriter(16384).control('S', fir).bytes();
  }();
  return bytes;
}

// A volume in memory that is read from its start again and again.
class Reader {
 public:
  explicit Reader(const std::string &bytes) : bytes_(bytes) { open(); }
  ~Reader() { close(); }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  SDBlk *next() {
    if (sdblk_parseblk(vol_, &block_) == SDBLK_EOF) {
      close();
      open();
      sdblk_parseblk(vol_, &block_);
    }
    return block_;
  }

 private:
  void open() {
    vol_ = sdblk_new(nullptr, bytes_.data(), static_cast<std::int32_t>(bytes_.size()), 512);
    block_ = nullptr;
  }
  void close() {
    sdblk_free(block_);
    sdblk_closevol(vol_);
  }

  const std::string &bytes_;
  SDBlkVol *vol_ = nullptr;
  SDBlk *block_ = nullptr;
};

// The log goes to /dev/null, as in a run of the command whose listing is thrown away.
void throw_log_away() {
  static const bool done = [] {
    const int fd = open("/dev/null", O_WRONLY | O_CLOEXEC);
    return dup2(fd, STDERR_FILENO) >= 0;
  }();
  benchmark::DoNotOptimize(done);
}

void parse_data_record(benchmark::State &state) {
  Reader reader(data_volume());
  while (state.KeepRunning()) benchmark::DoNotOptimize(reader.next());
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(parse_data_record);

void parse_data_record_of_a_file(benchmark::State &state) {
  const char *folder = std::getenv("TMPDIR");
  std::string path = std::string(folder == nullptr ? "/tmp" : folder) + "/read_bench_XXXXXX";
  const int fd = mkstemp(path.data());
  close(fd);
  VolumeWriter writer(512);
  writer.raw_record(data_volume());
  writer.write_to(path);
  SDBlkVol *vol = nullptr;
  SDBlk *block = nullptr;
  while (state.KeepRunning()) {
    vol = sdblk_new(path.c_str(), nullptr, 0, 512);
    int result = 0;
    while (result != SDBLK_EOF) result = sdblk_parseblk(vol, &block);
    sdblk_clear(block);
    sdblk_closevol(vol);
  }
  sdblk_free(block);
  unlink(path.c_str());
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(parse_data_record_of_a_file);

void decode_data_record(benchmark::State &state) {
  Reader reader(data_volume());
  while (state.KeepRunning()) benchmark::DoNotOptimize(sdblk_unstuffblk(reader.next()));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(decode_data_record);

void list_data_record(benchmark::State &state) {
  throw_log_away();
  Reader reader(data_volume());
  SDBlk *block = reader.next();
  sdblk_unstuffblk(block);
  while (state.KeepRunning()) sdblk_printblk(block, "", 1);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(list_data_record);

void decode_fir(benchmark::State &state) {
  Reader reader(response_volume());
  while (state.KeepRunning()) benchmark::DoNotOptimize(sdblk_unstuffblk(reader.next()));
  state.SetItemsProcessed(state.iterations() * 600);
}
BENCHMARK(decode_fir);

void list_fir(benchmark::State &state) {
  throw_log_away();
  Reader reader(response_volume());
  SDBlk *block = reader.next();
  sdblk_unstuffblk(block);
  while (state.KeepRunning()) sdblk_printblk(block, "", 1);
  state.SetItemsProcessed(state.iterations() * 600);
}
BENCHMARK(list_fir);

void copy_fir(benchmark::State &state) {
  Reader reader(response_volume());
  SDBlk *block = reader.next();
  sdblk_unstuffblk(block);
  while (state.KeepRunning()) sdblk_free(sdblk_copy(block));
}
BENCHMARK(copy_fir);

void look_up_a_field(benchmark::State &state) {
  Reader reader(data_volume());
  SDBlk *block = reader.next();
  sdblk_unstuffblk(block);
  while (state.KeepRunning()) {
    std::int32_t offset = 0;
    sdblk_getv(block->contents, "blk_offset", &offset, nullptr);
    benchmark::DoNotOptimize(offset);
  }
}
BENCHMARK(look_up_a_field);

void look_up_in_ten_thousand(benchmark::State &state) {
  Arr *dictionary = newarr();
  for (int i = 0; i < 10000; ++i)
    setarr(dictionary, ("uid:" + std::to_string(i)).c_str(), dictionary);
  while (state.KeepRunning()) benchmark::DoNotOptimize(getarr(dictionary, "uid:7777"));
  freearr(dictionary, nullptr);
}
BENCHMARK(look_up_in_ten_thousand);

void scan_response_value(benchmark::State &state) {
  const std::string text = "-1.23456E-03";
  while (state.KeepRunning()) {
    double value = 0;
    benchmark::DoNotOptimize(picture::read_fields(text.data(), 12, 1, &value));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(scan_response_value);

void scan_any_real(benchmark::State &state) {
  while (state.KeepRunning()) {
    double value = 0;
    scan_real("-1.23456E-03", &value);
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(scan_any_real);

void scan_time_text(benchmark::State &state) {
  while (state.KeepRunning()) benchmark::DoNotOptimize(seed_time("2021,075,12:30:15.0500"));
}
BENCHMARK(scan_time_text);

void write_real(benchmark::State &state) {
  std::array<char, 512> text;
  double value = 1.234567891e-3;
  while (state.KeepRunning()) {
    benchmark::DoNotOptimize(value);
    benchmark::DoNotOptimize(put_fixed(text.data(), value, 6));
  }
}
BENCHMARK(write_real);

void write_time(benchmark::State &state) {
  std::array<char, 64> text;
  double epoch = 1615897815.0;
  while (state.KeepRunning()) {
    epoch += 1;
    benchmark::DoNotOptimize(put_time(text.data(), epoch));
  }
}
BENCHMARK(write_time);

}  // namespace
