#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNumber.h>

#include <cstdint>

namespace zeb {

// Arithmetic and comparisons of dates that need neither a calendar nor a locale. A nil receiver
// gives nil, false or 0. Any thread.

/// Which ends belong to the span of `zeb_isBetweenBeginDate`.
enum ZEBDateRangeInclusion : std::uint64_t {
  ZEBDateRangeIncludesNone = 0,
  ZEBDateRangeIncludesBegin = 1,
  ZEBDateRangeIncludesEnd = 2,
  ZEBDateRangeIncludesBoth = 3,
};

/// The moment that is `milliseconds` × 0.001 seconds after 1 January 1970 UTC.
NSDate zeb_dateFromMilliseconds(double milliseconds) noexcept;

/// The whole milliseconds since 1 January 1970 UTC, rounded down, as a signed 64-bit integer. A
/// date beyond its range gives the nearest end of the range, and one that is not a number gives 0.
NSNumber zeb_epochMilliseconds(const NSDate& date) noexcept;

/// The date plus `days` × 86400 seconds. These are deliberately not calendar days: across a change
/// to or from daylight-saving time the wall-clock time moves by an hour.
[[nodiscard]] NSDate zeb_dateWithDays(const NSDate& date, std::int64_t days) noexcept;

/// `zeb_dateWithDays` of the current date.
NSDate zeb_dateWithDaysFromNow(std::int64_t days) noexcept;
/// In 86400 seconds, and 86400 seconds ago.
NSDate zeb_dateTomorrow() noexcept;
NSDate zeb_dateYesterday() noexcept;

/// The seconds from `other` to `date`; 0 if either is nil.
NSTimeInterval zeb_timeIntervalSinceDate(const NSDate& date, const NSDate& other) noexcept;

// All of the following compare with `NSDate::compare`, and are false if any date is nil.

bool zeb_isBefore(const NSDate& date, const NSDate& other) noexcept;
bool zeb_isBeforeOrEqualTo(const NSDate& date, const NSDate& other) noexcept;
bool zeb_isAfter(const NSDate& date, const NSDate& other) noexcept;
bool zeb_isAfterOrEqualTo(const NSDate& date, const NSDate& other) noexcept;

/// Whether the date lies between the two others. Other values of `includes` than the four
/// enumerators are not supported; they give false.
bool zeb_isBetweenBeginDate(const NSDate& date, const NSDate& beginDate, const NSDate& endDate,
                            ZEBDateRangeInclusion includes) noexcept;

}  // namespace zeb
