#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace zeb::detail {

/// Elements of a mutable array and entries of a dictionary or set, at the most: so many that positions,
/// and the slots of an index over them, fit 32 bits.
inline constexpr std::size_t maxCollectionCount = std::size_t{1} << 30;

/// Throws std::length_error when a collection can't hold so many.
inline void requireCollectionCount(std::size_t count) {
  if (count <= maxCollectionCount) return;
  throw std::length_error("an array, dictionary or set can hold 1073741824 elements at the most");
}

/// The capacity that a collection grows to so that it can hold `needed` elements: twice the old one
/// where the limit allows it. Throws std::length_error beyond the limit.
inline std::size_t grownCapacity(std::size_t capacity, std::size_t needed) {
  requireCollectionCount(needed);
  return (std::min)(maxCollectionCount, (std::max)({needed, 2 * capacity, std::size_t{4}}));
}

}  // namespace zeb::detail
