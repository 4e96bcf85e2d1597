#pragma once

#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/Linux/Clock.h>

#include <algorithm>
#include <cstdint>

namespace zeb {

/// The moment by which the service must have answered.
class ServiceDeadline {
 public:
  explicit ServiceDeadline(double seconds) noexcept {
    const std::uint64_t now = mach_absolute_time();
    ticks_ = now + (std::min)(detail::ticksIn(seconds), UINT64_MAX - now);
  }

  /// At least 1, so that GLib reports the time-out.
  int millisecondsLeft() const noexcept {
    const std::uint64_t now = mach_absolute_time();
    const std::uint64_t left = ticks_ > now ? (ticks_ - now) / 1'000'000 : 0;
    return static_cast<int>(std::clamp<std::uint64_t>(left, 1, INT32_MAX));
  }

 private:
  std::uint64_t ticks_;
};

}  // namespace zeb
