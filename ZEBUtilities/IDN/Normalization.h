#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

/// Normalization form KC of Unicode 3.2 (UAX #15). Empty input gives XcodeNormalizeEmpty, U+0000
/// XcodeNormalizeNullCharacter, and more than XcodeMaxPreparedCodePoints code points after
/// decomposition XcodeNormalizeTooLong. A zero follows the result if there is room for it.
XcodeResult Xcode_normalizeString(const XcodeCodePoint* codePoints, std::int32_t count,
                                  XcodeCodePoint* normalized, std::int32_t* length) noexcept;

/// Room for the decomposition of one code point: at most 18 in Unicode 3.2, and a zero.
inline constexpr std::int32_t maxDecomposition = 80;

/// Appends the full compatibility decomposition of the code point to `decomposition`, which has
/// room for `maxDecomposition` code points and ends with a zero. Without a decomposition that is
/// the code point itself. Callers pass 0 as `depth`; more than 20 levels are silently left out.
void doDecomposition(std::int32_t depth, XcodeCodePoint codePoint,
                     XcodeCodePoint* decomposition) noexcept;

}  // namespace zeb
