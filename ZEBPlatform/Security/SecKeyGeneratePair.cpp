#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Security/KeychainRequestPrivate.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeyPrivate.h>
#include <ZEBPlatform/Security/SecKeychainPrivate.h>
#include <openssl/rsa.h>

#include <array>
#include <vector>

namespace zeb {

namespace {

using detail::KeychainRequest;

constexpr std::int64_t minKeySize = 1024;
/// Making a pair of this size takes a minute.
constexpr std::int64_t maxKeySize = 8192;

/// The attributes of one half: those of the pair, and its own.
OSStatus readHalf(const NSDictionary& pair, const char* ownKey, KeychainRequest& half) {
  NSMutableDictionary attributes(pair);
  attributes.removeObjectForKey(kSecPrivateKeyAttrs);
  attributes.removeObjectForKey(kSecPublicKeyAttrs);
  if (const Value* const own = pair.find(ownKey)) {
    if (!own->isDictionary()) return errSecParam;
    attributes.addEntriesFromDictionary(NSDictionary(*own));
  }
  const OSStatus status = half.read(attributes, detail::KeychainDictionary::newKey);
  if (status != errSecSuccess) return status;
  const KeychainAttributes& read = half.query.attributes;
  const std::int64_t size = read[KeychainAttribute::keySizeInBits].longLongValue();
  const bool isValid = !read[KeychainAttribute::keyType].isNil() && size >= minKeySize &&
                       size <= maxKeySize && read[KeychainAttribute::keyClass].isNil();
  return isValid ? errSecSuccess : errSecParam;
}

detail::OwnedKey generatedKey(std::int64_t size) {
  const detail::OpenSSLErrorScope errors;
  const detail::OwnedKeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
  EVP_PKEY* key = nullptr;
  const bool isGenerated =
      context && EVP_PKEY_keygen_init(context.get()) == 1 &&
      EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), static_cast<int>(size)) == 1 &&
      EVP_PKEY_generate(context.get(), &key) == 1;
  detail::OwnedKey result(key);
  return isGenerated ? std::move(result) : nullptr;
}

NSData sha1(std::span<const std::byte> bytes) {
  std::array<std::byte, 20> digest;
  MessageDigest computation(DigestAlgorithm::sha1, bytes.size());
  computation.update(bytes);
  computation.finish(digest);
  return NSData::dataWithBytes(digest);
}

void describe(KeychainRequest& half, const char* keyClass, const NSData& label,
              const NSString& accessGroup) {
  KeychainAttributes& attributes = half.query.attributes;
  attributes[KeychainAttribute::keyClass] = keyClass;
  attributes[KeychainAttribute::applicationLabel] = label;
  const NSDate now = NSDate::date();
  attributes[KeychainAttribute::creationDate] = now;
  attributes[KeychainAttribute::modificationDate] = now;
  Value& group = attributes[KeychainAttribute::accessGroup];
  if (group.isNil()) group = accessGroup;
}

}  // namespace

OSStatus SecKeyGeneratePair(const NSDictionary& parameters, SecKeyRef* publicKey,
                            SecKeyRef* privateKey) {
  if (parameters.isNil()) return errSecParam;
  KeychainRequest privateHalf;
  KeychainRequest publicHalf;
  OSStatus status = readHalf(parameters, kSecPrivateKeyAttrs, privateHalf);
  if (status == errSecSuccess) status = readHalf(parameters, kSecPublicKeyAttrs, publicHalf);
  if (status != errSecSuccess) return status;
  const Value& size = privateHalf.query.attributes[KeychainAttribute::keySizeInBits];
  if (!(size == publicHalf.query.attributes[KeychainAttribute::keySizeInBits])) return errSecParam;

  const bool isStored = privateHalf.isPermanent || publicHalf.isPermanent;
  detail::KeychainSettingsPin keychain;
  // Pinned before the slow part, so that a keychain that is missing is noticed at once.
  if (isStored) status = detail::pinKeychain(keychain);
  if (status != errSecSuccess) return status;

  detail::OwnedKey key = generatedKey(size.longLongValue());
  if (!key) return errSecAllocate;
  privateHalf.value = detail::encodedKey(key.get(), true);
  publicHalf.value = detail::encodedKey(key.get(), false);
  const SecKeyRef decodedPublicKey = detail::decodedKey(publicHalf.value->bytes(), false);
  if (privateHalf.value->empty() || !decodedPublicKey) return errSecAllocate;

  if (isStored) {
    const NSData label = sha1(publicHalf.value->bytes());
    const NSString& group = detail::accessGroupOf(*keychain);
    describe(privateHalf, kSecAttrKeyClassPrivate, label, group);
    describe(publicHalf, kSecAttrKeyClassPublic, label, group);
    std::vector<KeychainItem> items;
    for (KeychainRequest* half : {&privateHalf, &publicHalf}) {
      if (half->isPermanent) items.push_back(half->takeItem());
    }
    status = keychain->store->add(items);
    if (status != errSecSuccess) return status;
  }
  if (publicKey) *publicKey = decodedPublicKey;
  if (privateKey) *privateKey = detail::SecKeyAccess::make(std::move(key), true);
  return errSecSuccess;
}

}  // namespace zeb
