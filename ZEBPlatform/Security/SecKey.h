#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Security/SecBase.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

/// One half of an RSA key pair. Immutable; any thread.
class SecKey : public NSObject {};
using SecKeyRef = Ref<SecKey>;

enum SecPadding : std::uint32_t {
  kSecPaddingPKCS1 = 1,           ///< the bytes as they are, without naming a digest
  kSecPaddingPKCS1SHA1 = 0x8002,  ///< the bytes are a SHA-1 digest
};

/// Makes a key pair and, where the attributes say `kSecAttrIsPermanent`, stores both halves as
/// keychain items, all or none.
OSStatus SecKeyGeneratePair(const NSDictionary& parameters, SecKeyRef* publicKey,
                            SecKeyRef* privateKey);

OSStatus SecKeyRawSign(const SecKeyRef& key, SecPadding padding,
                       std::span<const std::byte> dataToSign, std::span<std::byte> signature,
                       std::size_t* signatureLength);

/// The length of the key's modulus in bytes, which is the length of its signatures; 0 for nil.
std::size_t SecKeyGetBlockSize(const SecKeyRef& key) noexcept;

}  // namespace zeb
