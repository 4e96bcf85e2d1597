#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb::detail {

/// What `Xcode_puny_encodeString` writes for a label that is not ASCII. The destination has room
/// for XcodeEncodedLabelCapacity octets; the length is only written.
XcodeResult encodeAceLabel(const XcodeCodePoint* codePoints, std::int32_t count, XcodeOctet* octets,
                           std::int32_t* length) noexcept;

}  // namespace zeb::detail
