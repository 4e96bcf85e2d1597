#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// RACE, the older encoding of labels (draft-ietf-idn-race-03). Only for callers that ask for it.

/// One label in ASCII. Units that are all letters, digits or hyphens stay as they are, without a
/// prefix, and a NUL follows, for which there must be room. Otherwise the prefix, then the
/// compressed units in base 32, without a NUL. Empty input gives XcodeBadArgument.
XcodeResult Xcode_race_encodeString(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                    std::int32_t* length, const XcodeOctet* prefix,
                                    std::int32_t prefixLength) noexcept;

/// Reverses `Xcode_race_encodeString`, in either case of the prefix and the letters. Octets without
/// the prefix that are not letters, digits and hyphens give XcodeBadArgument.
XcodeResult Xcode_race_decodeString(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                    std::int32_t* length, const XcodeOctet* prefix,
                                    std::int32_t prefixLength) noexcept;

/// The upper octet that the units have in common, then their lower octets. The octet 0xFF begins an
/// escape: with the octet 0x99 it means the lower octet 0xFF, and with another octet a unit of row
/// 0 between units of another row. Units of several rows besides 0, or of a row of surrogates, are
/// written whole after the marker 0xD8. Results of more than XcodeMaxRaceOctets are refused.
XcodeResult Xcode_race_RaceCompress(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                    std::int32_t* length) noexcept;

/// Reverses `Xcode_race_RaceCompress`, and refuses with the codes from XcodeRaceNoUnits to
/// XcodeRaceOtherRow what that would not have written.
XcodeResult Xcode_race_RaceDecompress(const XcodeOctet* octets, std::int32_t count,
                                      XcodeUnit* units, std::int32_t* length) noexcept;

}  // namespace zeb
