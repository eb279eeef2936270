#include "python/lines.h"

#include <pybind11/stl.h>

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "python/log.h"
#include "python/volume.h"
#include "views/blocks.h"
#include "views/segments.h"
#include "views/stations.h"
#include "views/view.h"
#include "views/volumes.h"

namespace py = pybind11;

namespace tarvik {
namespace {

class Collector : public LineSink {
 public:
  bool write(std::string_view lines) override {
    text.append(lines);
    return true;
  }
  std::string text;
};

// A view that reads one file after the other.  For one thread.
class Lines {
 public:
  explicit Lines(std::unique_ptr<View> view) : view_(std::move(view)) {}

  // All lines of a file.
  py::bytes read(const py::object &file) {
    const std::string path = path_of(file);
    std::string text;
    {
      const py::gil_scoped_release unlocked;
      text = read_path(path);
    }
    return py::bytes(text);
  }

 private:
  std::string read_path(const std::string &path) {
    Collector collector;
    LineBuffer out(&collector);
    try {
      const Log log;
      if (view_->read({path, path, false}, &out) == Outcome::unreadable) {
        throw ReadError{view_->error(), {}, {}, path};
      }
      out.flush();
    } catch (const std::bad_alloc &) {
      throw ReadError{"memory ran out", {}, {}, path};
    }
    return std::move(collector.text);
  }

  std::unique_ptr<View> view_;
};

ViewOptions options_of(std::int32_t record_length) {
  check_record_length(record_length);
  ViewOptions options;
  options.record_length = record_length;
  return options;
}

Lines blocks(std::int32_t record_length, bool raw, std::string types,
             std::vector<std::int32_t> blockettes) {
  return Lines(
      make_blocks_view(options_of(record_length), {raw, std::move(types), std::move(blockettes)}));
}

std::optional<Ticks> time_of(const std::optional<std::string> &text) {
  if (!text) return {};
  const std::optional<Ticks> time = parse_time_text(*text);
  if (!time) throw py::value_error("'" + *text + "' is no time (YYYY-MM-DD[THH:MM:SS[.F*]][Z])");
  return time;
}

Lines stations(std::int32_t record_length, std::vector<std::string> accept,
               std::vector<std::string> reject, const std::optional<std::string> &start,
               const std::optional<std::string> &end) {
  return Lines(make_stations_view(options_of(record_length), {std::move(accept), std::move(reject),
                                                              time_of(start), time_of(end)}));
}

}  // namespace

void add_lines(py::module_ *module) {
  py::class_<Lines>(*module, "Lines", "A view: reads files as lines of JSON, one a time.")
      .def("read", &Lines::read, py::arg("file"), "All lines of a file, each ended by LF.");
  module->def("blocks", blocks, py::arg("record_length"), py::arg("raw"), py::arg("types"),
              py::arg("blockettes"), "The view of every block.");
  module->def("stations", stations, py::arg("record_length"), py::arg("accept"), py::arg("reject"),
              py::arg("start"), py::arg("end"), "The view of channel epochs.");
  module->def(
      "volumes",
      [](std::int32_t record_length) {
        return Lines(make_volumes_view(options_of(record_length)));
      },
      py::arg("record_length"), "The view of volumes.");
  module->def(
      "segments",
      [](std::int32_t record_length) {
        return Lines(make_segments_view(options_of(record_length)));
      },
      py::arg("record_length"), "The view of segments.");
}

}  // namespace tarvik
