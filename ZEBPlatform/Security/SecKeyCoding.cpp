#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeyPrivate.h>
#include <openssl/decoder.h>
#include <openssl/encoder.h>
#include <openssl/rsa.h>

#include <utility>

namespace zeb::detail {

namespace {

constexpr const char* pkcs1 = "type-specific";  // as the cryptographic library names it for RSA

struct CodingDeleter {
  void operator()(OSSL_ENCODER_CTX* context) const noexcept { OSSL_ENCODER_CTX_free(context); }
  void operator()(OSSL_DECODER_CTX* context) const noexcept { OSSL_DECODER_CTX_free(context); }
};

int selectionOf(bool isPrivate) noexcept {
  return isPrivate ? EVP_PKEY_KEYPAIR : EVP_PKEY_PUBLIC_KEY;
}

/// The private key that was read last, with the bytes that it was read from: the library prepares a
/// key at its first use, which takes as long as a signature.
struct RecentKey {
  Lock lock;
  SecretBytes bytes ZEB_GUARDED_BY(lock);
  SecKeyRef key ZEB_GUARDED_BY(lock);
};

RecentKey& recentKey() {
  static NeverDestroyed<RecentKey> recent;
  return *recent;
}

SecKeyRef recentKeyOf(std::span<const std::byte> bytes) {
  RecentKey& recent = recentKey();
  const LockGuard guard(recent.lock);
  return SecretBytes::equal(recent.bytes.bytes(), bytes) ? recent.key : nullptr;
}

/// The former key is released after unlocking.
void setRecentKey(SecretBytes bytes, SecKeyRef key) {
  RecentKey& recent = recentKey();
  const LockGuard guard(recent.lock);
  std::swap(recent.bytes, bytes);
  std::swap(recent.key, key);
}

}  // namespace

SecretBytes encodedKey(const EVP_PKEY* key, bool isPrivate) {
  const OpenSSLErrorScope errors;
  const std::unique_ptr<OSSL_ENCODER_CTX, CodingDeleter> context(
      OSSL_ENCODER_CTX_new_for_pkey(key, selectionOf(isPrivate), "DER", pkcs1, nullptr));
  unsigned char* encoded = nullptr;
  std::size_t length = 0;
  if (!context || OSSL_ENCODER_to_data(context.get(), &encoded, &length) != 1) return {};
  SecretBytes result(std::as_bytes(std::span(encoded, length)));
  OPENSSL_clear_free(encoded, length);
  return result;
}

SecKeyRef decodedKey(std::span<const std::byte> bytes, bool isPrivate) {
  const OpenSSLErrorScope errors;
  EVP_PKEY* decoded = nullptr;
  const std::unique_ptr<OSSL_DECODER_CTX, CodingDeleter> context(OSSL_DECODER_CTX_new_for_pkey(
      &decoded, "DER", pkcs1, "RSA", selectionOf(isPrivate), nullptr, nullptr));
  auto* position = reinterpret_cast<const unsigned char*>(bytes.data());
  std::size_t length = bytes.size();
  const bool isDecoded =
      context && OSSL_DECODER_from_data(context.get(), &position, &length) == 1 && length == 0;
  OwnedKey key(decoded);
  if (!isDecoded || EVP_PKEY_get_bits(key.get()) > OPENSSL_RSA_MAX_MODULUS_BITS) return nullptr;
  return SecKeyAccess::make(std::move(key), isPrivate);
}

OSStatus secKeyOfItem(const KeychainItem& item, SecKeyRef& key) {
  const Value& keyClass = item.attributes[KeychainAttribute::keyClass];
  const bool isPrivate = keyClass == Value(kSecAttrKeyClassPrivate);
  if (!item.value || (!isPrivate && !(keyClass == Value(kSecAttrKeyClassPublic)))) {
    return errSecDecode;
  }
  if (!isPrivate) {
    key = decodedKey(item.value->bytes(), false);
  } else if (key = recentKeyOf(item.value->bytes()); !key) {
    key = decodedKey(item.value->bytes(), true);
    if (key) setRecentKey(item.value->copy(), key);
  }
  return key ? errSecSuccess : errSecDecode;
}

void forgetRecentKey() { setRecentKey({}, nullptr); }

}  // namespace zeb::detail
