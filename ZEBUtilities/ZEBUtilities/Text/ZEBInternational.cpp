#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/UnicodeProperties.h>
#include <ZEBUtilities/Text/ZEBInternational.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

namespace zeb {

namespace {

struct OverrideSlot {
  detail::Lock lock;
  NSString code ZEB_GUARDED_BY(lock);
};

bool isUpperCase(std::u16string_view units) noexcept {
  for (std::size_t index = 0; index < units.size();) {
    if (unicodeChangesWhenUppercased(detail::nextScalar(units, index))) return false;
  }
  return true;
}

CGRect flipped(const CGRect& rect, CGFloat width) noexcept {
  const auto [x, y] = rect.origin;
  const CGSize size{std::abs(rect.size.width), std::abs(rect.size.height)};
  return {
      {width - std::min(x, x + rect.size.width) - size.width, std::min(y, y + rect.size.height)},
      size};
}

}  // namespace

NSString ZEBLocalizationNormalizedLanguageCodeWithLanguageCode(const NSString& code) {
  if (code == "zh-TW" || code == "zh-HK") return "zh-Hant";
  const std::u16string units = code.utf16();
  const std::u16string_view text = units;
  for (std::size_t dash = text.find(u'-'); dash != text.npos;) {
    const std::size_t next = text.find(u'-', dash + 1);
    const std::u16string_view part = text.substr(dash + 1, next - (dash + 1));
    if (part.size() >= 2 && isUpperCase(part)) return code.substringToIndex(dash);
    dash = next;
  }
  return code;
}

void ZEBSetOverrideCurrentLanguageCode(const NSString& code) {
  static detail::NeverDestroyed<OverrideSlot> slot;
  NSString replaced = code;  // released after the lock
  const detail::LockGuard guard(slot->lock);
  std::swap(slot->code, replaced);
}

NSString ZEBCurrentLanguageCode() {
  static const detail::NeverDestroyed<NSString> code([] {
    const NSString first(NSLocale::preferredLanguages().firstObject());
    return first.isNil() ? NSString("en")
                         : ZEBLocalizationNormalizedLanguageCodeWithLanguageCode(first);
  }());
  return *code;
}

NSString ZEBCurrentUILanguageCode() {
  static const detail::NeverDestroyed<NSString> code([] {
    const NSString language = ZEBCurrentLanguageCode();
    const NSRange dash = language.rangeOfString("-");
    return dash.location == NSNotFound ? language : language.substringToIndex(dash.location);
  }());
  return *code;
}

NSString ZEBCurrentCountryCode() { return NSLocale::currentLocale()->countryCode(); }

bool ZEBIsUsingRTLLanguage() {
  static const bool isUsing = NSLocale::characterDirectionForLanguage(ZEBCurrentLanguageCode()) ==
                              NSLocaleLanguageDirection::rightToLeft;
  return isUsing;
}

CGRect YOVCGRectFlipInOuterBoundsIfUsingRTLLanguage(const CGRect& rect, const CGRect& outer) {
  if (!ZEBIsUsingRTLLanguage()) return rect;
  return flipped(rect, std::max(outer.origin.x, outer.origin.x + outer.size.width));
}

CGRect YOVCGRectFlipInWidthIfUsingRTLLanguage(const CGRect& rect, CGFloat width) {
  return ZEBIsUsingRTLLanguage() ? flipped(rect, width) : rect;
}

}  // namespace zeb
