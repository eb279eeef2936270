#include "fuzz/mutator.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

namespace fuzz {

namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kPrefixSize = 7;  // blockette type and length
constexpr std::size_t kSequenceSize = 6;
constexpr std::size_t kShortest = 64;
constexpr std::size_t kLongest = 131072;

std::size_t below(Random *random, std::size_t bound) {
  return bound == 0 ? 0 : (*random)() % bound;
}

bool one_in(Random *random, std::size_t n) { return below(random, n) == 0; }

template <typename T, std::size_t Size>
const T &pick(Random *random, const std::array<T, Size> &choices) {
  return choices[below(random, Size)];
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_data_letter(char c) { return c == 'D' || c == 'R' || c == 'Q' || c == 'M'; }
bool is_letter(char c) { return is_data_letter(c) || c == 'V' || c == 'A' || c == 'S' || c == 'T'; }

// ---- records ----

bool looks_like_header(std::string_view bytes, std::size_t at) {
  if (at + kHeaderSize > bytes.size() || !is_letter(bytes[at + kSequenceSize])) return false;
  return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                     bytes.begin() + static_cast<std::ptrdiff_t>(at + kSequenceSize), is_digit);
}

// The volume cut where headers stand at powers of two one after the other.
std::vector<std::string> split(const std::string &bytes) {
  std::vector<std::string> records;
  std::size_t start = 0;
  while (start < bytes.size()) {
    std::size_t length = bytes.size() - start;
    for (std::size_t next = kShortest; next <= kLongest && next < bytes.size() - start; next *= 2) {
      if (looks_like_header(bytes, start + next)) {
        length = next;
        break;
      }
    }
    records.push_back(bytes.substr(start, length));
    start += length;
  }
  return records;
}

std::string joined(const std::vector<std::string> &records) {
  std::string bytes;
  for (const std::string &record : records) bytes += record;
  return bytes;
}

void renumber(std::vector<std::string> *records) {
  long sequence = 1;
  for (std::string &record : *records) {
    if (record.size() < kHeaderSize) continue;
    std::array<char, 24> text;
    std::snprintf(text.data(), text.size(), "%06ld", sequence++ % 1000000);
    record.replace(0, kSequenceSize, text.data(), kSequenceSize);
  }
}

// ---- plain bytes ----

constexpr std::array<std::string_view, 30> kTokens = {
    "~",        "*",    "    ", "~~~~", "0000", "0001",     "9999",    "-001",
    "0007",     "0006", "010",  "008",  "005",  "050",      "052",     "060",
    "061",      "053",  "034",  "041",  "099",  "000",      "999999V", "2020,001,00:00:00.0000~",
    "-1.0E+99", "nan",  "0x",   "02.4", "12",   "1970,366~"};

void put(std::string *bytes, std::size_t at, std::string_view text) {
  if (at >= bytes->size()) return;
  text.copy(bytes->data() + at, std::min(text.size(), bytes->size() - at));
}

void put_byte(std::string *bytes, Random *random) {
  if (bytes->empty()) return;
  static constexpr std::array<char, 10> kBytes = {'\0', ' ',    '~',    '0',  '9',
                                                  '-',  '\xff', '\x7f', '\n', '.'};
  char &byte = (*bytes)[below(random, bytes->size())];
  if (one_in(random, 2)) {
    byte = pick(random, kBytes);
  } else {
    byte = static_cast<char>(byte ^ (1 << below(random, 8)));
  }
}

void put_token(std::string *bytes, Random *random) {
  put(bytes, below(random, bytes->size()), pick(random, kTokens));
}

void insert_token(std::string *bytes, Random *random) {
  bytes->insert(below(random, bytes->size() + 1), pick(random, kTokens));
}

void erase_bytes(std::string *bytes, Random *random) {
  bytes->erase(below(random, bytes->size()), 1 + below(random, 16));
}

void copy_bytes(std::string *bytes, Random *random) {
  const std::size_t from = below(random, bytes->size());
  put(bytes, below(random, bytes->size()), bytes->substr(from, 1 + below(random, 64)));
}

void truncate(std::string *bytes, Random *random) {
  bytes->resize(below(random, bytes->size() + 1));
}

// Another number where digits stand: a count, a code, a length.
void put_number(std::string *bytes, Random *random) {
  static constexpr std::array<std::string_view, 10> kNumbers = {
      "00000000", "99999999", "00000001", "        ", "-1-1-1-1",
      "00009999", "~~~~~~~~", "10101010", "+00+00+0", "0000000x"};
  for (int tries = 0; tries < 32; ++tries) {
    std::size_t at = below(random, bytes->size());
    if (at >= bytes->size() || !is_digit((*bytes)[at])) continue;
    while (at > 0 && is_digit((*bytes)[at - 1])) --at;
    std::size_t end = at;
    while (end < bytes->size() && is_digit((*bytes)[end])) ++end;
    at += below(random, end - at);
    const std::string_view number = pick(random, kNumbers);
    const std::size_t size = std::min<std::size_t>(1 + below(random, 4), end - at);
    put(bytes, at, number.substr(number.size() - size));
    return;
  }
}

// ---- control records ----

// Offsets of the blockettes that start in a control record.
std::vector<std::size_t> blockettes(const std::string &record) {
  std::vector<std::size_t> offsets;
  std::size_t at = kHeaderSize;
  while (at + kPrefixSize <= record.size() && is_digit(record[at]) && offsets.size() < 1024) {
    offsets.push_back(at);
    const long length = std::strtol(record.substr(at + 3, 4).c_str(), nullptr, 10);
    if (length < static_cast<long>(kPrefixSize)) break;
    at += static_cast<std::size_t>(length);
  }
  return offsets;
}

void put_digits(std::string *bytes, std::size_t at, long value, int width) {
  std::array<char, 32> text;
  const int size = std::snprintf(text.data(), text.size(), "%0*ld", width, value);
  put(bytes, at, {text.data(), static_cast<std::size_t>(std::min(size, width))});
}

void change_type(std::string *record, std::size_t at, Random *random) {
  static constexpr std::array<long, 50> kTypes = {
      5,  8,  10, 11, 12, 30, 31, 32, 33,  34,  35,  41,  42, 43, 44, 45, 46,
      47, 48, 50, 51, 52, 53, 54, 55, 56,  57,  58,  59,  60, 61, 62, 70, 71,
      72, 73, 74, 43, 41, 99, 0,  -1, 100, 200, 400, 999, 60, 60, 62, 50};
  put_digits(record, at, pick(random, kTypes), 3);
}

void change_length(std::string *record, std::size_t at, Random *random) {
  const long length = std::strtol(record->substr(at + 3, 4).c_str(), nullptr, 10);
  static constexpr std::array<long, 10> kLengths = {0, 1, 6, 7, 8, 9, 9999, -1, -999, 4096};
  const long near = length + static_cast<long>(below(random, 9)) - 4;
  put_digits(record, at + 3, one_in(random, 2) ? near : pick(random, kLengths), 4);
}

// A blockette twice, or none of it; the record keeps its length.
void repeat_blockette(std::string *record, std::size_t at, std::size_t end, Random *random) {
  const std::size_t size = record->size();
  const std::string text = record->substr(at, end - at);
  if (one_in(random, 2)) {
    record->insert(at, text);
  } else {
    record->erase(at, text.size());
  }
  record->resize(size, ' ');
}

void change_blockette(std::string *record, Random *random) {
  const std::vector<std::size_t> offsets = blockettes(*record);
  if (offsets.empty()) return put_number(record, random);
  const std::size_t which = below(random, offsets.size());
  const std::size_t at = offsets[which];
  const std::size_t end = which + 1 < offsets.size() ? offsets[which + 1] : record->size();
  switch (below(random, 5)) {
    case 0: return change_type(record, at, random);
    case 1: return change_length(record, at, random);
    case 2: return repeat_blockette(record, at, end, random);
    default: {
      std::string fields =
          record->substr(at + kPrefixSize, end - at - std::min(kPrefixSize, end - at));
      const std::size_t size = fields.size();
      mutate_fields(&fields, random);
      // Most of the time what follows stays where it is.
      if (!one_in(random, 4)) fields.resize(size, ' ');
      record->replace(std::min(at + kPrefixSize, record->size()), size, fields);
    }
  }
}

// ---- volumes ----

void change_header(std::string *record, Random *random) {
  static constexpr std::array<char, 11> kLetters = {'V', 'A', 'S', 'T',  'D', 'R',
                                                    'Q', 'M', ' ', '\0', 'X'};
  if (record->size() < kHeaderSize) return;
  if (one_in(random, 3)) {
    (*record)[kSequenceSize + 1] = one_in(random, 2) ? '*' : ' ';
  } else {
    (*record)[kSequenceSize] = pick(random, kLetters);
  }
}

void change_record(std::string *record, Random *random) {
  if (record->size() < kHeaderSize || one_in(random, 12)) return change_header(record, random);
  if (is_data_letter((*record)[kSequenceSize])) return mutate_data_record(record, random);
  change_blockette(record, random);
}

void change_order(std::vector<std::string> *records, Random *random) {
  const std::size_t one = below(random, records->size());
  const std::size_t other = below(random, records->size());
  switch (below(random, 4)) {
    case 0: std::swap((*records)[one], (*records)[other]); return;
    case 1:
      records->insert(records->begin() + static_cast<std::ptrdiff_t>(one),
                      std::string((*records)[other]));
      return;
    case 2:
      if (records->size() > 1) records->erase(records->begin() + static_cast<std::ptrdiff_t>(one));
      return;
    default: (*records)[one].resize(kShortest << below(random, 12), ' ');
  }
}

void change_bytes(std::string *bytes, Random *random) {
  static constexpr std::array<Mutation, 7> kChanges = {
      put_byte, put_token, insert_token, erase_bytes, copy_bytes, put_number, truncate};
  if (!bytes->empty()) pick(random, kChanges)(bytes, random);
}

// ---- data records ----

void put_u16(std::string *bytes, std::size_t at, std::size_t value, bool big_endian) {
  const std::array<char, 2> big = {static_cast<char>(value >> 8 & 0xff),
                                   static_cast<char>(value & 0xff)};
  const std::array<char, 2> little = {big[1], big[0]};
  const std::array<char, 2> &pair = big_endian ? big : little;
  put(bytes, at, {pair.data(), pair.size()});
}

std::size_t u16_at(const std::string &bytes, std::size_t at, bool big_endian) {
  if (at + 2 > bytes.size()) return 0;
  const std::size_t first = static_cast<unsigned char>(bytes[at]);
  const std::size_t second = static_cast<unsigned char>(bytes[at + 1]);
  return big_endian ? first << 8 | second : second << 8 | first;
}

constexpr std::array<std::size_t, 12> kOffsets = {0,  1,  4,      46,     48,  52,
                                                  56, 64, 0x7fff, 0xffff, 508, 512};
constexpr std::array<std::size_t, 18> kDataTypes = {
    100, 200, 201, 300, 310, 320, 390, 395, 400, 405, 500, 1000, 1001, 2000, 2047, 2048, 34, 60};

// A blockette of the chain: its type, or the offset of the next one.
void change_chain(std::string *record, bool big_endian, Random *random) {
  std::size_t at = 46;  // where the fixed section states the first offset
  for (std::size_t steps = below(random, 6); steps > 0; --steps) {
    const std::size_t next = u16_at(*record, at, big_endian);
    if (next == 0 || next + 4 > record->size()) break;
    at = next + 2;
  }
  if (one_in(random, 3)) return put_u16(record, at - 2, pick(random, kDataTypes), big_endian);
  const std::size_t near = at + 2 + below(random, 64);
  put_u16(record, at, one_in(random, 2) ? near : pick(random, kOffsets), big_endian);
}

void change_start_time(std::string *record, bool big_endian, Random *random) {
  static constexpr std::array<std::size_t, 10> kParts = {0,   1,    256,  257,  366,
                                                         367, 1900, 2055, 2056, 65535};
  static constexpr std::array<std::size_t, 3> kPlaces = {20, 22, 28};
  put_u16(record, pick(random, kPlaces), pick(random, kParts), big_endian);
}

}  // namespace

void mutate_fields(std::string *bytes, Random *random) {
  if (bytes->empty()) return insert_token(bytes, random);
  static constexpr std::array<Mutation, 9> kChanges = {put_number, put_number,   put_number,
                                                       put_token,  insert_token, erase_bytes,
                                                       put_byte,   copy_bytes,   truncate};
  pick(random, kChanges)(bytes, random);
}

void mutate_data_record(std::string *bytes, Random *random) {
  constexpr std::size_t kFixedSection = 48;
  if (bytes->size() < kFixedSection) return change_bytes(bytes, random);
  // Years before 4096 have a small first byte in their own order.
  const bool big_endian = one_in(random, 16) || ((*bytes)[20] & 0xf0) == 0;
  switch (below(random, 7)) {
    case 0:
    case 1: return change_chain(bytes, big_endian, random);
    case 2: return change_start_time(bytes, big_endian, random);
    case 3: return put_u16(bytes, one_in(random, 2) ? 44 : 46, pick(random, kOffsets), big_endian);
    case 4: {
      // The front of the record, where the fields are.
      std::string front = bytes->substr(0, 128);
      put_byte(&front, random);
      return put(bytes, 0, front);
    }
    case 5:
      // The header once more, where a block of its own starts then.
      return put(bytes, below(random, bytes->size() / kShortest + 1) * kShortest,
                 bytes->substr(0, kFixedSection));
    default: return change_bytes(bytes, random);
  }
}

void mutate_volume(std::string *bytes, Random *random) {
  if (bytes->empty()) return insert_token(bytes, random);
  if (one_in(random, 8)) return change_bytes(bytes, random);
  std::vector<std::string> records = split(*bytes);
  if (one_in(random, 6)) {
    change_order(&records, random);
  } else {
    change_record(&records[below(random, records.size())], random);
  }
  if (!one_in(random, 8)) renumber(&records);
  *bytes = joined(records);
}

}  // namespace fuzz
