// Times the command sdblk beside its yardsticks and prints one table:
//
//   compare_sdblk SDBLK TARVIK YARDSTICK MSI FOLDER [ROUNDS]
//
// FOLDER holds the volumes and folders that scripts/bench.sh makes; MSI, a peer, may be "-".
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "bench/measure.h"

namespace {

using namespace bench;

constexpr double kRecordsA = 256.0 * 1024 * 1024 / 512;
constexpr double kSmallFiles = 4000;

struct Tools {
  std::string sdblk;
  std::string tarvik;
  std::string yardstick;
  std::string msi;
  std::string folder;
};

// The command with options, over one path.
Command sdblk(const Tools &tools, const std::vector<std::string> &options,
              const std::string &path) {
  Command command{{tools.sdblk}};
  command.arguments.insert(command.arguments.end(), options.begin(), options.end());
  command.arguments.push_back(path);
  return command;
}

// What a command writes, in a file of the folder; its path.
std::string output_of(const Tools &tools, Command command, const std::string &name) {
  command.output = tools.folder + "/" + name;
  run(command);
  read_afresh(command.output);
  return command.output;
}

// Files at the same time.
std::vector<Row> rows_of_workers(const Tools &tools) {
  const std::string forty = tools.folder + "/forty";
  const std::string one = "sdblk blocks -j 1, 40 files";
  return {
      {one, sdblk(tools, {"blocks", "-j", "1"}, forty), {}, 0, 0},
      {"sdblk blocks -j 2, 40 files",
       sdblk(tools, {"blocks", "-j", "2"}, forty),
       {one},
       1 / 1.7,
       0},
      {"sdblk blocks -j 8, 40 files", sdblk(tools, {"blocks", "-j", "8"}, forty), {one}, 0, 0},
  };
}

std::vector<Row> rows_of_volumes(const Tools &tools) {
  const std::string a = tools.folder + "/A.seed";
  const std::string c = tools.folder + "/C.seed";
  const std::string c16 = tools.folder + "/C16.seed";
  const std::string small = tools.folder + "/small";
  const std::string many = tools.folder + "/many";
  const std::string d = tools.folder + "/D.seed";
  const std::string e = tools.folder + "/E.seed";
  for (const std::string &path : {a, c, c16, d, e}) read_afresh(path);
  const Command blocks_a = sdblk(tools, {"blocks"}, a);
  const Command blocks_c = sdblk(tools, {"blocks"}, c);
  const Command blocks_e = sdblk(tools, {"blocks"}, e);
  const Command stations_c = sdblk(tools, {"stations"}, c);
  const auto cat = [&](const Command &command, const std::string &name) {
    return Command{{"/bin/cat", output_of(tools, command, name)}};
  };
  const std::string known = output_of(tools, sdblk(tools, {"volumes"}, many), "known.json");
  const Command msi = tools.msi == "-" ? Command{} : Command{{tools.msi, "-T", a}};
  return {
      {"cat of the blocks, A", cat(blocks_a, "A.json"), {}, 0, 0},
      {"cat of the blocks, C", cat(blocks_c, "C.json"), {}, 0, 0},
      {"cat of the blocks, E", cat(blocks_e, "E.json"), {}, 0, 0},
      {"cat of the stations, C", cat(stations_c, "C.stations.json"), {}, 0, 0},
      {"byte sum, C", {{tools.yardstick, "sum", c}}, {}, 0, 0},
      {"tarvik A", {{tools.tarvik, a}}, {}, 0, kRecordsA},
      {"tarvik D", {{tools.tarvik, d}}, {}, 0, kRecordsA},
      {"find -printf, 100,000 files",
       {{"/usr/bin/find", many, "-printf", "%p %s %T@\\n"}},
       {},
       0,
       0},
      {"sdblk blocks A", blocks_a, {"cat of the blocks, A"}, 4, kRecordsA},
      {"sdblk blocks C", blocks_c, {"cat of the blocks, C"}, 4, 0},
      {"sdblk blocks E", blocks_e, {"cat of the blocks, E"}, 0, 0},
      {"sdblk segments A", sdblk(tools, {"segments"}, a), {"tarvik A"}, 1.6, kRecordsA},
      {"sdblk segments D", sdblk(tools, {"segments"}, d), {"tarvik D"}, 1.6, kRecordsA},
      {"msi -T A", msi, {"sdblk segments A"}, 0, kRecordsA},
      {"sdblk stations C", stations_c, {"byte sum, C", "cat of the stations, C"}, 5, 0},
      {"sdblk stationxml C", sdblk(tools, {"stationxml"}, c), {"sdblk stations C"}, 2, 0},
      {"sdblk stationxml, 16 times C",
       sdblk(tools, {"stationxml"}, c16),
       {"sdblk stationxml C"},
       0,
       0},
      {"sdblk volumes, 4,000 files", sdblk(tools, {"volumes"}, small), {}, 0, 0},
      {"sdblk volumes --known, 100,000 files",
       sdblk(tools, {"volumes", "--known", known}, many),
       {"find -printf, 100,000 files"},
       2,
       0},
  };
}

std::vector<Row> rows(const Tools &tools) {
  std::vector<Row> all = rows_of_volumes(tools);
  const std::vector<Row> workers = rows_of_workers(tools);
  all.insert(all.end(), workers.begin(), workers.end());
  return all;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 6) {
    std::fputs("usage: compare_sdblk SDBLK TARVIK YARDSTICK MSI FOLDER [ROUNDS]\n", stderr);
    return 2;
  }
  try {
    const Tools tools = {argv[1], argv[2], argv[3], argv[4], argv[5]};
    const int rounds_wanted = argc > 6 ? static_cast<int>(std::strtol(argv[6], nullptr, 10)) : 9;
    Table table(rows(tools));
    table.measure(rounds_wanted);
    table.print();
    std::printf("\nsdblk volumes: %.0f files of 20 KiB a CPU second (target 30000)\n",
                kSmallFiles / table.cpu_seconds_of("sdblk volumes, 4,000 files"));
  } catch (const std::exception &error) {
    std::fprintf(stderr, "compare_sdblk: %s\n", error.what());
    return 1;
  }
  return 0;
}
