#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

namespace zeb::detail {

/// The comparator that sends `compare:` to the left element. Throws NSException
/// (NSInvalidArgumentException) if it has no such method or refuses the right one.
NSComparisonResult compareElements(const Value& left, const Value& right);

/// The comparator for all elements of the array: nil, which sorts faster, if all of them are
/// strings, numbers or dates.
NSComparator elementComparator(const NSArray& array) noexcept;

}  // namespace zeb::detail
