#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <chrono>

namespace zeb {

/// A span of time in seconds.
using NSTimeInterval = double;

/// Seconds from 1 January 1970 UTC to the reference date, 1 January 2001 UTC.
inline constexpr NSTimeInterval NSTimeIntervalSince1970 = 978307200.0;

/// A moment: seconds since the reference date, 1 January 2001 00:00:00 UTC, without leap seconds.
class NSDate : public Value {
 public:
  using SystemClock = std::chrono::system_clock;

  constexpr NSDate() noexcept = default;
  constexpr NSDate(std::nullptr_t) noexcept {}
  /// The value when it is a date, else nil.
  template <detail::ValueBeside<NSDate> Source>
  explicit NSDate(const Source& value) noexcept : Value(value.isDate() ? value : Value()) {}
  NSDate(SystemClock::time_point moment) noexcept
      : NSDate(dateWithTimeIntervalSince1970(
            std::chrono::duration<double>(moment.time_since_epoch()).count())) {}

  static NSDate date() noexcept;
  /// A moment centuries before or after all others, which means "at once" or "never".
  static NSDate distantPast() noexcept;
  static NSDate distantFuture() noexcept;
  static NSDate dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) noexcept;
  static NSDate dateWithTimeIntervalSince1970(NSTimeInterval seconds) noexcept;

  /// 0 for nil.
  NSTimeInterval timeIntervalSinceReferenceDate() const noexcept;
  NSTimeInterval timeIntervalSince1970() const noexcept;
  NSTimeInterval timeIntervalSinceDate(const NSDate& earlier) const noexcept;
  [[nodiscard]] NSDate dateByAddingTimeInterval(NSTimeInterval seconds) const noexcept;

  /// A date that is not-a-number comes before all others, and nil before all dates.
  NSComparisonResult compare(const NSDate& other) const noexcept;

  /// Truncated to the resolution of the clock; the nearest end of its range for moments beyond it.
  SystemClock::time_point timePoint() const noexcept;

  friend std::partial_ordering operator<=>(const NSDate& left, const NSDate& right) noexcept {
    return left.timeIntervalSinceReferenceDate() <=> right.timeIntervalSinceReferenceDate();
  }
  friend bool operator==(const NSDate& left, const NSDate& right) noexcept {
    return static_cast<const Value&>(left) == static_cast<const Value&>(right);
  }
};

}  // namespace zeb
