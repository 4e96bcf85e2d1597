#pragma once

#include <ZEBPlatform/Foundation/Value.h>

#include <cstdint>
#include <span>
#include <vector>

namespace zeb::detail {

/// The position of the first of each group of equal values, in ascending order. The values must not
/// change meanwhile; comparing them may run code of others.
std::vector<std::uint32_t> distinctPositions(std::span<const Value> values);

}  // namespace zeb::detail
