#include <ZEBUtilities/Encodings/Base32Codec.h>
#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>
#include <ZEBUtilities/Encodings/NSString+Base32Addition.h>

#include <span>
#include <string>

namespace zeb {

NSString base32String(const NSString& string) {
  if (string.isNil() || !string.isWellFormed()) return nullptr;
  const std::string utf8 = string.utf8();
  return Base32Codec::base32StringWithData(
      NSData::dataWithBytesNoCopy(std::as_bytes(std::span(utf8)), nullptr));
}

NSString stringWithBase32String(const NSString& string) {
  return zeb_UTF8String(Base32Codec::dataWithBase32String(string));
}

}  // namespace zeb
