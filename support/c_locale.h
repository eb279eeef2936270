// The "C" locale, whatever locale the calling program has set.
#ifndef SUPPORT_C_LOCALE_H_
#define SUPPORT_C_LOCALE_H_

#include <locale.h>

namespace tarvik {

inline locale_t c_locale() noexcept {
  static const locale_t kLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  return kLocale;
}

// The calling thread has it as long as this lives.
class InCLocale {
 public:
  InCLocale() noexcept : before_(uselocale(c_locale())) {}
  ~InCLocale() { uselocale(before_); }
  InCLocale(const InCLocale &) = delete;
  InCLocale &operator=(const InCLocale &) = delete;

 private:
  locale_t before_;
};

}  // namespace tarvik

#endif  // SUPPORT_C_LOCALE_H_
