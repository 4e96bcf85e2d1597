#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Graphics/ZEBGeometryDictionaries.h>

namespace zeb {

CGSize ZEBCGSizeFromDictionary(const NSDictionary& dictionary) noexcept {
  return {zeb_cgFloatForKey(dictionary, "w"), zeb_cgFloatForKey(dictionary, "h")};
}

NSDictionary ZEBDictionaryFromCGSize(CGSize size) {
  return {{"w", size.width}, {"h", size.height}};
}

CGAffineTransform ZEBCGAffineTransformFromDictionary(const NSDictionary& dictionary) noexcept {
  return {zeb_cgFloatForKey(dictionary, "a"),  zeb_cgFloatForKey(dictionary, "b"),
          zeb_cgFloatForKey(dictionary, "c"),  zeb_cgFloatForKey(dictionary, "d"),
          zeb_cgFloatForKey(dictionary, "tx"), zeb_cgFloatForKey(dictionary, "ty")};
}

NSDictionary ZEBDictionaryFromCGAffineTransform(const CGAffineTransform& transform) {
  return {{"a", transform.a}, {"b", transform.b},   {"c", transform.c},
          {"d", transform.d}, {"tx", transform.tx}, {"ty", transform.ty}};
}

}  // namespace zeb
