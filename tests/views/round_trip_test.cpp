// What blocks say with their bytes is enough to put the control blockettes of a volume together
// again.  The lines are read with a JSON library, as a program would.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/util/volume_writer.h"
#include "tests/views/view_lines.h"
#include "views/blocks.h"

using namespace tarvik;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

namespace {

using Json = nlohmann::json;

std::vector<Json> read_lines(std::string_view volume) {
  BlocksOptions options;
  options.raw = true;
  std::vector<Json> lines;
  for (const std::string &line :
       split_lines(lines_of(make_blocks_view({}, options).get(), volume))) {
    lines.push_back(Json::parse(line));
  }
  return lines;
}

// The bytes of a text whose characters are those of bytes; throws for any other.
std::string latin1_bytes(const std::string &text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto first = static_cast<unsigned char>(text[i]);
    if (first < 0x80) {
      bytes += text[i];
    } else if (first == 0xC2 || first == 0xC3) {
      bytes += static_cast<char>((first & 3) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3F));
    } else {
      throw std::runtime_error("a character past U+00FF");
    }
  }
  return bytes;
}

// All bytes of a blockette that is not cut.  Its text is they themselves where it has as many, else
// each character is a byte.
std::string bytes_of(const Json &line) {
  const auto text = line["raw"].get<std::string>();
  return text.size() == line["length"].get<std::size_t>() ? text : latin1_bytes(text);
}

constexpr std::size_t kHeader = 8;

// Puts the blockettes of a volume into records again, from the lines alone: each at its offset, and
// on after the headers of further records.  What no blockette has is blank.
std::string put_together(const std::vector<Json> &lines, std::size_t record_length) {
  std::string bytes(lines.front()["bytes"].get<std::size_t>(), ' ');
  for (const Json &line : lines) {
    if (line["kind"] != "blockette") continue;
    auto at = line["offset"].get<std::size_t>();
    for (const char c : bytes_of(line)) {
      if (at % record_length == 0) at += kHeader;
      bytes[at++] = c;
    }
  }
  return bytes;
}

// Control records, blank in place of their headers.
std::string without_headers(std::string bytes, std::size_t record_length) {
  for (std::size_t record = 0; record < bytes.size(); record += record_length) {
    bytes.replace(record, kHeader, kHeader, ' ');
  }
  return bytes;
}

TEST(RawBlockettes, OfAnyTextAreItsBytes) {
  const std::vector<std::string> texts = {"plain",        "\xE9",
                                          "\xC3\xA9",     "\xC3\xA9\xE9",
                                          "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                          "\"\\\n\t\x01", std::string(3, '\0'),
                                          "\x7F\x80\xFF", "\xC2",
                                          "\xED\xA0\x80"};
  VolumeWriter volume(128);
  std::string expected;
  for (const std::string &text : texts) {
    const ControlBlockette unit = ControlBlockette(34).digits(1, 3).var(text).var("x" + text);
    volume.control('A', unit);
    expected += unit.text();
  }
  std::string found;
  for (const Json &line : read_lines(volume.bytes())) {
    if (line["kind"] == "blockette") found += bytes_of(line);
  }
  EXPECT_EQ(found, expected);
}

TEST(RawBlockettes, StandAtTheirOffsetsInTheVolume) {
  VolumeWriter volume(128);
  for (int i = 0; i < 20; ++i) {
    const auto size = static_cast<std::size_t>(7 * i);
    volume.control('S', ControlBlockette(77).raw(std::string(size, static_cast<char>('a' + i))));
  }
  EXPECT_EQ(put_together(read_lines(volume.bytes()), 128), without_headers(volume.bytes(), 128));
}

TEST(RawBlockettes, OfTheSampleAreItsControlRecords) {
  std::ifstream file(TARVIK_SOURCE_DIR "/samples/demo.seed", std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  constexpr std::size_t kRecord = 4096;
  constexpr std::size_t kControl = 7 * kRecord;
  ASSERT_GT(bytes.size(), kControl);
  EXPECT_EQ(put_together(read_lines(bytes), kRecord).substr(0, kControl),
            without_headers(bytes.substr(0, kControl), kRecord));
}

}  // namespace
