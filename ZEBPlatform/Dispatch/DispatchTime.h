#pragma once

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

/// The moment `nanoseconds` after `when` (before it, if negative). Never overflows: what lies
/// beyond the clock's range is `DISPATCH_TIME_FOREVER`, what lies before its start is the start.
dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t nanoseconds) noexcept;

}  // namespace zeb
