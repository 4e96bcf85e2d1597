#pragma once

#include <ZEBPlatform/Foundation/Value.h>

#include <compare>

namespace zeb::detail {

/// Exact order of two number values of any type codes. Unordered if one of them is not-a-number.
std::partial_ordering orderNumbers(const Value& left, const Value& right) noexcept;

/// Hash that equal numbers share.
std::size_t hashOfNumber(const Value& number) noexcept;

}  // namespace zeb::detail
