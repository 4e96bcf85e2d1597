#include <ZEBPlatform/Linux/detail/Random.h>
#include <ZEBPlatform/Security/KeychainCipherPrivate.h>
#include <openssl/evp.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr std::size_t nonceLength = 12;
constexpr std::size_t tagLength = 16;
static_assert(nonceLength + tagLength == KeychainCipher::overhead);

/// Null if OpenSSL does not offer it. Looking it up takes longer than sealing a short value.
const EVP_CIPHER* algorithm() noexcept {
  static const EVP_CIPHER* const fetched = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
  return fetched;
}

unsigned char* octets(std::byte* bytes) noexcept { return reinterpret_cast<unsigned char*>(bytes); }
const unsigned char* octets(const std::byte* bytes) noexcept {
  return reinterpret_cast<const unsigned char*>(bytes);
}

/// The identity and the value, which are shorter than 2 GiB.
bool process(EVP_CIPHER_CTX* context, std::string_view identity, std::span<const std::byte> from,
             std::byte* to) noexcept {
  int length = 0;
  return EVP_CipherUpdate(context, nullptr, &length,
                          reinterpret_cast<const unsigned char*>(identity.data()),
                          static_cast<int>(identity.size())) == 1 &&
         (from.empty() || EVP_CipherUpdate(context, octets(to), &length, octets(from.data()),
                                           static_cast<int>(from.size())) == 1);
}

}  // namespace

void KeychainCipher::Freer::operator()(evp_cipher_ctx_st* context) const noexcept {
  EVP_CIPHER_CTX_free(context);
}

KeychainCipher::KeychainCipher(const SecretBytes& key) noexcept : context_(EVP_CIPHER_CTX_new()) {
  if (context_ && EVP_CipherInit_ex2(context_.get(), algorithm(), octets(key.bytes().data()),
                                     nullptr, 1, nullptr) != 1) {
    context_.reset();
  }
}

OSStatus KeychainCipher::seal(std::string_view identity, std::span<const std::byte> value,
                              std::vector<std::byte>& sealed) {
  sealed.resize(value.size() + overhead);
  const auto nonce = std::span(sealed).first(nonceLength);
  std::byte* const encrypted = sealed.data() + nonceLength;
  std::byte* const tag = encrypted + value.size();
  fillWithRandomBytes(nonce);
  EVP_CIPHER_CTX* const context = context_.get();
  int length = 0;
  const bool isSealed =
      context &&
      EVP_CipherInit_ex2(context, nullptr, nullptr, octets(nonce.data()), 1, nullptr) == 1 &&
      process(context, identity, value, encrypted) &&
      EVP_CipherFinal_ex(context, octets(tag), &length) == 1 &&
      EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_GET_TAG, tagLength, tag) == 1;
  return isSealed ? errSecSuccess : errSecAllocate;
}

OSStatus KeychainCipher::open(std::string_view identity, std::span<const std::byte> sealed,
                              SecretBytes& value) {
  if (sealed.size() < overhead) return errSecDecode;
  const std::span<const std::byte> nonce = sealed.first(nonceLength);
  const std::span<const std::byte> encrypted =
      sealed.subspan(nonceLength, sealed.size() - overhead);
  std::byte tag[tagLength];
  std::ranges::copy(sealed.last(tagLength), tag);
  SecretBytes opened(encrypted.size());
  std::byte nothing;
  EVP_CIPHER_CTX* const context = context_.get();
  if (!context) return errSecAllocate;
  int length = 0;
  const bool isOpened =
      EVP_CipherInit_ex2(context, nullptr, nullptr, octets(nonce.data()), 0, nullptr) == 1 &&
      process(context, identity, encrypted, opened.mutableBytes().data()) &&
      EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_SET_TAG, tagLength, tag) == 1 &&
      EVP_CipherFinal_ex(context, octets(&nothing), &length) == 1;
  if (!isOpened) return errSecDecode;
  value = std::move(opened);
  return errSecSuccess;
}

}  // namespace zeb
