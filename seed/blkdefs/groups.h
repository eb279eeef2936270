// Groups of fields that repeat inside a blockette; BXXXX_ groups serve several blockettes.
#ifndef SEED_BLKDEFS_GROUPS_H_
#define SEED_BLKDEFS_GROUPS_H_

#include "seed/blkdefs/rows.h"

namespace tarvik::blkdefs {

// clang-format off

inline constexpr SDBlkFieldDef B0011_stas[] = {
    field("sta",  'A',   5, "",       SDBLK_STRING, "Station identifier code",           "Code of the station"),
    field("lseq", 'D',   6, "######", SDBLK_INT,    "Sequence number of station header", "Sequence number of the logical record in which the station's header starts"),
};

inline constexpr SDBlkFieldDef B0012_spans[] = {
    field("time",    'V',  22, "TIME",   SDBLK_DOUBLE, "Beginning of span",                   "Time at which the span begins"),
    field("endtime", 'V',  22, "TIME",   SDBLK_DOUBLE, "End of span",                         "Time at which the span ends"),
    field("lseq",    'D',   6, "######", SDBLK_INT,    "Sequence number of time span header", "Sequence number of the logical record in which the span's headers start"),
};

inline constexpr SDBlkFieldDef B0035_comps[] = {
    field("sta",     'A',   5, "[UN]",  SDBLK_STRING, "Station identifier",     "Code of the component's station"),
    field("loc",     'A',   2, "[UN]",  SDBLK_STRING, "Location identifier",    "Code that tells apart the sites and instruments of one station, often blank"),
    field("chan",    'A',   3, "[UN]",  SDBLK_STRING, "Channel identifier",     "Code of the component's channel"),
    field("subchan", 'D',   4, "####",  SDBLK_INT,    "Sub-channel identifier", "Number of the component among those that are multiplexed in the same records, else 0"),
    field("weight",  'D',   5, "#.###", SDBLK_DOUBLE, "Component weight",       "Weight that the component has in the beam"),
};

inline constexpr SDBlkFieldDef BXXXX_coefs[] = {
    field("coef",     'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Coefficient",       "Value of the coefficient"),
    field("coef_err", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Coefficient Error", "Error of the coefficient, in its own units"),
};

inline constexpr SDBlkFieldDef BXXXX_pz[] = {
    field("real",     'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Real value of pole/zero",               "Real part of the pole or zero"),
    field("imag",     'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Imaginary value of pole/zero",          "Imaginary part of the pole or zero"),
    field("real_err", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Error of real value of pole/zero",      "Error of the real part"),
    field("imag_err", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Error of imaginary value of pole/zero", "Error of the imaginary part"),
};

inline constexpr SDBlkFieldDef BXXXX_fap[] = {
    field("freq",      'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Frequency (Hz)",        "Frequency of this line of the response, in hertz"),
    field("amp",       'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Amplitude",             "Amplitude of the response at the frequency"),
    field("amp_err",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Amplitude error",       "Error of the amplitude"),
    field("phase",     'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Phase angle (degrees)", "Phase angle of the response at the frequency, in degrees"),
    field("phase_err", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Phase error (degrees)", "Error of the phase angle, in degrees"),
};

inline constexpr SDBlkFieldDef BXXXX_corner[] = {
    field("freq",  'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Corner frequency (Hz)",    "Frequency at which the slope changes, in hertz"),
    field("slope", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Corner slope (db/decode)", "The slope of the line after the corner measured in db/decade"),  // sic
};

inline constexpr SDBlkFieldDef BXXXX_calhist[] = {
    field("sens", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Sensitivity for calibration",          "Sensitivity that the calibration found"),
    field("freq", 'F',  12, "-#.#####E-##", SDBLK_DOUBLE, "Frequency of calibration sensitivity", "Frequency of the calibration in hertz"),
    field("time", 'V',  22, "TIME",         SDBLK_DOUBLE, "Time of calibration",                  "Time at which the calibration was made"),
};

inline constexpr SDBlkFieldDef B0060_stage[] = {
    field("stage",  'D',   2, "##",   SDBLK_INT,                  "Stage sequence number", "Position of the stage in the chain of filters, counted from 1"),
    field("nresps", 'D',   2, "##",   SDBLK_INT,                  "Number of responses",   "Number of responses that describe the stage"),
    refs("resps",   'D',   4, "####",            "nresps", "rid", "Responses",             "The responses of the stage, by their codes in blockettes [41] to [48]"),
};

inline constexpr SDBlkFieldDef BXXXX_mags[] = {
    field("magnitude",   'D',   5, "##.##",   SDBLK_DOUBLE,        "Magnitude",        "Magnitude of the event"),
    field("type",        'V',  10, "[UNLPS]", SDBLK_STRING,        "Magnitude type",   "Scale of the magnitude, such as MB or MS"),
    refers("source_sid", 'D',   2, "##",                    "sid", "Magnitude source", "Source of the magnitude, by its code in blockette [32]"),
};

inline constexpr SDBlkFieldDef B0073_segs[] = {
    field("sta",  'A',   5, "[UN]",   SDBLK_STRING, "Station identifier",              "Code of the station that recorded the data"),
    field("loc",  'A',   2, "[UN]",   SDBLK_STRING, "Location identifier",             "Code that tells apart the sites and instruments of one station, often blank"),
    field("chan", 'A',   3, "[UN]",   SDBLK_STRING, "Channel identifier",              "Code of the channel on which the data were recorded"),
    field("time", 'V',  22, "TIME",   SDBLK_DOUBLE, "Time of record",                  "Time of the first sample of the record"),
    field("dseq", 'D',   6, "######", SDBLK_INT,    "Sequence number of first record", "Sequence number of the logical record in which the data start"),
    field("sseq", 'D',   2, "##",     SDBLK_INT,    "Sub-sequence number",             "The sub-sequence number used when the data record size is lass than the logical record size"),  // sic
};

inline constexpr SDBlkFieldDef B0074_accels[] = {
    field("time", 'V',  22, "TIME",   SDBLK_DOUBLE, "Record start time",         "Time of the first sample of the record"),
    field("dseq", 'D',   6, "######", SDBLK_INT,    "Sequence number of record", "Sequence number of the logical record in which the data record lies"),
    field("sseq", 'D',   2, "##",     SDBLK_INT,    "Sub-sequence number",       "Which data record of the logical record it is, where data records are the shorter ones"),
};

// clang-format on

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_GROUPS_H_
