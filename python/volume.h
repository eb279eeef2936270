// Open volumes as Python sees them: sdblk.Volume.
#ifndef PYTHON_VOLUME_H_
#define PYTHON_VOLUME_H_

#include <pybind11/pybind11.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "python/block.h"
#include "python/reader.h"

namespace tarvik {

// What a program hands over to be read: the path of a file or an object with bytes, which is held.
class Origin {
 public:
  Origin(const pybind11::object &source, std::int32_t record_length, bool strict);
  ~Origin() { release(); }
  Origin(const Origin &) = delete;
  Origin &operator=(const Origin &) = delete;

  [[nodiscard]] const Material &material() const { return material_; }
  // Lets go of the bytes.
  void release();

 private:
  Material material_;
  std::optional<Py_buffer> buffer_;
};

// One thread at a time: whoever comes while another one reads gets a ReadError.
class Volume {
 public:
  Volume(const pybind11::object &source, std::int32_t record_length, bool strict);
  ~Volume() { release(); }
  Volume(const Volume &) = delete;
  Volume &operator=(const Volume &) = delete;

  BlockPtr next();
  void close();
  [[nodiscard]] bool is_closed() const { return closed_; }

  pybind11::list skips();
  pybind11::list notes();
  pybind11::dict counts();
  std::vector<std::string> messages();
  [[nodiscard]] pybind11::object name() const;
  [[nodiscard]] bool is_strict() const { return origin_.material().strict; }

 private:
  class Use;

  void read();
  void release();

  Origin origin_;
  std::optional<Reader> reader_;
  std::deque<BlockPtr> queue_;        // read, but not yet handed out
  std::optional<ReadError> failure_;  // comes after them
  bool busy_ = false;
  bool closed_ = false;
};

// A path as bytes, for what takes paths only.
std::string path_of(const pybind11::object &source);

// The same as Python shows it.
pybind11::object name_of(const std::string &path);

// Throws pybind11::value_error unless it is a power of two from 64 to 131072.
void check_record_length(std::int32_t bytes);

}  // namespace tarvik

#endif  // PYTHON_VOLUME_H_
