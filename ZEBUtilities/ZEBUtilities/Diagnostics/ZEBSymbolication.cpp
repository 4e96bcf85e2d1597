#include <ZEBPlatform/Linux/detail/LoadedImages.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Diagnostics/ZEBSymbolication.h>
#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>

#include <string>

namespace zeb {

NSDictionary ZEBSymbolication::_loadAddressMap() {
  NSMutableDictionary map;
  for (const LoadedImage& image : loadedImages()) {
    map.setObject(NSString::stringWithFormat("0x%llx", image.loadAddress),
                  image.path.substr(image.path.rfind('/') + 1));
  }
  return map.copy();
}

NSDictionary ZEBSymbolication::loadAddressMapForStack(const NSArray& stack) {
  const NSDictionary all = _loadAddressMap();
  const NSString nonbreakingSpace(u"\u00A0");
  NSMutableDictionary map;
  for (const Value& line : stack) {
    const NSArray pieces = zeb_stringByConvertingWhitespaceToNonbreaking(NSString(line))
                               .componentsSeparatedByString(nonbreakingSpace);
    if (pieces.count() < 2) continue;
    const NSString image(pieces[1]);
    if (const Value address = all[image]; !address.isNil()) map.setObject(address, image);
  }
  return map.copy();
}

Class* ZEBSymbolication::runtimeClass() {
  using Self = ZEBSymbolication;
  static Class* const cls = registerClass(
      "ZEBSymbolication", {
                              classMethod("_loadAddressMap", &Self::_loadAddressMap),
                              classMethod("loadAddressMapForStack:", &Self::loadAddressMapForStack),
                          });
  return cls;
}

}  // namespace zeb
