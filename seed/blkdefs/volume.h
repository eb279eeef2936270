// Fields of the volume index blockettes (5 to 12).
//
// The version is kept as it is written, so it is a string although it looks like a number.
#ifndef SEED_BLKDEFS_VOLUME_H_
#define SEED_BLKDEFS_VOLUME_H_

#include "seed/blkdefs/groups.h"
#include "seed/blkdefs/rows.h"

namespace tarvik::blkdefs {

// clang-format off

inline constexpr SDBlkFieldDef B0005_blkdef[] = {
    field("version", 'D',   4, "##.#", SDBLK_STRING, "Version of format",     "Version of the SEED format that the volume keeps to, major number before the point and minor number after it"),
    field("llenp",   'D',   2, "##",   SDBLK_INT,    "Logical record length", "Length of the volume's logical records in bytes, as a power of two (8 to 15)"),
    field("time",    'V',  22, "TIME", SDBLK_DOUBLE, "Beginning of volume",   "Time of the earliest data on the volume"),
};

inline constexpr SDBlkFieldDef B0008_blkdef[] = {
    field("version",   'D',   4, "##.#", SDBLK_STRING, "Version of format",                  "Version of the SEED format that the volume keeps to, major number before the point and minor number after it"),
    field("llenp",     'D',   2, "##",   SDBLK_INT,    "Logical record length",              "Length of the volume's logical records in bytes, as a power of two (8 to 15)"),
    field("sta",       'A',   5, "[UN]", SDBLK_STRING, "Station identifier",                 "Code of the station that the telemetry volume comes from"),
    field("loc",       'A',   2, "[UN]", SDBLK_STRING, "Location identifier",                "Code that tells apart the sites and instruments of one station, often blank"),
    field("chan",      'A',   3, "[UN]", SDBLK_STRING, "Channel identifier",                 "Code of the channel that the telemetry volume carries"),
    field("time",      'V',  22, "TIME", SDBLK_DOUBLE, "Beginning of volume",                "Time of the first data on the volume"),
    field("endtime",   'V',  22, "TIME", SDBLK_DOUBLE, "End of volume",                      "Time of the last data on the volume"),
    field("time_sta",  'V',  22, "TIME", SDBLK_DOUBLE, "Station information effective date", "Date from which the matching station header (blockette [50]) is in effect"),
    field("time_chan", 'V',  22, "TIME", SDBLK_DOUBLE, "Channel information effective date", "Date from which the matching channel header (blockette [52]) is in effect"),
    field("net",       'A',   2, "[UN]", SDBLK_STRING, "Network Code",                       "Code of the network that runs the station"),
};

inline constexpr SDBlkFieldDef B0010_blkdef[] = {
    field("version",  'D',   4, "##.#", SDBLK_STRING, "Version of format",        "Version of the SEED format that the volume keeps to, major number before the point and minor number after it"),
    field("llenp",    'D',   2, "##",   SDBLK_INT,    "Logical record length",    "Length of the volume's logical records in bytes, as a power of two (8 to 15)"),
    field("time",     'V',  22, "TIME", SDBLK_DOUBLE, "Beginning time",           "Time of the earliest data on the volume"),
    field("endtime",  'V',  22, "TIME", SDBLK_DOUBLE, "End time",                 "Time of the latest data on the volume"),
    field("time_vol", 'V',  22, "TIME", SDBLK_DOUBLE, "Volume time",              "Date and time at which the volume was written"),
    field("orig_org", 'V',  80, "",     SDBLK_STRING, "Originating organization", "Organization that wrote the volume"),
    field("label",    'V',  80, "",     SDBLK_STRING, "Label",                    "Free text that tells this volume from others of the same organization"),
};

inline constexpr SDBlkFieldDef B0011_blkdef[] = {
    field("nstas", 'D',   3, "###", SDBLK_INT,                      "Number of stations", "The number of stations that will be represented later by Station identifier Blocklettes [50]"),  // sic
    group("stas",                              "nstas", B0011_stas, "Stations",           "The stations that will be represented later by Station identifier Blocklettes [50]"),  // sic
};

inline constexpr SDBlkFieldDef B0012_blkdef[] = {
    field("nspans", 'D',   4, "####", SDBLK_INT,                        "Number of spans in table", "Number of time spans that the index lists"),
    group("spans",                               "nspans", B0012_spans, "Time spans",               "The time spans of the volume, each with the place of its header"),
};

// clang-format on

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_VOLUME_H_
