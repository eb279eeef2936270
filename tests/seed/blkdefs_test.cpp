// The catalogue: its rows against a table made apart, its links, and its index.
#include "seed/blkdefs/blkdefs.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "seed/blkdefs/checks.h"
#include "seed/sdblk.h"
#include "tests/tools/catalogue_table.h"

using namespace tarvik;

namespace {

using blkdefs::Fields;
using blkdefs::fields_of;
using blkdefs::group_of;

const SDBlkDef *find_def(std::int32_t type) {
  for (const SDBlkDef &def : seed_blkdefs) {
    if (def.type == type) return &def;
  }
  return nullptr;
}

Fields fields_of(std::int32_t type) {
  const SDBlkDef *def = find_def(type);
  return def == nullptr ? Fields() : fields_of(*def);
}

// The field called key, or a field without a key.
SDBlkFieldDef find_field(Fields fields, std::string_view key) {
  for (const SDBlkFieldDef &field : fields) {
    if (key == field.key) return field;
  }
  return {};
}

SDBlkFieldDef find_field(std::int32_t type, std::string_view key) {
  return find_field(fields_of(type), key);
}

// A text of the catalogue, "(none)" for NULL.
std::string shown(const char *text) { return text == nullptr ? "(none)" : text; }

// Runs visit(fields, type) on the fields of each blockette and of each group in it.
template <typename Visit>
void visit_arrays(Visit visit) {
  for (const SDBlkDef &def : seed_blkdefs) {
    visit(fields_of(def), def.type);
    for (const SDBlkFieldDef &field : fields_of(def)) {
      if (field.sub != nullptr) visit(group_of(field), def.type);
    }
  }
}

template <typename Visit>
void visit_fields(Visit visit) {
  visit_arrays([visit](Fields fields, std::int32_t type) {
    for (const SDBlkFieldDef &field : fields) visit(field, type);
  });
}

std::int32_t width_sum(Fields fields) {
  std::int32_t sum = 0;
  for (const SDBlkFieldDef &field : fields) sum += field.width;
  return sum;
}

std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

std::string contents_of(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(Catalogue, EveryLineEqualsTheTableMadeApart) {
  const std::vector<std::string> expected =
      lines_of(contents_of(TARVIK_TEST_DATA_DIR "/seed/catalogue.tsv"));
  const std::vector<std::string> actual = lines_of(catalogue::table());
  // Three headings, 52 blockettes, 12 groups, 399 fields.
  ASSERT_EQ(expected.size(), 466U);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(actual[i], expected[i]);
}

TEST(Catalogue, EveryFieldsDescriptionEqualsTheOneKept) {
  const std::vector<std::string> expected =
      lines_of(contents_of(TARVIK_TEST_DATA_DIR "/seed/descriptions.tsv"));
  std::vector<std::string> actual;
  const auto add = [&](const std::string &array, Fields fields) {
    for (const SDBlkFieldDef &field : fields) {
      actual.push_back(array + "\t" + field.key + "\t" + field.description);
    }
  };
  for (const SDBlkDef &def : seed_blkdefs) add(catalogue::array_name(def), fields_of(def));
  for (const catalogue::NamedGroup &group : catalogue::named_groups) {
    add(group.name, group_of(catalogue::field_with(group)));
  }
  ASSERT_EQ(expected.size(), 399U);
  EXPECT_EQ(actual, expected);
}

// Other programs look for these as they stand, slips and all.
TEST(Catalogue, DescriptionsWithSlipsStay) {
  const std::tuple<std::int32_t, const char *, const char *> expected[] = {
      {11, "nstas",
       "The number of stations that will be represented later by Station identifier Blocklettes "
       "[50]"},
      {11, "stas",
       "The stations that will be represented later by Station identifier Blocklettes [50]"},
      {32, "date", "Date published and catalog information for this citation from the publicaiton"},
      {47, "decoff", "This filed determines which sample is chosen for use (first sample = 0)"},
      {57, "decoff", "This filed determines which sample is chosen for use (first sample = 0)"},
      {74, "sseq",
       "The sub-sequence number used when the data record size is lass than the logical record "
       "size"},
      {100, "flags", "Flags (to bo defined)"},
      {500, "vco",
       "VCO correction is a floating point percentage from 0.0% (slowwest) to 100.0% (fastest) of "
       "VCO control value"},
  };
  for (const auto &[type, key, description] : expected) {
    EXPECT_STREQ(find_field(type, key).description, description);
  }
  EXPECT_STREQ(find_field(group_of(find_field(73, "segs")), "sseq").description,
               find_field(74, "sseq").description);
  EXPECT_STREQ(find_field(group_of(find_field(46, "corners")), "slope").description,
               "The slope of the line after the corner measured in db/decade");
}

TEST(Catalogue, TypesAreThose) {
  const std::vector<std::int32_t> expected = {
      5,  8,  10,  11,  12,  30,  31,  32,  33,  34,  35,  41,  42,  43,   44,   45,  46, 47,
      48, 50, 51,  52,  53,  54,  55,  56,  57,  58,  59,  60,  61,  62,   70,   71,  72, 73,
      74, 99, 100, 200, 201, 300, 310, 320, 390, 395, 400, 405, 500, 1000, 1001, 2000};
  std::vector<std::int32_t> types;
  for (const SDBlkDef &def : seed_blkdefs) types.push_back(def.type);
  EXPECT_EQ(types, expected);
}

TEST(Catalogue, DataBlockettesFrom200OnHaveEmptyDescriptions) {
  for (const SDBlkDef &def : seed_blkdefs) {
    EXPECT_EQ(std::string_view(def.description).empty(), def.type >= 200) << def.id;
  }
}

TEST(Catalogue, RecordTypesFollowTheBlocketteNumber) {
  for (const SDBlkDef &def : seed_blkdefs) {
    const char *expected = def.type < 30   ? "V"
                           : def.type < 50 ? "A"
                           : def.type < 70 ? "S"
                           : def.type < 99 ? "T"
                                           : "DRQM";
    EXPECT_STREQ(def.rectypes, expected) << def.id;
  }
}

TEST(Catalogue, Blockette12CarriesTheNameOfBlockette11) {
  ASSERT_NE(find_def(11), nullptr);
  ASSERT_NE(find_def(12), nullptr);
  EXPECT_STREQ(find_def(11)->name, "Volume Station Header Index Blockette");
  EXPECT_STREQ(find_def(12)->name, "Volume Station Header Index Blockette");
}

struct FixedDescription {
  std::int32_t type;
  const char *group;  // key of the group that the field stands in, or NULL
  const char *key;
  const char *description;
};

TEST(Catalogue, DescriptionsKeptWithTheirSlipsStandExactly) {
  const char *const sample =
      "This filed determines which sample is chosen for use (first sample = 0)";
  const char *const sub_sequence =
      "The sub-sequence number used when the data record size is lass than the logical record size";
  const FixedDescription expected[] = {
      {11, nullptr, "nstas",
       "The number of stations that will be represented later by Station identifier Blocklettes "
       "[50]"},
      {11, nullptr, "stas",
       "The stations that will be represented later by Station identifier Blocklettes [50]"},
      {32, nullptr, "date",
       "Date published and catalog information for this citation from the publicaiton"},
      {47, nullptr, "decoff", sample},
      {57, nullptr, "decoff", sample},
      {74, nullptr, "sseq", sub_sequence},
      {73, "segs", "sseq", sub_sequence},
      {100, nullptr, "flags", "Flags (to bo defined)"},
      {500, nullptr, "vco",
       "VCO correction is a floating point percentage from 0.0% (slowwest) to 100.0% (fastest) of "
       "VCO control value"},
      {46, "corners", "slope", "The slope of the line after the corner measured in db/decade"},
      {56, "corners", "slope", "The slope of the line after the corner measured in db/decade"},
  };
  for (const FixedDescription &row : expected) {
    Fields fields = fields_of(row.type);
    if (row.group != nullptr) fields = group_of(find_field(fields, row.group));
    EXPECT_EQ(shown(find_field(fields, row.key).description), row.description) << row.type;
  }
}

TEST(Catalogue, EveryFieldHasTitleAndOneSentence) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    const std::string_view description = field.description;
    EXPECT_FALSE(std::string_view(field.title).empty()) << type << ' ' << field.key;
    EXPECT_GE(description.size(), 10U) << type << ' ' << field.key;
    EXPECT_EQ(description.find(". "), std::string_view::npos) << type << ' ' << field.key;
  });
}

TEST(Catalogue, KeysAreLowerCaseWords) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    const std::string_view key = field.key;
    EXPECT_EQ(key.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"),
              std::string_view::npos)
        << type << ' ' << key;
  });
}

// ---- Widths ----

TEST(Catalogue, DataHeaderFieldsTake40Bytes) {
  // 5+2+3+2 codes, 10 time, 2+2+2 samples, 1+1+1 flags, 1 count, 4 correction, 2+2 offsets: with
  // the 8 bytes before it the fixed section of 48.
  EXPECT_EQ(width_sum(fields_of(99)), 40);
}

struct ExpectedWidth {
  std::int32_t type;
  std::int32_t bytes;
};

TEST(Catalogue, FixedDataBlockettesTakeTheirBytes) {
  // Without the four bytes of type and next offset, which come first.
  const ExpectedWidth expected[] = {
      {100, 5},               // 4+1
      {200, 48},              // 4+4+4 +1+1 +10 +24
      {201, 56},              // 4+4+4 +1+1 +10 +6 +1+1 +24
      {300, 56},              // 10 +1+1 +4+4+4 +3+1 +4 +12+12
      {310, 56},              // 10 +1+1 +4+4+4 +3+1 +4 +12+12
      {320, 60},              // 10 +1+1 +4+4 +3+1 +4 +12+12 +8
      {390, 23},              // 10 +1+1 +4+4 +3
      {395, 10},  {400, 10},  // 4+4+2
      {405, 2},               // a single delay
      {500, 196},             // 4+10 +1+1 +4 +16+32+128
      {1000, 3},              // 1+1+1
      {1001, 4},              // 1+1+1+1
      {2000, 11},             // 2+2+4 +1+1+1; the header strings have no width
  };
  for (const ExpectedWidth &row : expected) {
    EXPECT_EQ(width_sum(fields_of(row.type)), row.bytes) << row.type;
  }
}

TEST(Catalogue, FixedControlBlockettesTakeTheirCharacters) {
  // Without the seven characters of type and length, which come first, and without the groups.
  const ExpectedWidth expected[] = {
      {11, 3},   // the count
      {12, 4},   // the count
      {35, 7},   // 3+4
      {53, 39},  // 1+2 +3+3 +12+12 +3+3
      {54, 17},  // 1+2 +3+3 +4+4
      {55, 12},  // 2 +3+3 +4
      {56, 12},  // 2 +3+3 +4
      {57, 44},  // 2+10 +5+5 +11+11
      {58, 28},  // 2 +12+12 +2
      {60, 2},   // the count
      {62, 74},  // 1+2 +3+3 +1+1 +12+12+12+12+12 +3
      {73, 4},   // the count
  };
  for (const ExpectedWidth &row : expected) {
    EXPECT_EQ(width_sum(fields_of(row.type)), row.bytes) << row.type;
  }
}

struct GroupUse {
  std::int32_t type;
  const char *key;
  const char *number_entry;
  std::int32_t fields;
  std::int32_t width;  // one repetition, variable fields at their longest
};

constexpr GroupUse group_uses[] = {
    {11, "stas", "nstas", 2, 11},       // 5+6
    {12, "spans", "nspans", 3, 50},     // 22+22+6
    {35, "comps", "ncomps", 5, 19},     // 5+2+3+4+5
    {42, "coefs", "ncoefs", 2, 24},     // 12+12
    {43, "zeros", "nzeros", 4, 48},     // 4 times 12
    {43, "poles", "npoles", 4, 48},     //
    {44, "nums", "nnums", 2, 24},       //
    {44, "dens", "ndens", 2, 24},       //
    {45, "faps", "nfaps", 5, 60},       // 5 times 12
    {46, "corners", "nfaps", 2, 24},    // 12+12
    {48, "histories", "ndens", 3, 46},  // 12+12+22
    {53, "zeros", "nzeros", 4, 48},     //
    {53, "poles", "npoles", 4, 48},     //
    {54, "nums", "nnums", 2, 24},       //
    {54, "dens", "ndens", 2, 24},       //
    {55, "faps", "nfaps", 5, 60},       //
    {56, "corners", "nfaps", 2, 24},    //
    {58, "histories", "ndens", 3, 46},  //
    {60, "stages", "nstages", 3, 8},    // 2+2+4
    {62, "coefs", "ncoefs", 2, 24},     //
    {71, "mags", "nmags", 3, 17},       // 5+10+2
    {73, "segs", "ndata", 6, 40},       // 5+2+3+22+6+2
    {74, "accels", "naccels", 3, 30},   // 22+6+2
};

TEST(Groups, LinkToTheirCountAndFields) {
  for (const GroupUse &use : group_uses) {
    const SDBlkFieldDef field = find_field(use.type, use.key);
    EXPECT_EQ(field.kind, SDBLK_GROUP_ARRAY) << use.type << ' ' << use.key;
    EXPECT_EQ(shown(field.number_entry), use.number_entry) << use.type << ' ' << use.key;
    EXPECT_EQ(field.nsub, use.fields) << use.type << ' ' << use.key;
    EXPECT_EQ(width_sum(group_of(field)), use.width) << use.type << ' ' << use.key;
  }
}

TEST(Groups, NoOthersExist) {
  std::size_t groups = 0;
  visit_fields([&groups](const SDBlkFieldDef &field, std::int32_t) {
    if (field.sub != nullptr || field.nsub != 0 || field.kind == SDBLK_GROUP_ARRAY) ++groups;
  });
  EXPECT_EQ(groups, std::size(group_uses));
}

TEST(Groups, TwelveArraysAreShared) {
  std::set<const SDBlkFieldDef *> arrays;
  visit_fields([&arrays](const SDBlkFieldDef &field, std::int32_t) {
    if (field.sub != nullptr) arrays.insert(field.sub);
  });
  EXPECT_EQ(arrays.size(), 12U);
  EXPECT_EQ(find_field(42, "coefs").sub, find_field(54, "dens").sub);
  EXPECT_EQ(find_field(43, "zeros").sub, find_field(53, "poles").sub);
}

TEST(Groups, AreCutByNothingThemselves) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    const bool group = field.kind == SDBLK_GROUP_ARRAY;
    EXPECT_EQ(field.stype == 0, group) << type << ' ' << field.key;
    EXPECT_EQ(field.sub != nullptr, group) << type << ' ' << field.key;
    if (group) {
      EXPECT_EQ(field.width, 0) << type << ' ' << field.key;
      EXPECT_STREQ(field.format, "") << type << ' ' << field.key;
    }
  });
}

TEST(Groups, FiveNameACountThatTheirBlocketteLacks) {
  std::set<std::string> miscounted;
  visit_arrays([&miscounted](Fields fields, std::int32_t type) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].number_entry == nullptr) continue;
      const SDBlkFieldDef count = find_field(fields.first(i), fields[i].number_entry);
      if (count.kind != SDBLK_INT) {
        miscounted.insert(std::to_string(type) + ' ' + fields[i].key);
        EXPECT_EQ(find_field(fields, fields[i].number_entry).key, nullptr);
      }
    }
  });
  const std::set<std::string> expected = {"46 corners", "48 histories", "56 corners",
                                          "58 histories", "73 segs"};
  EXPECT_EQ(miscounted, expected);
}

TEST(Groups, CountsOfTheMiscountedStandUnderAnotherKey) {
  EXPECT_EQ(find_field(46, "ncorners").kind, SDBLK_INT);
  EXPECT_EQ(find_field(48, "nhistories").kind, SDBLK_INT);
  EXPECT_EQ(find_field(56, "ncorners").kind, SDBLK_INT);
  EXPECT_EQ(find_field(58, "nhistories").kind, SDBLK_INT);
  EXPECT_EQ(find_field(73, "nsegs").kind, SDBLK_INT);
}

// ---- Other repetitions and references ----

TEST(Repetitions, CoefficientsOfFirBlockettesAreSingleFields) {
  for (const std::int32_t type : {41, 61}) {
    const SDBlkFieldDef coefs = find_field(type, "coefs");
    EXPECT_EQ(coefs.kind, SDBLK_DOUBLE_ARRAY) << type;
    EXPECT_EQ(coefs.stype, 'F') << type;
    EXPECT_EQ(coefs.width, 14) << type;
    EXPECT_EQ(shown(coefs.number_entry), "ncoefs") << type;
  }
}

TEST(Repetitions, StringsHaveNoWidth) {
  const SDBlkFieldDef keys = find_field(30, "keys");
  const SDBlkFieldDef headers = find_field(2000, "headers");
  EXPECT_EQ(shown(keys.number_entry), "nkeys");
  EXPECT_EQ(shown(headers.number_entry), "nheaders");
  for (const SDBlkFieldDef &field : {keys, headers}) {
    EXPECT_EQ(field.kind, SDBLK_STRING_ARRAY);
    EXPECT_EQ(field.stype, 'V');
    EXPECT_EQ(field.width, 0);
  }
}

TEST(Repetitions, NoFieldIsAnIntegerArray) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    EXPECT_NE(field.kind, SDBLK_INT_ARRAY) << type << ' ' << field.key;
    EXPECT_LE(field.kind, SDBLK_INT) << type << ' ' << field.key;
    EXPECT_GE(field.kind, SDBLK_REF_ARRAY) << type << ' ' << field.key;
  });
}

TEST(Repetitions, DelayOfBlockette405IsOneNumber) {
  const SDBlkFieldDef delay = find_field(405, "delay");
  EXPECT_EQ(delay.kind, SDBLK_INT);
  EXPECT_EQ(delay.number_entry, nullptr);
}

using Link = std::tuple<std::int32_t, std::string, std::string>;  // type, key, abbreviation key

TEST(Abbreviations, DefinersAreThose) {
  std::set<std::pair<std::int32_t, std::string>> definers;
  visit_fields([&definers](const SDBlkFieldDef &field, std::int32_t type) {
    if (field.kind == SDBLK_ABBR_KEY) definers.emplace(type, field.key);
  });
  const std::set<std::pair<std::int32_t, std::string>> expected = {
      {30, "did"}, {31, "cid"}, {32, "sid"}, {33, "gid"}, {34, "uid"}, {35, "bid"}, {41, "rid"},
      {42, "rid"}, {43, "rid"}, {44, "rid"}, {45, "rid"}, {46, "rid"}, {47, "rid"}, {48, "rid"}};
  EXPECT_EQ(definers, expected);
}

TEST(Abbreviations, ReferencesAreThose) {
  std::set<Link> links;
  visit_fields([&links](const SDBlkFieldDef &field, std::int32_t type) {
    if (field.abbr_key != nullptr) links.emplace(type, field.key, field.abbr_key);
  });
  std::set<Link> expected = {
      {31, "uid", "uid"},      {50, "net_gid", "gid"},    {51, "cid", "cid"},
      {52, "inst_gid", "gid"}, {52, "sunits", "uid"},     {52, "cunits", "uid"},
      {52, "df_did", "did"},   {59, "cid", "cid"},        {60, "resps", "rid"},
      {71, "hypo_sid", "sid"}, {71, "source_sid", "sid"}, {72, "source_sid", "sid"}};
  for (const std::int32_t type : {41, 42, 43, 44, 45, 46, 53, 54, 55, 56, 61, 62}) {
    expected.emplace(type, "iunits", "uid");
    expected.emplace(type, "ounits", "uid");
  }
  EXPECT_EQ(links, expected);
}

TEST(Abbreviations, ReferencesAreIntegersOrReferenceArrays) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    if (field.kind == SDBLK_REF_ARRAY) {
      EXPECT_EQ(type, 60);
      EXPECT_STREQ(field.key, "resps");
      EXPECT_EQ(shown(field.number_entry), "nresps");
    } else if (field.abbr_key != nullptr) {
      EXPECT_EQ(field.kind, SDBLK_INT) << type << ' ' << field.key;
    }
  });
}

// ---- Single fields that others rely on, or that are odd on purpose ----

TEST(Fields, VersionIsANumberKeptAsText) {
  for (const std::int32_t type : {5, 8, 10}) {
    const SDBlkFieldDef version = find_field(type, "version");
    EXPECT_EQ(version.stype, 'D') << type;
    EXPECT_EQ(version.width, 4) << type;
    EXPECT_STREQ(version.format, "##.#") << type;
    EXPECT_EQ(version.kind, SDBLK_STRING) << type;
  }
}

TEST(Fields, CoordinatesAreDecimalTextDecodedToReals) {
  const std::pair<std::int32_t, const char *> coordinates[] = {
      {50, "lat"},   {50, "lon"},     {50, "elev"}, {52, "lat"}, {52, "lon"}, {52, "elev"},
      {52, "depth"}, {52, "azimuth"}, {52, "dip"},  {71, "lat"}, {71, "lon"}, {71, "depth"}};
  for (const auto &[type, key] : coordinates) {
    const SDBlkFieldDef field = find_field(type, key);
    EXPECT_EQ(field.stype, 'D') << type << ' ' << key;
    EXPECT_EQ(field.kind, SDBLK_DOUBLE) << type << ' ' << key;
  }
}

TEST(Fields, LengthExponentsResolve) {
  for (const std::int32_t type : {5, 8, 10}) {
    EXPECT_EQ(find_field(type, "llenp").kind, SDBLK_INT) << type;
  }
  EXPECT_EQ(find_field(1000, "dlenp").kind, SDBLK_INT);
}

TEST(Fields, OffsetsOfTheDataHeaderResolve) {
  EXPECT_EQ(find_field(99, "blk_offset").kind, SDBLK_INT);
  EXPECT_EQ(find_field(99, "data_offset").kind, SDBLK_INT);
}

TEST(Fields, StationCodeOfBlockette11AloneHasNoPicture) {
  visit_arrays([](Fields fields, std::int32_t type) {
    const SDBlkFieldDef sta = find_field(fields, "sta");
    if (sta.key == nullptr) return;
    EXPECT_STREQ(sta.format, type == 11 ? "" : "[UN]") << type;
  });
}

TEST(Fields, BinaryFieldsStandInDataBlockettesOnly) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    if (field.stype != 'B') return;
    EXPECT_GE(type, 99) << field.key;
  });
}

TEST(Fields, FormatIsNeverNull) {
  visit_fields([](const SDBlkFieldDef &field, std::int32_t type) {
    EXPECT_NE(field.format, nullptr) << type << ' ' << field.key;
  });
}

// ---- Index ----

std::vector<const SDBlkDef *> index_copy() {
  return {std::begin(seed_blkdefs_index), std::end(seed_blkdefs_index)};
}

TEST(BlkdefsInit, FillsEachSlotWithTheDefinitionOfItsType) {
  EXPECT_EQ(sdblk_blkdefs_init(), 0);
  EXPECT_EQ(seed_blkdefs_first, 0);
  for (std::int32_t type = 0; type < SEED_BLKDEFS_INDEX_SIZE; ++type) {
    EXPECT_EQ(seed_blkdefs_index[type], find_def(type)) << type;
  }
}

TEST(BlkdefsInit, Slot99HoldsTheDataHeader) {
  sdblk_blkdefs_init();
  ASSERT_NE(seed_blkdefs_index[99], nullptr);
  EXPECT_STREQ(seed_blkdefs_index[99]->id, "DATA");
  EXPECT_EQ(seed_blkdefs_index[99]->nfields, 15);
}

TEST(BlkdefsInit, TypesWithoutDefinitionHaveEmptySlots) {
  sdblk_blkdefs_init();
  for (const std::size_t type : {0U, 1U, 49U, 1002U, 2047U}) {
    EXPECT_EQ(seed_blkdefs_index[type], nullptr) << type;
  }
}

// The slot is put out of order, so that a second filling would show.
TEST(BlkdefsInit, SecondCallLeavesTheIndexUntouched) {
  sdblk_blkdefs_init();
  const SDBlkDef *const mark = seed_blkdefs_index[5];
  ASSERT_NE(mark, nullptr);
  seed_blkdefs_index[1] = mark;
  const std::vector<const SDBlkDef *> before = index_copy();
  EXPECT_EQ(sdblk_blkdefs_init(), 0);
  EXPECT_EQ(index_copy(), before);
  EXPECT_EQ(seed_blkdefs_first, 0);
  seed_blkdefs_index[1] = nullptr;
}

TEST(FillIndex, EmptiesSlotsOfOtherTypes) {
  static const SDBlkDef *slots[SEED_BLKDEFS_INDEX_SIZE];
  slots[7] = find_def(5);
  const SDBlkDef defs[] = {*find_def(5)};
  blkdefs::fill_index(defs, slots);
  EXPECT_EQ(slots[7], nullptr);
  EXPECT_EQ(slots[5], &defs[0]);
}

TEST(FillIndex, LaterDefinitionOfATypeReplacesTheEarlier) {
  static const SDBlkDef *slots[SEED_BLKDEFS_INDEX_SIZE];
  const SDBlkDef defs[] = {*find_def(5), *find_def(5)};
  blkdefs::fill_index(defs, slots);
  EXPECT_EQ(slots[5], &defs[1]);
}

void fill_with_type(std::int32_t type) {
  static const SDBlkDef *slots[SEED_BLKDEFS_INDEX_SIZE];
  SDBlkDef def = *find_def(5);
  def.type = type;
  blkdefs::fill_index({&def, 1}, slots);
}

TEST(FillIndexDeathTest, TypeAfterTheLastSlotEndsTheProgram) {
  EXPECT_EXIT(fill_with_type(2048), testing::ExitedWithCode(1),
              "^sdblk_blkdefs_init: blockette type 2048 out of range\\.\n$");
}

TEST(FillIndexDeathTest, NegativeTypeEndsTheProgram) {
  EXPECT_EXIT(fill_with_type(-1), testing::ExitedWithCode(1),
              "^sdblk_blkdefs_init: blockette type -0001 out of range\\.\n$");
}

}  // namespace
