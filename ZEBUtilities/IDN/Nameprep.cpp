#include <IDN/ArgumentsPrivate.h>
#include <IDN/Nameprep.h>
#include <IDN/Normalization.h>
#include <IDN/Tables/NameprepTables.h>
#include <IDN/Tables/detail/CodePointIndex.h>
#include <IDN/UTFConversions.h>

#include <algorithm>

namespace zeb {

namespace {

/// Stable text of this length does not exceed the limit of normalization when it is decomposed. So
/// it need not be decomposed to know that it stays as it is.
constexpr std::int32_t maxUndecomposed =
    XcodeMaxPreparedCodePoints / detail::maxStableDecomposition;

/// Whether normalization may change the text, or refuse it, if these are the flags of all its code
/// points together.
bool needsNormalization(unsigned flags, std::int32_t count) noexcept {
  if (flags & (detail::isUnstable | detail::hasClass | detail::composesBackward)) return true;
  return (flags & detail::isDecomposed) && count > maxUndecomposed;
}

unsigned flagsOfAll(const XcodeCodePoint* codePoints, std::int32_t count) noexcept {
  unsigned flags = 0;
  for (std::int32_t i = 0; i < count; ++i) flags |= detail::flagsOf(codePoints[i]);
  return flags;
}

/// The first step. `flags` are those of all results together.
XcodeResult mapAll(const XcodeCodePoint* codePoints, std::int32_t count, XcodeCodePoint* mapped,
                   std::int32_t* length, unsigned* flags) noexcept {
  const std::int32_t capacity = *length;
  std::int32_t written = 0;
  *flags = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const unsigned ownFlags = detail::flagsOf(codePoints[i]);
    if (!(ownFlags & detail::isMapped)) {
      if (written == capacity) return XcodeOverflow;
      mapped[written++] = codePoints[i];
      *flags |= ownFlags;
      continue;
    }
    const CharmapEntry& entry = g_charmapTable[detail::charmapPlace(codePoints[i])];
    if (entry.count > capacity - written) return XcodeOverflow;
    std::copy_n(entry.replacement, entry.count, mapped + written);
    *flags |= flagsOfAll(mapped + written, entry.count);
    written += entry.count;
  }
  if (written == 0) return XcodeMappedToNothing;
  *length = written;
  return XcodeOK;
}

/// The last two steps, for text with the given flags together.
XcodeResult check(const XcodeCodePoint* codePoints, std::int32_t count, unsigned flags,
                  XcodeCodePoint* prohibited) noexcept {
  if (flags & detail::isProhibited) return Xcode_prohibitString(codePoints, count, prohibited);
  if (flags & detail::isRightToLeft) return Xcode_bidifilterString(codePoints, count);
  return XcodeOK;
}

}  // namespace

XcodeResult Xcode_charmapString(const XcodeCodePoint* codePoints, std::int32_t count,
                                XcodeCodePoint* mapped, std::int32_t* length) noexcept {
  if (detail::isMissing(codePoints, count, mapped, length)) return XcodeBadArgument;
  unsigned flags;
  return mapAll(codePoints, count, mapped, length, &flags);
}

XcodeResult Xcode_prohibitString(const XcodeCodePoint* codePoints, std::int32_t count,
                                 XcodeCodePoint* prohibited) noexcept {
  if (detail::isMissing(codePoints, count)) return XcodeBadArgument;
  for (std::int32_t i = 0; i < count; ++i) {
    if (codePoints[i] >= detail::codePointLimit) return XcodeCodePointRange;
    if (!(detail::flagsOf(codePoints[i]) & detail::isProhibited)) continue;
    if (prohibited != nullptr) *prohibited = codePoints[i];
    return XcodeProhibitedCharacter;
  }
  return XcodeOK;
}

XcodeResult Xcode_bidifilterString(const XcodeCodePoint* codePoints, std::int32_t count) noexcept {
  if (detail::isMissing(codePoints, count)) return XcodeBadArgument;
  const unsigned flags = flagsOfAll(codePoints, count);
  if (!(flags & detail::isRightToLeft)) return XcodeOK;
  const unsigned ends = detail::flagsOf(codePoints[0]) & detail::flagsOf(codePoints[count - 1]);
  if (!(ends & detail::isRightToLeft)) return XcodeBidiEnds;
  return flags & detail::isLeftToRight ? XcodeBidiMixed : XcodeOK;
}

XcodeResult Xcode_nameprepString32(const XcodeCodePoint* codePoints, std::int32_t count,
                                   XcodeCodePoint* prepared, std::int32_t* length,
                                   XcodeCodePoint* prohibited) noexcept {
  if (detail::isMissing(codePoints, count, prepared, length)) return XcodeBadArgument;
  if (count > XcodeMaxPreparedCodePoints) return XcodeOverflow;
  XcodeCodePoint mapped[XcodeMaxPreparedCodePoints];
  std::int32_t mappedCount = XcodeMaxPreparedCodePoints;
  unsigned flags;
  XcodeResult result = mapAll(codePoints, count, mapped, &mappedCount, &flags);
  if (result != XcodeOK) return result;

  std::int32_t preparedCount = *length;
  if (needsNormalization(flags, mappedCount)) {
    result = Xcode_normalizeString(mapped, mappedCount, prepared, &preparedCount);
    if (result != XcodeOK) return result;
    flags = flagsOfAll(prepared, preparedCount);
  } else {
    if (mappedCount > preparedCount) return XcodeOverflow;
    std::copy_n(mapped, mappedCount, prepared);
    preparedCount = mappedCount;
  }
  result = check(prepared, preparedCount, flags, prohibited);
  if (result == XcodeOK) *length = preparedCount;
  return result;
}

XcodeResult Xcode_nameprepString(const XcodeUnit* units, std::int32_t count,
                                 XcodeCodePoint* prepared, std::int32_t* length,
                                 XcodeCodePoint* prohibited) noexcept {
  XcodeCodePoint codePoints[XcodeMaxPreparedCodePoints];
  std::int32_t codePointCount = XcodeMaxPreparedCodePoints;
  const XcodeResult result = Xcode_convertUTF16To32Bit(units, count, codePoints, &codePointCount);
  if (result != XcodeOK) return result;
  return Xcode_nameprepString32(codePoints, codePointCount, prepared, length, prohibited);
}

}  // namespace zeb
