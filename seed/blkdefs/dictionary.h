// Fields of the abbreviation dictionary blockettes (30 to 48).
#ifndef SEED_BLKDEFS_DICTIONARY_H_
#define SEED_BLKDEFS_DICTIONARY_H_

#include "seed/blkdefs/groups.h"
#include "seed/blkdefs/rows.h"

namespace tarvik::blkdefs {

// clang-format off

inline constexpr SDBlkFieldDef B0030_blkdef[] = {
    field("name",    'V',  50, "[UNLPS]", SDBLK_STRING,                "Short descriptive name",      "Name of the data format, for people"),
    defines("did",   'D',   4, "####",                                 "Data format identifier code", "Code under which blockettes [52] refer to this format"),
    field("family",  'D',   3, "###",     SDBLK_INT,                   "Data family type",            "Number of the family of encodings that the format belongs to"),
    field("nkeys",   'D',   2, "##",      SDBLK_INT,                   "Number of decoder keys",      "Number of decoder keys that follow"),
    repeated("keys", 'V',   0, "[UNLPS]", SDBLK_STRING_ARRAY, "nkeys", "Decoder keys",                "The rules that a decoder of this family needs, one key after the other"),
};

inline constexpr SDBlkFieldDef B0031_blkdef[] = {
    defines("cid",   'D',   4, "####",                         "Comment code key",       "Code under which blockettes [51] and [59] refer to this comment"),
    field("class",   'A',   1, "[U]",     SDBLK_STRING,        "Comment class code",     "Letter that tells for what the comment may be used"),
    field("comment", 'V',  70, "[UNLPS]", SDBLK_STRING,        "Description of comment", "Text of the comment"),
    refers("uid",    'D',   3, "###",                   "uid", "Units of comment level", "Units of the level that goes with the comment, by their code in blockette [34]"),
};

inline constexpr SDBlkFieldDef B0032_blkdef[] = {
    defines("sid", 'D',   2, "##",                    "Source lookup code",         "Code under which blockettes [71] and [72] refer to this source"),
    field("auth",  'V',  70, "[UNLPS]", SDBLK_STRING, "Name of publication/author", "Publication or author that the information comes from"),
    field("date",  'V',  70, "[UNLPS]", SDBLK_STRING, "Date publishing/catalog",    "Date published and catalog information for this citation from the publicaiton"),  // sic
    field("name",  'V',  50, "[UNLPS]", SDBLK_STRING, "Publisher name",             "Name of the publisher"),
};

inline constexpr SDBlkFieldDef B0033_blkdef[] = {
    defines("gid", 'D',   3, "###",                   "Abbreviation lookup code", "Code under which blockettes [50] and [52] refer to this text"),
    field("descr", 'V',  50, "[UNLPS]", SDBLK_STRING, "Abbreviation description", "The text that the code stands for"),
};

inline constexpr SDBlkFieldDef B0034_blkdef[] = {
    defines("uid", 'D',   3, "###",                   "Unit lookup code", "Code under which other blockettes refer to this unit"),
    field("name",  'V',  20, "[UNP]",   SDBLK_STRING, "Unit name",        "Short name of the unit, in the notation of FORTRAN expressions"),
    field("descr", 'V',  50, "[UNLPS]", SDBLK_STRING, "Unit description", "What the unit is, in words"),
};

inline constexpr SDBlkFieldDef B0035_blkdef[] = {
    defines("bid",  'D',   3, "###",                                    "Beam lookup code",     "Code of this beam configuration"),
    field("ncomps", 'D',   4, "####", SDBLK_INT,                        "Number of components", "Number of components that make up the beam"),
    group("comps",                               "ncomps", B0035_comps, "components",           "The components of the beam, each with its weight"),
};

inline constexpr SDBlkFieldDef B0041_blkdef[] = {
    defines("rid",    'D',   4, "####",                                         "Response lookup key", "Code under which blockettes [60] refer to this response"),
    field("name",     'V',  25, "[UN_]",          SDBLK_STRING,                 "Response name",       "Name of the response, for people"),
    field("sym",      'A',   1, "[U]",            SDBLK_STRING,                 "Symmetry code",       "Symmetry of the coefficients: A none, B symmetric with an odd number, C symmetric with an even number; only half are given for B and C"),
    refers("iunits",  'D',   3, "###",                                "uid",    "Signal in Units",     "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits",  'D',   3, "###",                                "uid",    "Signal out Units",    "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("ncoefs",   'D',   4, "####",           SDBLK_INT,                    "Number of factors",   "Number of coefficients that follow"),
    repeated("coefs", 'F',  14, "-#.#######E-##", SDBLK_DOUBLE_ARRAY, "ncoefs", "FIR coefficients",    "The coefficients of the filter, as many as its symmetry asks for"),
};

inline constexpr SDBlkFieldDef B0042_blkdef[] = {
    defines("rid",   'D',   4, "####",                                              "Response Lookup Key",               "Code under which blockettes [60] refer to this response"),
    field("name",    'V',  25, "[UN_]",        SDBLK_STRING,                        "Response Name",                     "Name of the response, for people"),
    field("tran",    'A',   1, "[U]",          SDBLK_STRING,                        "Transfer Function Type",            "Type of the transfer function, P for a polynomial"),
    refers("iunits", 'D',   3, "###",                        "uid",                 "Signal Signal Input Units",         "Units of the signal that enters the stage, by their code in blockette [34]"),  // sic
    refers("ounits", 'D',   3, "###",                        "uid",                 "Signal Signal Output Units",        "Units of the signal that leaves the stage, by their code in blockette [34]"),  // sic
    field("poly",    'A',   1, "[U]",          SDBLK_STRING,                        "Polynomial Approximation Type",     "How the polynomial approximates, M for a Maclaurin series"),
    field("funits",  'A',   1, "[U]",          SDBLK_STRING,                        "Valid Frequency Units",             "Units of the frequency band: A radians per second, B hertz"),
    field("lfreq",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Lower Valid Frequency Band",        "Lowest frequency at which the polynomial holds, 0 when there is no limit"),
    field("ufreq",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Upper Valid Frequency Band",        "Highest frequency at which the polynomial holds"),
    field("lappr",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Lower Bound of Approximation",      "Smallest value for which the polynomial approximates the response"),
    field("uappr",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Upper Bound of Approximation",      "Largest value for which the polynomial approximates the response"),
    field("maxerr",  'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                        "Maximum Absolute Error",            "Largest absolute error of the approximation between its bounds"),
    field("ncoefs",  'D',   3, "###",          SDBLK_INT,                           "Number of Polynomial Coefficients", "Number of polynomial coefficients that follow"),
    group("coefs",                                           "ncoefs", BXXXX_coefs, "Polynomial Coefficients",           "The coefficients of the polynomial, lowest power first, each with its error"),
};

inline constexpr SDBlkFieldDef B0043_blkdef[] = {
    defines("rid",   'D',   4, "####",                                           "Response lookup key",                   "Code under which blockettes [60] refer to this response"),
    field("name",    'V',  25, "[UN_]",        SDBLK_STRING,                     "Response name",                         "Name of the response, for people"),
    field("resp",    'A',   1, "[U]",          SDBLK_STRING,                     "Response type",                         "Type of the transfer function: A Laplace in radians per second, B analog in hertz, C composite, D digital"),
    refers("iunits", 'D',   3, "###",                        "uid",              "Stage signal input units",              "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",                        "uid",              "Stage signal output units",             "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("norm",    'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                     "A0 normalization factor (1.0 of none)", "Factor that brings the product of zeros over poles to 1 at the normalization frequency"),  // sic
    field("fnorm",   'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                     "Normalization frequency (Hz)",          "Frequency in hertz at which the normalization factor was worked out"),
    field("nzeros",  'D',   3, "###",          SDBLK_INT,                        "Number of complex zeros",               "Number of complex zeros that follow"),
    group("zeros",                                           "nzeros", BXXXX_pz, "Complex zeros",                         "The complex zeros of the transfer function"),
    field("npoles",  'D',   3, "###",          SDBLK_INT,                        "Number of complex poles",               "Number of complex poles that follow"),
    group("poles",                                           "npoles", BXXXX_pz, "Complex poles",                         "The complex poles of the transfer function"),
};

inline constexpr SDBlkFieldDef B0044_blkdef[] = {
    defines("rid",   'D',   4, "####",                                      "Response lookup key",                "Code under which blockettes [60] refer to this response"),
    field("name",    'V',  25, "[UN_]", SDBLK_STRING,                       "Response name",                      "Name of the response, for people"),
    field("resp",    'A',   1, "[U]",   SDBLK_STRING,                       "Response type",                      "Type of the transfer function: A analog in radians per second, B analog in hertz, C composite, D digital"),
    refers("iunits", 'D',   3, "###",                 "uid",                "Stage signal input units",           "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",                 "uid",                "Stage signal output units",          "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("nnums",   'D',   4, "####",  SDBLK_INT,                          "Number of numerator coefficients",   "Number of numerator coefficients that follow"),
    group("nums",                                     "nnums", BXXXX_coefs, "Numerator coefficients",             "The coefficients of the numerator, each with its error"),
    field("ndens",   'D',   4, "####",  SDBLK_INT,                          "Number of denominator coefficients", "Number of denominator coefficients that follow, 0 for a FIR filter"),
    group("dens",                                     "ndens", BXXXX_coefs, "Denominator coefficients",           "The coefficients of the denominator, each with its error"),
};

inline constexpr SDBlkFieldDef B0045_blkdef[] = {
    defines("rid",   'D',   4, "####",                                    "Response lookup key",        "Code under which blockettes [60] refer to this response"),
    field("name",    'V',  25, "[UN_]", SDBLK_STRING,                     "Response name",              "Name of the response, for people"),
    refers("iunits", 'D',   3, "###",                 "uid",              "Stage signal input units",   "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits", 'D',   3, "###",                 "uid",              "Stage signal output units",  "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("nfaps",   'D',   4, "####",  SDBLK_INT,                        "Number of responses listed", "Number of frequencies at which the response is given"),
    group("faps",                                     "nfaps", BXXXX_fap, "FAP responses",              "The response as frequency, amplitude and phase"),
};

inline constexpr SDBlkFieldDef B0046_blkdef[] = {
    defines("rid",    'D',   4, "####",                                       "Response lookup key",       "Code under which blockettes [60] refer to this response"),
    field("name",     'V',  25, "[UN_]", SDBLK_STRING,                        "Response name",             "Name of the response, for people"),
    refers("iunits",  'D',   3, "###",                 "uid",                 "Stage signal input units",  "Units of the signal that enters the stage, by their code in blockette [34]"),
    refers("ounits",  'D',   3, "###",                 "uid",                 "Stage signal output units", "Units of the signal that leaves the stage, by their code in blockette [34]"),
    field("ncorners", 'D',   4, "####",  SDBLK_INT,                           "Number of corners listed",  "Number of corner frequencies that follow"),
    group("corners",                                   "nfaps", BXXXX_corner, "Corners",                   "The corner frequencies, each with the slope after it"),  // sic: counted by "ncorners"
};

inline constexpr SDBlkFieldDef B0047_blkdef[] = {
    defines("rid",      'D',   4, "####",                      "Response lookup key",          "Code under which blockettes [60] refer to this response"),
    field("name",       'V',  25, "[UN_]",       SDBLK_STRING, "Response name",                "Name of the response, for people"),
    field("isamprate",  'F',  10, "#.####E-##",  SDBLK_DOUBLE, "Input sample rate",            "Rate at which samples enter the stage, in samples per second"),
    field("decfac",     'D',   5, "#####",       SDBLK_INT,    "Decimation factor",            "Number of samples that enter the stage for each one that leaves it"),
    field("decoff",     'D',   5, "#####",       SDBLK_INT,    "Decimation offset",            "This filed determines which sample is chosen for use (first sample = 0)"),  // sic
    field("delay",      'F',  11, "-#.####E-##", SDBLK_DOUBLE, "Estimated delay (seconds)",    "Time that the stage is estimated to hold the signal back, in seconds"),
    field("correction", 'F',  11, "-#.####E-##", SDBLK_DOUBLE, "Correction applied (seconds)", "Time shift that was applied to the time stamps because of the stage's delay, in seconds"),
};

inline constexpr SDBlkFieldDef B0048_blkdef[] = {
    defines("rid",      'D',   4, "####",                                               "Response lookup key",      "Code under which blockettes [60] refer to this response"),
    field("name",       'V',  25, "[UN_]",        SDBLK_STRING,                         "Response name",            "Name of the response, for people"),
    field("sens",       'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                         "Sensitivity/gain",         "Sensitivity of the channel, or gain of the stage that refers to it, at the frequency below"),
    field("freq",       'F',  12, "-#.#####E-##", SDBLK_DOUBLE,                         "Frequency(Hz)",            "Frequency in hertz at which the sensitivity or gain holds"),
    field("nhistories", 'D',   2, "##",           SDBLK_INT,                            "Number of history values", "Number of calibrations that follow"),
    group("histories",                                          "ndens", BXXXX_calhist, "Calibration histories",    "Earlier calibrations from which the sensitivity was worked out"),  // sic: counted by "nhistories"
};

// clang-format on

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_DICTIONARY_H_
