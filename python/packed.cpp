#include "python/packed.h"

#include <cmath>
#include <cstring>
#include <type_traits>
#include <unordered_map>

#include "views/plan.h"
#include "views/time_text.h"

namespace py = pybind11;

// The layout, with numbers as they lie in memory.  A list of fields has one mark for each that is
// there, and kEnd where some are absent.  After the mark kValue stands
//
//     text                    length (4 bytes), bytes
//     integer                 8 bytes; of one that refers, 8 more: number of the defining block
//     real number, time       8 bytes
//     array                   count (4 bytes), elements
//     element that refers     code (4 bytes), number of the defining block (8 bytes)
//     group                   count (4 bytes), lists of fields
namespace tarvik {
namespace {

constexpr std::int64_t kNotDefined = -1;

enum Mark : char { kNull, kValue, kEnd };

// ---- packing ----

class Packer {
 public:
  Packer(const SDBlkVol *vol, TextBuffer *out, std::vector<std::int64_t> *referred)
      : vol_(vol), out_(out), referred_(referred) {}

  void list(const Arr *contents, const Plan &plan);

 private:
  template <typename T>
  void put(T value) {
    static_assert(std::is_arithmetic_v<T>);
    put_bytes(&value, sizeof value);
  }
  void put_bytes(const void *bytes, std::size_t size) {
    char *at = out_->reserve(size);
    std::memcpy(at, bytes, size);
    out_->commit(at + size);
  }
  void put_text(const char *text) {
    const std::size_t size = std::strlen(text);
    put(static_cast<std::uint32_t>(size));
    put_bytes(text, size);
  }
  template <typename T>
  void put_numbers(const T *numbers, std::int32_t count) {
    put(count);
    put_bytes(numbers, static_cast<std::size_t>(count) * sizeof(T));
  }
  void put_reference(std::int64_t number) {
    put(number);
    if (number != kNotDefined) referred_->push_back(number);
  }

  [[nodiscard]] static bool has_value(const SDBlkEntry &entry, Form form);
  [[nodiscard]] std::int64_t definition_of(const SDBlkEntry &entry) const;
  [[nodiscard]] std::int64_t definition_of(const SDBlkFieldDef &def, const SDBlkAbbrRef &ref) const;
  void value(const SDBlkEntry &entry, const Plan::Field &field);

  const SDBlkVol *vol_;
  TextBuffer *out_;
  std::vector<std::int64_t> *referred_;
};

std::int64_t number_of(const SDBlk *definition) {
  return definition == nullptr ? kNotDefined : definition->block_number;
}

// Of a volume that is read strictly, the dictionary knows only the block.
std::int64_t Packer::definition_of(const SDBlkEntry &entry) const {
  return vol_->whole == nullptr ? number_of(entry.ref)
                                : sdblk_definition_number(vol_, entry.definition, 0);
}

std::int64_t Packer::definition_of(const SDBlkFieldDef &def, const SDBlkAbbrRef &ref) const {
  if (vol_->whole == nullptr) return number_of(ref.blk);
  return sdblk_definition_number(vol_, sdblk_definition_of(vol_, def.abbr_key, ref.code), 0);
}

bool Packer::has_value(const SDBlkEntry &entry, Form form) {
  return sdblk_has_value(&entry) && !(form == Form::time && entry.value.d == SDBLK_NO_TIME);
}

void Packer::list(const Arr *contents, const Plan &plan) {
  std::int32_t position = 0;
  for (const Plan::Field &field : plan.fields) {
    const SDBlkEntry *entry = sdblk_entry_at(contents, plan.defs, position++);
    if (entry == nullptr) {  // what follows is absent too
      out_->put(kEnd);
      return;
    }
    const bool there = has_value(*entry, field.form);
    out_->put(there ? kValue : kNull);
    if (there) value(*entry, field);
  }
}

void Packer::value(const SDBlkEntry &entry, const Plan::Field &field) {
  const std::int32_t count = entry.count;
  switch (field.form) {
    case Form::text: put_text(entry.value.s); return;
    case Form::integer:
    case Form::unsigned_integer:
      put(sdblk_integer(&entry));
      if (field.refers) put_reference(definition_of(entry));
      return;
    case Form::real:
    case Form::time: put(entry.value.d); return;
    case Form::texts:
      put(count);
      for (std::int32_t i = 0; i < count; ++i) put_text(entry.value.sa[i]);
      return;
    case Form::reals: put_numbers(entry.value.da, count); return;
    case Form::integers: put_numbers(entry.value.ia, count); return;
    case Form::references:
      put(count);
      for (std::int32_t i = 0; i < count; ++i) {
        put(entry.value.ra[i].code);
        put_reference(definition_of(*field.def, entry.value.ra[i]));
      }
      return;
    case Form::group:
      put(count);
      for (std::int32_t i = 0; i < count; ++i) list(entry.value.ea[i], field.group.front());
      return;
  }
}

// ---- unpacking ----

// A key as the one Python text that stands for it everywhere.
py::handle key_of(const SDBlkFieldDef &def) {
  static std::unordered_map<const SDBlkFieldDef *, PyObject *> keys;
  PyObject *&key = keys[&def];
  if (key == nullptr) key = PyUnicode_InternFromString(def.key);
  if (key == nullptr) throw py::error_already_set();
  return key;
}

// 64-bit microseconds since 1970 as numpy.datetime64; None for years that do not have four digits
// or are before the first.
py::object time_of(double epoch) {
  constexpr Ticks kFirst = -62135596800 * kTicksPerSecond;  // 0001-01-01
  constexpr Ticks kEnd = 253402300800 * kTicksPerSecond;    // 10000-01-01
  constexpr double kMost = 1e12;                            // no time of a volume is near
  constexpr std::int64_t kMicroseconds = 1000000 / kTicksPerSecond;
  static const py::handle datetime64 =
      py::object(py::module_::import("numpy").attr("datetime64")).release();
  const Ticks ticks = std::fabs(epoch) < kMost ? ticks_of(epoch) : kEnd;
  if (ticks < kFirst || ticks >= kEnd) return py::none();
  return datetime64(ticks * kMicroseconds, "us");
}

class Unpacker {
 public:
  explicit Unpacker(std::string_view packed) : rest_(packed) {}

  Unpacked list(const Plan &plan);
  void end() const {
    if (!rest_.empty()) throw damaged();
  }

 private:
  static py::value_error damaged() { return py::value_error("damaged state of a sdblk.Block"); }

  std::string_view take(std::size_t size) {
    if (size > rest_.size()) throw damaged();
    const std::string_view bytes = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return bytes;
  }
  template <typename T>
  T get() {
    T value;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return value;
  }
  py::str text() { return text_of(take(get<std::uint32_t>())); }

  // How many elements follow, of which each takes a byte at least.
  std::size_t count() {
    const auto count = get<std::int32_t>();
    if (count < 0 || static_cast<std::size_t>(count) > rest_.size()) throw damaged();
    return static_cast<std::size_t>(count);
  }
  template <typename Get>
  py::list elements(Get get_one) {
    py::list list(count());
    for (std::size_t i = 0; i < list.size(); ++i) list[i] = get_one();
    return list;
  }
  template <typename T>
  py::array numbers() {
    const std::size_t size = count();
    const std::string_view bytes = take(size * sizeof(T));
    py::array_t<T> array(static_cast<py::ssize_t>(size));
    std::memcpy(array.mutable_data(), bytes.data(), bytes.size());
    return array;
  }

  py::object value(const Plan::Field &field, Unpacked *out);
  py::object integer(const Plan::Field &field, Unpacked *out);
  py::object references(const Plan::Field &field, Unpacked *out);
  py::object repetition(const Plan &plan);
  py::object reference() {
    const auto number = get<std::int64_t>();
    return number == kNotDefined ? py::object(py::none()) : py::int_(number);
  }

  std::string_view rest_;
};

Unpacked Unpacker::list(const Plan &plan) {
  Unpacked out;
  for (const Plan::Field &field : plan.fields) {
    const char mark = get<char>();
    if (mark == kEnd) break;
    out.fields[key_of(*field.def)] = mark == kValue ? value(field, &out) : py::none();
  }
  return out;
}

py::object Unpacker::integer(const Plan::Field &field, Unpacked *out) {
  py::int_ code(get<std::int64_t>());
  if (field.refers) out->refs[key_of(*field.def)] = reference();
  return code;
}

py::object Unpacker::references(const Plan::Field &field, Unpacked *out) {
  py::list numbers;
  py::list codes = elements([&]() -> py::object {
    const auto code = get<std::int32_t>();
    numbers.append(reference());
    return code == SDBLK_NO_CODE ? py::object(py::none()) : py::int_(code);
  });
  out->refs[key_of(*field.def)] = std::move(numbers);
  return codes;
}

// A repetition's references are its last key.
py::object Unpacker::repetition(const Plan &plan) {
  Unpacked one = list(plan);
  if (!one.refs.empty()) one.fields["refs"] = std::move(one.refs);
  return std::move(one.fields);
}

py::object Unpacker::value(const Plan::Field &field, Unpacked *out) {
  switch (field.form) {
    case Form::text: return text();
    case Form::integer:
    case Form::unsigned_integer: return integer(field, out);
    case Form::real: return py::float_(get<double>());
    case Form::time: return time_of(get<double>());
    case Form::texts: return elements([&] { return text(); });
    case Form::reals: return numbers<double>();
    case Form::integers: return numbers<std::int32_t>();
    case Form::references: return references(field, out);
    case Form::group: return elements([&] { return repetition(field.group.front()); });
  }
  throw damaged();
}

}  // namespace

void pack_fields(const SDBlk &block, TextBuffer *out, std::vector<std::int64_t> *referred) {
  if (block.blkdef == nullptr) return;
  Packer(block.vol, out, referred).list(block.contents, plan_of(*block.blkdef));
}

Unpacked unpack_fields(const SDBlkDef &def, std::string_view packed) {
  Unpacker unpacker(packed);
  Unpacked out = unpacker.list(plan_of(def));
  unpacker.end();
  return out;
}

py::str text_of(std::string_view bytes) {
  const auto size = static_cast<py::ssize_t>(bytes.size());
  PyObject *text = PyUnicode_DecodeUTF8(bytes.data(), size, nullptr);
  if (text == nullptr && PyErr_ExceptionMatches(PyExc_UnicodeDecodeError) != 0) {
    PyErr_Clear();
    text = PyUnicode_DecodeLatin1(bytes.data(), size, nullptr);
  }
  if (text == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(text);
}

}  // namespace tarvik
