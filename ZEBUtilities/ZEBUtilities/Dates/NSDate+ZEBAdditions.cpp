#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>

#include <cmath>
#include <optional>

namespace zeb {

namespace {

constexpr NSTimeInterval secondsPerDay = 86400.0;

/// The order of two dates; nothing if either is nil.
std::optional<NSComparisonResult> order(const NSDate& date, const NSDate& other) noexcept {
  if (date.isNil() || other.isNil()) return std::nullopt;
  return date.compare(other);
}

}  // namespace

NSDate zeb_dateFromMilliseconds(double milliseconds) noexcept {
  return NSDate::dateWithTimeIntervalSince1970(milliseconds * 0.001);
}

NSNumber zeb_epochMilliseconds(const NSDate& date) noexcept {
  if (date.isNil()) return nullptr;
  return NSNumber(std::floor(date.timeIntervalSince1970() * 1000)).longLongValue();
}

NSDate zeb_dateWithDays(const NSDate& date, std::int64_t days) noexcept {
  if (date.isNil()) return nullptr;
  return NSDate::dateWithTimeIntervalSinceReferenceDate(
      std::fma(static_cast<double>(days), secondsPerDay, date.timeIntervalSinceReferenceDate()));
}

NSDate zeb_dateWithDaysFromNow(std::int64_t days) noexcept {
  return zeb_dateWithDays(NSDate::date(), days);
}

NSDate zeb_dateTomorrow() noexcept { return zeb_dateWithDaysFromNow(1); }

NSDate zeb_dateYesterday() noexcept { return zeb_dateWithDaysFromNow(-1); }

NSTimeInterval zeb_timeIntervalSinceDate(const NSDate& date, const NSDate& other) noexcept {
  return date.timeIntervalSinceDate(other);
}

bool zeb_isBefore(const NSDate& date, const NSDate& other) noexcept {
  return order(date, other) == NSOrderedAscending;
}

bool zeb_isBeforeOrEqualTo(const NSDate& date, const NSDate& other) noexcept {
  return order(date, other).value_or(NSOrderedDescending) != NSOrderedDescending;
}

bool zeb_isAfter(const NSDate& date, const NSDate& other) noexcept {
  return order(date, other) == NSOrderedDescending;
}

bool zeb_isAfterOrEqualTo(const NSDate& date, const NSDate& other) noexcept {
  return order(date, other).value_or(NSOrderedAscending) != NSOrderedAscending;
}

bool zeb_isBetweenBeginDate(const NSDate& date, const NSDate& beginDate, const NSDate& endDate,
                            ZEBDateRangeInclusion includes) noexcept {
  if (includes > ZEBDateRangeIncludesBoth) return false;
  const bool isAfterBegin = includes & ZEBDateRangeIncludesBegin
                                ? zeb_isAfterOrEqualTo(date, beginDate)
                                : zeb_isAfter(date, beginDate);
  const bool isBeforeEnd = includes & ZEBDateRangeIncludesEnd ? zeb_isBeforeOrEqualTo(date, endDate)
                                                              : zeb_isBefore(date, endDate);
  return isAfterBegin && isBeforeEnd;
}

}  // namespace zeb
