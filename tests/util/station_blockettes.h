// The two longest blockettes of a station, field by field, for volumes that are built: a test names
// the fields that it is about.
#ifndef TESTS_UTIL_STATION_BLOCKETTES_H_
#define TESTS_UTIL_STATION_BLOCKETTES_H_

#include <optional>
#include <string>

#include "tests/util/volume_writer.h"

namespace volume {

struct Station {
  std::string code = "DYNGA";
  double latitude = 64.9931;
  double longitude = -16.9124;
  double elevation = 688;
  int channels = 1;
  int comments = 0;
  std::string site = "Site";
  int network_name = 1;                // code of a generic abbreviation
  std::string word_orders = "321010";  // of 32 bits, and of 16
  std::string begin = seed_time(2020, 1);
  std::string end = {};
  std::optional<std::string> network = "XX";  // none: the blockette ends before it
};

inline ControlBlockette b50(const Station &station) {
  ControlBlockette blockette(50);
  blockette.fixed(station.code, 5)
      .coordinate(station.latitude, kLatitude)
      .coordinate(station.longitude, kLongitude)
      .coordinate(station.elevation, kElevation)
      .digits(station.channels, 4)
      .digits(station.comments, 3)
      .var(station.site)
      .digits(station.network_name, 3)
      .raw(station.word_orders)
      .var(station.begin)
      .var(station.end)
      .fixed("N", 1);
  if (station.network) blockette.fixed(*station.network, 2);
  return blockette;
}

struct Channel {
  std::string location = {};
  std::string code = "BHZ";
  int instrument = 1;  // code of a generic abbreviation
  std::string remark = {};
  int signal_units = 1;  // codes of unit abbreviations
  int calibration_units = 0;
  double latitude = 64.9931;
  double longitude = -16.9124;
  double elevation = 688;
  double depth = 0;
  double azimuth = 0;
  double dip = -90;
  int format = 1;  // code of a format abbreviation
  int length_exponent = 9;
  double rate = 20;
  double drift = 0;
  int comments = 0;
  std::string flags = "CG";
  std::string begin = seed_time(2020, 1);
  std::string end = {};
};

inline ControlBlockette b52(const Channel &channel) {
  return ControlBlockette(52)
      .fixed(channel.location, 2)
      .fixed(channel.code, 3)
      .digits(0, 4)
      .digits(channel.instrument, 3)
      .var(channel.remark)
      .digits(channel.signal_units, 3)
      .digits(channel.calibration_units, 3)
      .coordinate(channel.latitude, kLatitude)
      .coordinate(channel.longitude, kLongitude)
      .coordinate(channel.elevation, kElevation)
      .coordinate(channel.depth, kLocalDepth)
      .coordinate(channel.azimuth, kAzimuth)
      .coordinate(channel.dip, kDip)
      .digits(channel.format, 4)
      .digits(channel.length_exponent, 2)
      .real(channel.rate, kReal10)
      .real(channel.drift, kReal10)
      .digits(channel.comments, 4)
      .var(channel.flags)
      .var(channel.begin)
      .var(channel.end)
      .fixed("N", 1);
}

}  // namespace volume

#endif  // TESTS_UTIL_STATION_BLOCKETTES_H_
