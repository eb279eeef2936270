// Writes SEED volumes byte by byte, for tests, benchmarks, fuzzing and samples.
//
// It shares no code with the library: what a test expects is not worked out by the code under test.
// Whatever does not fit its field throws std::length_error, so that a slip in a test shows at once;
// a volume that is meant to be wrong says so with text_with_length, raw, raw_record, sequence, the
// forced offsets of a data record, or by changing the finished bytes.
//
//   VolumeWriter volume(4096);
//   volume.control('A', ControlBlockette(34).digits(1, 3).var("M/S").var("Velocity"));
//   volume.data(DataRecord{.sta = "DYNGA", .chan = "BHZ", .net = "XX"}.b1000(3, 1, 9), 512);
#ifndef TESTS_UTIL_VOLUME_WRITER_H_
#define TESTS_UTIL_VOLUME_WRITER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace volume {

// The pictures of the manual's real numbers: '-' a place for the sign, '#' a digit.
inline constexpr std::string_view kReal14 = "-#.#######E-##";
inline constexpr std::string_view kReal12 = "-#.#####E-##";
inline constexpr std::string_view kReal11 = "-#.####E-##";
inline constexpr std::string_view kReal10 = "#.####E-##";
inline constexpr std::string_view kLatitude = "-##.######";
inline constexpr std::string_view kLongitude = "-###.######";
inline constexpr std::string_view kElevation = "-####.#";
inline constexpr std::string_view kLocalDepth = "###.#";
inline constexpr std::string_view kAzimuth = "###.#";
inline constexpr std::string_view kDip = "-##.#";
inline constexpr std::string_view kEventDepth = "####.##";
inline constexpr std::string_view kMagnitude = "##.##";
inline constexpr std::string_view kBeamWeight = "#.###";

struct Time {
  int year = 2021;
  int day = 75;  // of the year, 1 January is 1
  int hour = 0;
  int minute = 0;
  int second = 0;
  int fraction = 0;  // ten-thousandths of a second
};

// "2021,075,12:30:15.0500", as control headers write a time (without the final "~").
std::string seed_time(const Time &time);
std::string seed_time(int year, int day, int hour = 0, int minute = 0, int second = 0,
                      int fraction = 0);

// One blockette of a control header.  The adders append one field each.
class ControlBlockette {
 public:
  explicit ControlBlockette(int type) : type_(type) {}

  // A whole number with leading zeros.
  ControlBlockette &digits(long value, int width);
  // Text from the left, blanks after it.
  ControlBlockette &fixed(std::string_view text, int width);
  // A number with an exponent: 1.23456 is " 1.23456E+00" in the picture "-#.#####E-##".
  ControlBlockette &real(double value, std::string_view picture = kReal12);
  // A number without one, sign and leading zeros written: 8.5 is "+08.500000" in "-##.######".
  ControlBlockette &coordinate(double value, std::string_view picture);
  // Text of any length, "~" added.
  ControlBlockette &var(std::string_view text);
  ControlBlockette &var(const Time &time) { return var(seed_time(time)); }
  // Bytes as they stand.
  ControlBlockette &raw(std::string_view bytes);

  // The whole blockette: three digits of type, four of length (these seven included), the fields.
  [[nodiscard]] std::string text() const;
  // The same with a length of one's own, true or not.
  [[nodiscard]] std::string text_with_length(long length) const;

 private:
  int type_;
  std::string body_;
};

enum class ByteOrder { kBig, kLittle };

// Binary fields in a byte order: the body of a data blockette, or samples.
class BinaryFields {
 public:
  explicit BinaryFields(ByteOrder order) : order_(order) {}

  BinaryFields &u8(std::int64_t value) { return whole(value, 1, 0); }
  BinaryFields &u16(std::int64_t value) { return whole(value, 2, 0); }
  BinaryFields &u32(std::int64_t value) { return whole(value, 4, 0); }
  BinaryFields &i16(std::int64_t value) { return whole(value, 2, INT16_MIN); }
  BinaryFields &i32(std::int64_t value) { return whole(value, 4, INT32_MIN); }
  BinaryFields &f32(float value);
  // The ten bytes of a binary time; the byte that the format leaves unused is 0.
  BinaryFields &time(const Time &time);
  BinaryFields &fixed(std::string_view text, int width);
  BinaryFields &raw(std::string_view bytes);

  [[nodiscard]] const std::string &bytes() const { return bytes_; }

 private:
  // A number of `size` bytes, of which `least` is the smallest.
  BinaryFields &whole(std::int64_t value, int size, std::int64_t least);

  ByteOrder order_;
  std::string bytes_;
};

// The fields of the event detections: 200 takes those above the line, 201 all.
struct Detection {
  float amplitude = 0;
  float period = 0;
  float background = 0;
  unsigned flags = 0;
  Time onset = {};
  std::string_view detector = {};
  // ----
  std::array<unsigned, 6> signal_to_noise = {};
  unsigned lookback = 0;
  unsigned algorithm = 0;
};

// The fields of the calibrations 300, 310, 320 and 390; each takes those that it has.
struct Calibration {
  Time begin = {};
  unsigned steps = 0;
  unsigned flags = 0;
  std::uint32_t duration = 0;  // ten-thousandths of a second
  std::uint32_t interval = 0;
  float period = 0;
  float amplitude = 0;
  std::string_view channel = {};
  std::uint32_t reference_amplitude = 0;
  std::string_view coupling = {};
  std::string_view rolloff = {};
  std::string_view noise = {};
};

// The fields of the timing blockette 500.
struct Timing {
  float vco_percent = 0;
  Time exception = {};
  unsigned microseconds = 0;
  unsigned quality_percent = 0;
  std::uint32_t count = 0;
  std::string_view type = {};
  std::string_view model = {};
  std::string_view status = {};
};

// The opaque data blockette 2000; its length and the offset of its data are worked out.
struct Opaque {
  std::uint32_t record = 0;
  unsigned word_order = 1;
  unsigned flags = 0;
  std::vector<std::string> headers = {};
  std::string data = {};
};

// One data record: the fixed header, the chain of blockettes from byte 48 on without gaps, and the
// payload at the next multiple of 64.  `order` must be set before a blockette is added.
struct DataRecord {
  char quality = 'D';  // or R, Q, M
  std::string sta = {};
  std::string loc = {};
  std::string chan = {};
  std::string net = {};
  Time time = {};
  unsigned samples = 0;
  int rate_factor = 0;
  int rate_multiplier = 0;
  unsigned activity_flags = 0;
  unsigned clock_flags = 0;
  unsigned quality_flags = 0;
  std::int32_t time_correction = 0;  // ten-thousandths of a second
  ByteOrder order = ByteOrder::kBig;
  std::string payload = {};
  // Forced values are only written: they move nothing.
  std::optional<unsigned> forced_count = {};
  std::optional<unsigned> forced_data_offset = {};
  std::optional<unsigned> forced_first_offset = {};

  struct Blockette {
    unsigned type = 0;
    std::string body = {};
    std::optional<unsigned> forced_next = {};
  };
  std::vector<Blockette> chain = {};

  // The body is what follows the type and the next offset.  The last next offset is 0.
  DataRecord &blockette(unsigned type, std::string_view body,
                        std::optional<unsigned> forced_next = {});

  DataRecord &b100(float sample_rate, unsigned flags = 0);
  DataRecord &b200(const Detection &detection);
  DataRecord &b201(const Detection &detection);
  DataRecord &b300(const Calibration &calibration);
  DataRecord &b310(const Calibration &calibration);
  DataRecord &b320(const Calibration &calibration);
  DataRecord &b390(const Calibration &calibration);
  DataRecord &b395(const Time &end);
  DataRecord &b400(float azimuth, float slowness, unsigned configuration);
  DataRecord &b405(std::initializer_list<unsigned> delays);
  DataRecord &b500(const Timing &timing);
  // word_order: 0 little-endian, 1 big-endian; the record's length is 2 to the exponent.
  DataRecord &b1000(unsigned encoding, unsigned word_order, unsigned length_exponent);
  DataRecord &b1001(unsigned timing_quality, unsigned microseconds, unsigned frames);
  DataRecord &b2000(const Opaque &opaque);

  // 32-bit samples in the record's byte order become the payload, and are counted.
  DataRecord &samples32(const std::vector<std::int32_t> &values);

  // The record, zeros after the payload.
  [[nodiscard]] std::string bytes(std::size_t length, long sequence = 1) const;
};

// A volume under construction.  Records are numbered from 000001 on; after 999999 the caller must
// say how to go on (sequence).
class VolumeWriter {
 public:
  // The length of the control records.
  explicit VolumeWriter(std::size_t record_length) : record_length_(record_length) {}

  // Adds a blockette of a control header of the type V, A, S or T.  It goes into the open record,
  // and runs on into further records (continuation flag '*') where that has no room; it starts a
  // record of its own after another type, and where not even its first seven characters fit.
  VolumeWriter &control(char type, const ControlBlockette &blockette);
  VolumeWriter &control(char type, std::initializer_list<ControlBlockette> blockettes);
  // The same of a blockette that is already text (text_with_length, say), whatever it holds.
  VolumeWriter &control(char type, std::string_view text);
  // Pads the open control record with blanks: the next blockette starts a record.
  VolumeWriter &new_record();

  // Adds a data record, as long as the control records unless a length is given.
  VolumeWriter &data(const DataRecord &record);
  VolumeWriter &data(const DataRecord &record, std::size_t length);

  // Adds bytes as they stand, header and all; they count as one record.
  VolumeWriter &raw_record(std::string_view bytes);

  // The number of the record that is started next.
  VolumeWriter &sequence(long number);
  [[nodiscard]] long next_sequence() const { return next_sequence_; }
  // The length of the control records that are started from here on.
  VolumeWriter &record_length(std::size_t length);

  // The volume so far, the open record padded.
  [[nodiscard]] std::string bytes() const;
  // Throws std::runtime_error when the file cannot be written.
  void write_to(const std::string &path) const;

 private:
  void start_record(char type, char continuation);

  std::size_t record_length_;
  std::size_t room_ = 0;  // bytes left in the open control record
  char open_type_ = 0;    // its type, 0 when none is open
  long next_sequence_ = 1;
  std::string bytes_;
};

}  // namespace volume

#endif  // TESTS_UTIL_VOLUME_WRITER_H_
