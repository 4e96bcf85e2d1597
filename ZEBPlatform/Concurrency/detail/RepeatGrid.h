#pragma once

#include <cstdint>

namespace zeb::detail {

/// How many intervals lie between `point` of a repeating timer, which is not after `now`, and its first
/// point after `now`: at least 1; 0 if that point is beyond the clock's range. Late firings do not move
/// the grid of points, and missed points are not made up for. Times are ticks of `mach_absolute_time()`;
/// `interval` must not be 0.
constexpr std::uint64_t intervalsToNextPoint(std::uint64_t point, std::uint64_t interval,
                                             std::uint64_t now) noexcept {
  const std::uint64_t missed = (now - point) / interval;
  return missed < (UINT64_MAX - point) / interval ? missed + 1 : 0;
}

}  // namespace zeb::detail
