#include "views/response_xml.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

#include "support/line.h"
#include "views/json.h"
#include "views/response_fields.h"

namespace tarvik {
namespace {

constexpr std::int32_t kNoStage = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kCorners = 56;
constexpr std::int32_t kDecimation = 57;
constexpr std::int32_t kFir = 61;
constexpr std::int32_t kPolynomial = 62;

constexpr XmlPath kPolynomialPath = {&kResponsePath, "InstrumentPolynomial"};
constexpr XmlPath kSensitivityPath = {&kResponsePath, "InstrumentSensitivity"};

std::string in_stage(std::int32_t number) { return "stage " + std::to_string(number); }

// ---- what becomes of the fields ----

// A code of one letter, and what stands for it.
struct Code {
  char letter;
  const char *text;
};

// A field that becomes an element of its own, which the format asks for.
struct Head {
  ResponseField field;
  const char *element;
  enum class Kind : std::uint8_t { code, real, integer } kind;
  std::vector<Code> codes;
};

// A part of an element that stands for one of a field's repetitions: the positions of value and
// error in the repetition, and the bounds of the value.
struct Part {
  std::int32_t value;
  std::int32_t error;   // -1 for none
  const char *element;  // nullptr for the element itself
  double most;          // the size of the value
};

// A field of many elements.
struct Repeated {
  ResponseField field;
  const char *element;
  bool is_numbered;
  std::vector<Part> parts;  // none for an array of numbers
};

// What a type of blockette becomes.
struct Shape {
  const char *element = "";
  bool has_units = true;
  std::vector<Head> heads;
  std::vector<Repeated> repeated;
};

constexpr double kAny = std::numeric_limits<double>::infinity();
constexpr double kMostAngle = 360;
constexpr std::int32_t kNoError = -1;

using Kind = Head::Kind;

// clang-format off
std::map<std::int32_t, Shape> make_shapes() {
  const std::vector<Part> root = {{0, 2, "Real", kAny}, {1, 3, "Imaginary", kAny}};
  const std::vector<Part> coefficient = {{0, 1, nullptr, kAny}};
  return {
    {53, {"PolesZeros", true,
      {{{53, "resp"}, "PzTransferFunctionType", Kind::code,
        {{'A', "LAPLACE (RADIANS/SECOND)"}, {'B', "LAPLACE (HERTZ)"}, {'D', "DIGITAL (Z-TRANSFORM)"}}},
       {{53, "norm"}, "NormalizationFactor", Kind::real, {}},
       {{53, "fnorm"}, "NormalizationFrequency", Kind::real, {}}},
      {{{53, "zeros"}, "Zero", true, root},
       {{53, "poles"}, "Pole", true, root}}}},
    {54, {"Coefficients", true,
      {{{54, "resp"}, "CfTransferFunctionType", Kind::code,
        {{'A', "ANALOG (RADIANS/SECOND)"}, {'B', "ANALOG (HERTZ)"}, {'D', "DIGITAL"}}}},
      {{{54, "nums"}, "Numerator", false, coefficient},
       {{54, "dens"}, "Denominator", false, coefficient}}}},
    {55, {"ResponseList", true, {},
      {{{55, "faps"}, "ResponseListElement", false,
        {{0, kNoError, "Frequency", kAny}, {1, 2, "Amplitude", kAny}, {3, 4, "Phase", kMostAngle}}}}}},
    {57, {"Decimation", false,
      {{{57, "isamprate"}, "InputSampleRate", Kind::real, {}},
       {{57, "decfac"}, "Factor", Kind::integer, {}},
       {{57, "decoff"}, "Offset", Kind::integer, {}},
       {{57, "delay"}, "Delay", Kind::real, {}},
       {{57, "correction"}, "Correction", Kind::real, {}}}, {}}},
    {58, {"StageGain", false,
      {{{58, "sens"}, "Value", Kind::real, {}},
       {{58, "freq"}, "Frequency", Kind::real, {}}}, {}}},
    {61, {"FIR", true,
      {{{61, "sym"}, "Symmetry", Kind::code, {{'A', "NONE"}, {'B', "ODD"}, {'C', "EVEN"}}}},
      {{{61, "coefs"}, "NumeratorCoefficient", false, {}}}}},
    {62, {"Polynomial", true,
      {{{62, "poly"}, "ApproximationType", Kind::code, {{'M', "MACLAURIN"}}},
       {{62, "lfreq"}, "FrequencyLowerBound", Kind::real, {}},
       {{62, "ufreq"}, "FrequencyUpperBound", Kind::real, {}},
       {{62, "lappr"}, "ApproximationLowerBound", Kind::real, {}},
       {{62, "uappr"}, "ApproximationUpperBound", Kind::real, {}},
       {{62, "err"}, "MaximumError", Kind::real, {}}},
      {{{62, "coefs"}, "Coefficient", true, coefficient}}}},
  };
}
// clang-format on

const Shape &shape_of(std::int32_t type) {
  static const std::map<std::int32_t, Shape> shapes = make_shapes();
  return shapes.at(type);
}

const char *text_of(const std::vector<Code> &codes, std::string_view letter) {
  for (const Code &code : codes) {
    if (letter.size() == 1 && letter.front() == code.letter) return code.text;
  }
  return nullptr;
}

// ---- units ----

// The fields that every filter has.
struct UnitFields {
  explicit UnitFields(std::int32_t type) : input(type, "iunits"), output(type, "ounits") {}

  ResponseField input;
  ResponseField output;
};

const UnitFields &units_of(std::int32_t type) {
  static const std::map<std::int32_t, UnitFields> all = [] {
    std::map<std::int32_t, UnitFields> fields;
    for (const std::int32_t filter : {53, 54, 55, kCorners, kFir, kPolynomial}) {
      fields.emplace(filter, filter);
    }
    return fields;
  }();
  return all.at(type);
}

// The element of a blockette; polynomial and gain of stage 0 are those of the whole response.
XmlPath path_of(std::int32_t number, std::int32_t type) {
  if (number == 0 && type == kPolynomial) return kPolynomialPath;
  if (number == 0 && type == kGainType) return kSensitivityPath;
  return {&kStagePath, shape_of(type).element};
}

std::int32_t stage_of(const Response &response) {
  const SDBlkEntry *entry = ResponseField(response.type, "stage").in(response);
  return entry == nullptr ? kNoStage : entry->value.i;
}

bool is_single(std::int32_t type) { return type == kDecimation || type == kGainType; }

const SDBlk *input_of(const Response &response) {
  return unit_of(*response.block, units_of(response.type).input.in(response));
}
const SDBlk *output_of(const Response &response) {
  return unit_of(*response.block, units_of(response.type).output.in(response));
}

// ---- elements of many lines ----

// What follows the name of an element: ">1.5", or " plusError="0.1" minusError="0.1">1.5".  Room for
// kValueRoom.
constexpr std::size_t kValueRoom = 3 * kRealRoom + 32;

char *put_value(char *out, double value, const double *error) {
  if (error != nullptr) {
    out = put_text(out, R"( plusError=")");
    const char *const digits = out;
    out = put_xml_real(out, *error);
    const std::string_view text(digits, static_cast<std::size_t>(out - digits));
    out = put_char(put_text(put_text(out, R"(" minusError=")"), text), '"');
  }
  return put_xml_real(put_char(out, '>'), value);
}

// Writes the elements of one field's repetitions, each on lines of its own.
class Elements {
 public:
  Elements(const XmlValues &values, const Repeated &repeated, const XmlPath &path)
      : values_(values), repeated_(repeated), path_(path), text_(values.xml().elements()) {
    const std::string indent(values.xml().indent());
    outer_ = tags(indent, repeated.element);
    nested_ = !repeated.parts.empty() && repeated.parts.front().element != nullptr;
    room_ = outer_.size() + kIntegerRoom + kValueRoom + 16;
    for (const Part &part : repeated.parts) {
      inner_.push_back(nested_ ? tags(indent + ' ', part.element) : Tags());
      room_ += inner_.back().size() + kValueRoom;
    }
    if (nested_) outer_.close.insert(0, indent);
  }

  void put(const SDBlk &block, const SDBlkEntry &entry) {
    fields_ = entry.def->sub;
    for (std::int32_t i = 0; i < entry.count; ++i) {
      if (repeated_.parts.empty()) {
        put_element(block, entry.value.da[i]);
      } else {
        put_repetition(block, entry.value.ea[i]);
      }
      ++number_;
      values_.xml().flush_much();
    }
  }

 private:
  struct Tags {
    std::string open;  // without ">"
    std::string close;
    [[nodiscard]] std::size_t size() const { return open.size() + close.size(); }
  };

  static Tags tags(const std::string &indent, const char *element) {
    return {indent + '<' + element, std::string("</") + element + ">"};
  }
  // An element of which a part cannot be written is left out.
  void lose(const SDBlk &block, const XmlPath &path) const {
    values_.lose(block, path, "number " + std::to_string(number_) + " cannot be written");
  }
  void put_element(const SDBlk &block, double value) {
    if (std::isnan(value)) {
      lose(block, path_);
      return;
    }
    char *out = put_text(text_->reserve(room_), outer_.open);
    text_->commit(put_text(put_value(out, value, nullptr), outer_.close));
  }
  void put_repetition(const SDBlk &block, const Arr *repetition) {
    char *out = put_text(text_->reserve(room_), outer_.open);
    if (repeated_.is_numbered) {
      out = put_char(put_integer(put_text(out, R"( number=")"), number_), '"');
    }
    if (nested_) out = put_char(out, '>');
    bool good = true;
    for (std::size_t i = 0; i < repeated_.parts.size(); ++i) {
      const Part &part = repeated_.parts[i];
      const double *value = number_at(repetition, part.value);
      if (value == nullptr || !(std::fabs(*value) <= part.most)) {
        const XmlPath inner = {&path_, part.element};
        lose(block, part.element == nullptr ? path_ : inner);
        good = false;
        continue;
      }
      const double *error = part.error == kNoError ? nullptr : number_at(repetition, part.error);
      out = put_value(put_text(out, inner_[i].open), *value, error);
      out = put_text(out, inner_[i].close);
    }
    if (good) text_->commit(put_text(out, outer_.close));
  }
  [[nodiscard]] const double *number_at(const Arr *repetition, std::int32_t position) const {
    const SDBlkEntry *entry = sdblk_entry_at(repetition, fields_, position);
    return entry == nullptr || !sdblk_has_value(entry) ? nullptr : &entry->value.d;
  }

  const XmlValues &values_;
  const Repeated &repeated_;
  XmlPath path_;
  TextBuffer *text_;
  Tags outer_;
  std::vector<Tags> inner_;
  bool nested_ = false;
  std::size_t room_ = 0;                   // that one takes at most
  const SDBlkFieldDef *fields_ = nullptr;  // of a repetition
  std::int64_t number_ = 0;
};

}  // namespace

// ---- blockettes are taken ----

bool ResponseXml::add(const SDBlk &block, const SDBlkPlace &place) {
  bool kept = false;
  for_each_response(block, [&](const Response &response) {
    const bool own = response.block == &block;
    if (add(response, place) && own) kept = true;
    return true;
  });
  return kept;
}

// True when the block is kept.
bool ResponseXml::add(const Response &response, const SDBlkPlace &place) {
  const std::int32_t number = stage_of(response);
  const auto [found, is_new] = stages_.try_emplace(number);
  Stage &stage = found->second;
  if (is_new) stage.offset = response.block->file_offset;
  if (!is_single(response.type)) {
    if (stage.first_input == nullptr) stage.first_input = input_of(response);
    const SDBlk *output = output_of(response);
    if (output != nullptr) stage.last_output = output;
  }
  if (goes_on(response, &stage.last)) {
    if (stage.last.is_kept) ++stage.filter.parts;
    return false;
  }
  First *first = add_to_stage(response, number, &stage);
  if (first != nullptr) first->place = place;
  stage.last.is_kept = first != nullptr;
  return first != nullptr;
}

// Whether a blockette is a further part of the one before it in the stage.
bool ResponseXml::goes_on(const Response &response, Last *last) {
  head_.clear();
  std::int32_t position = -1;
  for (const FieldUse &use : uses_of(response.type)) {
    const SDBlkEntry *entry = response.entry(++position);
    if (entry == nullptr || use.use == Use::count || use.use == Use::elements) continue;
    head_.put(use.field->key.as_first());
    put_response_value(&head_, response, *entry, *use.field);
  }
  const std::int32_t from = response.block->blockette_type;
  const bool same = may_be_split(response.type) && response.type == last->type &&
                    from == last->from && head_.text() == last->head;
  last->type = response.type;
  last->from = from;
  if (!same) last->head = head_.text();
  return same;
}

// What the blockette is the first of in its stage; nullptr when it is lost.
ResponseXml::First *ResponseXml::add_to_stage(const Response &response, std::int32_t number,
                                              Stage *stage) {
  if (response.type == kCorners) {
    values_.lose(*response.block, kStagePath,
                 "blockette 56 in " + in_stage(number) + " has no counterpart");
    return nullptr;
  }
  if (number < 0 || number == kNoStage) {
    values_.lose(*response.block, kStagePath,
                 number == kNoStage ? "the stage has no number" : in_stage(number) + " is below 0");
    return nullptr;
  }
  const XmlPath path = path_of(number, response.type);
  First *first = stage->first(response.type);
  if (first->type != 0) {
    const char *another =
        is_single(response.type) ? " has another one already" : " has another filter already";
    values_.lose(*response.block, path, in_stage(number) + another);
    return nullptr;
  }
  first->type = response.type;
  if (!can_be_written(response, path)) return nullptr;
  first->block = response.block;
  return first;
}

ResponseXml::First *ResponseXml::Stage::first(std::int32_t type) {
  if (type == kDecimation) return &decimation;
  return type == kGainType ? &gain : &filter;
}

// Tells all that stands in the way.
bool ResponseXml::can_be_written(const Response &response, const XmlPath &path) {
  const Shape &shape = shape_of(response.type);
  bool good = true;
  const auto lose = [&](const char *element, const std::string &text) {
    values_.lose(*response.block, {&path, element}, text);
    good = false;
  };
  for (const Head &head : shape.heads) {
    const SDBlkEntry *entry = head.field.in(response);
    if (entry == nullptr) {
      lose(head.element, kNoValue);
    } else if (head.kind == Kind::code && text_of(head.codes, entry->value.s) == nullptr) {
      lose(head.element, std::string("'") + entry->value.s + "' has no counterpart");
    }
  }
  if (shape.has_units && input_of(response) == nullptr) lose("InputUnits/Name", kNoValue);
  if (shape.has_units && output_of(response) == nullptr) lose("OutputUnits/Name", kNoValue);
  if (response.type == kPolynomial && !has_coefficients(response)) {
    lose("Coefficient", "a polynomial needs all its coefficients");
  }
  return good;
}

// A polynomial without one of its coefficients is another one.
bool ResponseXml::has_coefficients(const Response &response) {
  const SDBlkEntry *entry = shape_of(kPolynomial).repeated.front().field.in(response);
  if (entry == nullptr || entry->count == 0) return false;
  for (std::int32_t i = 0; i < entry->count; ++i) {
    const SDBlkEntry *value = sdblk_entry_at(entry->value.ea[i], entry->def->sub, 0);
    if (value == nullptr || !sdblk_has_value(value)) return false;
  }
  return true;
}

// ---- the element is written ----

void ResponseXml::open() {
  if (!is_open_) values_.xml().start("Response");
  is_open_ = true;
}

void ResponseXml::write() {
  for (const auto &[number, stage] : stages_) {
    if (number < 0 || number == kNoStage) continue;
    if (stage.filter.type == kPolynomial) {
      write_polynomial(number, stage);
    } else {
      if (number == 0 && stage.gain.block != nullptr) write_sensitivity(*stage.gain.block);
      write_stage(number, stage);
    }
  }
  if (is_open_) values_.xml().end();
  is_open_ = false;
  stages_.clear();
}

void ResponseXml::write_sensitivity(const SDBlk &gain) {
  const SDBlk *input = nullptr;
  const SDBlk *output = nullptr;
  for (const auto &[number, stage] : stages_) {
    if (number == 0) continue;
    if (input == nullptr) input = stage.first_input;
    if (stage.last_output != nullptr) output = stage.last_output;
  }
  if (input == nullptr) values_.lose(gain, {&kSensitivityPath, "InputUnits/Name"}, kNoValue);
  if (output == nullptr) values_.lose(gain, {&kSensitivityPath, "OutputUnits/Name"}, kNoValue);
  if (input == nullptr || output == nullptr) return;
  open();
  values_.xml().start("InstrumentSensitivity");
  write_heads({kGainType, &gain, nullptr});
  values_.units("InputUnits", *input, kSensitivityPath);
  values_.units("OutputUnits", *output, kSensitivityPath);
  values_.xml().end();
}

void ResponseXml::begin_stage(std::int32_t number) {
  open();
  values_.xml().start("Stage");
  values_.xml().attribute("number", std::to_string(number));
}

// A polynomial is all of its stage; that of stage 0 is that of the whole response.
void ResponseXml::write_polynomial(std::int32_t number, const Stage &stage) {
  for (const First *other : {&stage.decimation, &stage.gain}) {
    if (other->block == nullptr) continue;
    values_.lose(*other->block, path_of(number, other->type),
                 in_stage(number) + " has a polynomial, beside which there is none");
  }
  if (stage.filter.block == nullptr) return;
  if (number == 0) {
    open();
    write_filter(number, stage.filter);
  } else {
    begin_stage(number);
    write_filter(number, stage.filter);
    values_.xml().end();
  }
}

// A stage without a polynomial.
void ResponseXml::write_stage(std::int32_t number, const Stage &stage) {
  if (number == 0) {
    if (stage.filter.block == nullptr && stage.decimation.block == nullptr) return;
  } else if (stage.gain.type != 0 && stage.gain.block == nullptr) {
    return;  // it would have another gain
  }
  begin_stage(number);
  if (stage.filter.block != nullptr) write_filter(number, stage.filter);
  if (stage.decimation.block != nullptr) write_single(stage.decimation);
  if (number != 0 && stage.gain.block != nullptr) {
    write_single(stage.gain);
  } else {
    write_no_gain(number, stage);
  }
  values_.xml().end();
}

void ResponseXml::write_no_gain(std::int32_t number, const Stage &stage) {
  const char *const element = shape_of(kGainType).element;
  values_.lose(stage.offset, {&kStagePath, element},
               in_stage(number) + " has no gain: 1 at frequency 0 is written");
  values_.xml().start(element);
  values_.xml().element("Value", 1.0);
  values_.xml().element("Frequency", 0.0);
  values_.xml().end();
}

void ResponseXml::write_single(const First &first) {
  values_.xml().start(shape_of(first.type).element);
  write_heads({first.type, first.block, nullptr});
  values_.xml().end();
}

void ResponseXml::write_heads(const Response &response) {
  for (const Head &head : shape_of(response.type).heads) {
    const SDBlkEntry &entry = *head.field.in(response);
    switch (head.kind) {
      case Kind::code:
        values_.xml().element(head.element, text_of(head.codes, entry.value.s));
        break;
      case Kind::real: values_.xml().element(head.element, entry.value.d); break;
      case Kind::integer: values_.xml().element(head.element, std::to_string(entry.value.i)); break;
    }
  }
}

void ResponseXml::write_filter(std::int32_t number, const First &filter) {
  static const ResponseField fir_name(61, "name");
  const XmlPath path = path_of(number, filter.type);
  const Response first = {filter.type, filter.block, nullptr};
  values_.xml().start(path.element);
  if (filter.type == kFir) {
    const SDBlkEntry *name = fir_name.in(first);
    if (name != nullptr && name->value.s[0] != '\0') {
      values_.xml().attribute("name", values_.text(*first.block, *name, path));
    }
  }
  values_.units("InputUnits", *input_of(first), path);
  values_.units("OutputUnits", *output_of(first), path);
  write_heads(first);
  for (const Repeated &repeated : shape_of(filter.type).repeated) {
    Elements elements(values_, repeated, {&path, repeated.element});
    each_part(number, filter, [&](const SDBlk &part) {
      const SDBlkEntry *entry = repeated.field.in({filter.type, &part, nullptr});
      if (entry != nullptr) elements.put(part, *entry);
    });
  }
  values_.xml().end();
}

// Of a split response only the first part is held: all are read again.
void ResponseXml::each_part(std::int32_t number, const First &filter,
                            const std::function<void(const SDBlk &part)> &take) const {
  if (filter.parts == 1) {
    take(*filter.block);
    return;
  }
  std::int64_t left = filter.parts;
  bool found = false;
  const auto take_part = [&](const Response &response, const SDBlk &block) {
    if (stage_of(response) != number) return true;
    // A blockette 60 may name others of the stage before the first part.
    found = found || response.block == &block || response.block == filter.block;
    if (!found) return true;
    take(*response.block);
    return --left > 0;
  };
  read_again_(filter.place, [&](const SDBlk &block) {
    for_each_response(block, [&](const Response &response) { return take_part(response, block); });
    return left > 0;
  });
}

}  // namespace tarvik
