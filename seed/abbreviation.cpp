#include "seed/abbreviation.h"

#include <array>
#include <cstring>

#include "support/arr_impl.h"
#include "support/bounded.h"
#include "support/line.h"

namespace tarvik {

namespace {

constexpr std::size_t kReferenceBuffer = 128;

// The dictionary's name of an abbreviation: "uid:3".
class ReferenceKey {
 public:
  ReferenceKey(const char *key, std::int32_t code) {
    const std::size_t size = std::strlen(key);
    std::array<char, 24> digits;
    const char *end = put_integer(digits.data(), code);
    const auto digits_size = static_cast<std::size_t>(end - digits.data());
    require_fit("sdblk_unstuff_sblk", size + 1 + digits_size, text_.size());
    char *out = put_char(put_text(text_.data(), {key, size}), ':');
    *put_text(out, {digits.data(), digits_size}) = '\0';
  }
  [[nodiscard]] const char *text() const { return text_.data(); }

 private:
  std::array<char, kReferenceBuffer> text_;
};

}  // namespace

SDBlk *referenced_block(const SDBlkVol *vol, const char *abbr_key, std::int32_t code) {
  const Arr *dictionary = vol == nullptr ? nullptr : vol->abbrs;
  return static_cast<SDBlk *>(getarr(dictionary, ReferenceKey(abbr_key, code).text()));
}

int define_abbreviation(SDBlkVol *vol, const char *abbr_key, std::int32_t code) {
  if (vol == nullptr) return 0;
  const ReferenceKey reference(abbr_key, code);
  const char *key = reference.text();
  if (getarr(vol->abbrs, key) != nullptr) {
    elog_log(0, "sdblk_unstuff_sblk: Abbreviation %s already defined.\n", key);
    return -1;
  }
  SDBlk *copy = sdblk_copy(vol->current);
  if (copy != nullptr) {
    copy->next = nullptr;
    void *nothing = nullptr;
    if (arr_set(vol->abbrs, key, copy, &nothing)) return 0;
    sdblk_free(copy);
  }
  elog_log(0, "sdblk_unstuff_sblk: sdblk_copy(abbr_ref) error.\n");
  return -1;
}

}  // namespace tarvik
