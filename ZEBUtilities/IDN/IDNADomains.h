#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// Whole domain names: labels and delimiters. All functions take at most XcodeMaxDomainUnits and a
// destination of at least XcodeMaxDomainUnits; other sizes, and longer results, give XcodeOverflow.
// Empty input gives XcodeBadArgument. Empty labels are permitted, and every delimiter is written as
// a full stop.

/// Whether the unit is a full stop: U+002E, or the ideographic, fullwidth or halfwidth one (RFC
/// 3490, section 3.1). False for a missing pointer.
bool Xcode_IsIDNADomainDelimiter(const XcodeUnit* unit) noexcept;

/// Each label through `Xcode_ToASCII`. The first failure ends the conversion with its code.
XcodeResult Xcode_DomainToASCII(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                std::int32_t* length) noexcept;

/// Each label through `Xcode_ToUnicode16`. Deliberately unlike `Xcode_DomainToASCII`, a label that
/// fails is left out, its delimiter is kept, and the conversion succeeds. So compare the labels
/// before you rely on the result. A NUL follows the result if there is room for it.
XcodeResult Xcode_DomainToUnicode16(const XcodeUnit* units, std::int32_t count, XcodeUnit* result,
                                    std::int32_t* length) noexcept;
/// The same from UTF-8; the result is UTF-16, too. Malformed UTF-8 gives the codes of
/// `Xcode_convertUTF8ToUTF16`.
XcodeResult Xcode_DomainToUnicode8(const XcodeOctet* octets, std::int32_t count, XcodeUnit* result,
                                   std::int32_t* length) noexcept;

}  // namespace zeb
