#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

#include <cstdint>
#include <vector>

namespace zeb::detail {

/// The positions of the elements in ascending order; stable. Throws NSException if the comparator
/// changes the array (NSGenericException), or if it is nil and the elements have no natural order
/// (NSInvalidArgumentException).
std::vector<std::uint32_t> sortedOrder(const NSArray& array, NSComparator comparator);

}  // namespace zeb::detail
