#pragma once

#include <cstdint>

/// The moment when the library was loaded, and seconds between ticks of the monotonic clock
/// (`mach_absolute_time`, which stands still while the machine sleeps). Any thread.
namespace zeb {

/// The library's only load-time initialiser: notes the tick, and greets in the system's log. Nobody
/// needs to call it.
void YOVLoadProcessStartTime() noexcept;

/// The tick at which the library was loaded.
std::uint64_t ZEBLaunchStartTime() noexcept;

/// Seconds since the library was loaded.
double ZEBTimeIntervalSinceLaunch() noexcept;

/// Seconds from tick a to tick b; negative when a is the later one.
double ZEBTimeIntervalBetweenMachTimes(std::uint64_t a, std::uint64_t b) noexcept;

}  // namespace zeb
