#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>

#include <cstdint>

namespace zeb::detail {

/// Converts a wall-clock date to ticks of `mach_absolute_time()`. Nil and past dates become now.
std::uint64_t momentOfDate(const NSDate& date) noexcept;

/// The opposite conversion.
NSDate dateOfMoment(std::uint64_t moment) noexcept;

}  // namespace zeb::detail
