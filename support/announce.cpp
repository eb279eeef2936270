#include "support/announce.h"

#include <dirent.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "build_contact.h"
#include "build_id.h"
#include "support/bounded.h"
#include "support/c_text.h"
#include "support/elog_impl.h"
#include "support/exec.h"
#include "support/line.h"
#include "support/memory.h"
#include "support/text.h"

using namespace tarvik;

namespace {

constexpr char kRelease[] = "Orvalen Release 5.11 Mac OS X 10.15.6 2022-02-22";
constexpr std::size_t kExtraBuffer = 512;
constexpr std::size_t kAnnouncementBuffer = 1024;
constexpr std::size_t kPathBuffer = 1024;

using TimeText = std::array<char, 32>;

// When a file was changed last, as ctime shows it.  False when that is not known.
bool modification_time(const char *path, TimeText *text) {
  struct stat status = {};
  if (path == nullptr || stat(path, &status) < 0) return false;
  if (ctime_r(&status.st_mtime, text->data()) == nullptr) return false;
  chomp(text->data());
  return true;
}

// The recorded program name, or else the executable's path.
const char *default_name() {
  const char *name = elog_program_name();
  return name != nullptr ? name : getexecname();
}

void log_modification_time(const char *name) {
  const char *path = getexecname();
  TimeText time;
  if (name == nullptr || !modification_time(path, &time)) return;
  elog_notify(0, "    %s <#>\n", time.data());
}

// The time text of the program that a shell would find under the name.
bool found_time(const char *name, TimeText *time) {
  if (name == nullptr) return false;
  char *path = datafile("PATH", name);
  const bool found = modification_time(path, time);
  memory_free(path);
  return found;
}

bool is_entry(std::string_view name) { return name != "." && name != ".."; }

constexpr std::string_view kPatchFolder = "/patched";

bool fits_path(const char *root) { return std::strlen(root) + kPatchFolder.size() < kPathBuffer; }

// What the banner says of the patches: "" or ", 3 patches".  Where their folder's path is too long
// the program ends, within the banner's line.
std::array<char, 32> patch_text() {
  const char *root = std::getenv("ORVALEN");
  if (root != nullptr && !fits_path(root)) {
    elog_commit(put_char(put_text(put_text(elog_reserve(128), "    "), kRelease), ' '));
  }
  const int patches = patch_count();
  std::array<char, 32> text = {};
  if (patches >= 0) std::snprintf(text.data(), text.size(), ", %d patches", patches);
  return text;
}

}  // namespace

void announce(const char *name, const char *extra) {
  if (name == nullptr) name = default_name();
  elog_notify(0, "\n%s %s   %s  <#>", or_empty(name), or_empty(extra), kRelease);
  elog_notify(0, "   %s  <#>", kBuildId);
  log_modification_time(name);
  elog_commandline();
}

const char *announce_str(const char *name, const char *extra) {
  static char announcement[kAnnouncementBuffer];
  static char *command_line = nullptr;
  if (name == nullptr) name = default_name();
  TimeText time = {};
  const bool timed = found_time(name, &time);
  memory_free(command_line);
  command_line = elog_commandline_str();
  const int size =
      std::snprintf(announcement, sizeof announcement, "\n%s %s   %s  <#>\n   %s  <#>\n%s%s%s%s",
                    or_empty(name), or_empty(extra), kRelease, kBuildId, timed ? "   " : "",
                    time.data(), timed ? " <#>\n" : "", or_empty(command_line));
  require_fit("announce_str", static_cast<std::size_t>(size), sizeof announcement);
  return announcement;
}

void banner(const char *name, const char *extra) {
  if (name == nullptr || name[0] == '\0') name = default_name();
  elog_notify(0, "\n%s %.*s <#>\n", or_empty(name), static_cast<int>(kExtraBuffer - 1),
              or_empty(extra));
  log_modification_time(name);
  elog_notify(0,
              "    %s %s <#>\n    %s  <#>\n"
              "\n    %s\n\n    %s\n    %s\n\n    Please report problems to %s\n\n",
              kRelease, patch_text().data(), kBuildId, kMaker, kAddress1, kAddress2,
              kSupportAddress);
}

int patch_count(void) {
  const char *root = std::getenv("ORVALEN");
  if (root == nullptr) return -1;
  require_fit("patch_count", std::strlen(root) + kPatchFolder.size(), kPathBuffer);
  std::array<char, kPathBuffer> path;
  *put_text(put_text(path.data(), root), kPatchFolder) = '\0';
  DIR *folder = opendir(path.data());
  if (folder == nullptr) return -1;
  int count = 0;
  while (const dirent *entry = readdir(folder)) {
    if (is_entry(entry->d_name)) ++count;
  }
  closedir(folder);
  return count;
}
