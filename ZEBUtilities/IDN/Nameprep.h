#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// Nameprep, RFC 3491: the form of labels in which equal names are equal. Unassigned code points are
// permitted, as in queries (RFC 3454, section 7).

/// All four steps: mapping, normalization form KC, prohibition, and the check of directions. Units
/// that are no UTF-16 give XcodeUTF16Invalid, and more than XcodeMaxPreparedCodePoints code points
/// before or after a step XcodeOverflow or XcodeNormalizeTooLong. Empty input gives
/// XcodeBadArgument here, but XcodeMappedToNothing in the second function. With
/// XcodeProhibitedCharacter the first such code point is stored into `prohibited`, which may be
/// missing.
XcodeResult Xcode_nameprepString(const XcodeUnit* units, std::int32_t count,
                                 XcodeCodePoint* prepared, std::int32_t* length,
                                 XcodeCodePoint* prohibited) noexcept;
/// The same from code points.
XcodeResult Xcode_nameprepString32(const XcodeCodePoint* codePoints, std::int32_t count,
                                   XcodeCodePoint* prepared, std::int32_t* length,
                                   XcodeCodePoint* prohibited) noexcept;

// The steps. The second one is `Xcode_normalizeString`.

/// Folds case, and drops characters such as the soft hyphen: RFC 3454, tables B.1 and B.2. Gives
/// XcodeMappedToNothing if nothing is left, also of empty input.
XcodeResult Xcode_charmapString(const XcodeCodePoint* codePoints, std::int32_t count,
                                XcodeCodePoint* mapped, std::int32_t* length) noexcept;

/// Gives XcodeProhibitedCharacter or XcodeCodePointRange for the first code point that is
/// prohibited or none of Unicode. A prohibited one is stored into `prohibited`, which may be
/// missing.
XcodeResult Xcode_prohibitString(const XcodeCodePoint* codePoints, std::int32_t count,
                                 XcodeCodePoint* prohibited) noexcept;

/// RFC 3454, section 6: text with a right-to-left character begins and ends with one, else
/// XcodeBidiEnds, and has no left-to-right character, else XcodeBidiMixed.
XcodeResult Xcode_bidifilterString(const XcodeCodePoint* codePoints, std::int32_t count) noexcept;

}  // namespace zeb
