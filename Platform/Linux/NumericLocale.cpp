#include <Linux/NumericLocale.h>

#include <locale.h>

namespace zeb {

namespace {

locale_t neutralLocale() noexcept {
  static const locale_t neutral = newlocale(LC_ALL_MASK, "C", nullptr);
  return neutral;
}

}  // namespace

NeutralNumbers::NeutralNumbers() noexcept : before_(uselocale(neutralLocale())) {}

NeutralNumbers::~NeutralNumbers() { uselocale(static_cast<locale_t>(before_)); }

}  // namespace zeb
