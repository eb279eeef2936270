// What the views write of a volume: each line is a JSON object.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "fuzz/harness.h"
#include "views/blocks.h"
#include "views/segments.h"
#include "views/stations.h"
#include "views/volumes.h"

using namespace tarvik;

namespace fuzz {

namespace {

// Views write what many share many times; this much of it is enough for one input.
constexpr std::size_t kWrittenBytes = std::size_t{1} << 22;

// Takes lines and looks at each.  The parser refuses what is not UTF-8, too.
class CheckedLines : public LineSink {
 public:
  bool write(std::string_view lines) override {
    written_ += lines.size();
    while (!lines.empty()) {
      const std::size_t end = lines.find('\n');
      require(end != std::string_view::npos, "views write whole lines");
      const std::string_view line = lines.substr(0, end);
      require(line.starts_with('{'), "a line is an object");
      require(nlohmann::json::accept(line), "a line is JSON in UTF-8");
      lines.remove_prefix(end + 1);
    }
    return written_ < kWrittenBytes;
  }

 private:
  std::size_t written_ = 0;
};

// Bytes as a file with a path.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes) : descriptor_(memfd_create("volume", MFD_CLOEXEC)) {
    require(descriptor_ >= 0, "a file can be made");
    require(::write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "a file can be written");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

std::unique_ptr<View> make_view(std::size_t choice, const ViewOptions &options) {
  switch (choice) {
    case 0: return make_blocks_view(options, {});
    case 1: return make_blocks_view(options, {.raw = true, .types = {}, .blockettes = {}});
    case 2: return make_volumes_view(options);
    case 3: return make_segments_view(options);
    default: return make_stations_view(options, {});
  }
}

}  // namespace

void exercise_views(std::string_view bytes, std::int32_t record_length) {
  constexpr std::size_t kChoices = 5;
  const MemoryFile file(bytes);
  const ViewOptions options = {.record_length = record_length > 0 ? record_length : 4096};
  for (std::size_t choice = 0; choice < kChoices; ++choice) {
    CheckedLines sink;
    LineBuffer lines(&sink);
    const auto view = make_view(choice, options);
    const Source source = {.name = "a \"name\" \xff", .path = file.path(), .spooled = false};
    const Outcome outcome = view->read(source, &lines);
    require(outcome != Outcome::unreadable, "any bytes can be viewed");
    lines.flush();
  }
}

}  // namespace fuzz
