#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

// Dates in the words of the user's locale, in the formats of the service, and by the user's
// calendar.
//
// Formatters are slow to make and not safe on several threads, so the functions keep theirs and use
// them on one serial queue, the date queue. Every function of this header except those for years
// waits for that queue: any thread may call it, but not a block on the date queue itself, which
// would stop the process.
//
// A kept formatter has the locale and the default time zone of its first use. The library does not
// notice changes of the locale: the host reports them with `zeb_currentLocaleDidChange`. It does
// notice changes of the system's time zone (NSSystemTimeZoneDidChangeNotification): all kept
// formatters follow it at once, except those of `zeb_longDateString` and
// `zeb_weekdayDateStringWithTime`. These two deliberately keep their zone until the host reports a
// change of the locale. A zone set with `NSTimeZone::setDefaultTimeZone` reaches the kept
// formatters with the next of these changes.
//
// A nil date, or one that is not a number, gives nil or false. Dates beyond the range of calendars
// are formatted as `NSDateFormatter` describes.

/// Posted on the default centre, without an object, when the texts of the functions below may have
/// changed, so that what shows them should ask again.
extern const char* const ZEBDateFormatDidChangeNotification;

/// The short date, deliberately the same text as `zeb_shortDateString`: "1/31/20".
NSString zeb_mediumDateStringNoTime(const NSDate& date);
/// Day and short month: "Jan 31".
NSString zeb_mediumDateStringNoYear(const NSDate& date);
/// Short date and time: "1/31/20, 9:41 AM".
NSString zeb_mediumDateString(const NSDate& date);
/// "January 31, 2020 at 9:41 AM".
NSString zeb_longDateStringWithTime(const NSDate& date);
/// "January 31".
NSString zeb_longDateStringNoYear(const NSDate& date);
/// "1/31/20".
NSString zeb_shortDateString(const NSDate& date);
/// Short date and time, with today and the days around it in the locale's words: "yesterday, 9:41
/// AM".
NSString zeb_shortRelativeDateStringWithTime(const NSDate& date);
/// "9:41 AM".
NSString zeb_shortTimeString(const NSDate& date);
/// "January 31, 2020". Does not follow the time zone; see above.
NSString zeb_longDateString(const NSDate& date);
/// Weekday and time with two digits of hours: "Friday 09:41 AM". Does not follow the time zone.
NSString zeb_weekdayDateStringWithTime(const NSDate& date);

// The formats of the service. They are in UTC and English for every locale and zone, in the
// Gregorian calendar (the Julian one before 15 October 1582), with the year counted within its era.

/// "Wed Jan 01 2020 00:00:00 +0000".
NSString zeb_APIUTCDateStringWithTime(const NSDate& date);
/// "Wed Jan 01 00:00:00 +0000 2020".
NSString zeb_APIUTCDateStringWithTimeAndYearAtEnd(const NSDate& date);
/// "Wed, 01 Jan 2020 00:00:00 GMT", as in the headers of RFC 1123.
NSString zeb_RFC1123DateStringWithTime(const NSDate& date);

/// Reads what `zeb_longDateString` writes, as the first moment of the day in that formatter's zone;
/// nil for other text.
NSDate zeb_dateWithLongDateString(const NSString& string);

/// The same day and time of day `years` later in the Gregorian calendar and the default time zone;
/// 28 February for 29 February of a leap year. Nil beyond the calendar's range.
[[nodiscard]] NSDate zeb_dateWithYears(const NSDate& date, std::int64_t years);
/// `zeb_dateWithYears` of the current date.
NSDate zeb_dateWithYearsFromNow(std::int64_t years);

/// The first moment of the date's day in the current locale's calendar and the default time zone:
/// midnight, or the end of the gap where clocks skip midnight. It is made of the year, month and
/// day alone, so a date of an earlier era, such as one before the year 1, gives a day of the
/// present era, and nil if that era does not reach so far.
NSDate zeb_beginningOfDay(const NSDate& date);
NSDate zeb_beginningOfDayFromDate(const NSDate& date);

/// Whether both are on the same day in the current locale's calendar and the default time zone.
bool zeb_isEqualToDateIgnoringTime(const NSDate& date, const NSDate& other);
/// Whether the date is on the day of now, or of 86400 seconds later or ago.
bool zeb_isToday(const NSDate& date);
bool zeb_isTomorrow(const NSDate& date);
bool zeb_isYesterday(const NSDate& date);

/// For the host to call after the user's locale has changed: drops all kept formatters, then posts
/// ZEBDateFormatDidChangeNotification on the calling thread.
void zeb_currentLocaleDidChange();

/// The date queue. Its label is "NSDate+ZEBLocalizedAdditions".
const dispatch_queue_t& _zeb_dateQueue();

}  // namespace zeb
