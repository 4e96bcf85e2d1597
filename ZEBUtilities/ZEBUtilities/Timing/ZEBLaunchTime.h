#pragma once

#include <cstdint>

/// The moment when the library was loaded, and seconds between ticks of the monotonic clock
/// (`mach_absolute_time`, which stands still while the machine sleeps). Any thread.
namespace zeb {

/// The library's only load-time initialiser: notes the tick, and greets with one line in the system's
/// log. Nobody needs to call it; a second call changes nothing and writes nothing.
///
/// The line costs one unconnected datagram. It is left out when the environment variable
/// ZEB_NO_GREETING is set and not empty, and in builds with the CMake option ZEB_GREETING=OFF.
///
/// The attribute stands here because g++ 12 forgets the priority if an earlier declaration lacks it.
/// With it the tick is noted before static objects of a program that holds the static library are made.
[[gnu::constructor(101)]] void YOVLoadProcessStartTime() noexcept;

/// The tick at which the library was loaded.
std::uint64_t ZEBLaunchStartTime() noexcept;

/// Seconds since the library was loaded.
double ZEBTimeIntervalSinceLaunch() noexcept;

/// Seconds from tick a to tick b; negative when a is the later one.
double ZEBTimeIntervalBetweenMachTimes(std::uint64_t a, std::uint64_t b) noexcept;

}  // namespace zeb
