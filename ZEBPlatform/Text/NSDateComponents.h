#pragma once

#include <ZEBPlatform/Memory/NSObject.h>

#include <cstdint>
#include <limits>

namespace zeb {

/// The value of a component that was not set.
inline constexpr std::int64_t NSDateComponentUndefined = (std::numeric_limits<std::int64_t>::max)();

/// The parts of a date in some calendar, or amounts of these parts. Every part is undefined at
/// first. Months and days count from 1, weekdays from 1 for Sunday; eras as in the calendar, for
/// the Gregorian one 0 before and 1 after the year 1. One thread at a time.
class NSDateComponents : public NSObject {
 public:
  std::int64_t era = NSDateComponentUndefined;
  std::int64_t year = NSDateComponentUndefined;
  std::int64_t month = NSDateComponentUndefined;
  std::int64_t day = NSDateComponentUndefined;
  std::int64_t hour = NSDateComponentUndefined;
  std::int64_t minute = NSDateComponentUndefined;
  std::int64_t second = NSDateComponentUndefined;
  std::int64_t nanosecond = NSDateComponentUndefined;
  std::int64_t weekday = NSDateComponentUndefined;
  std::int64_t weekOfYear = NSDateComponentUndefined;
  std::int64_t yearForWeekOfYear = NSDateComponentUndefined;
};

}  // namespace zeb
