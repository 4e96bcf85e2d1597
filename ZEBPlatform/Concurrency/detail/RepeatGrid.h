#pragma once

#include <cstdint>

namespace zeb::detail {

/// A repeating timer fires at the points of a grid: its first point and every `interval` after
/// that. Late firings do not move the grid, and missed points are skipped.
///
/// Answers the number of intervals from `point` to the grid's first point after `now`: at least 1,
/// or 0 if that point lies beyond the clock's range. `point` must not be after `now`, and
/// `interval` must not be 0. Times are ticks of `mach_absolute_time()`.
constexpr std::uint64_t intervalsToNextPoint(std::uint64_t point, std::uint64_t interval,
                                             std::uint64_t now) noexcept {
  const std::uint64_t missed = (now - point) / interval;
  return missed < (UINT64_MAX - point) / interval ? missed + 1 : 0;
}

}  // namespace zeb::detail
