#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zeb::detail {

/// Readings of the number that a text begins with, after white space; 0 when it begins with none.
/// Integers saturate. Locale plays no part.
std::int64_t leadingInteger(std::string_view text, std::int64_t lowest,
                            std::int64_t highest) noexcept;
double leadingDouble(std::string_view text) noexcept;
bool leadingBoolean(std::string_view text) noexcept;

/// The fewest decimal digits that read back as the same double; "inf", "-inf" and "nan" for the rest.
std::string shortestText(double number);
std::string shortestText(float number);

/// Whether a decimal number that is out of a double's range is so for being small. `number` is digits with
/// or without a point and an exponent, not all zeros.
bool isTinyDecimal(std::string_view number) noexcept;

/// Saturating conversions; not a number gives 0.
std::int64_t saturatedInteger(double number) noexcept;
std::uint64_t saturatedUnsigned(double number) noexcept;

}  // namespace zeb::detail
