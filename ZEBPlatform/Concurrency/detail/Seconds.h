#pragma once

#include <cstdint>

namespace zeb::detail {

/// Nanoseconds of a number of seconds, rounded towards zero and limited to what the type holds; 0 for
/// NaN.
constexpr std::int64_t nanosecondsIn(double seconds) noexcept {
  const double nanoseconds = seconds * 1e9;
  if (nanoseconds >= 0x1p63) return INT64_MAX;
  if (nanoseconds <= -0x1p63) return -INT64_MAX;
  return nanoseconds == nanoseconds ? static_cast<std::int64_t>(nanoseconds) : 0;
}

/// The same in ticks of `mach_absolute_time()`, as a distance from now: 0 for negative numbers,
/// `UINT64_MAX` for what is beyond the clock's range.
constexpr std::uint64_t ticksIn(double seconds) noexcept {
  const std::int64_t nanoseconds = nanosecondsIn(seconds);
  if (nanoseconds == INT64_MAX) return UINT64_MAX;
  return nanoseconds > 0 ? static_cast<std::uint64_t>(nanoseconds) : 0;
}

}  // namespace zeb::detail
