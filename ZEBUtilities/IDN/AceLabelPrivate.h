#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb::detail {

/// What `Xcode_puny_encodeString` writes for a label that is not ASCII. The destination has room
/// for XcodeEncodedLabelCapacity octets; the length is only written.
XcodeResult encodeAceLabel(const XcodeCodePoint* codePoints, std::int32_t count, XcodeOctet* octets,
                           std::int32_t* length) noexcept;

/// Whether the label begins with "xn--" in any case.
template <class Element>
constexpr bool hasAcePrefix(const Element* label, std::int32_t count) noexcept {
  return count >= 4 && (label[0] | 0x20) == 'x' && (label[1] | 0x20) == 'n' && label[2] == '-' &&
         label[3] == '-';
}

}  // namespace zeb::detail
