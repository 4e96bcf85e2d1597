#pragma once

#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/NSTimeZone.h>

namespace zeb::test {

/// The current locale and the default time zone, for as long as it lives.
struct DateSettings {
  DateSettings(const NSString& locale, const NSString& timeZone) {
    NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier(locale));
    NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName(timeZone));
  }
  DateSettings(const DateSettings&) = delete;
  DateSettings& operator=(const DateSettings&) = delete;
  ~DateSettings() {
    NSLocale::setCurrentLocale(nullptr);
    NSTimeZone::setDefaultTimeZone(nullptr);
  }
};

inline NSDate since1970(double seconds) { return NSDate::dateWithTimeIntervalSince1970(seconds); }

}  // namespace zeb::test
