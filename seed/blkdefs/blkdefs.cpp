// The catalogue: all blockettes that the library can decode, and their index by type.
#include "seed/blkdefs/blkdefs.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "seed/blkdefs/checks.h"
#include "seed/blkdefs/data.h"
#include "seed/blkdefs/dictionary.h"
#include "seed/blkdefs/rows.h"
#include "seed/blkdefs/station.h"
#include "seed/blkdefs/timespan.h"
#include "seed/blkdefs/volume.h"
#include "seed/facts.h"
#include "seed/sdblk.h"
#include "support/elog.h"

// The table belongs to the C interface, so it cannot stand in the namespace of its rows.
using namespace tarvik;
using namespace tarvik::blkdefs;

// clang-format off

// type, id, name, record types, fields, description
constexpr SDBlkDef seed_blkdefs[SEED_BLKDEFS_COUNT] = {
    blockette(   5, "B0005", "Field Volume Identifier Blockette",             "V",    B0005_blkdef, "Field stations use the Field Volume Identifier Blockette [5], and usually produce only one volume."),
    blockette(   8, "B0008", "Telemetry Volume Identifier Blockette",         "V",    B0008_blkdef, "Field stations or networks can use the Telemetry Volume Identifier Blockette [8] when electronically transmitting SEED data."),
    blockette(  10, "B0010", "Volume Identifier Blockette",                   "V",    B0010_blkdef, "This is the normal header blockette for station or event oriented network volumes."),
    blockette(  11, "B0011", "Volume Station Header Index Blockette",         "V",    B0011_blkdef, "This is the index to the Station Identifier Blockettes [50] that appear later in the volume."),
    blockette(  12, "B0012", "Volume Station Header Index Blockette",         "V",    B0012_blkdef, "This blockette forms an index to the time spans that encompass the actual data."),  // sic: the name of blockette 11
    blockette(  30, "B0030", "Data Format Dictionary Blockette",              "A",    B0030_blkdef, "This blockette defines how to decode data for the channels."),
    blockette(  31, "B0031", "Comment Description Blockette",                 "A",    B0031_blkdef, "This blockette defines descriptive comment abbreviations"),
    blockette(  32, "B0032", "Cited Source Dictionary Blockette",             "A",    B0032_blkdef, "This blockette identifies the contributing institution that provides the hypocenter and magnitude information."),
    blockette(  33, "B0033", "Generic Abbreviation Blockette",                "A",    B0033_blkdef, "This blockette defines generic abbreviations"),
    blockette(  34, "B0034", "Units Abbreviation Blockette",                  "A",    B0034_blkdef, "This blockette defines the units of measurement in a standard(?) and repeatable way."),  // sic
    blockette(  35, "B0035", "Beam Configuration Blockette",                  "A",    B0035_blkdef, "This blockette defines the configuration of an instrument array for the synthetic output of a beam forming algorithm."),
    blockette(  41, "B0041", "FIR Dictionary Blockette",                      "A",    B0041_blkdef, "The FIR blockette is used to specify FIR digital filter coefficients."),
    blockette(  42, "B0042", "Response (Polynomial) Dictionary Blockette",    "A",    B0042_blkdef, "This blockette is used to specify non-linear polynomial digital filter coefficients."),
    blockette(  43, "B0043", "Response (Poles & Zeros) Dictionary Blockette", "A",    B0043_blkdef, "This blockette is used to specify filter poles and zeros."),
    blockette(  44, "B0044", "Response (Coefficients) Dictionary Blockette",  "A",    B0044_blkdef, "This blockette is used to specify Laplace, Analog(?), Composite(?) and Z-transform filter coefficients."),  // sic
    blockette(  45, "B0045", "Response List Dictionary Blockette",            "A",    B0045_blkdef, "This blockette is used to specify FAP responses."),
    blockette(  46, "B0046", "Generic Response Dictionary Blockette",         "A",    B0046_blkdef, "This blockette is used to specify responses as a set of corner frequencies(?)."),  // sic
    blockette(  47, "B0047", "Decimation Dictionary Blockette",               "A",    B0047_blkdef, "This blockette is used to specify filter decimation parameters usually following a FIR filter."),
    blockette(  48, "B0048", "Channel Sensitivity/Gain Dictionary Blockette", "A",    B0048_blkdef, "This blockette is used to specify single stage or channel composite sensitivity/gain values."),
    blockette(  50, "B0050", "Station Identifier Blockette",                  "S",    B0050_blkdef, "This blockette is used to identify a single station."),
    blockette(  51, "B0051", "Station Comment Blockette",                     "S",    B0051_blkdef, "This blockette is used to identify station comment."),
    blockette(  52, "B0052", "Channel Identifier Blockette",                  "S",    B0052_blkdef, "This blockette is used to identify a single channel."),
    blockette(  53, "B0053", "Response (Poles & Zeros) Blockette",            "S",    B0053_blkdef, "Use this blockette fpr the analog stages of filter systems and for IIR digital filters."),  // sic
    blockette(  54, "B0054", "Response (Coefficients) Blockette",             "S",    B0054_blkdef, "This blockette is usually only used for FIR digital filters."),
    blockette(  55, "B0055", "Response List Blockette",                       "S",    B0055_blkdef, "This blockette specifies a response as FAP values."),
    blockette(  56, "B0056", "Generic Response Blockette",                    "S",    B0056_blkdef, "This blockette is used to specify responses as a set of corner frequencies(?)."),  // sic
    blockette(  57, "B0057", "Decimation Blockette",                          "S",    B0057_blkdef, "This blockette is used to specify filter decimation parameters usually following a FIR filter."),
    blockette(  58, "B0058", "Channel Sensitivity/Gain Blockette",            "S",    B0058_blkdef, "This blockette is used to specify single stage or channel composite sensitivity/gain values."),
    blockette(  59, "B0059", "Channel Comment Blockette",                     "S",    B0059_blkdef, "This blockette is used to identify channel comment."),
    blockette(  60, "B0060", "Response Reference Blockette",                  "S",    B0060_blkdef, "Use this blockette whenever yuo want to replace blockettes [53]-[58],[61],[62] with their corresponding abbreviations."),  // sic
    blockette(  61, "B0061", "FIR Response Blockette",                        "S",    B0061_blkdef, "The FIR blockette is used to specify FIR digital filter coefficients."),
    blockette(  62, "B0062", "Response (Polynomial) Blockette",               "S",    B0062_blkdef, "This blockette is used to specify non-linear polynomial digital filter coefficients."),
    blockette(  70, "B0070", "Time Span Identifier Blockette",                "T",    B0070_blkdef, "Use this blockette to describe when the time series starts and stops."),
    blockette(  71, "B0071", "Hypocenter Information Blockette",              "T",    B0071_blkdef, "Use this blockette to include hypocenter subsidiary information"),
    blockette(  72, "B0072", "Event Phases Blockette",                        "T",    B0072_blkdef, "This blockette lists the phase arrivals at the different stations."),
    blockette(  73, "B0073", "Time Span Data Start Index Blockette",          "T",    B0073_blkdef, "This blockette stores information about the different time series in the time span."),
    blockette(  74, "B0074", "Time Series Index Blockette",                   "T",    B0074_blkdef, "This blockette replaces the Time Span Index Blockette [73]."),
    blockette(  99, "DATA",  "Fixed Section of Data Header",                  "DRQM", BDATA_blkdef, "This blockette represents the first 48-byte fixed header at the beginning of each data logical record."),
    blockette( 100, "B0100", "Sample Rate Blockette",                         "DRQM", B0100_blkdef, "This blockette defines the actual sample rate of the data (as opposed to the nominal sample rate)."),
    blockette( 200, "B0200", "Generic Event Detection Blockette",             "DRQM", B0200_blkdef, ""),
    blockette( 201, "B0201", "Murdock Event Detection Blockette",             "DRQM", B0201_blkdef, ""),
    blockette( 300, "B0300", "Step Calibration Blockette",                    "DRQM", B0300_blkdef, ""),
    blockette( 310, "B0310", "Sine Calibration Blockette",                    "DRQM", B0310_blkdef, ""),
    blockette( 320, "B0320", "Pseudo-random Calibration Blockette",           "DRQM", B0320_blkdef, ""),
    blockette( 390, "B0390", "Generic Calibration Blockette",                 "DRQM", B0390_blkdef, ""),
    blockette( 395, "B0395", "Calibration Abort Blockette",                   "DRQM", B0395_blkdef, ""),
    blockette( 400, "B0400", "Beam Blockette",                                "DRQM", B0400_blkdef, ""),
    blockette( 405, "B0405", "Beam Delay Blockette",                          "DRQM", B0405_blkdef, ""),
    blockette( 500, "B0500", "Timing Blockette",                              "DRQM", B0500_blkdef, ""),
    blockette(1000, "B1000", "Data Only SEED Blockette",                      "DRQM", B1000_blkdef, ""),
    blockette(1001, "B1001", "Data Extension Blockette",                      "DRQM", B1001_blkdef, ""),
    blockette(2000, "B2000", "Variable Length Opaque Data Blockette",         "DRQM", B2000_blkdef, ""),
};

// clang-format on

const SDBlkDef *seed_blkdefs_index[SEED_BLKDEFS_INDEX_SIZE];
int seed_blkdefs_first = 1;

namespace {

static_assert(types_ascend_within_index(seed_blkdefs));
static_assert(ids_match_types(seed_blkdefs));
static_assert(every_array(seed_blkdefs, keys_are_unique));
static_assert(every_array(seed_blkdefs, counts_stand_before));
static_assert(references_are_sane(seed_blkdefs));
static_assert(every_field(seed_blkdefs, width_is_sane));
static_assert(every_field(seed_blkdefs, group_is_sane));
static_assert(every_field(seed_blkdefs, repetition_is_sane));
static_assert(every_field(seed_blkdefs, text_is_there));

// ---- what is worked out from the rows ----

constexpr std::size_t count_with_groups(Fields fields) {
  std::size_t count = fields.size();
  for (const SDBlkFieldDef &field : fields) {
    if (field.nsub > 0) count += count_with_groups(group_of(field));
  }
  return count;
}

constexpr bool is_number(const SDBlkFieldDef &field) {
  return field.stype == 'F' && field.width == kPictureWidth &&
         conversion_of(field.kind, field.format) == Conversion::real;
}

// Puts the facts of fields, and after them those of their groups, from a position on; returns the
// next one.
constexpr std::size_t put_facts(Fields fields, std::span<FieldFacts> facts, std::size_t position) {
  std::size_t next = position + fields.size();
  for (const SDBlkFieldDef &field : fields) {
    facts[position] = facts_of(field);
    if (field.nsub > 0) {
      const Fields group = group_of(field);
      facts[position].inner = static_cast<std::int32_t>(next - position);
      facts[position].is_numbers =
          field.nsub <= kMostNumbers && std::all_of(group.begin(), group.end(), is_number);
      next = put_facts(group, facts, next);
    }
    ++position;
  }
  return next;
}

constexpr std::size_t count_all() {
  std::size_t count = 0;
  for (const SDBlkDef &def : seed_blkdefs) count += count_with_groups(fields_of(def));
  return count;
}

constexpr auto kAllFacts = [] {
  std::array<FieldFacts, count_all()> facts = {};
  std::size_t position = 0;
  for (const SDBlkDef &def : seed_blkdefs) position = put_facts(fields_of(def), facts, position);
  return facts;
}();

// Where those of each definition begin.
using FirstFacts = std::array<const FieldFacts *, SEED_BLKDEFS_COUNT>;
constexpr FirstFacts find_first_facts() {
  FirstFacts first = {};
  std::size_t position = 0;
  for (std::size_t i = 0; i < first.size(); ++i) {
    first[i] = &kAllFacts[position];
    position += count_with_groups(fields_of(seed_blkdefs[i]));
  }
  return first;
}

}  // namespace

constexpr FirstFacts tarvik::catalogue_facts = find_first_facts();

void tarvik::blkdefs::fill_index(std::span<const SDBlkDef> defs,
                                 std::span<const SDBlkDef *, SEED_BLKDEFS_INDEX_SIZE> slots) {
  std::fill(slots.begin(), slots.end(), nullptr);
  for (const SDBlkDef &def : defs) {
    if (def.type < 0 || def.type >= SEED_BLKDEFS_INDEX_SIZE) {
      elog_die(0, "sdblk_blkdefs_init: blockette type %4.4d out of range.\n", def.type);
    }
    slots[static_cast<std::size_t>(def.type)] = &def;
  }
}

int sdblk_blkdefs_init() {
  // By the first thread that comes; others wait for it.
  static const int result = [] {
    fill_index(seed_blkdefs, seed_blkdefs_index);
    return seed_blkdefs_first = 0;
  }();
  return result;
}
