#pragma once

#include <cstddef>
#include <cstdint>

namespace zeb::detail {

/// Bytes that the functions below need at their target; more than the longest number.
inline constexpr std::size_t maxJsonNumberLength = 48;

/// Each writes a number as JSON at `target` and returns the end of the text.
char* writeJsonInteger(char* target, std::int64_t number) noexcept;
char* writeJsonUnsigned(char* target, std::uint64_t number) noexcept;
/// The fewest digits that read back as the same number, in plain notation from 10⁻⁶ up to 2⁵³ and
/// otherwise with an exponent. The number must be finite.
char* writeJsonDouble(char* target, double number) noexcept;
char* writeJsonFloat(char* target, float number) noexcept;

}  // namespace zeb::detail
