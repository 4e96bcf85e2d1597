#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/NSCalendar.h>
#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
#include <ZEBUtilities/LocalizedDates/DateFormattersPrivate.h>
#include <ZEBUtilities/LocalizedDates/NSDate+ZEBLocalizedAdditions.h>
#include <ZEBUtilities/LocalizedDates/WireDatesPrivate.h>

#include <algorithm>

namespace zeb {

const char* const ZEBDateFormatDidChangeNotification = "ZEBDateFormatDidChangeNotification";

const dispatch_queue_t& _zeb_dateQueue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(
      dispatch_queue_create("NSDate+ZEBLocalizedAdditions"));
  return *queue;
}

namespace {

using detail::DateFormat;
using detail::WireFormat;

/// What the call answers on the date queue.
template <class Call>
auto onDateQueue(const Call& call) {
  decltype(call()) result{};
  dispatch_sync(_zeb_dateQueue(), [&] { result = call(); });
  return result;
}

NSString formatted(const NSDate& date, DateFormat format) {
  if (date.isNil()) return nullptr;
  return onDateQueue([&] { return detail::dateFormatter(format).stringFromDate(date); });
}

NSString formatted(const NSDate& date, WireFormat format) {
  if (date.isNil()) return nullptr;
  return onDateQueue([&] { return detail::wireText(format, date); });
}

}  // namespace

NSString zeb_mediumDateStringNoTime(const NSDate& date) {
  return formatted(date, DateFormat::mediumNoTime);
}

NSString zeb_mediumDateStringNoYear(const NSDate& date) {
  return formatted(date, DateFormat::mediumNoYear);
}

NSString zeb_mediumDateString(const NSDate& date) { return formatted(date, DateFormat::medium); }

NSString zeb_longDateStringWithTime(const NSDate& date) {
  return formatted(date, DateFormat::longWithTime);
}

NSString zeb_longDateStringNoYear(const NSDate& date) {
  return formatted(date, DateFormat::longNoYear);
}

NSString zeb_shortDateString(const NSDate& date) { return formatted(date, DateFormat::shortDate); }

NSString zeb_shortRelativeDateStringWithTime(const NSDate& date) {
  return formatted(date, DateFormat::shortRelativeWithTime);
}

NSString zeb_shortTimeString(const NSDate& date) { return formatted(date, DateFormat::shortTime); }

NSString zeb_longDateString(const NSDate& date) { return formatted(date, DateFormat::longDate); }

NSString zeb_weekdayDateStringWithTime(const NSDate& date) {
  return formatted(date, DateFormat::weekdayWithTime);
}

NSString zeb_APIUTCDateStringWithTime(const NSDate& date) {
  return formatted(date, WireFormat::yearBeforeTime);
}

NSString zeb_APIUTCDateStringWithTimeAndYearAtEnd(const NSDate& date) {
  return formatted(date, WireFormat::yearAtEnd);
}

NSString zeb_RFC1123DateStringWithTime(const NSDate& date) {
  return formatted(date, WireFormat::rfc1123);
}

NSDate zeb_dateWithLongDateString(const NSString& string) {
  if (string.isNil()) return nullptr;
  return onDateQueue(
      [&] { return detail::dateFormatter(DateFormat::longDate).dateFromString(string); });
}

NSDate zeb_dateWithYears(const NSDate& date, std::int64_t years) {
  const Ref<NSCalendar> calendar =
      NSCalendar::calendarWithIdentifier(NSCalendarIdentifierGregorian);
  const Ref<NSDateComponents> components = makeRef<NSDateComponents>();
  // The largest number would mean that no years are to be added.
  components->year = (std::min)(years, NSDateComponentUndefined - 1);
  return calendar->dateByAddingComponents(components, date);
}

NSDate zeb_dateWithYearsFromNow(std::int64_t years) {
  return zeb_dateWithYears(NSDate::date(), years);
}

NSDate zeb_beginningOfDay(const NSDate& date) { return zeb_beginningOfDayFromDate(date); }

NSDate zeb_beginningOfDayFromDate(const NSDate& date) {
  if (date.isNil()) return nullptr;
  return onDateQueue([&] {
    static const detail::NeverDestroyed<Ref<NSCalendar>> calendar(
        NSCalendar::autoupdatingCurrentCalendar());
    constexpr NSCalendarUnit units = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay;
    return (*calendar)->dateFromComponents((*calendar)->components(units, date));
  });
}

bool zeb_isEqualToDateIgnoringTime(const NSDate& date, const NSDate& other) {
  if (date.isNil() || other.isNil()) return false;
  return onDateQueue([&] {
    static const detail::NeverDestroyed<Ref<NSCalendar>> calendar(
        NSCalendar::autoupdatingCurrentCalendar());
    return (*calendar)->isDate_equalToDate(date, other, NSCalendarUnitDay);
  });
}

bool zeb_isToday(const NSDate& date) { return zeb_isEqualToDateIgnoringTime(date, NSDate::date()); }

bool zeb_isTomorrow(const NSDate& date) {
  return zeb_isEqualToDateIgnoringTime(date, zeb_dateTomorrow());
}

bool zeb_isYesterday(const NSDate& date) {
  return zeb_isEqualToDateIgnoringTime(date, zeb_dateYesterday());
}

void zeb_currentLocaleDidChange() {
  dispatch_sync(_zeb_dateQueue(), detail::dropDateFormatters);
  NSNotificationCenter::defaultCenter()->postNotificationName(ZEBDateFormatDidChangeNotification);
}

}  // namespace zeb
