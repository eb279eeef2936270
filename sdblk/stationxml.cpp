#include "sdblk/stationxml.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sdblk/epoch_choice.h"
#include "sdblk/file_list.h"
#include "sdblk/files.h"
#include "sdblk/messages.h"
#include "sdblk/output.h"
#include "sdblk/progress.h"
#include "sdblk/run.h"
#include "sdblk/spool.h"
#include "views/stationxml.h"

namespace tarvik {

namespace {

constexpr char kDateVariable[] = "SOURCE_DATE_EPOCH";
constexpr std::int64_t kMostDate = 253402300799;  // the end of year 9999

// The options that are the verb's own.
struct DocumentOptions {
  std::shared_ptr<EpochOptions> epochs = std::make_shared<EpochOptions>();
  XmlLevel level = XmlLevel::response;
  bool strict = false;
};

std::string take_level(const std::string &argument, XmlLevel *level) {
  constexpr std::pair<std::string_view, XmlLevel> kLevels[] = {{"network", XmlLevel::network},
                                                               {"station", XmlLevel::station},
                                                               {"channel", XmlLevel::channel},
                                                               {"response", XmlLevel::response}};
  for (const auto &[name, value] : kLevels) {
    if (argument != name) continue;
    *level = value;
    return {};
  }
  return "'" + argument + "' is none of network, station, channel and response";
}

// The time that the document states; false for a variable that holds none.
bool take_date(std::time_t *date) {
  const char *text = std::getenv(kDateVariable);
  if (text == nullptr) {
    *date = std::time(nullptr);
    return true;
  }
  const std::string_view all = text;
  std::int64_t seconds = 0;
  const auto [stop, error] = std::from_chars(all.begin(), all.end(), seconds);
  *date = seconds;
  return error == std::errc() && stop == all.end() && seconds >= 0 && seconds <= kMostDate;
}

std::string text_of(const Loss &loss) {
  return loss.volume + ": " + std::to_string(loss.offset) + ": " + loss.element + ": " + loss.text;
}

// One document from all files of a run.
class DocumentRun {
 public:
  DocumentRun(const Options &options, const DocumentOptions &document, std::time_t date)
      : options_(options),
        document_(document),
        xml_(options.view, with(document, date), listener()) {}

  Status make();

 private:
  static StationXmlOptions with(const DocumentOptions &document, std::time_t date) {
    return {*document.epochs, document.level, "sdblk " SDBLK_VERSION, date};
  }
  StationXmlListener listener();
  static Status fail(std::string_view text) {
    complain(text);
    return kFailed;
  }
  void lose_volume(const std::string &name, const std::string &why) {
    complain(name + ": " + why);
    unreadable_ = true;
  }
  bool read_files();
  void take(const FolderWalk::Found &found);
  void read(const std::string &name, const std::string &path, bool spooled);
  Status write();
  [[nodiscard]] bool has_failed() const { return unreadable_ || (document_.strict && lossy_); }
  [[nodiscard]] Status status() const {
    if (has_failed()) return kFailed;
    return damaged_ ? kDamaged : kAllRead;
  }

  const Options &options_;
  const DocumentOptions &document_;
  StationXml xml_;
  Output output_;
  Tally tally_{1};
  Spool spool_;  // standard input, until the end
  bool spooled_ = false;
  bool unreadable_ = false;
  bool damaged_ = false;
  bool lossy_ = false;
};

StationXmlListener DocumentRun::listener() {
  StationXmlListener listener;
  listener.lose = [this](const Loss &loss) {
    lossy_ = true;
    say(text_of(loss));
  };
  listener.tell = [](const Loss &loss) { say(text_of(loss)); };
  listener.lose_volume = [this](const std::string &name, const std::string &why) {
    lose_volume(name, why);
  };
  return listener;
}

Status DocumentRun::make() {
  if (!options_.output.empty() && !output_.open(options_.output)) return fail(output_.error());
  std::optional<Progress> progress;
  if (!output_.is_terminal()) progress.emplace(&tally_, list_to_count(options_));
  if (!read_files()) return kFailed;
  if (!xml_.is_empty()) return write();
  complain("there is nothing to be written");
  return has_failed() ? kFailed : kAllRead;
}

bool DocumentRun::read_files() {
  const int list = open_list(options_);
  if (list < 0 && !options_.files_from.empty()) {
    complain(options_.files_from + ": " + error_text(errno));
    return false;
  }
  spooled_ = options_.files_from == kStandardInput;
  FileList files(options_.files, list, list_end(options_));
  FolderWalk::Found found;
  while (files.next(&found)) {
    take(found);
    tally_.count_file(0);
  }
  if (files.list_error() == 0) return true;
  complain(options_.files_from + ": " + error_text(files.list_error()));
  return false;
}

void DocumentRun::take(const FolderWalk::Found &found) {
  if (found.error != 0) {
    lose_volume(found.path, error_text(found.error));
    return;
  }
  if (found.path != kStandardInput) {
    read(found.path, found.path, false);
    return;
  }
  const std::string fault = spooled_ ? "standard input is read already" : spool_.fill();
  spooled_ = true;
  if (!fault.empty()) {
    lose_volume(kStandardInput, fault);
  } else {
    read(kStandardInput, spool_.path(), true);
  }
}

void DocumentRun::read(const std::string &name, const std::string &path, bool spooled) {
  Source source;
  source.name = name;
  source.path = path;
  source.spooled = spooled;
  source.position = tally_.position(0);
  if (xml_.add(source) == Outcome::damaged) damaged_ = true;
}

// Without a document that says all, what was there before stays.
Status DocumentRun::write() {
  const bool written = xml_.write(&output_);
  const bool keeps = document_.strict && lossy_ && !options_.output.empty();
  if (written && keeps) return status();
  if (!output_.finish()) return fail(output_.error());
  return status();
}

Status run_document(const Options &options, const DocumentOptions &document) {
  std::time_t date = 0;
  if (!take_date(&date)) {
    complain(std::string(kDateVariable) + " holds no time");
    return kWrongUsage;
  }
  try {
    return DocumentRun(options, document, date).make();
  } catch (const std::bad_alloc &) {
    complain("out of memory");
    return kFailed;
  }
}

}  // namespace

void declare_stationxml(OptionList *options, Chosen *chosen) {
  const auto document = std::make_shared<DocumentOptions>();
  declare_epoch_choice(options, document->epochs);
  options->argument(
      "--level", "LEVEL",
      [document](const std::string &argument) { return take_level(argument, &document->level); },
      "How far down: network, station, channel or response");
  options->flag("--strict", &document->strict,
                "Fail where the format cannot take something,\n"
                "and leave the FILE of -o as it is");
  chosen->run = [document](const Options &all) { return run_document(all, *document); };
}

}  // namespace tarvik
