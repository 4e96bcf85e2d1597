#pragma once

#include <cstddef>
#include <cstdint>

namespace zeb::detail {

/// Room that the functions below need at their target; more than any number takes.
inline constexpr std::size_t longestJsonNumber = 48;

/// Each writes a number as JSON at `target` and answers the place behind it.
char* writeJsonInteger(char* target, std::int64_t number) noexcept;
char* writeJsonUnsigned(char* target, std::uint64_t number) noexcept;
/// The fewest digits that read back the same, in plain notation from 10⁻⁶ up to 2⁵³ and otherwise
/// with an exponent. Must be finite.
char* writeJsonDouble(char* target, double number) noexcept;
char* writeJsonFloat(char* target, float number) noexcept;

}  // namespace zeb::detail
