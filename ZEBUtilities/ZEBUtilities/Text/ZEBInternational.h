#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>

/// The language and country that the user is using, and rectangles mirrored for languages that run
/// from the right. Any thread may call these functions.
namespace zeb {

/// A language code without its region: "en-GB" gives "en", "zh-Hans-CN" gives "zh-Hans", "es-419"
/// gives "es". The region is the first part after the first one that has at least two characters
/// and no lower-case letter; it is removed with everything behind it. A code without such a part
/// is answered unchanged ("zh-Hant", "en-gb"). Exactly "zh-TW" and "zh-HK" give "zh-Hant". Nil for
/// nil.
NSString ZEBLocalizationNormalizedLanguageCodeWithLanguageCode(const NSString& code);

/// Keeps the code, or nil, in a slot of the process. Deliberately nothing reads the slot: the
/// languages below do not follow it. See `NSLocale::setPreferredLanguages`.
void ZEBSetOverrideCurrentLanguageCode(const NSString& code);

/// The first preferred language without its region, or "en" if there is none. Determined at the
/// first use; a later change of the preferred languages is not seen.
NSString ZEBCurrentLanguageCode();
/// The part of `ZEBCurrentLanguageCode` before the first "-", such as "zh" of "zh-Hant".
NSString ZEBCurrentUILanguageCode();
/// The country code of the current locale at the time of the call, such as "AT"; nil if it has
/// none.
NSString ZEBCurrentCountryCode();
/// Whether `ZEBCurrentLanguageCode` is written from the right. That code has no region, so a
/// language that only some regions write from the right, such as "pa-PK", needs its script:
/// "pa-Arab".
bool ZEBIsUsingRTLLanguage();

/// Mirrors the rectangle's horizontal place if the user's language is written from the right;
/// otherwise answers it unchanged. The space that the rectangle is in reaches from 0 to the right
/// edge of `outer`; deliberately the left edge of `outer` is not subtracted. A mirrored rectangle
/// of negative width or height comes back with positive ones.
CGRect YOVCGRectFlipInOuterBoundsIfUsingRTLLanguage(const CGRect& rect, const CGRect& outer);
/// The same in a space that reaches from 0 to `width`.
CGRect YOVCGRectFlipInWidthIfUsingRTLLanguage(const CGRect& rect, CGFloat width);

}  // namespace zeb
