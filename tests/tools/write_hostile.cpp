// Writes volumes that were made to hurt a reader, small ones:
//
//   write_hostile FOLDER
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/cmd/hostile_volumes.h"

namespace {

constexpr int kCount = 20;

void write_file(const std::filesystem::path &path, const std::string &bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes << std::flush;
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void write_all(const std::filesystem::path &folder) {
  std::filesystem::create_directories(folder);
  write_file(folder / "shortest_records", hostile::shortest_records(kCount));
  write_file(folder / "longest_chains", hostile::longest_chains(1));
  write_file(folder / "overlapping_records", hostile::overlapping_records(2));
  write_file(folder / "overlapping_texts", hostile::overlapping_texts(2));
  write_file(folder / "broken_promises", hostile::broken_promises(kCount));
  write_file(folder / "steps_back", hostile::steps_back(kCount));
  write_file(folder / "large_dictionary", hostile::large_dictionary(kCount));
  write_file(folder / "long_references", hostile::long_references(kCount));
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: write_hostile FOLDER\n", stderr);
    return 2;
  }
  try {
    write_all(argv[1]);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "write_hostile: %s\n", error.what());
    return 1;
  }
  return 0;
}
