#pragma once

#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/SecKey.h>
#include <openssl/evp.h>

#include <cstddef>
#include <memory>
#include <span>

namespace zeb::detail {

struct SecKeyDeleter {
  void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
  void operator()(EVP_PKEY_CTX* context) const noexcept { EVP_PKEY_CTX_free(context); }
};
using OwnedKey = std::unique_ptr<EVP_PKEY, SecKeyDeleter>;
using OwnedKeyContext = std::unique_ptr<EVP_PKEY_CTX, SecKeyDeleter>;

/// Removes what the cryptographic library noted about failures in its scope, because a host that
/// uses the library, too, would take the notes for its own.
class OpenSSLErrorScope {
 public:
  OpenSSLErrorScope() noexcept;
  OpenSSLErrorScope(const OpenSSLErrorScope&) = delete;
  OpenSSLErrorScope& operator=(const OpenSSLErrorScope&) = delete;
  ~OpenSSLErrorScope();
};

/// What `SecKey` hides.
struct SecKeyAccess {
  static SecKeyRef make(OwnedKey key, bool isPrivate) {
    const SecKeyRef result = SecKeyRef::adopt(new SecKey(key.get(), isPrivate));
    (void)key.release();
    return result;
  }
  static EVP_PKEY* key(const SecKey& key) noexcept { return static_cast<EVP_PKEY*>(key.key_); }
  static bool isPrivate(const SecKey& key) noexcept { return key.isPrivate_; }
};

/// PKCS #1 in DER. Empty if there is no memory.
SecretBytes encodedKey(const EVP_PKEY* key, bool isPrivate);
/// Nil if the bytes are not exactly one such key, or one of more than 16,384 bits, whose use would
/// take minutes.
SecKeyRef decodedKey(std::span<const std::byte> bytes, bool isPrivate);

/// The key that an item's value contains. `errSecDecode` if the value is not a key of the class
/// that the attributes name.
OSStatus secKeyOfItem(const KeychainItem& item, SecKeyRef& key);
/// Forgets the private key that `secKeyOfItem` returned last.
void forgetRecentKey();

}  // namespace zeb::detail
