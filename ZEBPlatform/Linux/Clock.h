#pragma once

#include <cstdint>

namespace zeb {

/// The length of one tick of `mach_absolute_time()`: numer / denom nanoseconds.
struct mach_timebase_info_data_t {
  std::uint32_t numer;
  std::uint32_t denom;
};

/// Ticks of the monotonic clock (`CLOCK_MONOTONIC`: it does not count while the machine sleeps and
/// never goes back). Any thread, and safe in signal handlers.
std::uint64_t mach_absolute_time() noexcept;

/// Fills in the length of a tick. Answers 0, or an error number if the system has no such clock.
int mach_timebase_info(mach_timebase_info_data_t* info) noexcept;

/// Seconds of the wall clock since 1 January 1970 UTC.
double secondsSince1970() noexcept;

}  // namespace zeb
