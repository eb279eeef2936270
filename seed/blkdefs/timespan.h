// Fields of the time span blockettes (70 to 74).
#ifndef SEED_BLKDEFS_TIMESPAN_H_
#define SEED_BLKDEFS_TIMESPAN_H_

#include "seed/blkdefs/groups.h"
#include "seed/blkdefs/rows.h"

namespace tarvik::blkdefs {

// clang-format off

inline constexpr SDBlkFieldDef B0070_blkdef[] = {
    field("flag",    'A',   1, "[U]",  SDBLK_STRING, "Time span flag",    "What bounds the span: S a section of the stations' data, E an event"),
    field("time",    'V',  22, "TIME", SDBLK_DOUBLE, "Beginning of span", "Time at which the span begins"),
    field("endtime", 'V',  22, "TIME", SDBLK_DOUBLE, "End of span",       "Time at which the span ends"),
};

inline constexpr SDBlkFieldDef B0071_blkdef[] = {
    field("time",      'V',  22, "TIME",        SDBLK_DOUBLE,                      "Origin time of event",         "Time at which the event began"),
    refers("hypo_sid", 'D',   2, "##",                        "sid",               "Hypocenter source identifier", "Source of the hypocenter, by its code in blockette [32]"),
    field("lat",       'D',  10, "-##.######",  SDBLK_DOUBLE,                      "Latitude of event (degrees)",  "Latitude of the hypocenter in degrees, negative in the south"),
    field("lon",       'D',  11, "-###.######", SDBLK_DOUBLE,                      "Longitude of event (degrees)", "Longitude of the hypocenter in degrees, negative in the west"),
    field("depth",     'D',   7, "####.##",     SDBLK_DOUBLE,                      "Depth (km)",                   "Depth of the hypocenter in kilometers"),
    field("nmags",     'D',   3, "###",         SDBLK_INT,                         "Number of magnitudes",         "Number of magnitudes that follow"),
    group("mags",                                             "nmags", BXXXX_mags, "Magnitudes",                   "The magnitudes of the event, each with its type and source"),
    field("sregion",   'D',   3, "###",         SDBLK_INT,                         "Seismic region",               "Number of the seismic region after Flinn and Engdahl"),
    field("sloc",      'D',   3, "###",         SDBLK_INT,                         "Seismic location",             "Number of the seismic location after Flinn and Engdahl"),
    field("region",    'V',  40, "[UNLPS]",     SDBLK_STRING,                      "Region name",                  "Name of the place after Flinn and Engdahl"),
};

inline constexpr SDBlkFieldDef B0072_blkdef[] = {
    field("sta",         'A',   5, "[UN]",       SDBLK_STRING,        "Station identifier",        "Code of the station at which the phase arrived"),
    field("loc",         'A',   2, "[UN]",       SDBLK_STRING,        "Location identifier",       "Code of the site or instrument within the station, often blank"),
    field("chan",        'A',   3, "[UN]",       SDBLK_STRING,        "Channel identifier",        "Code of the channel on which the phase was read"),
    field("time",        'V',  22, "TIME",       SDBLK_DOUBLE,        "Arrival time of phase",     "Time at which the phase arrived"),
    field("amp",         'F',  10, "#.####E-##", SDBLK_DOUBLE,        "Amplitude of signal",       "Amplitude of the signal, in the units of signal response of the channel"),
    field("per",         'F',  10, "#.####E-##", SDBLK_DOUBLE,        "Period id signal(seconds)", "Period at which the amplitude was read, in seconds"),  // sic
    field("snr",         'F',  10, "#.####E-##", SDBLK_DOUBLE,        "Signal to noise ration",    "Size of the signal over that of the noise before it"),  // sic
    field("phase",       'V',  20, "[UNLP]",     SDBLK_STRING,        "Name of phase",             "Name of the phase, as seismologists write it"),
    refers("source_sid", 'D',   2, "##",                       "sid", "Source",                    "Source of the reading, by its code in blockette [32]"),
    field("net",         'A',   2, "[UN]",       SDBLK_STRING,        "Network Code",              "Code of the network that runs the station"),
};

inline constexpr SDBlkFieldDef B0073_blkdef[] = {
    field("nsegs", 'D',   4, "####", SDBLK_INT,                      "Number of data pieces", "Number of stretches of data that the index lists"),
    group("segs",                               "ndata", B0073_segs, "Time spans",            "The stretches of data, each with the place of its first record"),  // sic: counted by "nsegs"
};

inline constexpr SDBlkFieldDef B0074_blkdef[] = {
    field("sta",     'A',   5, "[UN]",   SDBLK_STRING,                          "Station identifier",             "Code of the station that recorded the series"),
    field("loc",     'A',   2, "[UN]",   SDBLK_STRING,                          "Location identifier",            "Code that tells apart the sites and instruments of one station, often blank"),
    field("chan",    'A',   3, "[UN]",   SDBLK_STRING,                          "Channel identifier",             "Code of the channel on which the series was recorded"),
    field("time",    'V',  22, "TIME",   SDBLK_DOUBLE,                          "Series start time",              "Time of the first sample of the series"),
    field("dseq",    'D',   6, "######", SDBLK_INT,                             "Sequence number of first data",  "Sequence number of the logical record in which the series starts"),
    field("sseq",    'D',   2, "##",     SDBLK_INT,                             "Sub-sequence number",            "The sub-sequence number used when the data record size is lass than the logical record size"),  // sic
    field("endtime", 'V',  22, "TIME",   SDBLK_DOUBLE,                          "Series end time",                "Time of the last sample of the series"),
    field("enddseq", 'D',   6, "######", SDBLK_INT,                             "Sequence number of last record", "Sequence number of the logical record in which the last data record of the series lies"),
    field("endsseq", 'D',   2, "##",     SDBLK_INT,                             "Sub-sequence number",            "Which data record of that logical record it is, where data records are the shorter ones"),
    field("naccels", 'D',   3, "###",    SDBLK_INT,                             "Number of accelerator repeats",  "Number of accelerator entries that follow, 0 when there are none"),
    group("accels",                                    "naccels", B0074_accels, "Accelerators",                   "Shortcuts into the series: times and places of some of its records"),
    field("net",     'A',   2, "[UN]",   SDBLK_STRING,                          "Network Code",                   "Code of the network that runs the station"),
};

// clang-format on

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_TIMESPAN_H_
