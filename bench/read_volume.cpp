// Reads and decodes volumes with the library, and prints what it took:
//
//   read_volume strict|whole FILE...
//
// The best of five rounds, in seconds and in MB/s.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>

#include "seed/whole.h"

namespace {

struct Reading {
  double seconds;
  long blocks;
  long long bytes;
};

Reading read_once(const char *path, bool whole) {
  const auto start = std::chrono::steady_clock::now();
  SDBlkVol *vol = whole ? sdblk_open_whole(path, 0, nullptr) : sdblk_new(path, nullptr, 0, 0);
  if (vol == nullptr) elog_die(0, "read_volume: %s cannot be opened.\n", path);
  Reading reading = {0, 0, vol->image_size};
  SDBlk *block = nullptr;
  int result = 0;
  while ((result = sdblk_parseblk(vol, &block)) >= 0 && result != SDBLK_EOF) {
    if (sdblk_unstuffblk(block) < 0) break;
    ++reading.blocks;
  }
  sdblk_free(block);
  sdblk_closevol(vol);
  reading.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return reading;
}

void print_best(const char *path, bool whole) {
  constexpr int kRounds = 5;
  Reading best = {std::numeric_limits<double>::infinity(), 0, 0};
  for (int round = 0; round < kRounds; ++round) {
    const Reading reading = read_once(path, whole);
    if (reading.seconds < best.seconds) best = reading;
  }
  std::printf("%s: %.4f s, %.0f MB/s, %ld blocks\n", path, best.seconds,
              static_cast<double>(best.bytes) / best.seconds / 1e6, best.blocks);
}

}  // namespace

int main(int argc, char **argv) {
  const bool whole = argc > 2 && std::strcmp(argv[1], "whole") == 0;
  if (!whole && (argc <= 2 || std::strcmp(argv[1], "strict") != 0)) {
    elog_die(0, "usage: read_volume strict|whole FILE...\n");
  }
  for (int i = 2; i < argc; ++i) print_best(argv[i], whole);
  return 0;
}
