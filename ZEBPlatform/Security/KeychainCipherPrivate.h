#pragma once

#include <ZEBPlatform/Security/SecBase.h>
#include <ZEBPlatform/Security/SecretBytes.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct evp_cipher_ctx_st;

namespace zeb {

/// Seals values with AES-256-GCM (NIST SP 800-38D). A sealed value is the random nonce of 12 bytes,
/// the encrypted bytes and the tag of 16 bytes, and can be opened only together with the identity
/// that it was sealed with. One thread at a time.
///
/// Random nonces allow about 2^32 sealings under one key before a repetition becomes likely enough
/// to matter.
class KeychainCipher {
 public:
  static constexpr std::size_t keyLength = 32;
  static constexpr std::size_t overhead = 12 + 16;

  /// `key` has `keyLength` bytes.
  explicit KeychainCipher(const SecretBytes& key) noexcept;
  /// False if there was no memory for it; then all calls fail with `errSecAllocate`.
  explicit operator bool() const noexcept { return static_cast<bool>(context_); }
  KeychainCipher(const KeychainCipher&) = delete;
  KeychainCipher& operator=(const KeychainCipher&) = delete;

  OSStatus seal(std::string_view identity, std::span<const std::byte> value,
                std::vector<std::byte>& sealed);
  /// `errSecDecode` if the bytes were not sealed with this key and identity, or were changed.
  OSStatus open(std::string_view identity, std::span<const std::byte> sealed, SecretBytes& value);

 private:
  struct Freer {
    void operator()(evp_cipher_ctx_st* context) const noexcept;
  };

  /// Knows the key already, because setting it takes longer than a short value.
  std::unique_ptr<evp_cipher_ctx_st, Freer> context_;
};

}  // namespace zeb
