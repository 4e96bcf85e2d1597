#include <ZEBPlatform/Dispatch/DispatchTime.h>
#include <ZEBPlatform/Linux/Clock.h>

namespace zeb {

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t nanoseconds) noexcept {
  if (when == DISPATCH_TIME_FOREVER) return when;
  if (when == DISPATCH_TIME_NOW) when = mach_absolute_time();
  if (nanoseconds < 0) {
    const std::uint64_t back = std::uint64_t{0} - static_cast<std::uint64_t>(nanoseconds);
    return back < when ? when - back : 1;
  }
  const std::uint64_t distance = static_cast<std::uint64_t>(nanoseconds);
  return distance < DISPATCH_TIME_FOREVER - when ? when + distance : DISPATCH_TIME_FOREVER;
}

}  // namespace zeb
