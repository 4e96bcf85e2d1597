#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/RunLoop/LoopTimePrivate.h>

namespace zeb::detail {

std::uint64_t momentOfDate(const NSDate& date) noexcept {
  const std::uint64_t now = mach_absolute_time();
  if (date.isNil()) return now;
  const std::uint64_t distance = ticksIn(date.timeIntervalSinceDate(NSDate::date()));
  return distance < UINT64_MAX - now ? now + distance : UINT64_MAX;
}

NSDate dateOfMoment(std::uint64_t moment) noexcept {
  const double distance = static_cast<double>(moment) - static_cast<double>(mach_absolute_time());
  return NSDate::date().dateByAddingTimeInterval(distance / 1e9);
}

}  // namespace zeb::detail
