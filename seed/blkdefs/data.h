// Fields of the data record header and of the data blockettes (100 to 2000).  The fields of the
// header start after its sequence number and type, at byte 8 of the record; those of a blockette
// after its type and the offset of the next one.
#ifndef SEED_BLKDEFS_DATA_H_
#define SEED_BLKDEFS_DATA_H_

#include "seed/blkdefs/rows.h"

namespace tarvik::blkdefs {

// clang-format off

inline constexpr SDBlkFieldDef BDATA_blkdef[] = {
    field("sta",              'A',   5, "[UN]",  SDBLK_STRING, "Station identifier code",          "Code of the station that recorded the data"),
    field("loc",              'A',   2, "[UN]",  SDBLK_STRING, "Location identifier",              "Code that tells apart the sites and instruments of one station, often blank"),
    field("chan",             'A',   3, "[UN]",  SDBLK_STRING, "Channel identifier",               "Code of the channel on which the data were recorded"),
    field("net",              'A',   2, "[UN]",  SDBLK_STRING, "Network Code",                     "Code of the network that runs the station"),
    field("time",             'B',  10, "BTIME", SDBLK_DOUBLE, "Record start time",                "Time of the first sample in the record"),
    field("nsamp",            'B',   2, "UWORD", SDBLK_INT,    "Number of samples",                "Number of samples in the record"),
    field("srate_factor",     'B',   2, "WORD",  SDBLK_INT,    "Sample rate factor",               "Sample rate before the multiplier: samples per second when positive, seconds per sample when negative"),
    field("srate_multiplier", 'B',   2, "WORD",  SDBLK_INT,    "Sample rate multiplier",           "What the factor is multiplied by when positive, divided by when negative"),
    field("activity_flags",   'B',   1, "UBYTE", SDBLK_INT,    "Activity flags",                   "One bit for each thing going on: calibration, applied time correction, start, end or course of an event, leap second"),
    field("clock_flags",      'B',   1, "UBYTE", SDBLK_INT,    "I/O and clock flags",              "One bit for each thing known of reading and clock: damaged or misread record, start or end of a series, locked clock"),
    field("quality_flags",    'B',   1, "UBYTE", SDBLK_INT,    "Data quality flags",               "One bit for each doubt on the data: saturation, clipping, spikes, gaps, telemetry faults, charging filter, questionable time"),
    field("nblks",            'B',   1, "UBYTE", SDBLK_INT,    "Number of blockettes that follow", "Number of data blockettes in the chain after the header"),
    field("tcor",             'B',   4, "LONG",  SDBLK_INT,    "Time correction",                  "Correction of the start time in units of 0.0001 second"),
    field("data_offset",      'B',   2, "UWORD", SDBLK_INT,    "Beginning of data",                "Offset of the first sample from the start of the record in bytes, 0 when there are none"),
    field("blk_offset",       'B',   2, "UWORD", SDBLK_INT,    "First blockette",                  "Offset of the first data blockette from the start of the record in bytes, 0 when there is none"),
};

inline constexpr SDBlkFieldDef B0100_blkdef[] = {
    field("samprate", 'B',   4, "FLOAT", SDBLK_DOUBLE, "Actual Sample Rate",    "Sample rate as it really was, in samples per second"),
    field("flags",    'B',   1, "UBYTE", SDBLK_INT,    "Flags (to bo defined)", "Flags (to bo defined)"),  // sic
};

inline constexpr SDBlkFieldDef B0200_blkdef[] = {
    field("amp",   'B',   4, "FLOAT", SDBLK_DOUBLE, "Signal amplitude",      "Amplitude of the signal that was detected"),
    field("per",   'B',   4, "FLOAT", SDBLK_DOUBLE, "Signal period",         "Period of the signal that was detected, in seconds"),
    field("noise", 'B',   4, "FLOAT", SDBLK_DOUBLE, "Background estimate",   "Level of the background before the signal, as the detector reckons it"),
    field("flags", 'B',   1, "UBYTE", SDBLK_INT,    "Event detection flags", "Bits on the detection: 0 dilatation, 1 units after deconvolution, 2 direction of the first motion unknown"),
    field("res1",  'B',   1, "UBYTE", SDBLK_INT,    "Reserved",              "Byte kept for later use"),
    field("time",  'B',  10, "BTIME", SDBLK_DOUBLE, "Signal onset time",     "Time at which the signal set in"),
    field("name",  'A',  24, "",      SDBLK_STRING, "Detector name",         "Name of the detector"),
};

inline constexpr SDBlkFieldDef B0201_blkdef[] = {
    field("amp",      'B',   4, "FLOAT", SDBLK_DOUBLE, "Signal amplitude",              "Amplitude of the signal that was detected"),
    field("per",      'B',   4, "FLOAT", SDBLK_DOUBLE, "Signal period",                 "Period of the signal that was detected, in seconds"),
    field("noise",    'B',   4, "FLOAT", SDBLK_DOUBLE, "Background estimate",           "Level of the background before the signal, as the detector reckons it"),
    field("flags",    'B',   1, "UBYTE", SDBLK_INT,    "Event detection flags",         "Bits on the detection: 0 dilatation, else compression"),
    field("res1",     'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                      "Byte kept for later use"),
    field("time",     'B',  10, "BTIME", SDBLK_DOUBLE, "Signal onset time",             "Time at which the signal set in"),
    field("snr1",     'B',   1, "UBYTE", SDBLK_INT,    "Signal-to-noise ratio value 1", "Signal-to-noise ratio number 1 of the six that the detector keeps"),
    field("snr2",     'B',   1, "UBYTE", SDBLK_INT,    "Signal-to-noise ratio value 2", "Signal-to-noise ratio number 2 of the six that the detector keeps"),
    field("snr3",     'B',   1, "UBYTE", SDBLK_INT,    "Signal-to-noise ratio value 3", "Signal-to-noise ratio number 3 of the six that the detector keeps"),
    field("snr4",     'B',   1, "UBYTE", SDBLK_INT,    "Signal-to-noise ratio value 4", "Signal-to-noise ratio number 4 of the six that the detector keeps"),
    field("snr5",     'B',   1, "UBYTE", SDBLK_INT,    "Signal-to-noise ratio value 5", "Signal-to-noise ratio number 5 of the six that the detector keeps"),
    field("snr6",     'B',   1, "UBYTE", SDBLK_INT,    "Signal-to-noise ratio value 6", "Signal-to-noise ratio number 6 of the six that the detector keeps"),
    field("lookback", 'B',   1, "UBYTE", SDBLK_INT,    "Lookback value",                "Number of times that the detector looked back for the onset, 0 to 2"),
    field("picka",    'B',   1, "UBYTE", SDBLK_INT,    "Pick algorithm",                "Algorithm by which the onset was picked, 0 or 1"),
    field("name",     'A',  24, "",      SDBLK_STRING, "Detector name",                 "Name of the detector"),
};

inline constexpr SDBlkFieldDef B0300_blkdef[] = {
    field("time",          'B',  10, "BTIME", SDBLK_DOUBLE, "Beginning of calibration time",  "Time at which the calibration began"),
    field("nsteps",        'B',   1, "UBYTE", SDBLK_INT,    "Number of step calibrations",    "Number of steps in the calibration"),
    field("flags",         'B',   1, "UBYTE", SDBLK_INT,    "Calibration flags",              "Bits on the calibration: 0 first pulse positive, 1 pulses alternate in sign, 2 automatic, 3 continued from the record before"),
    field("step_duration", 'B',   4, "ULONG", SDBLK_INT,    "Step duration",                  "Length of each step in units of 0.0001 second"),
    field("itvl_duration", 'B',   4, "ULONG", SDBLK_INT,    "Interval duration",              "Time between steps in units of 0.0001 second"),
    field("amp",           'B',   4, "FLOAT", SDBLK_DOUBLE, "Calibration signal amplitude",   "Amplitude of the calibration signal, in the units of calibration input of the channel"),
    field("chan",          'A',   3, "[UN]",  SDBLK_STRING, "Channel with calibration input", "Code of the channel that records the calibration input, blank when none does"),
    field("res1",          'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                       "Byte kept for later use"),
    field("ramp",          'B',   4, "ULONG", SDBLK_INT,    "Reference amplitude",            "Amplitude that the calibration is measured against"),
    field("coupling",      'A',  12, "",      SDBLK_STRING, "Coupling",                       "How the calibration signal is coupled in, such as Resistive or Capacitive"),
    field("rolloff",       'A',  12, "",      SDBLK_STRING, "Rolloff",                        "Rolloff of the filters in the calibrator, such as 3dB@10Hz"),
};

inline constexpr SDBlkFieldDef B0310_blkdef[] = {
    field("time",         'B',  10, "BTIME", SDBLK_DOUBLE, "Beginning of calibration time",  "Time at which the calibration began"),
    field("res1",         'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                       "Byte kept for later use"),
    field("flags",        'B',   1, "UBYTE", SDBLK_INT,    "Calibration flags",              "Bits on the calibration: 2 automatic, 3 continued from the record before, and for the amplitude 4 peak to peak, 5 zero to peak, 6 root mean square"),
    field("cal_duration", 'B',   4, "ULONG", SDBLK_INT,    "Step duration",                  "Length of the calibration in units of 0.0001 second"),  // sic
    field("per",          'B',   4, "FLOAT", SDBLK_DOUBLE, "Period of signal(seconds)",      "Period of the sine signal in seconds"),
    field("amp",          'B',   4, "FLOAT", SDBLK_DOUBLE, "Amplitude of signal",            "Amplitude of the sine signal, in the units of calibration input of the channel"),
    field("chan",         'A',   3, "[UN]",  SDBLK_STRING, "Channel with calibration input", "Code of the channel that records the calibration input, blank when none does"),
    field("res2",         'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                       "Byte kept for later use"),
    field("ramp",         'B',   4, "ULONG", SDBLK_INT,    "Reference amplitude",            "Amplitude that the calibration is measured against"),
    field("coupling",     'A',  12, "",      SDBLK_STRING, "Coupling",                       "How the calibration signal is coupled in, such as Resistive or Capacitive"),
    field("rolloff",      'A',  12, "",      SDBLK_STRING, "Rolloff",                        "Rolloff of the filters in the calibrator, such as 3dB@10Hz"),
};

inline constexpr SDBlkFieldDef B0320_blkdef[] = {
    field("time",         'B',  10, "BTIME", SDBLK_DOUBLE, "Beginning of calibration time",   "Time at which the calibration began"),
    field("res1",         'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                        "Byte kept for later use"),
    field("flags",        'B',   1, "UBYTE", SDBLK_INT,    "Calibration flags",               "Bits on the calibration: 2 automatic, 3 continued from the record before, 4 random amplitudes"),
    field("cal_duration", 'B',   4, "ULONG", SDBLK_INT,    "Step duration",                   "Length of the calibration in units of 0.0001 second"),  // sic
    field("amp",          'B',   4, "FLOAT", SDBLK_DOUBLE, "Peak-to-peak amplitude of steps", "Amplitude of the steps from peak to peak, in the units of calibration input of the channel"),
    field("chan",         'A',   3, "[UN]",  SDBLK_STRING, "Channel with calibration input",  "Code of the channel that records the calibration input, blank when none does"),
    field("res2",         'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                        "Byte kept for later use"),
    field("ramp",         'B',   4, "ULONG", SDBLK_INT,    "Reference amplitude",             "Amplitude that the calibration is measured against"),
    field("coupling",     'A',  12, "",      SDBLK_STRING, "Coupling",                        "How the calibration signal is coupled in, such as Resistive or Capacitive"),
    field("rolloff",      'A',  12, "",      SDBLK_STRING, "Rolloff",                         "Rolloff of the filters in the calibrator, such as 3dB@10Hz"),
    field("ntype",        'A',   8, "",      SDBLK_STRING, "Noise type",                      "Kind of the noise, such as White or Red"),
};

inline constexpr SDBlkFieldDef B0390_blkdef[] = {
    field("time",         'B',  10, "BTIME", SDBLK_DOUBLE, "Beginning of calibration time",  "Time at which the calibration began"),
    field("res1",         'B',   1, "UBYTE", SDBLK_INT,    "Reserved",                       "Byte kept for later use"),
    field("flags",        'B',   1, "UBYTE", SDBLK_INT,    "Calibration flags",              "Bits on the calibration: 2 automatic, 3 continued from the record before"),
    field("cal_duration", 'B',   4, "ULONG", SDBLK_INT,    "Step duration",                  "Length of the calibration in units of 0.0001 second"),  // sic
    field("amp",          'B',   4, "FLOAT", SDBLK_DOUBLE, "Calibration signal amplitude",   "Amplitude of the calibration signal, in the units of calibration input of the channel"),
    field("chan",         'A',   3, "[UN]",  SDBLK_STRING, "Channel with calibration input", "Code of the channel that records the calibration input, blank when none does"),
};

inline constexpr SDBlkFieldDef B0395_blkdef[] = {
    field("endtime", 'B',  10, "BTIME", SDBLK_DOUBLE, "End of calibration time", "Time at which the calibration ended or was broken off"),
};

inline constexpr SDBlkFieldDef B0400_blkdef[] = {
    field("azimuth",  'B',   4, "FLOAT", SDBLK_DOUBLE, "Beam azimuth (degrees)",     "Direction of the beam in degrees clockwise from north"),
    field("slowness", 'B',   4, "FLOAT", SDBLK_DOUBLE, "Beam slowness (sec/degree)", "Slowness of the beam in seconds per degree"),
    field("config",   'B',   2, "UWORD", SDBLK_INT,    "Beam configuration",         "Configuration of the beam, by its code in blockette [35]"),
};

inline constexpr SDBlkFieldDef B0405_blkdef[] = {
    field("delay", 'B',   2, "UWORD", SDBLK_INT, "Array of delay values", "Delay given to a component of the beam, in units of 0.0001 second"),  // sic: one value, no array
};

inline constexpr SDBlkFieldDef B0500_blkdef[] = {
    field("vco",    'B',   4, "FLOAT", SDBLK_DOUBLE, "VCO correction",    "VCO correction is a floating point percentage from 0.0% (slowwest) to 100.0% (fastest) of VCO control value"),  // sic
    field("time",   'B',  10, "BTIME", SDBLK_DOUBLE, "Time of exception", "Time of the exception, of the kind that the exception type names"),
    field("usec",   'B',   1, "UBYTE", SDBLK_INT,    "Microseconds",      "Microseconds of that time beyond its last digit of 0.0001 second"),
    field("qual",   'B',   1, "UBYTE", SDBLK_INT,    "Reception quality", "How well the time signal is received, in percent"),
    field("count",  'B',   4, "ULONG", SDBLK_INT,    "Exception count",   "Number that the exception type gives a meaning to, such as seconds without reception"),
    field("type",   'A',  16, "",      SDBLK_STRING, "Exception type",    "Kind of the exception, such as Missing or Unexpected time mark"),
    field("model",  'A',  32, "",      SDBLK_STRING, "Clock model",       "Make and model of the clock"),
    field("status", 'A', 128, "",      SDBLK_STRING, "Clock status",      "What the clock says of itself, in words of its own"),
};

inline constexpr SDBlkFieldDef B1000_blkdef[] = {
    field("format", 'B',   1, "UBYTE", SDBLK_INT, "Encoding format",    "Code of the encoding of the samples"),
    field("order",  'B',   1, "UBYTE", SDBLK_INT, "Word order",         "Order of the bytes of binary numbers: 0 low byte first, 1 high byte first"),
    field("dlenp",  'B',   1, "UBYTE", SDBLK_INT, "Data record length", "Length of the data record in bytes, as a power of two"),
};

inline constexpr SDBlkFieldDef B1001_blkdef[] = {
    field("qual",   'B',   1, "UBYTE", SDBLK_INT, "Timing quality", "How far the clock can be trusted, in percent"),
    field("usec",   'B',   1, "UBYTE", SDBLK_INT, "Microseconds",   "Microseconds of the start time beyond its last digit of 0.0001 second"),
    field("res1",   'B',   1, "UBYTE", SDBLK_INT, "Reserved",       "Byte kept for later use"),
    field("fcount", 'B',   1, "UBYTE", SDBLK_INT, "Frame count",    "Number of 64-byte frames of compressed samples in the record"),
};

inline constexpr SDBlkFieldDef B2000_blkdef[] = {
    field("length",     'B',   2, "UWORD", SDBLK_INT,                      "Total blockette length in bytes", "Length of the whole blockette in bytes, header strings and opaque data included"),
    field("offset",     'B',   2, "UWORD", SDBLK_INT,                      "Offset to Opaque Data",           "Offset of the opaque data from the start of the blockette in bytes"),
    field("record",     'B',   4, "ULONG", SDBLK_INT,                      "Record number",                   "Number that ties together the pieces of opaque data that go over several records"),
    field("order",      'B',   1, "UBYTE", SDBLK_INT,                      "Data word order",                 "Order of the bytes of the opaque data: 0 low byte first, 1 high byte first"),
    field("flags",      'B',   1, "UBYTE", SDBLK_INT,                      "Opaque data flags",               "Bits on the opaque data: 0 orientation by record or stream, 1 packaging, 2 to 3 piece of a larger whole, 4 to 5 file fragment"),
    field("nheaders",   'B',   1, "UBYTE", SDBLK_INT,                      "Number of Opaque Header fields",  "Number of header strings that follow"),
    repeated("headers", 'V',   0, "",      SDBLK_STRING_ARRAY, "nheaders", "Opaque Data Header strings",      "The header strings, which name the record type, vendor, model and software of the opaque data"),
};

// clang-format on

}  // namespace tarvik::blkdefs

#endif  // SEED_BLKDEFS_DATA_H_
