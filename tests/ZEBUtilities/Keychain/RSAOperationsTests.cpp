#include <Keychain/ZEBRSAOperations.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "Support/MemoryKeychainStore.h"
#include "Support/SampleRSAKey.h"

namespace zeb {
namespace {

using Call = test::MemoryKeychainStore::Call;

NSData sample(const char* base64) { return NSData::dataWithBase64EncodedString(base64); }

const NSData message = NSData::dataWithBytes(test::sampleMessage);

/// The exported key without its line ends, decoded.
NSData exportedKey(std::int64_t userID) {
  std::string text = ZEBRSAOperations::base64PublicKeyForUser(userID).utf8();
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  return NSData::dataWithBase64EncodedString(text);
}

struct RSAOperations : testing::Test {
  RSAOperations() { SecKeychainSetStore(store); }
  ~RSAOperations() override { SecKeychainSetStore(nullptr); }

  static void add(const char* keyClass, const NSString& tag, const NSData& value) {
    ASSERT_EQ(SecItemAdd({{kSecClass, kSecClassKey},
                          {kSecAttrKeyClass, keyClass},
                          {kSecAttrKeyType, kSecAttrKeyTypeRSA},
                          {kSecAttrApplicationTag, NSData::dataWithBytes(tag.utf8())},
                          {kSecValueData, value}}),
              errSecSuccess);
  }
  static void addPublicKey(std::int64_t userID, const NSData& value) {
    add(kSecAttrKeyClassPublic, ZEBRSAOperations::publicKeyTagForUserid(userID), value);
  }
  static void addPrivateKey(std::int64_t userID, const NSData& value) {
    add(kSecAttrKeyClassPrivate, ZEBRSAOperations::privateKeyTagForUserid(userID), value);
  }

  const Ref<test::MemoryKeychainStore> store = makeRef<test::MemoryKeychainStore>();
};

TEST_F(RSAOperations, UsesKeysAsOtherToolsDo) {
  addPublicKey(-7, sample(test::samplePublicKey));
  addPrivateKey(-7, sample(test::samplePrivateKey));
  const std::string info = test::samplePublicKeyInfo;
  EXPECT_EQ(ZEBRSAOperations::base64PublicKeyForUser(-7),
            NSString(info.substr(0, 64) + "\r\n" + info.substr(64, 64) + "\r\n" +
                     info.substr(128, 64) + "\r\n" + info.substr(192)));
  EXPECT_EQ(ZEBRSAOperations::signData(message, -7), sample(test::sampleSignature));
  EXPECT_TRUE(ZEBRSAOperations::privateKeyTagForUserid(-7).hasSuffix(".2fa.privatekey_-7"));
}

TEST_F(RSAOperations, GeneratedPairsWorkWithOtherTools) {
  ZEBRSAOperations::generateKeyPairForUser(42);
  const NSString key = ZEBRSAOperations::base64PublicKeyForUser(42);
  EXPECT_TRUE(zeb_hexStringValue(exportedKey(42)).hasPrefix("30820122300d06"));
  ZEBRSAOperations::generateKeyPairForUser(42);
  EXPECT_EQ(ZEBRSAOperations::base64PublicKeyForUser(42), key);

  std::string folder = testing::TempDir() + "zeb-keys-XXXXXX";
  ASSERT_TRUE(mkdtemp(folder.data()));
  const auto write = [&](const char* name, const NSData& content) {
    EXPECT_TRUE(content.writeToFile(folder + name, 0));
  };
  write("/key", NSData::dataWithBytes("-----BEGIN PUBLIC KEY-----\n" + key.utf8() +
                                      "\n-----END PUBLIC KEY-----\n"));
  write("/message", message);
  write("/signature", ZEBRSAOperations::signData(message, 42));
  const auto openssl = [&](const char* arguments) {
    return std::system(
        ("cd '" + folder + "' && openssl " + arguments + " >/dev/null 2>&1").c_str());
  };
  EXPECT_EQ(openssl("dgst -sha1 -verify key -signature signature message"), 0);
  EXPECT_NE(openssl("dgst -sha1 -verify key -signature signature key"), 0);
  EXPECT_EQ(openssl("pkey -pubin -in key -noout -text_pub | grep -q '2048 bit'"), 0);
  EXPECT_EQ(std::system(("rm -r '" + folder + "'").c_str()), 0);

  ZEBRSAOperations::deleteKeyPairForUser(42);
  EXPECT_TRUE(ZEBRSAOperations::base64PublicKeyForUser(42).isNil());
  EXPECT_TRUE(ZEBRSAOperations::signData(message, 42).isNil());
  EXPECT_EQ(store->itemCount(), 0u);
}

TEST_F(RSAOperations, LengthsOfExportedKeys) {
  // DER, except that the last ones have a zero byte too many.
  const struct {
    std::size_t keyLength;
    const char* outer;
    const char* inner;
  } cases[] = {{109, "307f", "036e00"},         {110, "308180", "036f00"},
               {126, "308190", "037f00"},       {127, "308192", "03818000"},
               {270, "30820122", "0382010f00"}, {526, "3083000223", "038300020f00"}};
  for (const auto& [keyLength, outer, inner] : cases) {
    const auto userID = static_cast<std::int64_t>(keyLength);
    const NSData key = NSData::dataWithBytes(std::string(keyLength, 'k'));
    addPublicKey(userID, key);
    EXPECT_EQ(zeb_hexStringValue(exportedKey(userID)),
              NSString(outer) + "300d06092a864886f70d0101010500" + inner + zeb_hexStringValue(key));
  }
}

TEST_F(RSAOperations, FailuresGiveNil) {
  addPublicKey(0, sample(test::samplePublicKey));
  addPrivateKey(0, sample(test::samplePrivateKey));
  addPrivateKey(1, sample(test::samplePublicKey));
  addPublicKey(2, sample(test::samplePublicKey));
  addPrivateKey(2, sample(test::samplePrivateKey));
  EXPECT_TRUE(ZEBRSAOperations::signData(nullptr, 2).isNil());
  EXPECT_EQ(ZEBRSAOperations::signData(NSData::data(), 2).length(), 128u);
  store->failNext(Call::findValues, errSecAuthFailed, 2);  // of user 2, whose keys are good
  for (const std::int64_t userID : {2, 0, 1, 3}) {
    EXPECT_TRUE(ZEBRSAOperations::signData(message, userID).isNil());
    EXPECT_TRUE(ZEBRSAOperations::base64PublicKeyForUser(userID).isNil());
  }
  const std::size_t before = store->itemCount();
  ZEBRSAOperations::generateKeyPairForUser(0);
  store->failNext(Call::add, errSecDiskFull);
  ZEBRSAOperations::generateKeyPairForUser(4);
  EXPECT_EQ(store->itemCount(), before);
}

TEST_F(RSAOperations, GeneratingReplacesOneHalfAlone) {
  addPublicKey(5, sample(test::samplePublicKey));
  for (int round = 0; round < 2; ++round) {
    ZEBRSAOperations::generateKeyPairForUser(5);
    EXPECT_EQ(exportedKey(5).length(), 294u);
    EXPECT_EQ(ZEBRSAOperations::signData(message, 5).length(), 256u);
    EXPECT_EQ(store->itemCount(), 2u);
    // What an interrupted deletion leaves.
    SecItemDelete(ZEBRSAOperations::publicKeyQueryDictionaryForUserid(5));
  }
}

TEST_F(RSAOperations, ThreadsThatGenerateForOneUserGetOnePair) {
  {
    const std::jthread other([] { ZEBRSAOperations::generateKeyPairForUser(42); });
    ZEBRSAOperations::generateKeyPairForUser(42);
  }
  Value found;
  ASSERT_EQ(SecItemCopyMatching({{kSecClass, kSecClassKey},
                                 {kSecReturnAttributes, true},
                                 {kSecMatchLimit, kSecMatchLimitAll}},
                                &found),
            errSecSuccess);
  const NSArray items(found);
  ASSERT_EQ(items.count(), 2u);
  // Both name the same public key.
  EXPECT_EQ(NSDictionary(items[0])[kSecAttrApplicationLabel],
            NSDictionary(items[1])[kSecAttrApplicationLabel]);
}

}  // namespace
}  // namespace zeb
