// Volumes of one blockette, fields made by hand, and the walker on them.
#ifndef TESTS_SEED_WALKED_H_
#define TESTS_SEED_WALKED_H_

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "tests/util/decoded.h"
#include "tests/util/volume_writer.h"

// A volume of one control blockette.
inline std::string one(char type, const volume::ControlBlockette &blockette,
                       std::size_t record_length = 4096) {
  return volume::VolumeWriter(record_length).control(type, blockette).bytes();
}

inline volume::ControlBlockette unit(long code, std::string_view name = "M/S",
                                     std::string_view description = "Velocity") {
  return volume::ControlBlockette(34).digits(code, 3).var(name).var(description);
}

inline volume::ControlBlockette channel_with_subchannel(std::string_view subchannel) {
  return volume::ControlBlockette(52).raw("00").raw("BHZ").raw(subchannel);
}

// The abbreviation that the dictionary has under a key, or nullptr.
inline SDBlk *abbreviation(const BlockReader &reader, const char *key) {
  return static_cast<SDBlk *>(getarr(reader.vol()->abbrs, key));
}

// A field of which only what the walker needs is given.
inline SDBlkFieldDef field(const char *key, char stype, std::int32_t width, const char *format,
                           std::int32_t kind) {
  SDBlkFieldDef def = {};
  def.key = key;
  def.title = "";
  def.description = "";
  def.stype = stype;
  def.width = width;
  def.format = format;
  def.kind = kind;
  return def;
}

inline SDBlkFieldDef counted(SDBlkFieldDef def, const char *number_entry) {
  def.number_entry = number_entry;
  return def;
}

inline SDBlkFieldDef referring(SDBlkFieldDef def, const char *abbr_key) {
  def.abbr_key = abbr_key;
  return def;
}

template <std::size_t Size>
SDBlkFieldDef group(const char *key, const char *number_entry,
                    const std::array<SDBlkFieldDef, Size> &sub) {
  SDBlkFieldDef def = counted(field(key, '\0', 0, "", SDBLK_GROUP_ARRAY), number_entry);
  def.nsub = static_cast<std::int32_t>(Size);
  def.sub = sub.data();
  return def;
}

// The walker on bytes of exactly their size, for an empty volume.
class Walk {
 public:
  Walk(std::string_view bytes, const std::vector<SDBlkFieldDef> &fields, bool big_endian = true)
      : bytes_(bytes.begin(), bytes.end()),
        fields_(fields),
        cursor_(bytes_.data()),
        remaining_(static_cast<std::int32_t>(bytes.size())),
        big_endian_(big_endian) {}
  ~Walk() { freearr(array_, free_sdblk_entry); }
  Walk(const Walk &) = delete;
  Walk &operator=(const Walk &) = delete;

  int run() {
    return sdblk_unstuff_sblk(&array_, &cursor_, &remaining_, big_endian_ ? 1 : 0, 1, reader_.vol(),
                              static_cast<std::int32_t>(fields_.size()), fields_.data());
  }
  [[nodiscard]] const Arr *array() const { return array_; }
  [[nodiscard]] std::int32_t remaining() const { return remaining_; }
  [[nodiscard]] std::ptrdiff_t consumed() const { return cursor_ - bytes_.data(); }
  [[nodiscard]] SDBlkVol *vol() const { return reader_.vol(); }

 private:
  BlockReader reader_{"000001S    "};
  std::vector<char> bytes_;
  std::vector<SDBlkFieldDef> fields_;
  const char *cursor_;
  std::int32_t remaining_;
  bool big_endian_;
  Arr *array_ = nullptr;
};

inline double walked_real(std::string_view bytes, const SDBlkFieldDef &def,
                          bool big_endian = true) {
  Walk walk(bytes, {def}, big_endian);
  EXPECT_EQ(walk.run(), 0);
  return real_of(walk.array(), def.key);
}

inline std::int32_t walked_integer(std::string_view bytes, const char *word, std::int32_t width,
                                   bool big_endian) {
  Walk walk(bytes, {field("n", 'B', width, word, SDBLK_INT)}, big_endian);
  EXPECT_EQ(walk.run(), 0);
  return integer_of(walk.array(), "n");
}

#endif  // TESTS_SEED_WALKED_H_
