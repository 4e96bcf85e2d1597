#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Security/SecBase.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

namespace detail {
struct SecKeyAccess;
}

/// One half of an RSA key pair. Made by `SecKeyGeneratePair`, and by `SecItemCopyMatching` for key
/// items; overwritten in memory when the last reference is gone. Immutable; any thread.
///
/// The private key that was read from the keychain last stays in memory until another one is read,
/// or this process deletes or changes a key item: preparing a key takes as long as signing with it.
class SecKey final : public NSObject {
 public:
  ~SecKey() override;

 private:
  friend detail::SecKeyAccess;
  explicit SecKey(void* key, bool isPrivate) noexcept : key_(key), isPrivate_(isPrivate) {}

  void* const key_;  ///< the cryptographic library's object
  const bool isPrivate_;
};
using SecKeyRef = Ref<SecKey>;

enum SecPadding : std::uint32_t {
  kSecPaddingPKCS1 = 1,           ///< the bytes as they are, without naming a digest
  kSecPaddingPKCS1SHA1 = 0x8002,  ///< the bytes are a SHA-1 digest
};

/// Makes an RSA key pair. `parameters` has kSecAttrKeyType with kSecAttrKeyTypeRSA, the length of
/// the modulus under kSecAttrKeySizeInBits, from 1024 to 8192, and other attributes of key items.
/// The dictionaries under kSecPrivateKeyAttrs and kSecPublicKeyAttrs have attributes of one half,
/// which take precedence.
///
/// A half whose attributes say kSecAttrIsPermanent also becomes a keychain item; if both do, both
/// or none are added. The class of key, the dates, and kSecAttrApplicationLabel as the SHA-1 digest
/// of the public key are set here. The items' values are the keys as PKCS #1 (RFC 8017, appendix
/// A.1) in DER.
///
/// `errSecParam` for parameters that are nil, unknown or contradict each other,
/// `errSecDuplicateItem` if a permanent half's identity is taken (see `SecItemAdd`); then nothing
/// was added. The references, which may be null, are set only on success. Takes a tenth of a second
/// for 2048 bits and up to a minute for 8192, on the calling thread. Any thread.
OSStatus SecKeyGeneratePair(const NSDictionary& parameters, SecKeyRef* publicKey,
                            SecKeyRef* privateKey);

/// Signs with a private key as PKCS #1 version 1.5 (RFC 8017, section 8.2). For
/// kSecPaddingPKCS1SHA1 `dataToSign` is a digest of 20 bytes; for kSecPaddingPKCS1 it is at least
/// 11 bytes shorter than the key and already contains what names the digest.
///
/// Writes as many bytes as `SecKeyGetBlockSize` says into `signature`, and the number to
/// `signatureLength` if that is not null. `errSecParam` for nil, a public key, data of another
/// length and a `signature` that is too short; `errSecUnimplemented` for another padding. Any
/// thread.
OSStatus SecKeyRawSign(const SecKeyRef& key, SecPadding padding,
                       std::span<const std::byte> dataToSign, std::span<std::byte> signature,
                       std::size_t* signatureLength);

/// The length of the key's modulus in bytes, which is the length of its signatures; 0 for nil.
std::size_t SecKeyGetBlockSize(const SecKeyRef& key) noexcept;

}  // namespace zeb
