#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBUtilities/Encodings/NSData+CommonDigest.h>

#include <span>

namespace zeb {

namespace {

NSData digestOf(const NSData& data, DigestAlgorithm algorithm) {
  if (data.isNil()) return nullptr;
  MessageDigest digest(algorithm, data.length());
  data.enumerateByteRanges([&](std::span<const std::byte> range, NSRange) {
    digest.update(range);
    return true;
  });
  const std::size_t length = digestLength(algorithm);
  detail::DataBuilder result(length);
  digest.finish(std::as_writable_bytes(std::span(result.cursor(), length)));
  result.setCursor(result.cursor() + length);
  return result.finish();
}

}  // namespace

NSData zeb_MD2Hash(const NSData& data) { return digestOf(data, DigestAlgorithm::md2); }
NSData zeb_MD4Hash(const NSData& data) { return digestOf(data, DigestAlgorithm::md4); }
NSData zeb_MD5Hash(const NSData& data) { return digestOf(data, DigestAlgorithm::md5); }
NSData zeb_SHA1Hash(const NSData& data) { return digestOf(data, DigestAlgorithm::sha1); }
NSData zeb_SHA256Hash(const NSData& data) { return digestOf(data, DigestAlgorithm::sha256); }
NSData zeb_SHA512Hash(const NSData& data) { return digestOf(data, DigestAlgorithm::sha512); }

}  // namespace zeb
