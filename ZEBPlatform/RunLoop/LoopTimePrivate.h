#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>

#include <cstdint>

namespace zeb::detail {

/// The moment of the monotonic clock that a wall-clock date stands for now; nil and the past: now.
std::uint64_t momentOfDate(const NSDate& date) noexcept;

/// The other way round.
NSDate dateOfMoment(std::uint64_t moment) noexcept;

}  // namespace zeb::detail
