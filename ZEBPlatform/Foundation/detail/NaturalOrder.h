#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

#include <optional>

namespace zeb::detail {

/// The order of the platform's own kinds, which their method `compare:` answers: strings by units,
/// numbers by value, dates by time. None for values of different or other kinds.
std::optional<NSComparisonResult> naturalOrder(const Value& left, const Value& right) noexcept;

/// Whether all elements have a natural order, so that sorting them calls no code of others and a
/// nil comparator sorts them. True of empty arrays.
bool hasNaturalOrder(const NSArray& array) noexcept;

}  // namespace zeb::detail
