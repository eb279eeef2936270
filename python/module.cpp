// The module sdblk._sdblk.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "python/block.h"
#include "python/lines.h"
#include "python/log.h"
#include "python/packed.h"
#include "python/records.h"
#include "python/volume.h"

namespace py = pybind11;
using namespace tarvik;

namespace {

// ---- errors ----

void set_error(const ReadError &error) {
  const py::object type = py::module_::import("sdblk._error").attr("Error");
  const py::object offset = error.offset ? py::object(py::int_(*error.offset)) : py::none();
  const py::object file = name_of(error.file);
  py::list messages;
  for (const std::string &line : error.messages) messages.append(text_of(line));
  const py::object made = type(text_of(error.text), offset, std::move(messages), file);
  PyErr_SetObject(type.ptr(), made.ptr());
}

void translate(std::exception_ptr pointer) {
  try {
    if (pointer) std::rethrow_exception(std::move(pointer));
  } catch (const ReadError &error) {
    set_error(error);
  }
}

// ---- the catalogue ----

py::object text_or_none(const char *text) {
  return text == nullptr ? py::object(py::none()) : py::str(text);
}

py::tuple rows_of(std::int32_t count, const SDBlkFieldDef *fields) {
  py::tuple rows(static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) {
    const SDBlkFieldDef &def = fields[i];
    const char stype = static_cast<char>(def.stype);
    rows[static_cast<std::size_t>(i)] = py::make_tuple(
        def.key, def.title, def.description, py::str(&stype, stype == '\0' ? 0U : 1U), def.width,
        def.format, def.kind, text_or_none(def.number_entry), text_or_none(def.abbr_key),
        rows_of(def.nsub, def.sub));
  }
  return rows;
}

py::tuple catalogue() {
  py::tuple rows(SEED_BLKDEFS_COUNT);
  for (std::size_t i = 0; i < SEED_BLKDEFS_COUNT; ++i) {
    const SDBlkDef &def = seed_blkdefs[i];
    rows[i] = py::make_tuple(def.type, def.name, def.description, def.rectypes,
                             rows_of(def.nfields, def.fields));
  }
  return rows;
}

// ---- blocks ----

py::object name_of_type(const Block &block) {
  return block.definition() == nullptr ? py::object(py::none()) : py::str(block.definition()->name);
}

py::object sequence_of(const Block &block) {
  const std::int32_t sequence = block.head().sequence;
  return sequence < 0 ? py::object(py::none()) : py::int_(sequence);
}

py::str letter_of(const Block &block) { return text_of({&block.head().record_type, 1}); }

py::object order_of(const Block &block) {
  return block.head().is_data ? py::object(py::bool_(block.head().big_endian)) : py::none();
}

py::str shown(const Block &block) {
  return py::str("<sdblk.Block {} {!r}, number {}, at {}>")
      .format(block.head().type, name_of_type(block), block.head().number, block.head().offset);
}

py::object get_item(Block &block, const py::str &key) {
  if (!block.fields().contains(key)) throw py::key_error(std::string(key));
  return block.fields()[key];
}

py::object get_or(Block &block, const py::object &key, py::object other) {
  return block.fields().contains(key) ? py::object(block.fields()[key]) : std::move(other);
}

// One call a member: a list, however long.
void add_block(py::module_ *module) {  // NOLINT(readability-function-size)
  py::class_<Block, BlockPtr> block(
      *module, "Block",
      "One block of a volume: a control blockette, a data record, or a data blockette of a\n"
      "record.\n\n"
      "It owns all it holds, so it can be kept after its volume, pickled and sent to another\n"
      "process.  It is a mapping of its fields, from key to value, in the order of the\n"
      "catalogue; a field for which the block has no bytes is absent.  Values:\n\n"
      "    text                str\n"
      "    integer, code       int, or None where the field has no readable value\n"
      "    real number         float, or None\n"
      "    time                numpy.datetime64 in microseconds, UTC, or None\n"
      "    array of numbers    numpy array of float64 (of int32 for integers), one dimension;\n"
      "                        an element without a value is NaN\n"
      "    array of texts      list of str\n"
      "    array of codes      list of int or None\n"
      "    group               list of dict, one a repetition, with these values in turn and,\n"
      "                        where there are references, the key \"refs\" last; see refs\n\n"
      "Units are those of the catalogue.");
  block.def_property_readonly(
      "type", [](const Block &b) { return b.head().type; },
      "SEED blockette type; 99 for a data record.");
  block.def_property_readonly("name", name_of_type,
                              "The type's name, or None for one that the catalogue does not have.");
  block.def_property_readonly(
      "number", [](const Block &b) { return b.head().number; },
      "The block's number in its volume, from 0; of a data blockette, its record's.");
  block.def_property_readonly(
      "sequence", sequence_of,
      "The number of the record in which the block starts, or None without one.");
  block.def_property_readonly("record_type", letter_of,
                              "The letter of that record: V, A, S, T, D, R, Q or M.");
  block.def_property_readonly(
      "record_offset", [](const Block &b) { return b.head().record_offset; },
      "Where that record starts, bytes from the start of the volume.");
  block.def_property_readonly(
      "offset", [](const Block &b) { return b.head().offset; },
      "Where the block starts, bytes from the start of the volume.");
  block.def_property_readonly(
      "length", [](const Block &b) { return b.head().length; },
      "Bytes: of a control blockette as it states, of a data record the record's, of a data\n"
      "blockette up to the next one of the record.");
  block.def_property_readonly(
      "big_endian", order_of,
      "Whether binary fields have the high byte first; None for a control blockette.");
  block.def_property_readonly(
      "raw", [](const Block &b) { return py::bytes(b.raw().data(), b.raw().size()); },
      "The block's bytes, as many as are there: of a control blockette from its type on, of a\n"
      "data record all of it with header and samples.");
  block.def_property_readonly(
      "fields", [](Block &b) { return b.fields(); },
      "The fields as a dict, the same one each time.");
  block.def_property_readonly(
      "refs", [](Block &b) { return b.refs(); },
      "For each field with a code that refers to an abbreviation: the number of the block that\n"
      "defines the code, or None; of an array a list of these.  The same dict each time.");
  block.def_property_readonly(
      "chain", [](const Block &b) { return b.chain(); },
      "List of the data blockettes of a record, in their order; empty for any other block.");
  block.def(
      "ref", &Block::ref, py::arg("key"),
      "The block that the code in a field refers to, or None where the code has no value or is\n"
      "not defined; for an array of codes a list of these.  A field of a repetition has the key\n"
      "\"stages[2].resps\".  Raises KeyError for a field that is absent.");
  block.def("__getitem__", get_item, py::arg("key"));
  block.def("get", get_or, py::arg("key"), py::arg("default") = py::none(),
            "The value of a field, or default where it is absent.");
  block.def("__contains__",
            [](Block &b, const py::object &key) { return b.fields().contains(key); });
  block.def("__iter__", [](Block &b) { return py::iter(b.fields()); });
  block.def("__len__", [](Block &b) { return b.fields().size(); });
  block.def("__bool__", [](const Block &) { return true; });
  block.def(
      "keys", [](Block &b) { return b.fields().attr("keys")(); }, "The keys of the fields.");
  block.def(
      "values", [](Block &b) { return b.fields().attr("values")(); }, "The values of the fields.");
  block.def(
      "items", [](Block &b) { return b.fields().attr("items")(); },
      "The fields as pairs of key and value.");
  block.def("__repr__", shown);
  block.def(py::pickle([](const Block &b) { return b.state(); }, &Block::from_state));
}

// ---- volumes ----

std::string shown_volume(const Volume &volume) {
  const py::object name = volume.name();
  return "<sdblk.Volume " + (name.is_none() ? "of bytes" : py::repr(name).cast<std::string>()) +
         ">";
}

std::unique_ptr<Volume> open_volume(const py::object &source, bool strict,
                                    std::int32_t record_length) {
  return std::make_unique<Volume>(source, record_length, strict);
}

void add_volume(py::module_ *module) {
  py::class_<Volume> volume(
      *module, "Volume",
      "An open volume: an iterator over its blocks, once from start to end, and a context\n"
      "manager that closes it.\n\n"
      "The interpreter's lock is released while blocks are read, some at a time, so threads read\n"
      "different volumes at once.  One volume serves one thread at a time; a second one gets\n"
      "sdblk.Error.  skips, notes, counts and messages tell of what was read so far, which can\n"
      "be a little ahead of the block handed out last; after the last one they are complete.");
  volume.def("__iter__", [](py::object self) { return self; });
  volume.def("__next__", &Volume::next, "The next block.");
  volume.def("__enter__", [](py::object self) { return self; });
  volume.def("__exit__", [](Volume &self, const py::args &) { self.close(); });
  volume.def("close", &Volume::close,
             "Closes the file or lets go of the buffer.  Blocks, skips, notes and counts stay.");
  volume.def("__repr__", shown_volume);
  volume.def_property_readonly("closed", &Volume::is_closed);
  volume.def_property_readonly("file", &Volume::name, "The path as given, or None of a buffer.");
  volume.def_property_readonly("strict", &Volume::is_strict);
  volume.def_property_readonly(
      "skips", &Volume::skips,
      "What was passed over: list of dict with offset and length (bytes) and why: \"padding\",\n"
      "\"garbage\" or \"prefix\".  Empty in strict reading.");
  volume.def_property_readonly(
      "notes", &Volume::notes,
      "What could not be taken at its word: list of dict with why (\"length\", \"unconfirmed\",\n"
      "\"cut\", \"order\", \"chain\", \"value\", \"short\", \"again\"), offset (bytes, of the "
      "block or\n"
      "record), block (its number; not of a record's own), field (its path; only of values and\n"
      "short arrays) and text.  Empty in strict reading.");
  volume.def_property_readonly(
      "counts", &Volume::counts,
      "dict of records, blocks, counts (blocks by the letter of their record, \"U\" for unknown\n"
      "types), sequence_breaks, padding_bytes, skipped_bytes and notes.  Strict reading counts\n"
      "only blocks, in all and by letter.");
  volume.def_property_readonly("messages", &Volume::messages,
                               "What the library said: list of str, warnings of strict reading.");

  module->def(
      "open", open_volume, py::arg("source"), py::kw_only(), py::arg("strict") = false,
      py::arg("record_length") = 4096,
      "Opens a volume.\n\n"
      "source is a path (str or os.PathLike) or an object with bytes (bytes, bytearray, mmap,\n"
      "...), which is held until the volume is closed.  It is read whole: to its last byte,\n"
      "whatever it holds.  With strict=True the first fault ends the run with sdblk.Error, and a\n"
      "field that is blank reads as 0.  record_length is the record length to try first, in\n"
      "bytes, a power of two from 64 to 131072.\n\n"
      "Raises sdblk.Error when it cannot be opened.");
}

}  // namespace

PYBIND11_MODULE(_sdblk, module) {
  module.doc() = "Reads SEED volumes; the package sdblk is what programs import.";
  sdblk_blkdefs_init();
  py::register_exception_translator(translate);
  module.attr("__version__") = TARVIK_VERSION;
  module.def("catalogue", catalogue, "The definitions as tuples.");
  add_block(&module);
  add_volume(&module);
  add_lines(&module);
  add_records(&module);
}
