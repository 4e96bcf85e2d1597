#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

namespace zeb {

// The digest of the data as new data: raw bytes, not text (see `zeb_hexStringValue`). Nil on nil.
// Joined data is read range by range and never joined. Any thread.
//
// MD2, MD4, MD5 and SHA-1 are broken: use them to identify data, never to protect it.

/// RFC 1319, 16 bytes.
[[nodiscard]] NSData zeb_MD2Hash(const NSData& data);
/// RFC 1320, 16 bytes.
[[nodiscard]] NSData zeb_MD4Hash(const NSData& data);
/// RFC 1321, 16 bytes.
[[nodiscard]] NSData zeb_MD5Hash(const NSData& data);
/// FIPS 180-4, 20 bytes.
[[nodiscard]] NSData zeb_SHA1Hash(const NSData& data);
/// FIPS 180-4, 32 bytes.
[[nodiscard]] NSData zeb_SHA256Hash(const NSData& data);
/// FIPS 180-4, 64 bytes.
[[nodiscard]] NSData zeb_SHA512Hash(const NSData& data);

}  // namespace zeb
