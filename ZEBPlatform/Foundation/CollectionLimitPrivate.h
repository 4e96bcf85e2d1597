#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace zeb::detail {

/// Elements in an array, and entries in a dictionary or set, at most. Positions, and the slots of
/// an index over them, then fit 32 bits.
inline constexpr std::size_t maxCollectionCount = std::size_t{1} << 30;

/// Throws std::length_error if the count is above the limit.
inline void requireCollectionCount(std::size_t count) {
  if (count <= maxCollectionCount) return;
  throw std::length_error("an array, dictionary or set can hold at most 1073741824 elements");
}

/// The capacity to grow to so that a collection can hold `needed` elements: twice the old capacity
/// where the limit allows it. Throws std::length_error beyond the limit.
inline std::size_t grownCapacity(std::size_t capacity, std::size_t needed) {
  requireCollectionCount(needed);
  return (std::min)(maxCollectionCount, (std::max)({needed, 2 * capacity, std::size_t{4}}));
}

}  // namespace zeb::detail
