#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Linux/Clock.h>

#include <bit>

namespace zeb {

NSDate NSDate::date() noexcept { return dateWithTimeIntervalSince1970(secondsSince1970()); }

namespace {

constexpr NSTimeInterval twoThousandYears = 63113904000;

}  // namespace

NSDate NSDate::distantPast() noexcept {
  return dateWithTimeIntervalSinceReferenceDate(-twoThousandYears);
}

NSDate NSDate::distantFuture() noexcept {
  return dateWithTimeIntervalSinceReferenceDate(twoThousandYears);
}

NSDate NSDate::dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) noexcept {
  return NSDate(Value(adoptWords, headOf(Kind::Date), std::bit_cast<std::uint64_t>(seconds)));
}

NSDate NSDate::dateWithTimeIntervalSince1970(NSTimeInterval seconds) noexcept {
  return dateWithTimeIntervalSinceReferenceDate(seconds - NSTimeIntervalSince1970);
}

NSTimeInterval NSDate::timeIntervalSinceReferenceDate() const noexcept {
  return std::bit_cast<double>(payload());
}

NSTimeInterval NSDate::timeIntervalSince1970() const noexcept {
  return isNil() ? 0 : timeIntervalSinceReferenceDate() + NSTimeIntervalSince1970;
}

NSTimeInterval NSDate::timeIntervalSinceDate(const NSDate& earlier) const noexcept {
  if (isNil() || earlier.isNil()) return 0;
  return timeIntervalSinceReferenceDate() - earlier.timeIntervalSinceReferenceDate();
}

NSDate NSDate::dateByAddingTimeInterval(NSTimeInterval seconds) const noexcept {
  if (isNil()) return nullptr;
  return dateWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDate() + seconds);
}

NSComparisonResult NSDate::compare(const NSDate& other) const noexcept {
  const auto seconds = [](const NSDate& date) {
    return date.isNil() ? NSNumber() : NSNumber(date.timeIntervalSinceReferenceDate());
  };
  return seconds(*this).compare(seconds(other));
}

NSDate::SystemClock::time_point NSDate::timePoint() const noexcept {
  using Duration = SystemClock::duration;
  const double ticks = timeIntervalSince1970() * Duration::period::den / Duration::period::num;
  constexpr double end = 9223372036854775808.0;
  if (!(ticks < end)) return SystemClock::time_point::max();
  if (ticks < -end) return SystemClock::time_point::min();
  return SystemClock::time_point(Duration(static_cast<Duration::rep>(ticks)));
}

}  // namespace zeb
