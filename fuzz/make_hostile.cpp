// Writes the volumes that cost the most time and memory for their length:
//
//   make_hostile FOLDER
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/cmd/hostile_volumes.h"

namespace {

constexpr unsigned kLongestRecord = 2048;  // times 64 bytes

void write_file(const std::filesystem::path &path, const std::string &bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void make_hostile(const std::filesystem::path &folder) {
  std::filesystem::create_directories(folder);
  write_file(folder / "overlapping-texts-1.seed", hostile::overlapping_texts(1, kLongestRecord));
  write_file(folder / "overlapping-texts-2.seed", hostile::overlapping_texts(2, kLongestRecord));
  write_file(folder / "steps-back.seed", hostile::steps_back(2040));
  write_file(folder / "broken-promises.seed", hostile::broken_promises(10000));
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: make_hostile FOLDER\n", stderr);
    return 1;
  }
  try {
    make_hostile(argv[1]);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_hostile: %s\n", error.what());
    return 1;
  }
  return 0;
}
