// Reads any file whole and prints its records with their blocks, what was passed over, and what
// could not be taken at its word.  At the end it accounts for each byte.
//
//   inspect FILE
#include <cinttypes>
#include <cstdio>
#include <exception>

#include "seed/sdblk.hpp"

namespace {

void print(const SDBlkFinding &finding) {
  std::printf("%10" PRId64 "  %s", finding.offset, sdblk_cause_name(finding.cause));
  if (finding.length > 0) std::printf(", %" PRId64 " bytes", finding.length);
  std::printf(": %s\n", finding.text);
}

void print(sdblk::Block block) {
  const SDBlk &raw = block.raw();
  std::printf("%10" PRId64 "  %c record of %d bytes, block %" PRId64 ", %s\n", raw.record_offset,
              raw.record_type, raw.logical_length, block.number(), block.name());
  for (const sdblk::Block chained : block.chain()) {
    std::printf("%10" PRId64 "    %s\n", chained.offset(), chained.name());
  }
}

// Returns the exit status.
int inspect(const char *path) {
  std::int64_t passed_over = 0;
  sdblk::Volume volume = sdblk::Volume::open_whole(path, {}, [&](const SDBlkFinding &finding) {
    print(finding);
    const bool is_between_records = finding.cause < SDBLK_SKIP_PREFIX;
    if (is_between_records) passed_over += finding.length;
  });
  for (const sdblk::Block block : volume) {
    // Its notes come while it is decoded.
    block.decode();
    print(block);
  }
  const SDBlkWholeCounts counts = volume.counts();
  std::printf("%" PRId64 " bytes: %" PRId64 " in %" PRId64 " records, %" PRId64 " between them\n",
              volume.size(), counts.record_bytes, counts.records, passed_over);
  return counts.record_bytes + passed_over == volume.size() ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: inspect FILE\n", stderr);
    return 1;
  }
  try {
    return inspect(argv[1]);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "inspect: %s\n", error.what());
    return 1;
  }
}
