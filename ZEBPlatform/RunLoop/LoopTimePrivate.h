#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>

#include <cstdint>

namespace zeb::detail {

/// A span of time in ticks of `mach_absolute_time()`: 0 for negative ones and NaN, UINT64_MAX for those beyond
/// the clock's range.
std::uint64_t ticksOfInterval(NSTimeInterval seconds) noexcept;

/// The moment of the monotonic clock that a wall-clock date stands for now; nil and the past: now.
std::uint64_t momentOfDate(const NSDate& date) noexcept;

/// The other way round.
NSDate dateOfMoment(std::uint64_t moment) noexcept;

}  // namespace zeb::detail
