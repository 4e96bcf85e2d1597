#pragma once

#include <cstdint>

namespace zeb {

// The data of nameprep (RFC 3491), which is Unicode 3.2 forever: seven constant tables, each in
// ascending order of its first member. Written by tools/generate_idn_tables.py.

/// What a code point is replaced by (RFC 3454, tables B.1 and B.2).
struct CharmapEntry {
  std::uint32_t codePoint;
  std::int16_t count;  ///< of the replacement; 0: mapped to nothing, -1: not replaced
  std::uint32_t replacement[4];
};
extern const CharmapEntry g_charmapTable[1398];

/// From `first` to `last`, both included.
struct CodePointRange {
  std::uint32_t first;
  std::uint32_t last;
};
/// What nameprep prohibits: RFC 3454, tables C.1.2, C.2.2 and C.3 to C.9.
extern const CodePointRange g_prohibitTable[33];

/// The code points of the directions R and AL (RFC 3454, table D.1).
extern const std::uint32_t g_randalcatTable[1044];

/// The code points of the direction L (RFC 3454, table D.2).
extern const CodePointRange g_lcatTable[360];

/// The decomposition mapping of Unicode's database, canonical or for compatibility. Its code points
/// may have decompositions themselves. Hangul syllables have no entries: they are computed.
struct DecomposeEntry {
  std::uint32_t codePoint;
  std::uint16_t applies;            ///< not zero: the code point is decomposed
  std::uint32_t decomposition[20];  ///< ends with a zero
};
extern const DecomposeEntry g_decomposeTable[5143];

/// The canonical combining class, where it is not zero.
struct CanonicalEntry {
  std::uint32_t codePoint;
  std::uint32_t combiningClass;
};
extern const CanonicalEntry g_canonicalTable[327];

/// Two code points and what they compose to. The table has an entry for each canonical
/// decomposition that Unicode does not exclude from composition. 924 of them are decompositions
/// into a single code point, which never compose. The second half of their keys is 0x80000000 plus
/// the composite: so all keys differ, and no two code points have such a key.
struct ComposeEntry {
  std::uint64_t key;  ///< the first code point times 2^32, plus the second one
  std::uint32_t composite;
};
extern const ComposeEntry g_composeTable[1845];

}  // namespace zeb
