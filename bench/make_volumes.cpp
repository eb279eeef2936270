// Writes the volumes that the benchmarks read, the same bytes each time:
//
//   make_volumes records 512 256 FILE    256 MiB of 512-byte data records, blockettes 1000 and 1001
//   make_volumes continuous 512 256 FILE the same, but each record goes on where its channel's last one ended
//   make_volumes metadata 64 FILE        64 MiB of station metadata with long responses
//   make_volumes varied 64 FILE          the same, but each channel's response has numbers of its own
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

// A file that is written piece by piece: the volumes may be larger than memory.
class File {
 public:
  explicit File(const char *path) : file_(std::fopen(path, "wb")) {
    if (file_ == nullptr) throw std::runtime_error(std::string("cannot write ") + path);
  }
  ~File() { std::fclose(file_); }
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  void write(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
      throw std::runtime_error("write error");
    }
  }

 private:
  std::FILE *file_;
};

std::string noise(std::size_t size) {
  std::mt19937 random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bytes each time
  std::string bytes(size, '\0');
  for (char &byte : bytes) byte = static_cast<char>(random() & 0xff);
  return bytes;
}

// Binary logarithm of a record length.
unsigned exponent_of(std::size_t length) {
  unsigned exponent = 0;
  while ((std::size_t{1} << exponent) < length) ++exponent;
  return exponent;
}

// One record a minute, so that none goes on where another one ended.
Time scattered_time(std::size_t index) {
  const auto minute = static_cast<int>(index);
  return {2010 + minute / 1440 / 365 % 20,
          minute / 1440 % 365 + 1,
          minute / 60 % 24,
          minute % 60,
          minute % 59,
          minute % 10000};
}

// Records of 20 s, the twelve channels in turn.
Time continuous_time(std::size_t index) {
  constexpr std::size_t kChannels = 12;
  const auto seconds = static_cast<int>(index / kChannels * 20);
  return {2010, seconds / 86400 + 1, seconds / 3600 % 24, seconds / 60 % 60, seconds % 60, 0};
}

// After the number 999999 comes 100000.
void write_records(bool is_continuous, std::size_t length, std::size_t mebibytes, File *file) {
  static constexpr std::array<const char *, 3> kChannels = {"BHZ", "BHN", "BHE"};
  const std::size_t records_of_station = is_continuous ? 6 : 300;
  const std::string payload = noise(length - 64);
  const std::size_t count = mebibytes * kMebibyte / length;
  long sequence = 1;
  for (std::size_t i = 0; i < count; ++i) {
    DataRecord record{.sta = i / records_of_station % 2 == 0 ? "DYNGA" : "SKERA",
                      .loc = i / 3 % 2 == 0 ? "" : "00",
                      .chan = kChannels[i % kChannels.size()],
                      .net = "XX",
                      .time = is_continuous ? continuous_time(i) : scattered_time(i),
                      .samples = 400,
                      .rate_factor = 20,
                      .rate_multiplier = 1,
                      .payload = payload};
    record.b1000(11, 1, exponent_of(length)).b1001(100, 12, 7);
    file->write(record.bytes(length, sequence));
    sequence = sequence == 999999 ? 100000 : sequence + 1;
  }
}

// The numbers of a response are those of all channels, or, with a scale of its own, of one.
ControlBlockette fir(double scale, int stage, int coefficients) {
  ControlBlockette blockette(61);
  blockette.digits(stage, 2).var("XX_FIR_" + std::to_string(stage)).fixed("A", 1);
  blockette.digits(3, 3).digits(3, 3).digits(coefficients, 4);
  for (int i = 0; i < coefficients; ++i) {
    blockette.real(scale * std::sin(i * 0.37) * std::exp(-i * 0.01), volume::kReal14);
  }
  return blockette;
}

ControlBlockette coefficients(double scale, int stage, int count) {
  ControlBlockette blockette(54);
  blockette.fixed("D", 1).digits(stage, 2).digits(2, 3).digits(3, 3).digits(count, 4);
  for (int i = 0; i < count; ++i) blockette.real(scale * std::cos(i * 0.11) / (1 + i)).real(0.0);
  return blockette.digits(0, 4);
}

ControlBlockette poles_and_zeros(double scale, int stage, int zeros, int poles) {
  ControlBlockette blockette(53);
  blockette.fixed("A", 1).digits(stage, 2).digits(1, 3).digits(2, 3).real(5.71508e8).real(1.0);
  blockette.digits(zeros, 3);
  for (int i = 0; i < zeros; ++i) blockette.real(0.0).real(0.0).real(0.0).real(0.0);
  blockette.digits(poles, 3);
  for (int i = 0; i < poles; ++i) {
    const double part = scale * 0.037 * (i + 1);
    blockette.real(-part).real(part).real(0.0).real(0.0);
  }
  return blockette;
}

void add_dictionaries(VolumeWriter *writer) {
  static constexpr std::array<const char *, 4> kUnits = {"M/S", "V", "COUNTS", "C"};
  for (std::size_t i = 0; i < kUnits.size(); ++i) {
    writer->control('A', ControlBlockette(34)
                             .digits(static_cast<long>(i) + 1, 3)
                             .var(kUnits[i])
                             .var("A unit of measurement"));
  }
  for (int i = 1; i <= 200; ++i) {
    writer->control('A', ControlBlockette(33).digits(i, 3).var("Instrument " + std::to_string(i)));
  }
  writer->control('A', ControlBlockette(30).var("Steim-2").digits(1, 4).digits(50, 3).digits(0, 2));
}

// S1000 to S9999, T1000 ...
std::string station_code(int number) {
  constexpr int kALetter = 9000;
  return static_cast<char>('S' + number / kALetter) + std::to_string(1000 + number % kALetter);
}

ControlBlockette station(int number) {
  return volume::b50({.code = station_code(number),
                      .latitude = -80.0 + number % 160,
                      .longitude = -170.0 + number % 340,
                      .elevation = static_cast<double>(number % 3000),
                      .channels = 6,
                      .site = "A site with the number " + std::to_string(number),
                      .begin = volume::seed_time(2001, 1)});
}

ControlBlockette channel(int number, int index) {
  return volume::b52({.location = index < 3 ? "" : "00",
                      .code = std::array{"BHZ", "BHN", "BHE"}[static_cast<std::size_t>(index) % 3],
                      .instrument = 2 + number % 199,
                      .calibration_units = 2,
                      .latitude = -80.0 + number % 160,
                      .longitude = -170.0 + number % 340,
                      .elevation = static_cast<double>(number % 3000),
                      .depth = 2.5,
                      .azimuth = 90.0 * (index % 3),
                      .dip = index % 3 == 0 ? -90.0 : 0.0,
                      .length_exponent = 12,
                      .drift = 0.0001,
                      .begin = volume::seed_time(2001, 1)});
}

void add_responses(double scale, VolumeWriter *writer) {
  writer->control('S', poles_and_zeros(scale, 1, 12, 24));
  writer->control('S', ControlBlockette(58).digits(1, 2).real(1500.0).real(1.0).digits(0, 2));
  for (int stage = 2; stage < 5; ++stage) {
    writer->control('S', stage % 2 == 0 ? coefficients(scale, stage, 180) : fir(scale, stage, 600));
    writer->control('S', ControlBlockette(57)
                             .digits(stage, 2)
                             .real(80.0, volume::kReal10)
                             .digits(4, 5)
                             .digits(0, 5)
                             .real(1.55, volume::kReal11)
                             .real(1.55, volume::kReal11));
    writer->control('S', ControlBlockette(58).digits(stage, 2).real(1.0).real(1.0).digits(0, 2));
  }
  writer->control('S', ControlBlockette(58).digits(0, 2).real(6.29e8).real(1.0).digits(0, 2));
}

void write_metadata(bool are_varied, std::size_t mebibytes, File *file) {
  constexpr std::size_t kLength = 4096;
  VolumeWriter writer(kLength);
  writer.control('V', ControlBlockette(10)
                          .raw("02.412")
                          .var(Time{2001, 1})
                          .var(Time{2021, 1})
                          .var(Time{2021, 2})
                          .var("XX Data Centre")
                          .var("Benchmark"));
  add_dictionaries(&writer);
  std::string bytes = writer.bytes();
  std::size_t size = bytes.size();
  file->write(bytes);
  for (int number = 0; size < mebibytes * kMebibyte; ++number) {
    VolumeWriter next(kLength);
    next.sequence(static_cast<long>(size / kLength) + 1);
    next.control('S', station(number));
    for (int index = 0; index < 6; ++index) {
      next.control('S', channel(number, index));
      add_responses(are_varied ? 1 + 1e-5 * (6 * number + index) : 1, &next);
    }
    bytes = next.bytes();
    size += bytes.size();
    file->write(bytes);
  }
}

}  // namespace

int main(int argc, char **argv) {
  try {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 4 && (arguments[0] == "records" || arguments[0] == "continuous")) {
      File file(argv[4]);
      write_records(arguments[0] == "continuous", std::stoul(arguments[1]),
                    std::stoul(arguments[2]), &file);
    } else if (arguments.size() == 3 && (arguments[0] == "metadata" || arguments[0] == "varied")) {
      File file(argv[3]);
      write_metadata(arguments[0] == "varied", std::stoul(arguments[1]), &file);
    } else {
      std::fputs(
          "usage: make_volumes records LENGTH MEBIBYTES FILE\n"
          "       make_volumes continuous LENGTH MEBIBYTES FILE\n"
          "       make_volumes metadata MEBIBYTES FILE\n"
          "       make_volumes varied MEBIBYTES FILE\n",
          stderr);
      return 2;
    }
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_volumes: %s\n", error.what());
    return 1;
  }
  return 0;
}
