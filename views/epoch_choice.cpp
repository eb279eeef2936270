#include "views/epoch_choice.h"

#include <array>
#include <stdexcept>

namespace tarvik {
namespace {

constexpr int kFlags = REG_EXTENDED | REG_NOSUB;

std::string fault_text(int fault, const regex_t &pattern) {
  std::array<char, 256> text;
  regerror(fault, &pattern, text.data(), text.size());
  return text.data();
}

}  // namespace

std::string pattern_fault(const std::string &pattern) {
  regex_t compiled;
  const int fault = regcomp(&compiled, pattern.c_str(), kFlags);
  if (fault != 0) return fault_text(fault, compiled);
  regfree(&compiled);
  return "";
}

EpochChoice::Patterns::Patterns(const std::vector<std::string> &patterns) {
  compiled_.reserve(patterns.size());
  for (const std::string &pattern : patterns) {
    regex_t compiled;
    const int fault = regcomp(&compiled, pattern.c_str(), kFlags);
    if (fault != 0) {
      release();
      throw std::invalid_argument("'" + pattern + "': " + fault_text(fault, compiled));
    }
    compiled_.push_back(compiled);
  }
}

EpochChoice::Patterns::~Patterns() { release(); }

void EpochChoice::Patterns::release() {
  for (regex_t &pattern : compiled_) regfree(&pattern);
}

bool EpochChoice::Patterns::find_any(const char *text) const {
  for (const regex_t &pattern : compiled_) {
    if (regexec(&pattern, text, 0, nullptr, 0) == 0) return true;
  }
  return false;
}

EpochChoice::EpochChoice(const EpochOptions &options)
    : accept_(options.accept), reject_(options.reject), from_(options.from), to_(options.to) {}

bool EpochChoice::takes_codes(const EpochCodes &codes) {
  if (accept_.is_empty() && reject_.is_empty()) return true;
  name_.assign(codes.network).append("_").append(codes.station);
  name_.append("_").append(codes.channel);
  if (!codes.location.empty()) name_.append("_").append(codes.location);
  if (!accept_.is_empty() && !accept_.find_any(name_.c_str())) return false;
  return !reject_.find_any(name_.c_str());
}

bool EpochChoice::takes(const EpochCodes &codes, const SDBlkEntry *start, const SDBlkEntry *end) {
  if (to_ && start != nullptr && ticks_of(start->value.d) > *to_) return false;
  if (from_ && end != nullptr && ticks_of(end->value.d) < *from_) return false;
  return takes_codes(codes);
}

}  // namespace tarvik
