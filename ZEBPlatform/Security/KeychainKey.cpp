#include <ZEBPlatform/Linux/detail/PrivateFiles.h>
#include <ZEBPlatform/Linux/detail/Random.h>
#include <ZEBPlatform/Security/KeychainKeyPrivate.h>
#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <cerrno>
#include <memory>
#include <utility>

namespace zeb {

namespace {

constexpr std::size_t saltLength = 16;

// scrypt's parameters for new stores: 32 MiB of memory and about a quarter of a second.
constexpr std::uint64_t newCost = std::uint64_t{1} << 15;
constexpr std::uint64_t newBlockSize = 8;
constexpr std::uint64_t newParallelism = 3;

// What a damaged file may make us spend.
constexpr std::uint64_t maxMemory = std::uint64_t{256} << 20;
constexpr std::uint64_t maxParallelism = 16;

bool areAcceptable(const KeychainKeyFacts& facts) noexcept {
  const bool isPowerOfTwo = facts.cost > 1 && (facts.cost & (facts.cost - 1)) == 0;
  return isPowerOfTwo && facts.blockSize >= 1 && facts.blockSize <= maxMemory / 128 &&
         facts.cost <= maxMemory / 128 / facts.blockSize && facts.parallelism >= 1 &&
         facts.parallelism <= maxParallelism;
}

struct DerivationFreer {
  void operator()(EVP_KDF* function) const noexcept { EVP_KDF_free(function); }
  void operator()(EVP_KDF_CTX* context) const noexcept { EVP_KDF_CTX_free(context); }
};

/// scrypt (RFC 7914) with the parameters of the facts.
OSStatus derive(const SecretBytes& passphrase, const KeychainKeyFacts& facts, SecretBytes& key) {
  const std::unique_ptr<EVP_KDF, DerivationFreer> function(
      EVP_KDF_fetch(nullptr, OSSL_KDF_NAME_SCRYPT, nullptr));
  const std::unique_ptr<EVP_KDF_CTX, DerivationFreer> context(
      function ? EVP_KDF_CTX_new(function.get()) : nullptr);
  if (!context) return errSecAllocate;
  std::uint64_t cost = facts.cost;
  std::uint64_t blockSize = facts.blockSize;
  std::uint64_t parallelism = facts.parallelism;
  std::uint64_t memoryLimit = maxMemory + (maxMemory >> 2);
  // The parameters are not const in OpenSSL's interface, which does not write through them here.
  const auto octetString = [](const char* name, std::span<const std::byte> bytes) {
    return OSSL_PARAM_construct_octet_string(name, const_cast<std::byte*>(bytes.data()),
                                             bytes.size());
  };
  const OSSL_PARAM parameters[] = {
      octetString(OSSL_KDF_PARAM_PASSWORD, passphrase.bytes()),
      octetString(OSSL_KDF_PARAM_SALT, facts.salt),
      OSSL_PARAM_construct_uint64(OSSL_KDF_PARAM_SCRYPT_N, &cost),
      OSSL_PARAM_construct_uint64(OSSL_KDF_PARAM_SCRYPT_R, &blockSize),
      OSSL_PARAM_construct_uint64(OSSL_KDF_PARAM_SCRYPT_P, &parallelism),
      OSSL_PARAM_construct_uint64(OSSL_KDF_PARAM_SCRYPT_MAXMEM, &memoryLimit),
      OSSL_PARAM_construct_end(),
  };
  SecretBytes derived(KeychainCipher::keyLength);
  auto* const octets = reinterpret_cast<unsigned char*>(derived.mutableBytes().data());
  if (EVP_KDF_derive(context.get(), octets, derived.size(), parameters) != 1) return errSecAllocate;
  key = std::move(derived);
  return errSecSuccess;
}

}  // namespace

OSStatus KeychainKeyFinder::askSource() {
  if (const auto* passphrase = std::get_if<KeychainPassphrase>(&masterKey_)) {
    return passphrase->passphrase.empty() ? errSecParam : errSecSuccess;
  }
  const auto* const source = std::get_if<KeychainKeySource>(&masterKey_);
  if (!source) return errSecSuccess;
  if (!source->supply) return errSecParam;
  supplied_ = SecretBytes(KeychainCipher::keyLength);
  return source->supply(supplied_.mutableBytes());
}

OSStatus KeychainKeyFinder::makeNew(SecretBytes& key, KeychainKeyFacts& facts) {
  OSStatus status = errSecSuccess;
  if (const auto* passphrase = std::get_if<KeychainPassphrase>(&masterKey_)) {
    facts.salt.resize(saltLength);
    fillWithRandomBytes(facts.salt);
    facts.cost = newCost;
    facts.blockSize = newBlockSize;
    facts.parallelism = newParallelism;
    status = derive(passphrase->passphrase, facts, key);
  } else if (std::holds_alternative<KeychainKeySource>(masterKey_)) {
    key = supplied_.copy();
  } else {
    status = readKeyFile(key);
    // The file is there if the store's first set-up was interrupted.
    if (status == errSecItemNotFound) status = makeKeyFile(key);
  }
  if (status) return status;
  return KeychainCipher(key).seal(KeychainKeyFacts::checkIdentity, {}, facts.check);
}

OSStatus KeychainKeyFinder::find(const KeychainKeyFacts& facts, SecretBytes& key) {
  if (facts.check.size() != KeychainCipher::overhead) return errSecInvalidKeychain;
  OSStatus status = errSecSuccess;
  if (const auto* passphrase = std::get_if<KeychainPassphrase>(&masterKey_)) {
    if (facts.salt.empty()) return errSecAuthFailed;
    if (!areAcceptable(facts)) return errSecInvalidKeychain;
    status = derive(passphrase->passphrase, facts, key);
  } else if (std::holds_alternative<KeychainKeySource>(masterKey_)) {
    key = supplied_.copy();
  } else {
    status = readKeyFile(key);
    if (status == errSecItemNotFound) status = errSecAuthFailed;
  }
  if (status) return status;
  SecretBytes nothing;
  status = KeychainCipher(key).open(KeychainKeyFacts::checkIdentity, facts.check, nothing);
  return status == errSecDecode ? errSecAuthFailed : status;
}

/// `errSecItemNotFound` if there is no key file.
OSStatus KeychainKeyFinder::readKeyFile(SecretBytes& key) {
  // One byte more than the key has, so that a longer file is noticed.
  SecretBytes content(KeychainCipher::keyLength + 1);
  std::size_t count = 0;
  const int failure =
      readProtectedFile(keyFile_, Protection::fromReading, content.mutableBytes(), count);
  if (failure == ENOENT) return errSecItemNotFound;
  if (failure == EINVAL || failure == EISDIR) return errSecAuthFailed;  // no regular file
  if (failure) return statusOfErrorNumber(failure);
  if (count != KeychainCipher::keyLength) return errSecAuthFailed;
  content.shorten(count);
  key = std::move(content);
  return errSecSuccess;
}

OSStatus KeychainKeyFinder::makeKeyFile(SecretBytes& key) {
  SecretBytes made(KeychainCipher::keyLength);
  fillWithRandomBytes(made.mutableBytes());
  if (const int failure = writeNewFile(keyFile_, made.bytes()))
    return statusOfWritingError(failure);
  key = std::move(made);
  return errSecSuccess;
}

}  // namespace zeb
