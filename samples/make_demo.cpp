// Writes the sample volume demo.seed: an event volume of an invented network, the same bytes each
// time.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"

namespace {

using volume::ByteOrder;
using volume::ControlBlockette;
using volume::DataRecord;
using volume::Time;
using volume::VolumeWriter;

constexpr std::size_t kControlLength = 4096;
constexpr std::size_t kDataLength = 512;
constexpr std::size_t kLongDataLength = 4096;

constexpr std::string_view kNetwork = "XX";
constexpr std::string_view kOpenEnd;  // an epoch that still runs

// Lookup codes of the abbreviations.
enum Format : int { kInt32 = 1, kInt32Little, kText };
enum Comment : int { kStormNoise = 1, kClockDrift };
enum Source : int { kBulletin = 1 };
enum Generic : int { kNetworkName = 1, kBroadband, kShortPeriod, kThermometer, kRecorder };
enum Unit : int { kNone = 0, kVelocity, kVolts, kCounts, kCelsius, kSeconds };
enum Response : int {
  kGeophone = 1,
  kGeophoneGain,
  kDigitizer,
  kDigitizerRate,
  kDigitizerGain,
  kBinomialFir,
  kBinomialRate,
  kBinomialGain,
  kTotalSensitivity
};

// The stations, in the order of their headers.
struct Station {
  std::string_view code;
  double latitude;
  double longitude;
  double elevation;
  std::string_view site;
  Time since;
  Time arrival;  // of the P wave
  double amplitude;
  double signal_to_noise;
};
constexpr int kStations = 3;
constexpr Station kDynga = {.code = "DYNGA",
                            .latitude = 64.993100,
                            .longitude = -16.912400,
                            .elevation = 688.0,
                            .site = "Dyngja Flats, Iceland",
                            .since = {2018, 120},
                            .arrival = {2021, 75, 6, 16, 11, 4000},
                            .amplitude = 3.1e-6,
                            .signal_to_noise = 42};
constexpr Station kSkera = {.code = "SKERA",
                            .latitude = 61.952800,
                            .longitude = -6.853700,
                            .elevation = 72.0,
                            .site = "Skerra Point, Faroe Islands",
                            .since = {2019, 201, 12},
                            .arrival = {2021, 75, 6, 16, 42, 500},
                            .amplitude = 1.4e-6,
                            .signal_to_noise = 9.5};
constexpr Station kFjell = {.code = "FJELL",
                            .latitude = 61.482500,
                            .longitude = 8.127400,
                            .elevation = 1043.0,
                            .site = "Fjellvatn, Norway",
                            .since = {2017, 305},
                            .arrival = {2021, 75, 6, 17, 57, 6000},
                            .amplitude = 8.8e-7,
                            .signal_to_noise = 21};

constexpr Time kSpanBegin = {2021, 75, 6, 10};
constexpr Time kSpanEnd = {2021, 75, 6, 30};
constexpr Time kOrigin = {2021, 75, 6, 12, 40, 2000};

// Where the parts of the volume begin.  The index blockettes before them need these numbers,
// so drafts of the volume are written first, to learn them.
struct Series {
  std::string_view sta;
  std::string_view loc;
  std::string_view chan;
  Time begin;
  Time end;
  long first = 0;
  long last = 0;
};
struct Index {
  long stations[kStations] = {};
  long span = 0;
  std::vector<Series> series;
};

// ---- Volume headers

ControlBlockette station_index(const Index &index) {
  ControlBlockette blockette(11);
  blockette.digits(kStations, 3);
  const std::string_view codes[kStations] = {kDynga.code, kSkera.code, kFjell.code};
  for (int i = 0; i < kStations; ++i) blockette.fixed(codes[i], 5).digits(index.stations[i], 6);
  return blockette;
}

void write_volume_headers(VolumeWriter &out, const Index &index) {
  out.control(
      'V', {ControlBlockette(10)
                .raw("02.4")
                .digits(12, 2)
                .var(kSpanBegin)
                .var(kSpanEnd)
                .var(Time{2021, 76, 8})
                .var("XX Demonstration Data Centre")
                .var("Sample volume, invented data"),
            station_index(index),
            ControlBlockette(12).digits(1, 4).var(kSpanBegin).var(kSpanEnd).digits(index.span, 6)});
}

// ---- Abbreviations

ControlBlockette data_format(std::string_view name, Format code, int family,
                             const std::vector<std::string_view> &keys) {
  ControlBlockette blockette(30);
  blockette.var(name).digits(code, 4).digits(family, 3).digits(static_cast<long>(keys.size()), 2);
  for (const std::string_view key : keys) blockette.var(key);
  return blockette;
}

ControlBlockette comment(Comment code, std::string_view text, Unit level_unit) {
  return ControlBlockette(31).digits(code, 4).fixed("N", 1).var(text).digits(level_unit, 3);
}

ControlBlockette generic(Generic code, std::string_view text) {
  return ControlBlockette(33).digits(code, 3).var(text);
}

ControlBlockette unit(Unit code, std::string_view name, std::string_view text) {
  return ControlBlockette(34).digits(code, 3).var(name).var(text);
}

// ---- Responses: the same fields stand in the dictionary (41 to 48) and under a channel (53 to
// 61), after either a lookup code and a name or a stage number.

ControlBlockette dictionary(int type, Response code, std::string_view name) {
  return ControlBlockette(type).digits(code, 4).var(name);
}

ControlBlockette stage(int type, int number) { return ControlBlockette(type).digits(number, 2); }

ControlBlockette &units(ControlBlockette &blockette, Unit in, Unit out) {
  return blockette.digits(in, 3).digits(out, 3);
}

struct Complex {
  double real;
  double imaginary;
};

void add_roots(ControlBlockette &blockette, const std::vector<Complex> &roots) {
  blockette.digits(static_cast<long>(roots.size()), 3);
  for (const Complex &root : roots) {
    blockette.real(root.real).real(root.imaginary).real(0).real(0);
  }
}

// A pendulum of velocity output: two zeros at 0, and its pair of poles (rad/s).  The factor makes
// the response 1 at 1 Hz.
ControlBlockette &pendulum(ControlBlockette &blockette, Complex pole, double factor) {
  units(blockette, kVelocity, kVolts).real(factor).real(1.0);
  add_roots(blockette, {{0, 0}, {0, 0}});
  add_roots(blockette, {pole, {pole.real, -pole.imaginary}});
  return blockette;
}

ControlBlockette broadband_stage() {
  ControlBlockette blockette = ControlBlockette(53).fixed("A", 1).digits(1, 2);
  return pendulum(blockette, {-0.0370240, 0.0370240}, 1.0);
}

// An analogue to digital converter: a digital stage without coefficients.
ControlBlockette &converter(ControlBlockette &blockette) {
  return units(blockette, kVolts, kCounts).digits(0, 4).digits(0, 4);
}

ControlBlockette &rate(ControlBlockette &blockette, double input_hz, int factor, double delay_s) {
  return blockette.real(input_hz, volume::kReal10)
      .digits(factor, 5)
      .digits(0, 5)
      .real(delay_s, volume::kReal11)
      .real(delay_s, volume::kReal11);
}

ControlBlockette &gain(ControlBlockette &blockette, double value) {
  return blockette.real(value).real(1.0).digits(0, 2);
}

ControlBlockette rate_stage(int number, double input_hz, int factor, double delay_s) {
  ControlBlockette blockette = stage(57, number);
  return rate(blockette, input_hz, factor, delay_s);
}

ControlBlockette gain_stage(int number, double value) {
  ControlBlockette blockette = stage(58, number);
  return gain(blockette, value);
}

ControlBlockette converter_stage(int number) {
  ControlBlockette blockette = ControlBlockette(54).fixed("D", 1).digits(number, 2);
  return converter(blockette);
}

// The coefficients of (1/2 + 1/2 z)^order, which add up to 1 and are exact in binary.
std::vector<double> binomial(int order) {
  std::vector<double> coefficients = {1.0};
  for (int row = 0; row < order; ++row) {
    std::vector<double> next(coefficients.size() + 1);
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
      next[i] += coefficients[i] / 2;
      next[i + 1] += coefficients[i] / 2;
    }
    coefficients = next;
  }
  return coefficients;
}

// A symmetric filter of odd length (code B): the first half and the middle coefficient are listed.
ControlBlockette &binomial_fir(ControlBlockette &blockette, int order) {
  const int listed = order / 2 + 1;
  units(blockette.fixed("B", 1), kCounts, kCounts).digits(listed, 4);
  const std::vector<double> coefficients = binomial(order);
  for (int i = 0; i < listed; ++i) {
    blockette.real(coefficients[static_cast<std::size_t>(i)], volume::kReal14);
  }
  return blockette;
}

// The same filter written with all its coefficients, each with its error.
ControlBlockette binomial_stage(int number, int order) {
  ControlBlockette blockette = ControlBlockette(54).fixed("D", 1).digits(number, 2);
  const std::vector<double> coefficients = binomial(order);
  units(blockette, kCounts, kCounts).digits(static_cast<long>(coefficients.size()), 4);
  for (const double coefficient : coefficients) blockette.real(coefficient).real(0);
  return blockette.digits(0, 4);
}

void write_response_dictionary(VolumeWriter &out) {
  ControlBlockette fir = dictionary(41, kBinomialFir, "XX_BINOMIAL_32");
  out.control('A', binomial_fir(fir, 32));
  ControlBlockette geophone = dictionary(43, kGeophone, "XX_GEOPHONE_1S").fixed("A", 1);
  out.control('A', pendulum(geophone, {-4.44288, 4.44288}, 1.41421));
  ControlBlockette digitizer = dictionary(44, kDigitizer, "XX_DIGITIZER").fixed("D", 1);
  out.control('A', converter(digitizer));
  ControlBlockette digitizer_rate = dictionary(47, kDigitizerRate, "XX_RATE_80_80");
  out.control('A', rate(digitizer_rate, 80, 1, 0));
  ControlBlockette fir_rate = dictionary(47, kBinomialRate, "XX_RATE_80_20");
  out.control('A', rate(fir_rate, 80, 4, 0.2));

  struct Gain {
    Response code;
    std::string_view name;
    double value;
  };
  for (const Gain &row : {Gain{kGeophoneGain, "XX_GEOPHONE_GAIN", 400},
                          Gain{kDigitizerGain, "XX_DIGITIZER_GAIN", 400000},
                          Gain{kBinomialGain, "XX_BINOMIAL_GAIN", 1},
                          Gain{kTotalSensitivity, "XX_GEOPHONE_TOTAL", 1.6e8}}) {
    ControlBlockette blockette = dictionary(48, row.code, row.name);
    out.control('A', gain(blockette, row.value));
  }
}

// Units come first: the comments refer to them.
void write_abbreviations(VolumeWriter &out) {
  out.control('A', {unit(kVelocity, "M/S", "Velocity in metres per second"),
                    unit(kVolts, "V", "Volts"), unit(kCounts, "COUNTS", "Digital counts"),
                    unit(kCelsius, "C", "Degrees Celsius"), unit(kSeconds, "S", "Seconds")});
  out.control('A', {data_format("32-bit integers", kInt32, 0, {"M0", "W4 D0-31 C2"}),
                    data_format("32-bit integers, low byte first", kInt32Little, 0,
                                {"M0", "W4,3-0 D0-31 C2"}),
                    data_format("Console log", kText, 80, {})});
  out.control('A', {comment(kStormNoise, "Wind noise of a winter storm", kNone),
                    comment(kClockDrift, "Clock without satellites, drift seen", kSeconds)});
  out.control('A', ControlBlockette(32)
                       .digits(kBulletin, 2)
                       .var("XX Demonstration Bulletin")
                       .var("2021, preliminary")
                       .var("XX Demonstration Data Centre"));
  out.control('A', {generic(kNetworkName, "Demonstration Network"),
                    generic(kBroadband, "Broadband seismometer, 120 s"),
                    generic(kShortPeriod, "Geophone, 1 s"), generic(kThermometer, "Thermometer"),
                    generic(kRecorder, "Recorder, no sensor")});
  write_response_dictionary(out);
}

// ---- Stations

ControlBlockette station_header(const Station &station, int channels, int comments,
                                ByteOrder order) {
  return volume::b50({.code = std::string(station.code),
                      .latitude = station.latitude,
                      .longitude = station.longitude,
                      .elevation = station.elevation,
                      .channels = channels,
                      .comments = comments,
                      .site = std::string(station.site),
                      .network_name = kNetworkName,
                      .word_orders = order == ByteOrder::kBig ? "321010" : "012301",
                      .begin = volume::seed_time(station.since),
                      .end = std::string(kOpenEnd),
                      .network = std::string(kNetwork)});
}

struct Channel {
  std::string_view loc;
  std::string_view code;
  Generic instrument = kRecorder;
  std::string_view remark = {};
  Unit signal = kNone;
  double depth = 0;
  double azimuth = 0;
  double dip = 0;
  Format format = kInt32;
  int length_exponent = 9;
  double rate = 0;
  int comments = 0;
  std::string_view flags = "CG";
  std::string begin = {};
  std::string end = {};
};

ControlBlockette channel_header(const Station &station, const Channel &channel) {
  return volume::b52({.location = std::string(channel.loc),
                      .code = std::string(channel.code),
                      .instrument = channel.instrument,
                      .remark = std::string(channel.remark),
                      .signal_units = channel.signal,
                      .calibration_units = channel.signal == kVelocity ? kVolts : kNone,
                      .latitude = station.latitude,
                      .longitude = station.longitude,
                      .elevation = station.elevation,
                      .depth = channel.depth,
                      .azimuth = channel.azimuth,
                      .dip = channel.dip,
                      .format = channel.format,
                      .length_exponent = channel.length_exponent,
                      .rate = channel.rate,
                      .drift = channel.rate > 0 ? 1e-5 : 0,
                      .comments = channel.comments,
                      .flags = std::string(channel.flags),
                      .begin = channel.begin,
                      .end = channel.end});
}

// Station and channel comments (51, 59) have the same fields.
ControlBlockette comment_use(int type, const Time &begin, const Time &end, Comment code,
                             long level) {
  return ControlBlockette(type).var(begin).var(end).digits(code, 4).digits(level, 6);
}

// A broadband sensor, a digitizer at 80 Hz and a filter to 20 Hz, blockette by blockette.
void write_broadband(VolumeWriter &out, double sensor_gain) {
  ControlBlockette fir = stage(61, 3).var("XX_BINOMIAL_32");
  out.control('S', {broadband_stage(), gain_stage(1, sensor_gain), converter_stage(2),
                    rate_stage(2, 80, 1, 0), gain_stage(2, 400000), binomial_fir(fir, 32),
                    rate_stage(3, 80, 4, 0.2), gain_stage(3, 1)});
}

void write_sensitivity(VolumeWriter &out, double counts_per_unit) {
  out.control('S', gain_stage(0, counts_per_unit));
}

// Two epochs of one channel without a location code, a long-period channel, and a log.
void write_dynga(VolumeWriter &out) {
  const std::string change = volume::seed_time(2020, 100, 9, 30);
  const std::string since = volume::seed_time(kDynga.since);
  out.control('S', {station_header(kDynga, 4, 1, ByteOrder::kBig),
                    comment_use(51, {2020, 345}, {2020, 347, 18}, kStormNoise, 0)});

  Channel vertical{.loc = "",
                   .code = "BHZ",
                   .instrument = kBroadband,
                   .remark = "Vault",
                   .signal = kVelocity,
                   .depth = 2.5,
                   .dip = -90,
                   .rate = 20,
                   .begin = since,
                   .end = change};
  out.control('S', channel_header(kDynga, vertical));
  write_broadband(out, 1500);
  write_sensitivity(out, 6e8);

  vertical.begin = change;
  vertical.end = kOpenEnd;
  vertical.comments = 1;
  out.control('S', channel_header(kDynga, vertical));
  write_broadband(out, 1200);
  write_sensitivity(out, 4.8e8);
  out.control('S', comment_use(59, {2020, 360, 4}, {2020, 361}, kClockDrift, 1));

  vertical.loc = "00";
  vertical.code = "LHZ";
  vertical.comments = 0;
  vertical.length_exponent = 12;
  vertical.rate = 1;
  out.control('S', channel_header(kDynga, vertical));
  write_broadband(out, 1200);
  out.control('S', {binomial_stage(4, 64), rate_stage(4, 20, 20, 1.6), gain_stage(4, 1)});
  write_sensitivity(out, 4.8e8);

  out.control('S', channel_header(kDynga, {.loc = "",
                                           .code = "ACE",
                                           .remark = "Clock exceptions",
                                           .format = kText,
                                           .flags = "CH",
                                           .begin = since}));
}

// A response that is spelled out in the dictionary only.
void write_skera(VolumeWriter &out) {
  out.control('S', {station_header(kSkera, 1, 0, ByteOrder::kBig),
                    channel_header(kSkera, {.loc = "00",
                                            .code = "BHZ",
                                            .instrument = kShortPeriod,
                                            .remark = "Shelter by the light",
                                            .signal = kVelocity,
                                            .dip = -90,
                                            .rate = 20,
                                            .begin = volume::seed_time(kSkera.since)})});
  struct Stage {
    int number;
    std::vector<Response> responses;
  };
  const std::vector<Stage> stages = {{1, {kGeophone, kGeophoneGain}},
                                     {2, {kDigitizer, kDigitizerRate, kDigitizerGain}},
                                     {3, {kBinomialFir, kBinomialRate, kBinomialGain}},
                                     {0, {kTotalSensitivity}}};
  ControlBlockette references(60);
  references.digits(static_cast<long>(stages.size()), 2);
  for (const Stage &stage : stages) {
    references.digits(stage.number, 2).digits(static_cast<long>(stage.responses.size()), 2);
    for (const Response response : stage.responses) references.digits(response, 4);
  }
  out.control('S', references);
}

// A station that writes the low byte first, a thermometer with a polynomial, and opaque data.
void write_fjell(VolumeWriter &out) {
  const std::string since = volume::seed_time(kFjell.since);
  out.control('S', {station_header(kFjell, 3, 0, ByteOrder::kLittle),
                    channel_header(kFjell, {.loc = "00",
                                            .code = "BHZ",
                                            .instrument = kBroadband,
                                            .remark = "Borehole",
                                            .signal = kVelocity,
                                            .depth = 38,
                                            .dip = -90,
                                            .format = kInt32Little,
                                            .rate = 20,
                                            .begin = since})});
  write_broadband(out, 1500);
  write_sensitivity(out, 6e8);

  out.control('S', {channel_header(kFjell, {.loc = "00",
                                            .code = "LKI",
                                            .instrument = kThermometer,
                                            .remark = "Inside the vault",
                                            .signal = kCelsius,
                                            .format = kInt32Little,
                                            .rate = 1,
                                            .flags = "CW",
                                            .begin = since})});
  ControlBlockette polynomial = ControlBlockette(62).fixed("P", 1).digits(1, 2);
  units(polynomial, kCelsius, kVolts).fixed("M", 1).fixed("B", 1);
  polynomial.real(0).real(0.1).real(-40).real(60).real(0.05).digits(3, 3);
  for (const double coefficient : {-40.0, 25.0, -0.125}) polynomial.real(coefficient).real(0);
  out.control('S', {polynomial, converter_stage(2), rate_stage(2, 1, 1, 0), gain_stage(2, 1e6)});

  out.control('S', channel_header(kFjell, {.loc = "",
                                           .code = "OCF",
                                           .remark = "Recorder settings",
                                           .format = kText,
                                           .flags = "CO",
                                           .begin = since}));
}

void write_stations(VolumeWriter &out, Index &found) {
  void (*const writers[kStations])(VolumeWriter &) = {write_dynga, write_skera, write_fjell};
  for (int i = 0; i < kStations; ++i) {
    out.new_record();
    found.stations[i] = out.next_sequence();
    writers[i](out);
  }
}

// ---- Time span

ControlBlockette event() {
  return ControlBlockette(71)
      .var(kOrigin)
      .digits(kBulletin, 2)
      .coordinate(53.214, volume::kLatitude)
      .coordinate(-35.108, volume::kLongitude)
      .coordinate(10, volume::kEventDepth)
      .digits(2, 3)
      .coordinate(5.4, volume::kMagnitude)
      .var("MB")
      .digits(kBulletin, 2)
      .coordinate(5.6, volume::kMagnitude)
      .var("MW")
      .digits(kBulletin, 2)
      .digits(32, 3)
      .digits(403, 3)
      .var("NORTHERN MID-ATLANTIC RIDGE");
}

ControlBlockette arrival(const Station &station, std::string_view loc) {
  return ControlBlockette(72)
      .fixed(station.code, 5)
      .fixed(loc, 2)
      .fixed("BHZ", 3)
      .var(station.arrival)
      .real(station.amplitude, volume::kReal10)
      .real(1.1, volume::kReal10)
      .real(station.signal_to_noise, volume::kReal10)
      .var("P")
      .digits(kBulletin, 2)
      .fixed(kNetwork, 2);
}

// One accelerator each: the first record, from which a reader may start to look.
ControlBlockette series_index(const Series &series) {
  return ControlBlockette(74)
      .fixed(series.sta, 5)
      .fixed(series.loc, 2)
      .fixed(series.chan, 3)
      .var(series.begin)
      .digits(series.first, 6)
      .digits(1, 2)
      .var(series.end)
      .digits(series.last, 6)
      .digits(1, 2)
      .digits(1, 3)
      .var(series.begin)
      .digits(series.first, 6)
      .digits(1, 2)
      .fixed(kNetwork, 2);
}

void write_time_span(VolumeWriter &out, const Index &index, Index &found) {
  out.new_record();
  found.span = out.next_sequence();
  out.control('T', {ControlBlockette(70).fixed("E", 1).var(kSpanBegin).var(kSpanEnd), event(),
                    arrival(kDynga, ""), arrival(kSkera, "00"), arrival(kFjell, "00")});
  for (const Series &series : index.series) out.control('T', series_index(series));
}

// ---- Data

// A wavelet on a little noise, in whole numbers: no machine rounds it differently.
class Ground {
 public:
  explicit Ground(std::uint32_t seed) : noise_(seed) {}

  std::vector<std::int32_t> samples(int count, int onset) {
    std::vector<std::int32_t> values;
    for (int i = 0; i < count; ++i) values.push_back(next(i == onset ? 90000 : 0));
    return values;
  }

 private:
  // A damped oscillation (about nine samples a period), kicked at the onset.
  std::int32_t next(std::int32_t kick) {
    const std::int32_t value = (375 * newer_ - 243 * older_) / 256 + kick;
    older_ = newer_;
    newer_ = value;
    noise_ = noise_ * 1664525U + 1013904223U;
    return value + static_cast<std::int32_t>(noise_ >> 25) - 64;
  }

  std::int32_t newer_ = 0;
  std::int32_t older_ = 0;
  std::uint32_t noise_;
};

// A time within the hour, moved on by ten-thousandths of a second.
Time later(Time time, long ten_thousandths) {
  const long total = ((time.minute * 60L) + time.second) * 10000L + time.fraction + ten_thousandths;
  time.fraction = static_cast<int>(total % 10000);
  time.second = static_cast<int>(total / 10000 % 60);
  time.minute = static_cast<int>(total / 600000);
  return time;
}

DataRecord empty_record(const Series &series, ByteOrder order) {
  return {.sta = std::string(series.sta),
          .loc = std::string(series.loc),
          .chan = std::string(series.chan),
          .net = std::string(kNetwork),
          .time = series.begin,
          .order = order};
}

void add_record(VolumeWriter &out, Series &series, const DataRecord &record, std::size_t length) {
  if (series.first == 0) series.first = out.next_sequence();
  series.last = out.next_sequence();
  out.data(record, length);
}

constexpr int kBroadbandRate = 20;
constexpr int kBroadbandRecords = 8;
constexpr int kOnsetRecord = 3;
constexpr int kOnsetSample = 40;
constexpr long kSampleSpacing = 10000 / kBroadbandRate;  // in ten-thousandths of a second

struct BroadbandPlan {
  const Station *station;
  std::string_view loc;
  char quality;
  ByteOrder order;
  float measured_rate;  // 0: no blockette 100
};

// The records of a broadband channel around the arrival; the one of the onset has a detection.
Series write_broadband_data(VolumeWriter &out, const BroadbandPlan &plan) {
  constexpr int kPlain = (512 - 64) / 4;      // samples after blockettes 1000 and 1001
  constexpr int kDetected = (512 - 128) / 4;  // and 200
  const bool big = plan.order == ByteOrder::kBig;
  const int plain = plan.measured_rate > 0 ? kDetected : kPlain;
  const long lead = (kOnsetRecord * plain + kOnsetSample) * kSampleSpacing;
  Series series{.sta = plan.station->code,
                .loc = plan.loc,
                .chan = "BHZ",
                .begin = later(plan.station->arrival, -lead),
                .end = {}};
  Ground ground(static_cast<std::uint32_t>(plan.station->code[0]));
  Time time = series.begin;
  for (int i = 0; i < kBroadbandRecords; ++i) {
    const bool onset = i == kOnsetRecord;
    DataRecord record = empty_record(series, plan.order);
    record.quality = plan.quality;
    record.time = time;
    record.rate_factor = kBroadbandRate;
    record.rate_multiplier = 1;
    record.activity_flags = onset ? 0x04 : 0;  // beginning of an event
    record.clock_flags = 0x20;                 // clock locked
    const int count = onset ? kDetected : plain;
    record.samples32(ground.samples(count, onset ? kOnsetSample : -1));
    record.b1000(3, big ? 1 : 0, 9).b1001(100, 0, 0);
    if (plan.measured_rate > 0 && !onset) record.b100(plan.measured_rate);
    if (onset) {
      record.b200({.amplitude = 90000,
                   .period = 0.45F,
                   .background = 37,
                   .onset = plan.station->arrival,
                   .detector = "DEMO SHORT/LONG AVERAGE"});
    }
    add_record(out, series, record, kDataLength);
    time = later(time, count * kSampleSpacing);
  }
  series.end = later(time, -kSampleSpacing);
  return series;
}

Series write_long_period_data(VolumeWriter &out) {
  constexpr int kCount = (4096 - 64) / 4;
  Series series{.sta = kDynga.code,
                .loc = "00",
                .chan = "LHZ",
                .begin = kSpanBegin,
                .end = later(kSpanBegin, (kCount - 1) * 10000L)};
  DataRecord record = empty_record(series, ByteOrder::kBig);
  record.rate_factor = 1;
  record.rate_multiplier = 1;
  record.clock_flags = 0x20;
  record.samples32(Ground(7).samples(kCount, 371)).b1000(3, 1, 12).b1001(100, 0, 0);
  add_record(out, series, record, kLongDataLength);
  return series;
}

Series write_temperature_data(VolumeWriter &out) {
  constexpr int kCount = 112;
  Series series{.sta = kFjell.code,
                .loc = "00",
                .chan = "LKI",
                .begin = kSpanBegin,
                .end = later(kSpanBegin, (kCount - 1) * 10000L)};
  DataRecord record = empty_record(series, ByteOrder::kLittle);
  record.rate_factor = 1;
  record.rate_multiplier = 1;
  std::vector<std::int32_t> values;
  for (int i = 0; i < kCount; ++i) values.push_back(1720000 + 15 * i - i * i / 8);
  record.samples32(values).b1000(3, 0, 9).b1001(90, 0, 0);
  add_record(out, series, record, kDataLength);
  return series;
}

// A record without samples that reports on the clock.
Series write_clock_data(VolumeWriter &out) {
  const Time when = {2021, 75, 6, 15};
  Series series{.sta = kDynga.code, .loc = "", .chan = "ACE", .begin = when, .end = when};
  DataRecord record = empty_record(series, ByteOrder::kBig);
  record.clock_flags = 0x20;
  record.b1000(0, 1, 9).b500({.vco_percent = 48.5F,
                              .exception = when,
                              .microseconds = 12,
                              .quality_percent = 100,
                              .count = 1,
                              .type = "DAILY TIMEMARK",
                              .model = "DEMO GPS RECEIVER",
                              .status = "9 SATELLITES, POSITION FIXED"});
  add_record(out, series, record, kDataLength);
  return series;
}

// A record without samples that carries the recorder's settings.
Series write_opaque_data(VolumeWriter &out) {
  const Time when = {2021, 75, 6, 20};
  Series series{.sta = kFjell.code, .loc = "", .chan = "OCF", .begin = when, .end = when};
  DataRecord record = empty_record(series, ByteOrder::kLittle);
  record.b1000(0, 0, 9).b2000({.record = 1,
                               .word_order = 0,
                               .flags = 0,
                               .headers = {"DEMO RECORDER", "SETTINGS", "TEXT"},
                               .data = "rate=20\ngain=1\nfilter=binomial32\n"});
  add_record(out, series, record, kDataLength);
  return series;
}

void write_data(VolumeWriter &out, Index &found) {
  found.series = {
      write_long_period_data(out),
      write_broadband_data(out, {&kDynga, "", 'D', ByteOrder::kBig, 0}),
      write_clock_data(out),
      write_broadband_data(out, {&kSkera, "00", 'R', ByteOrder::kBig, 19.9996F}),
      write_broadband_data(out, {&kFjell, "00", 'Q', ByteOrder::kLittle, 0}),
      write_temperature_data(out),
      write_opaque_data(out),
  };
}

// Writes the whole volume with the numbers of `index`, and answers those that it found.
Index write_volume(VolumeWriter &out, const Index &index) {
  Index found;
  write_volume_headers(out, index);
  write_abbreviations(out);
  write_stations(out, found);
  write_time_span(out, index, found);
  write_data(out, found);
  return found;
}

// The first draft has no data series to list; the second lists them, which may move their records.
VolumeWriter finished_volume() {
  Index index;
  for (int draft_number = 0; draft_number < 2; ++draft_number) {
    VolumeWriter draft(kControlLength);
    index = write_volume(draft, index);
  }
  VolumeWriter volume(kControlLength);
  write_volume(volume, index);
  return volume;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_demo FILE\n");
    return 2;
  }
  try {
    finished_volume().write_to(argv[1]);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "make_demo: %s\n", error.what());
    return 1;
  }
  return 0;
}
