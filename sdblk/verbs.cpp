#include "sdblk/verbs.h"

#include <array>

#include "sdblk/blocks.h"
#include "sdblk/segments.h"
#include "sdblk/stations.h"
#include "sdblk/stationxml.h"
#include "sdblk/volumes.h"
#include "views/schema.h"
#include "views/segments.h"
#include "views/stations.h"
#include "views/volumes.h"

namespace tarvik {

namespace {

// clang-format off
//   name        purpose                                            options            heading            schema
constexpr std::array kVerbs = {
 Verb{"blocks",   "Every blockette and data record, field by field", declare_blocks,   nullptr,           blocks_schema},
 Verb{"volumes",  "One line a file: what it is, what it holds",      declare_volumes,  volumes_heading,   volumes_schema},
 Verb{"stations", "One line a channel epoch, with its response",     declare_stations, stations_heading,  stations_schema},
 Verb{"segments", "One line a continuous stretch of data",           declare_segments, segments_heading,  segments_schema},
 Verb{"stationxml", "One StationXML document of all files",          declare_stationxml, nullptr,         nullptr},
};
// clang-format on

}  // namespace

std::span<const Verb> verbs() { return kVerbs; }

}  // namespace tarvik
