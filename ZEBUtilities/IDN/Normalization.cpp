#include <IDN/ArgumentsPrivate.h>
#include <IDN/Normalization.h>
#include <IDN/Tables/NameprepTables.h>
#include <IDN/Tables/detail/CodePointIndex.h>

#include <algorithm>
#include <iterator>

namespace zeb {

namespace {

// Hangul syllables and their parts: leading consonants, vowels, trailing consonants.
constexpr XcodeCodePoint syllableBase = 0xAC00;
constexpr XcodeCodePoint leadBase = 0x1100;
constexpr XcodeCodePoint vowelBase = 0x1161;
constexpr XcodeCodePoint trailBase = 0x11A7;  // itself no consonant
constexpr XcodeCodePoint leadCount = 19;
constexpr XcodeCodePoint vowelCount = 21;
constexpr XcodeCodePoint trailCount = 28;
constexpr XcodeCodePoint syllablesPerLead = vowelCount * trailCount;
constexpr XcodeCodePoint syllableCount = leadCount * syllablesPerLead;

constexpr std::int32_t maxDepth = 20;

void append(XcodeCodePoint codePoint, XcodeCodePoint* decomposition) noexcept {
  XcodeCodePoint* end = decomposition;
  while (*end != 0) ++end;
  if (end - decomposition == maxDecomposition - 1) return;
  end[0] = codePoint;
  end[1] = 0;
}

unsigned classOf(XcodeCodePoint codePoint) noexcept {
  return detail::flagsOf(codePoint) & detail::hasClass ? detail::canonicalClass(codePoint) : 0;
}

/// Sorts each sequence of marks by their classes and keeps the order of equal ones.
void orderMarks(XcodeCodePoint* codePoints, std::int32_t count) noexcept {
  // A mark's class, its place and itself as one number; all numbers differ.
  constexpr unsigned codePointBits = 21, placeBits = 16;
  XcodeCodePoint* const end = codePoints + count;
  for (XcodeCodePoint* mark = codePoints; mark != end;) {
    if (classOf(*mark) == 0) {
      ++mark;
      continue;
    }
    XcodeCodePoint* const first = mark;
    for (; mark != end; ++mark) {
      const XcodeCodePoint ownClass = classOf(*mark);
      if (ownClass == 0) break;
      const auto place = static_cast<XcodeCodePoint>(mark - first);
      *mark |= (ownClass << placeBits | place) << codePointBits;
    }
    std::sort(first, mark);
    for (XcodeCodePoint* sorted = first; sorted != mark; ++sorted) {
      *sorted &= (XcodeCodePoint{1} << codePointBits) - 1;
    }
  }
}

/// What the two compose to, or 0.
XcodeCodePoint composite(XcodeCodePoint starter, XcodeCodePoint next) noexcept {
  // A larger number times 2^32 would lose its upper bits and look like another code point.
  if (starter >= detail::codePointLimit) return 0;
  if (!(detail::flagsOf(next) & detail::composesBackward)) return 0;
  if (starter - leadBase < leadCount && next - vowelBase < vowelCount) {
    return syllableBase + (starter - leadBase) * syllablesPerLead + (next - vowelBase) * trailCount;
  }
  const XcodeCodePoint syllable = starter - syllableBase;
  if (syllable < syllableCount && syllable % trailCount == 0 && next - trailBase < trailCount) {
    return starter + (next - trailBase);
  }
  const std::uint64_t key = starter << 32 | next;
  const ComposeEntry* const found =
      std::lower_bound(std::begin(g_composeTable), std::end(g_composeTable), key,
                       [](const ComposeEntry& entry, std::uint64_t k) { return entry.key < k; });
  return found != std::end(g_composeTable) && found->key == key ? found->composite : 0;
}

/// Composes in place and answers the new count.
std::int32_t compose(XcodeCodePoint* codePoints, std::int32_t count) noexcept {
  XcodeCodePoint* starter = nullptr;
  unsigned classBefore = 0;  // of what stays between the starter and the next code point
  std::int32_t kept = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const XcodeCodePoint codePoint = codePoints[i];
    const unsigned ownClass = classOf(codePoint);
    if (starter != nullptr && (starter + 1 == codePoints + kept || classBefore < ownClass)) {
      if (const XcodeCodePoint composed = composite(*starter, codePoint)) {
        *starter = composed;
        continue;
      }
    }
    codePoints[kept] = codePoint;
    if (ownClass == 0) starter = codePoints + kept;
    classBefore = ownClass;
    ++kept;
  }
  return kept;
}

}  // namespace

void doDecomposition(std::int32_t depth, XcodeCodePoint codePoint,
                     XcodeCodePoint* decomposition) noexcept {
  if (depth > maxDepth || !decomposition) return;
  const XcodeCodePoint syllable = codePoint - syllableBase;
  if (!(detail::flagsOf(codePoint) & detail::isDecomposed)) {
    append(codePoint, decomposition);
  } else if (syllable < syllableCount) {
    append(leadBase + syllable / syllablesPerLead, decomposition);
    append(vowelBase + syllable % syllablesPerLead / trailCount, decomposition);
    const XcodeCodePoint trail = syllable % trailCount;
    if (trail != 0) append(trailBase + trail, decomposition);
  } else {
    const DecomposeEntry& entry = g_decomposeTable[detail::decomposePlace(codePoint)];
    for (const std::uint32_t* part = entry.decomposition; *part != 0; ++part) {
      doDecomposition(depth + 1, *part, decomposition);
    }
  }
}

XcodeResult Xcode_normalizeString(const XcodeCodePoint* codePoints, std::int32_t count,
                                  XcodeCodePoint* normalized, std::int32_t* length) noexcept {
  if (detail::isMissing(codePoints, count, normalized, length)) return XcodeBadArgument;
  if (count == 0) return XcodeNormalizeEmpty;
  XcodeCodePoint decomposed[XcodeMaxPreparedCodePoints];
  std::int32_t decomposedCount = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const XcodeCodePoint codePoint = codePoints[i];
    if (codePoint == 0) return XcodeNormalizeNullCharacter;
    XcodeCodePoint parts[maxDecomposition];
    parts[0] = 0;
    doDecomposition(0, codePoint, parts);
    for (const XcodeCodePoint* part = parts; *part != 0; ++part) {
      if (decomposedCount == XcodeMaxPreparedCodePoints) return XcodeNormalizeTooLong;
      decomposed[decomposedCount++] = *part;
    }
  }
  orderMarks(decomposed, decomposedCount);
  const std::int32_t composedCount = compose(decomposed, decomposedCount);
  if (composedCount > *length) return XcodeOverflow;
  XcodeCodePoint* const end = std::copy_n(decomposed, composedCount, normalized);
  if (composedCount < *length) *end = 0;
  *length = composedCount;
  return XcodeOK;
}

}  // namespace zeb
