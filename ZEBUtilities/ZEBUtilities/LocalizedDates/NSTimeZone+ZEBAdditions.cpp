#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Text/NSDateFormatter.h>
#include <ZEBUtilities/LocalizedDates/NSTimeZone+ZEBAdditions.h>

namespace zeb {

const dispatch_queue_t& _zeb_timezoneQueue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(
      dispatch_queue_create("NSTimeZone+ZEBAdditions"));
  return *queue;
}

NSString zeb_utcOffsetOfDate(const NSDate& date, const Ref<NSTimeZone>& timezone) {
  if (date.isNil() || !timezone) return nullptr;
  NSString offset;
  dispatch_sync(_zeb_timezoneQueue(), [&] {
    static const detail::NeverDestroyed<Ref<NSDateFormatter>> slocalTimeZoneFormatter([] {
      Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
      formatter->setDateFormat("Z");
      return formatter;
    }());
    (*slocalTimeZoneFormatter)->setTimeZone(timezone);
    offset = (*slocalTimeZoneFormatter)->stringFromDate(date);
  });
  return offset;
}

NSString zeb_utcOffsetFromCurrentTime() {
  return zeb_utcOffsetOfDate(NSDate::date(), NSTimeZone::defaultTimeZone());
}

}  // namespace zeb
