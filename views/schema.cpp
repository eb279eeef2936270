#include "views/schema.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <span>

#include "seed/sdblk.h"
#include "views/plan.h"

namespace tarvik {
namespace {

using Json = nlohmann::ordered_json;

// ---- values ----

// Names of the definitions that every schema has, and what they are.
Json common_definitions() {
  const Json number = {{"type", {"number", "null"}}};
  return {
      {"text", {{"type", "string"}}},
      {"integer", {{"type", {"integer", "null"}}}},
      {"real", {{"anyOf", {number, {{"enum", {"NaN", "Infinity", "-Infinity"}}}}}}},
      {"time",
       {{"description", "UTC; null without a value, or for years that do not have four digits"},
        {"type", {"string", "null"}},
        {"pattern", R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{4}Z$)"}}},
      {"microtime",
       {{"description", "UTC; null for years that do not have four digits"},
        {"type", {"string", "null"}},
        {"pattern", R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z$)"}}},
      {"nanotime",
       {{"description", "UTC; null where the file is standard input"},
        {"type", {"string", "null"}},
        {"pattern", R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{9}Z$)"}}},
      {"count", {{"type", "integer"}, {"minimum", 0}}},
      {"reference",
       {{"description", "Number of the block that defines the code; null where none does"},
        {"type", {"integer", "null"}},
        {"minimum", 0}}},
  };
}

Json reference_to(const std::string &name) { return {{"$ref", "#/$defs/" + name}}; }

Json array_of(const Json &items) { return {{"type", "array"}, {"items", items}}; }

Json nullable(const Json &value) { return {{"anyOf", {value, {{"type", "null"}}}}}; }

// ---- the catalogue ----

std::string name_of(const SDBlkDef &def) {
  return def.type == SDBLK_DATA_RECORD ? "BDATA" : def.id;
}

Json object_of(const Plan &plan, bool of_group);

Json value_of(const Plan::Field &field) {
  switch (field.form) {
    case Form::text: return reference_to("text");
    case Form::integer:
    case Form::unsigned_integer: return reference_to("integer");
    case Form::real: return reference_to("real");
    case Form::time: return reference_to("time");
    case Form::texts: return array_of(reference_to("text"));
    case Form::reals: return array_of(reference_to("real"));
    case Form::integers:
    case Form::references: return array_of(reference_to("integer"));
    case Form::group: return array_of(object_of(field.group.front(), true));
  }
  return Json::object();
}

Json references_of(const Plan &plan) {
  Json properties = Json::object();
  for (const Plan::Field &field : plan.fields) {
    if (!field.refers) continue;
    const Json number = reference_to("reference");
    properties[field.def->key] = field.form == Form::references ? array_of(number) : number;
  }
  return {{"description", "For each field that refers to an abbreviation, what defines its code"},
          {"type", "object"},
          {"properties", properties},
          {"additionalProperties", false}};
}

// The fields of a list; those at the end may be absent.
Json object_of(const Plan &plan, bool of_group) {
  Json properties = Json::object();
  for (const Plan::Field &field : plan.fields) {
    Json value = {{"title", field.def->title}, {"description", field.def->description}};
    value.update(value_of(field));
    properties[field.def->key] = value;
  }
  if (of_group && plan.has_references) properties["refs"] = references_of(plan);
  return {{"type", "object"}, {"properties", properties}, {"additionalProperties", false}};
}

Json fields_of(const SDBlkDef &def) {
  Json fields = {{"title", def.name}, {"description", def.description}};
  fields.update(object_of(plan_of(def), false));
  return fields;
}

// ---- lines ----

// One key of a line.
struct Member {
  const char *key;
  const char *value;  // name of a common definition
  const char *description;
};

Json member_of(const Member &member) {
  Json value = {{"description", member.description}};
  value.update(reference_to(member.value));
  return value;
}

Json constant(const char *value) { return {{"const", value}}; }

// An object with a kind and, first, the members named; all that it has so far is required.
Json line(const char *kind, const char *description, std::span<const Member> members) {
  Json properties = {{"kind", constant(kind)},
                     {"file", member_of({"file", "text", "Path of the file, as it was given"})}};
  for (const Member &member : members) properties[member.key] = member_of(member);
  Json required = Json::array();
  for (const auto &property : properties.items()) required.push_back(property.key());
  return {{"description", description},
          {"type", "object"},
          {"properties", properties},
          {"required", required}};
}

// Another key, of a form of its own.
void add(Json *line, const char *key, const char *description, const Json &value,
         bool required = true) {
  Json described = {{"description", description}};
  described.update(value);
  (*line)["properties"][key] = described;
  if (required) (*line)["required"].push_back(key);
}

Json error_line() {
  constexpr Member kMembers[] = {{"text", "text", "Why the file could not be read to its end"}};
  return line("error", "A file that could not be read", kMembers);
}

Json counts_by_letter() {
  Json properties = Json::object();
  for (const char *letter : {"U", "V", "A", "S", "T", "D", "R", "Q", "M"}) {
    properties[letter] = reference_to("count");
  }
  return {{"type", "object"},
          {"properties", properties},
          {"required", {"U", "V", "A", "S", "T", "D", "R", "Q", "M"}}};
}

constexpr const char *kCountsText =
    "Blocks by the letter of their record, and as U those of types that are not known";

// A schema of lines, each of a kind that has a definition of its name.
std::string schema(const char *title, const char *description, const Json &lines,
                   const Json &more) {
  Json definitions = common_definitions();
  Json kinds = Json::array();
  Json branches = Json::array();
  for (const auto &line : lines.items()) {
    definitions[line.key()] = line.value();
    kinds.push_back(line.key());
    branches.push_back({{"if", {{"properties", {{"kind", {{"const", line.key()}}}}}}},
                        {"then", reference_to(line.key())}});
  }
  definitions.update(more);
  const Json whole = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                      {"title", title},
                      {"description", description},
                      {"type", "object"},
                      {"required", {"kind", "file"}},
                      {"properties", {{"kind", {{"enum", kinds}}}}},
                      {"allOf", branches},
                      {"$defs", definitions}};
  return whole.dump(2) + '\n';
}

// ---- blocks ----

constexpr Member kStart[] = {
    {"block", "count", "Number of the block in the file, from 0"},
    {"sequence", "integer", "Number of the record in which the block starts, or null"},
    {"record_type", "text", "Letter of that record: V A S T D R Q M"},
};

Json if_type(const Json &is, const Json &then) {
  return {{"if", {{"properties", {{"type", is}}}}}, {"then", then}};
}

// The fields of a type, beside it.
Json fields_if(const SDBlkDef &def) {
  const Json then = {{"name", constant(def.name)},
                     {"fields", reference_to(name_of(def))},
                     {"refs", references_of(plan_of(def))}};
  return if_type({{"const", def.type}}, {{"properties", then}});
}

// Validators try one branch after the other, so those of a few types are in a branch together.
Json in_bunches(const Json &types, const Json &branches) {
  constexpr std::size_t kBunch = 8;
  Json bunches = Json::array();
  for (std::size_t first = 0; first < types.size(); first += kBunch) {
    const std::size_t last = std::min(first + kBunch, types.size()) - 1;
    Json some = Json::array();
    for (std::size_t i = first; i <= last; ++i) some.push_back(branches[i]);
    bunches.push_back(
        if_type({{"minimum", types[first]}, {"maximum", types[last]}}, {{"allOf", some}}));
  }
  return bunches;
}

// Fields by the type beside them: those of the catalogue, else null.
Json fields_by_type(std::int32_t least, std::int32_t beyond) {
  Json branches = Json::array();
  Json types = Json::array();
  for (const SDBlkDef &def : seed_blkdefs) {
    if (def.type < least || def.type >= beyond) continue;
    types.push_back(def.type);
    branches.push_back(fields_if(def));
  }
  Json all = in_bunches(types, branches);
  const Json nothing = {
      {"name", {{"type", "null"}}}, {"fields", {{"type", "null"}}}, {"refs", false}};
  all.push_back(if_type({{"not", {{"enum", types}}}}, {{"properties", nothing}}));
  return all;
}

constexpr const char *kFieldsText =
    "The fields that are there, in their order; null for an unknown type";
constexpr std::int32_t kFirstDataType = 99;
constexpr std::int32_t kBeyondTypes = 65536;

Json blockette_line() {
  Json blockette = line("blockette", "A control blockette", kStart);
  constexpr Member kMore[] = {
      {"record_offset", "count", "Offset of the record in which the blockette starts, bytes"},
      {"offset", "count", "Offset of the blockette, bytes"},
      {"length", "count", "Its length field, bytes"},
      {"type", "count", "Its type"},
  };
  for (const Member &member : kMore) add(&blockette, member.key, "", member_of(member));
  add(&blockette, "name", "Name of the type; null for an unknown one", Json::object());
  add(&blockette, "fields", kFieldsText, Json::object());
  add(&blockette, "raw", "All its bytes, as a text", reference_to("text"), false);
  blockette["allOf"] = fields_by_type(0, kFirstDataType);
  return blockette;
}

Json hexadecimal() { return {{"type", "string"}, {"pattern", "^([0-9a-f]{2})*$"}}; }

Json chained_object() {
  Json chained = {{"description", "A data blockette"},
                  {"type", "object"},
                  {"properties", Json::object()},
                  {"required", Json::array()}};
  add(&chained, "type", "Its type", reference_to("count"));
  add(&chained, "offset", "Its offset from the start of the record, bytes", reference_to("count"));
  add(&chained, "name", "Name of the type; null for an unknown one", Json::object());
  add(&chained, "fields", kFieldsText, Json::object());
  add(&chained, "raw", "Its bytes in hexadecimal digits, 64 bytes at most", hexadecimal(), false);
  chained["allOf"] = fields_by_type(0, kBeyondTypes);
  return chained;
}

const SDBlkDef &record_definition() {
  const SDBlkDef *def = seed_blkdefs;
  while (def->type != SDBLK_DATA_RECORD) ++def;
  return *def;
}

Json record_line() {
  Json record = line("record", "A data record", kStart);
  add(&record, "offset", "Offset of the record, bytes", reference_to("count"));
  add(&record, "length", "Length of the record, bytes", reference_to("count"));
  add(&record, "byte_order", "Order of the bytes of its header", {{"enum", {"big", "little"}}});
  add(&record, "fields", "The fields of its fixed section",
      reference_to(name_of(record_definition())));
  add(&record, "blockettes", "Its data blockettes, in the order of their chain",
      array_of(reference_to("chained")));
  add(&record, "raw", "Its first 48 bytes in hexadecimal digits", hexadecimal(), false);
  return record;
}

Json volume_line() {
  Json volume = line("volume", "The first line of a file", {});
  add(&volume, "schema", "Name of this form of lines", constant("sdblk-blocks/1"));
  add(&volume, "bytes", "Size of the file", reference_to("count"));
  return volume;
}

Json skip_line() {
  constexpr Member kMembers[] = {{"offset", "count", "Offset of the first byte, bytes"},
                                 {"length", "count", "How many bytes"}};
  Json skip = line("skip", "Bytes that were passed over", kMembers);
  add(&skip, "why",
      "padding: only fill; garbage: no record; prefix: the rest of a control record "
      "where no blockette begins",
      {{"enum", {"padding", "garbage", "prefix"}}});
  return skip;
}

Json causes() {
  return {"length", "unconfirmed", "cut", "order", "chain", "value", "short", "again"};
}

Json note_line() {
  Json note = line("note", "What could not be taken at its word", {});
  add(&note, "why", "The cause", {{"enum", causes()}});
  add(&note, "offset", "Offset of the block, or of the record for its own notes, bytes",
      reference_to("count"));
  add(&note, "block", "Number of the block; not there for a record's own notes",
      reference_to("count"), false);
  add(&note, "field", "Path of the field", reference_to("text"), false);
  add(&note, "text", "A sentence for people", reference_to("text"));
  return note;
}

Json end_line() {
  constexpr Member kMembers[] = {{"records", "count", "Records of the file"},
                                 {"blocks", "count", "Blockettes and data records of the file"}};
  constexpr Member kMore[] = {
      {"sequence_breaks", "count", "Records whose number does not follow that before"},
      {"padding_bytes", "count", "Bytes that only fill up between records"},
      {"skipped_bytes", "count", "Bytes of all other skips"},
      {"notes", "count", "Number of notes"}};
  Json end = line("end", "The last line of a file; one without it was cut off", kMembers);
  add(&end, "counts", kCountsText, counts_by_letter());
  for (const Member &member : kMore) add(&end, member.key, "", member_of(member));
  return end;
}

Json catalogue() {
  Json definitions = Json::object();
  for (const SDBlkDef &def : seed_blkdefs) definitions[name_of(def)] = fields_of(def);
  return definitions;
}

// ---- stations ----

// A unit of a response stands by its name, and what only one of a dictionary blockette and its
// counterpart has is left out.
Json response_fields(std::int32_t type) {
  Json fields = fields_of(definition_of(type));
  for (const char *unit : {"iunits", "ounits"}) {
    if (!fields["properties"].contains(unit)) continue;
    Json &value = fields["properties"][unit];
    value.erase("$ref");
    value["type"] = {"string", "null"};
  }
  return fields;
}

Json response_blockette() {
  Json blockette = {
      {"type", "object"}, {"properties", Json::object()}, {"required", Json::array()}};
  Json branches = Json::array();
  Json types = Json::array();
  for (const std::int32_t type : {53, 54, 55, 56, 57, 58, 61, 62}) {
    types.push_back(type);
    branches.push_back({{"if", {{"properties", {{"type", {{"const", type}}}}}}},
                        {"then", {{"properties", {{"fields", response_fields(type)}}}}}});
  }
  add(&blockette, "type", "Its type, or that of its counterpart", {{"enum", types}});
  add(&blockette, "from", "The type that the volume has: of a dictionary from 41 to 48",
      reference_to("count"));
  add(&blockette, "block", "Number of the block", reference_to("count"));
  add(&blockette, "fields", "Its fields", Json::object());
  blockette["allOf"] = branches;
  return blockette;
}

Json stage_object() {
  Json stage = {{"type", "object"}, {"properties", Json::object()}, {"required", Json::array()}};
  add(&stage, "stage", "Number of the stage, 0 for the whole channel", reference_to("integer"));
  add(&stage, "blockettes", "What describes it, in the order of the volume",
      array_of(reference_to("response")));
  return stage;
}

Json comment_object() {
  Json comment = {{"type", "object"}, {"properties", Json::object()}, {"required", Json::array()}};
  add(&comment, "start", "Time from which it holds", reference_to("time"));
  add(&comment, "end", "Time until which it holds", reference_to("time"));
  add(&comment, "text", "Its text, or null where it is not defined",
      {{"type", {"string", "null"}}});
  add(&comment, "level", "Number that goes with it", reference_to("integer"));
  return comment;
}

Json sensitivity_object() {
  Json value = {{"type", "object"}, {"properties", Json::object()}, {"required", Json::array()}};
  add(&value, "value", "Counts for one unit of the input", reference_to("real"));
  add(&value, "frequency", "At which it holds, in hertz", reference_to("real"));
  add(&value, "input_units", "What is measured", {{"type", {"string", "null"}}});
  add(&value, "output_units", "What is recorded", {{"type", {"string", "null"}}});
  return value;
}

// A key of a line that shows a field of the catalogue.
struct Shown {
  const char *key;
  std::int32_t type;  // the blockette
  const char *field;
};

constexpr Shown kEpochFields[] = {
    {"network", 50, "net"},
    {"station", 50, "sta"},
    {"location", 52, "loc"},
    {"channel", 52, "chan"},
    {"start", 52, "time"},
    {"end", 52, "endtime"},
    {"latitude", 52, "lat"},
    {"longitude", 52, "lon"},
    {"elevation", 52, "elev"},
    {"depth", 52, "depth"},
    {"azimuth", 52, "azimuth"},
    {"dip", 52, "dip"},
    {"sample_rate", 52, "samprate"},
    {"max_clock_drift", 52, "maxdrift"},
    {"instrument", 33, "descr"},
    {"units", 34, "name"},
    {"units_description", 34, "descr"},
    {"calibration_units", 34, "name"},
    {"calibration_units_description", 34, "descr"},
    {"format", 30, "name"},
    {"flags", 52, "flags"},
    {"comment", 52, "comment"},
    {"site", 50, "name"},
    {"network_description", 33, "descr"},
    {"station_start", 50, "time"},
    {"station_end", 50, "endtime"},
    {"station_latitude", 50, "lat"},
    {"station_longitude", 50, "lon"},
    {"station_elevation", 50, "elev"},
};

void add_shown(Json *line, const Shown &shown) {
  const Plan &plan = plan_of(definition_of(shown.type));
  for (const Plan::Field &field : plan.fields) {
    if (field.def->key != std::string_view(shown.field)) continue;
    Json value = {{"title", field.def->title}};
    value.update(field.form == Form::text ? Json{{"type", {"string", "null"}}} : value_of(field));
    add(line, shown.key, field.def->description, value);
  }
}

Json epoch_line() {
  Json epoch = line("epoch", "An epoch of a channel, or a station without channels", {});
  for (const Shown &shown : kEpochFields) add_shown(&epoch, shown);
  add(&epoch, "sensitivity", "The first sensitivity of stage 0",
      nullable(reference_to("sensitivity")));
  add(&epoch, "stages", "The response, stage by stage", nullable(array_of(reference_to("stage"))));
  add(&epoch, "comments", "Comments on the channel", nullable(array_of(reference_to("remark"))));
  add(&epoch, "station_comments", "Comments on the station", array_of(reference_to("remark")));
  return epoch;
}

}  // namespace

std::string blocks_schema() {
  Json more = catalogue();
  more["chained"] = chained_object();
  return schema("sdblk blocks", "A line for every blockette and data record of a SEED volume",
                {{"volume", volume_line()},
                 {"blockette", blockette_line()},
                 {"record", record_line()},
                 {"skip", skip_line()},
                 {"note", note_line()},
                 {"end", end_line()},
                 {"error", error_line()}},
                more);
}

std::string volumes_schema() {
  constexpr Member kMembers[] = {
      {"bytes", "count", "Size of the file"},
      {"modified", "nanotime", "Time of the file's last change"},
  };
  constexpr Member kNumbers[] = {
      {"stations", "count", "Different codes of stations"},
      {"channels", "count", "Different codes of channels and places in them"},
      {"epochs", "count", "Channel headers, blockettes 52"},
      {"responses", "count", "Blockettes of responses, 53 to 58 and 60 to 62"},
      {"data_start", "time", "Start of the earliest data"},
      {"data_end", "time", "Time of the latest sample"},
      {"data_records", "count", "Data records"},
      {"samples", "count", "Samples in all data records"},
      {"records", "count", "Records of the file"},
      {"blocks", "count", "Blockettes and data records of the file"},
  };
  constexpr Member kFaults[] = {
      {"sequence_breaks", "count", "Records whose number does not follow that before"},
      {"padding_bytes", "count", "Bytes that only fill up between records"},
      {"skipped_bytes", "count", "Bytes of all other skips"},
  };
  Json volume = line("volume", "A file", kMembers);
  add(&volume, "content",
      "What is in it: control headers with stations and data, only one of the "
      "two, other control headers, or nothing",
      {{"enum", {"full", "dataless", "data", "control", "none"}}});
  add(&volume, "version", "Version of the format", {{"type", {"string", "null"}}});
  add(&volume, "record_length",
      "Length of the records that the volume states, else of the first, "
      "bytes",
      reference_to("integer"));
  add(&volume, "label", "Label of the volume", {{"type", {"string", "null"}}});
  add(&volume, "organization", "Organization that wrote it", {{"type", {"string", "null"}}});
  add(&volume, "start", "Beginning of the volume, as it states", reference_to("time"));
  add(&volume, "end", "End of the volume, as it states", reference_to("time"));
  for (const Member &member : kNumbers) add(&volume, member.key, "", member_of(member));
  add(&volume, "counts", kCountsText, counts_by_letter());
  for (const Member &member : kFaults) add(&volume, member.key, "", member_of(member));
  Json notes = Json::object();
  for (const Json &cause : causes()) notes[cause.get<std::string>()] = reference_to("count");
  add(&volume, "notes", "Notes by cause, without those that did not come",
      {{"type", "object"}, {"properties", notes}});
  return schema("sdblk volumes", "A line for every SEED volume",
                {{"volume", volume},
                 {"gone", line("gone", "A file of an earlier run that is no longer there", {})},
                 {"error", error_line()}},
                Json::object());
}

std::string stations_schema() {
  return schema("sdblk stations", "A line for every epoch of a channel",
                {{"epoch", epoch_line()}, {"error", error_line()}},
                {{"response", response_blockette()},
                 {"stage", stage_object()},
                 {"remark", comment_object()},
                 {"sensitivity", sensitivity_object()}});
}

std::string segments_schema() {
  constexpr Member kMembers[] = {
      {"network", "text", "Code of the network"},
      {"station", "text", "Code of the station"},
      {"location", "text", "Code of the place or instrument"},
      {"channel", "text", "Code of the channel"},
      {"quality", "text", "Record type: D R Q M"},
      {"start", "microtime", "Time of the first sample"},
      {"end", "microtime", "Time of the last sample"},
      {"sample_rate", "real", "Samples a second, of the first record"},
      {"samples", "count", "Samples"},
      {"records", "count", "Data records"},
      {"gap", "real",
       "Seconds missing since the segment before; negative: they overlap; null: the "
       "first of its channel"},
      {"timing_quality", "integer", "The lowest of its records, percent"},
  };
  return schema("sdblk segments", "A line for every continuous stretch of data",
                {{"segment", line("segment", "A continuous stretch of data", kMembers)},
                 {"error", error_line()}},
                Json::object());
}

}  // namespace tarvik
