#include <Foundation/NSURL.h>
#include <Foundation/URLStorage.h>

#include <algorithm>
#include <string_view>

namespace zeb {

namespace {

bool mayStandInURL(char16_t unit) noexcept {
  constexpr std::u16string_view forbidden = u"\"<>\\^`{|}";
  return unit > 0x20 && unit != 0x7F && forbidden.find(unit) == std::u16string_view::npos;
}

}  // namespace

NSURL NSURL::URLWithString(const NSString& text) {
  if (text.length() == 0) return nullptr;
  const std::u16string units = text.utf16();
  if (!std::all_of(units.begin(), units.end(), mayStandInURL)) return nullptr;
  return NSURL(Value(adoptStorage, new detail::URLStorage(text.copy())));
}

NSString NSURL::absoluteString() const {
  return isNil() ? NSString() : storageAs<detail::URLStorage>()->text;
}

}  // namespace zeb
