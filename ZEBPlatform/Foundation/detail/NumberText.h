#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zeb::detail {

/// Readings of the number that a text begins with, after white space; 0 if it does not begin with a
/// number. Integers saturate. Independent of the locale.
std::int64_t leadingInteger(std::string_view text, std::int64_t lowest,
                            std::int64_t highest) noexcept;
double leadingDouble(std::string_view text) noexcept;
bool leadingBoolean(std::string_view text) noexcept;

/// The shortest decimal text that reads back as the same number; "inf", "-inf" or "nan" for the
/// others.
std::string shortestText(double number);
std::string shortestText(float number);

/// Whether a decimal number that is outside the range of a double is too small, not too large.
/// `number` is digits with or without a point and an exponent, and not all zeros.
bool isTinyDecimal(std::string_view number) noexcept;

/// Saturating conversions; not-a-number gives 0.
std::int64_t saturatedInteger(double number) noexcept;
std::uint64_t saturatedUnsigned(double number) noexcept;

}  // namespace zeb::detail
