#include "seed/failure.h"

#include <algorithm>
#include <string_view>

#include "support/elog_impl.h"
#include "support/line.h"
#include "support/memory.h"
#include "support/per_thread.h"

namespace tarvik {

namespace {

struct FailedField {
  const char *key;
  std::int64_t messages;  // registered on this thread when it failed
};
TARVIK_THREAD_LOCAL FailedField failed_field = {};

// The first line of a text, ended by a 0.
template <std::size_t Size>
void copy_line(std::string_view text, char (&copy)[Size]) {
  const std::string_view line = text.substr(0, std::min(text.find('\n'), Size - 1));
  *put_text(copy, line) = '\0';
}

}  // namespace

Attempt::Attempt() noexcept : messages_(elog_registered_ever()), refusals_(memory_refused_ever()) {}

void Attempt::keep(SDBlkVol *vol, std::int64_t offset, std::int64_t block) const noexcept {
  SDBlkFailure &failure = vol->failure;
  failure.code = memory_refused_ever() > refusals_ ? SDBLK_FAILURE_MEMORY : SDBLK_FAILURE_DAMAGED;
  failure.offset = offset;
  failure.block = block;
  const bool in_field = failed_field.key != nullptr && failed_field.messages > messages_;
  copy_line(in_field ? failed_field.key : "", failure.field);
  failed_field = {};
  // The first message of the call says why, those after it where.
  const std::int64_t ago = elog_registered_ever() - messages_;
  copy_line(elog_registered_last(ago), failure.text);
}

void note_failed_field(const char *key) noexcept { failed_field = {key, elog_registered_ever()}; }

}  // namespace tarvik

const SDBlkFailure *sdblk_failure(const SDBlkVol *vol) { return &vol->failure; }
