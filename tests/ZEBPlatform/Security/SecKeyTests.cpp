#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <gtest/gtest.h>

#include "Support/MemoryKeychainStore.h"
#include "Support/SampleRSAKey.h"

namespace zeb {
namespace {

using test::MemoryKeychainStore;
using Call = MemoryKeychainStore::Call;

NSData sample(const char* base64) { return NSData::dataWithBase64EncodedString(base64); }

NSData sha1(const NSData& data) {
  std::array<std::byte, 20> digest;
  MessageDigest computation(DigestAlgorithm::sha1, data.length());
  computation.update(data.bytes());
  computation.finish(digest);
  return NSData::dataWithBytes(digest);
}

const NSData message = NSData::dataWithBytes(test::sampleMessage);

/// Nil if signing fails.
NSData signature(const SecKeyRef& key, SecPadding padding, const NSData& data) {
  std::vector<std::byte> result(SecKeyGetBlockSize(key));
  std::size_t length = 0;
  if (SecKeyRawSign(key, padding, data.bytes(), result, &length) != errSecSuccess) return nullptr;
  EXPECT_EQ(length, result.size());
  return NSData::dataWithBytes(result);
}

struct SecKeys : testing::Test {
  SecKeys() { SecKeychainSetStore(store); }
  ~SecKeys() override { SecKeychainSetStore(nullptr); }

  static NSDictionary keys(const char* keyClass, const char* result) {
    return {{kSecClass, kSecClassKey}, {kSecAttrKeyClass, keyClass}, {result, true}};
  }
  static SecKeyRef key(const char* keyClass) {
    SecKeyRef found;
    EXPECT_EQ(SecItemCopyMatching(keys(keyClass, kSecReturnRef), &found), errSecSuccess);
    return found;
  }
  static OSStatus add(const char* keyClass, const NSData& value) {
    return SecItemAdd(
        {{kSecClass, kSecClassKey}, {kSecAttrKeyClass, keyClass}, {kSecValueData, value}});
  }
  static NSMutableDictionary parameters() {
    const NSDictionary half{{kSecAttrIsPermanent, true}};
    return {{kSecAttrKeyType, kSecAttrKeyTypeRSA},
            {kSecAttrKeySizeInBits, 1024},
            {kSecAttrApplicationTag, NSData::dataWithBytes("pair")},
            {kSecPrivateKeyAttrs, half},
            {kSecPublicKeyAttrs, half}};
  }

  const Ref<MemoryKeychainStore> store = makeRef<MemoryKeychainStore>();
};

TEST_F(SecKeys, SignAsOtherToolsDo) {
  ASSERT_EQ(add(kSecAttrKeyClassPrivate, sample(test::samplePrivateKey)), errSecSuccess);
  ASSERT_EQ(add(kSecAttrKeyClassPublic, sample(test::samplePublicKey)), errSecSuccess);
  const SecKeyRef privateKey = key(kSecAttrKeyClassPrivate);
  const NSData digest = sha1(message);
  EXPECT_EQ(signature(privateKey, kSecPaddingPKCS1SHA1, digest), sample(test::sampleSignature));
  EXPECT_EQ(signature(privateKey, kSecPaddingPKCS1, message), sample(test::samplePaddedMessage));

  const SecKeyRef publicKey = key(kSecAttrKeyClassPublic);
  EXPECT_EQ(SecKeyGetBlockSize(publicKey), 128u);
  EXPECT_EQ(SecKeyGetBlockSize(nullptr), 0u);
  std::array<std::byte, 128> room;
  const NSData tooLong = NSData::dataWithBytes(std::string(118, 'x'));
  const struct {
    SecKeyRef key;
    SecPadding padding;
    NSData data;
    std::size_t room;
    OSStatus expected;
  } faulty[] = {{nullptr, kSecPaddingPKCS1SHA1, digest, 128, errSecParam},
                {publicKey, kSecPaddingPKCS1SHA1, digest, 128, errSecParam},
                {privateKey, kSecPaddingPKCS1SHA1, message, 128, errSecParam},
                {privateKey, kSecPaddingPKCS1SHA1, digest, 127, errSecParam},
                {privateKey, kSecPaddingPKCS1, tooLong, 128, errSecParam},
                {privateKey, SecPadding{}, digest, 128, errSecUnimplemented}};
  for (const auto& call : faulty) {
    EXPECT_EQ(SecKeyRawSign(call.key, call.padding, call.data.bytes(),
                            std::span(room).first(call.room), nullptr),
              call.expected);
  }
}

TEST_F(SecKeys, ChangedAndDamagedItems) {
  const NSData good = sample(test::samplePrivateKey);
  const NSDictionary query = keys(kSecAttrKeyClassPrivate, kSecReturnRef);
  SecKeyRef found;
  ASSERT_EQ(add(kSecAttrKeyClassPrivate, good), errSecSuccess);
  const NSData faulty[] = {NSData::data(), good.subdataWithRange({0, good.length() - 1}),
                           NSData::dataByJoining(std::array{good, NSData::dataWithBytes("x")}),
                           sample(test::samplePublicKey), sample(test::samplePublicKeyInfo)};
  for (const NSData& value : faulty) {
    EXPECT_TRUE(key(kSecAttrKeyClassPrivate));  // which is remembered
    ASSERT_EQ(SecItemUpdate(query, {{kSecValueData, value}}), errSecSuccess);
    EXPECT_EQ(SecItemCopyMatching(query, &found), errSecDecode);
    ASSERT_EQ(SecItemUpdate(query, {{kSecValueData, good}}), errSecSuccess);
  }
  EXPECT_FALSE(found);
  const NSDictionary list{{kSecClass, kSecClassKey}, {kSecReturnRef, true}, {kSecMatchLimit, 9}};
  EXPECT_EQ(SecItemCopyMatching(list, &found), errSecParam);
  EXPECT_EQ(SecItemCopyMatching({{kSecClass, kSecClassKey}}, &found), errSecParam);
}

TEST_F(SecKeys, PairsAreStoredCompletelyOrNotAtAll) {
  SecKeyRef publicKey;
  SecKeyRef privateKey;
  store->failNext(Call::add, errSecDiskFull);
  EXPECT_EQ(SecKeyGeneratePair(parameters(), &publicKey, &privateKey), errSecDiskFull);
  EXPECT_FALSE(publicKey || privateKey);
  ASSERT_EQ(SecKeyGeneratePair(parameters(), &publicKey, &privateKey), errSecSuccess);
  const NSData digest = sha1(message);
  const NSData signed1 = signature(privateKey, kSecPaddingPKCS1SHA1, digest);
  EXPECT_EQ(SecKeyGeneratePair(parameters(), &publicKey, &privateKey), errSecDuplicateItem);
  EXPECT_EQ(store->itemCount(), 2u);
  EXPECT_EQ(signature(key(kSecAttrKeyClassPrivate), kSecPaddingPKCS1SHA1, digest), signed1);

  Value value;
  Value attributes;
  ASSERT_EQ(SecItemCopyMatching(keys(kSecAttrKeyClassPublic, kSecReturnData), &value),
            errSecSuccess);
  for (const char* keyClass : {kSecAttrKeyClassPublic, kSecAttrKeyClassPrivate}) {
    ASSERT_EQ(SecItemCopyMatching(keys(keyClass, kSecReturnAttributes), &attributes),
              errSecSuccess);
    const NSDictionary found(attributes);
    EXPECT_EQ(found[kSecAttrApplicationLabel], sha1(NSData(value)));
    EXPECT_EQ(found[kSecAttrApplicationTag], NSData::dataWithBytes("pair"));
    EXPECT_TRUE(found[kSecAttrCreationDate].isDate());
  }

  // Halves that are not permanent need no keychain.
  NSMutableDictionary fleeting = parameters();
  fleeting.removeObjectForKey(kSecPublicKeyAttrs);
  fleeting.setObject(NSDictionary{{kSecAttrIsPermanent, false}}, kSecPrivateKeyAttrs);
  EXPECT_EQ(SecKeyGeneratePair(fleeting, nullptr, &privateKey), errSecSuccess);
  EXPECT_NE(signature(privateKey, kSecPaddingPKCS1SHA1, digest), signed1);
  EXPECT_EQ(store->calls(Call::add), 3);
}

TEST_F(SecKeys, ParametersAreChecked) {
  const struct {
    const char* key;
    Value value;  ///< nil removes the key
  } faults[] = {{kSecAttrKeyType, nullptr},
                {kSecAttrKeyType, "EC"},
                {kSecAttrKeySizeInBits, 1023},
                {kSecAttrKeySizeInBits, 8193},
                {kSecAttrKeyClass, kSecAttrKeyClassPublic},
                {kSecPrivateKeyAttrs, "attributes"},
                {kSecPublicKeyAttrs, NSDictionary{{kSecAttrKeySizeInBits, 2048}}},
                {kSecPublicKeyAttrs, NSDictionary{{kSecAttrApplicationTag, "text"}}},
                {kSecPublicKeyAttrs, NSDictionary{{kSecAttrIsPermanent, "yes"}}},
                {kSecValueData, NSData::data()}};
  for (const auto& [name, value] : faults) {
    SCOPED_TRACE(name);
    NSMutableDictionary faulty = parameters();
    faulty.removeObjectForKey(name);
    if (value) faulty.setObject(value, name);
    EXPECT_EQ(SecKeyGeneratePair(faulty, nullptr, nullptr), errSecParam);
  }
  EXPECT_EQ(SecKeyGeneratePair(nullptr, nullptr, nullptr), errSecParam);
}

}  // namespace
}  // namespace zeb
