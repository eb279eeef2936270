// Which station and channel epochs of a volume are wanted.
#ifndef VIEWS_EPOCH_CHOICE_H_
#define VIEWS_EPOCH_CHOICE_H_

#include <regex.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "seed/sdblk.h"
#include "views/time_text.h"

namespace tarvik {

struct EpochOptions {
  // POSIX extended regular expressions, searched in "NET_STA_CHA_LO", or "NET_STA_CHA" for an empty
  // location.  An epoch is wanted when at least one of accept is found, or there is none, and none
  // of reject.
  std::vector<std::string> accept;
  std::vector<std::string> reject;
  // Epochs that begin at to or before and end at from or after, or are open.
  std::optional<Ticks> from;
  std::optional<Ticks> to;
};

// What is wrong with a pattern: a text for people; empty for a good one.
std::string pattern_fault(const std::string &pattern);

// The codes of an epoch; a station without a channel has no channel code and no location.
struct EpochCodes {
  std::string_view network;
  std::string_view station;
  std::string_view location;
  std::string_view channel;
};

// For one thread.
class EpochChoice {
 public:
  // Throws std::invalid_argument for a pattern with a fault.
  explicit EpochChoice(const EpochOptions &options);

  // start and end as they stand in the block; null where it has none.
  bool takes(const EpochCodes &codes, const SDBlkEntry *start, const SDBlkEntry *end);

 private:
  // Compiled patterns.
  class Patterns {
   public:
    explicit Patterns(const std::vector<std::string> &patterns);
    ~Patterns();
    Patterns(const Patterns &) = delete;
    Patterns &operator=(const Patterns &) = delete;

    [[nodiscard]] bool is_empty() const { return compiled_.empty(); }
    [[nodiscard]] bool find_any(const char *text) const;

   private:
    void release();

    std::vector<regex_t> compiled_;
  };

  bool takes_codes(const EpochCodes &codes);

  Patterns accept_;
  Patterns reject_;
  std::optional<Ticks> from_;
  std::optional<Ticks> to_;
  std::string name_;  // kept for its memory
};

}  // namespace tarvik

#endif  // VIEWS_EPOCH_CHOICE_H_
