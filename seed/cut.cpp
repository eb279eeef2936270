#include "seed/cut.h"

#include "seed/format.h"
#include "seed/scan.h"
#include "support/bounded.h"
#include "support/line.h"

namespace tarvik {

std::string_view extract(const SDBlkFieldDef &field, Feed *feed) {
  std::string_view rest(feed->cursor,
                        feed->remaining > 0 ? static_cast<std::size_t>(feed->remaining) : 0);
  std::string_view text;
  std::size_t taken = 0;
  switch (field.stype) {
    case 'A':
    case 'D':
    case 'F':
      rest = rest.substr(0, field.width > 0 ? static_cast<std::size_t>(field.width) : 0);
      taken = rest.size();
      text = trimmed_field(rest);
      break;
    case 'B':
      text = rest.substr(0, field.width > 0 ? static_cast<std::size_t>(field.width) : 0);
      taken = text.size();
      break;
    case 'V': {
      const VariableField variable = variable_field(rest);
      text = variable.value;
      taken = variable.consumed;
      break;
    }
    default: return {};
  }
  require_fit("sdblk_unstuff_sblk", text.size(), kFieldTextSize);
  feed->cursor += taken;
  feed->remaining -= static_cast<std::int32_t>(taken);
  return text;
}

}  // namespace tarvik

using namespace tarvik;

int sdblk_parse_sentry(const SDBlkFieldDef *field, const char **cursor, std::int32_t *remaining,
                       char *text) {
  Feed feed = {*cursor, *remaining};
  const std::string_view value = extract(*field, &feed);
  *put_text(text, value) = '\0';
  *cursor = feed.cursor;
  *remaining = feed.remaining;
  return 0;
}
