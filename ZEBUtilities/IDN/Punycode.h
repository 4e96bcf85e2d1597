#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// Punycode, RFC 3492: text as letters, digits and hyphens of ASCII.

/// The RFC's encoder: the basic code points, a hyphen if there are any, and lowercase digits that
/// say where the others belong. A full destination gives XcodeBadArgument; numbers beyond 32 bits
/// and more than XcodeMaxPunycodeCodePoints give XcodeOverflow.
XcodeResult punycode_encode(std::int32_t count, const XcodeCodePoint* codePoints,
                            std::int32_t* length, XcodeOctet* octets) noexcept;

/// The RFC's decoder; digits have either case. Input that is no Punycode, and a full destination,
/// give XcodeBadArgument; numbers beyond 32 bits and more than XcodeMaxPunycodeCodePoints give
/// XcodeOverflow. The results need not be code points of Unicode.
XcodeResult punycode_decode(std::int32_t count, const XcodeOctet* octets, std::int32_t* length,
                            XcodeCodePoint* codePoints) noexcept;

/// Whether every code point is ASCII.
bool is_all_basic(std::int32_t count, const XcodeCodePoint* codePoints) noexcept;

/// One label in ASCII: as it is if it is ASCII, otherwise "xn--", its Punycode and a NUL that the
/// length does not count. Empty input gives XcodeBadArgument; more than XcodeMaxLabelCodePoints, or
/// Punycode of more than 252 octets, give XcodeOverflow, and of more than 256 XcodeBadArgument.
///
/// Unlike all other destinations, this one must always have room for XcodeEncodedLabelCapacity
/// octets. Its given length only says how many of them are set to zero first.
XcodeResult Xcode_puny_encodeString(const XcodeCodePoint* codePoints, std::int32_t count,
                                    XcodeOctet* octets, std::int32_t* length) noexcept;

/// One label in Unicode. If it begins with "xn--" in any case, the rest is lowered and decoded;
/// more than XcodeMaxLabelCodePoints give XcodeBadArgument. A NUL follows the result if there is
/// room for it. Any other label is widened octet by octet, without a NUL. Empty input gives
/// XcodeBadArgument.
XcodeResult Xcode_puny_decodeString(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                    std::int32_t* length) noexcept;

}  // namespace zeb
