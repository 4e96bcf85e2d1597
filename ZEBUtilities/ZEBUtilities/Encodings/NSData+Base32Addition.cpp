#include <ZEBUtilities/Encodings/Base32Codec.h>
#include <ZEBUtilities/Encodings/NSData+Base32Addition.h>

namespace zeb {

NSString base32String(const NSData& data) { return Base32Codec::base32StringWithData(data); }

NSData dataWithBase32String(const NSString& string) {
  return Base32Codec::dataWithBase32String(string);
}

}  // namespace zeb
