#include <ZEBPlatform/Security/SecKeyPrivate.h>
#include <openssl/err.h>
#include <openssl/rsa.h>

namespace zeb {

namespace {

using detail::SecKeyAccess;

const unsigned char* octets(std::span<const std::byte> bytes) noexcept {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

}  // namespace

SecKey::~SecKey() { EVP_PKEY_free(SecKeyAccess::key(*this)); }

detail::OpenSSLErrorScope::OpenSSLErrorScope() noexcept { ERR_set_mark(); }
detail::OpenSSLErrorScope::~OpenSSLErrorScope() { ERR_pop_to_mark(); }

OSStatus SecKeyRawSign(const SecKeyRef& key, SecPadding padding,
                       std::span<const std::byte> dataToSign, std::span<std::byte> signature,
                       std::size_t* signatureLength) {
  constexpr std::size_t digestLength = 20;
  constexpr std::size_t minPadding = 11;
  const std::size_t blockSize = SecKeyGetBlockSize(key);
  if (!key || !SecKeyAccess::isPrivate(*key) || signature.size() < blockSize) return errSecParam;
  switch (padding) {
    case kSecPaddingPKCS1:
      if (dataToSign.size() + minPadding > blockSize) return errSecParam;
      break;
    case kSecPaddingPKCS1SHA1:
      if (dataToSign.size() != digestLength) return errSecParam;
      break;
    default:
      return errSecUnimplemented;
  }

  const detail::OpenSSLErrorScope errors;
  const detail::OwnedKeyContext context(
      EVP_PKEY_CTX_new_from_pkey(nullptr, SecKeyAccess::key(*key), nullptr));
  if (!context) return errSecAllocate;
  // Without the digest's name the signature would be valid, but of the bare bytes.
  const bool isReady = EVP_PKEY_sign_init(context.get()) == 1 &&
                       EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1 &&
                       (padding != kSecPaddingPKCS1SHA1 ||
                        EVP_PKEY_CTX_set_signature_md(context.get(), EVP_sha1()) == 1);
  std::size_t length = signature.size();
  if (!isReady || EVP_PKEY_sign(context.get(), reinterpret_cast<unsigned char*>(signature.data()),
                                &length, octets(dataToSign), dataToSign.size()) != 1) {
    return errSecDecode;
  }
  if (signatureLength) *signatureLength = length;
  return errSecSuccess;
}

std::size_t SecKeyGetBlockSize(const SecKeyRef& key) noexcept {
  return key ? static_cast<std::size_t>(EVP_PKEY_get_size(SecKeyAccess::key(*key))) : 0;
}

}  // namespace zeb
