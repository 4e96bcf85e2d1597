#pragma once

#include <ZEBPlatform/Concurrency/detail/Seconds.h>

#include <chrono>
#include <cstdint>

namespace zeb {

/// A moment of the monotonic clock (`CLOCK_MONOTONIC`: it stands still while the machine sleeps),
/// in nanoseconds, or one of the two special moments below.
using dispatch_time_t = std::uint64_t;

inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
inline constexpr dispatch_time_t DISPATCH_TIME_FOREVER = UINT64_MAX;

inline constexpr std::uint64_t NSEC_PER_SEC = 1'000'000'000;
inline constexpr std::uint64_t NSEC_PER_MSEC = 1'000'000;
inline constexpr std::uint64_t NSEC_PER_USEC = 1'000;

/// The moment `nanoseconds` after `when`, or before it for a negative number. It never overflows:
/// the answer is `DISPATCH_TIME_FOREVER` beyond the clock's range, and 1 before its start.
[[nodiscard]] dispatch_time_t dispatch_time(dispatch_time_t when,
                                            std::int64_t nanoseconds) noexcept;
/// The same for a duration of any unit. Durations of 292 years and more are
/// `DISPATCH_TIME_FOREVER`.
template <class Number, class Unit>
[[nodiscard]] dispatch_time_t dispatch_time(dispatch_time_t when,
                                            std::chrono::duration<Number, Unit> duration) noexcept {
  const std::int64_t nanoseconds = detail::nanosecondsIn(duration);
  return nanoseconds == INT64_MAX ? DISPATCH_TIME_FOREVER : dispatch_time(when, nanoseconds);
}
/// The same moment as one of `std::chrono::steady_clock`, which is the same clock.
/// `time_point::max()` is `DISPATCH_TIME_FOREVER`.
[[nodiscard]] inline dispatch_time_t dispatch_time(
    std::chrono::steady_clock::time_point moment) noexcept {
  const std::int64_t nanoseconds = detail::nanosecondsIn(moment.time_since_epoch());
  if (nanoseconds == INT64_MAX) return DISPATCH_TIME_FOREVER;
  return nanoseconds > 0 ? static_cast<dispatch_time_t>(nanoseconds) : 1;  // 0 would mean now
}

}  // namespace zeb
