#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>

#include <cstdint>

namespace zeb::detail {

/// Converts a wall-clock date to ticks of `mach_absolute_time()`. Nil and past dates become now.
std::uint64_t momentOfDate(const NSDate& date) noexcept;

/// The moment after this number of seconds from now; now for negative numbers and NaN.
std::uint64_t momentAfter(NSTimeInterval seconds) noexcept;

/// The date of a moment.
NSDate dateOfMoment(std::uint64_t moment) noexcept;

}  // namespace zeb::detail
