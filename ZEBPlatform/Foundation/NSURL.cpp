#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/URLStoragePrivate.h>

#include <algorithm>
#include <string_view>

namespace zeb {

namespace {

/// White space and control characters beyond ASCII (Unicode's Zs, Zl, Zp and Cc).
bool isWideSpaceOrControl(char16_t unit) noexcept {
  constexpr std::u16string_view spaces = u"\u1680\u2028\u2029\u202F\u205F\u3000";
  return (unit >= 0x7F && unit <= 0xA0) || (unit >= 0x2000 && unit <= 0x200A) ||
         spaces.find(unit) != std::u16string_view::npos;
}

bool mayStandInURL(char16_t unit) noexcept {
  constexpr std::u16string_view forbidden = u"\"<>\\^`{|}";
  return unit > 0x20 && forbidden.find(unit) == std::u16string_view::npos &&
         !isWideSpaceOrControl(unit);
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
