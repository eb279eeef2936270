// One data record.
#include <cstring>
#include <memory>
#include <string_view>

#include "fuzz/blocks.h"
#include "fuzz/harness.h"
#include "support/epoch.h"

namespace fuzz {

namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kSmallestRecord = 16;
constexpr std::string_view kLetters = "DRQM";
constexpr double kNow = 1.6e9;      // in 2020
constexpr double kLateNow = 2.8e9;  // in 2058, when no year tells the byte order of every record

void read_all(SDBlkVol *vol) {
  Listing listing;
  Block block;
  constexpr int kBlocks = 64;  // its header may stand in the record again
  for (int i = 0; i < kBlocks; ++i) {
    const int result = parse(vol, &block);
    if (result < 0 || result == SDBLK_EOF) return;
    if (!exercise_block(block.get(), &listing)) return;
    for (const SDBlk *chained = block->next; chained != nullptr; chained = chained->next) {
      require(chained->data_ptr >= vol->image && chained->data_ptr < vol->image + vol->image_size,
              "a chained blockette starts inside the image");
    }
  }
}

}  // namespace

void exercise_data(std::string_view bytes) {
  if (bytes.size() < kSmallestRecord) return;
  const std::unique_ptr<char[]> image(new char[bytes.size()]);
  bytes.copy(image.get(), bytes.size());
  std::memcpy(image.get(), "000001", kHeaderSize - 2);
  if (kLetters.find(bytes[kHeaderSize - 2]) == std::string_view::npos) image[kHeaderSize - 2] = 'D';
  image[kHeaderSize - 1] = ' ';
  std_set_now(bytes.size() % 2 == 0 ? kNow : kLateNow);
  const Volume vol(sdblk_new(nullptr, image.get(), static_cast<std::int32_t>(bytes.size()), 0));
  require(vol != nullptr, "a volume opens");
  until_fatal([&] { read_all(vol.get()); });
}

}  // namespace fuzz
