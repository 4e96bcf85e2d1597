#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBUtilities/Dates/ZEBVersion.h>

#include <algorithm>

namespace zeb {

NSString ZEBVersionToDotSeparatedVersionString(ZEBVersion version) {
  return NSString::stringWithFormat("%u.%u.%u.%u", version >> 24, version >> 16 & 0xFF,
                                    version >> 8 & 0xFF, version & 0xFF);
}

ZEBVersion ZEBVersionFromDotSeparatedVersionString(const NSString& text) {
  ZEBVersion version = 0;
  std::size_t begin = 0;  // past the end if there are no more components
  for (int shift = 24; shift >= 0 && begin <= text.length(); shift -= 8) {
    std::size_t end = begin;
    while (end < text.length() && text.characterAtIndex(end) != u'.') ++end;
    const int part = text.substringWithRange({begin, end - begin}).intValue();
    version |= static_cast<ZEBVersion>(std::clamp(part, 0, 255)) << shift;
    begin = end + 1;
  }
  return version;
}

}  // namespace zeb
