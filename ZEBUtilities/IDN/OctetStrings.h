#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

/// Lowers the ASCII letters in place.
void lower_case(XcodeOctet* octets, std::int32_t count) noexcept;

/// Whether the octets begin with the prefix.
bool starts_with(const XcodeOctet* octets, std::int32_t count, const XcodeOctet* prefix,
                 std::int32_t prefixCount) noexcept;
/// The same in any case of ASCII letters.
bool starts_with_ignore_case(const XcodeOctet* octets, std::int32_t count, const XcodeOctet* prefix,
                             std::int32_t prefixCount) noexcept;

/// ASCII units as octets. A unit outside ASCII gives XcodeBadArgument.
XcodeResult shrink_UChar_to_Octet(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                  std::int32_t* length) noexcept;
/// Octets as units of the same values.
XcodeResult expand_Octet_to_UChar(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                  std::int32_t* length) noexcept;

}  // namespace zeb
