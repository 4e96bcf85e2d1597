#pragma once

#include <cstdint>

namespace zeb::detail {

// Where a code point is in the tables of nameprep, found with two loads instead of a search. Made
// from the same data by tools/generate_idn_tables.py.

enum CodePointFlags : unsigned {
  isMapped = 1,           ///< is in g_charmapTable
  isProhibited = 2,       ///< is in g_prohibitTable, or no code point at all
  isRightToLeft = 4,      ///< is in g_randalcatTable
  isLeftToRight = 8,      ///< is in g_lcatTable
  isDecomposed = 16,      ///< is in g_decomposeTable, or a Hangul syllable
  hasClass = 32,          ///< is in g_canonicalTable
  composesBackward = 64,  ///< may compose with the code point before it
  isUnstable = 128,       ///< normalization changes it also when it stands alone, or refuses it
};

/// The greatest number of code points in the decomposition of a code point that is not unstable and
/// that composition gives back.
inline constexpr std::int32_t maxStableDecomposition = 4;

inline constexpr std::uint64_t codePointLimit = 0x110000;

extern const std::uint8_t flagBlockOf[8704];
extern const std::uint8_t flagBlocks[][128];

/// The flags of any number.
inline unsigned flagsOf(std::uint64_t codePoint) noexcept {
  if (codePoint >= codePointLimit) return isProhibited;
  return flagBlocks[flagBlockOf[codePoint >> 7]][codePoint & 127];
}

// The first levels below end with the last code point that is in the table, so these may be called
// only for code points whose flags say that they are.

extern const std::uint8_t charmapPlaceBlockOf[];
extern const std::uint16_t charmapPlaceBlocks[][128];
extern const std::uint8_t decomposePlaceBlockOf[];
extern const std::uint16_t decomposePlaceBlocks[][128];
extern const std::uint8_t canonicalClassBlockOf[];
extern const std::uint8_t canonicalClassBlocks[][128];

/// Of an `isMapped` code point: its place in g_charmapTable.
inline unsigned charmapPlace(std::uint64_t codePoint) noexcept {
  return charmapPlaceBlocks[charmapPlaceBlockOf[codePoint >> 7]][codePoint & 127];
}

/// Of an `isDecomposed` code point other than a Hangul syllable: its place in g_decomposeTable.
inline unsigned decomposePlace(std::uint64_t codePoint) noexcept {
  return decomposePlaceBlocks[decomposePlaceBlockOf[codePoint >> 7]][codePoint & 127];
}

/// Of a code point that `hasClass`: its combining class.
inline unsigned canonicalClass(std::uint64_t codePoint) noexcept {
  return canonicalClassBlocks[canonicalClassBlockOf[codePoint >> 7]][codePoint & 127];
}

}  // namespace zeb::detail
