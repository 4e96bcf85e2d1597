#pragma once

#include <cstdint>

/// The time when the library was loaded, and seconds between ticks of the monotonic clock
/// (`mach_absolute_time`, which stops while the machine sleeps). Any thread.
namespace zeb {

/// The library's only load-time initialiser: records the tick, and writes one line to the system's
/// log. Programs need not call it; further calls do nothing.
///
/// The line costs one unconnected datagram. It is omitted when the environment variable
/// ZEB_NO_GREETING is set and not empty, and in builds with the CMake option ZEB_GREETING=OFF.
///
/// The priority makes it run before the static objects of a program with the static library are
/// constructed. The attribute is on this declaration because g++ 12 ignores the priority if an
/// earlier declaration lacks it.
[[gnu::constructor(101)]] void YOVLoadProcessStartTime() noexcept;

/// The tick at which the library was loaded.
std::uint64_t ZEBLaunchStartTime() noexcept;

/// Seconds since the library was loaded.
double ZEBTimeIntervalSinceLaunch() noexcept;

/// Seconds from tick a to tick b; negative when a is the later one.
double ZEBTimeIntervalBetweenMachTimes(std::uint64_t a, std::uint64_t b) noexcept;

}  // namespace zeb
