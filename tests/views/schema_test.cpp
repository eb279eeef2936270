// What the schemas are made of.  Whether the lines keep to them is seen by a real validator; see
// check_schema.py.
#include "views/schema.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"

using namespace tarvik;

namespace {

using Json = nlohmann::json;

std::vector<std::string> all_schemas() {
  return {blocks_schema(), volumes_schema(), stations_schema(), segments_schema()};
}

std::set<std::string> keys(const Json &object) {
  std::set<std::string> names;
  for (const auto &member : object.items()) names.insert(member.key());
  return names;
}

std::set<std::string> kinds(const std::string &schema) {
  return Json::parse(schema)["properties"]["kind"]["enum"].get<std::set<std::string>>();
}

void for_each_object(const Json &value, const std::function<void(const Json &)> &visit) {
  if (value.is_object()) visit(value);
  for (const auto &member : value.items()) {
    if (member.value().is_structured()) for_each_object(member.value(), visit);
  }
}

TEST(Schemas, SayTheirDraftAndTitle) {
  for (const std::string &text : all_schemas()) {
    const Json schema = Json::parse(text);
    EXPECT_EQ(schema["$schema"], "https://json-schema.org/draft/2020-12/schema");
    EXPECT_TRUE(schema["title"].get<std::string>().starts_with("sdblk "));
    EXPECT_FALSE(schema["description"].get<std::string>().empty());
    EXPECT_EQ(text.substr(text.size() - 2), "}\n");
  }
}

TEST(Schemas, HaveADefinitionForEveryKindOfLine) {
  EXPECT_EQ(kinds(blocks_schema()), (std::set<std::string>{"volume", "blockette", "record", "skip",
                                                           "note", "end", "error"}));
  EXPECT_EQ(kinds(volumes_schema()), (std::set<std::string>{"volume", "gone", "error"}));
  EXPECT_EQ(kinds(stations_schema()), (std::set<std::string>{"epoch", "error"}));
  EXPECT_EQ(kinds(segments_schema()), (std::set<std::string>{"segment", "error"}));
  for (const std::string &text : all_schemas()) {
    const Json definitions = Json::parse(text)["$defs"];
    for (const std::string &kind : kinds(text)) EXPECT_TRUE(definitions.contains(kind)) << kind;
  }
}

TEST(Schemas, ReferToDefinitionsThatAreThere) {
  for (const std::string &text : all_schemas()) {
    const Json schema = Json::parse(text);
    for_each_object(schema, [&](const Json &object) {
      if (!object.contains("$ref")) return;
      const auto pointer = object["$ref"].get<std::string>().substr(1);
      EXPECT_TRUE(schema.contains(Json::json_pointer(pointer))) << pointer;
    });
  }
}

TEST(Schemas, DescribeEveryKeyOfALine) {
  for (const std::string &text : all_schemas()) {
    const Json definitions = Json::parse(text)["$defs"];
    for (const std::string &kind : kinds(text)) {
      for (const auto &property : definitions[kind]["properties"].items()) {
        if (property.key() == "kind") continue;
        EXPECT_FALSE(property.value().value("description", "").empty()) << property.key();
      }
    }
  }
}

// Fields of the catalogue and what the schema says of them.
void expect_fields(const Json &schema, const SDBlkFieldDef *fields, int count) {
  for (int i = 0; i < count; ++i) {
    const SDBlkFieldDef &field = fields[i];
    ASSERT_TRUE(schema["properties"].contains(field.key)) << field.key;
    const Json &property = schema["properties"][field.key];
    EXPECT_EQ(property["title"], field.title);
    EXPECT_EQ(property["description"], field.description);
    if (field.nsub > 0) expect_fields(property["items"], field.sub, field.nsub);
  }
  const bool refers = schema["properties"].contains("refs");
  EXPECT_EQ(schema["properties"].size(), static_cast<std::size_t>(count) + (refers ? 1 : 0));
  EXPECT_EQ(schema["additionalProperties"], false);
}

TEST(BlocksSchema, HasTitleAndDescriptionOfEveryField) {
  const Json definitions = Json::parse(blocks_schema())["$defs"];
  for (const SDBlkDef &def : seed_blkdefs) {
    const std::string name = def.type == SDBLK_DATA_RECORD ? "BDATA" : def.id;
    ASSERT_TRUE(definitions.contains(name)) << name;
    EXPECT_EQ(definitions[name]["title"], def.name);
    expect_fields(definitions[name], def.fields, def.nfields);
  }
}

TEST(BlocksSchema, LinesHaveTheirKeys) {
  const Json definitions = Json::parse(blocks_schema())["$defs"];
  EXPECT_EQ(definitions["blockette"]["required"],
            Json({"kind", "file", "block", "sequence", "record_type", "record_offset", "offset",
                  "length", "type", "name", "fields"}));
  EXPECT_EQ(definitions["record"]["required"],
            Json({"kind", "file", "block", "sequence", "record_type", "offset", "length",
                  "byte_order", "fields", "blockettes"}));
  EXPECT_EQ(definitions["skip"]["required"], Json({"kind", "file", "offset", "length", "why"}));
  EXPECT_EQ(definitions["note"]["required"], Json({"kind", "file", "why", "offset", "text"}));
  EXPECT_EQ(definitions["end"]["required"],
            Json({"kind", "file", "records", "blocks", "counts", "sequence_breaks", "padding_bytes",
                  "skipped_bytes", "notes"}));
}

TEST(VolumesSchema, LineHasItsKeys) {
  const Json volume = Json::parse(volumes_schema())["$defs"]["volume"];
  EXPECT_EQ(
      volume["required"],
      Json({"kind",       "file",          "bytes",           "modified",      "content",
            "version",    "record_length", "label",           "organization",  "start",
            "end",        "stations",      "channels",        "epochs",        "responses",
            "data_start", "data_end",      "data_records",    "samples",       "records",
            "blocks",     "counts",        "sequence_breaks", "padding_bytes", "skipped_bytes",
            "notes"}));
  EXPECT_EQ(keys(volume["properties"]["notes"]["properties"]),
            (std::set<std::string>{"length", "unconfirmed", "cut", "order", "chain", "value",
                                   "short", "again"}));
}

TEST(SegmentsSchema, LineHasItsKeys) {
  EXPECT_EQ(Json::parse(segments_schema())["$defs"]["segment"]["required"],
            Json({"kind", "file", "network", "station", "location", "channel", "quality", "start",
                  "end", "sample_rate", "samples", "records", "gap", "timing_quality"}));
}

TEST(StationsSchema, LineHasItsKeys) {
  EXPECT_EQ(Json::parse(stations_schema())["$defs"]["epoch"]["required"],
            Json({"kind",
                  "file",
                  "network",
                  "station",
                  "location",
                  "channel",
                  "start",
                  "end",
                  "latitude",
                  "longitude",
                  "elevation",
                  "depth",
                  "azimuth",
                  "dip",
                  "sample_rate",
                  "max_clock_drift",
                  "instrument",
                  "units",
                  "units_description",
                  "calibration_units",
                  "calibration_units_description",
                  "format",
                  "flags",
                  "comment",
                  "site",
                  "network_description",
                  "station_start",
                  "station_end",
                  "station_latitude",
                  "station_longitude",
                  "station_elevation",
                  "sensitivity",
                  "stages",
                  "comments",
                  "station_comments"}));
}

}  // namespace
