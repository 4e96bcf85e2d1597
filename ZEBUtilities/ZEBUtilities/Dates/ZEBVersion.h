#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// A version number of four parts from 0 to 255: major in the bits 24 to 31, minor in 16 to 23,
/// patch in 8 to 15, build in 0 to 7. Versions compare as the integers do.
using ZEBVersion = std::uint32_t;

/// The parts that a comparison looks at; combine them with `|`.
using ZEBVersionCompareOptions = std::uint32_t;
inline constexpr ZEBVersionCompareOptions ZEBVersionCompareMajor = 1;
inline constexpr ZEBVersionCompareOptions ZEBVersionCompareMinor = 2;
inline constexpr ZEBVersionCompareOptions ZEBVersionComparePatch = 4;
inline constexpr ZEBVersionCompareOptions ZEBVersionCompareBuild = 8;

/// The first part that differs decides, from major to build.
constexpr NSComparisonResult ZEBVersionCompare(ZEBVersion a, ZEBVersion b) noexcept {
  return a < b ? NSOrderedAscending : a > b ? NSOrderedDescending : NSOrderedSame;
}

/// Looks only at the parts in `options`. Without options all versions are the same.
constexpr NSComparisonResult ZEBVersionCompareWithOptions(
    ZEBVersion a, ZEBVersion b, ZEBVersionCompareOptions options) noexcept {
  const ZEBVersion selected = (options & ZEBVersionCompareMajor ? 0xFF000000u : 0u) |
                              (options & ZEBVersionCompareMinor ? 0x00FF0000u : 0u) |
                              (options & ZEBVersionComparePatch ? 0x0000FF00u : 0u) |
                              (options & ZEBVersionCompareBuild ? 0x000000FFu : 0u);
  return ZEBVersionCompare(a & selected, b & selected);
}

/// All four parts in decimal digits, such as "1.2.0.0".
NSString ZEBVersionToDotSeparatedVersionString(ZEBVersion version);

/// Each of the first four components between dots is read by `intValue` (leading white space and a
/// sign are allowed, reading stops at the first other character) and limited to 0 and 255. Missing
/// components are 0, further ones are ignored; nil and the empty text give 0.
ZEBVersion ZEBVersionFromDotSeparatedVersionString(const NSString& text);

constexpr ZEBVersion ZEBVersionFromInt(std::uint32_t number) noexcept { return number; }
constexpr std::uint32_t ZEBVersionToInt(ZEBVersion version) noexcept { return version; }

}  // namespace zeb
