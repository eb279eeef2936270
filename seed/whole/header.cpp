#include "seed/whole/header.h"

#include <algorithm>
#include <array>

#include "seed/whole/numbers.h"
#include "support/digits.h"
#include "support/load.h"

namespace tarvik {
namespace {

constexpr int kNumberBytes = 6;
constexpr int kLetter = 6;
constexpr int kFlag = 7;
constexpr std::int32_t kLargestNumber = 999999;

// What a byte can be, one bit each.
using Class = std::uint8_t;
constexpr Class kDigit = 1;
constexpr Class kBlank = 2;
constexpr Class kNul = 4;
constexpr Class kLineEnd = 8;
// Letters of records, and the flags that may follow them.
constexpr Class kControl = 16;
constexpr Class kData = 32;

constexpr std::array<Class, 256> make_classes() {
  std::array<Class, 256> classes = {};
  for (int digit = '0'; digit <= '9'; ++digit) classes[static_cast<std::size_t>(digit)] = kDigit;
  classes[' '] = kBlank;
  classes['\0'] = kNul;
  classes['\r'] = classes['\n'] = kLineEnd;
  classes['V'] = classes['A'] = classes['S'] = classes['T'] = kControl;
  classes['D'] = classes['R'] = classes['Q'] = classes['M'] = kData;
  return classes;
}
constexpr std::array<Class, 256> kClasses = make_classes();

// The letters that a flag may follow.
constexpr std::array<Class, 256> make_flags() {
  std::array<Class, 256> flags = {};
  flags[' '] = kControl | kData;
  flags['*'] = kControl;
  flags['\0'] = kData;
  return flags;
}
constexpr std::array<Class, 256> kFlags = make_flags();

Class class_of(char byte) { return kClasses[static_cast<unsigned char>(byte)]; }
Class letters_before(char flag) { return kFlags[static_cast<unsigned char>(flag)]; }

bool all_of_class(const char *bytes, std::int64_t size, Class wanted) {
  for (std::int64_t i = 0; i < size; ++i) {
    if ((class_of(bytes[i]) & wanted) == 0) return false;
  }
  return true;
}

// The number of a record, where it is all digits.
bool read_six_digits(const char *header, std::uint64_t *number) {
  return read_eight_digits(first_of_eight<kNumberBytes>(header), number);
}

bool has_six_digits(const char *header) {
  std::uint64_t number = 0;
  return read_six_digits(header, &number);
}

bool is_control_header(const char *bytes, std::int64_t size) {
  if (!has_six_digits(bytes)) return false;
  if (bytes[kFlag] == '*') return true;
  const char *type = bytes + kHeaderBytes;
  const std::int64_t rest = size - kHeaderBytes;
  if (rest < 3) return false;
  if (all_of_class(type, 3, kBlank | kNul)) return true;
  return rest >= kPrefixBytes && padded_number({type, 3}) >= 0 && padded_number({type + 3, 4}) >= 0;
}

bool is_date(const char *bytes, bool big_endian) {
  const std::int32_t year = load_u16(bytes, big_endian);
  const std::int32_t day = load_u16(bytes + 2, big_endian);
  return year >= 1900 && year <= 2100 && day >= 1 && day <= 366;
}

bool is_data_header(const char *bytes, std::int64_t size) {
  constexpr int kYear = 20;
  constexpr int kHour = 24;
  if (size < kDataHeaderBytes) return false;
  if (!has_six_digits(bytes) && !all_of_class(bytes, kNumberBytes, kDigit | kBlank | kNul)) {
    return false;
  }
  const auto *clock = reinterpret_cast<const unsigned char *>(bytes) + kHour;
  if (clock[0] > 23 || clock[1] > 59 || clock[2] > 60) return false;
  return is_date(bytes + kYear, true) || is_date(bytes + kYear, false);
}

}  // namespace

Header header_at(const Image &image, std::int64_t offset) {
  const std::int64_t size = image.size - offset;
  if (size < kHeaderBytes) return Header::none;
  const char *bytes = image.bytes + offset;
  const Class letter = class_of(bytes[kLetter]) & letters_before(bytes[kFlag]);
  if (letter == kData) return is_data_header(bytes, size) ? Header::data : Header::none;
  if (letter == kControl) return is_control_header(bytes, size) ? Header::control : Header::none;
  return Header::none;
}

std::int64_t find_header(const Image &image, std::int64_t from, std::int64_t to) {
  const std::int64_t last = std::min(to, image.size - kHeaderBytes + 1);
  for (std::int64_t offset = from; offset < last; ++offset) {
    // Two bytes tell nearly every offset apart from a header.
    const char *bytes = image.bytes + offset;
    if ((class_of(bytes[kLetter]) & letters_before(bytes[kFlag])) == 0) continue;
    if (header_at(image, offset) != Header::none) return offset;
  }
  return to;
}

bool is_filler_at(const Image &image, std::int64_t offset) {
  constexpr Class kFill = kBlank | kNul | kLineEnd;
  const std::int64_t size = std::min(image.size - offset, kDataHeaderBytes);
  if (size <= 0) return false;
  const char *bytes = image.bytes + offset;
  const std::int64_t number = std::min<std::int64_t>(size, kNumberBytes);
  return all_of_class(bytes, number, kFill | kDigit) &&
         all_of_class(bytes + number, size - number, kFill);
}

bool is_padding(const char *bytes, std::int64_t size) {
  return all_of_class(bytes, size, kDigit | kBlank | kNul | kLineEnd);
}

std::int32_t record_number(const char *header) {
  std::uint64_t digits = 0;
  if (read_six_digits(header, &digits)) return static_cast<std::int32_t>(digits);
  int first = 0;
  int end = kNumberBytes;
  const auto is_blank = [&](int i) { return (class_of(header[i]) & (kBlank | kNul)) != 0; };
  while (first < end && is_blank(first)) ++first;
  while (end > first && is_blank(end - 1)) --end;
  if (first == end) return kNoNumber;
  std::int32_t number = 0;
  for (int i = first; i < end; ++i) {
    if (class_of(header[i]) != kDigit) return kNoNumber;
    number = number * 10 + (header[i] - '0');
  }
  return number;
}

bool is_one_above(std::int32_t number, std::int32_t before) {
  if (number == kNoNumber || before == kNoNumber) return false;
  return number == before + 1 || (before == kLargestNumber && number <= 1);
}

}  // namespace tarvik
