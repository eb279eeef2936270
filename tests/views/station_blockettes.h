// Blockettes of stations and their responses, for volumes that tests build.
#ifndef TESTS_VIEWS_STATION_BLOCKETTES_H_
#define TESTS_VIEWS_STATION_BLOCKETTES_H_

#include <initializer_list>
#include <string>

#include "tests/util/station_blockettes.h"
#include "tests/util/volume_writer.h"

namespace station_blockettes {

using volume::ControlBlockette;
using volume::Time;
using volume::VolumeWriter;

inline ControlBlockette unit(int code, const std::string &name) {
  return ControlBlockette(34).digits(code, 3).var(name).var(name + " in words");
}

inline ControlBlockette station(const std::string &code, const Time &start = {2020, 1}) {
  return volume::b50({.code = code,
                      .latitude = 64.99,
                      .longitude = -16.5,
                      .site = "Askja, north",
                      .begin = volume::seed_time(start)});
}

inline ControlBlockette channel(const std::string &code, const std::string &location = "",
                                const std::string &end = "") {
  return volume::b52({.location = location,
                      .code = code,
                      .instrument = 2,
                      .remark = "\"new\"",
                      .calibration_units = 2,
                      .latitude = 65,
                      .longitude = -16.25,
                      .elevation = 700.5,
                      .depth = 2.5,
                      .azimuth = 90,
                      .length_exponent = 12,
                      .drift = 0.0001,
                      .begin = volume::seed_time(2021, 75, 6, 15, 52, 6000),
                      .end = end});
}

inline ControlBlockette comment(int type, int code, const Time &start, int level) {
  return ControlBlockette(type).var(start).var("").digits(code, 4).digits(level, 6);
}

inline ControlBlockette gain(int stage, double value) {
  return ControlBlockette(58).digits(stage, 2).real(value).real(0.05).digits(0, 2);
}

inline ControlBlockette decimation(int stage) {
  return ControlBlockette(57)
      .digits(stage, 2)
      .real(80, volume::kReal10)
      .digits(4, 5)
      .digits(0, 5)
      .real(1.5, volume::kReal11)
      .real(0, volume::kReal11);
}

// A list of frequencies, amplitudes and phases from a first frequency on.
inline ControlBlockette list(int stage, int count, double first, int input = 1) {
  ControlBlockette blockette(55);
  blockette.digits(stage, 2).digits(input, 3).digits(3, 3).digits(count, 4);
  for (int i = 0; i < count; ++i) {
    blockette.real(first + i).real(2).real(0).real(-45).real(0);
  }
  return blockette;
}

inline VolumeWriter dictionaries() {
  VolumeWriter volume(4096);
  volume.control('A', ControlBlockette(33).digits(1, 3).var("Test network"));
  volume.control('A', ControlBlockette(33).digits(2, 3).var("Sensor"));
  volume.control('A', ControlBlockette(30).var("Steim-2").digits(1, 4).digits(50, 3).digits(0, 2));
  volume.control('A', {unit(1, "M/S"), unit(2, "V"), unit(3, "COUNTS")});
  volume.control('A', ControlBlockette(31).digits(7, 4).fixed("A", 1).var("Frozen").digits(0, 3));
  return volume;
}

inline ControlBlockette by_dictionary(int stage, std::initializer_list<int> codes) {
  ControlBlockette blockette(60);
  blockette.digits(1, 2).digits(stage, 2).digits(static_cast<long>(codes.size()), 2);
  for (const int code : codes) blockette.digits(code, 4);
  return blockette;
}

inline ControlBlockette named(int type, int code) {
  return ControlBlockette(type).digits(code, 4).var("NAME");
}

}  // namespace station_blockettes

#endif  // TESTS_VIEWS_STATION_BLOCKETTES_H_
