#include "seed/cut.h"

#include "seed/format.h"
#include "seed/scan.h"
#include "support/bounded.h"
#include "support/line.h"

namespace tarvik {

std::string_view extract(const SDBlkFieldDef &field, Cursor *cursor) {
  std::string_view text;
  switch (field.stype) {
    case 'A':
    case 'D':
    case 'F': text = trimmed_field(cursor->take(field.width)); break;
    case 'B': text = cursor->take(field.width); break;
    case 'V': {
      const VariableField variable = variable_field(cursor->rest());
      text = variable.value;
      cursor->skip(static_cast<std::int64_t>(variable.consumed));
      break;
    }
    default: return {};
  }
  require_fit("sdblk_unstuff_sblk", text.size(), kFieldTextSize);
  return text;
}

}  // namespace tarvik

using namespace tarvik;

int sdblk_parse_sentry(const SDBlkFieldDef *field, const char **cursor, std::int32_t *remaining,
                       char *text) {
  Cursor rest(*cursor, *remaining);
  *put_text(text, extract(*field, &rest)) = '\0';
  *remaining -= static_cast<std::int32_t>(rest.bytes() - *cursor);
  *cursor = rest.bytes();
  return 0;
}
