#include "tests/util/volume_writer.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace volume {
namespace {

constexpr std::size_t kHeaderLength = 8;
constexpr std::size_t kPrefixLength = 7;  // blockette type and length, never split over two records
constexpr std::size_t kFixedHeaderLength = 48;
constexpr std::size_t kPayloadAlignment = 64;

void check_width(std::string_view text, std::size_t width) {
  if (text.size() <= width) return;
  throw std::length_error("'" + std::string(text.substr(0, 40)) + "' (" +
                          std::to_string(text.size()) + " bytes) does not fit " +
                          std::to_string(width));
}

std::string padded(std::string_view text, int width) {
  const auto columns = static_cast<std::size_t>(width);
  check_width(text, columns);
  std::string field(text);
  field.resize(columns, ' ');
  return field;
}

std::string zero_filled(long value, int width) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%0*ld", width, value);
  check_width(text.data(), static_cast<std::size_t>(width));
  return text.data();
}

// The digits that a picture has after its decimal point, before any exponent.
int decimals_of(std::string_view picture) {
  const std::size_t point = picture.find('.');
  if (point == std::string_view::npos) return 0;
  const std::size_t end = picture.find_first_not_of('#', point + 1);
  return static_cast<int>(std::min(end, picture.size()) - point - 1);
}

// A number with the picture's decimals, whatever the locale.
std::string number_text(double value, std::chars_format format, std::string_view picture) {
  std::array<char, 400> text{};
  const std::to_chars_result result =
      std::to_chars(text.data(), text.data() + text.size(), value, format, decimals_of(picture));
  return {text.data(), result.ptr};
}

std::string record_header(long sequence, char type, char flag) {
  return zero_filled(sequence, 6) + type + flag;
}

}  // namespace

std::string seed_time(const Time &time) {
  return zero_filled(time.year, 4) + ',' + zero_filled(time.day, 3) + ',' +
         zero_filled(time.hour, 2) + ':' + zero_filled(time.minute, 2) + ':' +
         zero_filled(time.second, 2) + '.' + zero_filled(time.fraction, 4);
}

std::string seed_time(int year, int day, int hour, int minute, int second, int fraction) {
  return seed_time(Time{year, day, hour, minute, second, fraction});
}

// Control blockettes.

ControlBlockette &ControlBlockette::digits(long value, int width) {
  return raw(zero_filled(value, width));
}

ControlBlockette &ControlBlockette::fixed(std::string_view text, int width) {
  return raw(padded(text, width));
}

ControlBlockette &ControlBlockette::real(double value, std::string_view picture) {
  std::string text = number_text(value, std::chars_format::scientific, picture);
  std::replace(text.begin(), text.end(), 'e', 'E');
  check_width(text, picture.size());
  return raw(std::string(picture.size() - text.size(), ' ')).raw(text);
}

ControlBlockette &ControlBlockette::coordinate(double value, std::string_view picture) {
  std::string sign;
  if (picture.starts_with('-')) sign = "+";
  if (value < 0) sign = "-";
  const std::string text = number_text(std::fabs(value), std::chars_format::fixed, picture);
  check_width(sign + text, picture.size());
  const std::size_t zeros = picture.size() - sign.size() - text.size();
  return raw(sign).raw(std::string(zeros, '0')).raw(text);
}

ControlBlockette &ControlBlockette::var(std::string_view text) { return raw(text).raw("~"); }

ControlBlockette &ControlBlockette::raw(std::string_view bytes) {
  body_ += bytes;
  return *this;
}

std::string ControlBlockette::text() const {
  return text_with_length(static_cast<long>(kPrefixLength + body_.size()));
}

std::string ControlBlockette::text_with_length(long length) const {
  return zero_filled(type_, 3) + zero_filled(length, 4) + body_;
}

// Binary fields.

BinaryFields &BinaryFields::whole(std::int64_t value, int size, std::int64_t least) {
  const std::int64_t range = std::int64_t{1} << (8 * size);
  if (value < least || value >= least + range) {
    throw std::length_error(std::to_string(value) + " does not fit " + std::to_string(size) +
                            " bytes");
  }
  const auto bits = static_cast<std::uint64_t>(value);
  for (int i = 0; i < size; ++i) {
    const int place = order_ == ByteOrder::kLittle ? i : size - 1 - i;
    bytes_ += static_cast<char>((bits >> (8 * place)) & 0xFFU);
  }
  return *this;
}

BinaryFields &BinaryFields::f32(float value) { return u32(std::bit_cast<std::uint32_t>(value)); }

BinaryFields &BinaryFields::time(const Time &time) {
  u16(time.year).u16(time.day);
  return u8(time.hour).u8(time.minute).u8(time.second).u8(0).u16(time.fraction);
}

BinaryFields &BinaryFields::fixed(std::string_view text, int width) {
  return raw(padded(text, width));
}

BinaryFields &BinaryFields::raw(std::string_view bytes) {
  bytes_ += bytes;
  return *this;
}

// Data records.

DataRecord &DataRecord::blockette(unsigned type, std::string_view body,
                                  std::optional<unsigned> forced_next) {
  chain.push_back({.type = type, .body = std::string(body), .forced_next = forced_next});
  return *this;
}

DataRecord &DataRecord::b100(float sample_rate, unsigned flags) {
  return blockette(100, BinaryFields(order).f32(sample_rate).u8(flags).raw({"\0\0\0", 3}).bytes());
}

namespace {

// What the blockettes 200 and 201 have in common, up to the onset time.
BinaryFields detection_head(ByteOrder order, const Detection &detection) {
  BinaryFields fields(order);
  fields.f32(detection.amplitude).f32(detection.period).f32(detection.background);
  fields.u8(detection.flags).u8(0).time(detection.onset);
  return fields;
}

// The end of the blockettes 300, 310 and 320.
void add_calibration_tail(BinaryFields &fields, const Calibration &calibration) {
  fields.fixed(calibration.channel, 3).u8(0).u32(calibration.reference_amplitude);
  fields.fixed(calibration.coupling, 12).fixed(calibration.rolloff, 12);
}

}  // namespace

DataRecord &DataRecord::b200(const Detection &detection) {
  return blockette(200, detection_head(order, detection).fixed(detection.detector, 24).bytes());
}

DataRecord &DataRecord::b201(const Detection &detection) {
  BinaryFields fields = detection_head(order, detection);
  for (const unsigned ratio : detection.signal_to_noise) fields.u8(ratio);
  fields.u8(detection.lookback).u8(detection.algorithm).fixed(detection.detector, 24);
  return blockette(201, fields.bytes());
}

DataRecord &DataRecord::b300(const Calibration &calibration) {
  BinaryFields fields(order);
  fields.time(calibration.begin).u8(calibration.steps).u8(calibration.flags);
  fields.u32(calibration.duration).u32(calibration.interval).f32(calibration.amplitude);
  add_calibration_tail(fields, calibration);
  return blockette(300, fields.bytes());
}

DataRecord &DataRecord::b310(const Calibration &calibration) {
  BinaryFields fields(order);
  fields.time(calibration.begin).u8(0).u8(calibration.flags);
  fields.u32(calibration.duration).f32(calibration.period).f32(calibration.amplitude);
  add_calibration_tail(fields, calibration);
  return blockette(310, fields.bytes());
}

DataRecord &DataRecord::b320(const Calibration &calibration) {
  BinaryFields fields(order);
  fields.time(calibration.begin).u8(0).u8(calibration.flags);
  fields.u32(calibration.duration).f32(calibration.amplitude);
  add_calibration_tail(fields, calibration);
  return blockette(320, fields.fixed(calibration.noise, 8).bytes());
}

DataRecord &DataRecord::b390(const Calibration &calibration) {
  BinaryFields fields(order);
  fields.time(calibration.begin).u8(0).u8(calibration.flags).u32(calibration.duration);
  fields.f32(calibration.amplitude).fixed(calibration.channel, 3).u8(0);
  return blockette(390, fields.bytes());
}

DataRecord &DataRecord::b395(const Time &end) {
  return blockette(395, BinaryFields(order).time(end).u16(0).bytes());
}

DataRecord &DataRecord::b400(float azimuth, float slowness, unsigned configuration) {
  BinaryFields fields(order);
  return blockette(400, fields.f32(azimuth).f32(slowness).u16(configuration).u16(0).bytes());
}

DataRecord &DataRecord::b405(std::initializer_list<unsigned> delays) {
  BinaryFields fields(order);
  for (const unsigned delay : delays) fields.u16(delay);
  return blockette(405, fields.bytes());
}

DataRecord &DataRecord::b500(const Timing &timing) {
  BinaryFields fields(order);
  fields.f32(timing.vco_percent).time(timing.exception);
  fields.u8(timing.microseconds).u8(timing.quality_percent).u32(timing.count);
  fields.fixed(timing.type, 16).fixed(timing.model, 32).fixed(timing.status, 128);
  return blockette(500, fields.bytes());
}

DataRecord &DataRecord::b1000(unsigned encoding, unsigned word_order, unsigned length_exponent) {
  BinaryFields fields(order);
  return blockette(1000, fields.u8(encoding).u8(word_order).u8(length_exponent).u8(0).bytes());
}

DataRecord &DataRecord::b1001(unsigned timing_quality, unsigned microseconds, unsigned frames) {
  BinaryFields fields(order);
  return blockette(1001, fields.u8(timing_quality).u8(microseconds).u8(0).u8(frames).bytes());
}

DataRecord &DataRecord::b2000(const Opaque &opaque) {
  constexpr std::size_t kFixedPart = 15;  // type and next offset included
  std::string headers;
  for (const std::string &header : opaque.headers) headers += header + '~';
  const std::size_t data_start = kFixedPart + headers.size();
  BinaryFields fields(order);
  fields.u16(static_cast<unsigned>(data_start + opaque.data.size()));
  fields.u16(static_cast<unsigned>(data_start)).u32(opaque.record);
  fields.u8(opaque.word_order).u8(opaque.flags).u8(static_cast<unsigned>(opaque.headers.size()));
  return blockette(2000, fields.raw(headers).raw(opaque.data).bytes());
}

DataRecord &DataRecord::samples32(const std::vector<std::int32_t> &values) {
  BinaryFields fields(order);
  for (const std::int32_t value : values) fields.i32(value);
  payload = fields.bytes();
  samples = static_cast<unsigned>(values.size());
  return *this;
}

std::string DataRecord::bytes(std::size_t length, long sequence) const {
  BinaryFields blockettes(order);
  std::size_t next = kFixedHeaderLength;
  for (std::size_t i = 0; i < chain.size(); ++i) {
    next += 4 + chain[i].body.size();
    const std::size_t written = i + 1 < chain.size() ? next : 0;
    blockettes.u16(chain[i].type);
    blockettes.u16(chain[i].forced_next.value_or(static_cast<unsigned>(written)));
    blockettes.raw(chain[i].body);
  }
  const std::size_t aligned =
      (next + kPayloadAlignment - 1) / kPayloadAlignment * kPayloadAlignment;
  const std::size_t data_start = payload.empty() ? 0 : aligned;

  BinaryFields record(order);
  record.raw(record_header(sequence, quality, ' '));
  record.fixed(sta, 5).fixed(loc, 2).fixed(chan, 3).fixed(net, 2);
  record.time(time).u16(samples).i16(rate_factor).i16(rate_multiplier);
  record.u8(activity_flags).u8(clock_flags).u8(quality_flags);
  record.u8(forced_count.value_or(static_cast<unsigned>(chain.size())));
  record.i32(time_correction);
  record.u16(forced_data_offset.value_or(static_cast<unsigned>(data_start)));
  record.u16(forced_first_offset.value_or(chain.empty() ? 0U : unsigned{kFixedHeaderLength}));
  std::string bytes = record.raw(blockettes.bytes()).bytes();
  if (!payload.empty()) bytes.resize(data_start);
  bytes += payload;
  check_width(bytes, length);
  bytes.resize(length);
  return bytes;
}

// Volumes.

void VolumeWriter::start_record(char type, char continuation) {
  if (record_length_ <= kHeaderLength) throw std::length_error("no room after a record's header");
  new_record();
  bytes_ += record_header(next_sequence_++, type, continuation);
  room_ = record_length_ - kHeaderLength;
  open_type_ = type;
}

VolumeWriter &VolumeWriter::control(char type, const ControlBlockette &blockette) {
  return control(type, blockette.text());
}

VolumeWriter &VolumeWriter::control(char type, std::initializer_list<ControlBlockette> blockettes) {
  for (const ControlBlockette &blockette : blockettes) control(type, blockette);
  return *this;
}

VolumeWriter &VolumeWriter::control(char type, std::string_view text) {
  if (open_type_ != type || room_ < kPrefixLength) start_record(type, ' ');
  while (!text.empty()) {
    if (room_ == 0) start_record(type, '*');
    const std::string_view piece = text.substr(0, room_);
    bytes_ += piece;
    room_ -= piece.size();
    text.remove_prefix(piece.size());
  }
  return *this;
}

VolumeWriter &VolumeWriter::new_record() {
  bytes_.append(room_, ' ');
  room_ = 0;
  open_type_ = 0;
  return *this;
}

VolumeWriter &VolumeWriter::data(const DataRecord &record) { return data(record, record_length_); }

VolumeWriter &VolumeWriter::data(const DataRecord &record, std::size_t length) {
  return raw_record(record.bytes(length, next_sequence_));
}

VolumeWriter &VolumeWriter::raw_record(std::string_view bytes) {
  new_record();
  bytes_ += bytes;
  ++next_sequence_;
  return *this;
}

VolumeWriter &VolumeWriter::sequence(long number) {
  next_sequence_ = number;
  return *this;
}

VolumeWriter &VolumeWriter::record_length(std::size_t length) {
  record_length_ = length;
  return *this;
}

std::string VolumeWriter::bytes() const { return bytes_ + std::string(room_, ' '); }

void VolumeWriter::write_to(const std::string &path) const {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << bytes() << std::flush;
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace volume
