#include "seed/whole/findings.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace tarvik {
namespace {

constexpr std::array<const char *, SDBLK_CAUSES> kNames = {
    "padding", "garbage", "prefix", "length", "unconfirmed", "cut",
    "order",   "chain",   "value",  "short",  "again"};
constexpr std::size_t kTextBytes = 256;

const char *text_of_skip(SDBlkCause cause) {
  if (cause == SDBLK_SKIP_PADDING) return "padding between records";
  if (cause == SDBLK_SKIP_GARBAGE) return "no record header begins here";
  return "no blockette begins here; the rest of the record is passed over";
}

void count(SDBlkWhole *whole, SDBlkCause cause, std::int64_t length) {
  SDBlkWholeCounts &counts = whole->counts;
  ++counts.findings[cause];
  (cause == SDBLK_SKIP_PADDING ? counts.padding_bytes : counts.skipped_bytes) += length;
}

}  // namespace

void report_skip(SDBlkWhole *whole, SDBlkCause cause, std::int64_t offset, std::int64_t length) {
  count(whole, cause, length);
  if (whole->options.report == nullptr) return;
  const SDBlkFinding finding = {cause, offset, length, -1, nullptr, text_of_skip(cause)};
  whole->options.report(whole->options.context, &finding);
}

void report_note(SDBlkWhole *whole, SDBlkCause cause, std::int64_t offset, std::int64_t block,
                 const char *field, const char *format, ...) {
  count(whole, cause, 0);
  if (whole->options.report == nullptr) return;
  std::array<char, kTextBytes> text;
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  const SDBlkFinding finding = {cause, offset, 0, block, field, text.data()};
  whole->options.report(whole->options.context, &finding);
}

}  // namespace tarvik

const char *sdblk_cause_name(SDBlkCause cause) {
  const auto at = static_cast<std::size_t>(cause);
  return at < tarvik::kNames.size() ? tarvik::kNames[at] : "";
}
