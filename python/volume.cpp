#include "python/volume.h"

#include <string_view>
#include <utility>

#include "python/packed.h"

namespace py = pybind11;

namespace tarvik {

std::string path_of(const py::object &source) {
  PyObject *bytes = nullptr;
  if (PyUnicode_FSConverter(source.ptr(), &bytes) == 0) throw py::error_already_set();
  return py::reinterpret_steal<py::bytes>(bytes);
}

py::object name_of(const std::string &path) {
  if (path.empty()) return py::none();
  return py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<py::ssize_t>(path.size())));
}

void check_record_length(std::int32_t bytes) {
  if (bytes < 64 || bytes > 131072 || (bytes & (bytes - 1)) != 0) {
    throw py::value_error("record_length is a power of two from 64 to 131072");
  }
}

// ---- Origin ----

Origin::Origin(const py::object &source, std::int32_t record_length, bool strict) {
  check_record_length(record_length);
  material_.record_length = record_length;
  material_.strict = strict;
  if (PyObject_CheckBuffer(source.ptr()) == 0) {
    material_.path = path_of(source);
    return;
  }
  buffer_.emplace();
  if (PyObject_GetBuffer(source.ptr(), &*buffer_, PyBUF_SIMPLE) != 0) {
    buffer_.reset();
    throw py::error_already_set();
  }
  material_.bytes = buffer_->buf == nullptr ? "" : buffer_->buf;
  material_.size = buffer_->len;
}

void Origin::release() {
  if (buffer_) PyBuffer_Release(&*buffer_);
  buffer_.reset();
}

// ---- Volume ----

class Volume::Use {
 public:
  explicit Use(Volume *volume) : volume_(volume) {
    if (volume->busy_) {
      throw ReadError{
          "another thread is reading the volume", {}, {}, volume->origin_.material().path};
    }
    volume->busy_ = true;
  }
  ~Use() { volume_->busy_ = false; }
  Use(const Use &) = delete;
  Use &operator=(const Use &) = delete;

 private:
  Volume *volume_;
};

Volume::Volume(const py::object &source, std::int32_t record_length, bool strict)
    : origin_(source, record_length, strict) {
  const py::gil_scoped_release unlocked;
  reader_.emplace(origin_.material());
}

void Volume::read() {
  try {
    const py::gil_scoped_release unlocked;
    reader_->read(&queue_);
  } catch (ReadError &error) {
    failure_ = std::move(error);
  }
}

BlockPtr Volume::next() {
  const Use use(this);
  if (closed_) throw ReadError{"the volume is closed", {}, {}, origin_.material().path};
  if (queue_.empty() && !failure_) read();
  if (queue_.empty()) {
    if (failure_) throw *std::exchange(failure_, std::nullopt);
    throw py::stop_iteration();
  }
  BlockPtr block = std::move(queue_.front());
  queue_.pop_front();
  return block;
}

void Volume::close() {
  const Use use(this);
  release();
}

void Volume::release() {
  if (closed_) return;
  closed_ = true;
  queue_.clear();
  if (reader_) reader_->close();
  origin_.release();
}

py::list Volume::skips() {
  const Use use(this);
  py::list list;
  for (const Finding &finding : reader_->findings()) {
    if (finding.cause > SDBLK_SKIP_PREFIX) continue;
    py::dict skip;
    skip["offset"] = finding.offset;
    skip["length"] = finding.length;
    skip["why"] = sdblk_cause_name(finding.cause);
    list.append(std::move(skip));
  }
  return list;
}

py::list Volume::notes() {
  const Use use(this);
  py::list list;
  for (const Finding &finding : reader_->findings()) {
    if (finding.cause <= SDBLK_SKIP_PREFIX) continue;
    py::dict note;
    note["why"] = sdblk_cause_name(finding.cause);
    note["offset"] = finding.offset;
    if (finding.block >= 0) note["block"] = finding.block;
    if (finding.field) note["field"] = text_of(*finding.field);
    note["text"] = text_of(finding.text);
    list.append(std::move(note));
  }
  return list;
}

py::dict Volume::counts() {
  const Use use(this);
  const SDBlkWholeCounts counts = reader_->counts();
  py::dict letters;
  for (const char letter : std::string_view("UVASTDRQM")) {
    letters[py::str(&letter, 1)] = reader_->letters().of(letter);
  }
  std::int64_t notes = 0;
  for (const Finding &finding : reader_->findings()) {
    if (finding.cause > SDBLK_SKIP_PREFIX) ++notes;
  }
  py::dict all;
  all["records"] = counts.records;
  all["blocks"] = counts.blocks;
  all["counts"] = std::move(letters);
  all["sequence_breaks"] = counts.sequence_breaks;
  all["padding_bytes"] = counts.padding_bytes;
  all["skipped_bytes"] = counts.skipped_bytes;
  all["notes"] = notes;
  return all;
}

std::vector<std::string> Volume::messages() {
  const Use use(this);
  return reader_->messages();
}

py::object Volume::name() const { return name_of(origin_.material().path); }

}  // namespace tarvik
