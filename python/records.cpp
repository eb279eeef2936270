#include "python/records.h"

#include <pybind11/numpy.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "python/log.h"
#include "python/reader.h"
#include "python/volume.h"
#include "seed/whole.h"

namespace py = pybind11;

namespace tarvik {
namespace {

// As python/sdblk/_records.py describes it to numpy.  A character takes four bytes there.
struct Row {
  std::int64_t offset;
  std::int64_t start;  // nanoseconds since 1970, or kNoTime
  double rate;
  std::int32_t length;
  std::int32_t samples;
  std::int32_t sequence;
  std::int32_t data_offset;
  std::int16_t encoding;
  std::int16_t timing_quality;
  bool big_endian;
  std::array<char32_t, 2> network;
  std::array<char32_t, 5> station;
  std::array<char32_t, 2> location;
  std::array<char32_t, 3> channel;
  std::array<char32_t, 1> type;
};
static_assert(sizeof(Row) == 104);
static_assert(offsetof(Row, network) == 48);

constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min();

// Rows in memory that grows without being copied where the system can move it.
class Rows {
 public:
  Row *add() {
    if (count_ == capacity_) resize(capacity_ == 0 ? kFirst : 2 * capacity_);
    return &memory_.get()[count_++];
  }
  // Makes room for so many at once, where there is that much memory.
  void expect(std::size_t count) {
    try {
      resize(std::max(count, kFirst));
    } catch (const std::bad_alloc &) {
      // They may be fewer.
    }
  }
  // Gives the memory back that is not used.
  void trim() { resize(count_ == 0 ? 1 : count_); }

  [[nodiscard]] std::size_t bytes() const { return count_ * sizeof(Row); }
  Row *release() { return memory_.release(); }

 private:
  static constexpr std::size_t kFirst = 256;
  static constexpr std::size_t kLarge = std::size_t{4} << 20;  // bytes
  struct Free {
    void operator()(Row *rows) const { std::free(rows); }
  };

  // A long table costs more in small pages than all the rest.  Where there are no large ones,
  // nothing is lost.
  void ask_for_large_pages() {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t kPage = 4096;
    char *bytes = reinterpret_cast<char *>(memory_.get());
    const std::uintptr_t skipped =
        (kPage - reinterpret_cast<std::uintptr_t>(bytes) % kPage) % kPage;
    static_cast<void>(madvise(bytes + skipped, capacity_ * sizeof(Row) - skipped, MADV_HUGEPAGE));
#endif
  }

  void resize(std::size_t capacity) {
    void *moved = std::realloc(memory_.get(), capacity * sizeof(Row));
    if (moved == nullptr) throw std::bad_alloc();
    static_cast<void>(memory_.release());
    memory_.reset(static_cast<Row *>(moved));
    capacity_ = capacity;
    if (capacity_ * sizeof(Row) >= kLarge) ask_for_large_pages();
  }

  std::unique_ptr<Row, Free> memory_;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
};

// Bytes as Latin-1; those of the code stand at its start.
template <std::size_t Size>
void widen(const char *code, std::array<char32_t, Size> *out) {
  for (std::size_t i = 0; i < Size; ++i) (*out)[i] = static_cast<unsigned char>(code[i]);
}

// numpy's 64 bits of nanoseconds hold the years from 1678 to 2262.
std::int64_t nanoseconds_of(const SDBlkSamples &samples) {
  using Limits = std::numeric_limits<std::int64_t>;
  const bool fits = samples.start > Limits::min() && samples.start < Limits::max();
  return samples.has_start != 0 && fits ? samples.start : kNoTime;
}

void fill(const SDBlk &record, const SDBlkSamples &samples, Row *row) {
  *row = {};
  row->offset = record.file_offset;
  row->start = nanoseconds_of(samples);
  row->rate = samples.rate;
  row->length = record.blockette_length;
  row->samples = samples.samples;
  row->sequence = record.logical_sequence;
  row->data_offset =
      samples.data == nullptr ? 0 : static_cast<std::int32_t>(samples.data - record.data_ptr);
  row->encoding = static_cast<std::int16_t>(samples.encoding);
  row->timing_quality = static_cast<std::int16_t>(samples.timing_quality);
  row->big_endian = samples.big_endian != 0;
  widen(samples.network, &row->network);
  widen(samples.station, &row->station);
  widen(samples.location, &row->location);
  widen(samples.channel, &row->channel);
  row->type = {static_cast<unsigned char>(record.record_type)};
}

struct Release {
  void operator()(SDBlk *block) const { sdblk_free(block); }
};

void read_rows(const Material &material, Rows *rows) {
  const Log log;
  OpenVolume volume(material, {nullptr, nullptr, SDBLK_KEEP_NUMBERS});
  std::unique_ptr<SDBlk, Release> owner;
  SDBlk *block = nullptr;
  int result = 0;
  while ((result = sdblk_parseblk(volume.get(), &block)) >= 0 && result != SDBLK_EOF) {
    if (owner == nullptr) {
      owner.reset(block);
      // As many as there are when all blocks are records of this length.
      rows->expect(static_cast<std::size_t>(volume.get()->image_size / block->logical_length + 1));
    }
    SDBlkSamples samples;
    if (block->data_ptr != nullptr && sdblk_samples(block, &samples) == 0) {
      fill(*block, samples, rows->add());
    }
  }
  if (owner == nullptr) owner.reset(block);
  if (result < 0) throw std::bad_alloc();
  volume.check_unchanged();
}

// The rows as bytes.
py::array records(const py::object &source, std::int32_t record_length) {
  const Origin origin(source, record_length, false);
  Rows rows;
  try {
    const py::gil_scoped_release unlocked;
    read_rows(origin.material(), &rows);
    rows.trim();
  } catch (const std::bad_alloc &) {
    throw ReadError{"memory ran out", {}, {}, origin.material().path};
  }
  const auto bytes = static_cast<py::ssize_t>(rows.bytes());
  Row *memory = rows.release();
  const py::capsule owner(memory, [](void *all) { std::free(all); });
  return py::array_t<std::uint8_t>(bytes, reinterpret_cast<const std::uint8_t *>(memory), owner);
}

}  // namespace

void add_records(py::module_ *module) {
  module->def("records", records, py::arg("source"), py::arg("record_length"),
              "The rows of sdblk.records as bytes.");
}

}  // namespace tarvik
