#pragma once

#include <cstdint>

namespace zeb {

// The types, limits and result codes of all functions of this module.
//
// The functions are plain: they allocate nothing, log nothing and throw nothing, use only constant
// data and the caller's stack, and may be called from any thread. An output is a destination and a
// length: the length goes in as the destination's capacity and comes out as what was written.
// Nothing is written beyond that capacity. If a function fails, the length is unchanged and the
// destination's content is undefined, unless the function says otherwise. Missing pointers and
// negative counts give XcodeBadArgument, and false from the functions that answer 1 or 0. Source
// and destination must not overlap.

/// A code point, or what a caller passes for one: any value is permitted.
using XcodeCodePoint = std::uint64_t;
/// A unit of UTF-16.
using XcodeUnit = char16_t;
/// A byte, mostly an ASCII character.
using XcodeOctet = std::uint8_t;

// Internal buffers; what does not fit gives XcodeOverflow where nothing else is said.
inline constexpr std::int32_t XcodeMaxPreparedCodePoints = 256;   ///< in each step of nameprep
inline constexpr std::int32_t XcodeMaxPunycodeCodePoints = 1024;  ///< of the RFC's functions
inline constexpr std::int32_t XcodeMaxLabelCodePoints = 128;      ///< in a label with an ACE form
inline constexpr std::int32_t XcodeEncodedLabelCapacity = 257;    ///< of Xcode_puny_encodeString
inline constexpr std::int32_t XcodeMaxRaceOctets = 256;           ///< in RACE's compressed form

// The limits of the functions of IDNALabels.h and IDNADomains.h.
inline constexpr std::int32_t XcodeMaxLabelUnits = 128;       ///< also the least capacity of units
inline constexpr std::int32_t XcodeMaxLabelOctets = 256;      ///< also the least capacity of octets
inline constexpr std::int32_t XcodeMaxASCIILabelOctets = 63;  ///< in a label of the DNS
inline constexpr std::int32_t XcodeMaxDomainUnits = 1024;     ///< also the least capacity

/// Why a conversion failed. Numbers of the groups that are missing here are not in use.
enum XcodeResult : std::uint32_t {
  XcodeOK = 0,
  /// Empty input, or a missing destination. In Punycode also input that is no Punycode, and output
  /// that does not fit.
  XcodeBadArgument = 1,
  /// A destination or an internal buffer is too small, or Punycode's arithmetic overflowed.
  XcodeOverflow = 3,

  // RACE, compression

  /// The units cannot be compressed. Not returned: units of several rows have a form of their own.
  XcodeRaceRows = 100,
  /// U+0099, whose octet means an escaped 0xFF.
  XcodeRaceReservedUnit = 101,
  XcodeRaceTooLong = 102,  ///< more than XcodeMaxRaceOctets
  XcodeRaceFullStop = 103,

  // RACE, decompression

  XcodeRaceNoUnits = 110,      ///< nothing after the first octet
  XcodeRaceBadRow = 111,       ///< the first octet is a row of surrogates, but not the marker
  XcodeRaceOddOctets = 112,    ///< half a unit after the marker
  XcodeRaceCutEscape = 113,    ///< nothing after an escape
  XcodeRaceBadEscape = 114,    ///< an escape of row 0 in row 0
  XcodeRaceBadUnit = 115,      ///< a unit that compression refuses
  XcodeRaceNeedsRow = 116,     ///< the marker, although the units fit into one row
  XcodeRaceOtherRow = 117,     ///< compression chooses another row
  XcodeRaceNeedsNoRace = 118,  ///< only letters, digits and hyphens, which are not encoded

  // RACE, base 32

  /// A value of more than five bits. Not returned: the encoder cuts octets into such values.
  XcodeRaceBase32Encode = 140,
  /// A character outside the alphabet, or left-over bits that are not zero.
  XcodeRaceBase32Decode = 151,

  // Nameprep

  XcodeProhibitedCharacter = 201,     ///< handed back through an out-parameter
  XcodeNormalizeNullCharacter = 202,  ///< a zero in the input of normalization
  XcodeBidiEnds = 203,   ///< right-to-left text whose ends are not both right-to-left characters
  XcodeBidiMixed = 204,  ///< right-to-left text with a left-to-right character
  XcodeNormalizeEmpty = 205,
  XcodeNormalizeTooLong = 207,  ///< decomposed, more than XcodeMaxPreparedCodePoints
  XcodeMappedToNothing = 208,
  XcodeCodePointRange = 209,  ///< above U+10FFFF

  // IDNA

  XcodeIdnaNonLDH = 300,  ///< an ASCII character other than a letter, a digit or a hyphen
  XcodeIdnaHyphenEnds = 301,
  XcodeIdnaAlreadyACE = 302,  ///< begins with "xn--" and is not ASCII
  XcodeIdnaLength = 303,      ///< as ASCII empty, or longer than XcodeMaxASCIILabelOctets
  XcodeIdnaRoundTrip = 304,   ///< the decoded label has another ASCII form

  // UTF conversion

  XcodeUTF16Invalid = 400,             ///< an unpaired surrogate, reading UTF-16
  XcodeCodePointInvalid = 401,         ///< above U+10FFFF or a surrogate, writing UTF-16
  XcodeUTF8UnpairedSurrogate = 403,    ///< an unpaired surrogate, writing UTF-8
  XcodeUTF8BadOctet = 406,             ///< a continuation octet is missing or not expected
  XcodeUTF8LeadOctetTooLarge = 410,    ///< above 0xF7
  XcodeUTF8TruncatedOrOverlong = 411,  ///< cut off by the end, or longer than necessary
};

}  // namespace zeb
