#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Text/NSLocale.h>

/// Upper and lower case by Unicode's full mappings: "straße" becomes "STRASSE". The language of the
/// locale matters in a few cases, such as the Turkish i; nil means no language. Each function
/// answers the text itself, or a copy of a mutable text, if nothing changes. Nil on nil. Texts
/// whose result would have more than 2^31 - 1 code units stay as they are. Any thread.
namespace zeb {

[[nodiscard]] NSString uppercaseString(const NSString& string);
[[nodiscard]] NSString uppercaseStringWithLocale(const NSString& string,
                                                 const Ref<NSLocale>& locale);
[[nodiscard]] NSString lowercaseString(const NSString& string);
[[nodiscard]] NSString lowercaseStringWithLocale(const NSString& string,
                                                 const Ref<NSLocale>& locale);
/// The first letter of each word in title case and the others in lower case. Words are those of
/// Unicode (UAX #29), so that the letter after an apostrophe stays small.
[[nodiscard]] NSString capitalizedString(const NSString& string);
[[nodiscard]] NSString capitalizedStringWithLocale(const NSString& string,
                                                   const Ref<NSLocale>& locale);

}  // namespace zeb
