// Fields of the station and channel blockettes (50 to 62).
#ifndef SEED_BLKDEFS_STATION_H_
#define SEED_BLKDEFS_STATION_H_

#include "seed/blkdefs/groups.h"
#include "seed/blkdefs/rows.h"

namespace tarvik::blkdefs {

// clang-format off

inline constexpr SDBlkFieldDef B0050_blkdef[] = {
    field("sta",         'A',   5, "[UN]",        SDBLK_STRING,        "Station call letters",       "Code by which the station is known"),
    field("lat",         'D',  10, "-##.######",  SDBLK_DOUBLE,        "Latitude (degrees)",         "Latitude in degrees, negative in the south"),
    field("lon",         'D',  11, "-###.######", SDBLK_DOUBLE,        "Longitude (degrees)",        "Longitude in degrees, negative in the west"),
    field("elev",        'D',   7, "-####.#",     SDBLK_DOUBLE,        "Elevation (m)",              "Height of the ground at the station above sea level, in meters"),
    field("nchans",      'D',   4, "####",        SDBLK_INT,           "Number of channels",         "Number of channel headers (blockettes [52]) that belong to the station"),
    field("ncomments",   'D',   3, "###",         SDBLK_INT,           "Number of station comments", "Number of station comments (blockettes [51]) that belong to the station"),
    field("name",        'V',  60, "[UNLPS]",     SDBLK_STRING,        "Site name",                  "Where the station is: site, region, country"),
    refers("net_gid",    'D',   3, "###",                       "gid", "Network identifier code",    "Name of the network, by its code in blockette [33]"),
    field("int_order",   'D',   4, "####",        SDBLK_INT,           "32 bit word order",          "Order of the bytes of 32-bit words: 0123 low byte first, 3210 high byte first"),
    field("short_order", 'D',   2, "##",          SDBLK_INT,           "16 bit word order",          "Order of the bytes of 16-bit words: 01 low byte first, 10 high byte first"),
    field("time",        'V',  22, "TIME",        SDBLK_DOUBLE,        "Start effective date",       "Time from which the header is in effect"),
    field("endtime",     'V',  22, "TIME",        SDBLK_DOUBLE,        "End effective date",         "Time at which the header ceases to be in effect, empty when it still is"),
    field("update",      'A',   1, "",            SDBLK_STRING,        "Update flag",                "What the header does to information sent before: N leaves it in force for other dates, U replaces it"),
    field("net",         'A',   2, "[UN]",        SDBLK_STRING,        "Network Code",               "Code of the network that runs the station"),
};

inline constexpr SDBlkFieldDef B0051_blkdef[] = {
    field("time",    'V',  22, "TIME",   SDBLK_DOUBLE,        "Beginning effective time", "Time from which the comment holds for the station"),
    field("endtime", 'V',  22, "TIME",   SDBLK_DOUBLE,        "End effective time",       "Time until which the comment holds for the station"),
    refers("cid",    'D',   4, "####",                 "cid", "Comment code key",         "Text of the comment, by its code in blockette [31]"),
    field("level",   'D',   6, "######", SDBLK_INT,           "Comment level",            "Number that goes with the comment, in the units that its text names"),
};

inline constexpr SDBlkFieldDef B0052_blkdef[] = {
    field("loc",       'A',   2, "[UN]",        SDBLK_STRING,        "Location identifier",         "Code that tells apart the sites and instruments of one station, often blank"),
    field("chan",      'A',   3, "[UN]",        SDBLK_STRING,        "Channel identifier",          "Code of the channel: band, instrument and orientation"),
    field("subchan",   'D',   4, "####",        SDBLK_INT,           "Subchannel identifier",       "Number of the channel among those that are multiplexed in the same records, else 0"),
    refers("inst_gid", 'D',   3, "###",                       "gid", "Instrument identifier",       "Instrument, by the code of its name in blockette [33]"),
    field("comment",   'V',  30, "[UNLPS]",     SDBLK_STRING,        "Optional comment",            "Free text on the instrument"),
    refers("sunits",   'D',   3, "###",                       "uid", "Units of signal response",    "Units of what the instrument measures, by their code in blockette [34]"),
    refers("cunits",   'D',   3, "###",                       "uid", "Units of calibration input",  "Units of the calibration signal put in, by their code in blockette [34]"),
    field("lat",       'D',  10, "-##.######",  SDBLK_DOUBLE,        "Latitude (degrees)",          "Latitude in degrees, negative in the south"),
    field("lon",       'D',  11, "-###.######", SDBLK_DOUBLE,        "Longitude (degrees)",         "Longitude in degrees, negative in the west"),
    field("elev",      'D',   7, "-####.#",     SDBLK_DOUBLE,        "Elevation (m)",               "Height of the ground at the instrument above sea level, in meters"),
    field("depth",     'D',   5, "###.#",       SDBLK_DOUBLE,        "Local depth (m)",             "Depth of the instrument below the ground, in meters"),
    field("azimuth",   'D',   5, "###.#",       SDBLK_DOUBLE,        "Azimuth (degrees)",           "Direction of the component in degrees clockwise from north"),
    field("dip",       'D',   5, "-##.#",       SDBLK_DOUBLE,        "Dip (degrees)",               "Slope of the component in degrees down from the horizontal"),
    refers("df_did",   'D',   4, "####",                      "did", "Data format identifier code", "Data format of the channel, by its code in blockette [30]"),
    field("dlenp",     'D',   2, "##",          SDBLK_INT,           "Data record length",          "Length of the channel's data records in bytes, as a power of two"),
    field("samprate",  'F',  10, "#.####E-##",  SDBLK_DOUBLE,        "Sample rate(Hz)",             "Nominal number of samples per second"),
    field("maxdrift",  'F',  10, "#.####E-##",  SDBLK_DOUBLE,        "Max clock drift (seconds)",   "Largest drift of the clock to be expected, in seconds per sample"),
    field("ncomments", 'D',   4, "####",        SDBLK_INT,           "Number of station comments",  "Number of channel comments (blockettes [59]) that belong to the channel"),  // sic
    field("flags",     'V',  26, "[U]",         SDBLK_STRING,        "Channel flags",               "One letter for each property of the channel, such as C for continuous and T for triggered recording"),
    field("time",      'V',  22, "TIME",        SDBLK_DOUBLE,        "Start date",                  "Time from which the header is in effect"),
    field("endtime",   'V',  22, "TIME",        SDBLK_DOUBLE,        "End date",                    "Time at which the header ceases to be in effect, empty when it still is"),
    field("update",    'A',   1, "",            SDBLK_STRING,        "Update flag",                 "What the header does to information sent before: N leaves it in force for other dates, U replaces it"),
};

inline constexpr SDBlkFieldDef B0053_blkdef[] = {
    field("resp",    'A',   1, "[U]",          SDBLK_STRING,                     "Transfer function type",                "Type of the transfer function: A Laplace in radians per second, B analog in hertz, C composite, D digital"),
    field("stage",   'D',   2, "##",           SDBLK_INT,                        "Stage sequence number",                 "Position of the stage in the chain of filters, counted from 1"),
    refers("iunits", 'D',   3, "###",                        "uid",              "Stage signal input units",              "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",                        "uid",              "Stage signal output units",             "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("norm",    'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                     "A0 normalization factor (1.0 of none)", "Factor that brings the product of zeros over poles to 1 at the normalization frequency"),  // sic
    field("fnorm",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                     "Normalization frequency (Hz)",          "Frequency in hertz at which the normalization factor was worked out"),
    field("nzeros",  'D',   3, "###",          SDBLK_INT,                        "Number of complex zeros",               "Number of complex zeros that follow"),
    group("zeros",                                           "nzeros", BXXXX_pz, "Complex zeros",                         "The complex zeros of the transfer function"),
    field("npoles",  'D',   3, "###",          SDBLK_INT,                        "Number of complex poles",               "Number of complex poles that follow"),
    group("poles",                                           "npoles", BXXXX_pz, "Complex poles",                         "The complex poles of the transfer function"),
};

inline constexpr SDBlkFieldDef B0054_blkdef[] = {
    field("resp",    'A',   1, "[U]",  SDBLK_STRING,                       "Response type",                      "Type of the transfer function: A analog in radians per second, B analog in hertz, C composite, D digital"),
    field("stage",   'D',   2, "##",   SDBLK_INT,                          "Stage sequence number",              "Position of the stage in the chain of filters, counted from 1"),
    refers("iunits", 'D',   3, "###",                "uid",                "Stage signal input units",           "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",                "uid",                "Stage signal output units",          "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("nnums",   'D',   4, "####", SDBLK_INT,                          "Number of numerator coefficients",   "Number of numerator coefficients that follow"),
    group("nums",                                    "nnums", BXXXX_coefs, "Numerator coefficients",             "The coefficients of the numerator, each with its error"),
    field("ndens",   'D',   4, "####", SDBLK_INT,                          "Number of denominator coefficients", "Number of denominator coefficients that follow, 0 for a FIR filter"),
    group("dens",                                    "ndens", BXXXX_coefs, "Denominator coefficients",           "The coefficients of the denominator, each with its error"),
};

inline constexpr SDBlkFieldDef B0055_blkdef[] = {
    field("stage",   'D',   2, "##",   SDBLK_INT,                     "Stage sequence number",      "Position of the stage in the chain of filters, counted from 1"),
    refers("iunits", 'D',   3, "###",             "uid",              "Stage signal input units",   "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",             "uid",              "Stage signal output units",  "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("nfaps",   'D',   4, "####", SDBLK_INT,                     "Number of responses listed", "Number of frequencies at which the response is given"),
    group("faps",                                 "nfaps", BXXXX_fap, "FAP responses",              "The response as frequency, amplitude and phase"),
};

inline constexpr SDBlkFieldDef B0056_blkdef[] = {
    field("stage",    'D',   2, "##",   SDBLK_INT,                        "Stage sequence number",     "Position of the stage in the chain of filters, counted from 1"),
    refers("iunits",  'D',   3, "###",             "uid",                 "Stage signal input units",  "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits",  'D',   3, "###",             "uid",                 "Stage signal output units", "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("ncorners", 'D',   4, "####", SDBLK_INT,                        "Number of corners listed",  "Number of corner frequencies that follow"),
    group("corners",                               "nfaps", BXXXX_corner, "Corners",                   "The corner frequencies, each with the slope after it"),  // sic: counted by "ncorners"
};

inline constexpr SDBlkFieldDef B0057_blkdef[] = {
    field("stage",      'D',   2, "##",          SDBLK_INT,    "Stage sequence number",        "Position of the stage in the chain of filters, counted from 1"),
    field("isamprate",  'F',  10, "#.####E-##",  SDBLK_DOUBLE, "Input sample rate",            "Rate at which samples enter the stage, in samples per second"),
    field("decfac",     'D',   5, "#####",       SDBLK_INT,    "Decimation factor",            "Number of samples that enter the stage for each one that leaves it"),
    field("decoff",     'D',   5, "#####",       SDBLK_INT,    "Decimation offset",            "This filed determines which sample is chosen for use (first sample = 0)"),  // sic
    field("delay",      'F',  11, "-#.####E-##", SDBLK_DOUBLE, "Estimated delay (seconds)",    "Time that the stage is estimated to hold the signal back, in seconds"),
    field("correction", 'F',  11, "-#.####E-##", SDBLK_DOUBLE, "Correction applied (seconds)", "Time shift that was applied to the time stamps because of the stage's delay, in seconds"),
};

inline constexpr SDBlkFieldDef B0058_blkdef[] = {
    field("stage",      'D',   2, "##",           SDBLK_INT,                            "Stage sequence number",    "Position of the stage in the chain of filters, 0 for the whole channel"),
    field("sens",       'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                         "Sensitivity/gain",         "Gain of the stage, or sensitivity of the channel at stage 0, at the frequency below"),
    field("freq",       'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                         "Frequency(Hz)",            "Frequency in hertz at which the sensitivity or gain holds"),
    field("nhistories", 'D',   2, "##",           SDBLK_INT,                            "Number of history values", "Number of calibrations that follow"),
    group("histories",                                          "ndens", BXXXX_calhist, "Calibration histories",    "Earlier calibrations from which the sensitivity was worked out"),  // sic: counted by "nhistories"
};

inline constexpr SDBlkFieldDef B0059_blkdef[] = {
    field("time",    'V',  22, "TIME",   SDBLK_DOUBLE,        "Beginning effective time", "Time from which the comment holds for the channel"),
    field("endtime", 'V',  22, "TIME",   SDBLK_DOUBLE,        "End effective time",       "Time until which the comment holds for the channel"),
    refers("cid",    'D',   4, "####",                 "cid", "Comment code key",         "Text of the comment, by its code in blockette [31]"),
    field("level",   'D',   6, "######", SDBLK_INT,           "Comment level",            "Number that goes with the comment, in the units that its text names"),
};

inline constexpr SDBlkFieldDef B0060_blkdef[] = {
    field("nstages", 'D',   2, "##", SDBLK_INT,                         "Number of stages", "Number of filter stages that follow"),
    group("stages",                             "nstages", B0060_stage, "Filter stages",    "The filter stages, each with the responses that describe it"),
};

inline constexpr SDBlkFieldDef B0061_blkdef[] = {
    field("stage",    'D',   2, "##",             SDBLK_INT,                    "Stage sequence number", "Position of the stage in the chain of filters, counted from 1"),
    field("name",     'V',  25, "[UN_]",          SDBLK_STRING,                 "Response name",         "Name of the filter, for people"),
    field("sym",      'A',   1, "[U]",            SDBLK_STRING,                 "Symmetry code",         "Symmetry of the coefficients: A none, B symmetric with an odd number, C symmetric with an even number; only half are given for B and C"),
    refers("iunits",  'D',   3, "###",                                "uid",    "Signal in Units",       "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits",  'D',   3, "###",                                "uid",    "Signal out Units",      "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("ncoefs",   'D',   4, "####",           SDBLK_INT,                    "Number of factors",     "Number of coefficients that follow"),
    repeated("coefs", 'F',  14, "-#.#######E-##", SDBLK_DOUBLE_ARRAY, "ncoefs", "FIR coefficients",      "The coefficients of the filter, as many as its symmetry asks for"),
};

inline constexpr SDBlkFieldDef B0062_blkdef[] = {
    field("tran",    'A',   1, "[U]",          SDBLK_STRING,                        "Transfer Function Type",            "Type of the transfer function, P for a polynomial"),
    field("stage",   'D',   2, "##",           SDBLK_INT,                           "Stage sequence number",             "Position of the stage in the chain of filters, 0 when the polynomial describes the whole channel"),
    refers("iunits", 'D',   3, "###",                        "uid",                 "Signal Input Units",                "Units of the signal that enters the stage or channel, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",                        "uid",                 "Signal Output Units",               "Units of the signal that leaves the stage or channel, by their code in blockette [34]"),
    field("poly",    'A',   1, "[U]",          SDBLK_STRING,                        "Polynomial Approximation Type",     "How the polynomial approximates, M for a Maclaurin series"),
    field("funits",  'A',   1, "[U]",          SDBLK_STRING,                        "Valid Frequency Units",             "Units of the frequency band: A radians per second, B hertz"),
    field("lfreq",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Lower Valid Frequency Band",        "Lowest frequency at which the polynomial holds, 0 when there is no limit"),
    field("ufreq",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Upper Valid Frequency Band",        "Highest frequency at which the polynomial holds"),
    field("lappr",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Lower Bound of Approximation",      "Smallest value for which the polynomial approximates the response"),
    field("uappr",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Upper Bound of Approximation",      "Largest value for which the polynomial approximates the response"),
    field("err",     'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Maximum Absolute Error",            "Largest absolute error of the approximation between its bounds"),
    field("ncoefs",  'D',   3, "###",          SDBLK_INT,                           "Number of Polynomial Coefficients", "Number of polynomial coefficients that follow"),
    group("coefs",                                           "ncoefs", BXXXX_coefs, "Polynomial Coefficients",           "The coefficients of the polynomial, lowest power first, each with its error"),
};

// clang-format on

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_STATION_H_
