#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/RunLoop/LoopTimePrivate.h>

namespace zeb::detail {

std::uint64_t momentAfter(NSTimeInterval seconds) noexcept {
  const std::uint64_t now = mach_absolute_time();
  const std::uint64_t distance = ticksIn(seconds);
  return distance < UINT64_MAX - now ? now + distance : UINT64_MAX;
}

std::uint64_t momentOfDate(const NSDate& date) noexcept {
  return momentAfter(date.isNil() ? 0 : date.timeIntervalSinceDate(NSDate::date()));
}

NSDate dateOfMoment(std::uint64_t moment) noexcept {
  const double distance = static_cast<double>(moment) - static_cast<double>(mach_absolute_time());
  return NSDate::date().dateByAddingTimeInterval(distance / 1e9);
}

}  // namespace zeb::detail
