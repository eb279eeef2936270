// Times the command beside its yardsticks and prints one table:
//
//   compare TARVIK YARDSTICK MSEED_HEADERS FOLDER [ROUNDS]
//
// FOLDER holds the volumes that scripts/bench.sh makes; MSEED_HEADERS may be "-".
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "bench/measure.h"

namespace {

using namespace bench;

constexpr double kRecordsA = 256.0 * 1024 * 1024 / 512;
constexpr double kRecordsB = 256.0 * 1024 * 1024 / 4096;

struct Tools {
  std::string tarvik;
  std::string yardstick;
  std::string mseed_headers;
  std::string folder;
};

std::vector<Row> main_rows(const Tools &tools) {
  const std::string a = tools.folder + "/A.seed";
  const std::string b = tools.folder + "/B.seed";
  const std::string c = tools.folder + "/C.seed";
  const std::string listing_a = tools.folder + "/A.listing";
  const std::string listing_c = tools.folder + "/C.listing";
  const std::string file = tools.folder + "/output";
  const auto tarvik = [&](std::vector<std::string> options, const std::string &volume) {
    std::vector<std::string> arguments = {tools.tarvik};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(volume);
    return Command{arguments};
  };
  const auto into_file = [&](Command command) {
    command.output = file;
    return command;
  };
  run(into_file({tarvik({"-vv"}, a).arguments}));
  std::rename(file.c_str(), listing_a.c_str());
  run(into_file({tarvik({"-vv"}, c).arguments}));
  std::rename(file.c_str(), listing_c.c_str());
  for (const std::string &path : {a, b, c, listing_a, listing_c}) read_afresh(path);
  std::vector<Row> rows = {
      {"framing limit, A", {{tools.yardstick, "frame", "512", a}}, {}, 0, kRecordsA},
      {"framing limit, B", {{tools.yardstick, "frame", "4096", b}}, {}, 0, kRecordsB},
      {"byte sum, A", {{tools.yardstick, "sum", a}}, {}, 0, 0},
      {"byte sum, C", {{tools.yardstick, "sum", c}}, {}, 0, 0},
      {"cat of the listing, A", {{"/bin/cat", listing_a}}, {}, 0, 0},
      {"cat of the listing, C", {{"/bin/cat", listing_c}}, {}, 0, 0},
      {"tarvik A", tarvik({}, a), {"framing limit, A"}, 8, kRecordsA},
      {"tarvik B", tarvik({}, b), {"framing limit, B"}, 0, kRecordsB},
      {"tarvik C", tarvik({}, c), {"byte sum, C"}, 0, 0},
      {"tarvik -v A", tarvik({"-v"}, a), {"tarvik A"}, 3, kRecordsA},
      {"tarvik -vv A", tarvik({"-vv"}, a), {"cat of the listing, A"}, 4, kRecordsA},
      {"tarvik -vv B", tarvik({"-vv"}, b), {}, 0, kRecordsB},
      {"tarvik -vv C", tarvik({"-vv"}, c), {"cat of the listing, C"}, 4, 0},
      {"tarvik -sta C", tarvik({"-sta"}, c), {"byte sum, C"}, 8, 0},
      {"tarvik A, to a file", into_file(tarvik({}, a)), {"framing limit, A"}, 0, kRecordsA},
      {"tarvik -v A, to a file", into_file(tarvik({"-v"}, a)), {"tarvik A"}, 0, kRecordsA},
      {"tarvik -vv A, to a file",
       into_file(tarvik({"-vv"}, a)),
       {"cat of the listing, A"},
       0,
       kRecordsA},
      {"tarvik -vv C, to a file", into_file(tarvik({"-vv"}, c)), {"cat of the listing, C"}, 0, 0},
      {"tarvik -sta C, to a file", into_file(tarvik({"-sta"}, c)), {"byte sum, C"}, 0, 0},
  };
  if (tools.mseed_headers != "-") {
    rows.push_back(
        {"libmseed headers, A", {{tools.mseed_headers, "512", a}}, {"tarvik A"}, 0, kRecordsA});
  }
  return rows;
}

// Start to exit: many short runs.
void compare_start(const Tools &tools) {
  const Command nothing{{"/bin/true"}};
  const Command small{{tools.tarvik, tools.folder + "/small.seed"}};
  std::vector<double> nothing_seconds;
  std::vector<double> small_seconds;
  for (int i = 0; i < 201; ++i) {
    nothing_seconds.push_back(run(nothing).seconds);
    small_seconds.push_back(run(small).seconds);
  }
  std::printf(
      "\nStart to exit: /bin/true %.3f ms, tarvik on 4 KiB %.3f ms, ratio %.2f (target 2)\n",
      median(nothing_seconds) * 1e3, median(small_seconds) * 1e3,
      median(small_seconds) / median(nothing_seconds));
}

// The same cost a record whatever the volume's length.
void compare_lengths(const Tools &tools, int rounds) {
  constexpr std::array<int, 3> kFactors = {1, 4, 16};
  std::array<std::vector<double>, kFactors.size()> seconds;
  std::array<long, kFactors.size()> peak_kib = {};
  const auto volume = [&](int factor) {
    return tools.folder + "/A" + std::to_string(factor) + ".seed";
  };
  for (const int factor : kFactors) read_afresh(volume(factor));
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < kFactors.size(); ++i) {
      const Measurement measurement = run({{tools.tarvik, volume(kFactors[i])}});
      seconds[i].push_back(measurement.seconds / (kRecordsA * kFactors[i]));
      peak_kib[i] = measurement.peak_kib;
    }
  }
  std::puts("\n| length | ns a record | of 1 x A | resident |\n|---|---:|---:|---:|");
  for (std::size_t i = 0; i < kFactors.size(); ++i) {
    std::printf("| %d x A | %.1f | %.2f | %.1f MiB |\n", kFactors[i], median(seconds[i]) * 1e9,
                median(seconds[i]) / median(seconds[0]), static_cast<double>(peak_kib[i]) / 1024.0);
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 5) {
    std::fputs("usage: compare TARVIK YARDSTICK MSEED_HEADERS FOLDER [ROUNDS]\n", stderr);
    return 2;
  }
  try {
    const Tools tools = {argv[1], argv[2], argv[3], argv[4]};
    const int rounds = argc > 5 ? static_cast<int>(std::strtol(argv[5], nullptr, 10)) : 9;
    Table table(main_rows(tools));
    table.measure(rounds);
    table.print();
    compare_start(tools);
    compare_lengths(tools, rounds);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "compare: %s\n", error.what());
    return 1;
  }
  return 0;
}
