// Runs a fuzz target once for each file that it is given, and for each file in a folder: for
// compilers without libFuzzer.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/input.h"

// Nothing changes here; the targets' own mutators are linked all the same.
std::size_t LLVMFuzzerMutate(std::uint8_t * /*data*/, std::size_t size, std::size_t /*max_size*/) {
  return size;
}

namespace {

int replay(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
  return 1;
}

int replay_all(const std::filesystem::path &path) {
  if (!std::filesystem::is_directory(path)) return replay(path);
  int count = 0;
  for (const auto &entry : std::filesystem::directory_iterator(path)) {
    if (entry.is_regular_file()) count += replay(entry.path());
  }
  return count;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    LLVMFuzzerInitialize(&argc, &argv);
    int count = 0;
    for (int i = 1; i < argc; ++i) count += replay_all(argv[i]);
    std::fprintf(stderr, "%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "replay: %s\n", error.what());
    return 1;
  }
}
