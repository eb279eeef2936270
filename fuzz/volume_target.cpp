// A whole volume.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "cmd/station_dump.h"
#include "fuzz/blocks.h"
#include "fuzz/harness.h"

using namespace tarvik;

namespace fuzz {

namespace {

// Listings multiply what is short in the file; this much of them is enough for one input.
constexpr std::uint64_t kListedBytes = std::uint64_t{1} << 24;

// What one reading does beside decoding and listing; every input has one way of its own.
struct Way {
  std::int32_t logical_length;
  int verbosity;
  bool filtered;  // the station buffer with patterns and a time span
  bool read_file;
};

Way way_of(std::string_view bytes) {
  static constexpr std::int32_t kLengths[] = {0, 0, 512, 256, 256, 64, 131072, 100};
  std::uint32_t sum = static_cast<std::uint32_t>(bytes.size());
  for (const char c : bytes.substr(0, 64)) sum = sum * 31 + static_cast<unsigned char>(c);
  return {kLengths[sum % 8], static_cast<int>(sum / 8 % 2), sum / 16 % 2 != 0, sum / 32 % 8 == 0};
}

// The station buffer, fed block by block.
class Stations {
 public:
  explicit Stations(bool filtered) : filtered_(filtered), accept_(newtbl()), reject_(newtbl()) {
    settbl(accept_, -1, wanted_.data());
    settbl(reject_, -1, refused_.data());
  }
  ~Stations() {
    sdblk_free_stabuf(station_);
    freetbl(accept_, nullptr);
    freetbl(reject_, nullptr);
  }
  Stations(const Stations &) = delete;
  Stations &operator=(const Stations &) = delete;

  void feed(const SDBlk &block) {
    if (feed_once(block) == 2) require(feed_once(block) != 2, "a complete station is left once");
    elog_clear_register(0);
  }

 private:
  int feed_once(const SDBlk &block) {
    if (!filtered_) return sdblk_setup_stabuf(&block, &station_, nullptr, nullptr, 1, 0.0, 0.0);
    return sdblk_setup_stabuf(&block, &station_, accept_, reject_, 0, 0.0, 2e9);
  }

  bool filtered_;
  std::string wanted_ = "_[BLE]H";
  std::string refused_ = "^XX.*_BHE";
  Tbl *accept_;
  Tbl *reject_;
  SDBlkSta *station_ = nullptr;
};

// What a reading came upon until the end, the first fault or a fatal one.
struct Reading {
  Listing listing;
  long blocks = 0;
  bool operator==(const Reading &) const = default;
};

void read_volume(SDBlkVol *vol, const Way &way, Reading *reading) {
  Block block;
  Stations stations(way.filtered);
  while (reading->listing.bytes() < kListedBytes) {
    const int result = parse(vol, &block);
    if (result < 0 || result == SDBLK_EOF) return;
    ++reading->blocks;
    if (!exercise_block(block.get(), &reading->listing)) return;
    station_dump(block.get(), way.verbosity);
    if (block->data_ptr == nullptr) stations.feed(*block);
    if (stands_still(*block)) return;
  }
}

Reading read_and_close(SDBlkVol *opened, const Way &way) {
  const Volume vol(opened);
  require(vol != nullptr, "a volume opens");
  Reading reading;
  if (!until_fatal([&] { read_volume(vol.get(), way, &reading); })) reading.listing.add("fatal");
  return reading;
}

// The same bytes as a file.
Reading read_as_file(std::string_view bytes, const Way &way) {
  const int fd = memfd_create("volume", MFD_CLOEXEC);
  require(fd >= 0, "a file can be made");
  require(write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
          "a file can be written");
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  SDBlkVol *vol = sdblk_new(path.c_str(), nullptr, 0, way.logical_length);
  close(fd);
  return read_and_close(vol, way);
}

}  // namespace

long exercise_volume(std::string_view bytes) {
  const Way way = way_of(bytes);
  // A copy of the exact size, so that the byte after it is nobody's.
  const std::unique_ptr<char[]> image(new char[bytes.size()]);
  bytes.copy(image.get(), bytes.size());
  const Reading reading = read_and_close(
      sdblk_new(nullptr, image.get(), static_cast<std::int32_t>(bytes.size()), way.logical_length),
      way);
  constexpr std::size_t kSmallestFile = 10;
  if (way.read_file && bytes.size() >= kSmallestFile) {
    require(read_as_file(bytes, way) == reading, "a file and a buffer list the same");
  }
  const std::string_view exact(image.get(), bytes.size());
  exercise_whole(exact, way.logical_length);
  exercise_views(exact, way.logical_length);
  return reading.blocks;
}

}  // namespace fuzz
