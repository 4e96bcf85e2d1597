#pragma once

#include <chrono>
#include <cstdint>

namespace zeb::detail {

/// Nanoseconds of a number of seconds, rounded towards zero and limited to ±INT64_MAX; 0 for NaN.
constexpr std::int64_t nanosecondsIn(double seconds) noexcept {
  const double nanoseconds = seconds * 1e9;
  if (nanoseconds >= 0x1p63) return INT64_MAX;
  if (nanoseconds <= -0x1p63) return -INT64_MAX;
  return nanoseconds == nanoseconds ? static_cast<std::int64_t>(nanoseconds) : 0;
}

/// Nanoseconds of a duration of any unit, under the same rules.
template <class Number, class Unit>
constexpr std::int64_t nanosecondsIn(std::chrono::duration<Number, Unit> duration) noexcept {
  constexpr double maxExactSeconds = 9.2e9;  // converting more could overflow
  const double seconds = std::chrono::duration<double>(duration).count();
  if (std::chrono::treat_as_floating_point_v<Number> || seconds >= maxExactSeconds ||
      seconds <= -maxExactSeconds) {
    return nanosecondsIn(seconds);
  }
  return std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count();
}

/// Ticks of `mach_absolute_time()` for a distance from now, in seconds or as a duration: 0 for
/// negative ones, `UINT64_MAX` for those beyond the limit.
template <class Distance>
constexpr std::uint64_t ticksIn(Distance distance) noexcept {
  const std::int64_t nanoseconds = nanosecondsIn(distance);
  if (nanoseconds == INT64_MAX) return UINT64_MAX;
  return nanoseconds > 0 ? static_cast<std::uint64_t>(nanoseconds) : 0;
}

}  // namespace zeb::detail
