#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// One label of an internationalised domain name: ToASCII and ToUnicode of RFC 3490, with its flags
// fixed to UseSTD3ASCIIRules and AllowUnassigned. Empty input gives XcodeBadArgument.

/// The label as the DNS knows it, from at most XcodeMaxLabelUnits into at least
/// XcodeMaxLabelOctets; other sizes give XcodeOverflow. Labels outside ASCII go through nameprep
/// and become "xn--" and Punycode, unless nameprep leaves only ASCII; labels in ASCII stay as they
/// are, in their case. A NUL follows the result, which the length does not count. Gives the codes
/// of nameprep and those from XcodeIdnaNonLDH to XcodeIdnaLength; XcodeOverflow or XcodeBadArgument
/// if the Punycode exceeds the limits of `Xcode_puny_encodeString`.
XcodeResult Xcode_ToASCII(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                          std::int32_t* length) noexcept;

/// The label for people, from at most XcodeMaxLabelUnits into at least XcodeMaxLabelUnits; other
/// sizes give XcodeOverflow. After these checks the label is copied to the destination, and this
/// copy is the result for labels outside ASCII, and what is left there if a later step fails.
///
/// The decoded label must give the same ASCII form again, else XcodeIdnaRoundTrip. This comparison
/// is exact, deliberately: as ToASCII writes lower case, "xn--" labels with capitals are refused.
/// It covers the length of the new form: octets after it are deliberately ignored, as in "xn--x-",
/// which gives "x".
XcodeResult Xcode_ToUnicode16(const XcodeUnit* units, std::int32_t count, XcodeUnit* result,
                              std::int32_t* length) noexcept;
/// The same from at most XcodeMaxLabelOctets of UTF-8; the result is UTF-16, too. Malformed UTF-8
/// gives the codes of `Xcode_convertUTF8ToUTF16` and leaves no copy.
XcodeResult Xcode_ToUnicode8(const XcodeOctet* octets, std::int32_t count, XcodeUnit* result,
                             std::int32_t* length) noexcept;

}  // namespace zeb
