#include "seed/whole/measure.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "seed/whole/numbers.h"

namespace tarvik {
namespace {

constexpr std::int64_t kShortest = 64;
constexpr std::int64_t kLongest = 131072;
constexpr std::int32_t kLeastExponent = 6;
constexpr std::int32_t kMostExponent = 17;
constexpr std::int64_t kExponentInDataOnly = 6;  // offset of "dlenp" in a blockette 1000

std::int64_t power_of(std::int32_t exponent) {
  const bool fits = exponent >= kLeastExponent && exponent <= kMostExponent;
  return fits ? std::int64_t{1} << exponent : 0;
}

// ---- stated lengths ----

std::int64_t stated_by_data(const RecordBytes &record, Chain *chain) {
  chain->start(record, byte_order_of(record).big_endian);
  Link link = {};
  while (chain->next(&link)) {
    if (link.type != kDataOnlyType) continue;
    const std::int64_t at = link.offset + kExponentInDataOnly;
    return at < record.size ? power_of(static_cast<unsigned char>(record.bytes[at])) : 0;
  }
  return 0;
}

// The volume identifiers, blockettes 5, 8 and 10, state it as an exponent in their field 4.
std::int64_t stated_by_control(const RecordBytes &record) {
  constexpr std::int64_t kExponent = 19;
  if (record.size < kExponent + 2 || record.bytes[7] != ' ') return 0;
  const std::int32_t type = number_in_blanks({record.bytes + kHeaderBytes, 3});
  if (!is_volume_identifier(type)) return 0;
  return power_of(number_in_blanks({record.bytes + kExponent, 2}));
}

// ---- what confirms a length ----

// Looks at the places where a record may end.
class Prober {
 public:
  Prober(const Image &image, std::int64_t offset) : image_(image), offset_(offset) {}

  [[nodiscard]] std::int64_t rest() const { return image_.size - offset_; }
  [[nodiscard]] bool header_after(std::int64_t length) const {
    return kind_after(length) != Header::none;
  }
  // What was looked at last is not looked at again.
  [[nodiscard]] Header kind_after(std::int64_t length) const {
    if (length == looked_at_) return found_;
    looked_at_ = length;
    return found_ = length < rest() ? header_at(image_, offset_ + length) : Header::none;
  }
  [[nodiscard]] bool next_header_after(std::int64_t length, std::int32_t number) const {
    return header_after(length) &&
           is_one_above(record_number(image_.bytes + offset_ + length), number);
  }
  [[nodiscard]] bool ends_well(std::int64_t length) const {
    return length == rest() || header_after(length) ||
           (length < rest() && is_filler_at(image_, offset_ + length));
  }

  // The first of the powers of two for which holds(length), or 0.
  template <typename Holds>
  static std::int64_t first_power(Holds holds) {
    for (std::int64_t length = kShortest; length <= kLongest; length *= 2) {
      if (holds(length)) return length;
    }
    return 0;
  }

 private:
  const Image &image_;
  std::int64_t offset_;
  mutable std::int64_t looked_at_ = -1;
  mutable Header found_ = Header::none;
};

Measure confirmed(std::int64_t length, std::int64_t stated) {
  return {length, stated, true, stated != 0 && stated != length, SDBLK_NOTE_LENGTH, Header::none};
}

Measure unconfirmed(std::int64_t length, std::int64_t stated) {
  return {length, stated, false, true, SDBLK_NOTE_UNCONFIRMED, Header::none};
}

Measure measure_data(const Prober &prober, std::int64_t stated, std::int64_t in_force) {
  const std::int64_t rest = prober.rest();
  if (stated != 0) {
    if (prober.ends_well(stated)) return confirmed(stated, stated);
    const std::int64_t other =
        Prober::first_power([&](std::int64_t c) { return c != stated && prober.header_after(c); });
    if (other != 0) return confirmed(other, stated);
    if (stated <= rest) return unconfirmed(stated, stated);
    return {rest, stated, false, true, SDBLK_NOTE_CUT, Header::none};
  }
  const std::int64_t found =
      Prober::first_power([&](std::int64_t c) { return c == rest || prober.header_after(c); });
  if (found != 0) return confirmed(found, 0);
  return unconfirmed(in_force <= rest ? in_force : std::min(rest, kLongest), 0);
}

Measure measure_control(const Prober &prober, std::int32_t number, std::int64_t stated,
                        std::int64_t in_force) {
  const std::array<std::int64_t, 2> likely = {stated, in_force};
  const auto first_likely = [&](auto holds) -> std::int64_t {
    for (const std::int64_t c : likely) {
      if (c != 0 && holds(c)) return c;
    }
    return 0;
  };
  const auto next_follows = [&](std::int64_t c) { return prober.next_header_after(c, number); };
  const auto header_follows = [&](std::int64_t c) { return prober.header_after(c); };
  std::int64_t length = first_likely(next_follows);
  if (length == 0) length = Prober::first_power(next_follows);
  if (length == 0) length = first_likely([&](std::int64_t c) { return prober.ends_well(c); });
  if (length == 0) length = Prober::first_power(header_follows);
  if (length != 0) return confirmed(length, stated);
  length = first_likely([&](std::int64_t c) { return c <= prober.rest(); });
  return unconfirmed(length != 0 ? length : std::min(prober.rest(), kLongest), stated);
}

}  // namespace

Measure measure_record(const Image &image, std::int64_t offset, Header kind, std::int64_t in_force,
                       Chain *chain) {
  const Prober prober(image, offset);
  const RecordBytes record = {image.bytes + offset, std::min(prober.rest(), kLongest)};
  const bool is_data = kind == Header::data;
  Measure measure = is_data ? measure_data(prober, stated_by_data(record, chain), in_force)
                            : measure_control(prober, record_number(record.bytes),
                                              stated_by_control(record), in_force);
  if (measure.confirmed) {
    measure.next = prober.kind_after(measure.length);
    return measure;
  }
  // A record that nothing confirms does not swallow the next one.
  const std::int64_t from = offset + (is_data ? kDataHeaderBytes : kHeaderBytes);
  const std::int64_t end = offset + measure.length;
  const std::int64_t header = from < end ? find_header(image, from, end) : end;
  return header < end ? unconfirmed(header - offset, measure.stated) : measure;
}

}  // namespace tarvik
