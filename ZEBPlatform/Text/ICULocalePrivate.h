#pragma once

#include <ZEBPlatform/Text/NSLocale.h>
#include <unicode/locid.h>

namespace zeb::detail {

/// The locale for ICU's classes, with another calendar if `calendarIdentifier` is not nil.
/// "en_US_POSIX" for identifiers that ICU cannot take apart, because its formatters read from null
/// with such a locale.
inline icu::Locale icuLocale(const NSLocale& locale, const NSString& calendarIdentifier = nullptr) {
  icu::Locale result(locale.icuName());
  if (result.isBogus()) result = icu::Locale("en_US_POSIX");
  UErrorCode status = U_ZERO_ERROR;
  if (!calendarIdentifier.isNil())
    result.setKeywordValue("calendar", calendarIdentifier.utf8().c_str(), status);
  return result;
}

}  // namespace zeb::detail
