#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// Between Unicode's encoding forms. What is not well-formed is refused. Empty input gives empty
// output, except where stated. No terminator is written.

/// An unpaired surrogate gives XcodeUTF16Invalid, empty input XcodeBadArgument.
XcodeResult Xcode_convertUTF16To32Bit(const XcodeUnit* units, std::int32_t count,
                                      XcodeCodePoint* codePoints, std::int32_t* length) noexcept;

/// A number that UTF-16 cannot write gives XcodeCodePointInvalid.
XcodeResult Xcode_convert32BitToUTF16(const XcodeCodePoint* codePoints, std::int32_t count,
                                      XcodeUnit* units, std::int32_t* length) noexcept;

/// An unpaired surrogate gives XcodeUTF8UnpairedSurrogate.
XcodeResult Xcode_convertUTF16ToUTF8(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                     std::int32_t* length) noexcept;

/// Malformed octets give the codes from XcodeUTF8BadOctet on, and the UTF-8 form of a number that
/// UTF-16 cannot write XcodeCodePointInvalid.
XcodeResult Xcode_convertUTF8ToUTF16(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                     std::int32_t* length) noexcept;

}  // namespace zeb
