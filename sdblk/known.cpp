#include "sdblk/known.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>

#include "sdblk/line_reader.h"
#include "sdblk/line_scan.h"
#include "views/json.h"

namespace tarvik {

namespace {

constexpr std::int64_t kGone = -1;
constexpr std::size_t kFirstSlots = 1024;

// A path as the lines say it: bytes that are no UTF-8 are Latin-1.
std::string text_of(const std::string &path) {
  if (is_utf8(path)) return path;
  std::string text;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) text += static_cast<char>(0xC0U | byte >> 6);
    text += byte >= 0x80 ? static_cast<char>(0x80U | (byte & 0x3FU)) : c;
  }
  return text;
}

// The other way: the bytes of a text that may have been made from Latin-1, else the text itself.
std::string bytes_of(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x80) {
      bytes += text[i];
    } else if ((byte == 0xC2 || byte == 0xC3) && i + 1 < text.size()) {
      bytes +=
          static_cast<char>((byte & 0x03U) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3FU));
    } else {
      return std::string(text);
    }
  }
  return bytes;
}

// Only what is certain: a path that cannot be looked at may be there.
bool is_no_file(const std::string &path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) == 0) return !S_ISREG(status.st_mode);
  return errno == ENOENT || errno == ENOTDIR;
}

bool lies_under(std::string_view name, const std::string &folder) {
  const std::string text = text_of(folder) + "/";
  return name.starts_with(text);
}

// The members of a line that tell which file it is about.
struct Facts {
  std::string name;
  std::string time;
  std::int64_t bytes = kGone;
  bool is_gone = false;
};

// False for a line of another kind.
bool read_facts(std::string_view line, Facts *facts) {
  LineScan scan(line);
  LineScan::Member member;
  int missing = 4;
  bool has_name = false;
  while (missing > 0 && scan.next(&member)) {
    if (member.key == "kind") {
      facts->is_gone = member.value == R"("gone")";
      if (!facts->is_gone && member.value != R"("volume")") return false;
      missing -= facts->is_gone ? 3 : 1;
    } else if (member.key == "file") {
      has_name = unquote(member.value, &facts->name);
      if (!has_name) return false;
      --missing;
    } else if (member.key == "bytes") {
      const char *end = member.value.data() + member.value.size();
      if (std::from_chars(member.value.data(), end, facts->bytes).ptr != end) return false;
      --missing;
    } else if (member.key == "modified") {
      facts->time = member.value;
      --missing;
    }
  }
  return missing <= 0 && has_name;
}

}  // namespace

int Known::read(const std::string &path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  LineReader reader(descriptor, '\n');
  std::string_view line;
  while (reader.next(&line)) take_line(line);
  close(descriptor);
  met_ = std::make_unique<std::atomic<bool>[]>(files_.size());
  return reader.error();
}

void Known::take_line(std::string_view line) {
  Facts facts;
  if (!read_facts(line, &facts)) return;
  if (2 * (files_.size() + 1) > slots_.size()) grow();
  std::uint32_t &slot = slots_[slot_of(facts.name)];
  if (slot == 0) {
    files_.push_back(add_texts(facts.name, facts.time));
    slot = static_cast<std::uint32_t>(files_.size());
  }
  File &file = files_[slot - 1];
  if (time_of(file) != facts.time) file = add_texts(facts.name, facts.time);
  file.bytes = facts.is_gone ? kGone : facts.bytes;
}

Known::File Known::add_texts(std::string_view name, std::string_view time) {
  const File file = {texts_.size(), static_cast<std::uint32_t>(name.size()),
                     static_cast<std::uint32_t>(time.size()), kGone};
  texts_ += name;
  texts_ += time;
  return file;
}

// The slot that holds a name, or the free one in which it would stand.
std::size_t Known::slot_of(std::string_view name) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = std::hash<std::string_view>()(name) & mask;
  while (slots_[slot] != 0 && name_of(files_[slots_[slot] - 1]) != name) slot = (slot + 1) & mask;
  return slot;
}

void Known::grow() {
  slots_.assign(slots_.empty() ? kFirstSlots : 2 * slots_.size(), 0);
  for (std::size_t i = 0; i < files_.size(); ++i) {
    slots_[slot_of(name_of(files_[i]))] = static_cast<std::uint32_t>(i + 1);
  }
}

bool Known::holds(const std::string &path) {
  if (slots_.empty()) return false;
  const std::uint32_t slot = slots_[slot_of(text_of(path))];
  if (slot == 0) return false;
  met_[slot - 1].store(true, std::memory_order_relaxed);
  const File &file = files_[slot - 1];
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || status.st_size != file.bytes) return false;
  if (!time_of(file).starts_with('"')) return false;  // a time that has no text
  std::array<char, kTimeRoom> time;
  const char *end = put_json_nanotime(time.data(), status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
  return time_of(file) ==
         std::string_view(time.data(), static_cast<std::size_t>(end - time.data()));
}

bool Known::is_gone(const File &file, const std::vector<std::string> &folders) const {
  if (file.bytes == kGone) return false;
  const std::string_view name = name_of(file);
  const bool is_under = std::any_of(folders.begin(), folders.end(), [name](const auto &folder) {
    return lies_under(name, folder);
  });
  return is_under && is_no_file(std::string(name)) && is_no_file(bytes_of(name));
}

void Known::for_each_gone(const std::vector<std::string> &folders,
                          const std::function<void(std::string_view name)> &call) const {
  for (std::size_t i = 0; i < files_.size(); ++i) {
    if (!met_[i] && is_gone(files_[i], folders)) call(name_of(files_[i]));
  }
}

}  // namespace tarvik
