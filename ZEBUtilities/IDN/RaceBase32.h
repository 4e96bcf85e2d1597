#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

// The base 32 of RACE: "a" to "z", then "2" to "7", without padding.

/// The letter of a five-bit value, or 255.
XcodeOctet Xcode_enmap32_race(XcodeOctet value) noexcept;
/// The five-bit value of a letter in either case, or 255.
XcodeOctet Xcode_demap32_race(XcodeOctet letter) noexcept;

/// Five bits per letter, the most significant ones first. Bits that the last letter lacks are zero.
XcodeResult Xcode_enbase32_race(const XcodeOctet* octets, std::int32_t count, XcodeOctet* letters,
                                std::int32_t* length) noexcept;

/// Reverses `Xcode_enbase32_race`, in either case of letters. What that cannot have written gives
/// XcodeRaceBase32Decode.
XcodeResult Xcode_debase32_race(const XcodeOctet* letters, std::int32_t count, XcodeOctet* octets,
                                std::int32_t* length) noexcept;

}  // namespace zeb
