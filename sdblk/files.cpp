#include "sdblk/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <system_error>

#include "sdblk/file_list.h"

namespace tarvik {

std::string error_text(int error) { return std::generic_category().message(error); }

char list_end(const Options &options) { return options.nul ? '\0' : '\n'; }

int open_list(const Options &options) {
  if (options.files_from == kStandardInput) return STDIN_FILENO;
  return options.files_from.empty() ? -1 : open(options.files_from.c_str(), O_RDONLY | O_CLOEXEC);
}

Progress::List list_to_count(const Options &options) {
  if (options.files_from == kStandardInput) return nullptr;
  return [&options] {
    return std::make_unique<FileList>(options.files, open_list(options), list_end(options));
  };
}

}  // namespace tarvik
