#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/RunLoop/LoopTimePrivate.h>

namespace zeb::detail {

std::uint64_t ticksOfInterval(NSTimeInterval seconds) noexcept {
  const double nanoseconds = seconds * 1e9;
  if (!(nanoseconds > 0)) return 0;
  return nanoseconds < 0x1p63 ? static_cast<std::uint64_t>(nanoseconds) : UINT64_MAX;
}

std::uint64_t momentOfDate(const NSDate& date) noexcept {
  const std::uint64_t now = mach_absolute_time();
  if (date.isNil()) return now;
  const std::uint64_t distance = ticksOfInterval(date.timeIntervalSinceDate(NSDate::date()));
  return distance < UINT64_MAX - now ? now + distance : UINT64_MAX;
}

NSDate dateOfMoment(std::uint64_t moment) noexcept {
  const double distance = static_cast<double>(moment) - static_cast<double>(mach_absolute_time());
  return NSDate::date().dateByAddingTimeInterval(distance / 1e9);
}

}  // namespace zeb::detail
