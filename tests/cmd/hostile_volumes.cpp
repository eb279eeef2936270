#include "tests/cmd/hostile_volumes.h"

#include <algorithm>

#include "tests/util/volume_writer.h"

namespace hostile {

namespace {

using volume::BinaryFields;
using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::VolumeWriter;

constexpr unsigned kStep = 64;
constexpr unsigned kFirstOffset = 48;

ControlBlockette filter(int code, int coefficients) {
  return ControlBlockette(41)
      .digits(code, 4)
      .var("FIR")
      .fixed("A", 1)
      .digits(0, 3)
      .digits(0, 3)
      .digits(coefficients, 4);
}

DataRecord record() { return {.sta = "STA", .chan = "BHZ", .net = "XX"}; }

void put(std::string *bytes, std::size_t at, const std::string &text) {
  bytes->replace(at, text.size(), text);
}

std::string u16(unsigned value) { return BinaryFields(ByteOrder::kBig).u16(value).bytes(); }

}  // namespace

std::string shortest_records(int count) {
  VolumeWriter out(kStep);
  for (int i = 0; i < count; ++i) out.control('V', "   ").new_record();
  return out.bytes();
}

std::string longest_chains(int count) {
  constexpr unsigned kBlockettes = 1024;
  constexpr std::size_t kLength = 8192;
  VolumeWriter out(kLength);
  for (int n = 0; n < count; ++n) {
    // From the last one down: each offset must be looked for among all before it.
    const unsigned last = kFirstOffset + 4 * (kBlockettes - 1);
    DataRecord chain = record();
    chain.forced_count = 255;
    chain.forced_first_offset = last;
    for (unsigned i = 0; i < kBlockettes; ++i) chain.blockette(1, {}, kFirstOffset + 4 * (i - 1));
    chain.chain.front().forced_next = last;
    out.data(chain);
  }
  return out.bytes();
}

std::string far_chains(int count) {
  constexpr unsigned kSecondOffset = kFirstOffset + 4;
  const std::string fixed = record().bytes(kStep);
  std::string image;
  image.reserve(static_cast<std::size_t>(count) * kStep);
  for (unsigned n = 0; n < static_cast<unsigned>(count); ++n) {
    // A blockette says its own place in the volume, or the place one record further on, and a
    // reader takes it from its record's start.  So the steps of the n-th record's chain are n or
    // n + 1 records long, and the odd one comes back only after 1024 of them.
    const unsigned start = n * kStep;
    image += fixed;
    put(&image, start, std::to_string(100000 + n));
    put(&image, start + 46, u16(n % 2 == 0 ? kFirstOffset : kSecondOffset));
    put(&image, start + kFirstOffset,
        u16(1) + u16((start + kFirstOffset + kStep) % 65536) + u16(1) +
            u16((start + kSecondOffset) % 65536));
  }
  return image;
}

std::string overlapping_records(int count) {
  constexpr unsigned kSteps = 64;
  VolumeWriter out(std::size_t{kSteps} * kStep);
  for (int n = 0; n < count; ++n) {
    DataRecord fixed = record();
    fixed.forced_first_offset = kFirstOffset;
    std::string image;
    for (unsigned i = 0; i < kSteps; ++i) image += fixed.bytes(kStep, out.next_sequence());
    // From every start the offsets lead through the record step by step.
    for (unsigned i = 0; i < kSteps; ++i) {
      const unsigned next = (i + 7) % kSteps * kStep + kFirstOffset;
      put(&image, std::size_t{i} * kStep + kFirstOffset, u16(100) + u16(next));
    }
    out.raw_record(image);
    // A block in mid-record reaches a whole record from where it stands, and what a blockette in it
    // states as its length one more: into blanks.
    out.control('V', "   ").new_record().control('V', "   ").new_record();
  }
  return out.bytes();
}

std::string overlapping_texts(int count, unsigned steps) {
  // The chain leads from here on: smaller offsets have a 0 byte, which ends a text.
  constexpr unsigned kFirst = 4;
  const unsigned chained = std::min(steps, 1024U);  // offsets have 16 bits
  VolumeWriter out(std::size_t{steps} * kStep);
  for (int n = 0; n < count; ++n) {
    std::string image;
    for (unsigned i = 0; i < steps; ++i) {
      const unsigned next = kFirst + (i + 7) % (chained - kFirst);
      std::string step(kStep, 'x');
      put(&step, 0, record().bytes(kStep, out.next_sequence()).substr(0, 8));
      put(&step, 20, u16(2020) + u16(257));
      put(&step, 46,
          u16(kFirst * kStep + kFirstOffset) + u16(2000) + u16(next * kStep + kFirstOffset));
      put(&step, 62, i % 32 == 0 ? "\xff~" : "\xff");
      image += step;
    }
    out.raw_record(image);
    // After it nothing but ends of texts, for two records.
    const std::string ends = "   " + std::string(image.size() - 11, '~');
    out.control('V', ends).control('V', ends);
  }
  return out.bytes();
}

std::string broken_promises(int count) {
  VolumeWriter out(4096);
  for (int i = 0; i < count; ++i) out.control('A', filter(i, 9999).raw("0"));
  return out.bytes();
}

std::string steps_back(int count) {
  std::string record = "000001S " + ControlBlockette(61)
                                        .digits(1, 2)
                                        .var("F")
                                        .fixed("A", 1)
                                        .digits(0, 3)
                                        .digits(0, 3)
                                        .digits(9999, 4)
                                        .raw("0")
                                        .text_with_length(kStep);
  record.resize(kStep, '0');
  std::string bytes;
  for (int i = 0; i < count; ++i) bytes += record;
  const ControlBlockette identifier =
      ControlBlockette(10).raw("02.3").digits(6, 2).var("").var("").var("").var("").var("");
  return bytes + VolumeWriter(std::size_t{2} * kStep).control('S', identifier).bytes();
}

std::string large_dictionary(int count) {
  VolumeWriter out(4096);
  for (int i = 0; i < count; ++i) {
    out.control(
        'A', ControlBlockette(31).digits(i, 4).fixed("N", 1).var("A comment").digits(i % 1000, 3));
  }
  return out.bytes();
}

std::string long_references(int count) {
  constexpr int kLines = 2000;
  VolumeWriter out(4096);
  out.control('A', filter(1, kLines).raw("0"));
  for (int i = 0; i < count; ++i) {
    out.control('S', ControlBlockette(60).digits(1, 2).digits(1, 2).digits(1, 2).digits(1, 4));
  }
  return out.bytes();
}

}  // namespace hostile
