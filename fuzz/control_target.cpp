// One control blockette of any type.
#include <array>
#include <cstdio>
#include <string>

#include "cmd/station_dump.h"
#include "fuzz/blocks.h"
#include "fuzz/harness.h"

using namespace tarvik;

namespace fuzz {

namespace {

constexpr std::size_t kPrefixSize = 7;
constexpr std::size_t kLongest = 9999;
constexpr std::int32_t kRecordLength = 16384;

std::string blockette(int type, std::string_view fields) {
  fields = fields.substr(0, kLongest - kPrefixSize);
  std::array<char, 32> prefix;
  std::snprintf(prefix.data(), prefix.size(), "%03d%04zu", type, fields.size() + kPrefixSize);
  return std::string(prefix.data(), kPrefixSize).append(fields);
}

std::string record(const std::string &header, std::string text) {
  text.insert(0, header);
  text.resize(static_cast<std::size_t>(kRecordLength), ' ');
  return text;
}

// Abbreviations with the codes 0 and 1, for the fields that refer to them.
std::string dictionary() {
  std::string text;
  for (const char code : {'0', '1'}) {
    const std::string short_code = {'0', '0', code};
    const std::string long_code = '0' + short_code;
    text += blockette(30, "Format~" + long_code + "05001F1~");
    text += blockette(31, long_code + "SA comment~001");
    text += blockette(32, short_code.substr(1) + "A~B~C~");
    text += blockette(33, short_code + "An abbreviation~");
    text += blockette(34, short_code + "M/S~Velocity~");
    text += blockette(41, long_code + "Fir~A0010010002-1.0000000E+00-2.0000000E+00");
    text += blockette(47, long_code + "Decimation~1.0000E+020000100000-1.0000E+00-1.0000E+00");
    text += blockette(48, long_code + "Gain~-1.00000E+00-1.00000E+0000");
  }
  return text;
}

int type_of(std::string_view bytes) {
  const int choice = static_cast<unsigned char>(bytes[0]);
  if (choice < SEED_BLKDEFS_COUNT) return seed_blkdefs[choice].type % 1000;
  return (choice * 256 + static_cast<unsigned char>(bytes[1])) % 1000;
}

void read_all(SDBlkVol *vol) {
  Listing listing;
  Block block;
  while (true) {
    const int result = parse(vol, &block);
    if (result < 0 || result == SDBLK_EOF) return;
    exercise_block(block.get(), &listing);
    station_dump(block.get(), 1);
    if (stands_still(*block)) return;
  }
}

}  // namespace

void exercise_control(std::string_view bytes) {
  if (bytes.size() < 2) return;
  static const std::string start = record("000001A ", dictionary());
  const std::string image = start + record("000002S ", blockette(type_of(bytes), bytes.substr(2)));
  const Volume vol(
      sdblk_new(nullptr, image.data(), static_cast<std::int32_t>(image.size()), kRecordLength));
  require(vol != nullptr, "a volume opens");
  until_fatal([&] { read_all(vol.get()); });
}

}  // namespace fuzz
