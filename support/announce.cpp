#include "support/announce.h"

#include <dirent.h>
#include <sys/stat.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "build_contact.h"
#include "build_id.h"
#include "support/bounded.h"
#include "support/elog.h"
#include "support/exec.h"
#include "support/line.h"
#include "support/memory.h"
#include "support/stream.h"
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

const char *or_empty(const char *text) { return text == nullptr ? "" : text; }

void log_modification_time(const char *name) {
  const char *path = getexecname();
  TimeText time;
  if (name == nullptr || !modification_time(path, &time)) return;
  elog_notify(0, "    %s <#>\n", time.data());
}

// Standard error in its order with the log.
SDBLK_PRINTF(1, 2)
void print_error(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  FormattedText text;
  text.format(format, arguments, 0);
  va_end(arguments);
  stream_write(log_stream, text.view().data(), text.view().size());
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
  print_error("\n%s %.*s <#>\n", or_empty(name), static_cast<int>(kExtraBuffer - 1),
              or_empty(extra));
  log_modification_time(name);
  print_error("    %s ", kRelease);
  const int patches = patch_count();
  if (patches >= 0) print_error(", %d patches", patches);
  print_error(" <#>\n");
  print_error("    %s  <#>\n", kBuildId);
  print_error("\n    %s\n\n    %s\n    %s\n\n", kMaker, kAddress1, kAddress2);
  print_error("    Please report problems to %s\n\n", kSupportAddress);
}

int patch_count(void) {
  constexpr std::string_view kSubfolder = "/patched";
  const char *root = std::getenv("ORVALEN");
  if (root == nullptr) return -1;
  const std::size_t size = std::strlen(root);
  require_fit("patch_count", size + kSubfolder.size(), kPathBuffer);
  std::array<char, kPathBuffer> path;
  *put_text(put_text(path.data(), {root, size}), kSubfolder) = '\0';
  DIR *folder = opendir(path.data());
  if (folder == nullptr) return -1;
  int count = 0;
  while (const dirent *entry = readdir(folder)) {
    if (is_entry(entry->d_name)) ++count;
  }
  closedir(folder);
  return count;
}
