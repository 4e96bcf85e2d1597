#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>

namespace zeb {

/// Sizes as dictionaries with the keys "w" and "h". A missing or unreadable component is 0; written
/// components are doubles.
CGSize ZEBCGSizeFromDictionary(const NSDictionary& dictionary) noexcept;
NSDictionary ZEBDictionaryFromCGSize(CGSize size);

/// Affine transforms as dictionaries with the keys "a", "b", "c", "d", "tx" and "ty"; missing and
/// written components as above.
CGAffineTransform ZEBCGAffineTransformFromDictionary(const NSDictionary& dictionary) noexcept;
NSDictionary ZEBDictionaryFromCGAffineTransform(const CGAffineTransform& transform);

}  // namespace zeb
