#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Security/SecBase.h>
#include <ZEBPlatform/Security/SecretBytes.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct evp_cipher_ctx_st;

namespace zeb {

/// Seals values with AES-256-GCM (NIST SP 800-38D). A sealed value is the random nonce of 12 bytes,
/// the encrypted bytes and the tag of 16 bytes, and can be opened only together with the identity
/// that it was sealed with. Any thread.
///
/// Random nonces allow about 2^32 sealings under one key before a repetition becomes likely enough
/// to matter.
class KeychainCipher {
 public:
  static constexpr std::size_t keyLength = 32;
  static constexpr std::size_t overhead = 12 + 16;

  /// `key` has `keyLength` bytes.
  explicit KeychainCipher(SecretBytes key) noexcept : key_(std::move(key)) {}
  KeychainCipher(const KeychainCipher&) = delete;
  KeychainCipher& operator=(const KeychainCipher&) = delete;
  ~KeychainCipher();

  OSStatus seal(std::string_view identity, std::span<const std::byte> value,
                std::vector<std::byte>& sealed);
  /// `errSecDecode` if the bytes were not sealed with this key and identity, or were changed.
  OSStatus open(std::string_view identity, std::span<const std::byte> sealed, SecretBytes& value);

 private:
  class Use;

  SecretBytes key_;
  detail::Lock lock_;
  /// Contexts that know the key already, because setting it takes longer than a short value.
  std::vector<evp_cipher_ctx_st*> idle_ ZEB_GUARDED_BY(lock_);
  std::size_t made_ ZEB_GUARDED_BY(lock_) = 0;
};

}  // namespace zeb
